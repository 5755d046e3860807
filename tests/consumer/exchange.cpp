#include <cqsurvey/cqsurvey.h>
#include <cqsurvey/exchange/exchange.h>

#include <cstdio>
#include <exception>
#include <filesystem>
#include <string>

/// An application as it is outside this tree: it imports a field text file, exports the points and
/// meets an option that makes no sense. Ends with 0 when that went well.
int main() {
    namespace exchange = cqsurvey::exchange;
    try {
        cqsurvey::CqSurveyDB db;
        db.CreateNew(u"exchange.job");
        exchange::StringSource source("101,5000.5,2000.25,312.125,fence\n102,x,2000,300\n");
        exchange::FieldTextReadOptions options;
        options.order = exchange::ColumnOrder::FromLetters("pnezd");
        exchange::FieldTextReader reader(source, options);
        const exchange::ImportReport report = reader.Import(db, {});
        exchange::FieldTextWriter writer({});
        std::string text = writer.MakeHeader();
        for (const auto& [handle, point] : Points(db)) {
            text += writer.MakeLine(db, handle, point);
        }
        db.Close();
        std::filesystem::remove("exchange.job");
        if (report.GetNotes().size() != 1 || text !=
                                                 "Name,Easting,Northing,Height,Code,Description\r\n"
                                                 "101,2000.25,5000.5,312.125,0,fence\r\n") {
            std::fprintf(stderr, "%s\n", text.c_str());
            return 1;
        }
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "%s\n", failure.what());
        return 1;
    }
    try {
        exchange::ColumnOrder::FromLetters("pq");
    } catch (const exchange::OptionError&) {
        return 0;
    }
    return 1;
}
