#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "cqsurvey/Types.h"
#include "platform/ChangeLog.h"
#include "platform/ProbeTable.h"
#include "platform/RecordHash.h"
#include "store/CQrfsFile.h"
#include "tables/JobPart.h"

namespace cqsurvey {

/// The texts of any length that hang off the points, in one file of the job: a header of 64 bytes,
/// then blocks of a 16-byte head and a data area whose capacity is a multiple of 16. A block that
/// was freed is used again for a text of exactly its capacity, the one freed first before others.
///
/// Failures throw CqSurveyException, also those of the file.
class CqDescriptionStore : public JobPart {
 public:
    static const CString kFileName;

    /// Creates the file at `path`, which must not exist, and opens it.
    void Create(const CString& path);
    /// Opens the file and finds its blocks. Throws 0x30000007 when they are damaged.
    void Open(const CString& path);
    void Close();

    /// `text` is in the narrow code page and ends before its first zero byte. False, with nothing
    /// changed, for an empty text and when the key is 0 or has one already.
    bool Add(CqHandle key, std::string_view text);
    /// False, with `text` unchanged, when the key has none.
    bool Get(CqHandle key, std::string& text);
    /// False for an empty text and when the key has none.
    bool Edit(CqHandle key, std::string_view text);
    bool Delete(CqHandle key);

    void OnCreate(const CString& root) override { Create(root + kFileName); }
    void OnOpen(const CString& root) override { Open(root + kFileName); }
    void OnClose() override { Close(); }
    void KeepStep() noexcept override;
    /// Puts back which blocks are used and free, after the store has put the file back.
    void UndoStep() noexcept override;

 private:
    struct Head {
        CqHandle key;
        std::uint32_t length;
        std::uint32_t capacity;
    };

    struct Slot {
        CqHandle key = 0;
        std::uint32_t position = 0;

        [[nodiscard]] bool IsFree() const noexcept { return key == 0; }
        [[nodiscard]] std::uint32_t Hash() const noexcept { return HashHandle(key); }
    };
    using Table = ProbeTable<Slot>;

    /// The block of a key was put to use or released, or a block was taken from or put to the free
    /// ones of a capacity.
    enum class Action : std::uint8_t { Use, Release, TakeFree, PutFree };
    struct Change {
        Action action;
        std::uint32_t keyOrCapacity;
        std::uint32_t position;
    };

    /// Positions of free blocks in the order in which they became free.
    using FreeBlocks = std::unordered_map<std::uint32_t, std::deque<std::uint32_t>, HandleHash>;

    static Head ParseHead(const std::byte* bytes, std::uint32_t position, std::uint32_t fileLength);
    void FindBlocks();
    [[nodiscard]] std::size_t Find(CqHandle key) const;
    [[nodiscard]] Head ReadHead(const Slot& block);
    void WriteBlock(const Head& head, std::uint32_t position, std::string_view text);
    void Allocate(CqHandle key, std::string_view text);
    void Release(std::size_t place, std::uint32_t capacity);

    CQrfsFile m_file;
    Table m_used;
    FreeBlocks m_free;
    ChangeLog<Change> m_changes;
};

}  // namespace cqsurvey
