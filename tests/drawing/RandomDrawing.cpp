#include "drawing/RandomDrawing.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdlib>
#include <string>
#include <vector>

#include "cqsurvey/Text.h"
#include "support/Box.h"
#include "support/SampledArc.h"

namespace cqsurvey {

namespace {

constexpr double kKeepBulge = std::bit_cast<double>(0x36A00001262D4AB6ULL);

}  // namespace

RandomDrawing::Coords RandomDrawing::RandomPlace() {
    Coords place{Real(), Real(), Real()};
    if (Below(40) == 0) {
        place[static_cast<std::size_t>(Below(3))] = std::nan("");
    }
    return place;
}

CString RandomDrawing::RandomText(int most) {
    static const CString kAlphabet = u"abc \u00E4\u4E95\u0436\"',;\r\n\\";
    CString text;
    for (int length = Below(most + 1); length > 0; --length) {
        text += kAlphabet[static_cast<std::size_t>(Below(static_cast<int>(kAlphabet.size())))];
    }
    return text;
}

CString RandomDrawing::RandomLayer() {
    return CString(u"Layer") + static_cast<char16_t>(u'A' + Below(8));
}

double RandomDrawing::RandomBulge() {
    switch (Below(4)) {
        case 0:
            return 0.0;
        case 1:
            return 1.0;
        default:
            return std::tan(std::uniform_real_distribution<double>(-1.5, 1.5)(m_random));
    }
}

CqHandle RandomDrawing::Pick(EntType type) {
    const Handles& chain = m_model.chain;
    if (chain.empty() || Below(30) == 0) {
        return static_cast<CqHandle>(Below(2));
    }
    const auto any = [&] {
        return chain[static_cast<std::size_t>(Below(static_cast<int>(chain.size())))];
    };
    CqHandle handle = any();
    if (Below(8) != 0) {
        for (int i = 0; i < 60 && !Is(handle, type); ++i) {
            handle = any();
        }
    }
    return handle;
}

CqHandle RandomDrawing::RecordOf(CqHandle entity) const {
    return Is(entity, EntSiPnt) ? m_model.entities.at(entity).point : 0;
}

void RandomDrawing::Widen(CqHandle entity) {
    JobModel::Widen(m_extents, m_model.entities.at(entity));
}

template <class Delete, class Edit, class Add, class Fill>
void RandomDrawing::StepEntity(EntType type, const Coords& at, const Delete& remove,
                               const Edit& edit, const Add& add, const Fill& fill) {
    const CqHandle h = Pick(type);
    const int right = Is(h, type) ? 1 : 0;
    CqHandle changed = 0;
    switch (Below(4)) {
        case 0:
            ASSERT_EQ(remove(h), right);
            if (right != 0) {
                m_model.RemoveEntity(h);
            }
            return;
        case 1:
            ASSERT_EQ(edit(h), right);
            if (right == 0) {
                return;
            }
            changed = h;
            m_model.entities.at(h).at = at;
            break;
        default:
            changed = add();
            m_model.AppendEntity(type, at, m_color);
            ASSERT_EQ(changed, m_model.lastEntity);
    }
    fill(m_model.entities.at(changed));
    Widen(changed);
}

void RandomDrawing::StepPoint() {
    const Coords at = RandomPlace();
    const int code = Below(5);
    const CString name = u"P" + FromUtf8(std::to_string(++m_names));
    const CqHandle entity = Pick(EntSiPnt);
    switch (Below(6)) {
        case 0: {
            const CqHandle record = RecordOf(entity);
            ASSERT_EQ(m_db.GetCoordRecHandleByCadEntityHandle(entity), record);
            if (record != 0) {
                ASSERT_EQ(m_db.EditCoordRec(record, name, at.data(), code), 1);
                m_model.entities.at(entity).at = at;
                m_model.points.at(record).name = name;
                m_model.points.at(record).code = code;
                Widen(entity);
            }
            break;
        }
        case 1: {
            const CqHandle record = RecordOf(entity);
            ASSERT_EQ(m_db.GetCoordRecHandleByCadEntityHandle(entity), record);
            if (record != 0) {
                ASSERT_EQ(m_db.DelCoordRec(record), 1);
                m_model.RemovePoint(record);
            }
            break;
        }
        default: {
            const int origin = 1 << Below(5);
            const CqHandle record =
                m_db.AddCoordRec(at.data(), name, code, static_cast<SurveyCoordType>(origin), 0);
            ASSERT_EQ(record, m_model.AddPoint(name, at, code, m_color));
            m_model.points.at(record).origin = origin;
            Widen(m_model.lastEntity);
            ASSERT_EQ(m_db.GetCadEntityHandleByCoordRecHandle(record), m_model.lastEntity);
            ASSERT_EQ(m_db.GetCadEntityHandleByPtName(name), m_model.lastEntity);
        }
    }
}

void RandomDrawing::StepPline() {
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
            m_model.RemovePline(h);
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
    JobModel::Entity& pline = m_model.AppendEntity(EntPline, {}, m_color);
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
    Widen(h);
    for (const VertexData& vertex : vertices) {
        JobModel::Entity& model = m_model.AppendEntity(EntVertex, vertex.point, m_color);
        model.bulge = vertex.bulge;
        model.pline = h;
    }
}

void RandomDrawing::StepVertex() {
    const CqHandle h = Pick(EntVertex);
    const Coords at = RandomPlace();
    switch (Below(3)) {
        case 0: {
            const double bulge = RandomBulge();
            const bool right = Is(h, EntVertex) || Is(h, EntPline);
            ASSERT_EQ(m_db.InsertVertex(h, at.data(), bulge), right ? 1 : 0);
            if (right) {
                m_model.InsertVertex(h, at, bulge);
            }
            break;
        }
        case 1: {
            const double bulge = Below(2) == 0 ? kKeepBulge : RandomBulge();
            const bool right = Is(h, EntVertex);
            ASSERT_EQ(m_db.MoveVertex(h, at.data(), bulge), right ? 1 : 0);
            if (right) {
                m_model.entities.at(h).at = at;
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
                m_model.RemoveVertex(h);
            }
        }
    }
}

void RandomDrawing::StepLink() {
    const CqHandle point = Pick(EntSiPnt);
    const CqHandle vertex = Pick(EntVertex);
    if (Below(3) != 0) {
        const bool right =
            Is(point, EntSiPnt) && Is(vertex, EntVertex) && !m_model.linkOfVertex.contains(vertex);
        ASSERT_EQ(m_db.LinkSiPntAndVertex(point, vertex), right ? 1 : 0);
        if (right) {
            m_model.AddLink(point, vertex);
        }
        return;
    }
    const auto tie = m_model.linkOfVertex.find(vertex);
    CqHandle from = point;
    if (Below(3) != 0 && tie != m_model.linkOfVertex.end()) {
        from = Below(2) == 0 ? 0 : m_model.links.at(tie->second).point;
    }
    ASSERT_EQ(m_db.UnlinkSiPntAndVertex(from, vertex), m_model.Unlink(vertex, from) ? 1 : 0);
}

void RandomDrawing::StepText() {
    const Coords at = RandomPlace();
    const CString words = RandomText(300);
    const CString style = RandomText(30);
    const int along = Below(4);
    const int across = Below(4);
    JobModel::Entity text;
    text.text = words.substr(0, 255);
    text.align = along + 65536 * across;
    text.style = style.substr(0, 23);
    text.height = Real();
    text.rotation = Real();
    text.code = Below(5);
    text.option = static_cast<std::uint32_t>(m_random());
    text.interval = Below(100);
    text.thickness = Below(100);
    StepEntity(
        EntText, at, [&](CqHandle h) { return m_db.DeleteText(h); },
        [&](CqHandle h) {
            return m_db.EditText(h, at.data(), words, along, across, style, text.height,
                                 text.rotation, text.code, text.option, text.interval,
                                 text.thickness);
        },
        [&] {
            return m_db.AddText(at.data(), words, along, across, style, text.height, text.rotation,
                                text.code, text.option, text.interval, text.thickness);
        },
        [&](JobModel::Entity& model) {
            text.type = model.type;
            text.at = model.at;
            text.layer = model.layer;
            text.color = model.color;
            model = text;
        });
}

void RandomDrawing::StepCircle() {
    const Coords at = RandomPlace();
    const double radius = Real();
    const int line = Below(300);
    const int code = Below(5);
    StepEntity(
        EntCircle, at, [&](CqHandle h) { return m_db.DeleteCircle(h); },
        [&](CqHandle h) { return m_db.EditCircle(h, at.data(), radius, line, code); },
        [&] { return m_db.AddCircle(at.data(), radius, line, code); },
        [&](JobModel::Entity& model) {
            model.radius = radius;
            model.line = line;
            model.code = code;
        });
}

void RandomDrawing::StepBitmap() {
    const Coords at = RandomPlace();
    const CString name = RandomText(20);
    const CVector size(Real(), Real());
    StepEntity(
        EntBitmap, at, [&](CqHandle h) { return m_db.DeleteBitmap(h); },
        [&](CqHandle h) { return m_db.EditBitmap(h, at.data(), name, size); },
        [&] { return m_db.AddBitmap(at.data(), name, size); },
        [&](JobModel::Entity& model) {
            model.text = name;
            model.size = size.GetX();
        });
}

void RandomDrawing::StepLayer() {
    const CString name = Below(12) == 0 ? CString(u"0") : RandomLayer();
    const CqHandle layer = m_model.FindLayer(name);
    const int color = Below(20) - 5;
    switch (Below(6)) {
        case 0:
            ASSERT_EQ(m_db.AddLayer(name, color, 0), layer == 0 ? 1 : 0);
            if (layer == 0) {
                m_model.AddLayer(name, color, 0);
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
            m_color = color;
    }
}

void RandomDrawing::StepAny() {
    const CqHandle h = Pick(Below(2) == 0 ? EntPline : EntVertex);
    const bool right = m_model.entities.contains(h);
    const CString name = RandomLayer();
    const CqHandle layer = m_model.FindLayer(name);
    switch (Below(3)) {
        case 0: {
            const int color = Below(530) - 265;
            const bool allowed = right && std::abs(color) <= 256;
            ASSERT_EQ(m_db.EditCadEntityColor(h, color), allowed ? 1 : 0);
            if (allowed) {
                m_model.ChangeWithVertices(h, [&](JobModel::Entity& each) { each.color = color; });
            }
            break;
        }
        case 1:
            ASSERT_EQ(m_db.EditCadEntityLayer(h, name), right && layer != 0 ? 1 : 0);
            if (right && layer != 0) {
                m_model.ChangeWithVertices(h, [&](JobModel::Entity& each) { each.layer = layer; });
            }
            break;
        default:
            ASSERT_EQ(m_db.EditLayer(h, name), right ? 1 : 0);
            if (right) {
                if (layer == 0) {
                    m_model.AddLayer(name, 1, 0);
                }
                m_model.entities.at(h).layer = m_model.FindLayer(name);
            }
    }
}

void RandomDrawing::Step() {
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

}  // namespace cqsurvey
