#include "exchange/PointImport.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>

#include "cqsurvey/CException.h"
#include "cqsurvey/CqCoordRec.h"
#include "cqsurvey/Text.h"
#include "cqsurvey/exchange/ExchangeError.h"
#include "text/NumberText.h"
#include "text/Printable.h"

namespace cqsurvey::exchange {

namespace {

using Fate = ImportReport::Fate;

constexpr const char* kNote = "note";

/// How far a repeated point is from the one that the job has.
struct Difference {
    double east = 0.0;
    double north = 0.0;
    double height = 0.0;  ///< not-a-number when one of them has none

    [[nodiscard]] bool IsWithin(double tolerance) const {
        // Two decimals that differ by the tolerance differ by a little more in binary.
        constexpr double kRounding = 1e-6;
        return std::hypot(east, north) <= tolerance + kRounding &&
               (std::isnan(height) || std::fabs(height) <= tolerance + kRounding);
    }

    [[nodiscard]] std::string Describe() const {
        constexpr int kDecimals = 4;
        const auto number = [](double value) {
            const std::string text = FormatNumber(value, kDecimals);
            return text == "-0.0000" ? "0.0000" : text;
        };
        return fmt::format("dE {}, dN {}, dH {}", number(east), number(north),
                           std::isnan(height) ? "unknown" : number(height));
    }
};

Difference Compare(const CqCoordRec& there, const ImportedPoint& point) {
    std::array<double, 3> coords{};
    there.GetPoint(coords.data());
    return {point.easting - coords[0], point.northing - coords[1], point.height - coords[2]};
}

}  // namespace

PointImport::PointImport(CqSurveyDB& db, ImportReport& report, const ImportOptions& options,
                         PointProjection* projection)
    : m_db(db),
      m_report(report),
      m_options(options),
      m_projection(projection),
      m_names([this](const CString& name) { return IsTaken(name); }),
      m_places(db, options) {}

bool PointImport::IsTaken(const CString& name) const {
    return m_db.GetCoordRecHandleByPtName(name) != 0;
}

bool PointImport::LooksLikeDegrees() const {
    return m_inDegrees && m_points > 0 && m_fine * 2 >= m_points;
}

void PointImport::Run(FieldTextFile& file, const TextSource& source) {
    FieldTextLine line;
    while (file.Next(line)) {
        switch (line.kind) {
            case FieldTextLine::Kind::Header:
                m_report.Count(Fate::Header, line.lines);
                break;
            case FieldTextLine::Kind::Comment:
                m_report.Count(Fate::Comment, line.lines);
                break;
            case FieldTextLine::Kind::Blank:
                m_report.Count(Fate::Blank, line.lines);
                break;
            case FieldTextLine::Kind::Refused:
                Refuse(line, line.reason, line.cause);
                break;
            case FieldTextLine::Kind::Point:
                try {
                    Take(line);
                } catch (const CException& error) {
                    throw ExchangeError(fmt::format("{}:{}: cannot be recorded: {}",
                                                    Printable(source.GetName()), line.line,
                                                    Printable(error.what())));
                }
                break;
        }
        if (m_options.progress) {
            m_options.progress(m_report.Get(Fate::Recorded) + m_report.Get(Fate::Updated),
                               source.GetBytes(), source.GetSize());
        }
    }
    m_places.Finish();
    if (m_report.GetSum() != source.GetLines()) {
        throw ExchangeError(fmt::format(
            "{}: of {} lines {} were accounted for, so nothing was recorded; this is a fault of "
            "the program",
            Printable(source.GetName()), source.GetLines(), m_report.GetSum()));
    }
}

void PointImport::Refuse(const FieldTextLine& line, const std::string& reason,
                         const std::string& cause) {
    m_report.Count(Fate::Refused, line.lines);
    m_report.Note({line.line, line.lines, "refused", reason, cause, line.hint});
}

void PointImport::Take(const FieldTextLine& line) {
    constexpr double kPole = 90.0;
    constexpr double kDateLine = 180.0;
    ImportedPoint point{CutName(line.name), line.easting, line.northing, line.height};
    ++m_points;
    m_fine += line.fine ? 1U : 0U;
    m_inDegrees = m_inDegrees &&
                  std::min(std::fabs(point.easting), std::fabs(point.northing)) <= kPole &&
                  std::max(std::fabs(point.easting), std::fabs(point.northing)) <= kDateLine;
    if (m_projection != nullptr && !m_projection->Apply(point)) {
        Refuse(line,
               fmt::format("the position {}, {} cannot be projected", FormatNumber(line.northing),
                           FormatNumber(line.easting)),
               "the position cannot be projected");
        return;
    }
    const bool cut = point.name.size() != line.name.size();
    const std::string cutText =
        cut ? fmt::format("the name {} is longer than {} characters, cut to {}",
                          Quoted(ToUtf8(line.name)), limits::kPointName, Quoted(ToUtf8(point.name)))
            : std::string();
    if (!point.name.empty() && IsTaken(point.name)) {
        if (TakeRepeated(line, point, cutText)) {
            return;
        }
    } else if (cut) {
        m_report.Note({line.line, line.lines, kNote, cutText});
    }
    Record(line, point);
    m_report.cut += cut ? 1U : 0U;
}

bool PointImport::TakeRepeated(const FieldTextLine& line, ImportedPoint& point,
                               const std::string& cut) {
    const CqHandle handle = m_db.GetCoordRecHandleByPtName(point.name);
    CqCoordRec there;
    const bool known = m_db.GetCoordRec(handle, there) != 0;
    const Difference difference = known ? Compare(there, point) : Difference();
    const std::string taken =
        (cut.empty() ? fmt::format("the job already has a point {}", Quoted(ToUtf8(point.name)))
                     : cut + ", which the job already has") +
        (known ? ": " + difference.Describe() : "");
    const auto note = [&](const char* what, const std::string& text) {
        m_report.Note({line.line, line.lines, what, text});
    };
    switch (m_options.duplicates) {
        case Duplicates::Refuse:
            Refuse(line, taken, "the job already has a point of that name");
            return true;
        case Duplicates::Skip:
            m_report.Count(Fate::Skipped, line.lines);
            note("skipped", taken);
            return true;
        case Duplicates::Update:
            Update(handle, line, point);
            m_report.Count(Fate::Updated, line.lines);
            note("updated", taken);
            return true;
        case Duplicates::Check: {
            const bool within = known && difference.IsWithin(m_options.tolerance);
            m_report.Count(Fate::Checked, line.lines);
            m_report.outOfTolerance += within ? 0U : 1U;
            note("checked", taken + (within ? "" : "; out of tolerance"));
            return true;
        }
        case Duplicates::Rename:
            break;
    }
    point.name = m_names.MakeUnique(point.name);
    ++m_report.renamed;
    note(kNote, fmt::format("{}; recorded as {}", taken, Quoted(ToUtf8(point.name))));
    return false;
}

void PointImport::Update(CqHandle handle, const FieldTextLine& line, ImportedPoint& point) {
    CqCoordRec there;
    std::array<double, 3> before{};
    if (m_db.GetCoordRec(handle, there) != 0) {
        there.GetPoint(before.data());
    }
    if (std::isnan(point.height)) {
        point.height = before[2];
    }
    const std::array coords = {point.easting, point.northing, point.height};
    if (m_db.EditCoordRec(handle, point.name, coords.data(),
                          line.hasCode ? line.code : there.GetCode()) == 0) {
        throw ExchangeError(
            fmt::format("the point {} could not be changed", Quoted(ToUtf8(point.name))));
    }
    Describe(handle, line.description);
    if (line.flags) {
        m_db.EditCoordRecFlags(handle, *line.flags);
    }
    if (line.time) {
        m_db.EditCoordRecTime(handle, *line.time);
    }
    m_places.Move(handle, line);
    m_report.Show(point);
}

void PointImport::Describe(CqHandle handle, const CString& description) {
    if (!description.empty() && m_db.AddCoordDescription(handle, description) == 0 &&
        m_db.EditCoordDescription(handle, description) == 0) {
        throw ExchangeError(
            fmt::format("the description {} could not be recorded", Quoted(ToUtf8(description))));
    }
}

void PointImport::Record(const FieldTextLine& line, const ImportedPoint& point) {
    m_places.Choose(line);
    const std::array coords = {point.easting, point.northing, point.height};
    const auto origin = line.origin ? static_cast<SurveyCoordType>(*line.origin) : m_options.origin;
    const CqHandle handle =
        m_db.AddCoordRec(coords.data(), point.name, line.code, origin, line.flags.value_or(0));
    if (line.time) {
        m_db.EditCoordRecTime(handle, *line.time);
    }
    Describe(handle, line.description);
    m_report.Count(Fate::Recorded, line.lines);
    m_report.Show(point);
    m_report.unnamed += point.name.empty() ? 1U : 0U;
    m_report.missingHeights += std::isnan(point.height) ? 1U : 0U;
    m_report.moreColumns += line.moreColumns ? 1U : 0U;
    if (line.strayQuote) {
        ++m_report.strayQuotes;
        m_report.Note({line.line, line.lines, kNote,
                       "a quotation mark that encloses no field is kept as it is"});
    }
}

}  // namespace cqsurvey::exchange
