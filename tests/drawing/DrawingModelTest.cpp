#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <iterator>
#include <limits>
#include <map>
#include <memory>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include "cqsurvey/CqBatch.h"
#include "cqsurvey/CqSiPntCadEntity.h"
#include "drawing/DrawingFixture.h"
#include "support/SampledArc.h"
#include "tables/CqLinkTable.h"

namespace cqsurvey {
namespace {

constexpr double kKeepBulge = std::bit_cast<double>(0x36A00001262D4AB6ULL);
constexpr double kLargest = std::numeric_limits<double>::max();

/// Everything that an entity of any kind has, plainly side by side.
struct ModelEntity {
    EntType type = EntSiPnt;
    std::array<double, 3> point{};
    CqHandle layer = 0;
    int color = 0;
    CqHandle coordRec = 0;
    CString name;
    int code = 0;
    int origin = 0;
    int line = 0;
    Box bound;
    double bulge = 0.0;
    CqHandle pline = 0;
    CString text;
    int align = 0;
    CString style;
    double height = 0.0;
    double rotation = 0.0;
    std::uint32_t optionStyle = 0;
    int interval = 0;
    int thickness = 0;
    double radius = 0.0;
    double sizeX = 0.0;
};

struct ModelLayer {
    CString name;
    int color = 0;
};

struct ModelLink {
    CqHandle point = 0;
    CqHandle vertex = 0;
};

/// The drawing as it should be, kept without any table: maps by handle, and the chain as a list.
struct Model {
    std::map<CqHandle, ModelEntity> entities;
    Handles chain;
    CqHandle lastEntity = 1;
    CqHandle lastCoordRec = 0;
    std::map<CqHandle, ModelLayer> layers{{1, {u"0", 1}}};
    CqHandle lastLayer = 1;
    CqHandle currentLayer = 1;
    int currentColor = 256;
    std::map<CqHandle, ModelLink> links;
    CqHandle lastLink = 0;
    std::map<CqHandle, CqHandle> linkOfVertex;
    std::map<CqHandle, Handles> linksOfPoint;
    Box extents;

    /// Makes a new entity of the current layer and colour, not yet in the chain.
    ModelEntity& NewEntity(EntType type, const std::array<double, 3>& point) {
        ModelEntity& entity = entities[++lastEntity];
        entity.type = type;
        entity.point = point;
        entity.layer = currentLayer & 0xFFFFU;
        entity.color = currentColor;
        return entity;
    }
    ModelEntity& AddToEnd(EntType type, const std::array<double, 3>& point) {
        ModelEntity& entity = NewEntity(type, point);
        chain.push_back(lastEntity);
        return entity;
    }
    [[nodiscard]] Handles::iterator Find(CqHandle handle) {
        return std::find(chain.begin(), chain.end(), handle);
    }
    void Remove(CqHandle handle) {
        chain.erase(Find(handle));
        entities.erase(handle);
    }
    [[nodiscard]] CqHandle FindLayer(const CString& name) const {
        for (const auto& [handle, layer] : layers) {
            if (layer.name == name) {
                return handle;
            }
        }
        return 0;
    }
    /// An entity, and for a polyline the vertices in the records after it.
    template <class Change>
    void ChangeWithVertices(CqHandle handle, const Change& change) {
        auto entity = entities.find(handle);
        change(entity->second);
        if (entity->second.type != EntPline) {
            return;
        }
        for (++entity; entity != entities.end() && entity->second.type == EntVertex; ++entity) {
            change(entity->second);
        }
    }

    void EnterLink(CqHandle record, const ModelLink& link) {
        if (link.point != 0) {
            linksOfPoint[link.point].push_back(record);
        }
        linkOfVertex[link.vertex] = record;
    }
    void Link(CqHandle point, CqHandle vertex) {
        const ModelLink link{point, vertex};
        links[++lastLink] = link;
        EnterLink(lastLink, link);
    }
    int Unlink(CqHandle point, CqHandle vertex) {
        const auto entry = linkOfVertex.find(vertex);
        if (entry == linkOfVertex.end()) {
            return 0;
        }
        const CqHandle record = entry->second;
        linkOfVertex.erase(entry);
        const ModelLink link = links.at(record);
        if (point != 0 && point != link.point) {
            return 0;
        }
        Handles& list = linksOfPoint[link.point];
        list.erase(std::find(list.begin(), list.end(), record));
        if (list.empty()) {
            linksOfPoint.erase(link.point);
        }
        links.erase(record);
        return 1;
    }
    void DeleteVertex(CqHandle handle) {
        Unlink(0, handle);
        Remove(handle);
    }

    void Widen(double x, double y) {
        if (!std::isnan(x)) {
            extents.minX = std::min(extents.minX, x);
            extents.maxX = std::max(extents.maxX, x);
        }
        if (!std::isnan(y)) {
            extents.minY = std::min(extents.minY, y);
            extents.maxY = std::max(extents.maxY, y);
        }
    }
    void WidenBy(const ModelEntity& entity) {
        const double x = entity.point[0];
        const double y = entity.point[1];
        switch (entity.type) {
            case EntPline:
                Widen(entity.bound.minX, entity.bound.minY);
                Widen(entity.bound.maxX, entity.bound.maxY);
                break;
            case EntCircle:
                Widen(x - entity.radius, y - entity.radius);
                Widen(x + entity.radius, y + entity.radius);
                break;
            case EntVertex:
                break;
            default:
                Widen(x, y);
        }
    }

    /// What only memory knew is gone, what the tables hold is entered again.
    void Reopen() {
        linkOfVertex.clear();
        linksOfPoint.clear();
        for (const auto& [record, link] : links) {
            EnterLink(record, link);
        }
        currentLayer = FindLayer(u"0");
        if (!entities.empty()) {
            extents = Box();
            for (const auto& [handle, entity] : entities) {
                WidenBy(entity);
            }
        }
    }
};

class DrawingModel : public DrawingFixture {
 protected:
    int Below(int bound) { return static_cast<int>(m_random() % static_cast<unsigned>(bound)); }
    double Real() { return std::uniform_real_distribution<double>(-1000.0, 1000.0)(m_random); }
    std::array<double, 3> RandomPoint() {
        std::array point{Real(), Real(), Real()};
        if (Below(40) == 0) {
            point[static_cast<std::size_t>(Below(3))] = std::nan("");
        }
        return point;
    }
    CString RandomText(int most) {
        static const CString kAlphabet = u"abc \u00E4\u4E95\u0436\"',;\r\n\\";
        CString text;
        for (int length = Below(most + 1); length > 0; --length) {
            text += kAlphabet[static_cast<std::size_t>(Below(static_cast<int>(kAlphabet.size())))];
        }
        return text;
    }
    CString RandomLayer() { return CString(u"Layer") + static_cast<char16_t>(u'A' + Below(8)); }
    double RandomBulge() {
        switch (Below(4)) {
            case 0:
                return 0.0;
            case 1:
                return 1.0;
            default:
                return std::tan(std::uniform_real_distribution<double>(-1.5, 1.5)(m_random));
        }
    }

    /// An entity of a kind, or any when none of that kind is there; one in eight is any, one in
    /// thirty none at all.
    CqHandle Pick(EntType type) {
        if (m_model.chain.empty() || Below(30) == 0) {
            return static_cast<CqHandle>(Below(2));
        }
        const auto any = [&] {
            return m_model
                .chain[static_cast<std::size_t>(Below(static_cast<int>(m_model.chain.size())))];
        };
        CqHandle handle = any();
        if (Below(8) != 0) {
            for (int i = 0; i < 60 && m_model.entities.at(handle).type != type; ++i) {
                handle = any();
            }
        }
        return handle;
    }
    [[nodiscard]] bool Is(CqHandle handle, EntType type) const {
        const auto entity = m_model.entities.find(handle);
        return entity != m_model.entities.end() && entity->second.type == type;
    }

    void StepPoint();
    void StepPline();
    void StepVertex();
    void StepLink();
    void StepText();
    void StepCircle();
    void StepBitmap();
    void StepLayer();
    void StepAny();
    void Step();

    void ExpectSameEntity(CqHandle handle, std::size_t place);
    void ExpectSame();
    void ExpectChainBackwards();

    Model m_model;
    std::mt19937 m_random{20260801};
    int m_names = 0;
};

void DrawingModel::StepPoint() {
    const auto point = RandomPoint();
    if (Below(3) == 0) {
        const CqHandle entity = Pick(EntSiPnt);
        const CqHandle record = m_db.GetCoordRecHandleByCadEntityHandle(entity);
        ASSERT_EQ(record, Is(entity, EntSiPnt) ? m_model.entities.at(entity).coordRec : 0);
        if (record == 0) {
            return;
        }
        if (Below(2) == 0) {
            const int code = Below(5);
            const CString name = u"P" + FromUtf8(std::to_string(++m_names));
            ASSERT_EQ(m_db.EditCoordRec(record, name, point.data(), code), 1);
            ModelEntity& model = m_model.entities.at(entity);
            model.point = point;
            model.name = name;
            model.code = code;
            m_model.WidenBy(model);
        } else {
            ASSERT_EQ(m_db.DelCoordRec(record), 1);
            const auto list = m_model.linksOfPoint.find(entity);
            for (const CqHandle link :
                 list != m_model.linksOfPoint.end() ? list->second : Handles{}) {
                m_model.Unlink(record, m_model.links.at(link).vertex);
            }
            m_model.Remove(entity);
        }
        return;
    }
    const int code = Below(5);
    const int origin = 1 << Below(5);
    const CString name = u"P" + FromUtf8(std::to_string(++m_names));
    const CqHandle record =
        m_db.AddCoordRec(point.data(), name, code, static_cast<SurveyCoordType>(origin), 0);
    ASSERT_EQ(record, ++m_model.lastCoordRec);
    ModelEntity& model = m_model.AddToEnd(EntSiPnt, point);
    model.coordRec = record;
    model.name = name;
    model.code = code;
    model.origin = origin;
    m_model.WidenBy(model);
    ASSERT_EQ(m_db.GetCadEntityHandleByCoordRecHandle(record), m_model.lastEntity);
    ASSERT_EQ(m_db.GetCadEntityHandleByPtName(name), m_model.lastEntity);
}

void DrawingModel::StepPline() {
    const int line = Below(300);
    const int code = Below(5);
    if (Below(4) == 0) {
        const CqHandle h = Pick(EntPline);
        const bool right = Is(h, EntPline);
        ASSERT_EQ(m_db.EditPline(h, line, code), right ? 1 : 0);
        if (right) {
            m_model.entities.at(h).line = line;
            m_model.entities.at(h).code = code;
        }
        return;
    }
    if (Below(3) == 0) {
        const CqHandle h = Pick(EntPline);
        const bool right = Is(h, EntPline);
        ASSERT_EQ(m_db.DeletePline(h), right ? 1 : 0);
        if (right) {
            for (auto next = std::next(m_model.Find(h));
                 next != m_model.chain.end() && m_model.entities.at(*next).type == EntVertex;
                 next = std::next(m_model.Find(h))) {
                m_model.DeleteVertex(*next);
            }
            m_model.Remove(h);
        }
        return;
    }
    std::vector<VertexData> vertices(static_cast<std::size_t>(Below(7)));
    for (VertexData& vertex : vertices) {
        vertex = {{Real(), Real(), Real()}, RandomBulge()};
    }
    const CqHandle h = AddPline(vertices, line, code);
    if (vertices.size() < 2) {
        ASSERT_EQ(h, 0U);
        return;
    }
    constexpr int kDepth = 7;
    Box samples;
    double tolerance = 0.0;
    for (std::size_t i = 0; i < vertices.size(); ++i) {
        const CVector p(vertices[i].point[0], vertices[i].point[1]);
        samples.Add(p.GetX(), p.GetY());
        if (i + 1 < vertices.size() && vertices[i].bulge != 0.0) {
            const CVector q(vertices[i + 1].point[0], vertices[i + 1].point[1]);
            SampleArc(p, q, vertices[i].bulge, kDepth,
                      [&](const CVector& v) { samples.Add(v.GetX(), v.GetY()); });
            tolerance = std::max(tolerance, ArcTolerance(p, q, vertices[i].bulge, kDepth));
        }
    }
    ModelEntity& pline = m_model.AddToEnd(EntPline, {});
    ASSERT_EQ(h, m_model.lastEntity);
    pline.line = line;
    pline.code = code;
    CVector min;
    CVector max;
    Read(h)->GetBound(min, max);
    pline.bound = {min.GetX(), min.GetY(), max.GetX(), max.GetY()};
    EXPECT_NEAR(min.GetX(), samples.minX, tolerance);
    EXPECT_NEAR(min.GetY(), samples.minY, tolerance);
    EXPECT_NEAR(max.GetX(), samples.maxX, tolerance);
    EXPECT_NEAR(max.GetY(), samples.maxY, tolerance);
    m_model.WidenBy(pline);
    for (const VertexData& vertex : vertices) {
        ModelEntity& model = m_model.AddToEnd(EntVertex, vertex.point);
        model.bulge = vertex.bulge;
        model.pline = h;
    }
}

void DrawingModel::StepVertex() {
    const CqHandle h = Pick(EntVertex);
    const auto point = RandomPoint();
    switch (Below(3)) {
        case 0: {
            const double bulge = RandomBulge();
            const bool right = Is(h, EntVertex) || Is(h, EntPline);
            ASSERT_EQ(m_db.InsertVertex(h, point.data(), bulge), right ? 1 : 0);
            if (right) {
                const ModelEntity after = m_model.entities.at(h);
                ModelEntity& model = m_model.NewEntity(EntVertex, point);
                model.layer = after.layer;
                model.color = after.color;
                model.bulge = bulge;
                model.pline = after.type == EntPline ? h : after.pline;
                m_model.chain.insert(std::next(m_model.Find(h)), m_model.lastEntity);
            }
            break;
        }
        case 1: {
            const double bulge = Below(2) == 0 ? kKeepBulge : RandomBulge();
            const bool right = Is(h, EntVertex);
            ASSERT_EQ(m_db.MoveVertex(h, point.data(), bulge), right ? 1 : 0);
            if (right) {
                m_model.entities.at(h).point = point;
                if (bulge != kKeepBulge) {
                    m_model.entities.at(h).bulge = bulge;
                }
            }
            break;
        }
        default: {
            const bool right = Is(h, EntVertex);
            ASSERT_EQ(m_db.DeleteVertex(h), right ? 1 : 0);
            if (right) {
                m_model.DeleteVertex(h);
            }
        }
    }
}

void DrawingModel::StepLink() {
    const CqHandle point = Pick(EntSiPnt);
    const CqHandle vertex = Pick(EntVertex);
    if (Below(3) != 0) {
        const bool right =
            Is(point, EntSiPnt) && Is(vertex, EntVertex) && m_model.linkOfVertex.count(vertex) == 0;
        ASSERT_EQ(m_db.LinkSiPntAndVertex(point, vertex), right ? 1 : 0);
        if (right) {
            m_model.Link(point, vertex);
        }
        return;
    }
    const auto tie = m_model.linkOfVertex.find(vertex);
    CqHandle from = point;
    if (Below(3) != 0 && tie != m_model.linkOfVertex.end()) {
        from = Below(2) == 0 ? 0 : m_model.links.at(tie->second).point;
    }
    ASSERT_EQ(m_db.UnlinkSiPntAndVertex(from, vertex), m_model.Unlink(from, vertex));
}

void DrawingModel::StepText() {
    const CqHandle h = Pick(EntText);
    const int action = Below(4);
    if (action == 3) {
        const bool right = Is(h, EntText);
        ASSERT_EQ(m_db.DeleteText(h), right ? 1 : 0);
        if (right) {
            m_model.Remove(h);
        }
        return;
    }
    ModelEntity text;
    const auto point = RandomPoint();
    text.text = RandomText(300);
    const int align1 = Below(4);
    const int align2 = Below(4);
    text.align = align1 + 65536 * align2;
    text.style = RandomText(30);
    text.height = Real();
    text.rotation = Real();
    text.code = Below(5);
    text.optionStyle = static_cast<std::uint32_t>(m_random());
    text.interval = Below(100);
    text.thickness = Below(100);
    ModelEntity* model = nullptr;
    if (action == 2) {
        const bool right = Is(h, EntText);
        ASSERT_EQ(m_db.EditText(h, point.data(), text.text, align1, align2, text.style, text.height,
                                text.rotation, text.code, text.optionStyle, text.interval,
                                text.thickness),
                  right ? 1 : 0);
        if (!right) {
            return;
        }
        model = &m_model.entities.at(h);
    } else {
        const CqHandle added =
            m_db.AddText(point.data(), text.text, align1, align2, text.style, text.height,
                         text.rotation, text.code, text.optionStyle, text.interval, text.thickness);
        model = &m_model.AddToEnd(EntText, point);
        ASSERT_EQ(added, m_model.lastEntity);
    }
    text.type = EntText;
    text.point = point;
    text.layer = model->layer;
    text.color = model->color;
    text.text = text.text.substr(0, 255);
    text.style = text.style.substr(0, 23);
    *model = text;
    m_model.WidenBy(*model);
}

void DrawingModel::StepCircle() {
    const CqHandle h = Pick(EntCircle);
    const auto point = RandomPoint();
    const double radius = Real();
    const int line = Below(300);
    const int code = Below(5);
    ModelEntity* model = nullptr;
    switch (Below(4)) {
        case 0: {
            const bool right = Is(h, EntCircle);
            ASSERT_EQ(m_db.DeleteCircle(h), right ? 1 : 0);
            if (right) {
                m_model.Remove(h);
            }
            return;
        }
        case 1: {
            const bool right = Is(h, EntCircle);
            ASSERT_EQ(m_db.EditCircle(h, point.data(), radius, line, code), right ? 1 : 0);
            if (!right) {
                return;
            }
            model = &m_model.entities.at(h);
            model->point = point;
            break;
        }
        default: {
            const CqHandle added = m_db.AddCircle(point.data(), radius, line, code);
            model = &m_model.AddToEnd(EntCircle, point);
            ASSERT_EQ(added, m_model.lastEntity);
        }
    }
    model->radius = radius;
    model->line = line;
    model->code = code;
    m_model.WidenBy(*model);
}

void DrawingModel::StepBitmap() {
    const CqHandle h = Pick(EntBitmap);
    const auto point = RandomPoint();
    const CString name = RandomText(20);
    const CVector size(Real(), Real());
    ModelEntity* model = nullptr;
    switch (Below(4)) {
        case 0: {
            const bool right = Is(h, EntBitmap);
            ASSERT_EQ(m_db.DeleteBitmap(h), right ? 1 : 0);
            if (right) {
                m_model.Remove(h);
            }
            return;
        }
        case 1: {
            const bool right = Is(h, EntBitmap);
            ASSERT_EQ(m_db.EditBitmap(h, point.data(), name, size), right ? 1 : 0);
            if (!right) {
                return;
            }
            model = &m_model.entities.at(h);
            model->point = point;
            break;
        }
        default: {
            const CqHandle added = m_db.AddBitmap(point.data(), name, size);
            model = &m_model.AddToEnd(EntBitmap, point);
            ASSERT_EQ(added, m_model.lastEntity);
        }
    }
    model->text = name;
    model->sizeX = size.GetX();
    m_model.WidenBy(*model);
}

void DrawingModel::StepLayer() {
    const CString name = Below(12) == 0 ? CString(u"0") : RandomLayer();
    const CqHandle layer = m_model.FindLayer(name);
    const int color = Below(20) - 5;
    switch (Below(6)) {
        case 0:
            ASSERT_EQ(m_db.AddLayer(name, color, 0), layer == 0 ? 1 : 0);
            if (layer == 0) {
                m_model.layers[++m_model.lastLayer] = {name, color};
            }
            break;
        case 1:
            ASSERT_EQ(m_db.DeleteLayer(name), layer != 0 ? 1 : 0);
            m_model.layers.erase(layer);
            break;
        case 2:
            ASSERT_EQ(m_db.EditLayerColor(name, color), layer != 0 ? 1 : 0);
            if (layer != 0) {
                m_model.layers[layer].color = color;
            }
            break;
        case 3:
            ASSERT_EQ(m_db.ShowLayer(name, color > 0 ? 1 : 0), layer != 0 ? 1 : 0);
            if (layer != 0) {
                int& stored = m_model.layers[layer].color;
                stored = color > 0 ? std::abs(stored) : -std::abs(stored);
            }
            break;
        default:
            ASSERT_EQ(m_db.SetCurrentLayer(name), layer != 0 ? 1 : 0);
            if (layer != 0) {
                m_model.currentLayer = layer;
            }
            ASSERT_EQ(m_db.SetCurrentColor(color), 1);
            m_model.currentColor = color;
    }
}

void DrawingModel::StepAny() {
    const CqHandle h = Pick(Below(2) == 0 ? EntPline : EntVertex);
    const bool right = m_model.entities.count(h) != 0;
    const CString name = RandomLayer();
    const CqHandle layer = m_model.FindLayer(name);
    switch (Below(3)) {
        case 0: {
            const int color = Below(530) - 265;
            const bool allowed = right && std::abs(color) <= 256;
            ASSERT_EQ(m_db.EditCadEntityColor(h, color), allowed ? 1 : 0);
            if (allowed) {
                m_model.ChangeWithVertices(h, [&](ModelEntity& each) { each.color = color; });
            }
            break;
        }
        case 1:
            ASSERT_EQ(m_db.EditCadEntityLayer(h, name), right && layer != 0 ? 1 : 0);
            if (right && layer != 0) {
                m_model.ChangeWithVertices(h, [&](ModelEntity& each) { each.layer = layer; });
            }
            break;
        default:
            ASSERT_EQ(m_db.EditLayer(h, name), right ? 1 : 0);
            if (right) {
                if (layer == 0) {
                    m_model.layers[++m_model.lastLayer] = {name, 1};
                }
                m_model.entities.at(h).layer = m_model.FindLayer(name);
            }
    }
}

void DrawingModel::Step() {
    switch (Below(14)) {
        case 0:
        case 1:
        case 2:
            return StepPoint();
        case 3:
        case 4:
            return StepPline();
        case 5:
        case 6:
            return StepVertex();
        case 7:
        case 8:
            return StepLink();
        case 9:
            return StepText();
        case 10:
            return StepCircle();
        case 11:
            return StepBitmap();
        case 12:
            return StepLayer();
        default:
            return StepAny();
    }
}

bool Same(double a, double b) {
    return a == b || (std::isnan(a) && std::isnan(b));
}

void DrawingModel::ExpectSameEntity(CqHandle handle, std::size_t place) {
    const ModelEntity& model = m_model.entities.at(handle);
    const auto entity = Read(handle);
    ASSERT_NE(entity, nullptr);
    ASSERT_EQ(entity->GetType(), model.type);
    std::array<double, 3> point;
    entity->GetPoint(point.data());
    for (std::size_t i = 0; i < 3; ++i) {
        ASSERT_PRED2(Same, point[i], model.point[i]);
    }
    const auto layer = m_model.layers.find(model.layer);
    ASSERT_EQ(entity->GetLayer(), layer != m_model.layers.end() ? layer->second.name : CString());
    ASSERT_EQ(entity->GetColor(), model.color);
    ASSERT_EQ(entity->GetName(), model.name);
    ASSERT_EQ(entity->GetCode(), model.code);
    ASSERT_EQ(entity->GetLine(), model.line);
    ASSERT_EQ(entity->GetBulge(), model.bulge);
    ASSERT_EQ(entity->GetPlineHandle(), model.pline);
    ASSERT_EQ(entity->GetAlign(), model.align);
    ASSERT_EQ(entity->GetStyle(), model.style);
    ASSERT_EQ(entity->GetHeight(), model.height);
    ASSERT_EQ(entity->GetRot(), model.rotation);
    ASSERT_EQ(entity->GetOptionStyle(), model.optionStyle);
    ASSERT_EQ(entity->GetInterval(), model.interval);
    ASSERT_EQ(entity->GetThickness(), model.thickness);
    ASSERT_EQ(entity->GetRadius(), model.radius);
    ASSERT_EQ(entity->GetSize().GetX(), model.sizeX);
    ASSERT_EQ(entity->GetSize().GetY(), 0.0);
    ASSERT_EQ(model.type == EntBitmap ? entity->GetResName() : entity->GetText(), model.text);

    Handles ties;
    if (const auto list = m_model.linksOfPoint.find(handle);
        model.type == EntSiPnt && list != m_model.linksOfPoint.end()) {
        for (const CqHandle link : list->second) {
            ties.push_back(m_model.links.at(link).vertex);
        }
    }
    ASSERT_EQ(entity->GetMcadNumVertex(), static_cast<int>(ties.size()));
    for (std::size_t i = 0; i < ties.size(); ++i) {
        ASSERT_EQ(entity->GetMcadVertexHandle(static_cast<int>(i)), ties[i]);
    }
    if (model.type == EntSiPnt) {
        ASSERT_EQ(static_cast<const CqSiPntCadEntity&>(*entity).GetDataOrigin(), model.origin);
    }
    if (model.type == EntPline) {
        CVector min;
        CVector max;
        entity->GetBound(min, max);
        ASSERT_EQ(min.GetX(), model.bound.minX);
        ASSERT_EQ(min.GetY(), model.bound.minY);
        ASSERT_EQ(max.GetX(), model.bound.maxX);
        ASSERT_EQ(max.GetY(), model.bound.maxY);
    }
    if (model.type == EntVertex) {
        const CqHandle next = place + 1 < m_model.chain.size() ? m_model.chain[place + 1] : 0;
        ASSERT_EQ(entity->GetPrevVertexHandle(), m_model.chain.at(place - 1));
        ASSERT_EQ(entity->GetNextVertexHandle(), Is(next, EntVertex) ? next : 0);
        const auto tie = m_model.linkOfVertex.find(handle);
        ASSERT_EQ(entity->GetMcadSiPointHandle(),
                  tie != m_model.linkOfVertex.end() ? m_model.links.at(tie->second).point : 0);
    }
}

void DrawingModel::ExpectSame() {
    ASSERT_EQ(m_db.GetNumCadEntities(), static_cast<int>(m_model.entities.size()));
    ASSERT_EQ(Chain(), m_model.chain);
    for (std::size_t i = 0; i < m_model.chain.size(); ++i) {
        SCOPED_TRACE("entity " + std::to_string(m_model.chain[i]));
        ASSERT_NO_FATAL_FAILURE(ExpectSameEntity(m_model.chain[i], i));
    }
    CqHandle layer = m_db.GetFirstLayerHandle();
    for (const auto& [handle, model] : m_model.layers) {
        ASSERT_EQ(layer, handle);
        CString name;
        int color = 0;
        ASSERT_EQ(m_db.GetNextLayer(layer, name, color), 1);
        ASSERT_EQ(name, model.name);
        ASSERT_EQ(color, model.color);
    }
    ASSERT_EQ(layer, 0U);
    CVector min;
    CVector max;
    ASSERT_EQ(m_db.GetEntityBound(min, max), m_model.entities.empty() ? 0 : 1);
    if (!m_model.entities.empty()) {
        ASSERT_EQ(min.GetX(), m_model.extents.minX);
        ASSERT_EQ(min.GetY(), m_model.extents.minY);
        ASSERT_EQ(max.GetX(), m_model.extents.maxX);
        ASSERT_EQ(max.GetY(), m_model.extents.maxY);
    }
}

/// Reopens the job, with a look at the records while it is closed: the chain backwards and the
/// links, which no operation shows whole.
void DrawingModel::ExpectChainBackwards() {
    m_db.Close();
    ASSERT_NE(QrfsMount(m_path, u"RAW"), 0);
    {
        CqEntityTable table;
        table.Open(u"RAW:/_EntityData");
        Handles backwards;
        for (CqHandle handle = table.GetTail(); handle != 0;
             handle = table.Get<"PrevEntityIndex">()) {
            backwards.push_back(handle);
            ASSERT_LE(backwards.size(), m_model.chain.size());
            table.GoTo(handle);
        }
        std::reverse(backwards.begin(), backwards.end());
        ASSERT_EQ(backwards, m_model.chain);

        CqLinkTable links;
        links.Open(u"RAW:/_PointToVertexLink");
        ASSERT_EQ(links.GetRecordCount(), static_cast<int>(m_model.links.size()));
        for (const auto& [record, link] : m_model.links) {
            links.GoTo(record);
            ASSERT_EQ(links.Get<"PointDataID">(), link.point);
            ASSERT_EQ(links.Get<"VertexDataID">(), link.vertex);
        }
    }
    ASSERT_NE(QrfsUnmount(u"RAW"), 0);
    m_db.Open(m_path);
    m_model.Reopen();
}

TEST_F(DrawingModel, HoldsThroughTensOfThousandsOfStepsWithBatchesUndoneAndJobsReopened) {
    constexpr int kSteps = 40'000;
    int steps = 0;
    for (int round = 0; steps < kSteps && !HasFatalFailure(); ++round) {
        SCOPED_TRACE("round " + std::to_string(round) + ", seed 20260801");
        const bool alone = Below(4) == 0;
        const int length = 1 + Below(alone ? 10 : 150);
        steps += length;
        if (alone) {
            for (int i = 0; i < length; ++i) {
                ASSERT_NO_FATAL_FAILURE(Step());
            }
        } else {
            const Model before = m_model;
            std::optional<CqBatch> batch(m_db);
            for (int i = 0; i < length; ++i) {
                ASSERT_NO_FATAL_FAILURE(Step());
            }
            if (Below(4) == 0) {
                m_model = before;
            } else {
                batch->Commit();
            }
        }
        if (round % 8 == 0) {
            ASSERT_NO_FATAL_FAILURE(ExpectSame());
        }
        if (round % 40 == 39) {
            ASSERT_NO_FATAL_FAILURE(ExpectChainBackwards());
            ASSERT_NO_FATAL_FAILURE(ExpectSame());
        }
    }
    ASSERT_NO_FATAL_FAILURE(ExpectChainBackwards());
    ASSERT_NO_FATAL_FAILURE(ExpectSame());
    EXPECT_GT(m_model.chain.size(), 500U);
}

}  // namespace
}  // namespace cqsurvey
