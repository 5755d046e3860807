#include "cqsurvey/exchange/ForeignFile.h"

#include <algorithm>
#include <cstddef>

#include "cqsurvey/exchange/ImageHeader.h"
#include "text/NumberText.h"

namespace cqsurvey::exchange {

namespace {

using namespace std::string_view_literals;

/// Takes the first line off the text.
std::string_view TakeLine(std::string_view& text) {
    const std::size_t end = std::min(text.find_first_of("\r\n"), text.size());
    const std::string_view line = text.substr(0, end);
    text.remove_prefix(end);
    text.remove_prefix(text.starts_with("\r\n") ? 2 : text.empty() ? 0 : 1);
    return Trim(line);
}

/// True for group codes and values on lines by turns, the first of which begins a section. Comments
/// have the group code 999.
bool IsDxf(std::string_view text) {
    if (text.starts_with("AutoCAD Binary DXF")) {
        return true;
    }
    while (!text.empty()) {
        const std::string_view code = TakeLine(text);
        const std::string_view value = TakeLine(text);
        if (code != "999") {
            return code == "0" && value == "SECTION";
        }
    }
    return false;
}

bool IsXml(std::string_view text) {
    const std::size_t first = text.find_first_not_of(" \t\r\n");
    if (first == std::string_view::npos || text[first] != '<' || first + 1 >= text.size()) {
        return false;
    }
    const char c = text[first + 1];
    return c == '?' || c == '!' || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

bool IsJob(std::string_view start) {
    constexpr std::size_t kApplication = 68;
    return start.size() > kApplication && start.substr(kApplication).starts_with("CqSv");
}

}  // namespace

std::optional<ForeignFile> FindForeignFile(std::string_view start) {
    const bool binary = start.find('\0') != std::string_view::npos;
    if (start.starts_with("SQLite format 3\0"sv)) {
        return IsJob(start) ? ForeignFile::Job : ForeignFile::Database;
    }
    if (start.starts_with("\x1F\x8B")) {
        return ForeignFile::Gzip;
    }
    if (start.starts_with("PK\x03\x04")) {
        return ForeignFile::Zip;
    }
    if (start.starts_with("\x7F"
                          "ELF") ||
        (binary && start.starts_with("MZ"))) {
        return ForeignFile::Program;
    }
    if (start.starts_with("%PDF-")) {
        return ForeignFile::Pdf;
    }
    if (binary && start.starts_with("AC10")) {
        return ForeignFile::Dwg;
    }
    if (ImageHeader::Find(start)) {
        return ForeignFile::Picture;
    }
    if (IsDxf(start)) {
        return ForeignFile::Dxf;
    }
    if (IsXml(start)) {
        return start.find("<LandXML") != std::string_view::npos ? ForeignFile::LandXml
                                                                : ForeignFile::Xml;
    }
    return std::nullopt;
}

const char* DescribeForeignFile(ForeignFile kind) {
    switch (kind) {
        case ForeignFile::Dxf:
            return "a DXF drawing";
        case ForeignFile::Dwg:
            return "a DWG drawing";
        case ForeignFile::LandXml:
            return "a LandXML file";
        case ForeignFile::Xml:
            return "an XML file";
        case ForeignFile::Gzip:
            return "compressed with gzip";
        case ForeignFile::Zip:
            return "a zip archive";
        case ForeignFile::Job:
            return "a job";
        case ForeignFile::Database:
            return "a database";
        case ForeignFile::Picture:
            return "a picture";
        case ForeignFile::Pdf:
            return "a PDF document";
        case ForeignFile::Program:
            break;
    }
    return "a program";
}

}  // namespace cqsurvey::exchange
