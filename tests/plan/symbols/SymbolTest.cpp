#include "plan/symbols/Symbol.h"

#include <gtest/gtest.h>

#include <cqsurvey/SymbolNames.h>

#include <set>

namespace cqsurvey::plan {
namespace {

TEST(Symbol, EachNameOfACodeTableHasOneWithASizeAndAMeaningOfItsOwn) {
    std::set<std::string> meanings;
    for (const std::u16string_view name : kSymbolNames) {
        const Symbol symbol = FindSymbol(name);
        EXPECT_NE(symbol, Symbol::None);
        EXPECT_GT(GetUsualSize(symbol), 0.0);
        meanings.insert(GetMeaning(symbol));
    }
    EXPECT_EQ(meanings.size(), kSymbolNames.size());
    EXPECT_EQ(GetMeaning(FindSymbol(u"deciduous")), "Deciduous tree");
    EXPECT_EQ(FindSymbol(u"spot"), Symbol::Spot);
}

TEST(Symbol, OtherWordsHaveNone) {
    EXPECT_EQ(FindSymbol(u""), Symbol::None);
    EXPECT_EQ(FindSymbol(u"Control"), Symbol::None) << "names have one letter case";
}

}  // namespace
}  // namespace cqsurvey::plan
