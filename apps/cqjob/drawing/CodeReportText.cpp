#include "cqjob/drawing/CodeReportText.h"

#include <array>

#include "cqjob/TextTable.h"
#include "text/Printable.h"

namespace cqsurvey::cqjob {

using exchange::CodeFate;
using exchange::CodeRow;
using exchange::EditedEntity;

namespace {

std::string ShowName(const CodeRow& row) {
    return row.name.empty() ? "#" + std::to_string(row.point) : row.name;
}

}  // namespace

void CodeReportText::WriteText(Console& console, bool all, std::size_t limit) const {
    const auto count = [&](CodeFate fate) { return m_report.Count(fate); };
    console.Print("  {}, {} without a code\n", Count(m_report.points, "point"),
                  m_report.withoutCode);
    console.Print(
        "  {} = {} drawn + {} only a point + {} unknown + {} incomplete + {} suspicious\n",
        Count(m_report.rows.size(), "code"), count(CodeFate::Drawn), count(CodeFate::PointOnly),
        count(CodeFate::Unknown), count(CodeFate::Incomplete), count(CodeFate::Suspicious));
    console.Print("  drawing: {} with {}, {}, {}\n", Count(m_report.lines, "polyline"),
                  Count(m_report.arcs, "arc"), Count(m_report.circles, "circle"),
                  Count(m_report.texts, "text"));
    console.Print("  {} added, {} kept, {} removed, {}, {} changed\n", m_report.added,
                  m_report.kept, m_report.removed, Count(m_report.layers, "new layer"),
                  Count(m_report.pointsChanged, "point"));
    if (m_report.damagedRows > 0) {
        console.Print("  {} of the job's code table make no sense and were left out\n",
                      Count(m_report.damagedRows, "row"));
    }
    for (const EditedEntity& edited : m_report.edited) {
        console.Print("  {} #{} was edited since it was drawn, and was left as it is{}\n",
                      edited.what, edited.handle,
                      edited.drawnAgain ? "; what its points make now was drawn beside it" : "");
    }
    TextTable table(console, {{"Point"}, {"Code"}, {"Fate"}, {"Drawn as"}, {"Reason"}});
    std::array<std::size_t, exchange::kCodeFateCount> shown{};
    std::size_t hidden = 0;
    bool any = false;
    for (const CodeRow& row : m_report.rows) {
        const bool fine = row.reason.empty();
        if (!all && (fine || ++shown[static_cast<std::size_t>(row.fate)] > limit)) {
            hidden += fine ? 0U : 1U;
            continue;
        }
        any = true;
        table.Add({ShowName(row), row.code, exchange::CodeFateWord(row.fate), std::string(row.what),
                   row.reason});
    }
    if (any) {
        table.Finish();
    }
    if (hidden > 0) {
        console.Print("  ... and {} more; --limit and --list show them\n", hidden);
    }
}

void CodeReportText::WriteJson(JsonWriter& json) const {
    json.Member("points", m_report.points);
    json.Member("points_without_code", m_report.withoutCode);
    json.Member("codes", m_report.rows.size());
    json.Member("drawn", m_report.Count(CodeFate::Drawn));
    json.Member("only_a_point", m_report.Count(CodeFate::PointOnly));
    json.Member("unknown", m_report.Count(CodeFate::Unknown));
    json.Member("incomplete", m_report.Count(CodeFate::Incomplete));
    json.Member("suspicious", m_report.Count(CodeFate::Suspicious));
    json.Member("polylines", m_report.lines);
    json.Member("arcs", m_report.arcs);
    json.Member("circles", m_report.circles);
    json.Member("texts", m_report.texts);
    json.Member("added", m_report.added);
    json.Member("kept", m_report.kept);
    json.Member("removed", m_report.removed);
    json.Member("new_layers", m_report.layers);
    json.Member("points_changed", m_report.pointsChanged);
    json.Member("damaged_rows", m_report.damagedRows);
    json.Key("edited");
    json.BeginArray();
    for (const EditedEntity& edited : m_report.edited) {
        json.BeginObject();
        json.Member("entity", edited.handle);
        json.Member("what", edited.what);
        json.Member("drawn_again", edited.drawnAgain);
        json.EndObject();
    }
    json.EndArray();
    json.Key("rows");
    json.BeginArray();
    for (const CodeRow& row : m_report.rows) {
        json.BeginObject();
        json.Member("point", row.name);
        json.Member("handle", row.point);
        json.Member("code", row.code);
        json.Member("fate", exchange::CodeFateWord(row.fate));
        json.Member("drawn_as", std::string(row.what));
        json.Member("reason", row.reason);
        json.EndObject();
    }
    json.EndArray();
}

}  // namespace cqsurvey::cqjob
