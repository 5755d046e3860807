#pragma once

#include <cstddef>
#include <cstdint>

#include "cqsurvey/Types.h"
#include "store/Qrdb.h"
#include "tables/JobPart.h"

namespace cqsurvey {

/// One open table of the store and its current record. Every failure of the store is thrown as
/// CqSurveyException with its code.
class CqDbTable : public JobPart {
 public:
    CqDbTable() = default;
    CqDbTable(const CqDbTable&) = delete;
    CqDbTable& operator=(const CqDbTable&) = delete;
    /// Closes the table if it is open; a failure to do so is lost.
    ~CqDbTable() override;

    /// Creates the table and opens it; closes the one that is open first.
    virtual void Create(const CString& name);
    /// Opens the table, which must have the fields of DefineFields (error::kDamaged); closes the
    /// one that is open first.
    virtual void Open(const CString& name);
    /// The object is closed afterwards, also when it throws.
    virtual void Close();
    [[nodiscard]] virtual std::int32_t GetRecordCount() const;

    // The moves return 0 when there is no such record.
    virtual int First(std::int32_t index);
    virtual int Last(std::int32_t index);
    virtual int Next();
    virtual int Prev();

    /// Sets m_pFieldDefs and m_nFields; called by the constructor of each derived class.
    virtual void DefineFields() = 0;

    int Append(const void* record);
    /// Appends a record, which becomes the current one and counts as loaded, and returns its
    /// handle.
    CqHandle AppendCurrent(const void* record);
    void SetIndex(std::int32_t index);
    /// Throws error::kNoRecord when there is no such record.
    void GoTo(CqHandle handle);
    /// The packed bytes of a record without moving to it; null when there is no such record. They
    /// stay valid until the table is changed.
    [[nodiscard]] const std::byte* PeekRecord(CqHandle handle) const;
    /// The same, but throws error::kNoRecord when there is no such record.
    [[nodiscard]] const std::byte* RecordAt(CqHandle handle);
    /// The handle that the next record appended gets.
    [[nodiscard]] CqHandle NextHandle() const;
    [[nodiscard]] CqHandle GetCurrentHandle() const;
    [[nodiscard]] int IsAtEnd() const;
    void LoadCurrent(void* buffer);
    void UpdateCurrent(const void* buffer);
    void DeleteCurrent();
    void WriteMemo(const CString& text, void* memoField);
    /// An empty string for reference 0.
    void ReadMemo(char16_t* dest, std::uint16_t maxBytes, std::uint32_t memoRef) const;

    [[nodiscard]] bool IsOpen() const { return m_hTable != 0; }

    /// The handle of the open table in the store, 0 when none is.
    [[nodiscard]] std::uint32_t GetTable() const { return m_hTable; }

    void OnClose() override { Close(); }
    /// The store has put records back: the next access loads the current one again.
    void UndoStep() noexcept override { m_bLoaded = 0; }

    /// The records of a table that is not open; 0 when it cannot be opened.
    static std::int32_t CountRecords(const CString& name);

 protected:
    std::uint32_t m_hTable = 0;
    const QrdbFieldDef* m_pFieldDefs = nullptr;
    std::uint32_t m_nFields = 0;
    int m_bLoaded = 0;
};

}  // namespace cqsurvey
