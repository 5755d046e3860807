#include "store/DatabasePage.h"

#include <algorithm>
#include <cstring>
#include <string_view>

#include "platform/ByteOrder.h"

namespace cqsurvey {

namespace {

constexpr std::string_view kMagic("SQLite format 3\0", 16);
constexpr std::size_t kPageSizeAt = 16;
constexpr std::size_t kWriteVersionAt = 18;
constexpr std::size_t kReadVersionAt = 19;
constexpr std::size_t kReservedAt = 20;
constexpr std::size_t kStepAt = 24;
constexpr std::size_t kEncodingAt = 56;
constexpr std::size_t kFormatVersionAt = 60;
constexpr std::size_t kApplicationAt = 68;
constexpr std::size_t kStepAgainAt = 92;
constexpr std::size_t kWriterAt = 96;

constexpr std::byte kLogged{2};
/// Read as versions of SQLite these would be 3.37.999 and 3.37.998. The tables need 3.37, and no
/// release has such a last number.
constexpr std::uint32_t kWholeStep = 3037999;
constexpr std::uint32_t kOpenStep = 3037998;

// The header of a journal.
constexpr std::array<unsigned char, 8> kJournalMagic{0xd9, 0xd5, 0x05, 0xf9,
                                                     0x20, 0xa1, 0x63, 0xd7};
/// SQLite's fields end at 28.
constexpr std::size_t kStampAt = 28;
constexpr std::string_view kStampMagic = "CqSv";
constexpr std::size_t kStampStepAt = kStampAt + 4;
constexpr std::size_t kStampSumAt = kStampAt + 8;

bool IsAt(const std::byte* bytes, const void* expected, std::size_t count) {
    return std::memcmp(bytes, expected, count) == 0;
}

}  // namespace

PageSum ComputePageSum(const std::byte* page, std::size_t size) noexcept {
    std::uint32_t first = 0;
    std::uint32_t second = 0;
    for (std::size_t at = 0; at + kPageSumBytes < size; at += 8) {
        // As cksumvfs does it: first += a + second; second += b + first. Written so that two
        // additions at a time do not wait for each other, which takes a quarter off the time.
        const std::uint32_t next = first + LoadLittle<std::uint32_t>(page + at);
        const std::uint32_t twice = 2 * second + LoadLittle<std::uint32_t>(page + at + 4);
        first = next + second;
        second = next + twice;
    }
    PageSum sum;
    StoreLittle(sum.data(), first);
    StoreLittle(sum.data() + 4, second);
    return sum;
}

void WritePageSum(std::byte* page, std::size_t size) noexcept {
    const PageSum sum = ComputePageSum(page, size);
    std::copy(sum.begin(), sum.end(), page + size - kPageSumBytes);
}

bool HasItsSum(const std::byte* page, std::size_t size) noexcept {
    const PageSum sum = ComputePageSum(page, size);
    return IsAt(page + size - kPageSumBytes, sum.data(), kPageSumBytes);
}

bool DatabaseHeader::IsDatabase() const noexcept {
    return IsAt(m_bytes, kMagic.data(), kMagic.size());
}

std::uint32_t DatabaseHeader::GetPageSize() const noexcept {
    // The largest size does not fit into the field, which says 1 instead.
    const auto size = LoadBig<std::uint16_t>(m_bytes + kPageSizeAt);
    return size == 1 ? kLargestPage : size;
}

bool DatabaseHeader::IsLogged() const noexcept {
    return m_bytes[kWriteVersionAt] == kLogged || m_bytes[kReadVersionAt] == kLogged;
}

std::uint32_t DatabaseHeader::GetFormatVersion() const noexcept {
    return LoadBig<std::uint32_t>(m_bytes + kFormatVersionAt);
}

std::uint32_t DatabaseHeader::GetApplication() const noexcept {
    return LoadBig<std::uint32_t>(m_bytes + kApplicationAt);
}

std::uint32_t DatabaseHeader::GetEncoding() const noexcept {
    return LoadBig<std::uint32_t>(m_bytes + kEncodingAt);
}

std::uint32_t DatabaseHeader::GetStep() const noexcept {
    return LoadBig<std::uint32_t>(m_bytes + kStepAt);
}

bool DatabaseHeader::IsStepWhole() const noexcept {
    return LoadBig<std::uint32_t>(m_bytes + kWriterAt) == kWholeStep;
}

bool DatabaseHeader::HasPageSums() const noexcept {
    const auto writer = LoadBig<std::uint32_t>(m_bytes + kWriterAt);
    return m_bytes[kReservedAt] == std::byte{kPageSumBytes} &&
           (writer == kWholeStep || writer == kOpenStep);
}

void DatabaseHeader::Stamp(std::byte* page, std::size_t size, std::uint32_t step,
                           bool whole) noexcept {
    StoreBig(page + kStepAt, step);
    StoreBig(page + kStepAgainAt, step);
    StoreBig(page + kWriterAt, whole ? kWholeStep : kOpenStep);
    WritePageSum(page, size);
}

void JournalStamp::Write(std::byte* header) const noexcept {
    std::memcpy(header + kStampAt, kStampMagic.data(), kStampMagic.size());
    StoreBig(header + kStampStepAt, step);
    std::copy(sum.begin(), sum.end(), header + kStampSumAt);
}

std::optional<JournalStamp> JournalStamp::Read(const std::byte* header) noexcept {
    if (!IsAt(header, kJournalMagic.data(), kJournalMagic.size()) ||
        !IsAt(header + kStampAt, kStampMagic.data(), kStampMagic.size())) {
        return std::nullopt;
    }
    JournalStamp stamp{LoadBig<std::uint32_t>(header + kStampStepAt), {}};
    std::copy_n(header + kStampSumAt, kPageSumBytes, stamp.sum.begin());
    return stamp;
}

bool JournalStamp::Fits(const std::byte* page, std::size_t size) const noexcept {
    if (!HasItsSum(page, size)) {
        return true;
    }
    const DatabaseHeader header(page);
    return header.GetStep() == step ? IsAt(page + size - kPageSumBytes, sum.data(), kPageSumBytes)
                                    : header.GetStep() == step + 1;
}

}  // namespace cqsurvey
