#include "exchange/dxf/write/Contents.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>

#include "cqsurvey/Limits.h"
#include "cqsurvey/Ranges.h"
#include "cqsurvey/Text.h"
#include "cqsurvey/exchange/ExchangeError.h"
#include "text/Printable.h"

namespace cqsurvey::exchange::dxf {

namespace {

constexpr int kInk = 7;
const CString kLayerZero = u"0";

}  // namespace

Contents::Contents(CqSurveyDB& db, const DxfWriteOptions& options, DrawingReport& report)
    : m_db(db), m_options(options), m_report(report) {
    ReadLayers();
    const auto there = static_cast<std::size_t>(db.GetNumCadEntities());
    std::size_t walked = 0;
    for (const CqCadEntityPtr& entity : Entities(db)) {
        Add(*entity);
        ++walked;
    }
    if (walked != there) {
        throw ExchangeError(fmt::format(
            "only {} of {} entities of the job can be reached; see cqjob check", walked, there));
    }
    int scale = 0;
    db.GetSettingsInt(CqSurveyDB::m_SettingsSection, u"Mapscale", scale, 0);
    // Two millimetres on paper.
    constexpr double kOnPaper = 0.002;
    constexpr int kUsualScale = 500;
    m_pointTextHeight = kOnPaper * (scale > 0 ? scale : kUsualScale);
}

void Contents::AddLayer(const CString& name, int color, int line) {
    if (!m_layerPlaces.emplace(name, m_layers.size()).second) {
        return;
    }
    bool changed = false;
    const CString& safe = m_layerNames.Find(name, changed);
    if (changed) {
        m_report.Note(fmt::format("the layer {} is called {} in the file", Quoted(ToUtf8(name)),
                                  Quoted(ToUtf8(safe))));
    }
    if (std::abs(color) < 1 || std::abs(color) > limits::kHighestPaletteColor) {
        m_report.Note(fmt::format("the layer {} has colour {}, which became {}",
                                  Quoted(ToUtf8(name)), color, color < 0 ? -kInk : kInk));
        color = color < 0 ? -kInk : kInk;
    }
    m_layers.push_back({name, color, line});
    m_lines.insert(line);
}

void Contents::ReadLayers() {
    // Every file has a layer 0.
    AddLayer(kLayerZero,
             m_db.GetLayerColor(kLayerZero) == 0 ? kInk : m_db.GetLayerColor(kLayerZero),
             m_db.GetLayerLine(kLayerZero));
    CString name;
    int color = 0;
    int left = m_db.GetNumLayers();
    for (CqHandle handle = m_db.GetFirstLayerHandle();
         handle != 0 && left > 0 && m_db.GetNextLayer(handle, name, color) != 0; --left) {
        AddLayer(name, color, m_db.GetLayerLine(name));
    }
}

CString Contents::PointLayer(const CString& layer, int code) const {
    return m_options.layersByCode && code != 0 ? FromUtf8(fmt::format("CODE_{}", code)) : layer;
}

void Contents::Widen(const Vec3& at) {
    if (!std::isfinite(at.x) || !std::isfinite(at.y)) {
        return;
    }
    const Vec3 whole{at.x, at.y, std::isfinite(at.z) ? at.z : 0.0};
    if (!m_any) {
        m_least = m_largest = whole;
        m_any = true;
        return;
    }
    m_least = {std::min(m_least.x, whole.x), std::min(m_least.y, whole.y),
               std::min(m_least.z, whole.z)};
    m_largest = {std::max(m_largest.x, whole.x), std::max(m_largest.y, whole.y),
                 std::max(m_largest.z, whole.z)};
}

void Contents::Add(const CqCadEntity& entity) {
    std::array<double, 3> point{};
    entity.GetPoint(point.data());
    const Vec3 at{point[0], point[1], point[2]};
    if (entity.GetType() == EntPline) {
        CVector least;
        CVector largest;
        entity.GetBound(least, largest);
        if (least.GetX() <= largest.GetX() && least.GetY() <= largest.GetY()) {
            // Its heights are those of its vertices.
            const double z = m_any ? m_least.z : 0.0;
            Widen({least.GetX(), least.GetY(), z});
            Widen({largest.GetX(), largest.GetY(), z});
        }
    } else if (entity.GetType() == EntCircle) {
        const double r = std::fabs(entity.GetRadius());
        Widen({at.x - r, at.y - r, at.z});
        Widen({at.x + r, at.y + r, at.z});
    } else {
        Widen(at);
    }
    if (entity.GetType() == EntPline || entity.GetType() == EntCircle) {
        m_lines.insert(entity.GetLine());
    }
    if (entity.GetType() == EntText && !entity.GetStyle().empty() &&
        m_styles.insert(entity.GetStyle()).second) {
        bool changed = false;
        const CString& safe = m_styleNames.Find(entity.GetStyle(), changed);
        if (changed) {
            m_report.Note(fmt::format("the text style {} is called {} in the file",
                                      Quoted(ToUtf8(entity.GetStyle())), Quoted(ToUtf8(safe))));
        }
    }
    if (entity.GetType() == EntVertex && entity.GetMcadSiPointHandle() != 0) {
        ++m_links;
    }
    if (entity.GetType() != EntVertex) {
        AddLayer(entity.GetLayer(), kInk, 0);
    }
    if (entity.GetType() == EntSiPnt && m_options.layersByCode && entity.GetCode() != 0) {
        constexpr int kColors = 6;
        AddLayer(PointLayer(entity.GetLayer(), entity.GetCode()),
                 1 + static_cast<int>(static_cast<unsigned>(entity.GetCode()) % kColors), 0);
    }
}

}  // namespace cqsurvey::exchange::dxf
