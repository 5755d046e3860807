#include "store/salvage/PageRow.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>
#include <limits>

#include "platform/ByteOrder.h"
#include "store/salvage/BtreePage.h"

namespace cqsurvey {

namespace {

constexpr std::array<std::size_t, 10> kSizes{0, 1, 2, 3, 4, 6, 8, 8, 0, 0};
constexpr std::uint64_t kReal = 7;
constexpr std::uint64_t kZero = 8;
constexpr std::uint64_t kOne = 9;
constexpr std::uint64_t kFirstBytes = 12;

std::uint64_t Big(std::span<const std::byte> bytes) {
    // A negative number of fewer than eight bytes is filled up with ones.
    const bool negative = !bytes.empty() && (std::to_integer<unsigned>(bytes[0]) & 0x80U) != 0;
    std::uint64_t value = negative ? std::numeric_limits<std::uint64_t>::max() : 0;
    for (const std::byte byte : bytes) {
        value = (value << 8) | std::to_integer<std::uint64_t>(byte);
    }
    return value;
}

template <class T>
bool PackNumber(std::int64_t value, std::byte* bytes) {
    if (value < std::int64_t{std::numeric_limits<T>::min()} ||
        value > std::int64_t{std::numeric_limits<T>::max()}) {
        return false;
    }
    StoreLittle<T>(bytes, static_cast<T>(value));
    return true;
}

}  // namespace

std::optional<PageRow> PageRow::Read(std::span<const std::byte> payload, std::size_t columns,
                                     bool cut) {
    std::size_t at = 0;
    const auto head = ReadVariable(payload, at);
    if (!head || *head > payload.size()) {
        return std::nullopt;
    }
    const std::span<const std::byte> types = payload.first(static_cast<std::size_t>(*head));
    std::size_t value = types.size();
    PageRow row;
    row.m_values.reserve(columns);
    while (at < types.size()) {
        const auto type = ReadVariable(types, at);
        if (!type || *type == 10 || *type == 11 || row.m_values.size() == columns) {
            return std::nullopt;
        }
        std::uint64_t size =
            *type < kFirstBytes ? kSizes[static_cast<std::size_t>(*type)] : (*type - 12) / 2;
        if (size > payload.size() - value) {
            if (!cut || *type < kFirstBytes) {
                return std::nullopt;
            }
            size = payload.size() - value;
        }
        Value& got = row.m_values.emplace_back();
        got.bytes = payload.subspan(value, static_cast<std::size_t>(size));
        value += got.bytes.size();
        if (*type >= kFirstBytes) {
            got.type = *type % 2 == 0 ? Type::Bytes : Type::Text;
        } else if (*type == kReal) {
            got.type = Type::Real;
        } else if (*type != 0) {
            got.type = Type::Number;
            got.number = *type == kZero  ? 0
                         : *type == kOne ? 1
                                         : static_cast<std::int64_t>(Big(got.bytes));
        }
    }
    if (row.m_values.size() != columns || (!cut && value != payload.size())) {
        return std::nullopt;
    }
    return row;
}

CString PageRow::GetText(std::size_t column) const {
    const std::span<const std::byte> bytes = GetBytes(column);
    CString text(bytes.size() / 2, u'\0');
    for (std::size_t i = 0; i < text.size(); ++i) {
        text[i] = static_cast<char16_t>(LoadLittle<std::uint16_t>(bytes.data() + 2 * i));
    }
    return text;
}

bool PageRow::PackDouble(const Value& value, std::byte* bytes) {
    switch (value.type) {
        case Type::Real:
            StoreLittle<std::uint64_t>(bytes, Big(value.bytes));
            return true;
        case Type::Number:
            StoreLittle<double>(bytes, static_cast<double>(value.number));
            return true;
        case Type::None:
            StoreLittle<std::uint64_t>(
                bytes, std::bit_cast<std::uint64_t>(std::numeric_limits<double>::quiet_NaN()));
            return true;
        case Type::Bytes:
            if (value.bytes.size() == sizeof(double)) {
                std::copy(value.bytes.begin(), value.bytes.end(), bytes);
                return true;
            }
            return false;
        case Type::Text:
            break;
    }
    return false;
}

bool PageRow::Pack(const RecordFormat& format, std::byte* record) const {
    const std::vector<RecordFormat::Item>& items = format.GetItems();
    if (m_values.size() != items.size() + 1 || m_values[0].type != Type::None) {
        return false;
    }
    for (std::size_t i = 0; i < items.size(); ++i) {
        const RecordFormat::Item& item = items[i];
        const Value& value = m_values[i + 1];
        std::byte* bytes = record + item.offset;
        bool fits = false;
        switch (item.type) {
            case RecordFormat::Type::Double:
                fits = PackDouble(value, bytes);
                break;
            case RecordFormat::Type::Dword:
            case RecordFormat::Type::Memo:
                fits = value.type == Type::Number && PackNumber<std::uint32_t>(value.number, bytes);
                break;
            case RecordFormat::Type::Integer:
                fits = value.type == Type::Number && PackNumber<std::int32_t>(value.number, bytes);
                break;
            case RecordFormat::Type::Word:
                fits = value.type == Type::Number && PackNumber<std::uint16_t>(value.number, bytes);
                break;
            case RecordFormat::Type::Text:
                fits = value.type == Type::Text && value.bytes.size() <= item.width &&
                       value.bytes.size() % 2 == 0;
                if (fits) {
                    std::fill(bytes, bytes + item.width, std::byte{0});
                    std::copy(value.bytes.begin(), value.bytes.end(), bytes);
                }
                break;
        }
        if (!fits) {
            return false;
        }
    }
    return true;
}

}  // namespace cqsurvey
