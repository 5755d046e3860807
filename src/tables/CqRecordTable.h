#pragma once

#include <array>
#include <cstddef>

#include "cqsurvey/Limits.h"
#include "tables/CqDbTable.h"
#include "tables/RecordLayout.h"

namespace cqsurvey {

/// A table of one layout: its record buffer and typed access to the fields of the current record.
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

    /// A field of any record; throws error::kNoRecord when there is no such record.
    template <FieldName Name>
    [[nodiscard]] auto GetAt(CqHandle handle) {
        return Layout::template Get<Name>(RecordAt(handle));
    }

    /// Changes a record, which becomes the current one: `change` is called with its bytes. Throws
    /// error::kNoRecord when there is no such record.
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

    /// A field of the current record, which is loaded if it is not.
    template <FieldName Name>
    [[nodiscard]] auto Get() {
        Load();
        return Layout::template Get<Name>(m_record.data());
    }

    /// Changes a field in the buffer only; Store writes it.
    template <FieldName Name, class Value>
    void Set(const Value& value) {
        Load();
        Layout::template Set<Name>(m_record.data(), value);
    }

    /// Writes the buffer to the current record; does nothing when none is loaded.
    void Store() {
        if (m_bLoaded != 0) {
            UpdateCurrent(m_record.data());
        }
    }

    /// The bytes of the current record, which is loaded if it is not.
    [[nodiscard]] const std::byte* Record() {
        Load();
        return m_record.data();
    }

    /// Appends a record, makes it current and returns its handle.
    CqHandle AppendRecord(const typename Layout::Bytes& record) {
        m_record = record;
        return AppendCurrent(m_record.data());
    }

    /// Deletes a record by handle and selects record order again.
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

    /// Stores a text in the memo store and its reference in a record's bytes.
    template <FieldName Name>
    void SetMemo(typename Layout::Bytes& record, const CString& text) {
        WriteMemo(text, record.data() + Layout::template Offset<Name>());
    }

    /// The same for the buffer of the current record.
    template <FieldName Name>
    void SetMemo(const CString& text) {
        Load();
        WriteMemo(text, m_record.data() + Layout::template Offset<Name>());
    }

 protected:
    /// What a reader of a memo gets at most, the terminator included.
    static constexpr std::size_t kMemoUnits = limits::kReadableText + 1;

    void Load() {
        if (m_bLoaded == 0) {
            LoadCurrent(m_record.data());
        }
    }

    typename Layout::Bytes m_record{};
};

}  // namespace cqsurvey
