#include "cqsurvey/exchange/ColumnOrder.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "cqsurvey/exchange/ExchangeError.h"

namespace cqsurvey::exchange {
namespace {

using Headings = std::vector<std::string>;

TEST(ColumnOrder, LettersNameTheColumns) {
    const ColumnOrder order = ColumnOrder::FromLetters("pnezd");
    EXPECT_EQ(order.Find(Column::Name), 0U);
    EXPECT_EQ(order.GetNorthing(), 1U);
    EXPECT_EQ(order.GetEasting(), 2U);
    EXPECT_EQ(order.Find(Column::Height), 3U);
    EXPECT_EQ(order.Find(Column::Description), 4U);
    EXPECT_FALSE(order.Find(Column::Code).has_value());
    EXPECT_TRUE(order.TakesRest());
    EXPECT_EQ(order.GetWidth(), 5U);
    EXPECT_EQ(order.Describe(), "name 1, northing 2, easting 3, height 4, description from 5");
    const ColumnOrder other = ColumnOrder::FromLetters("penzd");
    EXPECT_EQ(other.GetEasting(), 1U);
    EXPECT_EQ(other.GetNorthing(), 2U);
}

TEST(ColumnOrder, LettersMayLeaveColumnsOut) {
    const ColumnOrder order = ColumnOrder::FromLetters("-en-");
    EXPECT_EQ(order.GetEasting(), 1U);
    EXPECT_FALSE(order.Find(Column::Name).has_value());
    EXPECT_FALSE(order.TakesRest());
    EXPECT_TRUE(order.LeavesRest());
}

TEST(ColumnOrder, LettersThatMakeNoOrderAreRefused) {
    for (const char* letters : {"", "p", "pn", "pe", "pnezn", "pnexd", "pdnez", "pne zd"}) {
        EXPECT_THROW(static_cast<void>(ColumnOrder::FromLetters(letters)), OptionError) << letters;
    }
}

TEST(ColumnOrder, WordsNameTheColumns) {
    const ColumnOrder order =
        ColumnOrder::FromWords("name,-,-,easting, northing ,height,code,desc,-");
    EXPECT_EQ(order.Find(Column::Name), 0U);
    EXPECT_EQ(order.GetEasting(), 3U);
    EXPECT_EQ(order.GetNorthing(), 4U);
    EXPECT_EQ(order.Find(Column::Height), 5U);
    EXPECT_EQ(order.Find(Column::Code), 6U);
    EXPECT_EQ(order.Find(Column::Description), 7U);
    EXPECT_FALSE(order.TakesRest());
    EXPECT_TRUE(order.LeavesRest());
    EXPECT_TRUE(ColumnOrder::FromWords("n,e,desc").TakesRest());
}

TEST(ColumnOrder, WordsThatMakeNoOrderAreRefused) {
    for (const char* words :
         {"", "name", "easting,northing,easting", "easting,northing,colour", "easting,,northing"}) {
        EXPECT_THROW(static_cast<void>(ColumnOrder::FromWords(words)), OptionError) << words;
    }
}

TEST(ColumnOrder, RecognisesUsualHeadingsInSeveralLanguages) {
    const ColumnOrder english = ColumnOrder::FromHeadings(
        {"Name", "Easting", "Northing", "Elevation", "Description", "", "", "", "Date Taken"}, {},
        true);
    EXPECT_EQ(english.GetEasting(), 1U);
    EXPECT_EQ(english.GetNorthing(), 2U);
    EXPECT_EQ(english.Find(Column::Height), 3U);
    EXPECT_EQ(english.Find(Column::Description), 4U);
    EXPECT_FALSE(english.TakesRest());
    EXPECT_EQ(english.GetWidth(), 9U);

    const ColumnOrder portuguese = ColumnOrder::FromHeadings(
        {"v\u00e9rtice", "E", "N", "H ", "SIGMA_E", "SIGMA_N", "SIGMA_H"}, {}, true);
    EXPECT_EQ(portuguese.Find(Column::Name), 0U);
    EXPECT_EQ(portuguese.Find(Column::Height), 3U);

    const ColumnOrder spanish = ColumnOrder::FromHeadings(
        {"Punto", "NORTE", "ESTE", "Elevaci\u00f3n", "C\u00d3DIGO", "Descripci\u00f3n"}, {}, true);
    EXPECT_EQ(spanish.GetNorthing(), 1U);
    EXPECT_EQ(spanish.Find(Column::Code), 4U);
    EXPECT_TRUE(spanish.TakesRest());

    const ColumnOrder plain =
        ColumnOrder::FromHeadings({"id", "x", "y", "z", "comm", "", ""}, {}, true);
    EXPECT_EQ(plain.GetEasting(), 1U);
    EXPECT_EQ(plain.GetNorthing(), 2U);
    EXPECT_TRUE(plain.TakesRest()) << "columns without heading behind it are no columns";
}

TEST(ColumnOrder, AHeadingThatFitsTwiceIsNotChosenFrom) {
    const Headings headings = {"id", "name", "e", "n", "z"};
    EXPECT_THROW(static_cast<void>(ColumnOrder::FromHeadings(headings, {}, true)), OptionError);
    const ColumnOrder order = ColumnOrder::FromHeadings(headings, {{Column::Name, "2"}}, true);
    EXPECT_EQ(order.Find(Column::Name), 1U);
    EXPECT_THROW(
        static_cast<void>(ColumnOrder::FromHeadings({"id", "x", "easting", "n", "z"}, {}, true)),
        OptionError);
}

TEST(ColumnOrder, WhatIsNotRecognisedMustBeNamed) {
    const Headings headings = {"Station", "e", "n", "rl"};
    EXPECT_THROW(static_cast<void>(ColumnOrder::FromHeadings(headings, {}, true)), OptionError);
    const ColumnOrder order = ColumnOrder::FromHeadings(
        headings, {{Column::Name, "STATION"}, {Column::Height, "-"}}, true);
    EXPECT_EQ(order.Find(Column::Name), 0U);
    EXPECT_FALSE(order.Find(Column::Height).has_value());
    EXPECT_THROW(static_cast<void>(ColumnOrder::FromHeadings({}, {}, true)), OptionError);
}

TEST(ColumnOrder, TakesOnlyWhatIsAssignedWhenNothingIsToBeRecognised) {
    const Headings headings = {"Trig Name", "STATION NAME", "New Name", "EASTING", "NORTHING"};
    const ColumnOrder order = ColumnOrder::FromHeadings(
        headings, ColumnOrder::ReadAssignments("name=New Name,easting=EASTING,northing=5"), false);
    EXPECT_EQ(order.Find(Column::Name), 2U);
    EXPECT_EQ(order.GetEasting(), 3U);
    EXPECT_EQ(order.GetNorthing(), 4U);
    EXPECT_FALSE(order.Find(Column::Height).has_value());
    for (const char* wrong :
         {"easting=EASTING", "easting=EASTING,northing=NORTH", "easting=6,northing=5",
          "easting=0,northing=5", "easting=4,northing=4", "easting=EASTING,northing=#"}) {
        EXPECT_THROW(static_cast<void>(ColumnOrder::FromHeadings(
                         headings, ColumnOrder::ReadAssignments(wrong), false)),
                     OptionError)
            << wrong;
    }
}

TEST(ColumnOrder, ReadsAssignments) {
    EXPECT_TRUE(ColumnOrder::IsAssignment("name=3"));
    EXPECT_FALSE(ColumnOrder::IsAssignment("name,easting"));
    const auto assigned = ColumnOrder::ReadAssignments("name=New Name, easting = X ");
    EXPECT_EQ(assigned.at(Column::Name), "New Name");
    EXPECT_EQ(assigned.at(Column::Easting), "X");
    for (const char* wrong : {"name=", "name=1,name=2", "name=1,easting", "colour=1"}) {
        EXPECT_THROW(static_cast<void>(ColumnOrder::ReadAssignments(wrong)), OptionError) << wrong;
    }
}

TEST(ColumnOrder, FindsAHeaderThatContradictsTheOrder) {
    const ColumnOrder order = ColumnOrder::FromLetters("pnezd");
    EXPECT_EQ(order.FindContradiction({"Name", "Easting", "Northing", "Elevation"}), 1U);
    EXPECT_EQ(order.FindContradiction({"Name", "Northing", "Easting", "Elevation"}), std::nullopt);
    EXPECT_EQ(order.FindContradiction({"id", "x", "y", "z"}), std::nullopt)
        << "x is the northing in some countries";
    EXPECT_EQ(order.FindContradiction({"a", "b", "c", "d"}), std::nullopt);
    EXPECT_EQ(order.FindContradiction({"Name", "Northing", "Elevation", "Easting"}), 2U);
    EXPECT_EQ(order.FindContradiction({"Name"}), std::nullopt);
}

TEST(ColumnOrder, AnAccentMayBeACharacterOfItsOwn) {
    EXPECT_EQ(ColumnOrder::Recognise("Ho\u0308he"), Column::Height);
    EXPECT_EQ(ColumnOrder::Recognise("Eleva\u00e7\u00e3o "), Column::Height);
    EXPECT_FALSE(ColumnOrder::Recognise("\u0445"));
}

TEST(ColumnOrder, LettersOfOtherScriptsKeepTheirMarks) {
    // Two Cyrillic letters that differ in a mark alone.
    const ColumnOrder order = ColumnOrder::FromHeadings(
        {"\u0438", "\u0439"}, {{Column::Northing, "\u0438"}, {Column::Easting, "\u0439"}}, false);
    EXPECT_EQ(order.GetNorthing(), 0U);
    EXPECT_EQ(order.GetEasting(), 1U);
}

TEST(ColumnOrder, LettersMayBeCapitals) {
    const ColumnOrder order = ColumnOrder::FromLetters("PENZD");
    EXPECT_EQ(order.GetEasting(), 1U);
    EXPECT_EQ(order.Describe(), ColumnOrder::FromLetters("penzd").Describe());
    EXPECT_EQ(order.GetLettersWithoutHeight(), "pend");
    EXPECT_EQ(ColumnOrder::FromLetters("pend").GetLettersWithoutHeight(), "");
    EXPECT_EQ(ColumnOrder::FromWords("name,easting,northing,z").GetLettersWithoutHeight(), "");
}

TEST(ColumnOrder, EverythingThatAJobKnowsOfAPointHasALetterAndAWord) {
    EXPECT_EQ(
        ColumnOrder::FromLetters("penzcgfotld").Describe(),
        "name 1, northing 3, easting 2, height 4, code 5, description from 11, group 6, layer "
        "10, flags 7, origin 8, time 9");
    EXPECT_EQ(ColumnOrder::FromWords("name,e,n,group,layer,flags,origin,time").Describe(),
              "name 1, northing 3, easting 2, group 4, layer 5, flags 6, origin 7, time 8");
}

}  // namespace
}  // namespace cqsurvey::exchange
