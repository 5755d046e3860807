#pragma once

#include <cstddef>
#include <cstdint>

#include "cqsurvey/Types.h"
#include "store/Qrdb.h"
#include "tables/JobPart.h"

namespace cqsurvey {

/// One open table of the store: the Qrdb functions as a class. Every failure of the store is thrown
/// as CqSurveyException with its code.
///
/// The table has a place in its records. If there is a record at that place, it is the *current*
/// one: the moves, GoTo and AppendCurrent choose it, LoadCurrent, UpdateCurrent and DeleteCurrent
/// work on it. PeekRecord and RecordAt read any record in place without touching the current one.
///
/// A derived class keeps a buffer with the current record's bytes. m_bLoaded says whether the
/// buffer holds them; whatever may change the place or the record clears it.
class CqDbTable : public JobPart {
 public:
    CqDbTable() = default;
    CqDbTable(const CqDbTable&) = delete;
    CqDbTable& operator=(const CqDbTable&) = delete;
    /// Closes the table if it is open and ignores a failure.
    ~CqDbTable() override;

    // `name` is the table's path, such as "JOB1:/_Layer".

    /// First closes the table that is open, then creates a table and opens it.
    virtual void Create(const CString& name);
    /// First closes the table that is open. Throws error::kDamaged when the table does not have
    /// exactly the fields of DefineFields.
    virtual void Open(const CString& name);
    /// The object is closed afterwards, even when this throws.
    virtual void Close();
    [[nodiscard]] virtual std::int32_t GetRecordCount() const;

    // The moves return 0 when there is no such record. `index` is kRecordOrder.
    virtual int First(std::int32_t index);
    virtual int Last(std::int32_t index);
    virtual int Next();
    virtual int Prev();

    /// Sets m_pFieldDefs and m_nFields. The constructor of each derived class calls it.
    virtual void DefineFields() = 0;

    /// Appends a record; the current one stays.
    int Append(const void* record);
    /// Appends a record, makes it current and returns its handle. It counts as loaded, so the
    /// caller must have it in the buffer.
    CqHandle AppendCurrent(const void* record);
    void SetIndex(std::int32_t index);
    /// Makes a record current. Throws error::kNoRecord when there is no such record.
    void GoTo(CqHandle handle);
    /// The packed bytes of a record, without a copy and without moving to it; null when there is no
    /// such record. They stay valid until the table is changed.
    [[nodiscard]] const std::byte* PeekRecord(CqHandle handle) const;
    /// The same, but throws error::kNoRecord when there is no such record.
    [[nodiscard]] const std::byte* RecordAt(CqHandle handle);
    /// The handle that the next appended record will get.
    [[nodiscard]] CqHandle NextHandle() const;
    /// 0 when there is no current record.
    [[nodiscard]] CqHandle GetCurrentHandle() const;
    /// Non-zero when there is no current record.
    [[nodiscard]] int IsAtEnd() const;

    // These throw error::kNoRecord when there is no current record.

    void LoadCurrent(void* buffer);
    void UpdateCurrent(const void* buffer);
    void DeleteCurrent();
    /// Stores a text and puts its reference into a field of a record that is then appended or
    /// written.
    void WriteMemo(const CString& text, void* memoField);
    /// Copies the text of a reference, at most maxBytes / 2 - 1 code units and a terminating 0; an
    /// empty text for reference 0.
    void ReadMemo(char16_t* dest, std::uint16_t maxBytes, std::uint32_t memoRef) const;

    [[nodiscard]] bool IsOpen() const { return m_hTable != 0; }

    /// The store's handle of the open table, 0 while none is open.
    [[nodiscard]] std::uint32_t GetTable() const { return m_hTable; }

    void OnClose() override { Close(); }
    /// The store has put records back, so the current one must be loaded again.
    void UndoStep() noexcept override { m_bLoaded = 0; }

    /// Counts the records of a table without keeping it open; 0 when it cannot be opened.
    static std::int32_t CountRecords(const CString& name);

 protected:
    std::uint32_t m_hTable = 0;
    const QrdbFieldDef* m_pFieldDefs = nullptr;
    std::uint32_t m_nFields = 0;
    int m_bLoaded = 0;
};

}  // namespace cqsurvey
