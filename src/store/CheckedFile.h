#pragma once

#include <sqlite3.h>

#include <cstddef>
#include <cstdint>
#include <vector>

namespace cqsurvey {

/// What a file does with the sums of its pages.
enum class PageSums : std::uint8_t {
    Ignored,  ///< bytes pass unchanged; the state of a file that was just opened
    Made,     ///< pages get their sums when they are written, for a new or rewritten file
    Kept,     ///< as Made, and a page that is read must have its sum
};

/// The main file of a database: adds sums, marks and stamps to what passes through, and checks what
/// comes back. CheckedVfs says what these are for.
///
/// SQLite calls it, and SQLite is C. So nothing here throws; the results are codes of SQLite's.
class CheckedFile {
 public:
    /// `real` is the file below, which must stay open as long as the object is used.
    explicit CheckedFile(sqlite3_file* real) : m_real(real) {}

    /// `sums` is Made or Kept.
    [[nodiscard]] int SetSums(PageSums sums);
    [[nodiscard]] PageSums GetSums() const { return m_sums; }
    [[nodiscard]] std::uint32_t GetWrongPage() const { return m_wrongPage; }

    [[nodiscard]] int Read(void* buffer, int count, sqlite3_int64 at);
    [[nodiscard]] int Write(const void* bytes, int count, sqlite3_int64 at);
    /// To be called when the pages of a step are written and before they are synced.
    [[nodiscard]] int EndStep();

    /// To be called before the first sector of the journal is written, which may be changed.
    void BeginJournal(std::byte* header);
    /// To be called when a page is read from the journal, which only an undo does.
    void NoteUndo() {
        if (m_sums == PageSums::Made) {
            m_sums = PageSums::Ignored;
        }
    }

 private:
    [[nodiscard]] int WriteReal(const std::byte* bytes, std::size_t count, sqlite3_int64 at) {
        return m_real->pMethods->xWrite(m_real, bytes, static_cast<int>(count), at);
    }
    [[nodiscard]] int WriteMark();
    [[nodiscard]] int KeepFirstPage(const std::byte* bytes, std::size_t count);

    sqlite3_file* m_real;
    PageSums m_sums = PageSums::Ignored;
    bool m_stepOpen = false;
    std::uint32_t m_stepBefore = 0;  ///< to which the journal leads back
    std::uint32_t m_step = 0;        ///< the last one that was whole
    std::uint32_t m_wrongPage = 0;
    /// Page 1 as it is when the open step is whole, and the same with its mark.
    std::vector<std::byte> m_firstPage;
    std::vector<std::byte> m_marked;
};

}  // namespace cqsurvey
