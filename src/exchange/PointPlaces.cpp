#include "exchange/PointPlaces.h"

#include <fmt/format.h>

#include "cqsurvey/Limits.h"
#include "cqsurvey/Text.h"
#include "cqsurvey/exchange/ExchangeError.h"
#include "exchange/PointNames.h"
#include "text/Printable.h"

namespace cqsurvey::exchange {

namespace {

/// Black on white.
constexpr int kInk = 7;
constexpr int kSolid = 0;

CString FirstWord(const CString& text) {
    const std::size_t begin = text.find_first_not_of(u" \t\r\n");
    if (begin == CString::npos) {
        return {};
    }
    return text.substr(begin, text.find_first_of(u" \t\r\n", begin) - begin);
}

}  // namespace

PointPlaces::PointPlaces(CqSurveyDB& db, const ImportOptions& options)
    : m_db(db),
      m_options(options),
      m_group(options.group.empty() ? db.GetCurrentGroup() : options.group),
      m_before(db.GetCurrentLayer()) {
    if (!options.group.empty()) {
        UseGroup(options.group);
    }
}

CString PointPlaces::FindLayer(const FieldTextLine& line) const {
    if (line.layer) {
        return *line.layer;
    }
    if (m_options.layerFromCode) {
        if (line.code != 0) {
            return FromUtf8(std::to_string(line.code));
        }
        if (const CString word = FirstWord(line.description); !word.empty()) {
            return CutName(word, limits::kLayerName);
        }
    }
    return m_options.layer;
}

void PointPlaces::Choose(const FieldTextLine& line) {
    UseGroup(line.group && !line.group->empty() ? *line.group : m_group);
    const CString layer = FindLayer(line);
    UseLayer(layer.empty() ? m_before : layer);
}

void PointPlaces::Move(CqHandle point, const FieldTextLine& line) {
    if (line.group) {
        std::uint16_t id = 0;
        if (!line.group->empty()) {
            UseGroup(*line.group);
            id = m_db.GetGroupID(*line.group);
        }
        m_db.EditCoordRecGroup(point, id);
    }
    if (const CString layer = FindLayer(line); !layer.empty()) {
        AddLayer(layer);
        m_db.EditLayer(m_db.GetCadEntityHandleByCoordRecHandle(point), layer);
    }
}

void PointPlaces::Finish() {
    UseGroup(m_group);
    UseLayer(m_before);
}

void PointPlaces::UseGroup(const CString& name) {
    if (m_db.GetCurrentGroup() == name || m_db.SetCurrentGroup(name) != 0) {
        return;
    }
    if (m_db.AddGroup(name) == 0 || m_db.SetCurrentGroup(name) == 0) {
        throw ExchangeError(fmt::format("{}the group {} could not be added",
                                        NamePrefix(m_options.jobName), Quoted(ToUtf8(name))));
    }
}

void PointPlaces::AddLayer(const CString& name) {
    m_db.AddLayer(name, kInk, kSolid);
}

void PointPlaces::UseLayer(const CString& name) {
    if (m_db.GetCurrentLayer() == name || m_db.SetCurrentLayer(name) != 0) {
        return;
    }
    AddLayer(name);
    if (m_db.SetCurrentLayer(name) == 0) {
        throw ExchangeError(fmt::format("{}the layer {} could not be added",
                                        NamePrefix(m_options.jobName), Quoted(ToUtf8(name))));
    }
}

}  // namespace cqsurvey::exchange
