#include "exchange/dxf/GroupReader.h"

#include <gtest/gtest.h>

#include <bit>
#include <string>
#include <vector>

#include "cqsurvey/exchange/ExchangeError.h"

namespace cqsurvey::exchange::dxf {
namespace {

std::vector<std::string> ReadAll(const std::string& text, std::size_t piece = 65536) {
    StringSource source(text, piece);
    GroupReader reader(source);
    std::vector<std::string> groups;
    for (Group group; reader.Next(group);) {
        groups.push_back(std::to_string(group.place) + ":" + std::to_string(group.code) + "=" +
                         std::string(group.value));
    }
    return groups;
}

std::string FaultOf(const std::string& text) {
    try {
        ReadAll(text);
    } catch (const ExchangeError& error) {
        return error.what();
    }
    return "none";
}

using Groups = std::vector<std::string>;

TEST(GroupReaderTest, AGroupIsACodeAndAValueOnALineEach) {
    EXPECT_EQ(ReadAll("  0\nLINE\n 10\n 1.5\n"), (Groups{"1:0=LINE", "3:10= 1.5"}));
}

TEST(GroupReaderTest, AnyLineEndAndAnyPiecesOfTheFileReadTheSame) {
    const Groups groups{"1:0=LINE", "3:8=Road"};
    for (const char* text : {"0\nLINE\n8\nRoad\n", "0\r\nLINE\r\n8\r\nRoad", "0\rLINE\r8\rRoad"}) {
        for (const std::size_t piece : {1, 2, 3, 100}) {
            EXPECT_EQ(ReadAll(text, piece), groups) << text << piece;
        }
    }
}

TEST(GroupReaderTest, CommentsAreLeftOut) {
    EXPECT_EQ(ReadAll("999\nmade by hand\n0\nEOF\n"), (Groups{"3:0=EOF"}));
}

TEST(GroupReaderTest, WhatIsNoGroupCodeIsAnErrorWithItsLine) {
    EXPECT_EQ(FaultOf("0\nLINE\nx\n1\n"), "text:3: \"x\" is no group code of a DXF file");
    EXPECT_EQ(FaultOf("0\nLINE\n9999\n1\n"), "text:3: 9999 is no group code");
    EXPECT_EQ(FaultOf("0\nLINE\n10\n"),
              "text:3: the file ends after a group code, before its value");
}

TEST(GroupReaderTest, ALineWithoutEndIsAnErrorAndNotReadIntoMemory) {
    EXPECT_EQ(FaultOf("0\n" + std::string(3'000'000, 'x')),
              "text:2: the line is too long for a DXF file");
}

/// The same groups in the binary form, with codes of one byte or two.
std::string Binary(bool shortCodes) {
    std::string bytes("AutoCAD Binary DXF\r\n\x1A\0", 22);
    const auto code = [&](int value) {
        if (shortCodes && value >= 255) {
            bytes += '\xFF';
        }
        bytes += static_cast<char>(value & 0xFF);
        if (!shortCodes || value >= 255) {
            bytes += static_cast<char>(value >> 8);
        }
    };
    const auto whole = [&](std::uint64_t value, int size) {
        for (int i = 0; i < size; ++i) {
            bytes += static_cast<char>(value >> (8 * i));
        }
    };
    code(0);
    bytes += std::string("SECTION\0", 8);
    code(10);
    whole(std::bit_cast<std::uint64_t>(-1234567.125), 8);
    code(70);
    whole(0xFFFF, 2);
    code(1071);
    whole(70000, 4);
    code(290);
    whole(1, 1);
    code(310);
    whole(3, 1);
    bytes += "abc";
    return bytes;
}

TEST(GroupReaderTest, BothBinaryFormsReadAsTheTextFormDoes) {
    for (const bool shortCodes : {false, true}) {
        Groups values;
        for (const std::string& group : ReadAll(Binary(shortCodes), 5)) {
            values.push_back(group.substr(group.find(':') + 1));
        }
        EXPECT_EQ(values, (Groups{"0=SECTION", "10=-1234567.125", "70=-1", "1071=70000", "290=1",
                                  "310=abc"}));
    }
}

TEST(GroupReaderTest, ABinaryFileThatIsCutIsAnErrorWithItsByte) {
    const std::string whole = Binary(false);
    for (std::size_t length = 23; length < whole.size(); ++length) {
        const std::string fault = FaultOf(whole.substr(0, length));
        EXPECT_TRUE(fault == "none" || fault.find("text: byte ") == 0) << length << fault;
    }
    EXPECT_EQ(FaultOf(whole.substr(0, whole.size() - 1)),
              "text: byte 55: the file ends inside a value");
}

}  // namespace
}  // namespace cqsurvey::exchange::dxf
