#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "cqsurvey/exchange/TextSource.h"

namespace cqsurvey::exchange::dxf {

/// Where the groups of a file come from, for messages. A place is a line, from 1, or in a binary
/// file the offset of a byte.
struct Origin {
    std::string name;
    bool binary = false;

    /// "plan.dxf:12" or "plan.dxf: byte 345".
    [[nodiscard]] std::string Where(std::uint64_t place) const;

    /// Throws ExchangeError with the place and the sentence.
    [[noreturn]] void Fail(std::uint64_t place, std::string_view what) const;
};

/// The smallest piece of a DXF file: a code that says what the value means, and the value.
struct Group {
    int code = 0;
    std::string_view value;  ///< as it is in the file; a number of a binary file as text
    std::uint64_t place = 0;
};

/// Splits a DXF file into its groups. In the text form each group is two lines, in the binary form
/// the code says how long the value is. A value has at most kMostValue bytes, so that a file which
/// is no DXF at all does not end up in memory.
class GroupReader {
 public:
    static constexpr std::size_t kMostValue = std::size_t{1} << 20U;

    /// The source must outlive the reader.
    explicit GroupReader(TextSource& source);
    GroupReader(const GroupReader&) = delete;
    GroupReader& operator=(const GroupReader&) = delete;

    /// Reads the next group, whose value is valid until the next call. Returns false at the end of
    /// the bytes. Throws ExchangeError with the place when the bytes are no group.
    bool Next(Group& group);

    [[nodiscard]] const Origin& GetOrigin() const { return m_origin; }

 private:
    void Begin();
    bool Fill();
    bool Need(std::size_t bytes);
    bool ReadLine(std::string_view& line);
    bool NextOfText(Group& group);
    bool NextOfBinary(Group& group);
    std::string_view TakeBytes(std::size_t count, std::uint64_t place);
    std::string_view TakeString(std::uint64_t place);
    std::string_view TakeWhole(std::size_t bytes, std::uint64_t place);
    std::string_view TakeReal(std::uint64_t place);

    TextSource& m_source;
    Origin m_origin;
    std::string m_buffer;
    std::string m_text;  // of a number of a binary file
    std::size_t m_position = 0;
    std::uint64_t m_place = 0;  // lines or bytes read before m_position
    bool m_begun = false;
    bool m_shortCodes = false;  // one byte each, as the first binary files had
    char m_lineEnd = '\n';
};

}  // namespace cqsurvey::exchange::dxf
