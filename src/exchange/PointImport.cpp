#include "exchange/PointImport.h"

#include <fmt/format.h>

#include <array>
#include <cmath>

#include "cqsurvey/CException.h"
#include "cqsurvey/CqCoordRec.h"
#include "cqsurvey/Text.h"
#include "cqsurvey/exchange/ExchangeError.h"
#include "text/Printable.h"

namespace cqsurvey::exchange {

namespace {

using Fate = ImportReport::Fate;

constexpr const char* kNote = "note";

}  // namespace

PointImport::PointImport(CqSurveyDB& db, ImportReport& report, Duplicates duplicates,
                         SurveyCoordType origin)
    : m_db(db),
      m_report(report),
      m_duplicates(duplicates),
      m_origin(origin),
      m_names([this](const CString& name) { return IsTaken(name); }) {}

bool PointImport::IsTaken(const CString& name) const {
    return m_db.GetCoordRecHandleByPtName(name) != 0;
}

void PointImport::Run(FieldTextFile& file, const TextSource& source, const Progress& progress) {
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
                m_report.Count(Fate::Refused, line.lines);
                m_report.Note({line.line, line.lines, "refused", line.reason});
                break;
            case FieldTextLine::Kind::Point:
                try {
                    Record(line);
                } catch (const CException& error) {
                    throw ExchangeError(fmt::format("{}:{}: cannot be recorded: {}",
                                                    Printable(source.GetName()), line.line,
                                                    Printable(error.what())));
                }
                break;
        }
        if (progress) {
            progress(m_report.Get(Fate::Recorded), source.GetBytes(), source.GetSize());
        }
    }
    if (m_report.GetSum() != source.GetLines()) {
        throw ExchangeError(fmt::format(
            "{}: of {} lines {} were accounted for, so nothing was recorded; this is a fault of "
            "the program",
            Printable(source.GetName()), source.GetLines(), m_report.GetSum()));
    }
}

void PointImport::Record(const FieldTextLine& line) {
    CString name = CutName(line.name);
    const bool cut = name.size() != line.name.size();
    const std::string cutText =
        cut ? fmt::format("the name {} is longer than {} characters, cut to {}",
                          Quoted(ToUtf8(line.name)), kLongestName, Quoted(ToUtf8(name)))
            : std::string();
    bool renamed = false;
    if (!name.empty() && IsTaken(name)) {
        const std::string taken =
            cut ? cutText + ", which the job already has"
                : fmt::format("the job already has a point {}", Quoted(ToUtf8(name)));
        if (m_duplicates != Duplicates::Rename) {
            const bool skip = m_duplicates == Duplicates::Skip;
            m_report.Count(skip ? Fate::Skipped : Fate::Refused, line.lines);
            m_report.Note({line.line, line.lines, skip ? "skipped" : "refused", taken});
            return;
        }
        name = m_names.MakeUnique(name);
        renamed = true;
        m_report.Note({line.line, line.lines, kNote,
                       fmt::format("{}; recorded as {}", taken, Quoted(ToUtf8(name)))});
    } else if (cut) {
        m_report.Note({line.line, line.lines, kNote, cutText});
    }
    const std::array coords = {line.easting, line.northing, line.height};
    const CqHandle handle = m_db.AddCoordRec(coords.data(), name, line.code, m_origin, 0);
    if (!line.description.empty() && m_db.AddCoordDescription(handle, line.description) == 0 &&
        m_db.EditCoordDescription(handle, line.description) == 0) {
        throw ExchangeError(fmt::format("the description {} could not be recorded",
                                        Quoted(ToUtf8(line.description))));
    }
    m_report.Count(Fate::Recorded, line.lines);
    m_report.cut += cut ? 1U : 0U;
    m_report.renamed += renamed ? 1U : 0U;
    m_report.unnamed += name.empty() ? 1U : 0U;
    m_report.missingHeights += std::isnan(line.height) ? 1U : 0U;
    m_report.moreColumns += line.moreColumns ? 1U : 0U;
    if (line.strayQuote) {
        ++m_report.strayQuotes;
        m_report.Note({line.line, line.lines, kNote,
                       "a quotation mark that encloses no field is kept as it is"});
    }
}

}  // namespace cqsurvey::exchange
