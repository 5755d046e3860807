#include "exchange/dxf/write/EntityFrame.h"

#include <array>
#include <cmath>
#include <cstdlib>

#include "cqsurvey/Limits.h"
#include "cqsurvey/Text.h"
#include "exchange/dxf/LineTypes.h"
#include "exchange/dxf/write/Handles.h"

namespace cqsurvey::exchange::dxf {

std::uint64_t EntityFrame::Begin(std::string_view type, const CqCadEntity& source,
                                 const CString& layer, int line) {
    m_out.Raw(0, type);
    std::uint64_t handle = 0;
    if (!m_out.IsR12()) {
        handle = type == "IMAGE" ? handles::kImage : m_out.NewHandle();
        m_out.Handle(5, handle);
        m_out.Handle(kOwner, handles::kModel);
        m_out.Subclass("AcDbEntity");
    }
    m_out.Text(8, m_contents.LayerName(layer));
    if (line != limits::kByLayer) {
        m_out.Raw(6, LineName(line));
    }
    const int color = source.GetColor();
    if (std::abs(color) < limits::kByLayer) {
        m_out.Whole(62, std::abs(color));
    }
    if (color < 0 && !m_out.IsR12()) {
        m_out.Whole(60, 1);
    }
    return handle;
}

std::uint64_t EntityFrame::BeginPart(std::string_view type, std::uint64_t owner,
                                     const CString& layer) {
    m_out.Raw(0, type);
    std::uint64_t handle = 0;
    if (!m_out.IsR12()) {
        handle = m_out.NewHandle();
        m_out.Handle(5, handle);
        m_out.Handle(kOwner, owner);
        m_out.Subclass("AcDbEntity");
    }
    m_out.Text(8, m_contents.LayerName(layer));
    return handle;
}

void EntityFrame::WriteExtras(const Extras& extras) {
    if (extras.IsEmpty()) {
        return;
    }
    m_out.Raw(1001, kApplication);
    for (const auto& [key, value] : extras.GetAll()) {
        m_out.Text(1000, FromUtf8(key + "=" + value));
    }
}

Vec3 EntityFrame::PlaceOf(const CqCadEntity& entity, bool& noHeight) {
    std::array<double, 3> point{};
    entity.GetPoint(point.data());
    noHeight = std::isnan(point[2]);
    return {point[0], point[1], noHeight ? 0.0 : point[2]};
}

}  // namespace cqsurvey::exchange::dxf
