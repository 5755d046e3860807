#include "cqjob/drawing/DrawingFormat.h"

#include <array>
#include <filesystem>
#include <string_view>

namespace cqsurvey::cqjob {

namespace {

struct Row {
    std::string_view word;  ///< of --format
    std::string_view ending;
    DrawingFormat format;
    const char* name;
};

constexpr std::array<Row, 8> kRows{{{"text", "", DrawingFormat::Text, "text"},
                                    {"dxf", ".dxf", DrawingFormat::Dxf, "DXF"},
                                    {"landxml", ".landxml", DrawingFormat::LandXml, "LandXML"},
                                    {"landxml", ".xml", DrawingFormat::LandXml, "LandXML"},
                                    {"sima", ".sim", DrawingFormat::Sima, "SIMA"},
                                    {"geojson", ".geojson", DrawingFormat::GeoJson, "GeoJSON"},
                                    {"geojson", ".json", DrawingFormat::GeoJson, "GeoJSON"},
                                    {"kml", ".kml", DrawingFormat::Kml, "KML"}}};

}  // namespace

std::string FindEnding(const std::string& path) {
    std::string ending = std::filesystem::path(path).extension().string();
    for (char& c : ending) {
        c = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    }
    return ending;
}

DrawingFormat FindFormat(const std::string& word, const std::string& path) {
    const std::string ending = FindEnding(path);
    for (const Row& row : kRows) {
        if (word == "auto" ? !row.ending.empty() && row.ending == ending : row.word == word) {
            return row.format;
        }
    }
    return DrawingFormat::Text;
}

const char* NameOf(DrawingFormat format) {
    for (const Row& row : kRows) {
        if (row.format == format) {
            return row.name;
        }
    }
    return "";
}

}  // namespace cqsurvey::cqjob
