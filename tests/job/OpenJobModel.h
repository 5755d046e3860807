#pragma once

#include <map>

#include "support/JobModel.h"

namespace cqsurvey {

/// The model of a job with what the object that has it open knows besides, down to its oddities.
struct OpenJobModel : JobModel {
    /// The points that are found by their names. Of names that are alike after they were cut, it is
    /// the one that was entered last.
    std::map<CString, CqHandle> names;
    /// The descriptions, which handles have too that name no point.
    std::map<CqHandle, CString> descriptions;
    CString currentLayerName = u"0";
    int currentColor = 256;

    void Reopen();
    /// Enters a point in the names, if it has one.
    void EnterName(CqHandle point);
    void Move(CqHandle point, const Coords& to, int code);
    /// 0 when there is none; the case of letters does not count.
    [[nodiscard]] int FindGroup(const CString& name) const;
    /// 0 when there is none.
    [[nodiscard]] CqHandle FindName(const CString& name) const;
};

}  // namespace cqsurvey
