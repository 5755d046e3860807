#include "plan/PlanReader.h"

#include <array>
#include <cmath>
#include <cstdlib>
#include <memory>
#include <utility>

#include "cqsurvey/CodeWord.h"
#include "cqsurvey/plan/PlanFailure.h"
#include "cqsurvey/plan/PlotOptions.h"
#include "plan/LineType.h"
#include "plan/Wording.h"

namespace cqsurvey::plan {

namespace {

constexpr int kColorOfLayer = 256;

/// True for a coordinate or a length small enough to compute with.
bool IsUsable(double value) {
    return std::fabs(value) <= kFarthest;
}

bool IsPlace(const CVector& at) {
    return IsUsable(at.GetX()) && IsUsable(at.GetY());
}

CVector PlaceOf(const CqCadEntity& entity) {
    std::array<double, 3> point{};
    entity.GetPoint(point.data());
    return {point[0], point[1]};
}

double HeightOf(const CqCadEntity& entity) {
    std::array<double, 3> point{};
    entity.GetPoint(point.data());
    return point[2];
}

/// The lines of a text; other control characters become blanks.
std::vector<std::string> SplitLines(const CString& text) {
    std::vector<std::string> lines;
    CString line;
    for (const char16_t c : text) {
        if (c == u'\n') {
            lines.push_back(ToUtf8(line));
            line.clear();
        } else if (c != u'\r') {
            line += c < u' ' || c == u'\x7F' ? u' ' : c;
        }
    }
    lines.push_back(ToUtf8(line));
    return lines;
}

HorizontalAlign ToHorizontal(unsigned align) {
    return align == 1   ? HorizontalAlign::Centre
           : align == 2 ? HorizontalAlign::Right
                        : HorizontalAlign::Left;
}

VerticalAlign ToVertical(unsigned align) {
    return align == 1   ? VerticalAlign::Bottom
           : align == 2 ? VerticalAlign::Middle
           : align == 3 ? VerticalAlign::Top
                        : VerticalAlign::Baseline;
}

std::string OneLine(const CString& text) {
    std::string line;
    for (const std::string& part : SplitLines(text)) {
        line += line.empty() ? part : " " + part;
    }
    return line;
}

}  // namespace

PlanReader::PlanReader(CqSurveyDB& db, const std::optional<CStringList>& layers) : m_db(db) {
    CString name;
    int color = 0;
    int left = db.GetNumLayers();
    for (CqHandle handle = db.GetFirstLayerHandle();
         handle != 0 && left > 0 && db.GetNextLayer(handle, name, color) != 0; --left) {
        m_layers.emplace(name, Layer{color, db.GetLayerLine(name), !layers});
    }
    if (layers) {
        m_onlySome = true;
        m_noLayer.wanted = false;
        for (const CString& layer : *layers) {
            const auto found = m_layers.find(layer);
            if (found == m_layers.end()) {
                throw PlanFailure(error::kInvalidArgument,
                                  "there is no layer " + Quoted(ToUtf8(layer)));
            }
            found->second.wanted = true;
        }
    }
}

Plan PlanReader::Read(const std::function<void(std::size_t)>& progress) {
    m_plan = Plan();
    CVector least;
    CVector largest;
    if (m_db.GetEntityBound(least, largest) != 0) {
        m_plan.jobExtents = {least.GetX(), least.GetY(), largest.GetX(), largest.GetY()};
    }
    ReadSettings();
    const auto there = static_cast<std::size_t>(m_db.GetNumCadEntities());
    std::size_t walked = 0;
    for (const CqCadEntityPtr& entity : Entities(m_db)) {
        Add(*entity);
        ++walked;
        if (progress) {
            progress(walked);
        }
    }
    EndLine();
    if (m_onlySome) {
        m_plan.jobExtents = m_plan.FindExtents();
    }
    if (walked != there) {
        throw PlanFailure(error::kDamaged, "only " + std::to_string(walked) + " of " +
                                               std::to_string(there) + " entities can be reached");
    }
    ReadImage();
    return std::move(m_plan);
}

const PlanReader::Layer& PlanReader::FindLayer(const CString& name) const {
    const auto found = m_layers.find(name);
    return found == m_layers.end() ? m_noLayer : found->second;
}

std::optional<int> PlanReader::FindColor(const CqCadEntity& entity) {
    const Layer& layer = FindLayer(entity.GetLayer());
    if (!layer.wanted) {
        return std::nullopt;
    }
    if (layer.color < 0 || entity.GetColor() < 0) {
        ++m_plan.hidden;
        return std::nullopt;
    }
    return m_forced >= 0                        ? m_forced
           : entity.GetColor() == kColorOfLayer ? layer.color
                                                : entity.GetColor();
}

std::string PlanReader::FindCodeWord(const CqCadEntity& point) const {
    CString description;
    m_db.GetCoordDescription(m_db.GetCoordRecHandleByCadEntityHandle(point.GetHandle()),
                             description);
    return OneLine(CString(CodeWord(std::u16string_view(description))));
}

int PlanReader::FindLine(const CqCadEntity& entity) const {
    return entity.GetLine() == kLineOfLayer ? FindLayer(entity.GetLayer()).line : entity.GetLine();
}

void PlanReader::Add(const CqCadEntity& entity) {
    if (entity.GetType() == EntVertex) {
        AddVertex(entity);
        return;
    }
    EndLine();
    const std::optional<int> color = FindColor(entity);
    m_inLine = entity.GetType() == EntPline;
    if (!color) {
        return;
    }
    if (m_inLine) {
        m_line = PlanLine{{}, *color, FindLine(entity)};
        return;
    }
    const CVector at = PlaceOf(entity);
    if (!IsPlace(at)) {
        ++m_plan.unplaced;
        return;
    }
    switch (entity.GetType()) {
        case EntSiPnt:
            m_plan.items.emplace_back(PlanPoint{at, HeightOf(entity), OneLine(entity.GetName()),
                                                entity.GetCode(), *color, FindCodeWord(entity)});
            ++m_plan.points;
            break;
        case EntText: {
            const auto align = static_cast<unsigned>(entity.GetAlign());
            const double height = entity.GetHeight();
            m_plan.items.emplace_back(PlanText{
                at, SplitLines(entity.GetText()), IsUsable(height) && height > 0.0 ? height : 0.0,
                std::isfinite(entity.GetRot()) ? std::fmod(entity.GetRot(), 360.0) : 0.0,
                ToHorizontal(align & 0xFFFFU), ToVertical(align >> 16U), *color});
            break;
        }
        case EntCircle: {
            const double radius = std::fabs(entity.GetRadius());
            if (!IsUsable(radius) || radius == 0.0) {
                ++m_plan.unplaced;
                break;
            }
            m_plan.items.emplace_back(PlanCircle{at, radius, *color, FindLine(entity)});
            break;
        }
        case EntBitmap: {
            const double width = std::fabs(entity.GetSize().GetX());
            if (!IsUsable(width) || width == 0.0) {
                ++m_plan.unplaced;
                break;
            }
            m_plan.items.emplace_back(PlanFrame{at, width, OneLine(entity.GetResName()), *color});
            break;
        }
        case EntPline:
        case EntVertex:
            break;
    }
}

void PlanReader::AddVertex(const CqCadEntity& entity) {
    if (!m_inLine) {
        ++m_plan.unplaced;
        return;
    }
    if (!m_line) {
        return;
    }
    const CVector at = PlaceOf(entity);
    if (!IsPlace(at)) {
        ++m_plan.unplaced;
        PlanLine rest{{}, m_line->color, m_line->line};
        EndLine();
        m_inLine = true;
        m_line = std::move(rest);
        return;
    }
    m_line->vertices.push_back({at, entity.GetBulge()});
}

void PlanReader::EndLine() {
    if (m_line && m_line->vertices.size() > 1) {
        m_plan.items.emplace_back(std::move(*m_line));
    }
    m_line.reset();
    m_inLine = false;
}

void PlanReader::ReadSettings() {
    int color = -1;
    m_forced = m_db.IsDrawingForceMonotone(color) != 0 ? color : -1;
    m_plan.background = BackgroundColor(m_db.GetBackgroundColor());
    const Plan usual;
    int mapScale = 0;
    m_db.GetSettingsInt(CqSurveyDB::m_SettingsSection, u"Mapscale", mapScale, 0);
    m_plan.mapScale = mapScale > 0 ? mapScale : usual.mapScale;
    const CqJobSystem system(m_db);
    m_plan.unit = system.GetUnit();
    m_plan.system = OneLine(system.GetSystem());
    constexpr double kLargestSymbol = 1000.0;
    const double size = m_db.GetSiPointSize();
    m_plan.symbolSize = size > 0.0 && size <= kLargestSymbol ? size : usual.symbolSize;
}

void PlanReader::ReadImage() {
    if (m_db.IsBackgroundImageFile() == 0) {
        return;
    }
    std::uint8_t* data = nullptr;
    std::uint32_t length = 0;
    int type = 0;
    PlanImage image;
    if (m_db.ReadBackgroundImageFile(data, length, type, image.centre, image.size,
                                     image.rotation) == 0) {
        return;
    }
    const std::unique_ptr<std::uint8_t, decltype(&std::free)> owner(data, &std::free);
    int grey = 0;
    m_db.GetBackgroundImageSettings(image.brightness, image.contrast, grey);
    image.grey = grey != 0;
    if (!IsPlace(image.centre) || !IsPlace(image.size) || image.size.GetX() == 0.0 ||
        !std::isfinite(image.rotation)) {
        ++m_plan.unplaced;
        return;
    }
    image.bytes.assign(data, data + length);
    m_plan.image = std::move(image);
}

}  // namespace cqsurvey::plan
