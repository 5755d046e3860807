#include "plan/PlanReader.h"

#include <array>
#include <cmath>
#include <cstdlib>
#include <memory>
#include <optional>
#include <utility>

#include "cqsurvey/CodeWord.h"
#include "cqsurvey/CqImagePlace.h"
#include "cqsurvey/Limits.h"
#include "cqsurvey/plan/PlanFailure.h"
#include "cqsurvey/plan/PlotOptions.h"
#include "plan/Wording.h"
#include "text/NumberText.h"

namespace cqsurvey::plan {

namespace {

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

/// Where the description goes on after its code word.
std::size_t RestOf(const CString& description, std::u16string_view word) {
    return word.empty() ? 0U
                        : static_cast<std::size_t>(word.data() - description.data()) + word.size();
}

std::u16string_view TrimBlanks(std::u16string_view text) {
    const std::size_t first = text.find_first_not_of(u" \t\r\n");
    return first == std::u16string_view::npos
               ? std::u16string_view()
               : text.substr(first, text.find_last_not_of(u" \t\r\n") - first + 1);
}

std::string OneLine(const CString& text) {
    std::string line;
    for (const std::string& part : SplitLines(text)) {
        line += line.empty() ? part : " " + part;
    }
    return line;
}

}  // namespace

PlanReader::PlanReader(CqSurveyDB& db, const std::optional<CStringList>& layers)
    : m_db(db), m_signs(db) {
    CString name;
    int color = 0;
    int left = db.GetNumLayers();
    for (CqHandle handle = db.GetFirstLayerHandle();
         handle != 0 && left > 0 && db.GetNextLayer(handle, name, color) != 0; --left) {
        const int line = db.GetLayerLine(name);
        if (m_layers.emplace(name, Layer{color, line, !layers, m_names.size()}).second) {
            m_names.push_back({OneLine(name), color, line});
        }
    }
    // Entities without a layer have a place behind the others.
    m_noLayer.place = m_names.size();
    m_names.emplace_back();
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
    m_plan.layers = m_names;
    CVector least;
    CVector largest;
    if (m_db.GetEntityBound(least, largest) != 0) {
        m_plan.jobExtents = {least.GetX(), least.GetY(), largest.GetX(), largest.GetY()};
    }
    ReadSettings();
    ReadDrawn();
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
    return m_forced >= 0                           ? m_forced
           : entity.GetColor() == limits::kByLayer ? layer.color
                                                   : entity.GetColor();
}

void PlanReader::AddPoint(const CqCadEntity& entity, const CVector& at, int color,
                          std::size_t layer) {
    CString description;
    m_db.GetCoordDescription(m_db.GetCoordRecHandleByCadEntityHandle(entity.GetHandle()),
                             description);
    const std::u16string_view word = CodeWord(std::u16string_view(description));
    const CodeSign& sign = m_signs.Find(CString(word), entity.GetCode());
    PlanPoint point{at,
                    HeightOf(entity),
                    OneLine(entity.GetName()),
                    entity.GetCode(),
                    color,
                    OneLine(CString(word)),
                    layer,
                    sign.symbol,
                    sign.size,
                    {}};
    if (!sign.label.empty()) {
        const CString rest(
            TrimBlanks(std::u16string_view(description).substr(RestOf(description, word))));
        // The decimals of heights are an option of the picture, so those stay to be put in.
        point.label = OneLine(
            CodeSigns::MakeLabel(sign.label, entity.GetName(), CString(word), u"{height}", rest));
    }
    m_plan.items.emplace_back(std::move(point));
    ++m_plan.points;
}

int PlanReader::FindLine(const CqCadEntity& entity) const {
    return entity.GetLine() == limits::kByLayer ? FindLayer(entity.GetLayer()).line
                                                : entity.GetLine();
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
    const std::size_t layer = FindLayer(entity.GetLayer()).place;
    if (m_inLine) {
        m_line = PlanLine{{}, *color, FindLine(entity), entity.GetCode(), layer};
        return;
    }
    const CVector at = PlaceOf(entity);
    if (!IsPlace(at)) {
        ++m_plan.unplaced;
        return;
    }
    switch (entity.GetType()) {
        case EntSiPnt:
            AddPoint(entity, at, *color, layer);
            break;
        case EntText: {
            const auto align = static_cast<unsigned>(entity.GetAlign());
            const double height = entity.GetHeight();
            m_plan.items.emplace_back(PlanText{
                at, SplitLines(entity.GetText()), IsUsable(height) && height > 0.0 ? height : 0.0,
                std::isfinite(entity.GetRot()) ? std::fmod(entity.GetRot(), 360.0) : 0.0,
                ToHorizontal(align & 0xFFFFU), ToVertical(align >> 16U), *color, layer,
                IsLabel(entity)});
            break;
        }
        case EntCircle: {
            const double radius = std::fabs(entity.GetRadius());
            if (!IsUsable(radius) || radius == 0.0) {
                ++m_plan.unplaced;
                break;
            }
            m_plan.items.emplace_back(
                PlanCircle{at, radius, *color, FindLine(entity), entity.GetCode(), layer});
            break;
        }
        case EntBitmap: {
            const double width = std::fabs(entity.GetSize().GetX());
            if (!IsUsable(width) || width == 0.0) {
                ++m_plan.unplaced;
                break;
            }
            m_plan.items.emplace_back(
                PlanFrame{at, width, OneLine(entity.GetResName()), *color, layer});
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
        PlanLine rest{{}, m_line->color, m_line->line, m_line->code, m_line->layer};
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
    m_plan.ownScale = m_plan.mapScale != usual.mapScale;
    m_plan.monotone = m_forced >= 0;
    const CqJobSystem system(m_db);
    m_plan.unit = system.GetUnit();
    m_plan.angles = system.GetAngles().value_or(usual.angles);
    m_plan.system = OneLine(system.GetSystem());
    constexpr double kLargestSymbol = 1000.0;
    const double size = m_db.GetSiPointSize();
    m_plan.symbolSize = size > 0.0 && size <= kLargestSymbol ? size : usual.symbolSize;
    ReadTitle();
    ReadWeights();
}

void PlanReader::ReadDrawn() {
    m_labelHeight = CqJobCodes(m_db).GetTextHeight();
    try {
        for (const CqDrawn& drawn : CqDrawnList(m_db).Get()) {
            m_drawn.insert(drawn.handle);
        }
    } catch (const CqSurveyException&) {
        // Without the list, every text is drawn in its own size.
        m_drawn.clear();
    }
}

bool PlanReader::IsLabel(const CqCadEntity& text) const {
    return text.GetHeight() == m_labelHeight && text.GetRot() == 0.0 && text.GetAlign() == 0 &&
           m_drawn.contains(text.GetHandle());
}

void PlanReader::ReadTitle() {
    const CqJobTitle title(m_db);
    const auto get = [&](const char16_t* key) { return OneLine(title.Get(key)); };
    m_plan.title = {.title = get(CqJobTitle::kTitle),
                    .client = get(CqJobTitle::kClient),
                    .place = get(CqJobTitle::kPlace),
                    .surveyedBy = get(CqJobTitle::kSurveyedBy),
                    .drawnBy = get(CqJobTitle::kDrawnBy),
                    .date = get(CqJobTitle::kDate),
                    .drawingNumber = get(CqJobTitle::kDrawingNumber),
                    .heightSystem = get(CqJobTitle::kHeightSystem)};
}

void PlanReader::ReadWeights() {
    constexpr const char16_t* kSection = u"LINEWEIGHTS";
    CStringList keys;
    m_db.GetSettingsKeyList(kSection, keys);
    for (const CString& key : keys) {
        CString value;
        m_db.GetSettingsString(kSection, key, value, CString());
        const ParsedNumber width = ParseNumber(ToUtf8(value));
        if (width.fault == nullptr && IsLineWidth(width.value)) {
            m_plan.weights.push_back({OneLine(key), width.value});
        }
    }
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
    if (const std::optional<CqImagePlace> place = CqImagePlace::Of(m_db)) {
        image.centre = {place->east, place->north};
        image.size = {place->width, place->height};
        image.rotation = place->rotation;
    }
    if (!IsPlace(image.centre) || !IsPlace(image.size) || image.size.GetX() == 0.0 ||
        !std::isfinite(image.rotation)) {
        ++m_plan.unplaced;
        return;
    }
    image.bytes.assign(data, data + length);
    m_plan.image = std::move(image);
}

}  // namespace cqsurvey::plan
