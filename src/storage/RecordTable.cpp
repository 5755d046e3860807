#include "storage/RecordTable.h"

#include <array>
#include <limits>
#include <utility>

#include "storage/MemoStore.h"
#include "storage/RecordLayout.h"
#include "storage/StoreFailure.h"

namespace cqsurvey {

namespace {

constexpr std::uint64_t kLastNumber = std::numeric_limits<std::uint32_t>::max() - 1;

std::string Quoted(const std::string& name) {
    return "\"" + name + "\"";
}

}  // namespace

RecordTable::RecordTable(sqlite3* connection, MemoStore& memos, std::string name,
                         RecordFormat format)
    : m_connection(connection),
      m_memos(memos),
      m_name(std::move(name)),
      m_format(std::move(format)),
      m_chunks(m_format.GetWidth()) {}

SqlStatement& RecordTable::Prepared(SqlStatement& statement, const std::string& sql) {
    if (!statement) {
        statement = SqlStatement(m_connection, sql);
    }
    return statement;
}

std::int32_t RecordTable::GetCount() {
    if (m_loaded) {
        return static_cast<std::int32_t>(m_chunks.GetCount());
    }
    return static_cast<std::int32_t>(
        SqlNumber(m_connection, "SELECT count(*) FROM " + Quoted(m_name)));
}

std::uint32_t RecordTable::Next(std::uint32_t number) {
    Load();
    return m_chunks.Next(number);
}

std::uint32_t RecordTable::Prev(std::uint64_t number) {
    Load();
    return m_chunks.Prev(number);
}

void RecordTable::ReadRow(SqlStatement& statement, std::uint32_t number, std::byte* record) {
    try {
        m_format.Read(statement.Get(), record);
    } catch (const StoreFailure& failure) {
        throw StoreFailure(failure.code, "table " + m_name + ", record " + std::to_string(number) +
                                             ": " + failure.detail);
    }
}

void RecordTable::LoadAll() {
    try {
        SqlStatement rows(m_connection, "SELECT * FROM " + Quoted(m_name) + " ORDER BY Record");
        std::uint64_t last = 0;
        while (rows.Step()) {
            const std::int64_t number = sqlite3_column_int64(rows.Get(), 0);
            if (number < 1 || static_cast<std::uint64_t>(number) > kLastNumber) {
                throw StoreFailure(error::kDamaged,
                                   "table " + m_name + ": record number " + std::to_string(number));
            }
            last = static_cast<std::uint64_t>(number);
            ReadRow(rows, static_cast<std::uint32_t>(number),
                    m_chunks.Place(static_cast<std::uint32_t>(number)));
        }
        SqlStatement highest(m_connection, "SELECT Highest FROM Volume_Number WHERE Name = ?1");
        highest.BindText(1, m_name);
        m_savedHighest = 0;
        if (highest.Step()) {
            const std::int64_t number = sqlite3_column_int64(highest.Get(), 0);
            if (number < 0 || static_cast<std::uint64_t>(number) > kLastNumber) {
                throw StoreFailure(error::kDamaged, "table " + m_name + ": highest number " +
                                                        std::to_string(number));
            }
            m_savedHighest = static_cast<std::uint64_t>(number);
        }
        m_next = std::max(last, m_savedHighest) + 1;
        m_nextAtStep = m_next;
        m_firstUnsaved = m_next;
        m_savedHighestAtStep = m_savedHighest;
        m_loaded = true;
    } catch (...) {
        m_chunks.Clear();
        throw;
    }
}

void RecordTable::Append(const std::byte* record) {
    Load();
    if (m_next > kLastNumber ||
        m_chunks.GetCount() >= std::size_t{std::numeric_limits<std::int32_t>::max()}) {
        throw StoreFailure(error::kVolumeFull, "table " + m_name + " has no number left");
    }
    const auto number = static_cast<std::uint32_t>(m_next);
    m_chunks.Put(number, record);
    m_chunks.SetMark(number, RecordChunks::Mark::Dirty);
    m_chunks.SetMark(number, RecordChunks::Mark::Touched);
    ++m_next;
}

void RecordTable::Write(std::uint32_t number, const std::byte* record) {
    FreeMemos(Find(number), record);
    m_chunks.SetMark(number, RecordChunks::Mark::Dirty);
    m_chunks.SetMark(number, RecordChunks::Mark::Touched);
    m_chunks.Put(number, record);
}

void RecordTable::Delete(std::uint32_t number) {
    FreeMemos(Find(number), nullptr);
    m_chunks.SetMark(number, RecordChunks::Mark::Dirty);
    m_chunks.SetMark(number, RecordChunks::Mark::Touched);
    m_chunks.Erase(number);
}

void RecordTable::FreeMemos(const std::byte* before, const std::byte* after) {
    for (const std::size_t offset : m_format.GetMemoOffsets()) {
        const auto reference = LoadLittle<std::uint32_t>(before + offset);
        if (reference != 0 &&
            (after == nullptr || LoadLittle<std::uint32_t>(after + offset) != reference)) {
            m_memos.Free(reference);
        }
    }
}

std::string RecordTable::Values(std::uint32_t rows) const {
    const std::size_t columns = m_format.GetItems().size() + 1;
    std::string row = "(?";
    for (std::size_t i = 1; i < columns; ++i) {
        row += ",?";
    }
    row += ")";
    std::string values = " INTO " + Quoted(m_name) + " VALUES" + row;
    for (std::uint32_t i = 1; i < rows; ++i) {
        values += "," + row;
    }
    return values;
}

void RecordTable::FlushInserts(const std::uint32_t* numbers, std::uint32_t count) {
    const int columns = static_cast<int>(m_format.GetItems().size()) + 1;
    if (count == kRowsAStatement) {
        SqlStatement& many = Prepared(m_insertMany, "INSERT" + Values(kRowsAStatement));
        for (std::uint32_t i = 0; i < count; ++i) {
            m_format.Bind(many.Get(), static_cast<int>(i) * columns + 1, numbers[i],
                          m_chunks.Find(numbers[i]));
        }
        many.Run();
        return;
    }
    SqlStatement& one = Prepared(m_insert, "INSERT" + Values(1));
    for (std::uint32_t i = 0; i < count; ++i) {
        m_format.Bind(one.Get(), 1, numbers[i], m_chunks.Find(numbers[i]));
        one.Run();
    }
}

void RecordTable::FlushHighest() {
    const std::uint64_t highest = m_next - 1;
    const std::uint64_t known = std::max<std::uint64_t>(m_chunks.Prev(m_next), m_savedHighest);
    if (known >= highest) {
        return;
    }
    SqlStatement statement(m_connection, "REPLACE INTO Volume_Number VALUES(?1, ?2)");
    statement.BindText(1, m_name);
    statement.BindInt(2, static_cast<std::int64_t>(highest));
    statement.Run();
    m_savedHighest = highest;
}

void RecordTable::Flush() {
    if (GetDirty() == 0) {
        return;
    }
    std::array<std::uint32_t, kRowsAStatement> fresh{};
    std::uint32_t waiting = 0;
    m_chunks.TakeMarked(
        RecordChunks::Mark::Dirty, [&](std::uint32_t number, const std::byte* record) {
            if (number >= m_firstUnsaved) {
                if (record != nullptr) {
                    fresh[waiting++] = number;
                    if (waiting == kRowsAStatement) {
                        FlushInserts(fresh.data(), waiting);
                        waiting = 0;
                    }
                }
            } else if (record != nullptr) {
                SqlStatement& replace = Prepared(m_replace, "REPLACE" + Values(1));
                m_format.Bind(replace.Get(), 1, number, record);
                replace.Run();
            } else {
                SqlStatement& remove =
                    Prepared(m_delete, "DELETE FROM " + Quoted(m_name) + " WHERE Record = ?1");
                remove.BindInt(1, number);
                remove.Run();
            }
        });
    FlushInserts(fresh.data(), waiting);
    FlushHighest();
    m_firstUnsaved = m_next;
}

void RecordTable::KeepStep() {
    m_chunks.ClearMarks(RecordChunks::Mark::Touched);
    m_nextAtStep = m_next;
    m_savedHighestAtStep = m_savedHighest;
}

void RecordTable::ReadBack(std::uint32_t number) {
    SqlStatement& select =
        Prepared(m_select, "SELECT * FROM " + Quoted(m_name) + " WHERE Record = ?1");
    const SqlUse use(select);
    select.BindInt(1, number);
    if (select.Step()) {
        ReadRow(select, number, m_chunks.Place(number));
    } else {
        m_chunks.Erase(number);
    }
}

void RecordTable::UndoStep() noexcept {
    if (!m_loaded) {
        return;
    }
    try {
        m_chunks.ClearMarks(RecordChunks::Mark::Dirty);
        m_chunks.TakeMarked(RecordChunks::Mark::Touched,
                            [&](std::uint32_t number, const std::byte* record) {
                                if (number < m_nextAtStep) {
                                    ReadBack(number);
                                } else if (record != nullptr) {
                                    m_chunks.Erase(number);
                                }
                            });
        m_next = m_nextAtStep;
        m_firstUnsaved = m_next;
        m_savedHighest = m_savedHighestAtStep;
    } catch (...) {
        m_chunks.Clear();
        m_loaded = false;
    }
}

}  // namespace cqsurvey
