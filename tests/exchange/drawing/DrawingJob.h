#pragma once

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstdio>
#include <string>
#include <vector>

#include "cqsurvey/CqSurveyDB.h"
#include "cqsurvey/Ranges.h"
#include "cqsurvey/Text.h"
#include "cqsurvey/exchange/ExchangeError.h"
#include "support/TempDir.h"

namespace cqsurvey::exchange {

/// A new job, and a list of what is drawn in it.
class DrawingJob {
 public:
    DrawingJob() { db.CreateNew(folder.Path(u"site.job")); }

    /// Every entity as "line 1,2,3 4,5,6(0.5)", "circle", "text" or "point". A height that is
    /// missing is "-".
    std::vector<std::string> List();

    TempDir folder;
    CqSurveyDB db;
};

/// The error of reading the text into a new job of this kind, which stays as it was; "none" when
/// there is none.
template <class Job, class Options>
std::string FaultOfReading(const std::string& text, const Options& options) {
    Job job;
    try {
        static_cast<void>(job.Read(text, options));
    } catch (const ExchangeError& error) {
        EXPECT_TRUE(job.List().empty());
        EXPECT_EQ(job.db.GetNumLayers(), 1);
        return error.what();
    }
    return "none";
}

inline std::string Place(const CqCadEntity& entity) {
    double at[3];
    entity.GetPoint(at);
    std::string text;
    for (const double value : at) {
        char digits[40];
        std::snprintf(digits, sizeof digits, "%.9g", value == 0.0 ? 0.0 : value);
        text += (text.empty() ? "" : ",") + std::string(std::isnan(value) ? "-" : digits);
    }
    return text;
}

inline std::vector<std::string> DrawingJob::List() {
    std::vector<std::string> list;
    const auto number = [](double value) {
        char digits[40];
        std::snprintf(digits, sizeof digits, "%.6g", value == 0.0 ? 0.0 : value);
        return std::string(digits);
    };
    for (const CqCadEntityPtr& entity : Entities(db)) {
        switch (entity->GetType()) {
            case EntSiPnt:
                list.push_back("point " + ToUtf8(entity->GetName()) + " " + Place(*entity));
                break;
            case EntPline:
                list.emplace_back("line");
                break;
            case EntVertex:
                list.back() +=
                    " " + Place(*entity) +
                    (entity->GetBulge() == 0.0 ? "" : "(" + number(entity->GetBulge()) + ")");
                break;
            case EntText:
                list.push_back("text " + ToUtf8(entity->GetText()) + " " + Place(*entity) + " h" +
                               number(entity->GetHeight()) + " r" + number(entity->GetRot()) +
                               " a" + std::to_string(entity->GetAlign() & 0xFFFF) +
                               std::to_string(entity->GetAlign() >> 16));
                break;
            case EntCircle:
                list.push_back("circle " + Place(*entity) + " " + number(entity->GetRadius()));
                break;
            case EntBitmap:
                list.emplace_back("bitmap");
                break;
        }
    }
    return list;
}

inline CqHandle DrawPath(CqSurveyDB& db, const std::vector<std::array<double, 4>>& vertices,
                         int line = 256, int code = 0) {
    CqCadEntityList* list = db.StartPline(line, code);
    for (const auto& vertex : vertices) {
        db.AddVertex(list, vertex.data(), vertex[3]);
    }
    return db.EndPline(list);
}

/// Everything that a file may keep of an entity.
inline std::vector<std::string> Details(CqSurveyDB& db) {
    std::vector<std::string> list;
    for (const CqCadEntityPtr& entity : Entities(db)) {
        CqCoordRec record;
        CString description;
        if (entity->GetType() == EntSiPnt) {
            const CqHandle point = db.GetCoordRecHandleByCadEntityHandle(entity->GetHandle());
            static_cast<void>(db.GetCoordRec(point, record));
            db.GetCoordDescription(point, description);
        }
        list.push_back(
            std::to_string(entity->GetType()) + " " + ToUtf8(entity->GetLayer()) + " " +
            std::to_string(entity->GetColor()) + " " + Place(*entity) + " b" +
            std::to_string(entity->GetBulge()) + " l" + std::to_string(entity->GetLine()) + " c" +
            std::to_string(entity->GetCode()) + " " + ToUtf8(entity->GetName()) +
            ToUtf8(entity->GetText()) + " a" + std::to_string(entity->GetAlign()) + " s" +
            ToUtf8(entity->GetStyle()) + " h" + std::to_string(entity->GetHeight()) + " r" +
            std::to_string(entity->GetRot()) + " R" + std::to_string(entity->GetRadius()) + " o" +
            std::to_string(entity->GetOptionStyle()) + "," + std::to_string(entity->GetInterval()) +
            "," + std::to_string(entity->GetThickness()) + " p" +
            std::to_string(static_cast<int>(record.GetType())) + "," +
            std::to_string(record.GetFlags()) + "," + ToUtf8(db.GetGroupName(record.GetGroup())) +
            "," + ToUtf8(description));
    }
    return list;
}

inline std::vector<std::string> LayersOf(CqSurveyDB& db) {
    std::vector<std::string> list;
    CString name;
    int color = 0;
    for (CqHandle handle = db.GetFirstLayerHandle();
         handle != 0 && db.GetNextLayer(handle, name, color) != 0;) {
        list.push_back(ToUtf8(name) + " " + std::to_string(color) + " " +
                       std::to_string(db.GetLayerLine(name)));
    }
    return list;
}

}  // namespace cqsurvey::exchange
