#include "support/PowerMedium.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>

namespace cqsurvey {

namespace {

constexpr std::size_t kSector = 512;

std::string ReadFile(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

}  // namespace

/// Decides about one thing after the other that was not synced.
class PowerMedium::Choice {
 public:
    Choice(Unsynced unsynced, std::mt19937& random) : m_unsynced(unsynced), m_random(random) {}

    bool Keeps() {
        return m_unsynced == Unsynced::Kept || (m_unsynced == Unsynced::Mixed && OneIn(2));
    }
    /// Which part of so many bytes of a sector was written: its beginning and its end.
    std::pair<std::size_t, std::size_t> Part(std::size_t size) {
        if (!Keeps()) {
            return {0, 0};
        }
        if (m_unsynced != Unsynced::Mixed || !OneIn(6)) {
            return {0, size};
        }
        const std::size_t torn = m_random() % (size + 1);
        return OneIn(2) ? std::pair<std::size_t, std::size_t>{0, torn} : std::pair{torn, size};
    }

 private:
    bool OneIn(unsigned cases) { return m_random() % cases == 0; }

    Unsynced m_unsynced;
    std::mt19937& m_random;
};

PowerMedium::PowerMedium(const std::string& folder)
    : m_folder(std::filesystem::canonical(folder).string()), m_alias(m_folder) {
    for (const auto& entry : std::filesystem::directory_iterator(m_folder)) {
        auto file = std::make_shared<File>();
        file->synced = ReadFile(entry.path());
        m_synced[entry.path().filename().string()] = file;
    }
    m_names = m_synced;
}

std::optional<std::string> PowerMedium::NameOf(const std::string& path) const {
    const std::size_t slash = path.find_last_of('/');
    const std::string folder = path.substr(0, slash == std::string::npos ? 0 : slash);
    if (folder != m_alias) {
        std::error_code failure;
        if (std::filesystem::weakly_canonical(folder, failure) != m_folder) {
            return std::nullopt;
        }
        m_alias = folder;
    }
    return path.substr(slash + 1);
}

PowerMedium::File* PowerMedium::Find(const std::string& path) {
    const auto name = NameOf(path);
    const auto found = name ? m_names.find(*name) : m_names.end();
    return found == m_names.end() ? nullptr : found->second.get();
}

void PowerMedium::Open(const std::string& path) {
    const auto name = NameOf(path);
    if (name && !m_names.contains(*name)) {
        m_pending.push_back({{}, *name, std::make_shared<File>()});
        Apply(m_names, m_pending.back());
    }
}

void PowerMedium::Write(const std::string& path, const void* bytes, int count, sqlite3_int64 at) {
    if (File* file = Find(path)) {
        file->pending.push_back(
            {false, static_cast<std::size_t>(at),
             std::string(static_cast<const char*>(bytes), static_cast<std::size_t>(count))});
    }
}

void PowerMedium::Truncate(const std::string& path, sqlite3_int64 size) {
    if (File* file = Find(path)) {
        file->pending.push_back({true, static_cast<std::size_t>(size), {}});
    }
}

void PowerMedium::Sync(const std::string& path) {
    if (File* file = Find(path)) {
        for (const Change& change : file->pending) {
            Apply(file->synced, change);
        }
        file->pending.clear();
    }
}

void PowerMedium::Remove(const std::string& path) {
    if (Find(path) != nullptr) {
        m_pending.push_back({*NameOf(path), {}, nullptr});
        Apply(m_names, m_pending.back());
    }
}

void PowerMedium::Rename(const std::string& from, const std::string& to) {
    if (Find(from) != nullptr) {
        const std::string name = *NameOf(from);
        m_pending.push_back({name, *NameOf(to), m_names.at(name)});
        Apply(m_names, m_pending.back());
    }
}

void PowerMedium::SyncFolder(const std::string& path) {
    std::error_code failure;
    if (std::filesystem::weakly_canonical(path, failure) != m_folder) {
        return;
    }
    for (const NameChange& change : m_pending) {
        Apply(m_synced, change);
    }
    m_pending.clear();
}

void PowerMedium::Apply(std::string& content, const Change& change) {
    if (change.truncates) {
        content.resize(std::min(content.size(), change.at));
        return;
    }
    content.resize(std::max(content.size(), change.at + change.bytes.size()));
    content.replace(change.at, change.bytes.size(), change.bytes);
}

void PowerMedium::Apply(Names& names, const NameChange& change) {
    names.erase(change.gone);
    if (!change.come.empty()) {
        names[change.come] = change.file;
    }
}

std::string PowerMedium::ContentAfterCut(const File& file, Choice& choice) {
    std::string content = file.synced;
    for (const Change& change : file.pending) {
        if (change.truncates) {
            if (choice.Keeps()) {
                Apply(content, change);
            }
            continue;
        }
        for (std::size_t from = 0; from < change.bytes.size();) {
            const std::size_t at = change.at + from;
            const std::size_t size = std::min(kSector - at % kSector, change.bytes.size() - from);
            const auto [begin, end] = choice.Part(size);
            if (begin != end) {
                Apply(content, {false, at + begin, change.bytes.substr(from + begin, end - begin)});
            }
            from += size;
        }
    }
    return content;
}

void PowerMedium::WriteTo(const std::string& folder, Unsynced unsynced,
                          std::mt19937& random) const {
    Choice choice(unsynced, random);
    Names names = m_synced;
    for (const NameChange& change : m_pending) {
        if (choice.Keeps()) {
            Apply(names, change);
        }
    }
    for (const auto& [name, file] : names) {
        const std::string content = ContentAfterCut(*file, choice);
        std::ofstream(folder + "/" + name, std::ios::binary)
            .write(content.data(), static_cast<std::streamsize>(content.size()));
    }
}

}  // namespace cqsurvey
