#include "exchange/codes/NameOrder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

namespace cqsurvey::exchange {

namespace {

TEST(NameOrderTest, NumbersInNamesCountByTheirValues) {
    std::vector<std::string> names{"B", "A10", "99999999999999999999", "A2b12", "A2b3", "A1", "A01",
                                   "A", "10a", "99999999999999999998", "10",    "2",    "1",  ""};
    std::sort(names.begin(), names.end(), ComesBefore);
    const std::vector<std::string> expected{"",
                                            "1",
                                            "2",
                                            "10",
                                            "10a",
                                            "99999999999999999998",
                                            "99999999999999999999",
                                            "A",
                                            "A01",
                                            "A1",
                                            "A2b3",
                                            "A2b12",
                                            "A10",
                                            "B"};
    EXPECT_EQ(names, expected);
}

TEST(NameOrderTest, NoNameComesBeforeItself) {
    for (const char* name : {"", "1", "007", "P1", "é"}) {
        EXPECT_FALSE(ComesBefore(name, name));
    }
}

}  // namespace

}  // namespace cqsurvey::exchange
