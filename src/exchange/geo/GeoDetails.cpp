#include "exchange/geo/GeoDetails.h"

#include <cstdlib>

#include "cqsurvey/Limits.h"
#include "cqsurvey/Text.h"
#include "text/NumberText.h"

namespace cqsurvey::exchange {

const char* KindOf(const CqCadEntity& entity) {
    switch (entity.GetType()) {
        case EntSiPnt:
            return "point";
        case EntPline:
            return "polyline";
        case EntCircle:
            return "circle";
        case EntText:
            return "text";
        case EntBitmap:
            return "bitmap";
        case EntVertex:
            break;
    }
    return "vertex";
}

std::vector<GeoDetail> DetailsOf(CqSurveyDB& db, const CqCadEntity& entity) {
    std::vector<GeoDetail> details;
    const auto text = [&](std::string_view key, const CString& value) {
        if (!value.empty()) {
            details.push_back({key, ToUtf8(value), false});
        }
    };
    const auto number = [&](std::string_view key, double value) {
        details.push_back({key, FormatNumber(value), true});
    };
    details.push_back({"kind", KindOf(entity), false});
    text("layer", entity.GetLayer());
    if (std::abs(entity.GetColor()) != limits::kByLayer) {
        number("color", std::abs(entity.GetColor()));
    }
    if (entity.GetColor() < 0) {
        number("hidden", 1);
    }
    if (entity.GetCode() != 0) {
        number("code", entity.GetCode());
    }
    if (entity.GetType() == EntSiPnt) {
        text("name", entity.GetName());
        const CqHandle handle = db.GetCoordRecHandleByCadEntityHandle(entity.GetHandle());
        CqCoordRec record;
        if (db.GetCoordRec(handle, record) != 0 && record.GetGroup() != 0) {
            text("group", db.GetGroupName(record.GetGroup()));
        }
        CString description;
        if (db.GetCoordDescription(handle, description) != 0) {
            text("description", description);
        }
    } else if (entity.GetType() == EntText) {
        text("text", entity.GetText());
        number("height", entity.GetHeight());
        number("rotation", entity.GetRot());
    } else if (entity.GetType() == EntCircle) {
        number("radius", entity.GetRadius());
    }
    return details;
}

DrawingOutcome OutcomeOf(const GeoShape& shape, const CqCadEntity& entity) {
    if (!shape.fault.empty()) {
        return LeftOut(shape.fault);
    }
    if (entity.GetType() == EntText) {
        return Converted("Point with the text as a property");
    }
    if (entity.GetType() == EntSiPnt) {
        return Taken("Point");
    }
    return shape.lostHeights
               ? Converted("LineString without heights, of which some are missing", shape.deviation)
           : shape.broken ? Converted("LineString, its arcs broken into lines", shape.deviation)
                          : Taken("LineString");
}

}  // namespace cqsurvey::exchange
