#pragma once

#include <gtest/gtest.h>

#include <map>

#include "cqsurvey/CqSurveyDB.h"
#include "support/JobModel.h"

namespace cqsurvey {

/// The job has these layers, by their numbers.
inline void ExpectSameLayers(CqSurveyDB& db, const std::map<CqHandle, JobModel::Layer>& layers) {
    CqHandle handle = db.GetFirstLayerHandle();
    for (const auto& [expected, layer] : layers) {
        ASSERT_EQ(handle, expected);
        CString name;
        int color = 0;
        ASSERT_EQ(db.GetNextLayer(handle, name, color), 1);
        ASSERT_EQ(name, layer.name);
        ASSERT_EQ(color, layer.color);
        ASSERT_EQ(db.GetLayerLine(name), layer.line);
    }
    ASSERT_EQ(handle, 0U);
}

}  // namespace cqsurvey
