#include "exchange/dxf/read/Header.h"

#include <array>
#include <string_view>
#include <utility>

#include "cqsurvey/CodePage.h"
#include "exchange/dxf/read/TextDecoder.h"
#include "text/NumberText.h"

namespace cqsurvey::exchange::dxf {

namespace {

/// From this version on, texts are in UTF-8.
constexpr std::string_view kFirstUtf8 = "AC1021";
constexpr int kWesternEurope = 1252;

}  // namespace

void Header::Read(const Record& section) {
    std::string_view name;
    for (const Entry& entry : section.GetEntries()) {
        if (entry.code == 9) {
            name = section.Text(entry);
        } else if (name == "$ACADVER" && entry.code == 1) {
            version = Trim(section.Text(entry));
        } else if (name == "$DWGCODEPAGE" && entry.code == 3) {
            codePage = Trim(section.Text(entry));
        } else if (name == "$INSUNITS" && entry.code == 70) {
            unit = section.Whole(entry);
        }
    }
}

std::string Header::DescribeVersion() const {
    static constexpr std::array<std::pair<std::string_view, std::string_view>, 9> kVersions{
        {{"AC1009", "R12"},
         {"AC1012", "R13"},
         {"AC1014", "R14"},
         {"AC1015", "R2000"},
         {"AC1018", "R2004"},
         {"AC1021", "R2007"},
         {"AC1024", "R2010"},
         {"AC1027", "R2013"},
         {"AC1032", "R2018"}}};
    for (const auto& [word, release] : kVersions) {
        if (word == version) {
            return std::string(release);
        }
    }
    return version;
}

std::optional<int> Header::GetCodePage() const {
    if (version >= kFirstUtf8) {
        return CqCodePage::kUtf8;
    }
    return codePage.empty() ? std::optional<int>(kWesternEurope) : CodePageOf(codePage);
}

}  // namespace cqsurvey::exchange::dxf
