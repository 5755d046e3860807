#include "cqsurvey/CqDrawnList.h"

#include <cstddef>
#include <cstring>
#include <string_view>

#include "cqsurvey/CqSurveyDB.h"
#include "job/Job.h"
#include "job/JobStep.h"
#include "platform/ByteOrder.h"
#include "store/CQrfsFile.h"
#include "store/Qrfs.h"
#include "store/ThrowStorageError.h"

namespace cqsurvey {

namespace {

constexpr std::string_view kMagic = "CQDRAWN1";
constexpr std::size_t kEntry = 12;
constexpr int kModeRead = 1;
constexpr int kModeWrite = 2;
constexpr std::uint16_t kNoAttributes = 0xFFFF;

std::vector<std::byte> ReadWhole(const CString& path) {
    CQrfsFile file;
    file.Open(path, kModeRead);
    std::vector<std::byte> bytes(static_cast<std::size_t>(file.GetLength()));
    const std::uint32_t read = file.Read(bytes.data(), static_cast<std::uint32_t>(bytes.size()));
    bytes.resize(read);
    file.Close();
    return bytes;
}

}  // namespace

std::vector<CqDrawn> CqDrawnList::Get() const {
    const CString path = m_db.GetJob().mountName + kPath;
    std::vector<CqDrawn> list;
    if (QrfsGetFileAttributes(path) == kNoAttributes) {
        return list;
    }
    const std::vector<std::byte> bytes = ReadWhole(path);
    if (bytes.size() < kMagic.size() || (bytes.size() - kMagic.size()) % kEntry != 0 ||
        std::memcmp(bytes.data(), kMagic.data(), kMagic.size()) != 0) {
        ThrowStorageError(error::kDamaged);
    }
    list.reserve((bytes.size() - kMagic.size()) / kEntry);
    for (std::size_t at = kMagic.size(); at < bytes.size(); at += kEntry) {
        list.push_back({LoadLittle<std::uint32_t>(bytes.data() + at),
                        LoadLittle<std::uint64_t>(bytes.data() + at + 4)});
    }
    return list;
}

void CqDrawnList::Set(const std::vector<CqDrawn>& list) {
    const CString path = m_db.GetJob().mountName + kPath;
    const bool exists = QrfsGetFileAttributes(path) != kNoAttributes;
    if (exists ? Get() == list && !list.empty() : list.empty()) {
        return;
    }
    std::vector<std::byte> bytes(kMagic.size() + list.size() * kEntry);
    std::memcpy(bytes.data(), kMagic.data(), kMagic.size());
    std::byte* to = bytes.data() + kMagic.size();
    for (const CqDrawn& drawn : list) {
        StoreLittle(to, drawn.handle);
        StoreLittle(to + 4, drawn.mark);
        to += kEntry;
    }
    Atomically(m_db.GetJob(), [&] {
        if (list.empty()) {
            CQrfsFile::Remove(path);
            return;
        }
        if (!exists) {
            CQrfsFile::CreateFile(path, 0);
        }
        CQrfsFile file;
        file.Open(path, kModeWrite);
        file.SetLength(static_cast<std::uint32_t>(bytes.size()));
        file.Write(bytes.data(), static_cast<std::uint32_t>(bytes.size()));
        file.Close();
    });
}

}  // namespace cqsurvey
