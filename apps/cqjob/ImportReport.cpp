#include "cqjob/ImportReport.h"

#include <fmt/format.h>

#include "cqjob/Printable.h"

namespace cqsurvey::cqjob {

ImportReport::ImportReport(Console& console, std::string file, bool keep)
    : m_console(console), m_file(std::move(file)), m_keep(keep) {}

void ImportReport::Count(Fate fate, std::uint64_t lines) {
    std::uint64_t* count = nullptr;
    switch (fate) {
        case Fate::Header:
            count = &m_header;
            break;
        case Fate::Comment:
            count = &m_comment;
            break;
        case Fate::Blank:
            count = &m_blank;
            break;
        case Fate::Recorded:
            count = &m_recorded;
            break;
        case Fate::Skipped:
            count = &m_skipped;
            break;
        case Fate::Refused:
            count = &m_refused;
            break;
    }
    ++*count;
    m_continued += lines - 1;
}

void ImportReport::Note(std::uint64_t line, std::uint64_t lines, const char* word,
                        const std::string& text) {
    if (m_keep) {
        m_notes.push_back({line, lines, word, text});
        return;
    }
    const std::string last = lines > 1 ? fmt::format("-{}", line + lines - 1) : "";
    m_console.Say("{}:{}{}: {}: {}\n", Printable(m_file), line, last, word, text);
}

void ImportReport::Withhold() {
    m_withheld += m_recorded;
    m_recorded = 0;
}

std::uint64_t ImportReport::GetSum() const {
    return m_header + m_comment + m_blank + m_recorded + m_continued + m_skipped + m_refused +
           m_withheld;
}

std::string ImportReport::DescribeSum() const {
    return fmt::format(
        "{} lines = {} header + {} comment + {} blank + {} recorded + {} continued + {} skipped + "
        "{} refused{}",
        GetSum(), m_header, m_comment, m_blank, m_recorded, m_continued, m_skipped, m_refused,
        m_withheld == 0 ? "" : fmt::format(" + {} withheld", m_withheld));
}

void ImportReport::WriteJson(JsonWriter& json) const {
    json.Member("lines", GetSum());
    json.Member("header", m_header);
    json.Member("comment", m_comment);
    json.Member("blank", m_blank);
    json.Member("recorded", m_recorded);
    json.Member("continued", m_continued);
    json.Member("skipped", m_skipped);
    json.Member("refused", m_refused);
    json.Member("withheld", m_withheld);
    json.Member("missing_heights", missingHeights);
    json.Member("unnamed", unnamed);
    json.Member("names_cut", cut);
    json.Member("renamed", renamed);
    json.Member("stray_quotes", strayQuotes);
    json.Member("more_columns", moreColumns);
    json.Key("notes");
    json.BeginArray();
    for (const KeptNote& note : m_notes) {
        json.BeginObject();
        json.Member("line", note.line);
        json.Member("lines", note.lines);
        json.Member("what", note.word);
        json.Member("text", note.text);
        json.EndObject();
    }
    json.EndArray();
}

}  // namespace cqsurvey::cqjob
