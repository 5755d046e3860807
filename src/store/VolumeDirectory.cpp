#include "store/VolumeDirectory.h"

#include <algorithm>
#include <limits>
#include <string>
#include <utility>

#include "cqsurvey/Text.h"
#include "store/Failure.h"

namespace cqsurvey {

namespace {

constexpr std::uint16_t kNormalFile = 0x80;
constexpr std::uint16_t kNoAttributes = 0xFFFF;

}  // namespace

std::map<CString, VolumeDirectory::Entry> VolumeDirectory::ReadAll() const {
    std::map<CString, Entry> files;
    SqlStatement rows(m_connection,
                      "SELECT File, Name, Length, Attributes FROM Volume_File ORDER BY File");
    std::int64_t last = 0;
    while (rows.Step()) {
        const std::int64_t id = sqlite3_column_int64(rows.Get(), 0);
        const std::int64_t length = sqlite3_column_int64(rows.Get(), 2);
        const std::int64_t attributes = sqlite3_column_int64(rows.Get(), 3);
        const auto misfit = [&](const std::string& what) {
            return StoreFailure(error::kDamaged, "file " + std::to_string(id) + " " + what);
        };
        if (id <= last || id > std::numeric_limits<std::int32_t>::max()) {
            throw misfit("follows file " + std::to_string(last));
        }
        last = id;
        if (length < 0 || length > VolumeFile::kMostBytes) {
            throw misfit("has " + std::to_string(length) + " bytes");
        }
        if (attributes < 0 || attributes >= kNoAttributes) {
            throw misfit("has the attributes " + std::to_string(attributes));
        }
        if (sqlite3_column_type(rows.Get(), 1) != SQLITE_TEXT) {
            throw misfit("has no name");
        }
        const bool fresh =
            files
                .emplace(rows.GetText(1),
                         Entry{std::make_shared<VolumeFile>(m_connection, id,
                                                            static_cast<std::uint32_t>(length)),
                               static_cast<std::uint16_t>(attributes)})
                .second;
        if (!fresh) {
            throw misfit("has the same name as another");
        }
    }
    return files;
}

std::shared_ptr<VolumeFile> VolumeDirectory::Find(const CString& name) const {
    const auto found = m_entries.find(name);
    return found == m_entries.end() ? nullptr : found->second.file;
}

const VolumeDirectory::Entry& VolumeDirectory::At(const CString& name) const {
    const auto found = m_entries.find(name);
    if (found == m_entries.end()) {
        throw StoreFailure(error::kNoFile, "file \"" + ToUtf8(name) + "\"");
    }
    return found->second;
}

std::shared_ptr<VolumeFile> VolumeDirectory::Require(const CString& name) const {
    return At(name).file;
}

void VolumeDirectory::RequireNone(const CString& name) const {
    if (name.empty()) {
        throw StoreFailure(error::kInvalidArgument, "a file needs a name");
    }
    if (m_entries.contains(name)) {
        throw StoreFailure(error::kFileExists, "file \"" + ToUtf8(name) + "\"");
    }
}

std::uint16_t VolumeDirectory::GetAttributes(const CString& name) const {
    return At(name).attributes;
}

bool VolumeDirectory::HasBlocks(std::int64_t id) const {
    if (id > std::numeric_limits<std::int32_t>::max()) {
        return false;
    }
    SqlStatement rows(m_connection,
                      "SELECT Position >> 32 FROM Volume_Block WHERE Position >= ?1 << 32 "
                      "ORDER BY Position LIMIT 1");
    rows.BindInt(1, id);
    return rows.Step() && sqlite3_column_int64(rows.Get(), 0) == id;
}

std::shared_ptr<VolumeFile> VolumeDirectory::Create(const CString& name) {
    RequireNone(name);
    Touch();
    // A file that the step deleted may come back with its number, so that stays taken.
    std::int64_t id = 1;
    for (const auto* entries : {&m_entries, &m_entriesAtStep}) {
        for (const auto& [other, entry] : *entries) {
            id = std::max(id, entry.file->GetId() + 1);
        }
    }
    // Neither may blocks be in the way whose file is gone: they may be all that is left of it.
    while (HasBlocks(id)) {
        ++id;
    }
    if (id > std::numeric_limits<std::int32_t>::max()) {
        throw StoreFailure(error::kVolumeFull, "the volume has no file number left");
    }
    SqlStatement insert(m_connection, "INSERT INTO Volume_File VALUES(?1, ?2, 0, ?3)");
    insert.BindInt(1, id);
    insert.BindText(2, std::u16string_view(name));
    insert.BindInt(3, kNormalFile);
    insert.Run();
    auto file = std::make_shared<VolumeFile>(m_connection, id, 0U);
    m_entries.emplace(name, Entry{file, kNormalFile});
    return file;
}

void VolumeDirectory::Rename(const CString& from, const CString& to) {
    const std::int64_t id = Require(from)->GetId();
    RequireNone(to);
    Touch();
    SqlStatement update(m_connection, "UPDATE Volume_File SET Name = ?1 WHERE File = ?2");
    update.BindText(1, std::u16string_view(to));
    update.BindInt(2, id);
    update.Run();
    auto node = m_entries.extract(from);
    node.key() = to;
    m_entries.insert(std::move(node));
}

void VolumeDirectory::Delete(const CString& name) {
    const std::shared_ptr<VolumeFile> file = Require(name);
    Touch();
    file->Erase();
    SqlStatement remove(m_connection, "DELETE FROM Volume_File WHERE File = ?1");
    remove.BindInt(1, file->GetId());
    remove.Run();
    file->SetGone(true);
    m_entries.erase(name);
}

void VolumeDirectory::SetAttributes(const CString& name, std::uint16_t attributes) {
    const std::int64_t id = Require(name)->GetId();
    if (attributes == kNoAttributes) {
        throw StoreFailure(error::kInvalidArgument, "the attributes 0xFFFF mean a failure");
    }
    Touch();
    SqlStatement update(m_connection, "UPDATE Volume_File SET Attributes = ?1 WHERE File = ?2");
    update.BindInt(1, attributes);
    update.BindInt(2, id);
    update.Run();
    m_entries.at(name).attributes = attributes;
}

void VolumeDirectory::Touch() {
    if (m_touched) {
        return;
    }
    for (auto& [name, entry] : m_entries) {
        entry.lengthAtStep = entry.file->GetLength();
    }
    m_entriesAtStep = m_entries;
    m_touched = true;
}

std::size_t VolumeDirectory::GetDirty() const {
    std::size_t blocks = 0;
    for (const auto& [name, entry] : m_entries) {
        blocks += entry.file->GetDirty();
    }
    return blocks;
}

void VolumeDirectory::Flush() {
    for (const auto& [name, entry] : m_entries) {
        entry.file->Flush();
    }
}

bool VolumeDirectory::DatabaseHoldsStep() const {
    if (!m_touched) {
        return true;
    }
    const std::map<CString, Entry> stored = ReadAll();
    return std::equal(stored.begin(), stored.end(), m_entries.begin(), m_entries.end(),
                      [](const auto& a, const auto& b) {
                          return a.first == b.first && a.second.attributes == b.second.attributes &&
                                 a.second.file->GetId() == b.second.file->GetId() &&
                                 a.second.file->GetLength() == b.second.file->GetLength() &&
                                 b.second.file->DatabaseHoldsBlocks();
                      });
}

void VolumeDirectory::KeepStep() noexcept {
    m_entriesAtStep.clear();
    m_touched = false;
}

void VolumeDirectory::UndoStep() noexcept {
    if (!m_touched) {
        return;
    }
    // First every file is marked as gone, then those from before the step come back. What remains
    // gone are the files that the step created.
    for (const auto& [name, entry] : m_entries) {
        entry.file->Reload(0);
        entry.file->SetGone(true);
    }
    for (const auto& [name, entry] : m_entriesAtStep) {
        entry.file->Reload(entry.lengthAtStep);
        entry.file->SetGone(false);
    }
    m_entries.swap(m_entriesAtStep);
    m_entriesAtStep.clear();
    m_touched = false;
}

}  // namespace cqsurvey
