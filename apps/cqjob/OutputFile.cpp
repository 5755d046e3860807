#include "cqjob/OutputFile.h"

#include <fmt/format.h>

#include <filesystem>
#include <utility>

#include "cqjob/Failure.h"

namespace cqsurvey::cqjob {

namespace {

using system::Descriptor;

constexpr std::size_t kBuffer = 65536;

}  // namespace

OutputFile::OutputFile(Console& console, const std::string& path, bool replace)
    : m_console(console), m_path(path), m_replace(replace) {
    if (path == "-") {
        return;
    }
    std::error_code none;
    const std::filesystem::path old = std::filesystem::canonical(path, none);
    const bool exists = !none;
    // A link to nothing is something, too.
    if (!replace && system::IsTaken(path)) {
        FailExisting();
    }
    m_interrupt.emplace();
    if (exists && !std::filesystem::is_regular_file(old, none)) {
        OpenExisting(path);
    } else {
        m_path = exists ? old.string() : path;
        Create();
        m_file.TakePermissionsOf(m_path);
    }
}

void OutputFile::OpenExisting(const std::string& path) {
    // A device or a pipe is written to, never replaced.
    std::error_code failure;
    do {
        CheckInterrupt();
        m_file = Descriptor(path, Descriptor::Mode::Write, failure);
    } while (failure == std::errc::interrupted);
    Require(failure);
}

void OutputFile::Create() {
    // A program that was killed may have left a file of this name.
    constexpr int kTries = 100;
    constexpr std::size_t kLongest = 200;
    const std::filesystem::path path(m_path);
    const std::string stem = path.filename().string().substr(0, kLongest);
    std::error_code failure;
    for (int i = 0; i < kTries && (i == 0 || failure == std::errc::file_exists); ++i) {
        m_made = path.parent_path() / fmt::format("{}.new-{}", stem, system::ProcessNumber() + i);
        m_file = Descriptor(m_made, Descriptor::Mode::CreateNew, failure);
    }
    if (failure) {
        m_made.clear();
        Require(failure);
    }
}

OutputFile::~OutputFile() {
    if (!m_made.empty()) {
        system::Remove(m_made);
    }
}

void OutputFile::Require(const std::error_code& failure) const {
    if (failure) {
        // A file that may not grow further is to its writer what a full disk is.
        const std::error_code told = failure == std::errc::file_too_large
                                         ? std::make_error_code(std::errc::no_space_on_device)
                                         : failure;
        throw Failure(m_path, "{}", told.message());
    }
}

void OutputFile::FailExisting() const {
    throw Failure(m_path, "already exists; --force replaces it");
}

void OutputFile::CheckInterrupt() const {
    if (m_interrupt) {
        Interrupt::Check(m_path, "so nothing was written");
    }
}

void OutputFile::Write(std::string_view bytes) {
    if (!m_file.IsOpen()) {
        m_console.Out(bytes);
        return;
    }
    CheckInterrupt();
    m_buffer += bytes;
    if (m_buffer.size() >= kBuffer) {
        WriteBuffer();
    }
}

void OutputFile::WriteBuffer() {
    std::string_view left = m_buffer;
    std::error_code failure;
    while (!left.empty()) {
        left.remove_prefix(m_file.WriteSome(left.data(), left.size(), failure));
        CheckInterrupt();
        if (failure != std::errc::interrupted) {
            Require(failure);
        }
    }
    m_buffer.clear();
}

void OutputFile::Finish() {
    if (!m_file.IsOpen()) {
        return;
    }
    WriteBuffer();
    std::error_code failure;
    if (!m_made.empty()) {
        m_file.Sync(failure);
        Require(failure);
    }
    m_file.Close(failure);
    Require(failure);
    CheckInterrupt();
    if (!m_made.empty()) {
        Publish();
    }
    m_interrupt.reset();
}

void OutputFile::Publish() {
    std::error_code failure;
    if (m_replace) {
        std::filesystem::rename(m_made, m_path, failure);
    } else {
        system::RenameNew(m_made, m_path, failure);
        if (failure == std::errc::file_exists) {
            FailExisting();
        }
    }
    Require(failure);
    m_made.clear();
    // The new name is on the disk once its folder is. The file is whole in any case.
    system::SyncFolderOf(system::AbsolutePath(m_path), failure);
}

}  // namespace cqsurvey::cqjob
