#include "cqjob/drawing/DrawingReportText.h"

#include <vector>

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

void DrawingReportText::WriteText(Console& console, bool isImport) const {
    console.Print("  version {}, unit {}, code page {}\n", Printable(m_report.version),
                  Printable(m_report.unit), m_report.codePage);
    console.Print("  {} entities = {} taken + {} converted + {} left out", m_report.GetSum(),
                  m_report.Get(DrawingFate::Taken), m_report.Get(DrawingFate::Converted),
                  m_report.Get(DrawingFate::LeftOut));
    if (m_report.GetInBlocks() > 0) {
        console.Print("; and {} that inserted blocks draw", m_report.GetInBlocks());
    }
    console.Print("\n");
    if (isImport) {
        console.Print(
            "  recorded: {}, {} of {}, {}, {}, {}\n", Count(m_report.points, "point"),
            Count(m_report.polylines, "polyline"),
            m_report.vertices == 1 ? "1 vertex" : fmt::format("{} vertices", m_report.vertices),
            Count(m_report.circles, "circle"), Count(m_report.texts, "text"),
            Count(m_report.layers, "new layer"));
    }
    if (m_report.GetDeviation() > 0.0) {
        console.Print("  largest deviation: {}\n", DescribeDeviation(m_report.GetDeviation()));
    }
    for (const std::string& note : m_report.GetNotes()) {
        console.Print("  note: {}\n", Printable(note));
    }
    TextTable table(console, {{"Count", true},
                              {"Kind"},
                              {"Layer"},
                              {"Fate"},
                              {"What"},
                              {"Deviation", true},
                              {isImport ? "First at" : "First handle", true}});
    for (const DrawingRow& row : m_report.GetRows()) {
        table.Add({std::to_string(row.count), row.inBlock ? row.kind + " in a block" : row.kind,
                   row.layer, exchange::FateWord(row.fate), row.what,
                   DescribeDeviation(row.deviation), std::to_string(row.place)});
    }
    table.Finish();
}

void DrawingReportText::WriteJson(JsonWriter& json, bool isImport) const {
    json.Member("version", m_report.version);
    json.Member("unit", m_report.unit);
    json.Member("scale", m_report.scale);
    json.Member("code_page", m_report.codePage);
    json.Member("entities", m_report.GetSum());
    json.Member("taken", m_report.Get(DrawingFate::Taken));
    json.Member("converted", m_report.Get(DrawingFate::Converted));
    json.Member("left_out", m_report.Get(DrawingFate::LeftOut));
    json.Member("in_blocks", m_report.GetInBlocks());
    json.Member("largest_deviation", m_report.GetDeviation());
    if (isImport) {
        json.Member("points", m_report.points);
        json.Member("polylines", m_report.polylines);
        json.Member("vertices", m_report.vertices);
        json.Member("circles", m_report.circles);
        json.Member("texts", m_report.texts);
        json.Member("new_layers", m_report.layers);
    }
    json.Key("notes");
    json.BeginArray();
    for (const std::string& note : m_report.GetNotes()) {
        json.Value(note);
    }
    json.EndArray();
    json.Key("rows");
    json.BeginArray();
    for (const DrawingRow& row : m_report.GetRows()) {
        json.BeginObject();
        json.Member("kind", row.kind);
        json.Member("layer", row.layer);
        json.Member("fate", exchange::FateWord(row.fate));
        json.Member("what", row.what);
        json.Member("in_block", row.inBlock);
        json.Member("count", row.count);
        json.Member("deviation", row.deviation);
        json.Member(isImport ? "first_place" : "first_handle", row.place);
        json.EndObject();
    }
    json.EndArray();
}

}  // namespace cqsurvey::cqjob
