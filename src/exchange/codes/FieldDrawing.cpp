#include "cqsurvey/exchange/FieldDrawing.h"

#include <cqsurvey/cqsurvey.h>
#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <set>
#include <utility>

#include "cqsurvey/exchange/ExchangeError.h"
#include "exchange/codes/CodeWords.h"
#include "exchange/codes/DrawnEntity.h"
#include "exchange/codes/FieldCodes.h"
#include "exchange/codes/FieldPoint.h"
#include "exchange/codes/FigureBuilder.h"
#include "exchange/codes/FigureShaper.h"
#include "exchange/codes/JobDrawer.h"
#include "exchange/codes/LabelText.h"
#include "exchange/codes/NameOrder.h"
#include "text/NumberText.h"

namespace cqsurvey::exchange {

namespace {

constexpr double kToleranceInMetres = 0.05;
constexpr int kInk = 7;
constexpr std::uint64_t kProgressEvery = 1000;

/// The drawing of one job.
class Drawing {
 public:
    Drawing(const DrawOptions& options, CqSurveyDB& db) : m_options(options), m_db(db) {}

    CodeReport Draw() {
        ReadTable();
        const CodeWords words = CodeWords::FromText(ToUtf8(m_table.GetWords()));
        JobDrawer drawer(m_db);
        if (!m_options.redraw && drawer.HasDrawing()) {
            throw ExchangeError("the job was drawn from its codes before; it can be redrawn");
        }
        FindSizes();
        ReadPoints();
        CqBatch batch(m_db);
        KeepCodes();
        ReadCodes(words);
        ShapeFigures();
        MakeLayers();
        MarkPoints();
        drawer.Draw(m_entities, m_report);
        if (m_report.HasChanged()) {
            batch.Commit();
        }
        m_report.CountFates();
        return std::move(m_report);
    }

 private:
    /// What a point's own entity looks like, and what its codes make of it.
    struct PointState {
        CString description;
        CString layer;
        int code = 0;
        bool isNumber = false;        // the feature code is what the crew wrote, and stays
        const CqCode* row = nullptr;  // of its first code that the table has
    };

    void ReadTable() {
        if (m_options.codes) {
            m_table = *m_options.codes;
        } else {
            std::size_t damaged = 0;
            m_table = CqJobCodes(m_db).Get(&damaged);
            m_report.damagedRows = damaged;
        }
        if (m_options.words && m_table.SetWords(FromUtf8(*m_options.words)) == 0) {
            throw OptionError("the words are too long");
        }
        if (m_table.IsEmpty()) {
            throw ExchangeError("there is no code table to draw by");
        }
    }

    void KeepCodes() {
        if (!m_options.codes || !m_options.keepCodes) {
            return;
        }
        CqJobCodes keeper(m_db);
        m_report.codesKept = !(keeper.Get() == m_table);
        if (keeper.Set(m_table) == 0) {
            throw ExchangeError("the code table does not fit into the job's settings");
        }
    }

    void FindSizes() {
        const std::optional<CqLengthUnit> unit = CqJobSystem(m_db).GetUnit();
        const double metre = unit ? 1.0 / GetMetres(*unit) : 1.0;
        m_tolerance = m_options.arcTolerance.value_or(kToleranceInMetres * metre);
        m_textHeight = m_options.textHeight.value_or(CqJobCodes(m_db).GetTextHeight());
    }

    void ReadPoints() {
        const auto count = static_cast<std::size_t>(m_db.GetNumCoordRecs());
        m_points.reserve(count);
        m_states.reserve(count);
        for (const auto& [handle, record] : Points(m_db)) {
            Advance(m_points.size(), count);
            std::array<double, 3> coords{};
            record.GetPoint(coords.data());
            const CqHandle entity = m_db.GetCadEntityHandleByCoordRecHandle(handle);
            m_points.push_back(
                {handle, entity, {coords[0], coords[1]}, coords[2], ToUtf8(record.GetPtName())});
            PointState& state = m_states.emplace_back();
            state.code = record.GetCode();
            m_db.GetCoordDescription(handle, state.description);
            CqHandle next = entity;
            CqCadEntity* read = nullptr;
            m_db.GetNextCadEntity(next, read);
            if (const CqCadEntityPtr point{read}) {
                state.layer = point->GetLayer();
            }
        }
        if (m_points.size() != count) {
            throw ExchangeError(fmt::format("the point after record {} cannot be read",
                                            m_points.empty() ? 0U : m_points.back().handle));
        }
        m_report.points = count;
        m_order.resize(count);
        for (std::size_t i = 0; i < count; ++i) {
            m_order[i] = i;
        }
        if (m_options.sequence == PointSequence::Names) {
            std::stable_sort(m_order.begin(), m_order.end(), [&](std::size_t a, std::size_t b) {
                return ComesBefore(m_points[a].name, m_points[b].name);
            });
        }
    }

    void Advance(std::uint64_t done, std::uint64_t whole) const {
        if (m_options.progress && done % kProgressEvery == 0) {
            m_options.progress(done, whole);
        }
    }

    CodeRow& AddRow(std::size_t point, std::string code) {
        CodeRow& row = m_report.rows.emplace_back();
        row.point = m_points[point].handle;
        row.name = m_points[point].name;
        row.code = std::move(code);
        return row;
    }

    void ReadCodes(const CodeWords& words) {
        FieldCodes codes(m_table, words);
        FieldDescription description;
        for (const std::size_t i : m_order) {
            codes.Parse(TextOf(i), description);
            if (description.codes.empty() && description.stray.empty()) {
                ++m_report.withoutCode;
            }
            for (const FieldCode& code : description.codes) {
                ReadCode(i, code);
            }
            for (std::string& stray : description.stray) {
                CodeRow& row = AddRow(i, std::move(stray));
                row.fate = CodeFate::Unknown;
                row.reason = "a control word without a line's code";
            }
        }
        m_figures = m_builder.Finish();
    }

    /// The description of a point. Where an import took the only word of it for a feature code, as
    /// it does with "50", that is the description.
    std::string TextOf(std::size_t i) {
        PointState& state = m_states[i];
        if (!state.description.empty() || state.code == 0) {
            return ToUtf8(state.description);
        }
        std::string code = std::to_string(state.code);
        state.isNumber = m_table.FindExact(FromUtf8(code)) != nullptr;
        return state.isNumber ? code : std::string();
    }

    void ReadCode(std::size_t i, const FieldCode& code) {
        const std::size_t index = m_report.rows.size();
        CodeRow& row = AddRow(i, code.word);
        if (code.row == nullptr) {
            row.fate = CodeFate::Unknown;
            row.reason = "the code table does not have it";
            return;
        }
        if (CqCodeTable::IsDefault(*code.row)) {
            row.reason = "the code table has it only by its default row";
        }
        PointState& state = m_states[i];
        state.row = state.row == nullptr ? code.row : state.row;
        if (!std::isfinite(m_points[i].place.GetX()) || !std::isfinite(m_points[i].place.GetY())) {
            row.fate = CodeFate::Incomplete;
            row.reason = "the point has no position";
            return;
        }
        if (code.IsLine()) {
            FieldCode own = code;
            if (IsTooFar(i, code)) {
                own.controls.begin = true;
                m_found.push_back({index, CodeFate::Suspicious,
                                   "the point before is too far away, so a figure begins here"});
            }
            if (!m_builder.Add(i, index, own)) {
                m_found.push_back({index, CodeFate::Suspicious,
                                   "there is no figure to continue, so one begins here"});
            }
            return;
        }
        DrawPointCode(i, code, row);
    }

    [[nodiscard]] bool IsTooFar(std::size_t i, const FieldCode& code) const {
        const std::optional<std::size_t> last = m_builder.FindLast(code.figure);
        return m_options.longest && last && !code.controls.begin &&
               (m_points[i].place - m_points[*last].place).UNorm() > *m_options.longest;
    }

    void DrawPointCode(std::size_t i, const FieldCode& code, CodeRow& row) {
        const CqCode& how = *code.row;
        if (how.kind == CqCodeKind::Circle) {
            const ParsedNumber own = ParseNumber(std::string_view(code.text).substr(
                0, std::min(code.text.find(' '), code.text.size())));
            const double radius = own.fault == nullptr && own.value > 0.0 ? own.value : how.size;
            if (!(radius > 0.0)) {
                row.fate = CodeFate::Incomplete;
                row.reason = "neither the code table nor the description has a radius";
                return;
            }
            DrawnEntity& circle = AddEntity(EntCircle, how, i);
            circle.coords = Coords(i);
            circle.radius = radius;
            row.what = "circle by radius";
        } else if (how.kind == CqCodeKind::Text) {
            const CString& pattern = how.text.empty() ? how.label : how.text;
            if (!AddText(pattern, code.word, code.text, how, i, 0.0)) {
                row.fate = CodeFate::Incomplete;
                row.reason = "there is nothing to write";
                return;
            }
            row.what = "text";
        }
        row.fate = row.what.empty() ? CodeFate::PointOnly : CodeFate::Drawn;
        if (how.kind != CqCodeKind::Text && !how.label.empty()) {
            AddLabel(code.word, code.text, how, i);
            row.what = row.what.empty() ? "label" : row.what;
            row.fate = CodeFate::Drawn;
        }
    }

    [[nodiscard]] std::array<double, 3> Coords(std::size_t i) const {
        return {m_points[i].place.GetX(), m_points[i].place.GetY(), m_points[i].height};
    }

    DrawnEntity& AddEntity(EntType type, const CqCode& how, std::size_t point) {
        DrawnEntity& entity = m_entities.emplace_back();
        entity.type = type;
        entity.layer = how.layer.empty() ? LayerOf(point) : how.layer;
        entity.color = how.color;
        entity.line = type == EntText ? 0 : how.line;
        entity.code = how.number;
        m_report.circles += type == EntCircle ? 1U : 0U;
        m_report.texts += type == EntText ? 1U : 0U;
        m_report.lines += type == EntPline ? 1U : 0U;
        return entity;
    }

    [[nodiscard]] CString LayerOf(std::size_t point) const {
        const PointState& state = m_states[point];
        const bool gets = state.row != nullptr && !state.row->layer.empty();
        const CString& layer = gets ? state.row->layer : state.layer;
        return layer.empty() ? CString(u"0") : layer;
    }

    void AddLabel(const std::string& word, const std::string& text, const CqCode& how,
                  std::size_t point) {
        // Up and to the right of the symbol.
        constexpr double kAway = 0.6;
        static_cast<void>(AddText(how.label, word, text, how, point, kAway));
    }

    /// False when the pattern comes to nothing.
    bool AddText(const CString& pattern, const std::string& word, const std::string& text,
                 const CqCode& how, std::size_t point, double away) {
        const FieldPoint& at = m_points[point];
        CString wide = FillLabel(pattern, {at.name, word, at.height, text});
        if (wide.empty()) {
            return false;
        }
        DrawnEntity& entity = AddEntity(EntText, how, point);
        const bool ownSize = how.kind == CqCodeKind::Text && how.size > 0.0;
        entity.height = ownSize ? how.size : m_textHeight;
        entity.coords = Coords(point);
        entity.coords[0] += away * entity.height;
        entity.coords[1] += away * entity.height;
        entity.text = std::move(wide);
        return true;
    }

    void ShapeFigures() {
        const FigureShaper shaper(m_points, m_tolerance,
                                  [this](const std::string& name) { return FindPoint(name); });
        for (const Figure& figure : m_figures) {
            ShapedFigure shaped = shaper.Shape(figure);
            for (const FigurePoint& point : figure.points) {
                CodeRow& row = m_report.rows[point.row];
                row.what = shaped.what;
                row.fate = CodeFate::Drawn;
            }
            const CqCode& how = *figure.row;
            const std::size_t first = figure.points.front().point;
            for (const FigurePath& path : shaped.paths) {
                AddPath(path, how, first);
            }
            if (shaped.circle) {
                DrawnEntity& circle = AddEntity(EntCircle, how, first);
                circle.coords = {shaped.circle->centre.GetX(), shaped.circle->centre.GetY(),
                                 shaped.circle->height};
                circle.radius = shaped.circle->radius;
            }
            if (!how.label.empty() && !shaped.what.empty()) {
                AddLabel(figure.word, {}, how, first);
            }
            std::move(shaped.findings.begin(), shaped.findings.end(), std::back_inserter(m_found));
        }
        for (Finding& finding : m_found) {
            CodeRow& row = m_report.rows[finding.row];
            // What is incomplete stays so, whatever else is suspicious about it.
            row.fate = row.fate == CodeFate::Incomplete ? row.fate : finding.fate;
            row.reason += (row.reason.empty() ? "" : "; ") + finding.reason;
        }
    }

    void AddPath(const FigurePath& path, const CqCode& how, std::size_t first) {
        DrawnEntity& line = AddEntity(EntPline, how, first);
        line.vertices.reserve(path.vertices.size());
        for (const FigureVertex& vertex : path.vertices) {
            m_report.arcs += vertex.bulge != 0.0 ? 1U : 0U;
            line.vertices.push_back(
                {{vertex.place.GetX(), vertex.place.GetY(), vertex.height},
                 vertex.bulge,
                 vertex.point == FigureVertex::kFree ? 0 : m_points[vertex.point].entity});
        }
    }

    std::optional<std::size_t> FindPoint(const std::string& name) {
        const CqHandle handle = m_db.GetCoordRecHandleByPtName(FromUtf8(name));
        // Points are read in the order of their records.
        const auto found =
            std::lower_bound(m_points.begin(), m_points.end(), handle,
                             [](const FieldPoint& point, CqHandle h) { return point.handle < h; });
        return handle == 0 || found == m_points.end() || found->handle != handle
                   ? std::nullopt
                   : std::optional(static_cast<std::size_t>(found - m_points.begin()));
    }

    void MakeLayers() {
        std::set<CString> needed;
        for (const DrawnEntity& entity : m_entities) {
            needed.insert(entity.layer);
        }
        for (const PointState& state : m_states) {
            if (state.row != nullptr && !state.row->layer.empty()) {
                needed.insert(state.row->layer);
            }
        }
        // A layer looks like the first row of the table that names it.
        for (const CqCode& code : m_table.GetCodes()) {
            if (!code.layer.empty() && needed.erase(code.layer) > 0) {
                AddLayer(code.layer, code);
            }
        }
        for (const CString& layer : needed) {
            AddLayer(layer, {});
        }
    }

    void AddLayer(const CString& layer, const CqCode& code) {
        const int color = code.color > 0 && code.color < CqCode::kByLayer ? code.color : kInk;
        const int line = code.line == CqCode::kByLayer ? 0 : code.line;
        m_report.layers += m_db.AddLayer(layer, color, line) != 0 ? 1U : 0U;
    }

    void MarkPoints() {
        for (std::size_t i = 0; i < m_points.size(); ++i) {
            const PointState& state = m_states[i];
            if (state.row == nullptr) {
                continue;
            }
            const FieldPoint& point = m_points[i];
            bool changed = false;
            if (state.row->number != 0 && state.row->number != state.code && !state.isNumber) {
                const std::array<double, 3> coords = Coords(i);
                changed = m_db.EditCoordRec(point.handle, FromUtf8(point.name), coords.data(),
                                            state.row->number) != 0;
            }
            if (!state.row->layer.empty() && state.row->layer != state.layer) {
                changed = m_db.EditCadEntityLayer(point.entity, state.row->layer) != 0 || changed;
            }
            m_report.pointsChanged += changed ? 1U : 0U;
        }
    }

    const DrawOptions& m_options;
    CqSurveyDB& m_db;
    CqCodeTable m_table;
    double m_tolerance = 0.0;
    double m_textHeight = 0.0;
    std::vector<FieldPoint> m_points;
    std::vector<PointState> m_states;
    std::vector<std::size_t> m_order;
    FigureBuilder m_builder;
    std::vector<Figure> m_figures;
    std::vector<Finding> m_found;
    std::vector<DrawnEntity> m_entities;
    CodeReport m_report;
};

}  // namespace

FieldDrawing::FieldDrawing(DrawOptions options) : m_options(std::move(options)) {
    if (m_options.words) {
        static_cast<void>(CodeWords::FromText(*m_options.words));
    }
    if (m_options.arcTolerance &&
        !(*m_options.arcTolerance >= 0.0 && std::isfinite(*m_options.arcTolerance))) {
        throw OptionError("the tolerance of arcs must be a number of 0 or more");
    }
    if (m_options.longest && !(*m_options.longest > 0.0)) {
        throw OptionError("the longest segment must be a number above 0");
    }
    if (m_options.textHeight &&
        !(*m_options.textHeight > 0.0 && std::isfinite(*m_options.textHeight))) {
        throw OptionError("the height of texts must be a number above 0");
    }
}

CodeReport FieldDrawing::Draw(CqSurveyDB& db) const {
    return Drawing(m_options, db).Draw();
}

}  // namespace cqsurvey::exchange
