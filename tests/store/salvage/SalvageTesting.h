#pragma once

#include <map>
#include <string>
#include <vector>

#include "store/DatabasePage.h"
#include "store/StoreTesting.h"
#include "store/salvage/PageFile.h"
#include "store/salvage/VolumeRefill.h"
#include "store/salvage/VolumeSalvage.h"

namespace cqsurvey {

/// Its columns are those of the memos.
using NameLayout = RecordLayout<"Names", Field<"Text", field::Text20>>;

/// A volume with tables of records, memos and files, whose file is damaged and read page by page.
class SalvageTest : public StoreTest {
 protected:
    static constexpr std::size_t kPage = 4096;

    void SetUp() override {
        StoreTest::SetUp();
        ASSERT_DONE(CreateTable<NameLayout>(u"V"));
        Unmount();
        WriteHostFile(m_model, ReadHostFile(m_host));
        Mount();
    }

    /// Records in every table, and a file.
    void Fill(std::uint32_t count) {
        ASSERT_DONE(StoreBeginStep(u"V"));
        const std::uint32_t things = OpenTable<ThingLayout>(u"V");
        const std::uint32_t pairs = OpenTable<PairLayout>(u"V");
        const std::uint32_t names = OpenTable<NameLayout>(u"V");
        for (std::uint32_t i = 1; i <= count; ++i) {
            ThingLayout::Bytes record = MakeThing(i);
            ASSERT_DONE(QrdbWriteMemo(things, FromUtf8("remark " + std::to_string(i)),
                                      record.data() + ThingLayout::Offset<"Remark">()));
            ASSERT_DONE(QrdbAppendRecord(things, record.data()));
            ASSERT_DONE(QrdbAppendRecord(pairs, MakePair(i, 7 * i).data()));
            NameLayout::Bytes name{};
            NameLayout::Set<"Text">(name.data(), FromUtf8("name " + std::to_string(i)));
            ASSERT_DONE(QrdbAppendRecord(names, name.data()));
        }
        ASSERT_DONE(PutFile(u"V:/One", std::string(9000, '1')));
        ASSERT_DONE(StoreCommitStep(u"V"));
        QrdbCloseTable(things);
        QrdbCloseTable(pairs);
        QrdbCloseTable(names);
    }

    static std::vector<VolumeSalvage::Layout> Layouts() {
        const auto layout = [](const char* name, auto fields) {
            using Layout = decltype(fields);
            return VolumeSalvage::Layout{
                name, RecordFormat(Layout::kFieldCount, Layout::kFieldDefs.data())};
        };
        return {layout("Things", ThingLayout()), layout("Pairs", PairLayout()),
                layout("Names", NameLayout())};
    }

    /// What is saved of the file at `path`.
    Salvaged Save(const std::string& path) {
        const std::vector<VolumeSalvage::Layout> layouts = Layouts();
        const auto roots = ListRoots(m_model);
        PageFile file(path);
        return VolumeSalvage(file, layouts, roots).Read();
    }
    Salvaged Save() { return Save(m_host); }

    /// The records of a table by their numbers.
    static std::map<std::uint32_t, std::string> RowsOf(const Salvaged& salvaged,
                                                       std::size_t table) {
        const std::size_t width = Layouts()[table].format.GetWidth();
        const Salvaged::Table& rows = salvaged.tables[table];
        std::map<std::uint32_t, std::string> found;
        for (std::size_t i = 0; i < rows.numbers.size(); ++i) {
            EXPECT_FALSE(found.contains(rows.numbers[i])) << rows.numbers[i];
            found[rows.numbers[i]] = AsString(rows.bytes.data() + i * width, width);
        }
        return found;
    }

    /// A page of the file at `path`, to be changed by `change`, which gets its bytes.
    template <class Change>
    static void ChangePage(const std::string& path, std::size_t page, Change&& change) {
        std::string bytes = ReadHostFile(path);
        ASSERT_LE(page * kPage, bytes.size());
        std::string part = bytes.substr((page - 1) * kPage, kPage);
        change(part);
        bytes.replace((page - 1) * kPage, kPage, part);
        WriteHostFile(path, bytes);
    }

    static void PutNumber(std::string& bytes, std::size_t at, std::uint32_t number) {
        for (std::size_t i = 0; i < 4; ++i) {
            bytes[at + i] = static_cast<char>(number >> (24 - 8 * i));
        }
    }

    static std::uint32_t GetNumber(const std::string& bytes, std::size_t at) {
        return ReadBig<4>(std::as_bytes(std::span(bytes)), at);
    }

    std::string m_model = m_dir.Utf8("model.job");
};

}  // namespace cqsurvey
