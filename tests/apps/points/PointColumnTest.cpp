#include "cqjob/points/PointColumn.h"

#include <gtest/gtest.h>

namespace cqsurvey::cqjob {
namespace {

TEST(PointColumn, EachWordNamesOneColumn) {
    for (const std::string& word : PointColumn::WordList()) {
        ASSERT_NE(PointColumn::Find(word), nullptr) << word;
        EXPECT_EQ(PointColumn::Find(word)->word, word);
        EXPECT_NE(PointColumn::Words().find(word), std::string::npos);
    }
    EXPECT_EQ(PointColumn::Find("width"), nullptr);
}

}  // namespace
}  // namespace cqsurvey::cqjob
