#pragma once

#include <array>
#include <cstdint>

#include "cqsurvey/CVector.h"
#include "cqsurvey/Export.h"
#include "cqsurvey/Types.h"

namespace cqsurvey {

struct Job;

/// The kinds of drawing entity, as stored in the "ObjectType" of an entity's record; 3 is not used.
enum EntType : std::int32_t {
    EntSiPnt = 0,
    EntPline = 1,
    EntVertex = 2,
    EntText = 4,
    EntCircle = 5,
    EntBitmap = 6,
};

/// One entity of the drawing as it was read from the job: a snapshot, whose changes never reach the
/// job. Every entity has the getters and setters of all kinds. Where an attribute does not apply,
/// its getter returns 0, an empty string or a zero vector, and its setter changes nothing and
/// returns 0; otherwise a setter returns 1.
class CQSURVEY_API CqCadEntity {
 public:
    static const CString m_sEmpty;
    static const CVector m_vecZero;

    /// Copies easting, northing and height into out[0..2].
    void GetPoint(double* out) const;
    int SetPoint(const double* in);
    [[nodiscard]] const CString& GetLayer() const { return m_layer; }
    /// Returns 0, with the layer unchanged, for an empty name.
    int SetLayer(const CString& layer);
    [[nodiscard]] int GetColor() const { return m_color; }
    int SetColor(int color);
    [[nodiscard]] CqHandle GetHandle() const { return m_handle; }

    virtual ~CqCadEntity();
    [[nodiscard]] virtual EntType GetType() const = 0;
    /// The point's name (survey point).
    [[nodiscard]] virtual const CString& GetName() const { return m_sEmpty; }
    virtual int SetName(const CString& /*name*/) { return 0; }
    /// The feature code (survey point, polyline, text, circle).
    [[nodiscard]] virtual int GetCode() const { return 0; }
    virtual int SetCode(int /*code*/) { return 0; }
    /// How many vertices are tied to the survey point.
    [[nodiscard]] virtual int GetMcadNumVertex() const { return 0; }
    /// The tied vertex at `index`, 0 outside 0 to GetMcadNumVertex() - 1.
    [[nodiscard]] virtual CqHandle GetMcadVertexHandle(int /*index*/) const { return 0; }
    /// The polyline's stored bound. Other kinds leave both arguments unchanged.
    virtual void GetBound(CVector& /*min*/, CVector& /*max*/) const {}
    /// Widens the polyline's bound to hold v. A coordinate that is not a number changes nothing.
    virtual void UpdateBound(const CVector& /*v*/) {}
    /// The bulge of the segment that starts at the vertex: the tangent of a quarter of the arc's
    /// included angle. It is positive for a counter-clockwise arc and 0 for a straight line.
    [[nodiscard]] virtual double GetBulge() const { return 0.0; }
    virtual int SetBulge(double /*bulge*/) { return 0; }
    /// The entity handle of the vertex's polyline.
    [[nodiscard]] virtual CqHandle GetPlineHandle() const { return 0; }
    /// The previous entity of the drawing, which for the first vertex is the polyline itself.
    [[nodiscard]] virtual CqHandle GetPrevVertexHandle() const { return 0; }
    /// The next vertex, 0 after the last.
    [[nodiscard]] virtual CqHandle GetNextVertexHandle() const { return 0; }
    /// The survey-point entity to which the vertex is tied, 0 when it is free.
    [[nodiscard]] virtual CqHandle GetMcadSiPointHandle() const { return 0; }
    /// Widens the bound of `pline` to hold this vertex and the segment from it to `nextVertex`,
    /// which may be null: then there is no segment.
    virtual void UpdateExtent(CqCadEntity* /*pline*/, const CqCadEntity* /*nextVertex*/) {}
    [[nodiscard]] virtual const CString& GetText() const { return m_sEmpty; }
    virtual int SetText(const CString& /*text*/) { return 0; }
    /// A text's two 16-bit alignments: along the line in the low half, across it in the high half.
    [[nodiscard]] virtual int GetAlign() const { return 0; }
    virtual int SetAlign(int /*align*/) { return 0; }
    [[nodiscard]] virtual const CString& GetStyle() const { return m_sEmpty; }
    virtual int SetStyle(const CString& /*style*/) { return 0; }
    /// A text's height; a bitmap's size along y.
    [[nodiscard]] virtual double GetHeight() const { return 0.0; }
    virtual int SetHeight(double /*height*/) { return 0; }
    [[nodiscard]] virtual double GetRot() const { return 0.0; }
    virtual int SetRot(double /*rot*/) { return 0; }
    [[nodiscard]] virtual double GetRadius() const { return 0.0; }
    virtual int SetRadius(double /*radius*/) { return 0; }
    [[nodiscard]] virtual const CVector& GetSize() const { return m_vecZero; }
    virtual int SetSize(const CVector& /*size*/) { return 0; }
    [[nodiscard]] virtual const CString& GetResName() const { return m_sEmpty; }
    virtual int SetResName(const CString& /*resName*/) { return 0; }
    /// The line type (polyline, circle).
    [[nodiscard]] virtual int GetLine() const { return 0; }
    [[nodiscard]] virtual std::uint32_t GetOptionStyle() const { return 0; }
    [[nodiscard]] virtual int GetInterval() const { return 0; }
    [[nodiscard]] virtual int GetThickness() const { return 0; }

 protected:
    CqCadEntity() = default;
    CqCadEntity(const CqCadEntity&) = default;
    CqCadEntity& operator=(const CqCadEntity&) = default;

 private:
    friend struct Job;

    std::array<double, 3> m_point{};
    CString m_layer;
    std::int32_t m_color = 0;
    CqHandle m_handle = 0;
};

}  // namespace cqsurvey
