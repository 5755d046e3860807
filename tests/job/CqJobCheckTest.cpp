#include "cqsurvey/CqJobCheck.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <fstream>
#include <functional>
#include <string>
#include <vector>

#include "cqsurvey/CqSurveyDB.h"
#include "cqsurvey/Text.h"
#include "store/Qrfs.h"
#include "support/Points.h"
#include "support/TempDir.h"
#include "tables/CqEntityTable.h"
#include "tables/CqGroupTable.h"
#include "tables/CqLayerTable.h"
#include "tables/CqLinkTable.h"
#include "tables/CqPointTable.h"
#include "tables/CqTextTable.h"
#include "tables/CqVertexTable.h"

namespace cqsurvey {
namespace {

using testing::HasSubstr;
using testing::Not;

/// A small job of every kind of thing, which a test then damages behind the library's back.
class JobCheck : public testing::Test {
 protected:
    JobCheck() {
        CqSurveyDB db;
        db.CreateNew(m_path);
        const std::array<double, 3> coords{1, 2, 3};
        AddPoint(db, u"P1", 1, 2);  // point 1, entity 2
        AddPoint(db, u"P2", 3, 4);  // point 2, entity 3
        CqCadEntityList* list = db.StartPline(0, 0);
        db.AddVertex(list, coords.data(), 0);
        db.AddVertex(list, coords.data(), 0);
        EXPECT_NE(db.EndPline(list), 0U);      // entities 4, 5, 6
        db.AddCircle(coords.data(), 1, 0, 0);  // entity 7
        db.AddText(coords.data(), u"one", 0, 0, u"", 1, 0, 0, 0, 0, 0);
        db.AddText(coords.data(), u"two", 0, 0, u"", 1, 0, 0, 0, 0, 0);
        db.AddBitmap(coords.data(), u"tree", CVector(1, 1));
        db.LinkSiPntAndVertex(2, 5);
    }

    /// Changes records of one table of the closed job.
    template <class Table>
    void Damage(const char16_t* name, const std::function<void(Table&)>& change) {
        ASSERT_NE(QrfsMount(m_path, u"RAW"), 0);
        Table table;
        table.CqDbTable::Open(CString(u"RAW:/") + name);
        change(table);
        table.CqDbTable::Close();
        ASSERT_NE(QrfsUnmount(u"RAW"), 0);
    }

    /// What the check says of the job, notes marked as such.
    [[nodiscard]] std::string Findings() const {
        CqSurveyDB db(m_path);
        std::string all;
        const CqJobCheck check(db);
        for (const CqJobFinding& finding : check.GetFindings()) {
            all += finding.kind == CqJobFinding::Kind::Note ? "note " : "";
            all +=
                finding.table + " " + std::to_string(finding.record) + ": " + finding.text + "\n";
        }
        return all;
    }

    [[nodiscard]] std::size_t Faults() const {
        CqSurveyDB db(m_path);
        return CqJobCheck(db).GetCount();
    }

    TempDir m_folder;
    CString m_path = m_folder.Path(u"a.job");
};

TEST_F(JobCheck, FindsNothingInASoundJob) {
    CqSurveyDB db(m_path);
    const CqJobCheck check(db);
    EXPECT_EQ(check.GetCount(), 0U);
    EXPECT_EQ(check.GetNoteCount(), 0U);
    EXPECT_GT(check.GetChecks(), 50U);
}

TEST_F(JobCheck, TellsHowFarItIs) {
    std::uint64_t last = 0;
    std::uint64_t all = 0;
    CqSurveyDB db(m_path);
    const CqJobCheck check(db, 1000, [&](std::uint64_t done, std::uint64_t whole) {
        EXPECT_EQ(done, last + 1);
        EXPECT_TRUE(all == 0 || whole == all) << "the whole does not change";
        last = done;
        all = whole;
    });
    EXPECT_GT(last, 20U);
    EXPECT_LE(last, all);
    EXPECT_GE(last + 1, all) << "the chain's header is no link of it";
    EXPECT_EQ(check.GetChecks(), CqJobCheck(db).GetChecks());
}

TEST_F(JobCheck, FindsNothingInAnEmptyJob) {
    CqSurveyDB db;
    db.CreateNew(m_folder.Path(u"b.job"));
    EXPECT_EQ(CqJobCheck(db).GetCount(), 0U);
}

TEST_F(JobCheck, FindsAPointWhoseEntityShowsAnother) {
    Damage<CqPointTable>(u"_PointData", [](CqPointTable& points) {
        points.GoTo(1);
        points.Set<"EntityIndex">(CqHandle{3});
        points.Store();
    });
    EXPECT_THAT(Findings(), HasSubstr("_PointData 1: point \"P1\" names entity 3"));
}

TEST_F(JobCheck, FindsAPointWithAnotherNumber) {
    Damage<CqPointTable>(u"_PointData", [](CqPointTable& points) {
        points.GoTo(2);
        points.Set<"PointNumber">(CqHandle{9});
        points.Store();
    });
    EXPECT_THAT(Findings(), HasSubstr("_PointData 2: its PointNumber is 9"));
}

TEST_F(JobCheck, FindsAPointNameThatStandsTwice) {
    Damage<CqPointTable>(u"_PointData", [](CqPointTable& points) {
        points.GoTo(2);
        points.Set<"PointName">(CString(u"P1"));
        points.Store();
    });
    EXPECT_THAT(Findings(), HasSubstr("_PointData 2: an earlier point has the name \"P1\" too"));
}

TEST_F(JobCheck, FindsABrokenLinkBackInTheChain) {
    Damage<CqEntityTable>(u"_EntityData", [](CqEntityTable& entities) { entities.SetPrev(7, 2); });
    EXPECT_THAT(Findings(), HasSubstr("_EntityData 7: the chain reaches it from 6"));
}

TEST_F(JobCheck, FindsAChainThatLeavesEntitiesOut) {
    Damage<CqEntityTable>(u"_EntityData", [](CqEntityTable& entities) { entities.SetNext(3, 7); });
    EXPECT_THAT(Findings(), HasSubstr("the chain holds 6 of 9 entities"));
}

TEST_F(JobCheck, FindsAChainThatRunsInACircle) {
    Damage<CqEntityTable>(u"_EntityData", [](CqEntityTable& entities) { entities.SetNext(7, 2); });
    EXPECT_THAT(Findings(), HasSubstr("goes on after as many steps"));
}

TEST_F(JobCheck, FindsAWrongTail) {
    Damage<CqEntityTable>(u"_EntityData", [](CqEntityTable& entities) { entities.SetPrev(1, 7); });
    EXPECT_THAT(Findings(), HasSubstr("the chain ends here and not at its tail 7"));
}

TEST_F(JobCheck, FindsAVertexOfAnotherPolyline) {
    Damage<CqVertexTable>(u"_VertexData", [](CqVertexTable& vertices) {
        vertices.First(kRecordOrder);
        vertices.Set<"PlineIndex">(CqHandle{7});
        vertices.Store();
    });
    EXPECT_THAT(Findings(), HasSubstr("_EntityData 5: the vertex does not follow its polyline"));
}

TEST_F(JobCheck, FindsALayerThatIsGoneAndAnUnknownType) {
    Damage<CqEntityTable>(u"_EntityData", [](CqEntityTable& entities) {
        entities.GoTo(7);
        entities.Set<"LayerIndex">(std::uint16_t{44});
        entities.Set<"ObjectType">(std::uint16_t{3});
        entities.Store();
    });
    EXPECT_THAT(Findings(), HasSubstr("_EntityData 7: its layer 44 is gone"));
    EXPECT_THAT(Findings(), HasSubstr("_EntityData 7: it has the unknown type 3"));
}

TEST_F(JobCheck, FindsATypeRecordThatIsGoneOrShared) {
    Damage<CqEntityTable>(u"_EntityData", [](CqEntityTable& entities) {
        entities.GoTo(6);
        entities.Set<"ObjectIndex">(CqHandle{99});
        entities.Store();
        entities.GoTo(9);
        entities.Set<"ObjectIndex">(CqHandle{1});
        entities.Store();
    });
    const std::string findings = Findings();
    EXPECT_THAT(findings, HasSubstr("_EntityData 6: its record 99 of _VertexData is gone"));
    EXPECT_THAT(findings, HasSubstr("_TextData 1: more than one entity names it"));
    EXPECT_THAT(findings, HasSubstr("_TextData 0: 1 of its records belong to no entity"));
}

TEST_F(JobCheck, FindsATextThatIsGoneOrShared) {
    Damage<CqTextTable>(u"_TextData", [](CqTextTable& texts) {
        texts.First(kRecordOrder);
        const auto shared = texts.Get<"Text">();
        texts.Next();
        texts.Set<"Text">(shared);
        texts.Store();
    });
    EXPECT_THAT(Findings(), HasSubstr("_TextData 2: it shares its text with another record"));
    Damage<CqTextTable>(u"_TextData", [](CqTextTable& texts) {
        texts.First(kRecordOrder);
        texts.Set<"Text">(std::uint32_t{999});
        texts.Store();
    });
    EXPECT_THAT(Findings(), HasSubstr("_TextData 1: its text is gone"));
}

TEST_F(JobCheck, FindsALayerNameThatStandsTwice) {
    Damage<CqLayerTable>(u"_Layer", [](CqLayerTable& layers) { layers.AppendLayer(u"0", 1, 0); });
    EXPECT_THAT(Findings(), HasSubstr("_Layer 2: an earlier layer has the name \"0\" too"));
}

TEST_F(JobCheck, FindsAGroupNameThatStandsTwiceButForLetterCase) {
    Damage<CqGroupTable>(u"_GroupData", [](CqGroupTable& groups) {
        groups.AppendGroup(u"Road");
        groups.AppendGroup(u"ROAD");
    });
    EXPECT_THAT(Findings(), HasSubstr("_GroupData 2: an earlier group has the name \"ROAD\" too"));
}

TEST_F(JobCheck, FindsALinkBetweenOthersThanAPointAndAVertex) {
    Damage<CqLinkTable>(u"_PointToVertexLink", [](CqLinkTable& links) {
        links.First(kRecordOrder);
        links.Set<"PointDataID">(CqHandle{7});
        links.Set<"VertexDataID">(CqHandle{3});
        links.Store();
    });
    const std::string findings = Findings();
    EXPECT_THAT(findings, HasSubstr("_PointToVertexLink 1: entity 7 is tied as a point"));
    EXPECT_THAT(findings, HasSubstr("_PointToVertexLink 1: entity 3 is tied as a vertex"));
}

TEST_F(JobCheck, FindsAChainWithoutHeader) {
    Damage<CqEntityTable>(u"_EntityData",
                          [](CqEntityTable& entities) { entities.DeleteRecord(1); });
    EXPECT_THAT(Findings(), HasSubstr("_EntityData 1: the header of the entity chain is gone"));
}

TEST_F(JobCheck, FindsAnEntityOutsideTheExtentsUnlessItsTypeIsUnknown) {
    // What the chain leaves out does not widen the extents.
    Damage<CqEntityTable>(u"_EntityData", [](CqEntityTable& entities) {
        entities.SetNext(6, 8);
        entities.GoTo(7);
        entities.Set<"E">(5000.0);
        entities.Store();
    });
    EXPECT_THAT(Findings(), HasSubstr("_EntityData 7: it lies outside the drawing's extents"));
    Damage<CqEntityTable>(u"_EntityData", [](CqEntityTable& entities) {
        entities.GoTo(7);
        entities.Set<"ObjectType">(std::uint16_t{3});
        entities.Store();
    });
    EXPECT_THAT(Findings(), Not(HasSubstr("outside")));
}

TEST_F(JobCheck, FindsALinkToAnEntityThatNeverWas) {
    Damage<CqLinkTable>(u"_PointToVertexLink", [](CqLinkTable& links) {
        links.First(kRecordOrder);
        links.Set<"PointDataID">(CqHandle{1});
        links.Set<"VertexDataID">(CqHandle{4000});
        links.Store();
    });
    EXPECT_EQ(Findings(),
              "_PointToVertexLink 1: entity 1, tied as a point, is gone\n"
              "_PointToVertexLink 1: entity 4000, tied as a vertex, is gone\n");
}

TEST_F(JobCheck, NotesTheLinkOfADeletedPoint) {
    CqSurveyDB db(m_path);
    db.DelCoordRec(u"P1");
    db.Close();
    EXPECT_EQ(Findings(), "note _PointToVertexLink 1: entity 2, tied as a point, is gone\n");
}

TEST_F(JobCheck, NotesEntitiesOfADeletedLayerEvenOfLayer0) {
    CqSurveyDB db(m_path);
    db.AddLayer(u"A", 1, 0);
    db.EditLayer(7, u"A");
    db.DeleteLayer(u"A");
    db.Close();
    EXPECT_EQ(Findings(), "note _EntityData 7: its layer 2 is gone\n");
    db.Open(m_path);
    db.DeleteLayer(u"0");
    db.Close();
    // From now on no layer is current at the beginning, and what is added has none.
    db.Open(m_path);
    const std::array<double, 3> coords{1, 2, 3};
    db.AddCircle(coords.data(), 1, 0, 0);
    db.Close();
    EXPECT_THAT(Findings(), HasSubstr("note _EntityData 2: its layer 1 is gone\n"));
    EXPECT_THAT(Findings(), HasSubstr("note _EntityData 11: its layer 0 is gone\n"));
    EXPECT_EQ(Faults(), 0U);
}

TEST_F(JobCheck, NotesNamesThatBecameEqualWhenTheyWereCut) {
    CqSurveyDB db(m_path);
    const std::array<double, 3> coords{1, 2, 3};
    for (const char16_t* end : {u"1", u"2"}) {
        db.AddCoordRec(coords.data(), CString(19, u'p') + end, 0, SurveyCoordType{1}, 0);
        EXPECT_EQ(db.AddLayer(CString(51, u'l') + end, 1, 0), 1);
    }
    EXPECT_EQ(db.AddGroup(CString(19, u'g') + u"1"), 1);
    EXPECT_EQ(db.AddGroup(CString(19, u'G') + u"2"), 1);
    db.Close();
    EXPECT_EQ(Findings(), "note _PointData 4: an earlier point has the name \"" +
                              std::string(19, 'p') +
                              "\" too\n"
                              "note _Layer 3: an earlier layer has the name \"" +
                              std::string(51, 'l') +
                              "\" too\n"
                              "note _GroupData 2: an earlier group has the name \"" +
                              std::string(19, 'G') + "\" too\n");
}

TEST_F(JobCheck, AZeroEndsANameSoItIsFoundBeforeItStandsTwice) {
    CqSurveyDB db(m_path);
    EXPECT_EQ(db.AddLayer(CString(u"0\0x", 3), 1, 0), 0);
    EXPECT_EQ(db.AddGroup(u"Road"), 1);
    EXPECT_EQ(db.AddGroup(CString(u"ROAD\0x", 6)), 0);
    EXPECT_EQ(db.AddGroup(CString(u"\0x", 2)), 0);
    db.Close();
    EXPECT_EQ(Findings(), "");
}

TEST_F(JobCheck, NotesAGroupThatDoesNotExist) {
    CqSurveyDB db(m_path);
    EXPECT_EQ(db.EditCoordRecGroup(u"P2", 999), 1);
    db.Close();
    EXPECT_EQ(Findings(), "note _PointData 2: its group 999 does not exist\n");
}

TEST_F(JobCheck, NotesAPolylineThatHasLostItsVertices) {
    CqSurveyDB db(m_path);
    EXPECT_EQ(db.DeleteVertex(6), 1);
    db.Close();
    EXPECT_EQ(Findings(), "note _EntityData 4: the polyline has 1 of at least 2 vertices\n");
}

TEST_F(JobCheck, CountsTheFindingsThatItDoesNotKeep) {
    Damage<CqEntityTable>(u"_EntityData", [](CqEntityTable& entities) {
        for (int found = entities.First(kRecordOrder); found != 0; found = entities.Next()) {
            entities.Set<"LayerIndex">(std::uint16_t{44});
            entities.Store();
        }
    });
    CqSurveyDB db(m_path);
    const CqJobCheck check(db, 2);
    EXPECT_EQ(check.GetFindings().size(), 2U);
    EXPECT_EQ(check.GetCount(), 9U);
    EXPECT_EQ(check.GetNoteCount(), 0U);
}

TEST_F(JobCheck, NotesDoNotTakeTheRoomOfFaults) {
    CqSurveyDB db(m_path);
    EXPECT_EQ(db.EditCoordRecGroup(u"P1", 7), 1);
    EXPECT_EQ(db.EditCoordRecGroup(u"P2", 7), 1);
    db.Close();
    Damage<CqEntityTable>(u"_EntityData", [](CqEntityTable& entities) { entities.SetPrev(1, 7); });
    db.Open(m_path);
    const CqJobCheck check(db, 1);
    EXPECT_EQ(check.GetFindings().size(), 2U);
    EXPECT_EQ(check.GetCount(), 1U);
    EXPECT_EQ(check.GetNoteCount(), 2U);
}

TEST_F(JobCheck, FindsAChangedByteInAPageThatNothingElseReads) {
    ASSERT_NE(QrfsMount(m_path, u"RAW"), 0);
    ASSERT_NE(QrfsCreateFile(u"RAW:/Other", 0), 0);
    const std::int32_t file = QrfsOpenFile(u"RAW:/Other", 2);
    const std::string bytes(20000, 'x');
    std::uint32_t written = 0;
    ASSERT_NE(QrfsWrite(file, bytes.data(), 20000, written), 0);
    ASSERT_NE(QrfsCloseFile(file), 0);
    // Its pages stay in the file, without use.
    ASSERT_NE(QrfsDeleteFile(u"RAW:/Other"), 0);
    ASSERT_NE(QrfsUnmount(u"RAW"), 0);
    std::fstream job(ToUtf8(m_path), std::ios::in | std::ios::out | std::ios::binary);
    job.seekp(-3000, std::ios::end);
    job.put('?');
    const std::string page = std::to_string(static_cast<std::size_t>(job.tellp()) / 4096 + 1);
    job.close();
    EXPECT_EQ(Findings(), " " + page + ": page " + page +
                              " of the file does not match its sum: the medium has changed it\n");
}

}  // namespace
}  // namespace cqsurvey
