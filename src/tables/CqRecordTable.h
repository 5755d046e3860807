#pragma once

#include <array>
#include <cstddef>

#include "cqsurvey/Limits.h"
#include "tables/CqDbTable.h"
#include "tables/RecordLayout.h"

namespace cqsurvey {

/// A table whose records have the given layout, with typed access to their fields by name.
///
/// There are four ways to a record; each fits one use:
///
///     GetAt<"E">(handle)       one field of some record; no copy, the current record stays
///     Edit(handle, change)     changes some record: go there, load, change the bytes, write
///     ForEach(visit)           all records in order; `visit` must not move in this table
///     First, Next, Get<"E">()  a walk that may end early: the current record in the buffer
///
///     store   [1][2][3][4]...      current record, say 3
///                   |  ^
///              Load v  | Store
///             m_record [ 3 ]       <- Get, Set
///
/// The buffer is loaded when it is first needed. Set changes only the buffer: without Store the
/// change is lost with the next move.
template <class LayoutType>
class CqRecordTable : public CqDbTable {
 public:
    using Layout = LayoutType;

    CqRecordTable() { CqRecordTable::DefineFields(); }

    void DefineFields() override {
        m_pFieldDefs = Layout::kFieldDefs.data();
        m_nFields = static_cast<std::uint32_t>(Layout::kFieldCount);
    }

    void OnCreate(const CString& root) override { Create(root + CString(Layout::kTable.View())); }
    void OnOpen(const CString& root) override { Open(root + CString(Layout::kTable.View())); }

    /// A field of any record. Throws error::kNoRecord when there is no such record.
    template <FieldName Name>
    [[nodiscard]] auto GetAt(CqHandle handle) {
        return Layout::template Get<Name>(RecordAt(handle));
    }

    /// Calls `change` with a record's bytes and writes them back. The record becomes the current
    /// one. Throws error::kNoRecord when there is no such record.
    template <class Change>
    void Edit(CqHandle handle, Change&& change) {
        GoTo(handle);
        Load();
        change(m_record.data());
        Store();
    }

    /// Calls `visit` with the handle and the bytes of each record in record order.
    template <class Visit>
    void ForEach(Visit&& visit) {
        for (int found = First(kRecordOrder); found != 0; found = Next()) {
            visit(GetCurrentHandle(), Record());
        }
    }

    /// A field of the current record, which is loaded first if necessary.
    template <FieldName Name>
    [[nodiscard]] auto Get() {
        Load();
        return Layout::template Get<Name>(m_record.data());
    }

    /// Changes a field in the buffer; Store writes it.
    template <FieldName Name, class Value>
    void Set(const Value& value) {
        Load();
        Layout::template Set<Name>(m_record.data(), value);
    }

    /// Writes the buffer to the current record. Does nothing when the buffer holds no record.
    void Store() {
        if (m_bLoaded != 0) {
            UpdateCurrent(m_record.data());
        }
    }

    /// The bytes of the current record, which is loaded first if necessary. They stay valid until
    /// another record is loaded.
    [[nodiscard]] const std::byte* Record() {
        Load();
        return m_record.data();
    }

    /// Appends a record, makes it current and returns its handle.
    CqHandle AppendRecord(const typename Layout::Bytes& record) {
        m_record = record;
        return AppendCurrent(m_record.data());
    }

    /// Deletes a record. There is no current record afterwards. Throws error::kNoRecord when there
    /// is no such record.
    void DeleteRecord(CqHandle handle) {
        GoTo(handle);
        DeleteCurrent();
        SetIndex(kRecordOrder);
    }

    /// The text of a memo field of the current record.
    template <FieldName Name>
    [[nodiscard]] CString GetMemo() {
        std::array<char16_t, kMemoUnits> text{};
        ReadMemo(text.data(), static_cast<std::uint16_t>(sizeof(text)), Get<Name>());
        return {text.data()};
    }

    /// Stores a text as a memo and puts its reference into a record's bytes.
    template <FieldName Name>
    void SetMemo(typename Layout::Bytes& record, const CString& text) {
        WriteMemo(text, record.data() + Layout::template Offset<Name>());
    }

    /// The same for the buffer; Store writes it, and frees the text that the field named before.
    template <FieldName Name>
    void SetMemo(const CString& text) {
        Load();
        WriteMemo(text, m_record.data() + Layout::template Offset<Name>());
    }

 protected:
    /// The most code units of a memo that can be read, with the terminator.
    static constexpr std::size_t kMemoUnits = limits::kReadableText + 1;

    void Load() {
        if (m_bLoaded == 0) {
            LoadCurrent(m_record.data());
        }
    }

    typename Layout::Bytes m_record{};
};

}  // namespace cqsurvey
