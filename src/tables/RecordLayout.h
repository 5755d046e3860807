#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <tuple>

#include "cqsurvey/Limits.h"
#include "cqsurvey/Types.h"
#include "platform/ByteOrder.h"
#include "store/Qrdb.h"

namespace cqsurvey {

/// A table's or a field's name. Its characters are members, so that it can be a template argument:
/// two equal names make the same type.
template <std::size_t N>
struct FieldName {
    char16_t units[N]{};  ///< as the store has names
    char text[N]{};       ///< as messages have them

    // Implicit, so that a layout can spell its names as plain literals.
    // NOLINTNEXTLINE(google-explicit-constructor)
    consteval FieldName(const char (&name)[N]) {
        for (std::size_t i = 0; i < N; ++i) {
            units[i] = static_cast<char16_t>(name[i]);
            text[i] = name[i];
        }
    }

    [[nodiscard]] constexpr std::u16string_view View() const { return {units, N - 1}; }
};

/// The types that fields can have. Each says how wide it is in a record, what the store calls it,
/// and how a value is read from the record's bytes and written to them.
namespace field {

template <class T>
struct Number {
    using Value = T;
    static constexpr std::size_t kWidth = sizeof(T);

    static Value Load(const std::byte* bytes) { return LoadLittle<T>(bytes); }
    static void Store(std::byte* bytes, Value value) { StoreLittle<T>(bytes, value); }
};

struct Double : Number<double> {
    static constexpr const char16_t* kType = u"DOUBLE";
};
struct Dword : Number<std::uint32_t> {
    static constexpr const char16_t* kType = u"DWORD";
};
struct Integer : Number<std::int32_t> {
    static constexpr const char16_t* kType = u"INTEGER";
};
struct Word : Number<std::uint16_t> {
    static constexpr const char16_t* kType = u"WORD";
};
/// A reference to a text of the memo store, 0 for an empty text.
struct Memo : Number<std::uint32_t> {
    static constexpr const char16_t* kType = u"MEMO";
};

/// The part of a text that a record can hold: a zero ends it.
[[nodiscard]] constexpr std::u16string_view UpToZero(std::u16string_view text) {
    return text.substr(0, text.find(u'\0'));
}

/// A text of at most Units - 1 code units, terminated and padded with zeros.
template <std::size_t Units>
struct Text {
    using Value = CString;
    static constexpr std::size_t kWidth = 2 * Units;
    static constexpr std::size_t kCapacity = Units - 1;

    static Value Load(const std::byte* bytes) {
        Value value;
        LoadInto(bytes, value);
        return value;
    }
    static void LoadInto(const std::byte* bytes, CString& value) {
        const std::size_t length = Length(bytes);
        value.resize(length);
        for (std::size_t i = 0; i < length; ++i) {
            value[i] = LoadLittle<char16_t>(bytes + 2 * i);
        }
    }
    /// Stores the text up to its first zero, at most kCapacity code units of it.
    static void Store(std::byte* bytes, std::u16string_view value) {
        value = UpToZero(value);
        const std::size_t length = std::min(value.size(), kCapacity);
        std::fill(bytes, bytes + kWidth, std::byte{0});
        for (std::size_t i = 0; i < length; ++i) {
            StoreLittle<char16_t>(bytes + 2 * i, value[i]);
        }
    }
    /// Whether the stored text is exactly `value`. A value that is too long to be stored equals
    /// nothing.
    static bool Equal(const std::byte* bytes, std::u16string_view value) {
        if (Length(bytes) != value.size()) {
            return false;
        }
        for (std::size_t i = 0; i < value.size(); ++i) {
            if (LoadLittle<char16_t>(bytes + 2 * i) != value[i]) {
                return false;
            }
        }
        return true;
    }
    static std::size_t Length(const std::byte* bytes) {
        std::size_t length = 0;
        while (length < kCapacity && LoadLittle<char16_t>(bytes + 2 * length) != 0) {
            ++length;
        }
        return length;
    }
};
struct Text20 : Text<20> {
    static constexpr const char16_t* kType = u"TEXT20";
};
struct Text24 : Text<24> {
    static constexpr const char16_t* kType = u"TEXT24";
};
struct Text52 : Text<52> {
    static constexpr const char16_t* kType = u"TEXT52";
};

static_assert(Text20::kCapacity == limits::kPointName && Text20::kCapacity == limits::kGroupName);
static_assert(Text24::kCapacity == limits::kTextStyle);
static_assert(Text52::kCapacity == limits::kLayerName);

}  // namespace field

/// One field of a layout: its name and its type.
template <FieldName Name, class Type>
struct Field {
    static constexpr FieldName kName = Name;
    using FieldType = Type;
};

/// The packed record of one job table, as a list of its fields:
///
///     using VertexLayout = RecordLayout<"_VertexData",
///                                       Field<"Bulge", field::Double>,
///                                       Field<"PlineIndex", field::Dword>>;
///
/// Everything else about the record follows from this list at compile time:
///
///     byte          0                      8            12
///                   | Bulge (Double)       | PlineIndex  |     VertexLayout::kWidth is 12
///
///     kFieldDefs    the description with which the store creates and checks the table
///     Offset<Name>  the widths of the fields before it, added up
///     Get, Set      read and write a field of a record's bytes with the type that it has
///
/// A name that is not in the list does not compile, and there is no second place where an offset or
/// a type could be wrong. The list is part of the file format.
template <FieldName TableName, class... Fields>
struct RecordLayout {
    static constexpr FieldName kTable = TableName;
    static constexpr std::size_t kFieldCount = sizeof...(Fields);
    static constexpr std::size_t kWidth = (Fields::FieldType::kWidth + ...);

    using Bytes = std::array<std::byte, kWidth>;

    static constexpr std::array<QrdbFieldDef, kFieldCount> kFieldDefs{
        QrdbFieldDef{0, Fields::kName.units, Fields::FieldType::kType, 0}...};

    template <FieldName Name>
    static consteval std::size_t Index() {
        constexpr std::array<std::u16string_view, kFieldCount> names{Fields::kName.View()...};
        std::size_t index = 0;
        while (names[index] != Name.View()) {
            ++index;  // for a name that is not in the list, compilation fails here
        }
        return index;
    }

    template <FieldName Name>
    static consteval std::size_t Offset() {
        constexpr std::array<std::size_t, kFieldCount> widths{Fields::FieldType::kWidth...};
        std::size_t offset = 0;
        for (std::size_t i = 0; i < Index<Name>(); ++i) {
            offset += widths[i];
        }
        return offset;
    }

    template <FieldName Name>
    using TypeOf = std::tuple_element_t<Index<Name>(), std::tuple<typename Fields::FieldType...>>;

    template <FieldName Name>
    [[nodiscard]] static auto Get(const std::byte* record) {
        return TypeOf<Name>::Load(record + Offset<Name>());
    }

    template <FieldName Name, class Value>
    static void Set(std::byte* record, const Value& value) {
        using Type = TypeOf<Name>;
        Type::Store(record + Offset<Name>(), value);
    }
};

}  // namespace cqsurvey
