#include <array>

#include "cqsurvey/exchange/ExchangeError.h"
#include "cqsurvey/exchange/FieldTextReader.h"
#include "fuzz/FuzzJob.h"
#include "fuzz/FuzzTarget.h"

namespace cqsurvey {
namespace {

/// A field text file from a stranger. The first byte chooses how it is read; the rest is the file.
class FieldTextFuzz : public FuzzTarget {
 public:
    FieldTextFuzz() : m_job(MakeJobs().front()) {}

    void Run(std::string_view bytes) override {
        if (bytes.empty()) {
            return;
        }
        const auto way = static_cast<unsigned char>(bytes.front());
        const std::string_view text = bytes.substr(1);
        Guarded([&] { LookAt(text, way); });
        // Opening a job takes longer than reading most files.
        if (HashOf(bytes) % 4 == 0) {
            m_folder.Put("a.job", m_job);
            CqSurveyDB db(m_folder.Path("a.job"));
            Guarded([&] { Import(db, text, way); });
        }
    }

    std::vector<std::string> MakeSeeds() override {
        const std::string plain =
            "# survey\nP1,10.5,20.25,3,30 stone\nP2,11,21,,\"a \"\"quoted\"\" "
            "text\"\n\nP3,1e3,-4,nan,\n";
        const std::string headed =
            "Name;Northing;Easting;Height;Code;Description\r\nA1;1,5;2,5;3,5;7;post\r\n";
        std::vector<std::string> seeds;
        for (const char way : {'\x00', '\x01', '\x0A', '\x13', '\x24', '\x45', '\x86', '\xFF'}) {
            seeds.push_back(way + plain);
            seeds.push_back(way + headed);
        }
        return seeds;
    }

    std::vector<std::string> GetWords() override {
        return {"name",
                "northing",
                "easting",
                "height",
                "code",
                "desc",
                "x,y,z",
                "\"\"",
                "\r\n",
                "1e308",
                "-1e308",
                "nan",
                "inf",
                "\xEF\xBB\xBF",
                "\xFF\xFE",
                "#",
                "-0",
                "0x10",
                "9999999999999999999999",
                "\xC2\xA0"};
    }

 private:
    /// The library's exceptions, and those of its reader.
    template <class Body>
    static void Guarded(Body&& body) {
        try {
            Try(body);
        } catch (const exchange::ExchangeError&) {
            return;
        }
    }

    static exchange::FieldTextReadOptions MakeOptions(unsigned way) {
        static constexpr std::array<const char*, 4> kOrders{"pnezd", "penzcd", "-nez", "pnezc"};
        exchange::FieldTextReadOptions options;
        if ((way & 1U) == 0) {
            options.order = exchange::ColumnOrder::FromLetters(kOrders[(way >> 1U) & 3U]);
        } else {
            options.recognise = true;
        }
        if ((way & 8U) != 0) {
            static constexpr std::array<exchange::Separator, 2> kSeparators{
                exchange::Separator::Semicolon, exchange::Separator::Blank};
            options.separator = kSeparators[(way >> 4U) & 1U];
        }
        options.decimalComma = (way & 16U) != 0;
        options.codePage = (way & 32U) != 0 ? 1252 : (way & 64U) != 0 ? 932 : 65001;
        if ((way & 128U) != 0) {
            options.comment.clear();
            options.noHeight = {"-99", "none"};
        }
        return options;
    }

    static void LookAt(std::string_view text, unsigned way) {
        exchange::StringSource source(text, 1 + text.size() / 3);
        exchange::FieldTextReader reader(source, MakeOptions(way));
        exchange::FieldTextLine line;
        std::uint64_t lines = 0;
        while (reader.Next(line)) {
            RequirePromise(line.lines > 0 && line.line == lines + 1, "no line is lost");
            lines += line.lines;
        }
        RequirePromise(lines == source.GetLines(), "every line is accounted for");
    }

    static void Import(CqSurveyDB& db, std::string_view text, unsigned way) {
        exchange::StringSource source(text);
        exchange::FieldTextReader reader(source, MakeOptions(way));
        exchange::ImportOptions options;
        options.duplicates = static_cast<exchange::Duplicates>(way % 3);
        options.strict = way % 5 == 0;
        options.group = u"imported";
        const exchange::ImportReport report = reader.Import(db, options);
        RequirePromise(report.GetSum() == source.GetLines(), "the report counts every line");
        const auto recorded = report.Get(exchange::ImportReport::Fate::Recorded);
        const auto kept = static_cast<std::uint64_t>(db.GetNumCoordRecs());
        RequirePromise(kept == recorded,
                       "the job has as many points as the report says were recorded");
    }

    FuzzFolder m_folder;
    std::string m_job;
};

}  // namespace

FuzzTarget& GetFuzzTarget() {
    static FieldTextFuzz target;
    return target;
}

}  // namespace cqsurvey
