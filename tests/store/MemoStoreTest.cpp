#include "store/MemoStore.h"

#include <gtest/gtest.h>

#include <map>
#include <set>
#include <string>
#include <vector>

#include "store/StoreTesting.h"

namespace cqsurvey {
namespace {

/// A memo store over a database that goes with the test.
class MemoStoreTest : public testing::Test {
 protected:
    MemoStoreTest() {
        sqlite3* opened = nullptr;
        sqlite3_open(":memory:", &opened);
        m_connection.reset(opened);
        SqlRun(opened,
               "PRAGMA encoding='UTF-16le'; CREATE TABLE Volume_Memo (Reference INTEGER PRIMARY "
               "KEY, Text ANY NOT NULL) STRICT");
    }

    static std::string CodeOfGet(MemoStore& memos, std::uint32_t reference) {
        try {
            (void)memos.Get(reference);
        } catch (const StoreFailure& failure) {
            return Hex(failure.code);
        }
        return "none";
    }

    void Commit(MemoStore& memos) {
        memos.Flush();
        SqlRun(m_connection.get(), "COMMIT");
        memos.KeepStep();
    }

    SqlConnection m_connection;
};

TEST_F(MemoStoreTest, AnEmptyTextHasTheReferenceZero) {
    MemoStore memos(m_connection.get());
    EXPECT_EQ(memos.Add(u""), 0U);
    EXPECT_EQ(memos.GetDirty(), 0U);
}

TEST_F(MemoStoreTest, EveryTextHasAReferenceOfItsOwn) {
    MemoStore memos(m_connection.get());
    const std::uint32_t one = memos.Add(u"text");
    const std::uint32_t two = memos.Add(u"text");
    EXPECT_NE(one, 0U);
    EXPECT_NE(one, two);
    EXPECT_EQ(memos.Get(one), u"text");
    memos.Free(one);
    EXPECT_EQ(memos.Get(two), u"text");
    EXPECT_EQ(CodeOfGet(memos, one), "0x30000007");
    EXPECT_EQ(CodeOfGet(memos, 0), "0x30000007");
    EXPECT_EQ(CodeOfGet(memos, 4294967295), "0x30000007");
}

TEST_F(MemoStoreTest, AReaderGetsTwoHundredAndFiftyFiveUnitsAndNeverHalfAPair) {
    MemoStore memos(m_connection.get());
    const auto read = [&](const CString& text) { return memos.Get(memos.Add(text)); };
    EXPECT_EQ(read(CString(255, u'x')), CString(255, u'x'));
    EXPECT_EQ(read(CString(256, u'x')), CString(255, u'x'));
    EXPECT_EQ(read(CString(254, u'x') + u"\xD83D\xDE00"), CString(254, u'x'));
    EXPECT_EQ(read(CString(253, u'x') + u"\xD83D\xDE00" + u"y"),
              CString(253, u'x') + u"\xD83D\xDE00");
    // Half a pair that nothing follows is a unit like any other.
    EXPECT_EQ(read(CString(254, u'x') + u"\xD83Dy"), CString(254, u'x') + u"\xD83D");
    EXPECT_EQ(read(CString(254, u'x') + u"\xD83D"), CString(254, u'x') + u"\xD83D");
}

TEST_F(MemoStoreTest, EveryUnitSurvivesTheDatabase) {
    const CString zero(1, u'\0');
    const std::vector<CString> texts{u"\xFEFF",          u"\xFFFE",       u"\xFEFF\xFEFFx",
                                     u"\xFFFEtext",      u"\xD800",       zero,
                                     zero + u"x" + zero, u"\u6D4B\u91CF", CString(9000, u'l')};
    std::vector<std::uint32_t> references;
    {
        MemoStore memos(m_connection.get());
        for (const CString& text : texts) {
            references.push_back(memos.Add(text));
        }
        SqlRun(m_connection.get(), "BEGIN");
        Commit(memos);
    }
    MemoStore again(m_connection.get());
    for (std::size_t i = 0; i < texts.size(); ++i) {
        EXPECT_EQ(again.Get(references[i]), texts[i].substr(0, 255)) << i;
    }
    // Whole, beyond what a reader gets.
    EXPECT_EQ(SqlNumber(m_connection.get(), "SELECT max(length(Text)) FROM Volume_Memo"), 9000);
    EXPECT_GT(again.Add(u"new"), references.back());
}

TEST_F(MemoStoreTest, ATextOfMoreThanTheMostIsRefused) {
    MemoStore memos(m_connection.get());
    EXPECT_NE(memos.Add(CString(MemoStore::kMostUnits, u'x')), 0U);
    try {
        (void)memos.Add(CString(MemoStore::kMostUnits + 1, u'x'));
        ADD_FAILURE() << "it was stored";
    } catch (const StoreFailure& failure) {
        EXPECT_EQ(Hex(failure.code), "0x30000002");
    }
}

TEST_F(MemoStoreTest, BehavesAsAMapWhoseStepsAreKeptOrUndone) {
    for (const std::uint32_t seed : {1U, 2U, 3U}) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        SqlRun(m_connection.get(), "DELETE FROM Volume_Memo");
        Random random(seed);
        auto memos = std::make_unique<MemoStore>(m_connection.get());
        std::map<std::uint32_t, CString> model;
        for (int step = 0; step < 400; ++step) {
            const std::map<std::uint32_t, CString> before = model;
            SqlRun(m_connection.get(), "BEGIN");
            for (std::uint32_t i = random.Below(20); i != 0; --i) {
                if (random.OneIn(2)) {
                    const CString text(1 + random.Below(300),
                                       static_cast<char16_t>(random.Number()));
                    const std::uint32_t reference = memos->Add(text);
                    ASSERT_FALSE(model.contains(reference));
                    model[reference] = text.substr(0, 255);
                } else if (!model.empty()) {
                    const auto at = model.lower_bound(random.Below(model.rbegin()->first) + 1);
                    memos->Free(at->first);
                    model.erase(at);
                }
                if (random.OneIn(10)) {
                    memos->Flush();  // as in the middle of a long step
                }
            }
            memos->Free(4000000000U);
            if (random.OneIn(2)) {
                Commit(*memos);
            } else {
                SqlRun(m_connection.get(), "ROLLBACK");
                memos->UndoStep();
                model = before;
            }
            if (random.OneIn(10)) {
                memos = std::make_unique<MemoStore>(m_connection.get());
            }
            for (const auto& [reference, text] : model) {
                ASSERT_EQ(memos->Get(reference), text) << "step " << step;
            }
            ASSERT_EQ(SqlNumber(m_connection.get(), "SELECT count(*) FROM Volume_Memo"),
                      static_cast<std::int64_t>(model.size()))
                << "step " << step;
        }
    }
}

TEST_F(MemoStoreTest, WhatIsNoMemoIsDamage) {
    for (const char* values :
         {"(0, 'x')", "(-1, 'x')", "(4294967296, 'x')", "(1, x'4100')", "(1, 5)"}) {
        SqlRun(m_connection.get(), "DELETE FROM Volume_Memo");
        SqlRun(m_connection.get(), std::string("INSERT INTO Volume_Memo VALUES") + values);
        MemoStore memos(m_connection.get());
        EXPECT_EQ(CodeOfGet(memos, 1), "0x30000007") << values;
    }
}

TEST_F(MemoStoreTest, TheLastReferenceThereCanBeIsFollowedByNone) {
    SqlRun(m_connection.get(), "INSERT INTO Volume_Memo VALUES(4294967295, 'last')");
    MemoStore memos(m_connection.get());
    EXPECT_EQ(memos.Get(4294967295), u"last");
    try {
        (void)memos.Add(u"one more");
        ADD_FAILURE() << "it was stored";
    } catch (const StoreFailure& failure) {
        EXPECT_EQ(Hex(failure.code), "0x30000006");
    }
}

}  // namespace
}  // namespace cqsurvey
