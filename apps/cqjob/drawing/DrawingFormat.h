#pragma once

#include <string>

namespace cqsurvey::cqjob {

/// The formats of files beside the job's own.
enum class DrawingFormat { Text, Dxf, LandXml, Sima, GeoJson, Kml };

/// The ending of a file's name in small letters, with its point: ".dxf".
[[nodiscard]] std::string FindEnding(const std::string& path);

/// The format that a word of --format names; of "auto", the one of the file's name. A file whose
/// name says nothing is a text of points.
[[nodiscard]] DrawingFormat FindFormat(const std::string& word, const std::string& path);

/// The name of the format, such as "LandXML".
[[nodiscard]] const char* NameOf(DrawingFormat format);

}  // namespace cqsurvey::cqjob
