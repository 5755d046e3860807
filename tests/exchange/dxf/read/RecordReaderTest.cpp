#include "exchange/dxf/read/RecordReader.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "exchange/dxf/DxfText.h"

namespace cqsurvey::exchange::dxf {
namespace {

/// The records of a file as "LINE 8=Road 10=5".
std::vector<std::string> Read(const std::string& words) {
    const std::string text = Groups(words);
    StringSource source(text);
    GroupReader groups(source);
    RecordReader reader(groups, 100'000);
    std::vector<std::string> records;
    for (Record record; reader.Next(record);) {
        std::string all = record.type;
        for (const Entry& entry : record.GetEntries()) {
            all += " " + std::to_string(entry.code) + "=" + std::string(record.Text(entry));
        }
        records.push_back(all);
    }
    return records;
}

using List = std::vector<std::string>;

TEST(RecordReaderTest, VerticesAndAttributesBelongToTheirRecord) {
    EXPECT_EQ(Read("0 POLYLINE|66 1|0 VERTEX|10 1|0 VERTEX|10 2|0 SEQEND|8 A|0 LINE|10 3"),
              (List{"POLYLINE 66=1 0=VERTEX 10=1 0=VERTEX 10=2", "LINE 10=3"}));
    EXPECT_EQ(Read("0 INSERT|2 B|0 ATTRIB|1 x|0 SEQEND|0 LINE|10 3"),
              (List{"INSERT 2=B 0=ATTRIB 1=x", "LINE 10=3"}));
    // Some programs leave the end out.
    EXPECT_EQ(Read("0 INSERT|2 B|0 LINE|10 3"), (List{"INSERT 2=B", "LINE 10=3"}));
}

TEST(RecordReaderTest, WhatOtherProgramsKeepIsLeftOutAndOursIsNot) {
    EXPECT_EQ(Read("0 LINE|8 A|102 {OTHER|330 7|10 9|102 }|10 1|1001 OTHER|1000 x|1001 CQSURVEY|"
                   "1000 CODE=5"),
              List{"LINE 8=A 10=1 1000=CODE=5"});
}

TEST(RecordReaderTest, EmbeddedObjectsAndPicturesInBytesAreLeftOut) {
    EXPECT_EQ(Read("0 MTEXT|1 x|310 00FF|101 Embedded Object|10 5|1 y"), List{"MTEXT 1=x"});
}

TEST(RecordReaderTest, OfAnEntityThatIsNotKnownOnlyWhatAReportSaysIsKept) {
    EXPECT_EQ(Read("0 3DSOLID|8 Body|1 data|2 name|67 1|10 5"), List{"3DSOLID 8=Body 2=name 67=1"});
}

TEST(RecordReaderTest, ABraceWithoutItsEndGoesNoFurtherThanItsRecord) {
    EXPECT_EQ(Read("0 LINE|102 {OTHER|10 1|0 CIRCLE|10 2"), (List{"LINE", "CIRCLE 10=2"}));
    EXPECT_EQ(Read("0 LINE|102 {OTHER|10 1"), List{"LINE"});
}

}  // namespace
}  // namespace cqsurvey::exchange::dxf
