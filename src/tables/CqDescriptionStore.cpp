#include "tables/CqDescriptionStore.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <limits>
#include <string>

#include "cqsurvey/CqSurveyException.h"
#include "platform/ByteOrder.h"
#include "store/ThrowStorageError.h"

namespace cqsurvey {

namespace {

constexpr int kReadAndWrite = 3;
constexpr std::uint32_t kFileHeader = 64;
constexpr std::string_view kMagic = "QRDBB10";
constexpr std::uint32_t kCapacityStep = 16;
constexpr std::uint32_t kReadAtOnce = 0x10000;
constexpr std::uint64_t kLongestFile = std::numeric_limits<std::int32_t>::max();

/// Runs `body` and throws its CQrfsFileException as CqSurveyException.
template <class Body>
auto Translated(Body&& body) {
    try {
        return body();
    } catch (const CQrfsFileException& failure) {
        ThrowStorageError(failure.m_code);
    }
}

[[noreturn]] void ThrowDamaged(std::uint32_t position, const char* what) {
    throw CqSurveyException(error::kDamaged,
                            "description block at byte " + std::to_string(position) + " " + what);
}

std::uint32_t CapacityFor(std::size_t length) {
    return static_cast<std::uint32_t>((length + kCapacityStep - 1) / kCapacityStep * kCapacityStep);
}

}  // namespace

const CString CqDescriptionStore::kFileName = u"Description.BLB";

void CqDescriptionStore::Create(const CString& path) {
    Close();
    Translated([&] {
        CQrfsFile::CreateFile(path, 0);
        m_file.Open(path, kReadAndWrite);
        std::array<char, kFileHeader> header{};
        std::copy(kMagic.begin(), kMagic.end(), header.begin());
        m_file.Write(header.data(), kFileHeader);
    });
}

void CqDescriptionStore::Open(const CString& path) {
    Close();
    Translated([&] {
        m_file.Open(path, kReadAndWrite);
        FindBlocks();
    });
}

void CqDescriptionStore::Close() {
    m_used = {};
    m_free = {};
    m_changes.Clear();
    Translated([&] {
        try {
            m_file.Close();
        } catch (const CQrfsFileException&) {
            m_file.Abort();
            throw;
        }
    });
}

CqDescriptionStore::Head CqDescriptionStore::ParseHead(const std::byte* bytes,
                                                       std::uint32_t position,
                                                       std::uint32_t fileLength) {
    const Head head{LoadLittle<std::uint32_t>(bytes), LoadLittle<std::uint32_t>(bytes + 4),
                    LoadLittle<std::uint32_t>(bytes + 8)};
    if (head.capacity % kCapacityStep != 0) {
        ThrowDamaged(position, "has a capacity that is not a multiple of 16");
    }
    if (head.capacity > fileLength - position - kHead) {
        ThrowDamaged(position, "goes on past the end of the file");
    }
    if (head.length > head.capacity) {
        ThrowDamaged(position, "has a text that is longer than its capacity");
    }
    return head;
}

void CqDescriptionStore::FindBlocks() {
    const auto length = static_cast<std::uint32_t>(m_file.GetLength());
    if (length < kFileHeader) {
        ThrowDamaged(length, "is where the header of the file should be");
    }
    // Small blocks are many: their heads are taken from a window over the file. A large text is
    // skipped, and the next window begins after it.
    std::vector<std::byte> window(kReadAtOnce);
    std::uint32_t windowStart = 0;
    std::uint32_t windowEnd = 0;
    for (std::uint32_t position = kFileHeader; position < length;) {
        if (length - position < kHead) {
            ThrowDamaged(position, "is cut off");
        }
        if (position < windowStart || position + kHead > windowEnd) {
            m_file.Seek(static_cast<std::int32_t>(position), 0);
            windowStart = position;
            windowEnd = position + m_file.Read(window.data(), kReadAtOnce);
            if (windowEnd - position < kHead) {
                ThrowDamaged(position, "cannot be read");
            }
        }
        const Head head = ParseHead(window.data() + (position - windowStart), position, length);
        if (head.key == 0) {
            m_free[head.capacity].push_back(position);
        } else if (Find(head.key) != Table::kNone) {
            ThrowDamaged(position, "has the same key as another block");
        } else {
            m_used.Insert(Slot{head.key, position});
        }
        position += kHead + head.capacity;
    }
}

std::size_t CqDescriptionStore::Find(CqHandle key) const {
    return key == 0
               ? Table::kNone
               : m_used.Find(HashHandle(key), [key](const Slot& slot) { return slot.key == key; });
}

CqDescriptionStore::Start CqDescriptionStore::ReadStart(const Slot& block) {
    Start start;
    m_file.Seek(static_cast<std::int32_t>(block.position), 0);
    const auto length = static_cast<std::uint32_t>(m_file.GetLength());
    start.count = m_file.Read(start.bytes.data(), kStart);
    if (start.count < kHead) {
        ThrowDamaged(block.position, "is cut off");
    }
    start.head = ParseHead(start.bytes.data(), block.position, length);
    if (start.head.key != block.key) {
        ThrowDamaged(block.position, "has another key than when the job was opened");
    }
    return start;
}

void CqDescriptionStore::WriteBlock(const Head& head, std::uint32_t position,
                                    std::string_view text) {
    std::vector<std::byte> block(kHead + head.capacity);
    StoreLittle(block.data(), head.key);
    StoreLittle(block.data() + 4, head.length);
    StoreLittle(block.data() + 8, head.capacity);
    std::transform(text.begin(), text.end(), block.begin() + kHead,
                   [](char unit) { return static_cast<std::byte>(unit); });
    m_file.Seek(static_cast<std::int32_t>(position), 0);
    m_file.Write(block.data(), static_cast<std::uint32_t>(block.size()));
}

void CqDescriptionStore::Allocate(CqHandle key, std::string_view text) {
    if (text.size() > kLongestFile - kHead - kCapacityStep) {
        throw CqSurveyException(error::kVolumeFull,
                                "a description must be shorter than 2^31 bytes");
    }
    const std::uint32_t capacity = CapacityFor(text.size());
    const auto list = m_free.find(capacity);
    const bool reuses = list != m_free.end() && !list->second.empty();
    const std::uint32_t position =
        reuses ? list->second.front() : static_cast<std::uint32_t>(m_file.GetLength());
    if (std::uint64_t{position} + kHead + capacity > kLongestFile) {
        throw CqSurveyException(error::kVolumeFull,
                                "all descriptions together must be shorter than 2^31 bytes");
    }
    // Whatever may fail comes before the first change to the tables: memory is reserved, then the
    // file is written, and the rest cannot fail.
    m_changes.Reserve(2);
    m_used.ReserveOneMore();
    WriteBlock({key, static_cast<std::uint32_t>(text.size()), capacity}, position, text);
    if (reuses) {
        list->second.pop_front();
        if (list->second.empty()) {
            m_free.erase(list);
        }
        m_changes.Push({Action::TakeFree, capacity, position});
    }
    m_used.Insert(Slot{key, position});
    m_changes.Push({Action::Use, key, position});
}

void CqDescriptionStore::Release(std::size_t place, std::uint32_t capacity) {
    const Slot block = m_used[place];
    const std::array<std::byte, sizeof(block.key)> noKey{};
    // A key of 0 makes the block free. Its text stays in the file until the block is used again.
    m_changes.Reserve(2);
    m_file.Seek(static_cast<std::int32_t>(block.position), 0);
    m_file.Write(noKey.data(), noKey.size());
    m_free[capacity].push_back(block.position);
    m_changes.Push({Action::PutFree, capacity, block.position});
    m_used.EraseAt(place);
    m_changes.Push({Action::Release, block.key, block.position});
}

bool CqDescriptionStore::Add(CqHandle key, std::string_view text) {
    if (key == 0 || text.empty() || Find(key) != Table::kNone) {
        return false;
    }
    Translated([&] { Allocate(key, text); });
    return true;
}

bool CqDescriptionStore::Get(CqHandle key, std::string& text) {
    const std::size_t place = Find(key);
    if (place == Table::kNone) {
        return false;
    }
    return Translated([&] {
        const Start start = ReadStart(m_used[place]);
        const std::uint32_t length = start.head.length;
        if (length == 0) {
            return false;
        }
        std::string bytes(length, '\0');
        const std::uint32_t here = std::min(length, start.count - kHead);
        std::memcpy(bytes.data(), start.bytes.data() + kHead, here);
        if (here < length && m_file.Read(bytes.data() + here, length - here) != length - here) {
            ThrowDamaged(m_used[place].position, "is cut off");
        }
        text = std::move(bytes);
        return true;
    });
}

bool CqDescriptionStore::Edit(CqHandle key, std::string_view text) {
    const std::size_t place = Find(key);
    if (text.empty() || place == Table::kNone) {
        return false;
    }
    Translated([&] {
        const Head head = ReadStart(m_used[place]).head;
        // The old block goes first, because a key has one block at a time.
        if (text.size() > head.capacity) {
            Release(place, head.capacity);
            Allocate(key, text);
        } else {
            const auto length = static_cast<std::uint32_t>(text.size());
            WriteBlock({key, length, head.capacity}, m_used[place].position, text);
        }
    });
    return true;
}

bool CqDescriptionStore::Delete(CqHandle key) {
    const std::size_t place = Find(key);
    if (place == Table::kNone) {
        return false;
    }
    Translated([&] { Release(place, ReadStart(m_used[place]).head.capacity); });
    return true;
}

void CqDescriptionStore::KeepStep() noexcept {
    m_changes.Clear();
}

void CqDescriptionStore::UndoStep() noexcept {
    // The last change first, so that each finds the tables as it left them, and the free blocks
    // come back in their old order.
    m_changes.TakeBack([this](const Change& change) {
        switch (change.action) {
            case Action::Use:
                m_used.EraseAt(Find(change.keyOrCapacity));
                break;
            case Action::Release:
                m_used.Insert(Slot{change.keyOrCapacity, change.position});
                break;
            case Action::TakeFree:
                m_free[change.keyOrCapacity].push_front(change.position);
                break;
            case Action::PutFree: {
                const auto list = m_free.find(change.keyOrCapacity);
                list->second.pop_back();
                if (list->second.empty()) {
                    m_free.erase(list);
                }
                break;
            }
        }
    });
}

}  // namespace cqsurvey
