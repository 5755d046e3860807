#include "tables/CqDescriptionStore.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <map>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "cqsurvey/CqSurveyException.h"
#include "store/CQrfsFile.h"
#include "store/Qrfs.h"
#include "store/StoreExtras.h"
#include "support/TempDir.h"

namespace cqsurvey {
namespace {

void PutNumber(std::string& bytes, std::uint32_t number) {
    for (int shift = 0; shift < 32; shift += 8) {
        bytes.push_back(static_cast<char>(number >> shift));
    }
}

std::string Block(std::uint32_t key, std::uint32_t length, std::uint32_t capacity,
                  const std::string& text) {
    std::string block;
    PutNumber(block, key);
    PutNumber(block, length);
    PutNumber(block, capacity);
    PutNumber(block, 0);
    block += text;
    block.resize(16 + std::max<std::size_t>(capacity, text.size()), '\0');
    return block;
}

std::string Header() {
    std::string header = "QRDBB10";
    header.resize(64, '\0');
    return header;
}

class CqDescriptionStoreTest : public testing::Test {
 protected:
    void SetUp() override {
        ASSERT_NE(QrfsCreateVolume(dir.Path(u"v.job")), 0);
        ASSERT_NE(QrfsMount(dir.Path(u"v.job"), u"DESC"), 0);
        store.Create(kPath);
    }
    void TearDown() override {
        store.Close();
        QrfsUnmount(u"DESC");
    }

    std::string Bytes() const {
        CQrfsFile file;
        file.Open(kPath, 1);
        std::string bytes(static_cast<std::size_t>(file.GetLength()), '?');
        EXPECT_EQ(file.Read(bytes.data(), static_cast<std::uint32_t>(bytes.size())), bytes.size());
        return bytes;
    }
    void SetBytes(const std::string& bytes) const {
        CQrfsFile file;
        file.Open(kPath, 3);
        file.SetLength(0);
        file.Write(bytes.data(), static_cast<std::uint32_t>(bytes.size()));
    }
    std::string Text(CqHandle key) {
        std::string text = "none";
        return store.Get(key, text) ? text : "none";
    }
    std::int32_t CodeOfOpening(const std::string& bytes) {
        store.Close();
        SetBytes(bytes);
        try {
            store.Open(kPath);
        } catch (const CqSurveyException& failure) {
            return failure.m_code;
        }
        return error::kNone;
    }

    const CString kPath = u"DESC:/Description.BLB";
    TempDir dir;
    CqDescriptionStore store;
};

TEST_F(CqDescriptionStoreTest, ANewFileIsTheHeaderAlone) {
    EXPECT_EQ(Bytes(), Header());
}

TEST_F(CqDescriptionStoreTest, ABlockIsRoundedUpToSixteenBytes) {
    EXPECT_TRUE(store.Add(1, "a"));
    EXPECT_TRUE(store.Add(2, "0123456789abcdef"));
    EXPECT_TRUE(store.Add(3, "0123456789abcdefg"));
    EXPECT_EQ(Bytes(), Header() + Block(1, 1, 16, "a") + Block(2, 16, 16, "0123456789abcdef") +
                           Block(3, 17, 32, "0123456789abcdefg"));
}

TEST_F(CqDescriptionStoreTest, EmptyTextsAndTheZeroKeyAreRefused) {
    EXPECT_FALSE(store.Add(1, ""));
    EXPECT_FALSE(store.Add(0, "text"));
    EXPECT_FALSE(store.Edit(0, "text"));
    EXPECT_FALSE(store.Delete(0));
    EXPECT_EQ(Text(0), "none");
    EXPECT_TRUE(store.Add(1, "text"));
    EXPECT_FALSE(store.Edit(1, ""));
    EXPECT_EQ(Text(1), "text");
}

TEST_F(CqDescriptionStoreTest, AddAndEditTellApartWhatIsThere) {
    EXPECT_FALSE(store.Edit(7, "text"));
    EXPECT_FALSE(store.Delete(7));
    EXPECT_TRUE(store.Add(7, "first"));
    EXPECT_FALSE(store.Add(7, "second"));
    EXPECT_EQ(Text(7), "first");
    EXPECT_TRUE(store.Delete(7));
    EXPECT_FALSE(store.Delete(7));
    EXPECT_EQ(Text(7), "none");
}

TEST_F(CqDescriptionStoreTest, AnEditThatFitsRewritesInPlaceAndClearsTheRest) {
    store.Add(1, "a long first text");
    EXPECT_TRUE(store.Edit(1, "short"));
    EXPECT_EQ(Bytes(), Header() + Block(1, 5, 32, "short"));
    EXPECT_TRUE(store.Edit(1, std::string(32, 'x')));
    EXPECT_EQ(Bytes(), Header() + Block(1, 32, 32, std::string(32, 'x')));
}

TEST_F(CqDescriptionStoreTest, AFreedBlockKeepsItsTextAndIsUsedForItsExactCapacity) {
    const std::string twenty(20, 't');
    store.Add(1, twenty);
    store.Add(2, "end");
    store.Delete(1);
    EXPECT_EQ(Bytes(), Header() + Block(0, 20, 32, twenty) + Block(2, 3, 16, "end"));
    store.Add(3, "c");
    EXPECT_EQ(Bytes(),
              Header() + Block(0, 20, 32, twenty) + Block(2, 3, 16, "end") + Block(3, 1, 16, "c"));
    store.Add(4, std::string(25, 'u'));
    EXPECT_EQ(Bytes(), Header() + Block(4, 25, 32, std::string(25, 'u')) + Block(2, 3, 16, "end") +
                           Block(3, 1, 16, "c"));
}

TEST_F(CqDescriptionStoreTest, AGrowingTextMovesToTheEndOrIntoAFreeBlock) {
    store.Add(1, "0123456789");
    store.Edit(1, std::string(40, 'g'));
    EXPECT_EQ(Bytes(),
              Header() + Block(0, 10, 16, "0123456789") + Block(1, 40, 48, std::string(40, 'g')));
    store.Add(2, std::string(16, 'h'));
    store.Delete(1);
    store.Edit(2, std::string(33, 'i'));
    EXPECT_EQ(Bytes(), Header() + Block(0, 16, 16, std::string(16, 'h')) +
                           Block(2, 33, 48, std::string(33, 'i')));
}

TEST_F(CqDescriptionStoreTest, TheBlockFreedFirstIsUsedFirstAlsoAfterOpening) {
    for (CqHandle key = 1; key <= 4; ++key) {
        store.Add(key, std::string(1, static_cast<char>('a' + key)));
    }
    store.Delete(3);
    store.Delete(1);
    store.Delete(2);
    store.Add(5, "5");
    EXPECT_EQ(Bytes().substr(64 + 2 * 32, 32), Block(5, 1, 16, "5"));
    store.Open(kPath);
    store.Add(6, "6");
    EXPECT_EQ(Bytes().substr(64, 32), Block(6, 1, 16, "6"));
}

TEST_F(CqDescriptionStoreTest, KeepsTextsOfMoreThanOnePieceOverAnOpening) {
    const std::string big(200000, 'b');
    store.Add(0xFFFFFFFF, big);
    store.Add(2, "after");
    store.Open(kPath);
    EXPECT_EQ(Text(0xFFFFFFFF), big);
    EXPECT_EQ(Text(2), "after");
    EXPECT_EQ(Text(1), "none");
}

TEST_F(CqDescriptionStoreTest, ReadsATextOfAnyLengthAtAnyPlaceOfTheFile) {
    for (CqHandle length = 1; length <= 300; ++length) {
        ASSERT_TRUE(store.Add(length, std::string(length - 1, 'x') + "|"));
    }
    std::string text;
    for (CqHandle length = 300; length >= 1; --length) {
        ASSERT_TRUE(store.Get(length, text));
        ASSERT_EQ(text, std::string(length - 1, 'x') + "|");
    }
}

TEST_F(CqDescriptionStoreTest, ATextOfLengthZeroIsNone) {
    EXPECT_EQ(CodeOfOpening(Header() + Block(1, 0, 16, "")), error::kNone);
    EXPECT_EQ(Text(1), "none");
    EXPECT_FALSE(store.Add(1, "text"));
    EXPECT_TRUE(store.Edit(1, "text"));
    EXPECT_EQ(Text(1), "text");
}

TEST_F(CqDescriptionStoreTest, TheHeaderIsNotCheckedButMustBeThere) {
    EXPECT_EQ(CodeOfOpening(std::string(64, 'x') + Block(1, 1, 16, "a")), error::kNone);
    EXPECT_EQ(Text(1), "a");
    EXPECT_EQ(CodeOfOpening(std::string(64, 'x')), error::kNone);
    EXPECT_EQ(CodeOfOpening(Header().substr(0, 63)), error::kDamaged);
    EXPECT_EQ(CodeOfOpening(""), error::kDamaged);
}

TEST_F(CqDescriptionStoreTest, ADamagedBlockIsAnError) {
    const std::string good = Header() + Block(1, 1, 16, "a");
    EXPECT_EQ(CodeOfOpening(good), error::kNone);
    EXPECT_EQ(CodeOfOpening(good + Block(2, 17, 16, "a")), error::kDamaged) << "length";
    EXPECT_EQ(CodeOfOpening(good + Block(2, 0xFFFFFFFF, 16, "a")), error::kDamaged) << "length";
    EXPECT_EQ(CodeOfOpening(good + Block(0, 17, 16, "a")), error::kDamaged) << "length";
    EXPECT_EQ(CodeOfOpening(good + Block(2, 1, 17, "a")), error::kDamaged) << "capacity";
    EXPECT_EQ(CodeOfOpening(good + Block(2, 1, 15, "a")), error::kDamaged) << "capacity";
    EXPECT_EQ(CodeOfOpening(good + Block(1, 1, 16, "b")), error::kDamaged) << "key";
    for (const std::uint32_t capacity : {32U, 0x7FFFFFF0U, 0x80000000U, 0xFFFFFFF0U}) {
        std::string block = Block(2, 1, 16, "a");
        block.replace(8, 4, Block(capacity, 0, 0, "").substr(0, 4));
        EXPECT_EQ(CodeOfOpening(good + block), error::kDamaged) << capacity;
    }
}

TEST_F(CqDescriptionStoreTest, AFileCutAnywhereInABlockIsAnError) {
    const std::string good =
        Header() + Block(1, 1, 16, "a") + Block(2, 40, 48, std::string(40, 'b'));
    for (std::size_t length = 64; length <= good.size(); ++length) {
        const bool whole = length == 64 || length == 96 || length == good.size();
        ASSERT_EQ(CodeOfOpening(good.substr(0, length)), whole ? error::kNone : error::kDamaged)
            << length;
    }
}

TEST_F(CqDescriptionStoreTest, AnyBytesAreReadToAnEnd) {
    const unsigned seed = 91;
    SCOPED_TRACE(testing::Message() << "seed " << seed);
    std::mt19937 random(seed);
    std::string good = Header();
    for (std::uint32_t key = 1; key <= 20; ++key) {
        good += Block(key % 5 == 0 ? 0 : key, 3, 16 * (1 + key % 3), "abc");
    }
    int opened = 0;
    for (int i = 0; i < 1000; ++i) {
        std::string bytes = good;
        for (auto changes = random() % 3 + 1; changes != 0; --changes) {
            bytes[random() % bytes.size()] = static_cast<char>(random() % 3 == 0 ? 0 : random());
        }
        const std::int32_t code = CodeOfOpening(bytes);
        ASSERT_TRUE(code == error::kNone || code == error::kDamaged);
        if (code == error::kNone) {
            ++opened;
            for (CqHandle key = 0; key < 30; ++key) {
                std::string text;
                store.Get(key, text);
            }
        }
    }
    EXPECT_GT(opened, 100);
    EXPECT_LT(opened, 1000);
}

TEST_F(CqDescriptionStoreTest, ABlockThatChangedBehindItsBackIsAnError) {
    store.Add(1, "text");
    SetBytes(Header() + Block(2, 4, 16, "text"));
    std::string text = "kept";
    EXPECT_THROW(store.Get(1, text), CqSurveyException);
    EXPECT_THROW(store.Edit(1, "other"), CqSurveyException);
    EXPECT_THROW(store.Delete(1), CqSurveyException);
    SetBytes(Header());
    EXPECT_THROW(store.Get(1, text), CqSurveyException);
    EXPECT_EQ(text, "kept");
}

TEST_F(CqDescriptionStoreTest, TheStoresCodeIsThrownForAFileThatIsNotThere) {
    store.Close();
    try {
        store.Open(u"DESC:/Other.BLB");
        ADD_FAILURE() << "nothing was thrown";
    } catch (const CqSurveyException& failure) {
        EXPECT_EQ(failure.m_code, error::kNoFile);
    }
    try {
        store.Create(kPath);
        ADD_FAILURE() << "nothing was thrown";
    } catch (const CqSurveyException& failure) {
        EXPECT_EQ(failure.m_code, error::kFileExists);
    }
}

/// The file and both maps as plain bytes and lists.
struct Model {
    std::string bytes = Header();
    std::map<CqHandle, std::size_t> used;
    std::map<std::uint32_t, std::deque<std::size_t>> freed;

    [[nodiscard]] std::uint32_t Number(std::size_t at) const {
        std::uint32_t number = 0;
        for (std::size_t i = 4; i-- > 0;) {
            number = number << 8 | static_cast<unsigned char>(bytes[at + i]);
        }
        return number;
    }

    void Allocate(CqHandle key, const std::string& text) {
        const auto length = static_cast<std::uint32_t>(text.size());
        const std::uint32_t capacity = length % 16 == 0 ? length : length + 16 - length % 16;
        std::size_t at = bytes.size();
        if (freed.count(capacity) != 0) {
            at = freed[capacity].front();
            freed[capacity].pop_front();
            if (freed[capacity].empty()) {
                freed.erase(capacity);
            }
        } else {
            bytes.resize(at + 16 + capacity);
        }
        bytes.replace(at, 16 + capacity, Block(key, length, capacity, text));
        used[key] = at;
    }

    void Free(CqHandle key) {
        const std::size_t at = used[key];
        bytes.replace(at, 4, 4, '\0');
        freed[Number(at + 8)].push_back(at);
        used.erase(key);
    }

    void Edit(CqHandle key, const std::string& text) {
        const std::size_t at = used[key];
        const std::uint32_t capacity = Number(at + 8);
        if (text.size() > capacity) {
            Free(key);
            Allocate(key, text);
        } else {
            bytes.replace(at, 16 + capacity,
                          Block(key, static_cast<std::uint32_t>(text.size()), capacity, text));
        }
    }

    void Reopen() {
        freed.clear();
        for (std::size_t at = 64; at < bytes.size(); at += 16 + Number(at + 8)) {
            if (Number(at) == 0) {
                freed[Number(at + 8)].push_back(at);
            }
        }
    }
};

class CqDescriptionStoreOverTime : public CqDescriptionStoreTest,
                                   public testing::WithParamInterface<unsigned> {};

TEST_P(CqDescriptionStoreOverTime, WritesTheFileByteForByteAsThePlainProcedure) {
    SCOPED_TRACE(testing::Message() << "seed " << GetParam());
    std::mt19937 random(GetParam());
    Model model;
    Model kept;
    ASSERT_NE(StoreBeginStep(u"DESC"), 0);
    for (int step = 0; step < 4000; ++step) {
        const auto key = static_cast<CqHandle>(random() % 60 + 1);
        std::string text(random() % (random() % 20 == 0 ? 5000 : 70) + 1, ' ');
        std::generate(text.begin(), text.end(), [&] { return static_cast<char>(random()); });
        const bool known = model.used.count(key) != 0;
        switch (random() % 8) {
            case 0:
            case 1:
            case 2:
                ASSERT_EQ(store.Add(key, text), !known);
                if (!known) {
                    model.Allocate(key, text);
                }
                break;
            case 3:
            case 4:
                ASSERT_EQ(store.Edit(key, text), known);
                if (known) {
                    model.Edit(key, text);
                }
                break;
            case 5:
            case 6:
                ASSERT_EQ(store.Delete(key), known);
                if (known) {
                    model.Free(key);
                }
                break;
            default:
                if (random() % 10 != 0) {
                    break;
                }
                if (random() % 2 == 0) {
                    ASSERT_NE(StoreRollbackStep(u"DESC"), 0);
                    store.UndoStep();
                    model = kept;
                } else {
                    ASSERT_NE(StoreCommitStep(u"DESC"), 0);
                    store.KeepStep();
                    if (random() % 4 == 0) {
                        store.Open(kPath);
                        model.Reopen();
                    }
                    kept = model;
                }
                ASSERT_NE(StoreBeginStep(u"DESC"), 0);
                break;
        }
        if (step % 20 == 0) {
            ASSERT_EQ(Bytes(), model.bytes) << "step " << step;
        }
        std::string read;
        const auto found = model.used.find(key);
        ASSERT_EQ(store.Get(key, read), found != model.used.end());
        if (found != model.used.end()) {
            ASSERT_EQ(read,
                      model.bytes.substr(found->second + 16, model.Number(found->second + 4)));
        }
    }
    ASSERT_NE(StoreCommitStep(u"DESC"), 0);
    EXPECT_EQ(Bytes(), model.bytes);
}

INSTANTIATE_TEST_SUITE_P(Seeds, CqDescriptionStoreOverTime, testing::Values(101U, 102U, 103U));

}  // namespace
}  // namespace cqsurvey
