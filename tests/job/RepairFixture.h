#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <map>
#include <set>
#include <span>
#include <string>

#include "cqsurvey/CqBatch.h"
#include "cqsurvey/CqJobCheck.h"
#include "cqsurvey/CqJobRepair.h"
#include "cqsurvey/CqSurveyDB.h"
#include "job/Job.h"
#include "platform/RecordHash.h"
#include "store/salvage/BtreePage.h"
#include "store/salvage/VolumeRefill.h"
#include "support/HostBytes.h"
#include "support/JobImage.h"
#include "support/TempDir.h"

namespace cqsurvey {

inline constexpr std::size_t kPage = 4096;
inline constexpr int kKinds = 200;

/// A record as the tests compare it: what a repair may set anew is left out.
using Rows = std::map<std::string, std::map<CqHandle, std::string>>;

inline std::string Bytes(const std::byte* record, std::size_t width) {
    return {reinterpret_cast<const char*>(record), width};
}

/// All records of an open job, with texts in place of references to them, and the settings,
/// descriptions and image as records of tables of their own.
inline Rows ReadRows(CqSurveyDB& db) {
    Job& job = db.GetJob();
    Rows rows;
    const auto read = [&](auto& table, const char* name) {
        using Layout = typename std::remove_reference_t<decltype(table)>::Layout;
        table.ForEach([&](CqHandle number, const std::byte* record) {
            rows[name][number] = Bytes(record, Layout::kWidth);
        });
    };
    read(job.points, "_PointData");
    read(job.layers, "_Layer");
    read(job.groups, "_GroupData");
    read(job.plines, "_PlineData");
    read(job.vertices, "_VertexData");
    read(job.circles, "_CircleData");
    read(job.links, "_PointToVertexLink");
    job.entities.ForEach([&](CqHandle number, const std::byte* record) {
        if (number != CqEntityTable::kHeader) {
            rows["_EntityData"][number] = Bytes(record, EntityLayout::Offset<"PrevEntityIndex">());
        }
    });
    const auto readTexts = [&](auto& table, const char* name, auto memo) {
        using Layout = typename std::remove_reference_t<decltype(table)>::Layout;
        for (int found = table.First(kRecordOrder); found != 0; found = table.Next()) {
            const std::byte* record = table.Record();
            const std::string rest = Bytes(record + 4, Layout::kWidth - 4);
            rows[name][table.GetCurrentHandle()] = rest + ToUtf8(memo());
        }
    };
    readTexts(job.texts, "_TextData", [&] { return job.texts.GetMemo<"Text">(); });
    readTexts(job.bitmaps, "_BitmapData", [&] { return job.bitmaps.GetMemo<"ResName">(); });
    for (const auto& [number, record] : rows["_PointData"]) {
        CString text;
        if (db.GetCoordDescription(number, text) != 0) {
            rows["descriptions"][number] = ToUtf8(text);
        }
    }
    CStringList sections;
    db.GetSettingsSectionList(sections);
    for (const CString& section : sections) {
        CStringList keys;
        db.GetSettingsKeyList(section, keys);
        for (const CString& key : keys) {
            CString value;
            (void)db.GetSettingsString(section, key, value, {});
            const CString name = section + u"/" + key;
            rows["settings"][HashName(name) % 0xFFFFFFFF] = ToUtf8(name + u"=" + value);
        }
    }
    if (const auto image = JobImage::Read(db)) {
        rows["image"][1] = image->bytes;
    }
    return rows;
}

inline void Fill(CqSurveyDB& db, const std::string& image) {
    CqBatch batch(db);
    std::array<double, 3> c{};
    const auto place = [&](int i) {
        c = {1000.0 + 3.5 * i, 2000.0 + 7.25 * (i % 17), 300.0 + 0.125 * i};
        return c.data();
    };
    for (int i = 1; i <= kKinds; ++i) {
        const CString number = FromUtf8(std::to_string(i));
        if (i <= 20) {
            db.AddGroup(u"Group of day " + number);
            db.AddLayer(u"Layer " + number, i, i % 5);
        }
        db.SetCurrentGroup(u"Group of day " + FromUtf8(std::to_string(1 + i % 20)));
        db.SetCurrentLayer(u"Layer " + FromUtf8(std::to_string(1 + i % 20)));
        const CqHandle point =
            db.AddCoordRec(place(i), u"P" + number, i % 9, SurveyCoordType{1}, 0);
        (void)db.AddCoordDescription(point, u"description of point " + number);
        CqCadEntityList* pline = db.StartPline(i % 4, i % 7);
        db.AddVertex(pline, place(i), 0);
        db.AddVertex(pline, place(i + 1), i % 3 == 0 ? 0.5 : 0.0);
        db.AddVertex(pline, place(i + 5), 0);
        const CqHandle head = db.EndPline(pline);
        if (i % 2 == 0) {
            db.LinkSiPntAndVertex(db.GetCadEntityHandleByCoordRecHandle(point), head + 1);
        }
        db.AddCircle(place(i + 2), 0.5 + i, 0, i % 6);
        db.AddText(place(i + 3), CString(static_cast<std::size_t>(1 + i % 40), u't') + number, 1, 2,
                   u"style", 1.5, 0.25, i % 5, 0, 0, 0);
        db.AddBitmap(place(i + 4), u"tree" + number, CVector(2, 2));
    }
    // Texts of more than a page, deleted records, and a settings file of more than a block.
    db.AddText(place(1), CString(3000, u'L'), 0, 0, u"", 1, 0, 0, 0, 0, 0);
    for (int i = 40; i <= kKinds; i += 40) {
        db.DelCoordRec(FromUtf8("P" + std::to_string(i)));
    }
    (void)db.AddSettingsSection(u"MINE");
    for (int i = 0; i < 120; ++i) {
        (void)db.WriteSettingsString(u"MINE",
                                     FromUtf8("a long key of settings " + std::to_string(i)),
                                     u"a value that takes its room");
    }
    batch.Commit();
    EXPECT_NE(db.StoreBackgroundImageFile(FromUtf8(image), 1, CVector(1, 2), CVector(3, 4), 0), 0);
}

/// A job with hundreds of each kind of thing, and what is saved of damaged copies of it.
class JobRepair : public testing::Test {
 protected:
    static void SetUpTestSuite() {
        s_folder = new TempDir;
        const std::string image = s_folder->Utf8("image");
        std::string bytes;
        for (int i = 0; i < 15000; ++i) {
            bytes.push_back(static_cast<char>(i * 7 + i / 256));
        }
        PutHostFile(image, bytes);
        CqSurveyDB db;
        db.CreateNew(s_folder->Path(u"whole.job"));
        Fill(db, image);
        EXPECT_EQ(CqJobCheck(db).GetCount(), 0U);
        s_rows = ReadRows(db);
        db.Close();
        s_bytes = HostFileBytes(s_folder->Utf8("whole.job"));
        s_places = FindPlaces();
    }
    static void TearDownTestSuite() {
        delete s_folder;
        s_folder = nullptr;
    }

    /// Which pages of the original hold which records: by page, table and number. The tree of each
    /// table is walked from where the schema says that it begins.
    using Places = std::map<std::size_t, std::map<std::string, std::set<CqHandle>>>;

    static Places FindPlaces() {
        Places places;
        for (const auto& [table, root] : ListRoots(s_folder->Utf8("whole.job"))) {
            Walk(places, table, root);
        }
        return places;
    }

    static void Walk(Places& places, const std::string& table, std::size_t page) {
        const std::span<const std::byte> bytes =
            std::as_bytes(std::span(s_bytes)).subspan((page - 1) * kPage, kPage);
        const auto reserved = static_cast<unsigned char>(s_bytes[20]);
        const auto read = BtreePage::Read(bytes, kPage - reserved, 0);
        ASSERT_TRUE(read) << table << " page " << page;
        auto& here = places[page][table];
        for (const BtreePage::Cell& cell : read->GetCells()) {
            if (read->IsInner()) {
                Walk(places, table, cell.child);
            } else {
                here.insert(static_cast<CqHandle>(cell.key));
            }
        }
        if (read->IsInner()) {
            Walk(places, table, read->GetLastChild());
        }
    }

    struct Outcome {
        std::map<std::string, std::set<CqHandle>> missing;  ///< are not in the repaired job
        std::map<std::string, std::set<CqHandle>> changed;  ///< have other bytes
        std::size_t unlisted = 0;                           ///< of both: no loss speaks of them
        std::size_t losses = 0;
        std::string text;
    };

    static bool IsListed(const CqJobRepair& repair, const std::string& table, CqHandle number) {
        return std::any_of(
            repair.GetLosses().begin(), repair.GetLosses().end(), [&](const CqJobLoss& loss) {
                // Of texts and files no record can be named.
                const bool isText = table == "_TextData" || table == "_BitmapData";
                const bool file = loss.table.empty() &&
                                  loss.text.find(isText ? "texts" : table) != std::string::npos;
                return file || (loss.table == table && loss.first <= number && number <= loss.last);
            });
    }

    static Outcome Repair(const std::string& bytes) {
        const TempDir folder;
        PutHostFile(folder.Utf8("bad.job"), bytes);
        Outcome outcome;
        const CqJobRepair repair(folder.Path(u"bad.job"), folder.Path(u"good.job"), 100000);
        EXPECT_TRUE(HostFileBytes(folder.Utf8("bad.job")) == bytes) << "the damaged file changed";
        for (const CqJobLoss& loss : repair.GetLosses()) {
            EXPECT_EQ(loss.text.find("a fault remains"), std::string::npos) << loss.text;
            if (outcome.text.size() > 2000) {
                continue;
            }
            outcome.text += loss.table + " " + std::to_string(loss.first) + " to " +
                            std::to_string(loss.last) + ": " + loss.text + "\n";
        }
        outcome.losses = repair.GetCount();
        CqSurveyDB db(folder.Path(u"good.job"));
        Rows rows = ReadRows(db);
        for (const auto& [table, records] : s_rows) {
            for (const auto& [number, record] : records) {
                const auto found = rows[table].find(number);
                const bool missing = found == rows[table].end();
                if (!missing && found->second == record) {
                    continue;
                }
                (missing ? outcome.missing : outcome.changed)[table].insert(number);
                if (!IsListed(repair, table, number)) {
                    ++outcome.unlisted;
                    // One of many is enough to look for.
                    if (outcome.unlisted < 5) {
                        outcome.text +=
                            "NOT LISTED: " + table + " " + std::to_string(number) + "\n";
                    }
                }
            }
        }
        return outcome;
    }

    /// Repairs a file of which one page is bad, and expects that nothing is lost but what the page
    /// held and, with an entity, what cannot be without it.
    static void ExpectOnePageLost(const std::string& bytes, std::size_t page) {
        SCOPED_TRACE("page " + std::to_string(page));
        const Outcome outcome = Repair(bytes);
        EXPECT_EQ(outcome.unlisted, 0U) << outcome.text;
        auto held = s_places.contains(page) ? s_places.at(page)
                                            : std::map<std::string, std::set<CqHandle>>();
        for (const auto& [table, numbers] : outcome.missing) {
            const bool needsEntity = table == "_VertexData" || table == "_PlineData";
            const bool inFile = table == "descriptions" || table == "image" || table == "settings";
            if ((needsEntity && held.contains("_EntityData")) ||
                (inFile && (held.contains("Volume_Block")))) {
                continue;
            }
            EXPECT_TRUE(std::includes(held[table].begin(), held[table].end(), numbers.begin(),
                                      numbers.end()))
                << "records of " << table << " are missing\n"
                << outcome.text;
        }
        const bool mayCutTexts = held.empty() || held.contains("Volume_Memo");
        for (const auto& [table, numbers] : outcome.changed) {
            const bool inFile = table == "descriptions" || table == "image" || table == "settings";
            if ((mayCutTexts && (table == "_TextData" || table == "_BitmapData")) ||
                (inFile && held.contains("Volume_Block"))) {
                continue;
            }
            EXPECT_TRUE(std::includes(held[table].begin(), held[table].end(), numbers.begin(),
                                      numbers.end()))
                << "records of " << table << " are changed\n"
                << outcome.text;
        }
        const bool isInDoubt = outcome.text.find("does not match its sum") != std::string::npos;
        if (outcome.missing.empty() && outcome.changed.empty() && !isInDoubt) {
            EXPECT_LE(outcome.losses, 1U) << outcome.text;
        }
    }

    static inline TempDir* s_folder = nullptr;
    static inline Rows s_rows;
    static inline std::string s_bytes;
    static inline Places s_places;
};

}  // namespace cqsurvey
