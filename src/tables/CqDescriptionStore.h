#pragma once

#include <array>
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

/// The descriptions of points: texts of any length in one file of the job, each found by its key,
/// the handle of its point. Failures throw CqSurveyException, those of the file included.
///
/// The file is a header and a row of blocks without gaps:
///
///     header (64 bytes) | block | block | free block | block ...
///
///     block      key        4 bytes, 0 for a free block
///                length     4 bytes, of the text
///                capacity   4 bytes, of the data area: a multiple of 16
///                unused     4 bytes
///                data       `capacity` bytes: the text, then zeros
///
/// Capacities never change, and blocks are never merged or moved. A free block is used again for a
/// text that needs exactly its capacity, and of several the one that was freed first; otherwise a
/// block is added at the end. A text that is edited stays in its block as long as it fits.
///
/// The file has no index. Opening the store reads all heads and keeps two tables in memory: the
/// block of each key, and the free blocks of each capacity. The texts stay in the file. A log of
/// the changes to the two tables takes them back when a step is undone; the file itself is put back
/// by the store.
class CqDescriptionStore : public JobPart {
 public:
    static const CString kFileName;

    /// Creates the file at `path`, which must not exist, and opens it.
    void Create(const CString& path);
    /// Opens the file and reads the heads of all blocks. Throws error::kDamaged when one is not as
    /// above or when two have the same key.
    void Open(const CString& path);
    void Close();

    // Texts are bytes in the narrow code page, without a zero byte. Changes are made inside a step
    // of the job. They throw error::kVolumeFull when the file would have 2^31 bytes or more.

    /// False, with nothing changed, for an empty text, and when the key is 0 or has a text already.
    bool Add(CqHandle key, std::string_view text);
    /// False, with `text` unchanged, when the key has no text.
    bool Get(CqHandle key, std::string& text);
    /// Replaces a text. False, with nothing changed, for an empty text and when the key has none.
    bool Edit(CqHandle key, std::string_view text);
    /// False when the key has no text.
    bool Delete(CqHandle key);

    void OnCreate(const CString& root) override { Create(root + kFileName); }
    void OnOpen(const CString& root) override { Open(root + kFileName); }
    void OnClose() override { Close(); }
    void KeepStep() noexcept override;
    /// Takes back the changes to the tables of used and free blocks.
    void UndoStep() noexcept override;

 private:
    static constexpr std::uint32_t kHead = 16;
    /// What is read of a block at once: the head and, of most descriptions, the whole text.
    static constexpr std::uint32_t kStart = 128;

    /// The head of a block as it stands in the file.
    struct Head {
        CqHandle key;
        std::uint32_t length;
        std::uint32_t capacity;
    };

    /// The first bytes of a block; those after `count` are undefined.
    struct Start {
        Head head;
        std::uint32_t count;
        std::array<std::byte, kStart> bytes;
    };

    /// Where a key's block begins in the file.
    struct Slot {
        CqHandle key = 0;
        std::uint32_t position = 0;

        [[nodiscard]] bool IsFree() const noexcept { return key == 0; }
        [[nodiscard]] std::uint32_t Hash() const noexcept { return HashHandle(key); }
    };
    using Table = ProbeTable<Slot>;

    /// One change to the tables in memory: a key got or lost its block, or a block was taken from
    /// or put to the free blocks of its capacity.
    enum class Action : std::uint8_t { Use, Release, TakeFree, PutFree };
    struct Change {
        Action action;
        std::uint32_t keyOrCapacity;
        std::uint32_t position;
    };

    /// By capacity, the positions of the free blocks in the order in which they became free.
    using FreeBlocks = std::unordered_map<std::uint32_t, std::deque<std::uint32_t>, HandleHash>;

    static Head ParseHead(const std::byte* bytes, std::uint32_t position, std::uint32_t fileLength);
    void FindBlocks();
    [[nodiscard]] std::size_t Find(CqHandle key) const;
    [[nodiscard]] Start ReadStart(const Slot& block);
    void WriteBlock(const Head& head, std::uint32_t position, std::string_view text);
    void Allocate(CqHandle key, std::string_view text);
    void Release(std::size_t place, std::uint32_t capacity);

    CQrfsFile m_file;
    Table m_used;
    FreeBlocks m_free;
    ChangeLog<Change> m_changes;
};

}  // namespace cqsurvey
