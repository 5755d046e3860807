#pragma once

#include <cstdint>
#include <string_view>

#include "cqsurvey/CqCadEntity.h"
#include "exchange/drawing/Extras.h"
#include "exchange/dxf/write/Contents.h"
#include "exchange/dxf/write/GroupWriter.h"

namespace cqsurvey::exchange::dxf {

/// What every entity of a file begins and ends with: its handle, layer, colour and line, and the
/// data that only this library reads.
class EntityFrame {
 public:
    EntityFrame(GroupWriter& out, Contents& contents) : m_out(out), m_contents(contents) {}

    /// Begins an entity of the kind `type` that shows `source`, and returns its handle, 0 in R12.
    /// `line` is limits::kByLayer for what has none.
    std::uint64_t Begin(std::string_view type, const CqCadEntity& source, const CString& layer,
                        int line);
    /// Begins a part of another entity, such as a vertex.
    std::uint64_t BeginPart(std::string_view type, std::uint64_t owner, const CString& layer);

    void WriteExtras(const Extras& extras);

    /// The coordinates with 0 for a height that is not a number.
    [[nodiscard]] static Vec3 PlaceOf(const CqCadEntity& entity, bool& noHeight);

 private:
    GroupWriter& m_out;
    Contents& m_contents;
};

}  // namespace cqsurvey::exchange::dxf
