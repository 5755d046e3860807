#include "cqsurvey/CodePage.h"
#include "cqsurvey/exchange/SimaReader.h"
#include "cqsurvey/exchange/SimaWriter.h"
#include "fuzz/DrawingFuzz.h"

namespace cqsurvey {
namespace {

/// A SIMA file from a stranger; and what we write of it can be read again.
class SimaFuzz : public DrawingFuzz {
 public:
    std::vector<std::string> MakeSeeds() override {
        const std::string plan =
            "G00,03,\x8C\xBB\x8F\xEA,\r\nZ00,\x8D\xC0\x95W\xC3\xDE\xB0\xC0,\r\nA00,\r\n"
            "A01,1,T-1,0,0,7.5,\r\nA01,2,\x8B\xAB\x8A\x45,0,8,,\r\nA01,3, K3 , 6.000 , 8.000 ,\r\n"
            "A99,\r\nD00,1,12-3,1,\r\nB01,1,T-1,\r\nB01,2,\x8B\xAB\x8A\x45,\r\nB01,3,K3,\r\nD99,"
            "\r\n";
        return {'\0' + plan,
                '\1' + plan,
                '\2' + plan,
                '\3' + plan,
                '\0' + std::string("A00\nA01,1,P,1,2\nA01,2,P\0Q,3,4\nA99\n", 34),
                '\0' + std::string("D00,1\nB01,1\nB01,1\nD99\nA00\nA01,1,,1e308,1\nA99\n\x1A")};
    }

    std::vector<std::string> GetWords() override {
        return {"A00,", "A01,", "A99",   "D00,", "D99",  "B01,",
                "Z00,", "C01,", "1e308", ",,",   "\x81", "\x1A"};
    }

 private:
    void Import(exchange::TextSource& source, CqSurveyDB& db, unsigned way) override {
        exchange::SimaReadOptions options;
        options.codePage = (way & 1U) != 0 ? CqCodePage::kUtf8 : 932;
        if ((way & 2U) != 0) {
            options.jobUnit = exchange::LengthUnit::Foot;
        }
        options.duplicates = exchange::Duplicates::Rename;
        static_cast<void>(exchange::SimaReader(source, options).Import(db));
        std::string text;
        exchange::SimaWriteOptions how;
        how.unit = exchange::LengthUnit::Foot;
        how.codePage = options.codePage;
        static_cast<void>(
            exchange::SimaWriter(db, how, [&](std::string_view piece) { text += piece; }).Write());
        exchange::StringSource again(text);
        const exchange::DrawingReport report = exchange::SimaReader(again, options).Import(db);
        RequirePromise(report.GetSum() > 0, "what we write can be read");
    }
};

}  // namespace

FuzzTarget& GetFuzzTarget() {
    static SimaFuzz target;
    return target;
}

}  // namespace cqsurvey
