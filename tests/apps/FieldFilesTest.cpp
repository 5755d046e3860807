#include <cqsurvey/cqsurvey.h>
#include <csv.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <optional>
#include <ostream>
#include <set>
#include <string>
#include <vector>

#include "apps/RunCqjob.h"
#include "support/HostBytes.h"
#include "support/TempDir.h"

namespace cqsurvey::cqjob {
namespace {

/// A point file of a real survey and how another reader finds its points.
struct FieldFile {
    const char* name;
    std::vector<std::string> options;
    char separator;
    std::size_t headerRows;
    std::size_t nameColumn;
    std::size_t eastingColumn;
    std::size_t northingColumn;
    std::size_t heightColumn;
    std::optional<std::size_t> textColumn;
    bool restIsText;
    const char* noHeight;
    std::size_t points;
};

std::ostream& operator<<(std::ostream& out, const FieldFile& file) {
    return out << file.name;
}

const std::vector<FieldFile>& Files() {
    static const std::vector<FieldFile> kFiles = {
        {"topo_pnezd_ft.asc", {"--order", "pnezd"}, ',', 0, 0, 2, 1, 3, 4, true, "", 1311},
        {"linecoded_penzd_bom.txt", {"--order", "penzd"}, ',', 0, 0, 1, 2, 3, 4, true, "", 956},
        {"linecoded_penzd_errors.txt", {"--order", "penzd"}, ',', 0, 0, 1, 2, 3, 4, true, "", 35},
        {"ts_day_penzd_hdr.csv", {"--order", "header"}, ',', 1, 0, 1, 2, 3, 4, false, "", 117},
        {"ts_job_pnezd_sentinel.csv",
         {"--order", "header", "--no-height", "-9.99E+27"},
         ',',
         1,
         0,
         2,
         1,
         3,
         4,
         true,
         "-9.99E+27",
         556},
        {"ts_12k_pnezd_hdr.csv", {"--order", "pnezd"}, ',', 1, 0, 2, 1, 3, 4, true, "", 12244},
        {"gb_trig_marks_31k.csv",
         {"--columns",
          "name=New Name,easting=EASTING,northing=NORTHING,height=HEIGHT,desc=COMMENTS",
          "--no-height", "0", "--duplicates", "rename"},
         ',',
         1,
         2,
         3,
         4,
         5,
         15,
         true,
         "0",
         31521},
        {"storm_structures_78k_pnezd_ft.csv",
         {"--order", "pnezd"},
         ',',
         0,
         0,
         2,
         1,
         3,
         4,
         true,
         "",
         78133},
        {"penzh_tab_decimalcomma.txt",
         {"--order", "header", "--decimal-comma"},
         '\t',
         1,
         0,
         1,
         2,
         3,
         std::nullopt,
         false,
         "",
         104},
        {"codes_idxyz_att.csv", {"--order", "header"}, ',', 1, 0, 1, 2, 3, 4, false, "", 35},
        {"codes_comments.csv", {"--order", "penzd"}, ',', 0, 0, 1, 2, 3, 4, true, "", 32},
    };
    return kFiles;
}

std::filesystem::path DataFolder() {
    const char* named = std::getenv("CQSURVEY_DATA");
    return (named != nullptr ? std::filesystem::path(named)
                             : std::filesystem::path(CQSURVEY_SOURCE_DIR) / "../shared/data") /
           "points";
}

using Row = std::vector<std::string>;

/// The rows of a file without comments and empty lines, as libcsv reads them.
std::vector<Row> ReadRows(const std::string& text, char separator) {
    struct State {
        std::vector<Row> rows;
        Row row;
    } state;
    csv_parser parser;
    csv_init(&parser, 0);
    csv_set_delim(&parser, static_cast<unsigned char>(separator));
    const auto onField = [](void* data, std::size_t size, void* to) {
        static_cast<State*>(to)->row.emplace_back(static_cast<const char*>(data), size);
    };
    const auto onRow = [](int, void* to) {
        auto* read = static_cast<State*>(to);
        if (!read->row[0].starts_with("#")) {
            read->rows.push_back(read->row);
        }
        read->row.clear();
    };
    csv_parse(&parser, text.data(), text.size(), onField, onRow, &state);
    csv_fini(&parser, onField, onRow, &state);
    csv_free(&parser);
    return state.rows;
}

/// What the report's line of sums says of `word`.
std::size_t CountOf(const std::string& report, const std::string& word) {
    const std::size_t end = report.find(" " + word);
    if (end == std::string::npos) {
        ADD_FAILURE() << "no " << word << " in " << report;
        return 0;
    }
    const std::size_t begin = report.find_last_not_of("0123456789", end - 1) + 1;
    return std::stoul(report.substr(begin, end - begin));
}

class FieldFiles : public testing::TestWithParam<FieldFile> {
 protected:
    void SetUp() override {
        const std::filesystem::path path = DataFolder() / GetParam().name;
        if (!std::filesystem::exists(path)) {
            GTEST_SKIP() << "there is no " << path;
        }
        file = path.string();
        job = folder.Utf8("field.job");
        ASSERT_EQ(RunCqjob({"new", job}).status, 0);
        std::vector<std::string> arguments = {"import", job, file};
        arguments.insert(arguments.end(), GetParam().options.begin(), GetParam().options.end());
        import = RunCqjob(arguments);
        ASSERT_EQ(import.status, 0) << import.err;
    }

    TempDir folder;
    std::string file;
    std::string job;
    CqjobRun import;
};

TEST_P(FieldFiles, EveryLineIsAccountedFor) {
    const std::string text = HostFileBytes(file);
    const std::size_t lines = static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n')) +
                              (text.ends_with('\n') ? 0U : 1U);
    EXPECT_EQ(CountOf(import.out, "lines = "), lines);
    std::size_t sum = 0;
    for (const char* word :
         {"header", "comment", "blank", "recorded", "continued", "skipped", "refused"}) {
        sum += CountOf(import.out, word);
    }
    EXPECT_EQ(sum, lines);
    EXPECT_EQ(CountOf(import.out, "recorded"), GetParam().points);
    EXPECT_EQ(CountOf(import.out, "refused"), 0U);
}

TEST_P(FieldFiles, EveryRowIsInTheJobAsAnotherReaderReadsIt) {
    const FieldFile& how = GetParam();
    std::string text = HostFileBytes(file);
    if (text.starts_with("\xEF\xBB\xBF")) {
        text.erase(0, 3);
    }
    std::vector<Row> rows = ReadRows(text, how.separator);
    ASSERT_EQ(rows.size(), how.points + how.headerRows);
    rows.erase(rows.begin(), rows.begin() + static_cast<std::ptrdiff_t>(how.headerRows));
    const auto number = [](std::string digits) {
        std::replace(digits.begin(), digits.end(), ',', '.');
        return std::strtod(digits.c_str(), nullptr);
    };
    CqSurveyDB db;
    db.OpenReadOnly(FromUtf8(job));
    ASSERT_EQ(db.GetNumCoordRecs(), static_cast<int>(rows.size()));
    std::set<std::string> names;
    CqHandle next = db.GetFirstCoordRecHandle();
    for (const Row& row : rows) {
        const CqHandle handle = next;
        CqCoordRec point;
        ASSERT_EQ(db.GetNextCoordRec(next, point), 1);
        SCOPED_TRACE(row[how.nameColumn]);
        if (names.insert(row[how.nameColumn]).second) {
            ASSERT_EQ(ToUtf8(point.GetPtName()), row[how.nameColumn]);
        }
        double coords[3];
        point.GetPoint(coords);
        ASSERT_EQ(coords[0], number(row[how.eastingColumn]));
        ASSERT_EQ(coords[1], number(row[how.northingColumn]));
        const std::string& height = row[how.heightColumn];
        if (height.empty() || height == how.noHeight) {
            ASSERT_TRUE(std::isnan(coords[2]));
        } else {
            ASSERT_EQ(coords[2], number(height));
        }
        std::string expected;
        for (std::size_t i = how.textColumn.value_or(row.size()); i < row.size(); ++i) {
            expected += (i == how.textColumn ? "" : ",") + row[i];
            if (!how.restIsText) {
                break;
            }
        }
        CString description;
        db.GetCoordDescription(handle, description);
        const bool whole =
            !expected.empty() && expected.find_first_not_of("0123456789") == std::string::npos;
        ASSERT_EQ(point.GetCode(), whole ? std::stoi(expected) : 0);
        ASSERT_EQ(ToUtf8(description), whole ? "" : expected);
    }
    EXPECT_EQ(next, 0U);
}

TEST_P(FieldFiles, TheJobIsSoundAndItsExportMakesTheSameJob) {
    EXPECT_EQ(RunCqjob({"check", job}).status, 0);
    const std::string exported = folder.Utf8("out.csv");
    ASSERT_EQ(RunCqjob({"export", job, exported}).status, 0);
    const std::string copy = folder.Utf8("copy.job");
    ASSERT_EQ(RunCqjob({"new", copy}).status, 0);
    const CqjobRun again = RunCqjob({"import", copy, exported, "--order", "header", "--strict"});
    ASSERT_EQ(again.status, 0) << again.err;
    EXPECT_EQ(RunCqjob({"export", copy, "-"}).out, HostFileBytes(exported));
}

INSTANTIATE_TEST_SUITE_P(Surveys, FieldFiles, testing::ValuesIn(Files()), [](const auto& param) {
    std::string name = param.param.name;
    std::replace(name.begin(), name.end(), '.', '_');
    return name;
});

TEST_P(FieldFiles, EverythingOfItsPointsSurvivesTheWayThroughAText) {
    const std::string exported = folder.Utf8("all.csv");
    ASSERT_EQ(RunCqjob({"export", job, exported, "--all-columns"}).status, 0);
    const std::string copy = folder.Utf8("copy.job");
    ASSERT_EQ(RunCqjob({"new", copy}).status, 0);
    const CqjobRun again = RunCqjob({"import", copy, exported, "--order", "header", "--strict"});
    ASSERT_EQ(again.status, 0) << again.err;
    EXPECT_EQ(RunCqjob({"export", copy, "-", "--all-columns"}).out, HostFileBytes(exported));
}

}  // namespace
}  // namespace cqsurvey::cqjob
