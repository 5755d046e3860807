#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <system_error>

#include "platform/System.h"

namespace cqsurvey {

/// Reads the first bytes of a file, up to `Size`; the rest is zero. Returns how many there were.
template <std::size_t Size>
std::size_t ReadStart(const std::string& path, std::array<std::byte, Size>& bytes,
                      std::error_code& failure) {
    system::Descriptor file(path, system::Descriptor::Mode::Read, failure);
    std::size_t size = 0;
    for (std::size_t got = 1; !failure && got > 0 && size < Size; size += got) {
        got = file.Read(bytes.data() + size, Size - size, failure);
    }
    return size;
}

}  // namespace cqsurvey
