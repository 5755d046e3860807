#include "exchange/sima/FileImport.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

#include "cqsurvey/Text.h"
#include "cqsurvey/exchange/ExchangeError.h"
#include "exchange/drawing/LengthScale.h"
#include "exchange/drawing/Outcomes.h"
#include "exchange/drawing/Parcels.h"
#include "text/NumberText.h"
#include "text/Printable.h"

namespace cqsurvey::exchange::sima {

namespace {

/// True for a letter and two digits, by which every record begins.
bool IsKind(std::string_view text) {
    const auto isDigit = [](char c) { return c >= '0' && c <= '9'; };
    return text.size() == 3 && text[0] >= 'A' && text[0] <= 'Z' && isDigit(text[1]) &&
           isDigit(text[2]);
}

}  // namespace

FileImport::FileImport(TextSource& source, const SimaReadOptions& options, CqSurveyDB& db,
                       DrawingReport& report)
    : m_source(source),
      m_options(options),
      m_report(report),
      m_page(options.codePage),
      m_drawing(db, report),
      m_layers(
          db, [](std::string_view bytes) { return FromUtf8(bytes); }, report),
      m_points(m_drawing, report, options.duplicates, options.origin, options.group,
               options.jobName),
      m_limit(options.mostKeptBytes,
              [this] { Fail(m_line, "the points and parcels of the file take too much memory"); }) {
}

void FileImport::Fail(std::uint64_t line, const std::string& text) const {
    throw ExchangeError(fmt::format("{}:{}: {}", Printable(m_source.GetName()), line, text));
}

/// The next line without its end; false at the end of the file.
bool FileImport::NextLine(std::string& line) {
    constexpr std::size_t kLongest = 65536;
    while (true) {
        const std::size_t end = m_buffer.find_first_of("\r\n", std::max(m_position, m_looked));
        // A line that ends with CR may go on with LF.
        const bool whole =
            end != std::string::npos && (m_buffer[end] == '\n' || end + 1 < m_buffer.size());
        if (whole) {
            line.assign(m_buffer, m_position, end - m_position);
            m_position = end + (m_buffer.compare(end, 2, "\r\n") == 0 ? 2 : 1);
            break;
        }
        m_buffer.erase(0, m_position);
        m_position = 0;
        m_looked = m_buffer.empty() ? 0 : m_buffer.size() - 1;
        if (m_buffer.size() > kLongest + 1) {
            Fail(m_line + 1, "the line is too long");
        }
        if (!m_source.Read(m_buffer)) {
            if (m_buffer.empty()) {
                return false;
            }
            line = std::exchange(m_buffer, {});
            line.erase(std::find(line.begin(), line.end(), '\r'), line.end());
            break;
        }
    }
    if (line.size() > kLongest) {
        Fail(m_line + 1, "the line is too long");
    }
    ++m_line;
    return true;
}

std::string_view FileImport::Field(std::size_t index) const {
    return index < m_fields.size() ? Trim(m_fields[index]) : std::string_view();
}

void FileImport::Count(std::string_view kind, const CString& layer, const DrawingOutcome& outcome) {
    m_report.Count(kind, ToUtf8(layer), outcome, false, m_line);
}

void FileImport::Run() {
    const LengthUnit unit = m_options.fileUnit.value_or(LengthUnit::Metre);
    m_report.version = "SIMA";
    m_report.unit = UnitWord(unit);
    m_report.codePage = m_page.GetNumber();
    ScaleLengths(unit, m_options.jobUnit, m_report);
    std::string line;
    bool any = false;
    while (NextLine(line)) {
        // The mark by which old systems end a text.
        while (!line.empty() && (line.back() == '\x1A' || line.back() == '\0')) {
            line.pop_back();
        }
        if (!Trim(line).empty()) {
            any = true;
            ReadLine(line);
        }
        if (m_options.progress) {
            m_options.progress(m_line, m_source.GetBytes(), m_source.GetSize());
        }
    }
    if (!any) {
        Fail(1, "the file is empty");
    }
    if (m_section != Section::None) {
        Fail(m_line,
             fmt::format("the file is cut off: what begins in line {} has no end", m_begun));
    }
    for (const Parcel& parcel : m_parcels) {
        // A vertex stands in a path, in its ties, and as an object in the job's list.
        constexpr std::size_t kVertex = 256;
        m_line = parcel.line;  // for a fault
        m_limit.Take(parcel.corners * kVertex);
        m_report.Count("D00", kParcels, Draw(parcel), false, parcel.line);
        m_limit.GiveBack(parcel.corners * kVertex);
    }
    m_drawing.Finish();
}

void FileImport::Begin(Section section, std::string_view kind) {
    if (m_section != Section::None) {
        Fail(m_line, fmt::format("{} begins before what begins in line {} has its end",
                                 Quoted(kind), m_begun));
    }
    m_section = section;
    m_begun = m_line;
}

void FileImport::ReadLine(std::string_view line) {
    // No second byte of a character is a comma in the code pages of East Asia.
    m_fields.clear();
    for (std::string_view rest = line;;) {
        const std::size_t comma = rest.find(',');
        m_fields.push_back(rest.substr(0, comma));
        if (comma == std::string_view::npos) {
            break;
        }
        rest.remove_prefix(comma + 1);
    }
    const std::string_view kind = Field(0);
    if (!IsKind(kind)) {
        Fail(m_line, fmt::format("this is no SIMA file: {} is no kind of record", Quoted(kind)));
    }
    if (kind == "A00") {
        Begin(Section::Points, kind);
        Count(kind, {}, Taken("the points begin"));
    } else if (kind == "A01" && m_section == Section::Points) {
        const DrawingOutcome outcome = Point();
        Count(kind, m_drawing.GetLayerBefore(), outcome);
    } else if (kind == "A99") {
        if (m_section == Section::Parcel) {
            Fail(m_line, fmt::format("the points end inside the parcel of line {}", m_begun));
        }
        m_section = Section::None;
        Count(kind, {}, Taken("the points end"));
    } else if (kind == "D00") {
        Begin(Section::Parcel, kind);
        BeginParcel();
    } else if (kind == "B01" && m_section == Section::Parcel) {
        AddCorner();
    } else if (kind == "D99" && m_section == Section::Parcel) {
        m_section = Section::None;
        Count(kind, {}, Taken("the parcel ends"));
    } else if (kind == "Z00" && m_section == Section::None) {
        Count(kind, {}, LeftOut("it is a heading"));
    } else {
        Count(kind, {}, LeftOut(kNothingLikeIt));
    }
}

DrawingOutcome FileImport::Point() {
    const ParsedNumber north = ParseNumber(Field(3));
    const ParsedNumber east = ParseNumber(Field(4));
    const ParsedNumber height = ParseNumber(Field(5));
    const bool hasHeight = !Field(5).empty();
    if (north.fault != nullptr || east.fault != nullptr || (hasHeight && height.fault != nullptr)) {
        return LeftOut("a coordinate is not a number");
    }
    const double scale = m_report.scale;
    Known known;
    known.at = {east.value * scale, north.value * scale, hasHeight ? height.value * scale : 0.0};
    known.hasHeight = hasHeight;
    known.name = Field(2);
    PointDetails details;
    details.name = m_page.Decode(known.name);
    details.noHeight = !hasHeight;
    Style style;
    style.layer = m_drawing.GetLayerBefore();
    const DrawingOutcome outcome = m_points.Add(style, known.at, details, {});
    known.entity = m_points.GetLastEntity();
    // The nodes of the two maps beside what they hold, about.
    constexpr std::size_t kNodes = 144;
    const std::size_t bytes = kNodes + sizeof known + known.name.size() + Field(1).size();
    const auto [place, added] = m_byNumber.try_emplace(std::string(Field(1)), std::move(known));
    if (added) {
        m_limit.Take(bytes);
        m_byName.try_emplace(place->second.name, &place->second);
    } else {
        m_report.Note(
            fmt::format("the number {} stands for more than one point; corners with it "
                        "were taken for the first",
                        Quoted(Field(1))));
    }
    return outcome;
}

void FileImport::BeginParcel() {
    m_parcels.push_back({ToUtf8(m_page.Decode(Field(2))), m_line});
    m_limit.Take(sizeof(Parcel) + m_parcels.back().name.size());
}

void FileImport::AddCorner() {
    Corner& corner = m_corners.emplace_back();
    corner.point.append(Field(1)).append(",").append(Field(2));
    corner.line = m_line;
    m_limit.Take(sizeof corner + corner.point.size());
    ++m_parcels.back().corners;
}

const FileImport::Known* FileImport::Find(std::string_view number, std::string_view name) const {
    const auto numbered = m_byNumber.find(number);
    if (numbered != m_byNumber.end() && (name.empty() || numbered->second.name == name)) {
        return &numbered->second;
    }
    const auto named = m_byName.find(name);
    if (named != m_byName.end() && !name.empty()) {
        return named->second;
    }
    return numbered == m_byNumber.end() ? nullptr : &numbered->second;
}

DrawingOutcome FileImport::Draw(const Parcel& parcel) {
    std::vector<PathVertex> path;
    std::vector<CqHandle> ties;
    double east = 0.0;
    double north = 0.0;
    bool whole = true;
    for (std::size_t left = parcel.corners; left > 0; --left, m_corners.pop_front()) {
        const Corner& corner = m_corners.front();
        const std::string_view point = corner.point;
        const std::size_t comma = point.find(',');
        const std::string_view name = point.substr(comma + 1);
        const Known* known = Find(point.substr(0, comma), name);
        const DrawingOutcome outcome =
            known == nullptr ? LeftOut("the file does not have its point")
            : name.empty() || known->name == name
                ? Taken("corner of a parcel")
                : Converted("corner of a parcel; its number is that of a point of another name");
        m_report.Count("B01", kParcels, outcome, false, corner.line);
        if (known == nullptr || !Drawing::IsUsable(known->at)) {
            whole = false;
            continue;
        }
        path.push_back({known->at, 0.0, known->hasHeight});
        ties.push_back(known->entity);
        east += known->at.x;
        north += known->at.y;
    }
    if (path.size() < 3) {
        return LeftOut("it has fewer than three corners");
    }
    const auto count = static_cast<double>(path.size());
    const bool closed =
        path.front().at.x == path.back().at.x && path.front().at.y == path.back().at.y;
    if (!closed) {
        path.push_back(path.front());
        ties.push_back(ties.front());
    }
    Style style;
    style.layer = m_layers.Use(kParcels).name;
    if (!m_drawing.Polyline(style, path, {}, ties)) {
        return LeftOut(kNotFinite);
    }
    if (!parcel.name.empty()) {
        DrawParcelName(m_drawing, m_layers, parcel.name, {east / count, north / count, 0.0}, false,
                       m_options.jobUnit);
    }
    return whole ? Taken("closed polyline, and a text with its name")
                 : Converted("closed polyline without the corners that were left out");
}

}  // namespace cqsurvey::exchange::sima
