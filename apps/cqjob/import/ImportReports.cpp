#include "cqjob/import/ImportReports.h"

#include <cqsurvey/cqsurvey.h>

#include <cmath>

#include "cqjob/Extents.h"
#include "text/NumberText.h"
#include "text/Printable.h"

namespace cqsurvey::cqjob {

using exchange::ImportCause;
using exchange::ImportedPoint;
using exchange::ImportExtents;
using exchange::ImportNote;
using exchange::ImportReport;
using Fate = exchange::ImportReport::Fate;

namespace {

void WritePlaces(Console& console, const ImportReport& report) {
    const ImportExtents& extents = report.GetExtents();
    if (extents.points == 0) {
        return;
    }
    console.Print("  easting {} to {}, northing {} to {}, {}\n", FormatNumber(extents.minEasting),
                  FormatNumber(extents.maxEasting), FormatNumber(extents.minNorthing),
                  FormatNumber(extents.maxNorthing),
                  extents.heights == 0
                      ? std::string("no heights")
                      : fmt::format("height {} to {}", FormatNumber(extents.minHeight),
                                    FormatNumber(extents.maxHeight)));
    for (const ImportedPoint& point : report.GetFirst()) {
        console.Print(
            "  point {}: easting {}, northing {}, {}\n", Quoted(ToUtf8(point.name)),
            FormatNumber(point.easting), FormatNumber(point.northing),
            std::isnan(point.height) ? "no height" : "height " + FormatNumber(point.height));
    }
}

void WritePlaces(JsonWriter& json, const ImportReport& report) {
    const ImportExtents& extents = report.GetExtents();
    if (extents.points > 0) {
        json.Object("extents", [&] {
            WriteMembers(json, {{extents.minEasting, extents.minNorthing},
                                {extents.maxEasting, extents.maxNorthing}});
            if (extents.heights > 0) {
                json.Member("min_height", extents.minHeight);
                json.Member("max_height", extents.maxHeight);
            }
        });
    }
    json.Objects("first_points", report.GetFirst(), [&](const ImportedPoint& point) {
        json.Member("name", point.name);
        json.Member("easting", point.easting);
        json.Member("northing", point.northing);
        json.Member("height", point.height);
    });
}

std::string DescribeAccuracy(const ImportReport& report) {
    return report.accuracy ? FormatNumber(*report.accuracy) + " m" : "unknown";
}

}  // namespace

void WriteReport(Console& console, const ImportReport& report) {
    console.Print("  {}\n", report.DescribeSum());
    const auto tell = [&](std::uint64_t count, const char* what) {
        if (count > 0) {
            console.Print("  {} {}\n", count, what);
        }
    };
    tell(report.missingHeights, "without height");
    tell(report.unnamed, "without name");
    tell(report.cut, "with the name cut");
    tell(report.renamed, "renamed");
    tell(report.strayQuotes, "with a quotation mark kept as it is");
    tell(report.moreColumns, "with text after the last column");
    tell(report.outOfTolerance, "out of tolerance");
    if (!report.operation.empty()) {
        console.Print("  projected {}; accuracy {}; heights {}\n", report.operation,
                      DescribeAccuracy(report), report.heightChange);
    }
    WritePlaces(console, report);
    for (const ImportCause& cause : report.GetCauses()) {
        console.Print("  refused {}: {}, first in line {}{}\n", cause.count, cause.text,
                      cause.firstLine, cause.hint.empty() ? "" : "; " + cause.hint);
    }
}

void WriteNotes(Console& console, const std::string& file, const ImportReport& report) {
    if (!report.GetNotes().empty()) {
        // On a terminal, the sums come first.
        console.Flush();
    }
    for (const ImportNote& note : report.GetNotes()) {
        const std::string last =
            note.lines > 1 ? fmt::format("-{}", note.line + note.lines - 1) : "";
        console.Say("{}:{}{}: {}: {}\n", Printable(file), note.line, last, note.what, note.text);
    }
    if (report.GetDroppedNotes() > 0) {
        console.Say("{}: {} that would be too many to tell\n", Printable(file),
                    Count(report.GetDroppedNotes(), "more note"));
    }
}

void WriteReport(JsonWriter& json, const ImportReport& report) {
    json.Member("lines", report.GetSum());
    json.Member("header", report.Get(Fate::Header));
    json.Member("comment", report.Get(Fate::Comment));
    json.Member("blank", report.Get(Fate::Blank));
    json.Member("recorded", report.Get(Fate::Recorded));
    json.Member("continued", report.GetContinued());
    json.Member("skipped", report.Get(Fate::Skipped));
    json.Member("refused", report.Get(Fate::Refused));
    json.Member("updated", report.Get(Fate::Updated));
    json.Member("checked", report.Get(Fate::Checked));
    json.Member("withheld", report.GetWithheld());
    json.Member("missing_heights", report.missingHeights);
    json.Member("unnamed", report.unnamed);
    json.Member("names_cut", report.cut);
    json.Member("renamed", report.renamed);
    json.Member("stray_quotes", report.strayQuotes);
    json.Member("more_columns", report.moreColumns);
    json.Member("out_of_tolerance", report.outOfTolerance);
    WritePlaces(json, report);
    if (!report.operation.empty()) {
        json.Object("projection", [&] {
            json.Member("operation", report.operation);
            json.Member("accuracy_metres", report.accuracy);
            json.Member("heights", report.heightChange);
        });
    }
    json.Objects("causes", report.GetCauses(), [&](const ImportCause& cause) {
        json.Member("cause", cause.text);
        json.Member("refused", cause.count);
        json.Member("first_line", cause.firstLine);
        json.Member("hint", cause.hint);
    });
    json.Objects("notes", report.GetNotes(), [&](const ImportNote& note) {
        json.Member("line", note.line);
        json.Member("lines", note.lines);
        json.Member("what", note.what);
        json.Member("text", note.text);
    });
    json.Member("notes_dropped", report.GetDroppedNotes());
}

}  // namespace cqsurvey::cqjob
