#include <gtest/gtest.h>
#include <sqlite3.h>

#include <array>
#include <cmath>
#include <limits>
#include <string>

#include "drawing/DrawingFixture.h"
#include "tables/CqBitmapTable.h"

namespace cqsurvey {
namespace {

constexpr std::array kPoint{10.5, 20.25, -3.0};
constexpr std::array kElsewhere{1.0, 2.0, 3.0};

class Annotations : public DrawingFixture {
 protected:
    /// How many texts the closed job's file holds.
    [[nodiscard]] int StoredMemos() {
        m_db.Close();
        sqlite3* file = nullptr;
        EXPECT_EQ(sqlite3_open_v2(ToUtf8(m_path).c_str(), &file, SQLITE_OPEN_READONLY, nullptr),
                  SQLITE_OK);
        sqlite3_stmt* statement = nullptr;
        EXPECT_EQ(
            sqlite3_prepare_v2(file, "SELECT count(*) FROM Volume_Memo", -1, &statement, nullptr),
            SQLITE_OK)
            << sqlite3_errmsg(file);
        int count = -1;
        if (sqlite3_step(statement) == SQLITE_ROW) {
            count = sqlite3_column_int(statement, 0);
        }
        sqlite3_finalize(statement);
        sqlite3_close(file);
        m_db.Open(m_path);
        return count;
    }
};

TEST_F(Annotations, KeepEverythingOfAText) {
    m_db.AddLayer(u"Labels", 2, 0);
    m_db.SetCurrentLayer(u"Labels");
    m_db.SetCurrentColor(6);
    const CqHandle h = m_db.AddText(kPoint.data(), u"Brunnen \u4E95", 2, 3, u"Sans", 2.5, 0.75, -40,
                                    0xF0000001, -5, 7);
    Reopen();
    const auto text = Read(h);
    ASSERT_EQ(text->GetType(), EntText);
    EXPECT_EQ(text->GetText(), u"Brunnen \u4E95");
    EXPECT_EQ(text->GetAlign(), 196610);
    EXPECT_EQ(text->GetStyle(), u"Sans");
    EXPECT_EQ(text->GetHeight(), 2.5);
    EXPECT_EQ(text->GetRot(), 0.75);
    EXPECT_EQ(text->GetCode(), -40);
    EXPECT_EQ(text->GetOptionStyle(), 0xF0000001U);
    EXPECT_EQ(text->GetInterval(), -5);
    EXPECT_EQ(text->GetThickness(), 7);
    EXPECT_EQ(text->GetLayer(), u"Labels");
    EXPECT_EQ(text->GetColor(), 6);
    EXPECT_EQ(PointOf(h), kPoint);
}

TEST_F(Annotations, PackTheLowHalvesOfBothAlignments) {
    const auto align = [&](int first, int second) {
        return Read(m_db.AddText(kPoint.data(), u"", first, second, u"", 0.0, 0.0, 0, 0, 0, 0))
            ->GetAlign();
    };
    EXPECT_EQ(align(2, 3), 196610);
    EXPECT_EQ(align(0x12345, 0), 0x2345);
    EXPECT_EQ(align(-1, 0), 0xFFFF);
    EXPECT_EQ(align(0, -1), -65536);
    EXPECT_EQ(align(1, 0x18000), std::numeric_limits<int>::min() + 1);
    EXPECT_EQ(align(std::numeric_limits<int>::min(), std::numeric_limits<int>::min()), 0);
}

TEST_F(Annotations, CutAStyleAndKeepTheCharactersOfAMemo) {
    const CString odd = u"\x1 \xD800 \xDFFF \xFFFF \xFEFF \U0001F4CD \"quoted\", 'it''s'\r\n\t%s";
    const CqHandle h = m_db.AddText(kPoint.data(), odd, 0, 0, CString(30, u'S'), 0, 0, 0, 0, 0, 0);
    const CqHandle bitmap = m_db.AddBitmap(kPoint.data(), odd, CVector(1.0, 1.0));
    Reopen();
    EXPECT_EQ(Read(h)->GetText(), odd);
    EXPECT_EQ(Read(h)->GetStyle(), CString(23, u'S'));
    EXPECT_EQ(Read(bitmap)->GetResName(), odd);
}

TEST_F(Annotations, ReadBackTheFirst255CharactersOfALongMemo) {
    const CqHandle longest = AddText(CString(255, u'a'));
    const CqHandle longer = AddText(CString(100'000, u'b'));
    const CqHandle empty = AddText(u"");
    for (int pass = 0; pass < 2; ++pass) {
        EXPECT_EQ(Read(longest)->GetText(), CString(255, u'a'));
        EXPECT_EQ(Read(longer)->GetText(), CString(255, u'b'));
        EXPECT_EQ(Read(empty)->GetText(), u"");
        Reopen();
    }
}

TEST_F(Annotations, FreeAMemoThatIsReplacedOrDeleted) {
    const CqHandle text = AddText(u"one");
    const CqHandle bitmap = m_db.AddBitmap(kPoint.data(), u"tree.bmp", CVector(1.0, 1.0));
    EXPECT_EQ(StoredMemos(), 2);
    EXPECT_EQ(m_db.EditText(text, kPoint.data(), u"two", 0, 0, u"", 0, 0, 0, 0, 0, 0), 1);
    EXPECT_EQ(m_db.EditText(text, kPoint.data(), u"three", 0, 0, u"", 0, 0, 0, 0, 0, 0), 1);
    EXPECT_EQ(m_db.EditBitmap(bitmap, kPoint.data(), u"rock.bmp", CVector()), 1);
    EXPECT_EQ(StoredMemos(), 2);
    EXPECT_EQ(m_db.EditText(text, kPoint.data(), u"", 0, 0, u"", 0, 0, 0, 0, 0, 0), 1);
    EXPECT_EQ(StoredMemos(), 1);
    EXPECT_EQ(m_db.EditText(text, kPoint.data(), u"four", 0, 0, u"", 0, 0, 0, 0, 0, 0), 1);
    EXPECT_EQ(StoredMemos(), 2);
    EXPECT_EQ(m_db.DeleteText(text), 1);
    EXPECT_EQ(m_db.DeleteBitmap(bitmap), 1);
    EXPECT_EQ(StoredMemos(), 0);
}

TEST_F(Annotations, RewriteATextButNeitherItsLayerNorItsColour) {
    const CqHandle before = AddCircle();
    const CqHandle h = m_db.AddText(kPoint.data(), u"old", 1, 1, u"Old", 1.0, 1.0, 1, 1, 1, 1);
    const CqHandle after = AddCircle();
    m_db.AddLayer(u"Labels", 2, 0);
    m_db.SetCurrentLayer(u"Labels");
    m_db.SetCurrentColor(6);
    EXPECT_EQ(m_db.EditText(h, kElsewhere.data(), u"new", 2, 3, u"New", 4.0, 5.0, 6, 7, 8, 9), 1);
    for (int pass = 0; pass < 2; ++pass) {
        const auto text = Read(h);
        EXPECT_EQ(text->GetText(), u"new");
        EXPECT_EQ(text->GetAlign(), 196610);
        EXPECT_EQ(text->GetStyle(), u"New");
        EXPECT_EQ(text->GetHeight(), 4.0);
        EXPECT_EQ(text->GetRot(), 5.0);
        EXPECT_EQ(text->GetCode(), 6);
        EXPECT_EQ(text->GetOptionStyle(), 7U);
        EXPECT_EQ(text->GetInterval(), 8);
        EXPECT_EQ(text->GetThickness(), 9);
        EXPECT_EQ(text->GetLayer(), u"0");
        EXPECT_EQ(text->GetColor(), 256);
        EXPECT_EQ(PointOf(h), kElsewhere);
        EXPECT_EQ(Chain(), (Handles{before, h, after}));
        Reopen();
    }
}

TEST_F(Annotations, KeepEverythingOfACircle) {
    m_db.SetCurrentColor(6);
    const CqHandle h = m_db.AddCircle(kPoint.data(), -5.5, 70'000, -40);
    Reopen();
    const auto circle = Read(h);
    ASSERT_EQ(circle->GetType(), EntCircle);
    EXPECT_EQ(circle->GetRadius(), -5.5);
    EXPECT_EQ(circle->GetLine(), 70'000);
    EXPECT_EQ(circle->GetCode(), -40);
    EXPECT_EQ(circle->GetColor(), 6);
    EXPECT_EQ(PointOf(h), kPoint);
}

TEST_F(Annotations, RewriteACircle) {
    const CqHandle h = m_db.AddCircle(kPoint.data(), 1.0, 2, 3);
    m_db.SetCurrentColor(6);
    EXPECT_EQ(m_db.EditCircle(h, kElsewhere.data(), std::nan(""), 5, 6), 1);
    Reopen();
    EXPECT_TRUE(std::isnan(Read(h)->GetRadius()));
    EXPECT_EQ(Read(h)->GetLine(), 5);
    EXPECT_EQ(Read(h)->GetCode(), 6);
    EXPECT_EQ(Read(h)->GetColor(), 256);
    EXPECT_EQ(PointOf(h), kElsewhere);
}

TEST_F(Annotations, KeepTheWidthOfABitmapOnly) {
    const CqHandle h = m_db.AddBitmap(kPoint.data(), u"tree.bmp", CVector(4.0, 3.0));
    for (int pass = 0; pass < 2; ++pass) {
        const auto bitmap = Read(h);
        ASSERT_EQ(bitmap->GetType(), EntBitmap);
        EXPECT_EQ(bitmap->GetSize().GetX(), 4.0);
        EXPECT_EQ(bitmap->GetSize().GetY(), 0.0);
        EXPECT_EQ(bitmap->GetHeight(), 0.0);
        EXPECT_EQ(bitmap->GetResName(), u"tree.bmp");
        EXPECT_EQ(PointOf(h), kPoint);
        Reopen();
    }
}

TEST_F(Annotations, RewriteABitmapButNotTheOriginOfItsData) {
    const CqHandle h = m_db.AddBitmap(kPoint.data(), u"tree.bmp", CVector(4.0, 3.0));
    ChangeTable<CqBitmapTable>(u"_BitmapData", [](CqBitmapTable& table) {
        ASSERT_EQ(table.First(kRecordOrder), 1);
        EXPECT_EQ(table.Get<"DataOrigin">(), 0);
        table.Set<"DataOrigin">(std::uint16_t{9});
        table.Store();
    });
    EXPECT_EQ(m_db.EditBitmap(h, kElsewhere.data(), u"rock.bmp", CVector(5.0, 6.0)), 1);
    EXPECT_EQ(Read(h)->GetSize().GetX(), 5.0);
    EXPECT_EQ(Read(h)->GetResName(), u"rock.bmp");
    EXPECT_EQ(PointOf(h), kElsewhere);
    ChangeTable<CqBitmapTable>(u"_BitmapData", [](CqBitmapTable& table) {
        ASSERT_EQ(table.First(kRecordOrder), 1);
        EXPECT_EQ(table.Get<"DataOrigin">(), 9);
        EXPECT_EQ(table.Get<"sizeX">(), 5.0);
    });
}

TEST_F(Annotations, LeaveTheirNeighboursLinkedWhenTheyGo) {
    const CqHandle first = AddCircle();
    const CqHandle text = AddText();
    const CqHandle middle = AddCircle();
    const CqHandle bitmap = m_db.AddBitmap(kPoint.data(), u"", CVector());
    const CqHandle last = AddCircle();
    EXPECT_EQ(m_db.DeleteCircle(middle), 1);
    EXPECT_EQ(Chain(), (Handles{first, text, bitmap, last}));
    EXPECT_EQ(m_db.DeleteText(text), 1);
    EXPECT_EQ(m_db.DeleteCircle(first), 1);
    EXPECT_EQ(Chain(), (Handles{bitmap, last}));
    EXPECT_EQ(m_db.DeleteCircle(last), 1);
    Reopen();
    EXPECT_EQ(Chain(), Handles{bitmap});
    EXPECT_EQ(m_db.DeleteBitmap(bitmap), 1);
    EXPECT_EQ(m_db.GetFirstCadEntityHandle(), 0U);
    SVDB_INFORMATION info;
    CqSurveyDB::GetDBInformation(0xFF, u"", info, &m_db);
    EXPECT_EQ(info.numBitmaps, 0);
    EXPECT_EQ(info.numCircles, 0);
    EXPECT_EQ(info.numTexts, 0);
}

TEST_F(Annotations, AreLeftAloneByOperationsOfAnotherKind) {
    const CqHandle text = AddText(u"text");
    const CqHandle circle = AddCircle(3.0, 4.0);
    const CqHandle bitmap = m_db.AddBitmap(kPoint.data(), u"tree.bmp", CVector(4.0, 3.0));
    const std::array far{1000.0, 1000.0, 0.0};
    const auto editText = [&](CqHandle h) {
        return m_db.EditText(h, far.data(), u"new", 0, 0, u"", 0, 0, 0, 0, 0, 0);
    };
    EXPECT_EQ(editText(circle), 0);
    EXPECT_EQ(editText(bitmap), 0);
    EXPECT_EQ(m_db.EditCircle(text, far.data(), 9.0, 0, 0), 0);
    EXPECT_EQ(m_db.EditCircle(bitmap, far.data(), 9.0, 0, 0), 0);
    EXPECT_EQ(m_db.EditBitmap(text, far.data(), u"new", CVector()), 0);
    EXPECT_EQ(m_db.EditBitmap(circle, far.data(), u"new", CVector()), 0);
    EXPECT_EQ(m_db.DeleteText(circle), 0);
    EXPECT_EQ(m_db.DeleteText(bitmap), 0);
    EXPECT_EQ(m_db.DeleteCircle(text), 0);
    EXPECT_EQ(m_db.DeleteCircle(bitmap), 0);
    EXPECT_EQ(m_db.DeleteBitmap(text), 0);
    EXPECT_EQ(m_db.DeleteBitmap(circle), 0);
    EXPECT_EQ(Chain(), (Handles{text, circle, bitmap}));
    EXPECT_EQ(Read(text)->GetText(), u"text");
    EXPECT_EQ(Read(circle)->GetRadius(), 1.0);
    EXPECT_EQ(PointOf(circle), (std::array{3.0, 4.0, 0.0}));
    EXPECT_EQ(Read(bitmap)->GetResName(), u"tree.bmp");
    EXPECT_EQ(PointOf(bitmap), kPoint);
    ExpectExtents(0.0, 0.0, kPoint[0], kPoint[1]);
}

TEST_F(Annotations, RefuseNoHandleAndTheHeaderOfTheChain) {
    for (const CqHandle h : {CqHandle{0}, CqHandle{1}}) {
        EXPECT_EQ(m_db.EditText(h, kPoint.data(), u"", 0, 0, u"", 0, 0, 0, 0, 0, 0), 0);
        EXPECT_EQ(m_db.EditCircle(h, kPoint.data(), 1.0, 0, 0), 0);
        EXPECT_EQ(m_db.EditBitmap(h, kPoint.data(), u"", CVector()), 0);
        EXPECT_EQ(m_db.DeleteText(h), 0);
        EXPECT_EQ(m_db.DeleteCircle(h), 0);
        EXPECT_EQ(m_db.DeleteBitmap(h), 0);
    }
}

TEST_F(Annotations, ThrowWhenTheyAreGone) {
    const CqHandle gone = AddCircle();
    m_db.DeleteCircle(gone);
    EXPECT_EQ(CodeOf([&] {
                  return m_db.EditText(gone, kPoint.data(), u"", 0, 0, u"", 0, 0, 0, 0, 0, 0);
              }),
              kStale);
    EXPECT_EQ(CodeOf([&] { return m_db.EditCircle(gone, kPoint.data(), 1.0, 0, 0); }), kStale);
    EXPECT_EQ(CodeOf([&] { return m_db.EditBitmap(gone, kPoint.data(), u"", CVector()); }), kStale);
    EXPECT_EQ(CodeOf([&] { return m_db.DeleteText(gone); }), kStale);
    EXPECT_EQ(CodeOf([&] { return m_db.DeleteCircle(gone); }), kStale);
    EXPECT_EQ(CodeOf([&] { return m_db.DeleteBitmap(gone); }), kStale);
}

}  // namespace
}  // namespace cqsurvey
