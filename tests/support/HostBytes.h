#pragma once

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <string_view>

namespace cqsurvey {

/// The bytes of a file of the host.
inline std::string HostFileBytes(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        throw std::runtime_error("no file " + path);
    }
    // In one go: tests are not optimised, and some read a file hundreds of times.
    std::string bytes(static_cast<std::size_t>(std::filesystem::file_size(path)), '\0');
    file.read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    return bytes;
}

/// Makes a file of the host, or puts a new one in its place: cutting the old one would wait for the
/// disk on some file systems.
inline void PutHostFile(const std::string& path, std::string_view bytes) {
    std::remove(path.c_str());
    std::ofstream file(path, std::ios::binary);
    file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    if (!file.flush()) {
        throw std::runtime_error("cannot write " + path);
    }
}

}  // namespace cqsurvey
