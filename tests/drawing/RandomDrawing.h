#pragma once

#include <random>

#include "drawing/DrawingFixture.h"
#include "support/Box.h"
#include "support/JobModel.h"

namespace cqsurvey {

/// A new job, random operations on its drawing, and the model of what the drawing must hold then.
/// An operation that the model refuses must be refused by the job.
class RandomDrawing : public DrawingFixture {
 protected:
    /// Does an operation on the job and on the model.
    void Step();

    int Below(int bound) { return static_cast<int>(m_random() % static_cast<unsigned>(bound)); }
    [[nodiscard]] bool Is(CqHandle handle, EntType type) const { return m_model.Is(handle, type); }

    JobModel m_model;
    Box m_extents;      ///< of all that was ever drawn since the job was opened
    int m_color = 256;  ///< the current one

 private:
    using Coords = JobModel::Coords;

    double Real() { return std::uniform_real_distribution<double>(-1000.0, 1000.0)(m_random); }
    Coords RandomPlace();
    CString RandomText(int most);
    CString RandomLayer();
    double RandomBulge();
    /// An entity of a kind, or any when none of that kind is there; one in eight is any, one in
    /// thirty none at all.
    CqHandle Pick(EntType type);
    /// The record of the point that an entity shows, 0 when it shows none.
    [[nodiscard]] CqHandle RecordOf(CqHandle entity) const;
    void Widen(CqHandle entity);

    void StepPoint();
    void StepPline();
    void StepVertex();
    void StepLink();
    void StepText();
    void StepCircle();
    void StepBitmap();
    void StepLayer();
    void StepAny();
    /// Deletes, edits or adds an entity that has a place and no parts. `fill` gives the model of
    /// what was edited or added its other values.
    template <class Delete, class Edit, class Add, class Fill>
    void StepEntity(EntType type, const Coords& at, const Delete& remove, const Edit& edit,
                    const Add& add, const Fill& fill);

    std::mt19937 m_random{20260801};
    int m_names = 0;
};

}  // namespace cqsurvey
