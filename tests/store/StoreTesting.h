#pragma once

#include <gtest/gtest.h>
#include <sqlite3.h>

#include <array>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <random>
#include <set>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "cqsurvey/ErrorCodes.h"
#include "cqsurvey/Text.h"
#include "store/Qrdb.h"
#include "store/Qrfs.h"
#include "store/Registry.h"
#include "store/Sql.h"
#include "store/StoreExtras.h"
#include "support/FaultVfs.h"
#include "support/TempDir.h"
#include "tables/RecordLayout.h"

namespace cqsurvey {

/// A table with a field of each type, and one of numbers only.
using ThingLayout = RecordLayout<"Things",                        //
                                 Field<"Real", field::Double>,    //
                                 Field<"Small", field::Word>,     //
                                 Field<"Big", field::Dword>,      //
                                 Field<"Whole", field::Integer>,  //
                                 Field<"Name", field::Text20>,    //
                                 Field<"Remark", field::Memo>>;
using PairLayout = RecordLayout<"Pairs",                       //
                                Field<"First", field::Dword>,  //
                                Field<"Second", field::Dword>>;

inline std::string Hex(std::int32_t code) {
    std::array<char, 16> text{};
    std::snprintf(text.data(), text.size(), "0x%08x", static_cast<unsigned>(code));
    return text.data();
}

inline std::string LastError() {
    return Hex(QrfsGetLastError()) + " " + StoreErrorDetail();
}

template <class Sign, class Call>
testing::AssertionResult FailsWith(const Sign& sign, std::int32_t code, Call&& call) {
    Registry::SetLastError(error::kNone);
    if (call() != sign) {
        return testing::AssertionFailure() << "it did not give its failure sign; " << LastError();
    }
    if (QrfsGetLastError() != code) {
        return testing::AssertionFailure() << LastError() << " and not " << Hex(code);
    }
    return testing::AssertionSuccess();
}

/// The call gives its failure sign and sets this last error.
#define EXPECT_FAILS(sign, code, call) EXPECT_TRUE(FailsWith(sign, code, [&] { return call; }))

/// The call succeeds.
#define ASSERT_DONE(call) ASSERT_NE((call), 0) << LastError()
#define EXPECT_DONE(call) EXPECT_NE((call), 0) << LastError()

/// For helpers that have something else to return.
inline void Require(bool done) {
    if (!done) {
        throw std::runtime_error(LastError());
    }
}

/// Numbers by chance that are the same in every run.
class Random {
 public:
    explicit Random(std::uint32_t seed) : m_engine(seed) {}

    std::uint32_t Number() { return static_cast<std::uint32_t>(m_engine()); }
    /// 0 to `limit` - 1.
    std::uint32_t Below(std::uint32_t limit) { return Number() % limit; }
    bool OneIn(std::uint32_t cases) { return Below(cases) == 0; }
    std::mt19937& Engine() { return m_engine; }

 private:
    std::mt19937 m_engine;
};

inline std::string ReadHostFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

inline void WriteHostFile(const std::string& path, const std::string& bytes) {
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

/// The names in a folder.
inline std::set<std::string> NamesIn(const std::string& folder) {
    std::set<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        names.insert(entry.path().filename().string());
    }
    return names;
}

/// Runs SQL on a file as another tool would, with nothing switched off that keeps it sound.
inline void RunSql(const std::string& path, const std::string& sql) {
    sqlite3* connection = nullptr;
    // By the system's own files: those with faults in them know no log.
    if (sqlite3_open_v2(path.c_str(), &connection, SQLITE_OPEN_READWRITE, "unix") != SQLITE_OK) {
        sqlite3_close(connection);
        throw std::runtime_error("cannot open " + path);
    }
    char* message = nullptr;
    const int result = sqlite3_exec(connection, sql.c_str(), nullptr, nullptr, &message);
    const std::string text = message == nullptr ? "" : message;
    sqlite3_free(message);
    sqlite3_close(connection);
    if (result != SQLITE_OK) {
        throw std::runtime_error(sql + ": " + text);
    }
}

/// Makes a volume into one of the format's first version, which has no sums: a database of the same
/// tables and rows that another tool fills.
inline void MakeFirstVersion(const std::string& path) {
    std::filesystem::rename(path, path + ".new");
    { const std::ofstream empty(path, std::ios::binary); }
    // The encoding is written with the first table.
    RunSql(path,
           "PRAGMA encoding='UTF-16le'; PRAGMA application_id=0x43715376;"
           "PRAGMA user_version=1; CREATE TABLE a(b); DROP TABLE a");
    sqlite3* connection = nullptr;
    ASSERT_EQ(sqlite3_open_v2(path.c_str(), &connection, SQLITE_OPEN_READWRITE, "unix"), SQLITE_OK);
    const auto run = [&](const std::string& sql) {
        ASSERT_EQ(sqlite3_exec(connection, sql.c_str(), nullptr, nullptr, nullptr), SQLITE_OK)
            << sql << ": " << sqlite3_errmsg(connection);
    };
    run("ATTACH '" + path + ".new' AS new");
    std::string sql;
    SqlStatement tables(connection,
                        "SELECT name, sql, type FROM new.sqlite_schema WHERE sql <> ''");
    while (tables.Step()) {
        const std::string name = "\"" + tables.GetUtf8(0) + "\"";
        sql += tables.GetUtf8(1) + ";";
        if (tables.GetUtf8(2) == "table") {
            sql += "INSERT INTO main." + name + " SELECT * FROM new." + name + ";";
        }
    }
    tables = {};
    run(sql);
    ASSERT_EQ(sqlite3_close(connection), SQLITE_OK);
    std::filesystem::remove(path + ".new");
    ASSERT_EQ(ReadHostFile(path)[20], '\0');
}

template <class Layout>
int CreateTable(const CString& mount) {
    return QrdbCreateTable(mount + u":/" + CString(Layout::kTable.View()), Layout::kFieldCount,
                           Layout::kFieldDefs.data());
}

template <class Layout>
std::uint32_t OpenTable(const CString& mount) {
    return QrdbOpenTable(mount + u":/" + CString(Layout::kTable.View()));
}

/// A record whose every byte follows from a number.
inline ThingLayout::Bytes MakeThing(std::uint32_t seed) {
    ThingLayout::Bytes record{};
    ThingLayout::Set<"Real">(record.data(), seed * 0.1 - 7.0);
    ThingLayout::Set<"Small">(record.data(), static_cast<std::uint16_t>(seed * 40503U));
    ThingLayout::Set<"Big">(record.data(), seed * 2654435761U);
    ThingLayout::Set<"Whole">(record.data(), static_cast<std::int32_t>(0U - seed));
    ThingLayout::Set<"Name">(record.data(), FromUtf8("Nr " + std::to_string(seed)));
    return record;
}

inline PairLayout::Bytes MakePair(std::uint32_t first, std::uint32_t second) {
    PairLayout::Bytes record{};
    PairLayout::Set<"First">(record.data(), first);
    PairLayout::Set<"Second">(record.data(), second);
    return record;
}

inline std::string AsString(const void* bytes, std::size_t size) {
    return {static_cast<const char*>(bytes), size};
}

template <class Bytes>
std::string AsString(const Bytes& bytes) {
    return AsString(bytes.data(), bytes.size());
}

/// Creates a file with these bytes, or writes it anew.
inline int PutFile(const CString& path, const std::string& bytes) {
    if (QrfsGetFileAttributes(path) == 0xFFFF && QrfsCreateFile(path, 0) == 0) {
        return 0;
    }
    const std::int32_t file = QrfsOpenFile(path, 3);
    std::uint32_t written = 0;
    const bool done =
        file != -1 && QrfsSetLength(file, 0) != 0 &&
        QrfsWrite(file, bytes.data(), static_cast<std::uint32_t>(bytes.size()), written) != 0;
    const std::int32_t code = QrfsGetLastError();
    if (file != -1) {
        QrfsCloseFile(file);
    }
    Registry::SetLastError(done ? error::kNone : code);
    return done ? 1 : 0;
}

inline std::string GetFile(const CString& path) {
    const std::int32_t file = QrfsOpenFile(path, 1);
    Require(file != -1);
    const std::int32_t length = QrfsGetLength(file);
    std::string bytes(static_cast<std::size_t>(length), '\0');
    std::uint32_t got = 0;
    const bool read = QrfsRead(file, bytes.data(), static_cast<std::uint32_t>(length), got) != 0;
    const std::string failure = LastError();
    QrfsCloseFile(file);
    if (!read || got != bytes.size()) {
        throw std::runtime_error(failure);
    }
    return bytes;
}

/// The files that the tests put on a volume.
inline const std::array<CString, 4> kFileNames{u"One", u"Two.ini", u"Three", u"Four"};

/// What a reader finds on a mounted volume with the tables above.
struct Contents {
    using Thing = std::pair<std::string, CString>;  ///< bytes with the reference cleared, and memo

    std::map<std::uint32_t, Thing> things;
    std::map<std::uint32_t, std::string> pairs;
    std::map<CString, std::string> files;

    bool operator==(const Contents&) const = default;
};

inline std::ostream& operator<<(std::ostream& out, const Contents& contents) {
    out << contents.things.size() << " things, " << contents.pairs.size() << " pairs, "
        << contents.files.size() << " files";
    for (const auto& [number, thing] : contents.things) {
        if (contents.things.size() < 8) {
            out << "; thing " << number << " hash " << std::hash<std::string>{}(thing.first);
        }
    }
    for (const auto& [name, bytes] : contents.files) {
        out << "; " << ToUtf8(name) << " of " << bytes.size() << " hash "
            << std::hash<std::string>{}(bytes);
    }
    return out;
}

inline Contents::Thing SplitThing(std::uint32_t table, ThingLayout::Bytes record) {
    std::array<char16_t, 256> text{};
    const auto reference = ThingLayout::Get<"Remark">(record.data());
    Require(QrdbReadMemo(table, text.data(), sizeof(text), reference) != 0);
    ThingLayout::Set<"Remark">(record.data(), 0U);
    return {AsString(record), CString(text.data())};
}

/// Throws std::runtime_error where something cannot be read.
inline Contents ReadContents(const CString& mount) {
    Contents contents;
    if (const std::uint32_t table = OpenTable<ThingLayout>(mount)) {
        for (int found = QrdbMoveFirst(table); found != 0; found = QrdbMoveNext(table)) {
            ThingLayout::Bytes record{};
            Require(QrdbReadRecord(table, record.data()) != 0);
            contents.things[QrdbGetCurrentHandle(table)] = SplitThing(table, record);
        }
        Require(QrfsGetLastError() == error::kNone);
        Require(static_cast<std::size_t>(QrdbGetRecordCount(table)) == contents.things.size());
        QrdbCloseTable(table);
    } else {
        Require(QrfsGetLastError() == error::kNoTable);
    }
    if (const std::uint32_t table = OpenTable<PairLayout>(mount)) {
        for (int found = QrdbMoveLast(table); found != 0; found = QrdbMovePrev(table)) {
            PairLayout::Bytes record{};
            Require(QrdbReadRecord(table, record.data()) != 0);
            contents.pairs[QrdbGetCurrentHandle(table)] = AsString(record);
        }
        Require(QrfsGetLastError() == error::kNone);
        Require(static_cast<std::size_t>(QrdbGetRecordCount(table)) == contents.pairs.size());
        QrdbCloseTable(table);
    } else {
        Require(QrfsGetLastError() == error::kNoTable);
    }
    for (const CString& name : kFileNames) {
        if (QrfsGetFileAttributes(mount + u":/" + name) != 0xFFFF) {
            contents.files[name] = GetFile(mount + u":/" + name);
        } else {
            Require(QrfsGetLastError() == error::kNoFile);
        }
    }
    return contents;
}

/// A volume in a folder of its own, mounted as "V" with both tables.
class StoreTest : public testing::Test {
 protected:
    void SetUp() override {
        ASSERT_DONE(QrfsCreateVolume(m_path));
        Mount();
        ASSERT_DONE(CreateTable<ThingLayout>(u"V"));
        ASSERT_DONE(CreateTable<PairLayout>(u"V"));
    }
    void TearDown() override {
        QrfsUnmount(u"V");
        QrfsUnmount(u"W");
    }

    void Mount() { ASSERT_DONE(QrfsMount(m_path, u"V")); }
    void Unmount() { ASSERT_DONE(QrfsUnmount(u"V")); }
    void Remount() {
        Unmount();
        Mount();
    }

    FaultVfs m_vfs;  ///< without a fault; it spares the disk its syncs
    TempDir m_dir;
    CString m_path = m_dir.Path(u"volume.job");
    std::string m_host = m_dir.Utf8("volume.job");
};

}  // namespace cqsurvey
