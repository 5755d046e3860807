#include "cqsurvey/ErrorCodes.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace cqsurvey {
namespace {

TEST(ErrorText, EveryCodeHasASentenceOfItsOwn) {
    const std::array codes{error::kNone,
                           error::kGeneralFailure,
                           error::kInvalidArgument,
                           error::kOutOfMemory,
                           error::kAccessDenied,
                           error::kReadWriteFailed,
                           error::kVolumeFull,
                           error::kDamaged,
                           error::kVolumeMounted,
                           error::kNoVolume,
                           error::kNewerVersion,
                           error::kMountNameInUse,
                           error::kNoMount,
                           error::kNoFile,
                           error::kFileExists,
                           error::kNoTable,
                           error::kTableExists,
                           error::kNoRecord,
                           error::kDuplicatePointName,
                           error::kBadTableDescription,
                           error::kUnknown};
    std::vector<std::string> texts;
    for (const std::int32_t code : codes) {
        const std::string text = ErrorText(code);
        EXPECT_TRUE(text.ends_with('.')) << text;
        EXPECT_NE(text, ErrorText(0x12345678)) << code;
        for (const std::string& other : texts) {
            EXPECT_NE(text, other);
        }
        texts.push_back(text);
    }
}

}  // namespace
}  // namespace cqsurvey
