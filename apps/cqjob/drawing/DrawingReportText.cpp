#include "cqjob/drawing/DrawingReportText.h"

#include "cqjob/TextTable.h"
#include "text/NumberText.h"
#include "text/Printable.h"

namespace cqsurvey::cqjob {

using exchange::DrawingFate;
using exchange::DrawingRow;

namespace {

std::string DescribeDeviation(double deviation) {
    constexpr double kLeastShown = 1e-6;
    return deviation == 0.0          ? ""
           : deviation < kLeastShown ? "below 0.000001"
                                     : FormatNumber(deviation, 6);
}

}  // namespace

void WriteReport(Console& console, const exchange::DrawingReport& report, bool isImport) {
    console.Print("  version {}, unit {}, code page {}\n", Printable(report.version),
                  Printable(report.unit), report.codePage);
    console.Print("  {} entities = {} taken + {} converted + {} left out", report.GetSum(),
                  report.Get(DrawingFate::Taken), report.Get(DrawingFate::Converted),
                  report.Get(DrawingFate::LeftOut));
    if (report.GetInBlocks() > 0) {
        console.Print("; and {} that inserted blocks draw", report.GetInBlocks());
    }
    console.Print("\n");
    if (isImport) {
        console.Print(
            "  recorded: {}, {} of {}, {}, {}, {}\n", Count(report.points, "point"),
            Count(report.polylines, "polyline"),
            report.vertices == 1 ? "1 vertex" : fmt::format("{} vertices", report.vertices),
            Count(report.circles, "circle"), Count(report.texts, "text"),
            Count(report.layers, "new layer"));
    }
    if (report.GetDeviation() > 0.0) {
        console.Print("  largest deviation: {}\n", DescribeDeviation(report.GetDeviation()));
    }
    for (const std::string& note : report.GetNotes()) {
        console.Print("  note: {}\n", Printable(note));
    }
    TextTable table(console, {{"Count", true},
                              {"Kind"},
                              {"Layer"},
                              {"Fate"},
                              {"What"},
                              {"Deviation", true},
                              {isImport ? "First at" : "First handle", true}});
    for (const DrawingRow& row : report.GetRows()) {
        table.Add({std::to_string(row.count), row.inBlock ? row.kind + " in a block" : row.kind,
                   row.layer, exchange::FateWord(row.fate), row.what,
                   DescribeDeviation(row.deviation), std::to_string(row.place)});
    }
    table.Finish();
}

void WriteReport(JsonWriter& json, const exchange::DrawingReport& report, bool isImport) {
    json.Member("version", report.version);
    json.Member("unit", report.unit);
    json.Member("scale", report.scale);
    json.Member("code_page", report.codePage);
    json.Member("entities", report.GetSum());
    json.Member("taken", report.Get(DrawingFate::Taken));
    json.Member("converted", report.Get(DrawingFate::Converted));
    json.Member("left_out", report.Get(DrawingFate::LeftOut));
    json.Member("in_blocks", report.GetInBlocks());
    json.Member("largest_deviation", report.GetDeviation());
    if (isImport) {
        json.Member("points", report.points);
        json.Member("polylines", report.polylines);
        json.Member("vertices", report.vertices);
        json.Member("circles", report.circles);
        json.Member("texts", report.texts);
        json.Member("new_layers", report.layers);
    }
    json.Values("notes", report.GetNotes());
    json.Objects("rows", report.GetRows(), [&](const DrawingRow& row) {
        json.Member("kind", row.kind);
        json.Member("layer", row.layer);
        json.Member("fate", exchange::FateWord(row.fate));
        json.Member("what", row.what);
        json.Member("in_block", row.inBlock);
        json.Member("count", row.count);
        json.Member("deviation", row.deviation);
        json.Member(isImport ? "first_place" : "first_handle", row.place);
    });
}

}  // namespace cqsurvey::cqjob
