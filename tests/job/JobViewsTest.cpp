#include <gtest/gtest.h>
#include <sqlite3.h>

#include <array>
#include <string>
#include <vector>

#include "cqsurvey/cqsurvey.h"
#include "store/Sql.h"
#include "support/Drawing.h"
#include "support/TempDir.h"

namespace cqsurvey {
namespace {

/// A job, and what another tool reads from the views in its file.
class JobViews : public testing::Test {
 protected:
    void SetUp() override { m_db.CreateNew(m_path); }

    /// The rows that a query gives, columns separated by "|"; the first row names the columns.
    std::vector<std::string> Read(const std::string& query) {
        m_db.Close();
        std::vector<std::string> rows;
        {
            sqlite3* opened = nullptr;
            EXPECT_EQ(
                sqlite3_open_v2(ToUtf8(m_path).c_str(), &opened, SQLITE_OPEN_READONLY, nullptr),
                SQLITE_OK);
            const SqlConnection connection(opened);
            SqlStatement statement(opened, query);
            const int columns = sqlite3_column_count(statement.Get());
            const auto row = [&](const auto& cell) {
                std::string text;
                for (int i = 0; i < columns; ++i) {
                    const char* value = cell(i);
                    text += (i == 0 ? "" : "|") + std::string(value == nullptr ? "NULL" : value);
                }
                rows.push_back(text);
            };
            row([&](int i) { return sqlite3_column_name(statement.Get(), i); });
            while (statement.Step()) {
                row([&](int i) {
                    return reinterpret_cast<const char*>(sqlite3_column_text(statement.Get(), i));
                });
            }
        }
        m_db.Open(m_path);
        return rows;
    }

    using Rows = std::vector<std::string>;

    TempDir m_folder;
    CString m_path = m_folder.Path(u"views.job");
    CqSurveyDB m_db;
};

TEST_F(JobViews, ShowPointsWithTheirCoordinatesGroupAndLayer) {
    DrawPoint(m_db, u"P1", 10.5, 20.25, 3.0, 40);
    m_db.AddGroup(u"Road");
    m_db.SetCurrentGroup(u"Road");
    m_db.AddLayer(u"Trees", 2, 0);
    m_db.SetCurrentLayer(u"Trees");
    const CqHandle second = DrawPoint(m_db, u"\u4E95", -1.0, -2.0);
    m_db.EditCoordRecFlags(second, 7);
    EXPECT_EQ(Read("SELECT * FROM Points LIMIT 0"),
              Rows{"Point|Name|Easting|Northing|Height|Code|Group|Layer|Origin|Flags|RecordedUtc|"
                   "Entity"});
    EXPECT_EQ(
        Read("SELECT Point, Name, Easting, Northing, Height, Code, \"Group\", Layer, Origin,"
             " Flags, Entity FROM Points"),
        (Rows{"Point|Name|Easting|Northing|Height|Code|Group|Layer|Origin|Flags|Entity",
              "1|P1|10.5|20.25|3.0|40|NULL|0|1|0|2", "2|\u4E95|-1.0|-2.0|0.0|0|Road|Trees|1|7|3"}));
    EXPECT_EQ(Read("SELECT count(*) AS n FROM Points JOIN _PointData ON Record = Point"
                   " WHERE strftime('%s', RecordedUtc) = CAST(RecTime AS TEXT)"),
              (Rows{"n", "2"}));
}

TEST_F(JobViews, ShowLayersAndGroups) {
    m_db.AddLayer(u"Trees", 2, 7);
    m_db.AddLayer(u"Hidden", -3, 8);
    m_db.AddGroup(u"Road");
    EXPECT_EQ(Read("SELECT * FROM Layers"), (Rows{"Layer|Name|Color|Visible|LineType", "1|0|1|1|0",
                                                  "2|Trees|2|1|7", "3|Hidden|3|0|8"}));
    EXPECT_EQ(Read("SELECT * FROM Groups"), (Rows{"Group|Name", "1|Road"}));
}

TEST_F(JobViews, ShowPolylinesAndTheirVertices) {
    DrawPoint(m_db, u"P1", 0.0, 0.0);
    m_db.SetCurrentColor(5);
    CqCadEntityList* list = m_db.StartPline(3, 40);
    for (const double x : {0.0, 2.0}) {
        const std::array<double, 3> at{x, 0.0, 9.0};
        m_db.AddVertex(list, at.data(), 1.0 - x / 2.0);
    }
    ASSERT_EQ(m_db.EndPline(list), 3U);
    m_db.LinkSiPntAndVertex(2, 4);
    EXPECT_EQ(Read("SELECT * FROM Polylines"),
              (Rows{"Entity|Layer|Color|LineType|Code|MinEasting|MinNorthing|MaxEasting|"
                    "MaxNorthing",
                    "3|0|5|3|40|0.0|-1.0|2.0|0.0"}));
    EXPECT_EQ(Read("SELECT * FROM Vertices"),
              (Rows{"Entity|Polyline|Easting|Northing|Height|Bulge|PointEntity",
                    "4|3|0.0|0.0|9.0|1.0|2", "5|3|2.0|0.0|9.0|0.0|NULL"}));
}

TEST_F(JobViews, ShowAVertexWithSeveralLinksOnceAndWithTheLast) {
    for (const char16_t* name : {u"P1", u"P2", u"P3"}) {
        DrawPoint(m_db, name, 0.0, 0.0);
    }
    const CqHandle vertex = DrawLine(m_db, {{0.0, 0.0}, {1.0, 0.0}}) + 1;
    for (const CqHandle point : {CqHandle{4}, CqHandle{2}, CqHandle{3}}) {
        ASSERT_EQ(m_db.LinkSiPntAndVertex(point, vertex), 1);
        if (point != 3) {
            m_db.UnlinkSiPntAndVertex(1, vertex);
        }
    }
    EXPECT_EQ(Read("SELECT Entity, PointEntity FROM Vertices"),
              (Rows{"Entity|PointEntity", "6|3", "7|NULL"}));
    CqCadEntity* object = nullptr;
    CqHandle next = vertex;
    ASSERT_EQ(m_db.GetNextCadEntity(next, object), 1);
    EXPECT_EQ(CqCadEntityPtr(object)->GetMcadSiPointHandle(), 3U) << "as the library reads it";
}

TEST_F(JobViews, ShowTextsCirclesAndBitmaps) {
    const std::array<double, 3> at{1.0, 2.0, 3.0};
    m_db.AddText(at.data(), u"Brunnen \u4E95", 2, -3, u"Sans", 2.5, 0.75, 40, 0, 0, 0);
    m_db.AddText(at.data(), u"", 0, 0, u"", 1.0, 0.0, 0, 0, 0, 0);
    m_db.AddCircle(at.data(), 4.5, 6, 7);
    m_db.AddBitmap(at.data(), u"tree.bmp", CVector(4.0, 3.0));
    EXPECT_EQ(Read("SELECT * FROM Texts"),
              (Rows{"Entity|Layer|Color|Easting|Northing|Height|Text|Style|TextHeight|Rotation|"
                    "Align1|Align2|Code",
                    "2|0|256|1.0|2.0|3.0|Brunnen \u4E95|Sans|2.5|0.75|2|-3|40",
                    "3|0|256|1.0|2.0|3.0|NULL||1.0|0.0|0|0|0"}));
    EXPECT_EQ(Read("SELECT * FROM Circles"),
              (Rows{"Entity|Layer|Color|Easting|Northing|Height|Radius|LineType|Code",
                    "4|0|256|1.0|2.0|3.0|4.5|6|7"}));
    EXPECT_EQ(Read("SELECT * FROM Bitmaps"),
              (Rows{"Entity|Layer|Easting|Northing|Height|Resource|Width",
                    "5|0|1.0|2.0|3.0|tree.bmp|4.0"}));
}

}  // namespace
}  // namespace cqsurvey
