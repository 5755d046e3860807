#include "job/repair/SavedFiles.h"

#include <algorithm>
#include <cstddef>
#include <optional>
#include <set>
#include <string_view>

#include "cqsurvey/CqSurveyDB.h"
#include "cqsurvey/Text.h"
#include "platform/ByteOrder.h"
#include "store/VolumeFile.h"
#include "tables/CqDescriptionStore.h"

namespace cqsurvey {

namespace {

constexpr std::string_view kDescriptionMagic = "QRDBB10";
constexpr std::uint32_t kDescriptionHeader = 64;
constexpr std::uint32_t kHead = 16;
constexpr std::size_t kBlock = VolumeFile::kBlock;

CString Settings() {
    return CqSurveyDB::m_SettingsPath.substr(2);
}

CString Image() {
    return CqSurveyDB::m_BGName.substr(2);
}

const CString kOldSettings = u"Settings.bak";

/// The head of a block of descriptions, if one can begin at `at`.
struct Head {
    CqHandle key;
    std::uint32_t length;
    std::uint32_t capacity;
};

std::optional<Head> ReadHead(std::string_view bytes, std::size_t at) {
    if (bytes.size() - at < kHead) {
        return std::nullopt;
    }
    const auto* from = reinterpret_cast<const std::byte*>(bytes.data() + at);
    const Head head{LoadLittle<std::uint32_t>(from), LoadLittle<std::uint32_t>(from + 4),
                    LoadLittle<std::uint32_t>(from + 8)};
    if (head.capacity == 0 || head.capacity % kHead != 0 || head.length > head.capacity ||
        LoadLittle<std::uint32_t>(from + 12) != 0) {
        return std::nullopt;
    }
    // Behind the text are zeros.
    const std::size_t end = std::min<std::size_t>(bytes.size(), at + kHead + head.capacity);
    for (std::size_t i = at + kHead + head.length; i < end; ++i) {
        if (bytes[i] != '\0') {
            return std::nullopt;
        }
    }
    return head;
}

/// Where blocks can begin in bytes of which the first `from` do not count, in steps of 16. Anything
/// may look like a head by accident, but not several of them in a row.
class Starts {
 public:
    Starts(std::string_view bytes, std::size_t from) : m_from(from), m_end(bytes.size()) {
        m_rows.resize(m_end > from ? (m_end - from) / kHead + 1 : 1);
        // From the end, so that each place needs one look: a row is a block and a row behind it.
        for (std::size_t i = m_rows.size(); i-- > 0;) {
            const std::size_t at = from + i * kHead;
            const auto head = ReadHead(bytes, std::min(at, m_end));
            if (head) {
                const std::size_t next = at + kHead + std::size_t{head->capacity};
                const int behind = next >= m_end ? kEnough : m_rows[(next - from) / kHead];
                m_rows[i] = static_cast<std::uint8_t>(std::min(behind + 1, kEnough));
            }
        }
    }

    /// The first start at or behind `at`; the end of the bytes when there is none.
    [[nodiscard]] std::size_t Find(std::size_t at) const {
        std::size_t i = at <= m_from ? 0 : (at - m_from + kHead - 1) / kHead;
        while (i < m_rows.size() && m_rows[i] < kEnough) {
            ++i;
        }
        return std::min(m_from + i * kHead, m_end);
    }

 private:
    static constexpr int kEnough = 3;

    std::size_t m_from;
    std::size_t m_end;
    std::vector<std::uint8_t> m_rows;  ///< how many blocks follow each other from there
};

}  // namespace

std::vector<SavedFiles::Description> SavedFiles::Mend() {
    NameFiles();
    std::vector<Description> descriptions;
    bool hasSettings = false;
    bool hasDescriptions = false;
    for (auto& [number, file] : m_files) {
        if (file.name == Settings()) {
            hasSettings = true;
            MendSettings(file);
        } else if (file.name == CqDescriptionStore::kFileName) {
            hasDescriptions = true;
            descriptions = ReadDescriptions(file);
            file.name.clear();
        } else if (!IsWhole(file)) {
            m_job.Lose(
                "", 0,
                file.name == Image()
                    ? std::string("the background image is gone: a part of it is missing")
                    : "the file \"" + ToUtf8(file.name) + "\" is gone: a part of it is missing");
            file.name.clear();
        }
    }
    if (!hasSettings) {
        m_settingsLost = true;
        m_job.Lose("", 0, "the settings are gone; those of a new job are in their place");
    }
    if (!hasDescriptions) {
        m_job.Lose("", 0, "the descriptions of the points are gone");
    }
    return descriptions;
}

/// Files whose name is gone are known by what is in them.
void SavedFiles::NameFiles() {
    const auto has = [&](const CString& name) {
        return std::any_of(m_files.begin(), m_files.end(),
                           [&](const auto& entry) { return entry.second.name == name; });
    };
    for (auto& [number, file] : m_files) {
        if (!file.name.empty()) {
            continue;
        }
        const auto first = file.blocks.find(0);
        const std::string start = first == file.blocks.end() ? std::string() : first->second;
        if (start.starts_with(kDescriptionMagic)) {
            file.name = CqDescriptionStore::kFileName;
        } else if (start.starts_with('[')) {
            file.name = has(Settings()) ? kOldSettings : Settings();
        } else {
            file.name = Image();
        }
    }
}

bool SavedFiles::IsWhole(File& file) {
    if (!file.length) {
        std::uint64_t length = 0;
        for (const auto& [block, bytes] : file.blocks) {
            length += bytes.size();
        }
        if (length > VolumeFile::kMostBytes) {
            return false;
        }
        file.length = static_cast<std::uint32_t>(length);
    }
    const std::uint32_t length = *file.length;
    std::uint32_t block = 0;
    for (const auto& [number, bytes] : file.blocks) {
        if (number != block || std::uint64_t{block} * kBlock >= length ||
            bytes.size() != std::min<std::size_t>(kBlock, length - block * kBlock)) {
            return false;
        }
        ++block;
    }
    return block == (std::uint64_t{length} + kBlock - 1) / kBlock;
}

std::vector<SavedFiles::Segment> SavedFiles::ListSegments(const File& file) {
    std::vector<Segment> segments;
    std::uint64_t end = 0;
    for (const auto& [block, bytes] : file.blocks) {
        const std::uint64_t begin = std::uint64_t{block} * kBlock;
        if (segments.empty() || begin != end) {
            segments.push_back({static_cast<std::uint32_t>(begin), {}});
        }
        segments.back().bytes += bytes;
        end = begin + bytes.size();
    }
    return segments;
}

/// Keeps the whole lines whose section is known.
void SavedFiles::MendSettings(File& file) {
    if (IsWhole(file)) {
        return;
    }
    m_settingsLost = true;
    m_job.Lose("", 0, "a part of the settings is gone; they are as in a new job there");
    std::string text;
    for (const Segment& segment : ListSegments(file)) {
        std::string_view part = segment.bytes;
        if (segment.begin != 0) {
            const std::size_t section = part.find("\n[");
            part.remove_prefix(section == std::string_view::npos ? part.size() : section + 1);
        }
        part = part.substr(0, part.rfind('\n') + 1);
        text += part;
    }
    // Settings without these would count as damaged.
    for (const CString& section :
         {CqSurveyDB::m_SettingsSection, CqSurveyDB::m_BGSettingsSection}) {
        const std::string heading = "[" + ToUtf8(section) + "]";
        if (text.find(heading) == std::string::npos) {
            text += heading + "\r\n";
        }
    }
    file.length = static_cast<std::uint32_t>(text.size());
    file.blocks.clear();
    for (std::size_t at = 0; at < text.size(); at += kBlock) {
        file.blocks[static_cast<std::uint32_t>(at / kBlock)] = text.substr(at, kBlock);
    }
}

std::vector<SavedFiles::Description> SavedFiles::ReadDescriptions(const File& file) {
    std::vector<Description> descriptions;
    std::set<CqHandle> keys;
    const std::vector<Segment> segments = ListSegments(file);
    bool lost = segments.empty() || segments.front().begin != 0;
    // Where the next block begins. When its head is in a hole, it is looked for behind that.
    std::uint64_t next = kDescriptionHeader;
    for (const Segment& segment : segments) {
        const std::string_view bytes = segment.bytes;
        lost = lost || &segment != &segments.front();
        std::optional<Starts> starts;
        // Blocks begin at multiples of 16 bytes of the file.
        const auto findStart = [&](std::size_t from) {
            if (!starts) {
                starts.emplace(bytes, (kHead - segment.begin % kHead) % kHead);
            }
            return segment.begin + std::uint64_t{starts->Find(from)};
        };
        if (next < segment.begin) {
            next = findStart(0);
        }
        while (next < segment.begin + bytes.size()) {
            const auto at = static_cast<std::size_t>(next - segment.begin);
            const auto head = ReadHead(bytes, at);
            if (!head) {
                next = findStart(at + kHead);
                lost = true;
                continue;
            }
            next += kHead + std::uint64_t{head->capacity};
            if (head->key == 0 || head->length == 0) {
                continue;
            }
            if (at + kHead + std::size_t{head->length} > bytes.size()) {
                m_job.Lose(PointLayout::kTable.text, head->key, "its description is gone");
            } else if (keys.insert(head->key).second) {
                descriptions.emplace_back(head->key,
                                          std::string(bytes.substr(at + kHead, head->length)));
            }
        }
    }
    const std::uint64_t end =
        segments.empty() ? 0 : segments.back().begin + std::uint64_t{segments.back().bytes.size()};
    if (lost || (file.length && end < *file.length)) {
        m_job.Lose("", 0, "some descriptions of points are gone");
    }
    return descriptions;
}

}  // namespace cqsurvey
