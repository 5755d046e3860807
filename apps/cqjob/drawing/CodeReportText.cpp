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

void WriteReport(Console& console, const exchange::CodeReport& report, bool all,
                 std::size_t limit) {
    const auto count = [&](CodeFate fate) { return report.Count(fate); };
    console.Print("  {}, {} without a code\n", Count(report.points, "point"), report.withoutCode);
    console.Print(
        "  {} = {} drawn + {} only a point + {} unknown + {} incomplete + {} suspicious\n",
        Count(report.rows.size(), "code"), count(CodeFate::Drawn), count(CodeFate::PointOnly),
        count(CodeFate::Unknown), count(CodeFate::Incomplete), count(CodeFate::Suspicious));
    console.Print("  drawing: {} with {}, {}, {}\n", Count(report.lines, "polyline"),
                  Count(report.arcs, "arc"), Count(report.circles, "circle"),
                  Count(report.texts, "text"));
    console.Print("  {} added, {} kept, {} removed, {}, {} changed\n", report.added, report.kept,
                  report.removed, Count(report.layers, "new layer"),
                  Count(report.pointsChanged, "point"));
    if (report.damagedRows > 0) {
        console.Print("  {} of the job's code table make no sense and were left out\n",
                      Count(report.damagedRows, "row"));
    }
    for (const EditedEntity& edited : report.edited) {
        console.Print("  {} #{} was edited since it was drawn, and was left as it is{}\n",
                      edited.what, edited.handle,
                      edited.drawnAgain ? "; what its points make now was drawn beside it" : "");
    }
    TextTable table(console, {{"Point"}, {"Code"}, {"Fate"}, {"Drawn as"}, {"Reason"}});
    std::array<std::size_t, exchange::kCodeFateCount> shown{};
    std::size_t hidden = 0;
    bool any = false;
    for (const CodeRow& row : report.rows) {
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

void WriteReport(JsonWriter& json, const exchange::CodeReport& report) {
    json.Member("points", report.points);
    json.Member("points_without_code", report.withoutCode);
    json.Member("codes", report.rows.size());
    json.Member("drawn", report.Count(CodeFate::Drawn));
    json.Member("only_a_point", report.Count(CodeFate::PointOnly));
    json.Member("unknown", report.Count(CodeFate::Unknown));
    json.Member("incomplete", report.Count(CodeFate::Incomplete));
    json.Member("suspicious", report.Count(CodeFate::Suspicious));
    json.Member("polylines", report.lines);
    json.Member("arcs", report.arcs);
    json.Member("circles", report.circles);
    json.Member("texts", report.texts);
    json.Member("added", report.added);
    json.Member("kept", report.kept);
    json.Member("removed", report.removed);
    json.Member("new_layers", report.layers);
    json.Member("points_changed", report.pointsChanged);
    json.Member("damaged_rows", report.damagedRows);
    json.Objects("edited", report.edited, [&](const EditedEntity& edited) {
        json.Member("entity", edited.handle);
        json.Member("what", edited.what);
        json.Member("drawn_again", edited.drawnAgain);
    });
    json.Objects("rows", report.rows, [&](const CodeRow& row) {
        json.Member("point", row.name);
        json.Member("handle", row.point);
        json.Member("code", row.code);
        json.Member("fate", exchange::CodeFateWord(row.fate));
        json.Member("drawn_as", std::string(row.what));
        json.Member("reason", row.reason);
    });
}

}  // namespace cqsurvey::cqjob
