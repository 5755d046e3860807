#include "gdal/FieldRole.h"

#include <array>

#include <cqsurvey/Limits.h>

namespace cqsurvey::gdal {

const FieldForm& FormOf(FieldRole role) {
    constexpr int kName = static_cast<int>(limits::kPointName);
    constexpr int kLayer = static_cast<int>(limits::kLayerName);
    // In the order of FieldRole.
    static const std::array<FieldForm, kFieldRoles> forms{{
        {"name", OFTString, OFSTNone, kName, "point_name,pt_name,point,pointno,id", "NAME_FIELD"},
        {"code", OFTInteger, OFSTNone, 0, "feature_code,featurecode", "CODE_FIELD"},
        {"code_word", OFTString},
        {"description", OFTString, OFSTNone, 0, "desc,descriptio,remark,note,comment",
         "DESCRIPTION_FIELD"},
        {"group_name", OFTString, OFSTNone, kName, "group", "GROUP_FIELD"},
        {"layer", OFTString, OFSTNone, kLayer, "", "LAYER_FIELD"},
        {"color", OFTInteger, OFSTNone, 0, "colour", "COLOR_FIELD"},
        {"line_type", OFTInteger, OFSTNone, 0, "", "LINE_FIELD"},
        {"time", OFTDateTime, OFSTNone, 0, "rectime,timestamp,datetime", "TIME_FIELD"},
        {"height", OFTReal, OFSTNone, 0, "elevation,elev,z", "HEIGHT_FIELD"},
        {"origin", OFTInteger},
        {"flags", OFTInteger64},
        {"hidden", OFTInteger, OFSTBoolean},
        {"closed", OFTInteger, OFSTBoolean},
        {"polyline", OFTInteger64},
        {"number", OFTInteger},
        {"bulge", OFTReal},
        {"point", OFTInteger64},
        {"point_name", OFTString, OFSTNone, kName},
        {"text", OFTString, OFSTNone, 0, "label,textstring", "TEXT_FIELD"},
        {"text_height", OFTReal, OFSTNone, 0, "textsize,size", "TEXT_HEIGHT_FIELD"},
        {"rotation", OFTReal, OFSTNone, 0, "angle,rot", "ROTATION_FIELD"},
        {"align_along", OFTInteger},
        {"align_across", OFTInteger},
        {"style", OFTString, OFSTNone, static_cast<int>(limits::kTextStyle)},
        {"option_style", OFTInteger64},
        {"interval", OFTInteger},
        {"thickness", OFTInteger},
        {"radius", OFTReal, OFSTNone, 0, "", "RADIUS_FIELD"},
        {"easting", OFTReal},
        {"northing", OFTReal},
        {"resource", OFTString},
        {"width", OFTReal},
        {"section", OFTString},
        {"key", OFTString},
        {"value", OFTString},
        {"image", OFTBinary},
        {"image_type", OFTInteger},
        {"image_height", OFTReal},
    }};
    return forms.at(static_cast<std::size_t>(role));
}

}  // namespace cqsurvey::gdal
