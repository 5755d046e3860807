#include "exchange/drawing/LayerMap.h"

#include <fmt/format.h>

#include <cstddef>
#include <utility>

#include "cqsurvey/Limits.h"
#include "cqsurvey/Text.h"
#include "cqsurvey/exchange/ExchangeError.h"
#include "exchange/PointNames.h"
#include "exchange/drawing/Names.h"
#include "text/Printable.h"

namespace cqsurvey::exchange {

namespace {

constexpr int kInk = 7;

}  // namespace

LayerMap::LayerMap(CqSurveyDB& db, Decode decode, DrawingReport& report)
    : m_db(db),
      m_decode(std::move(decode)),
      m_report(report),
      m_fresh(db.GetNumCadEntities() == 0) {}

void LayerMap::Define(std::string_view bytes, int color, int line) {
    Remember(bytes, Add(m_decode(bytes), color, line, true));
}

const LayerMap::Layer& LayerMap::Find(std::string_view bytes) {
    const std::uint64_t before = m_report.layers;
    const Layer& layer = Use(bytes);
    if (m_report.layers != before) {
        m_report.Note(
            fmt::format("the layer {} is not in the file's table of layers", Quoted(layer.shown)));
    }
    return layer;
}

const LayerMap::Layer& LayerMap::Use(std::string_view bytes) {
    if (const auto found = m_byBytes.find(bytes); found != m_byBytes.end()) {
        return *found->second;
    }
    const Layer& layer = Add(m_decode(bytes), kInk, 0, false);
    Remember(bytes, layer);
    return layer;
}

void LayerMap::Remember(std::string_view bytes, const Layer& layer) {
    // One layer may be written in many mixtures of letter case.
    constexpr std::size_t kMost = 100'000;
    if (m_byBytes.size() < kMost) {
        m_byBytes.emplace(bytes, &layer);
    }
}

bool LayerMap::IsThere(const CString& name) {
    // A layer's colour may be 0, which is also the answer for a layer that is not there.
    return m_db.GetLayerColor(name) != 0 || m_db.EditLayerColor(name, 0) != 0;
}

CString LayerMap::MakeName(const CString& name) {
    CString cut = CutName(name, limits::kLayerName);
    if (cut == name) {
        return name;
    }
    // Each search goes on where the one before it ended: thousands of names may begin alike.
    int& next = m_next.try_emplace(cut, 2).first->second;
    for (; IsThere(cut); ++next) {
        const CString end = FromUtf8(fmt::format("_{}", next));
        cut = CutName(name, limits::kLayerName - end.size()) + end;
    }
    m_report.Note(fmt::format(
        "the name of the layer {} is not one that a job can keep (at most {} characters), cut to "
        "{}",
        Quoted(ToUtf8(name)), limits::kLayerName, Quoted(ToUtf8(cut))));
    return cut;
}

const LayerMap::Layer& LayerMap::Add(const CString& name, int color, int line, bool defined) {
    const auto [place, added] = m_layers.try_emplace(Upper(ToUtf8(name)));
    if (!added) {
        return place->second;
    }
    Layer& layer = place->second;
    layer.name = MakeName(name);
    layer.shown = ToUtf8(layer.name);
    if (!IsThere(layer.name)) {
        if (m_db.AddLayer(layer.name, color, line) == 0) {
            throw ExchangeError(
                fmt::format("the layer {} cannot be added: the job has as many as "
                            "it can hold",
                            Quoted(layer.shown)));
        }
        ++m_report.layers;
    } else if (m_fresh && defined) {
        m_db.EditLayerColor(layer.name, color);
        m_db.EditLayerLine(layer.name, line);
    } else if (defined &&
               (m_db.GetLayerColor(layer.name) != color || m_db.GetLayerLine(layer.name) != line)) {
        m_report.Note(
            fmt::format("the job's layer {} keeps its colour, line and visibility, which differ "
                        "from the file's",
                        Quoted(layer.shown)));
    }
    return layer;
}

}  // namespace cqsurvey::exchange
