#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

#include "cqsurvey/CodePage.h"
#include "cqsurvey/Types.h"
#include "cqsurvey/exchange/DxfWriter.h"
#include "exchange/dxf/Affine.h"

namespace cqsurvey::exchange::dxf {

/// Writes the groups of a DXF file in its text form. Texts are in UTF-8 in R2018, and before it in
/// the code page of Western Europe; a character that the page lacks is written as \U+XXXX.
class GroupWriter {
 public:
    GroupWriter(DxfVersion version, DxfWriter::Sink sink);
    GroupWriter(const GroupWriter&) = delete;
    GroupWriter& operator=(const GroupWriter&) = delete;

    [[nodiscard]] bool IsR12() const { return m_version == DxfVersion::R12; }

    /// A value that is written as it is.
    void Raw(int code, std::string_view value);
    /// A text in UTF-16; its control characters are written as ^J and the like.
    void Text(int code, std::u16string_view text);
    void Number(int code, double value);
    void Whole(int code, std::int64_t value);
    void Handle(int code, std::uint64_t handle);
    /// Three numbers, in groups `code`, `code` + 10 and `code` + 20.
    void Point(int code, const Vec3& at);
    void PlanPoint(int code, double x, double y);

    /// A handle that was not given out before.
    std::uint64_t NewHandle() { return ++m_lastHandle; }

    /// A marker of the class that the next groups belong to; R12 has none.
    void Subclass(std::string_view name);

    /// The text as the version writes it, without regard to control characters.
    [[nodiscard]] std::string Encode(std::u16string_view text);

    void Flush();

    static constexpr std::uint64_t kFirstFree = 0x100;

 private:
    DxfVersion m_version;
    DxfWriter::Sink m_sink;
    CqCodePage m_page{1252};
    std::string m_buffer;
    std::uint64_t m_lastHandle = kFirstFree;
};

}  // namespace cqsurvey::exchange::dxf
