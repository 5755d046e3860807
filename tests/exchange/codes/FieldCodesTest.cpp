#include "exchange/codes/FieldCodes.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

namespace cqsurvey::exchange {

namespace {

/// The controls in one line: "begin curve-begin turn 3.5".
std::string Show(const FieldControls& controls) {
    std::string text;
    const auto add = [&](bool is, std::string_view word) {
        text += is ? fmt::format(" {}", word) : "";
    };
    add(controls.begin, "begin");
    add(controls.proceed, "continue");
    add(controls.end, "end");
    add(controls.close, "close");
    add(controls.curveBegin, "curve-begin");
    add(controls.curvePoint, "curve-point");
    add(controls.curveEnd, "curve-end");
    add(controls.circle, "circle");
    add(controls.radius.has_value(), fmt::format("{}", controls.radius.value_or(0)));
    add(controls.rectangle, "rectangle");
    add(controls.width.has_value(), fmt::format("{}", controls.width.value_or(0)));
    for (const double turn : controls.turns) {
        text += fmt::format(" turn {}", turn);
    }
    for (const std::string& join : controls.joins) {
        text += fmt::format(" join {}", join);
    }
    for (const Parallel& parallel : controls.parallels) {
        text += fmt::format(" parallel {}/{}", parallel.across, parallel.up);
    }
    return text;
}

class FieldCodesTest : public testing::Test {
 protected:
    FieldCodesTest() {
        for (const char16_t* code : {u"EP", u"KERB", u"BC", u"30", u"40", u"BLD2"}) {
            m_table.Add({.code = code, .kind = CqCodeKind::Line});
        }
        for (const char16_t* code : {u"TR", u"MH", u"E"}) {
            m_table.Add({.code = code, .kind = CqCodeKind::Point});
        }
    }

    /// Each code with its figure, controls and text; unknown ones with "?".
    std::string Parse(std::string_view description, std::string_view words = "words") {
        const CodeWords own = CodeWords::FromText(words);
        FieldCodes codes(m_table, own);
        FieldDescription out;
        codes.Parse(description, out);
        std::string text;
        for (const FieldCode& code : out.codes) {
            text += fmt::format("{}[{}{}{}{}]", text.empty() ? "" : " ", code.figure,
                                code.row == nullptr ? "?" : "", Show(code.controls),
                                code.text.empty() ? "" : " '" + code.text + "'");
        }
        for (const std::string& stray : out.stray) {
            text += fmt::format(" !{}", stray);
        }
        return text;
    }

    CqCodeTable m_table;
};

TEST_F(FieldCodesTest, AFigureNumberStandsAtTheCodeOrBehindIt) {
    EXPECT_EQ(Parse("EP2"), "[EP 2]");
    EXPECT_EQ(Parse("EP 2"), "[EP 2]");
    EXPECT_EQ(Parse("ep 02"), "[EP 2]");
    EXPECT_EQ(Parse("EP"), "[EP ]");
    EXPECT_EQ(Parse("BLD2"), "[BLD2 ]");
    EXPECT_EQ(Parse("EP2 3"), "[EP 2] [3 ?]");
}

TEST_F(FieldCodesTest, ControlWordsStandBeforeOrBehindTheCode) {
    EXPECT_EQ(Parse("EP2 B"), "[EP 2 begin]");
    EXPECT_EQ(Parse("B EP2"), "[EP 2 begin]");
    EXPECT_EQ(Parse("B EP 2 BC"), "[EP 2 begin curve-begin]");
    EXPECT_EQ(Parse("EP C"), "[EP  continue]");
    EXPECT_EQ(Parse("EP E"), "[EP  end]");
    EXPECT_EQ(Parse("EP CLS"), "[EP  close]");
    EXPECT_EQ(Parse("EP EC BC"), "[EP  curve-begin curve-end]");
}

TEST_F(FieldCodesTest, APointCarriesSeveralCodes) {
    EXPECT_EQ(Parse("EP2 B KERB1 BC"), "[EP 2 begin] [KERB 1 curve-begin]");
    EXPECT_EQ(Parse("EP1 EP2 E"), "[EP 1] [EP 2 end]");
    EXPECT_EQ(Parse("EP X KERB B"), "[EP ] [KERB  begin]");
    EXPECT_EQ(Parse("EP X B KERB"), "[EP ] [KERB  begin]");
    EXPECT_EQ(Parse("TR oak EP B"), "[TR  'oak'] [EP  begin]");
    EXPECT_EQ(Parse("TR B EP"), "[TR ] [EP  begin]");
}

TEST_F(FieldCodesTest, ACodeOfTheTableIsNoControlWordWhereACodeIsDue) {
    EXPECT_EQ(Parse("BC B"), "[BC  begin]");
    EXPECT_EQ(Parse("E"), "[E ]");
    EXPECT_EQ(Parse("EP BC"), "[EP  curve-begin]");
    EXPECT_EQ(Parse("EP X BC"), "[EP ] [BC ]");
}

TEST_F(FieldCodesTest, ControlWordsTakeNumbersAndNames) {
    EXPECT_EQ(Parse("EP H0.5 V-1.2 H 2"), "[EP  parallel 0.5/-1.2 parallel 2/0]");
    EXPECT_EQ(Parse("EP V-1.2"), "[EP  parallel 0/-1.2]");
    EXPECT_EQ(Parse("EP RT 3.5 -2 4 E"), "[EP  end turn 3.5 turn -2 turn 4]");
    EXPECT_EQ(Parse("EP RT-3.5"), "[EP  turn -3.5]");
    EXPECT_EQ(Parse("EP RECT4 B"), "[EP  begin rectangle 4]");
    EXPECT_EQ(Parse("EP RECT"), "[EP  rectangle]");
    EXPECT_EQ(Parse("EP CIR 1.5"), "[EP  circle 1.5]");
    EXPECT_EQ(Parse("EP CIR"), "[EP  circle]");
    EXPECT_EQ(Parse("EP JPT P17 E"), "[EP  end join P17]");
    EXPECT_EQ(Parse("EP JPT17"), "[EP  join 17]");
    EXPECT_EQ(Parse("EP H"), "[EP ] [H ?]");
    EXPECT_EQ(Parse("EP H 1e9"), "[EP ] [H ?] [1E 9?]");
}

TEST_F(FieldCodesTest, WhatFollowsTheCodeOfAPointIsItsText) {
    EXPECT_EQ(Parse("TR oak  0.4"), "[TR  'oak 0.4']");
    EXPECT_EQ(Parse("MH B 12"), "[MH  'B 12']");
    EXPECT_EQ(Parse("MH E"), "[MH  'E']");
    EXPECT_EQ(Parse("TR берёза Ø0.25"), "[TR  'берёза Ø0.25']");
}

TEST_F(FieldCodesTest, ACodeThatAsksForItsTextTakesWordsThatCouldBeCodes) {
    m_table.Add({.code = u"TX", .kind = CqCodeKind::Text, .text = u"{text}"});
    EXPECT_EQ(Parse("TX KERB"), "[TX  'KERB']");
    EXPECT_EQ(Parse("TX MH 3"), "[TX  'MH 3']");
    EXPECT_EQ(Parse("MH KERB"), "[MH ] [KERB ]");
    EXPECT_EQ(Parse("TX wet KERB2"), "[TX  'wet'] [KERB 2]");
    EXPECT_EQ(Parse("TX wet KERB B"), "[TX  'wet'] [KERB  begin]");
    EXPECT_EQ(Parse("TX wet B KERB"), "[TX  'wet'] [KERB  begin]");
    EXPECT_EQ(Parse("TX wet X KERB"), "[TX  'wet'] [KERB ]");
}

TEST_F(FieldCodesTest, AWordBehindALineThatNobodyKnowsIsAnUnknownCode) {
    EXPECT_EQ(Parse("EP KRB B"), "[EP ] [KRB ? begin]");
    EXPECT_EQ(Parse("XYZ"), "[XYZ ?]");
    EXPECT_EQ(Parse("B"), " !B");
}

TEST_F(FieldCodesTest, ACommentIsNoCode) {
    EXPECT_EQ(Parse("EP B ; KERB B"), "[EP  begin]");
    EXPECT_EQ(Parse("EP;KERB"), "[EP ]");
    EXPECT_EQ(Parse(";"), "");
    EXPECT_EQ(Parse(""), "");
    EXPECT_EQ(Parse("EP REM KERB", "words,comment=REM"), "[EP ]");
}

TEST_F(FieldCodesTest, NumberSuffixesControlFigures) {
    EXPECT_EQ(Parse("30-1", "numbers"), "[30  begin]");
    EXPECT_EQ(Parse("30-2", "numbers"), "[30  continue]");
    EXPECT_EQ(Parse("30-3", "numbers"), "[30  curve-point]");
    EXPECT_EQ(Parse("30-9", "numbers"), "[30  end]");
    EXPECT_EQ(Parse("30-3+40-1", "numbers"), "[30  curve-point] [40  begin]");
    EXPECT_EQ(Parse("30-1 40-2", "numbers"), "[30  begin] [40  continue]");
    EXPECT_EQ(Parse("30-3-9", "numbers"), "[30  end curve-point]");
    EXPECT_EQ(Parse("30-1 H0.5", "numbers"), "[30  begin parallel 0.5/0]");
    EXPECT_EQ(Parse("TR-0.15", "numbers"), "[TR  '0.15']");
}

TEST_F(FieldCodesTest, ACrewMayHaveWordsOfItsOwn) {
    const std::string words = "words,begin=I,curve-point=C,begin+curve-point=IC";
    EXPECT_EQ(Parse("EP I", words), "[EP  begin]");
    EXPECT_EQ(Parse("EP IC", words), "[EP  begin curve-point]");
    EXPECT_EQ(Parse("EP C", words), "[EP  curve-point]");
    EXPECT_EQ(Parse("EP B", words), "[EP ] [B ?]");
    EXPECT_EQ(Parse("EP/KERB", "words,and=/"), "[EP ] [KERB ]");
}

}  // namespace

}  // namespace cqsurvey::exchange
