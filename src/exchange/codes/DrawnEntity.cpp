#include "exchange/codes/DrawnEntity.h"

#include <cqsurvey/cqsurvey.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>
#include <string_view>

#include "cqsurvey/exchange/ExchangeError.h"

namespace cqsurvey::exchange {

namespace {

/// A digest of 64 bits by the method of Fowler, Noll and Vo, over whole numbers instead of bytes,
/// with the high bits brought down after each.
class Digest {
 public:
    void Add(std::uint64_t number) {
        m_value = (m_value ^ number) * 0x100000001B3U;
        m_value ^= m_value >> 29U;
    }
    void Add(int number) { Add(static_cast<std::uint64_t>(static_cast<std::uint32_t>(number))); }
    void Add(double number) {
        // The store keeps the usual not-a-number, but not which one it was.
        Add(std::bit_cast<std::uint64_t>(
            std::isnan(number) ? std::numeric_limits<double>::quiet_NaN() : number));
    }
    void Add(std::u16string_view text) {
        Add(static_cast<std::uint64_t>(text.size()));
        for (const char16_t unit : text) {
            Add(std::uint64_t{unit});
        }
    }
    [[nodiscard]] std::uint64_t Get() const { return m_value; }

 private:
    std::uint64_t m_value = 0xCBF29CE484222325U;
};

CqCadEntityPtr ReadEntity(const CqSurveyDB& db, CqHandle& handle) {
    CqCadEntity* entity = nullptr;
    try {
        db.GetNextCadEntity(handle, entity);
    } catch (const CqSurveyException& error) {
        if (error.m_code != error::kNoRecord) {
            throw;
        }
    }
    return CqCadEntityPtr(entity);
}

std::uint64_t DigestRest(const CqCadEntity& text) {
    if (text.GetRot() == 0.0 && text.GetStyle().empty() && text.GetOptionStyle() == 0 &&
        text.GetInterval() == 0 && text.GetThickness() == 0) {
        return 0;
    }
    Digest digest;
    digest.Add(text.GetRot());
    digest.Add(text.GetStyle());
    digest.Add(std::uint64_t{text.GetOptionStyle()});
    digest.Add(text.GetInterval());
    digest.Add(text.GetThickness());
    return digest.Get();
}

}  // namespace

std::uint64_t DrawnEntity::GetMark() const {
    Digest digest;
    digest.Add(static_cast<int>(type));
    digest.Add(layer);
    digest.Add(color);
    digest.Add(line);
    digest.Add(code);
    for (const DrawnVertex& vertex : vertices) {
        for (const double coord : vertex.coords) {
            digest.Add(coord);
        }
        digest.Add(vertex.bulge);
    }
    for (const double coord : coords) {
        digest.Add(coord);
    }
    digest.Add(radius);
    digest.Add(text);
    digest.Add(align);
    digest.Add(height);
    digest.Add(rest);
    return digest.Get();
}

bool DrawnEntity::HasTiesOf(const DrawnEntity& other) const {
    return std::equal(
        vertices.begin(), vertices.end(), other.vertices.begin(), other.vertices.end(),
        [](const DrawnVertex& a, const DrawnVertex& b) { return a.point == b.point; });
}

std::optional<DrawnEntity> DrawnEntity::Read(const CqSurveyDB& db, CqHandle handle) {
    CqHandle next = handle;
    const CqCadEntityPtr entity = ReadEntity(db, next);
    if (!entity) {
        return std::nullopt;
    }
    DrawnEntity drawn;
    drawn.type = entity->GetType();
    drawn.layer = entity->GetLayer();
    drawn.color = entity->GetColor();
    drawn.line = entity->GetLine();
    drawn.code = entity->GetCode();
    switch (drawn.type) {
        case EntPline:
            for (int left = db.GetNumCadEntities(); next != 0 && left > 0; --left) {
                const CqCadEntityPtr vertex = ReadEntity(db, next);
                if (!vertex || vertex->GetType() != EntVertex ||
                    vertex->GetPlineHandle() != handle) {
                    break;
                }
                DrawnVertex& read = drawn.vertices.emplace_back();
                vertex->GetPoint(read.coords.data());
                read.bulge = vertex->GetBulge();
                read.point = vertex->GetMcadSiPointHandle();
            }
            return drawn;
        case EntCircle:
            entity->GetPoint(drawn.coords.data());
            drawn.radius = entity->GetRadius();
            return drawn;
        case EntText:
            entity->GetPoint(drawn.coords.data());
            drawn.text = entity->GetText();
            drawn.align = entity->GetAlign();
            drawn.height = entity->GetHeight();
            drawn.line = 0;
            drawn.rest = DigestRest(*entity);
            return drawn;
        default:
            return std::nullopt;
    }
}

CqHandle DrawnEntity::AddTo(CqSurveyDB& db) const {
    db.SetCurrentLayer(layer);
    db.SetCurrentColor(color);
    if (type == EntCircle) {
        return db.AddCircle(coords.data(), radius, line, code);
    }
    if (type == EntText) {
        constexpr int kHalf = 16;
        constexpr int kLow = 0xFFFF;
        return db.AddText(coords.data(), text, align & kLow, align >> kHalf, CString(), height, 0.0,
                          code, 0, 0, 0);
    }
    CqCadEntityList* list = db.StartPline(line, code);
    for (const DrawnVertex& vertex : vertices) {
        db.AddVertex(list, vertex.coords.data(), vertex.bulge);
    }
    const CqHandle handle = db.EndPline(list);
    // The vertices of a new polyline have the handles after its own.
    CqHandle own = handle;
    for (const DrawnVertex& vertex : vertices) {
        ++own;
        if (vertex.point != 0 && db.LinkSiPntAndVertex(vertex.point, own) == 0) {
            throw ExchangeError("a vertex cannot be tied to its point; the job is damaged");
        }
    }
    return handle;
}

void DrawnEntity::Delete(CqSurveyDB& db, EntType type, CqHandle handle) {
    if (type == EntPline) {
        db.DeletePline(handle);
    } else if (type == EntCircle) {
        db.DeleteCircle(handle);
    } else {
        db.DeleteText(handle);
    }
}

}  // namespace cqsurvey::exchange
