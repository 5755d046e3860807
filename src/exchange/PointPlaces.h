#pragma once

#include "cqsurvey/CqSurveyDB.h"
#include "cqsurvey/Types.h"
#include "cqsurvey/exchange/FieldTextReader.h"
#include "cqsurvey/exchange/Import.h"

namespace cqsurvey::exchange {

/// Chooses the group and the layer of each point that is recorded: what its line says, else what
/// the options say, else what was current before. Groups and layers that the job does not have are
/// added.
class PointPlaces {
 public:
    /// The job and the options must outlive this object. Throws ExchangeError when the group of the
    /// options cannot be added.
    PointPlaces(CqSurveyDB& db, const ImportOptions& options);
    PointPlaces(const PointPlaces&) = delete;
    PointPlaces& operator=(const PointPlaces&) = delete;

    /// Makes the group and the layer of the line current. Throws ExchangeError when they cannot be
    /// added.
    void Choose(const FieldTextLine& line);

    /// Moves a point that is there to the group and the layer of the line, as far as the line or,
    /// for the layer, the options say one.
    void Move(CqHandle point, const FieldTextLine& line);

    /// Makes the group of the options and the layer from before current again.
    void Finish();

 private:
    /// The layer that the line or the options say; empty when they say none.
    [[nodiscard]] CString FindLayer(const FieldTextLine& line) const;
    void UseGroup(const CString& name);
    void UseLayer(const CString& name);
    void AddLayer(const CString& name);

    CqSurveyDB& m_db;
    const ImportOptions& m_options;
    CString m_group;   // of the lines that say none
    CString m_before;  // the layer
};

}  // namespace cqsurvey::exchange
