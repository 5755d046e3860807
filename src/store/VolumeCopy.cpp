#include "store/VolumeCopy.h"

#include <sqlite3.h>

#include <cstddef>
#include <cstdint>
#include <system_error>
#include <vector>

#include "platform/System.h"
#include "store/VolumePath.h"

namespace cqsurvey {

namespace {

/// The pages of a mounted volume as they stand in its file.
class Pages {
 public:
    explicit Pages(const Volume& volume) : m_path(volume.GetPath()) {
        sqlite3* connection = volume.GetConnection();
        m_count = SqlNumber(connection, "PRAGMA page_count");
        m_page.resize(static_cast<std::size_t>(SqlNumber(connection, "PRAGMA page_size")));
        if (sqlite3_file_control(connection, "main", SQLITE_FCNTL_FILE_POINTER,
                                 static_cast<void*>(&m_file)) != SQLITE_OK ||
            m_file == nullptr || m_file->pMethods == nullptr) {
            throw StoreFailure(error::kGeneralFailure, m_path + ": the open file was not found");
        }
    }

    /// Calls `visit` with the bytes of each page.
    template <class Visit>
    void ForEach(Visit&& visit) {
        const auto size = static_cast<sqlite3_int64>(m_page.size());
        for (std::int64_t page = 0; page < m_count; ++page) {
            const int result =
                m_file->pMethods->xRead(m_file, m_page.data(), static_cast<int>(size), page * size);
            if (result == SQLITE_IOERR_DATA) {
                throw StoreFailure(error::kDamaged, m_path + ": page " + std::to_string(page + 1) +
                                                        " does not match its sum");
            }
            if (result == SQLITE_IOERR_SHORT_READ) {
                throw StoreFailure(error::kDamaged, m_path + " was cut off");
            }
            if (result != SQLITE_OK) {
                throw StoreFailure(
                    error::kReadWriteFailed,
                    m_path + ": page " + std::to_string(page + 1) + " cannot be read");
            }
            visit(m_page);
        }
    }

 private:
    std::string m_path;
    sqlite3_file* m_file = nullptr;
    std::int64_t m_count = 0;
    std::vector<std::byte> m_page;
};

void Require(const std::error_code& failure, const std::string& path) {
    if (failure) {
        ThrowSystem(failure, path);
    }
}

void Write(Pages& pages, const std::string& draft, const std::string& path) {
    std::error_code failure;
    system::Descriptor file(draft, system::Descriptor::Mode::Replace, failure);
    Require(failure, path);
    pages.ForEach([&](const std::vector<std::byte>& page) {
        file.Write(page.data(), page.size(), failure);
        Require(failure, path);
    });
    file.Sync(failure);
    Require(failure, path);
    file.Close(failure);
    Require(failure, path);
}

void Compare(Pages& pages, const std::string& draft, const std::string& path) {
    std::error_code failure;
    system::Descriptor file(draft, system::Descriptor::Mode::Read, failure);
    Require(failure, path);
    std::vector<std::byte> copied;
    pages.ForEach([&](const std::vector<std::byte>& page) {
        copied.resize(page.size());
        std::size_t size = 0;
        for (std::size_t got = 1; got > 0 && size < copied.size(); size += got) {
            got = file.Read(copied.data() + size, copied.size() - size, failure);
            Require(failure, path);
        }
        if (size < copied.size() || copied != page) {
            throw StoreFailure(error::kReadWriteFailed,
                               path + ": the copy differs from the job; it was removed");
        }
    });
}

}  // namespace

void CopyVolume(const Volume& volume, const std::string& path) {
    volume.RequireCertain();
    if (volume.HasStep()) {
        throw StoreFailure(error::kInvalidArgument,
                           "a volume cannot be copied while a step is open");
    }
    VolumeDatabase::CreateDraft(path);
    const std::string draft = VolumeDraftPath(path);
    try {
        Pages pages(volume);
        Write(pages, draft, path);
        Compare(pages, draft, path);
    } catch (...) {
        system::Remove(draft);
        throw;
    }
}

}  // namespace cqsurvey
