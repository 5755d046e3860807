#include "loss/Workload.h"

#include <cstdlib>
#include <vector>

namespace cqsurvey {

void Workload::Layers() {
    JobModel& job = Job();
    const CString name = OneIn(6) ? CString(u"0") : Named(u"layer ", Below(6));
    const CqHandle handle = job.FindLayer(name);
    const int color = 1 + Below(200);
    if (handle == 0) {
        const int line = Below(8);
        job.AddLayer(name, color, line);
        Expect(1, [&](CqSurveyDB& db) { return db.AddLayer(name, color, line); });
        return;
    }
    JobModel::Layer& layer = job.layers.at(handle);
    switch (Below(5)) {
        case 0: {
            const bool show = OneIn(2);
            layer.color = show ? std::abs(layer.color) : -std::abs(layer.color);
            Expect(1, [&](CqSurveyDB& db) { return db.ShowLayer(name, show ? 1 : 0); });
            break;
        }
        case 1:
            layer.color = color;
            Expect(1, [&](CqSurveyDB& db) { return db.EditLayerColor(name, color); });
            break;
        case 2:
            layer.line = Below(8);
            Expect(1, [&](CqSurveyDB& db) { return db.EditLayerLine(name, layer.line); });
            break;
        case 3: {
            bool used = name == u"0" || handle == job.currentLayer;
            for (const auto& [number, entity] : job.entities) {
                used = used || entity.layer == handle;
            }
            if (!used) {
                job.layers.erase(handle);
                Expect(1, [&](CqSurveyDB& db) { return db.DeleteLayer(name); });
            }
            break;
        }
        default:
            job.currentLayer = handle;
            m_color = Below(513) - 256;
            Expect(1, [&](CqSurveyDB& db) { return db.SetCurrentLayer(name); });
            Expect(1, [&](CqSurveyDB& db) { return db.SetCurrentColor(m_color); });
    }
}

void Workload::LayersOfEntities() {
    JobModel& job = Job();
    const CqHandle handle = PickEntity(OneIn(2) ? EntPline : EntSiPnt);
    if (handle == 0) {
        return;
    }
    const CString name = Named(u"layer ", Below(6));
    const CqHandle layer = job.FindLayer(name);
    const int color = Below(513) - 256;
    const bool colors = OneIn(2);
    if (OneIn(3)) {
        job.entities.at(handle).layer = layer == 0 ? job.AddLayer(name, 1, 0) : layer;
        Expect(1, [&](CqSurveyDB& db) { return db.EditLayer(handle, name); });
        return;
    }
    if (!colors && layer == 0) {
        return;
    }
    job.ChangeWithVertices(handle, [&](Entity& entity) {
        if (colors) {
            entity.color = color;
        } else {
            entity.layer = layer;
        }
    });
    Expect(1, [&](CqSurveyDB& db) {
        return colors ? db.EditCadEntityColor(handle, color) : db.EditCadEntityLayer(handle, name);
    });
}

void Workload::AddPline() {
    const int line = Below(300);
    const int code = Below(5);
    std::vector<Coords> places(static_cast<std::size_t>(2 + Below(5)));
    for (Coords& place : places) {
        place = Place();
    }
    // Only after the last vertex is there no segment whose bulge would widen the bound.
    const double bulge = Below(9) * 0.25;
    JobModel& job = Job();
    Entity& pline = job.AppendEntity(EntPline, {}, m_color);
    const CqHandle handle = job.lastEntity;
    pline.line = line;
    pline.code = code;
    pline.bound = Box();
    for (const Coords& place : places) {
        pline.bound.Add(place[0], place[1]);
        Entity& vertex = job.AppendEntity(EntVertex, place, m_color);
        vertex.pline = handle;
    }
    job.entities.at(job.lastEntity).bulge = bulge;
    Expect(handle, [&](CqSurveyDB& db) {
        CqCadEntityList* list = db.StartPline(line, code);
        for (const Coords& place : places) {
            db.AddVertex(list, place.data(), &place == &places.back() ? bulge : 0.0);
        }
        return db.EndPline(list);
    });
}

void Workload::Polylines() {
    const CqHandle handle = PickEntity(EntPline);
    if (handle == 0) {
        return;
    }
    if (OneIn(3)) {
        Job().RemovePline(handle);
        Expect(1, [&](CqSurveyDB& db) { return db.DeletePline(handle); });
        return;
    }
    Entity& pline = Job().entities.at(handle);
    pline.line = Below(300);
    pline.code = Below(5);
    Expect(1, [&](CqSurveyDB& db) { return db.EditPline(handle, pline.line, pline.code); });
}

void Workload::Vertices() {
    JobModel& job = Job();
    const CqHandle handle = PickEntity(OneIn(5) ? EntPline : EntVertex);
    if (handle == 0) {
        return;
    }
    const Coords at = Place();
    const double bulge = Below(9) * 0.25;
    const bool isVertex = job.Is(handle, EntVertex);
    const int action = isVertex ? Below(3) : 0;
    if (action == 0) {
        job.InsertVertex(handle, at, bulge);
        Expect(1, [&](CqSurveyDB& db) { return db.InsertVertex(handle, at.data(), bulge); });
    } else if (action == 1) {
        job.entities.at(handle).at = at;
        job.entities.at(handle).bulge = bulge;
        Expect(1, [&](CqSurveyDB& db) { return db.MoveVertex(handle, at.data(), bulge); });
    } else {
        job.RemoveVertex(handle);
        Expect(1, [&](CqSurveyDB& db) { return db.DeleteVertex(handle); });
    }
}

void Workload::Ties() {
    JobModel& job = Job();
    const CqHandle vertex = PickEntity(EntVertex);
    const CqHandle point = PickEntity(EntSiPnt);
    if (vertex == 0 || point == 0) {
        return;
    }
    if (job.linkOfVertex.contains(vertex)) {
        job.Unlink(vertex);
        Expect(1, [&](CqSurveyDB& db) { return db.UnlinkSiPntAndVertex(0, vertex); });
    } else {
        job.AddLink(point, vertex);
        Expect(1, [&](CqSurveyDB& db) { return db.LinkSiPntAndVertex(point, vertex); });
    }
}

void Workload::Texts() {
    JobModel& job = Job();
    const CqHandle handle = OneIn(2) ? PickEntity(EntText) : 0;
    if (handle != 0 && OneIn(3)) {
        job.RemoveEntity(handle);
        Expect(1, [&](CqSurveyDB& db) { return db.DeleteText(handle); });
        return;
    }
    Entity& text = handle != 0 ? job.entities.at(handle) : job.AppendEntity(EntText, {}, m_color);
    const CqHandle own = handle != 0 ? handle : job.lastEntity;
    text.at = Place();
    text.text = Words(200);
    const int along = Below(3);
    const int across = Below(4);
    text.align = along + 65536 * across;
    text.style = Words(20);
    text.height = Below(80) * 0.125;
    text.rotation = Below(1440) * 0.25;
    text.code = Below(5);
    text.option = static_cast<std::uint32_t>(m_random());
    text.interval = Below(100);
    text.thickness = Below(100);
    Expect(handle != 0 ? 1U : own, [&](CqSurveyDB& db) -> CqHandle {
        if (handle != 0) {
            return static_cast<CqHandle>(db.EditText(
                handle, text.at.data(), text.text, along, across, text.style, text.height,
                text.rotation, text.code, text.option, text.interval, text.thickness));
        }
        return db.AddText(text.at.data(), text.text, along, across, text.style, text.height,
                          text.rotation, text.code, text.option, text.interval, text.thickness);
    });
}

void Workload::Circles() {
    JobModel& job = Job();
    const CqHandle handle = OneIn(2) ? PickEntity(EntCircle) : 0;
    if (handle != 0 && OneIn(3)) {
        job.RemoveEntity(handle);
        Expect(1, [&](CqSurveyDB& db) { return db.DeleteCircle(handle); });
        return;
    }
    Entity& circle =
        handle != 0 ? job.entities.at(handle) : job.AppendEntity(EntCircle, {}, m_color);
    const CqHandle own = handle != 0 ? handle : job.lastEntity;
    circle.at = Place();
    circle.radius = Below(400) * 0.25;
    circle.line = Below(300);
    circle.code = Below(5);
    Expect(handle != 0 ? 1U : own, [&](CqSurveyDB& db) -> CqHandle {
        return handle != 0
                   ? static_cast<CqHandle>(db.EditCircle(handle, circle.at.data(), circle.radius,
                                                         circle.line, circle.code))
                   : db.AddCircle(circle.at.data(), circle.radius, circle.line, circle.code);
    });
}

void Workload::Bitmaps() {
    JobModel& job = Job();
    const CqHandle handle = OneIn(2) ? PickEntity(EntBitmap) : 0;
    if (handle != 0 && OneIn(3)) {
        job.RemoveEntity(handle);
        Expect(1, [&](CqSurveyDB& db) { return db.DeleteBitmap(handle); });
        return;
    }
    Entity& bitmap =
        handle != 0 ? job.entities.at(handle) : job.AppendEntity(EntBitmap, {}, m_color);
    const CqHandle own = handle != 0 ? handle : job.lastEntity;
    bitmap.at = Place();
    bitmap.text = Words(30);
    bitmap.size = Below(400) * 0.25;
    const CVector size(bitmap.size, 1.0);
    Expect(handle != 0 ? 1U : own, [&](CqSurveyDB& db) -> CqHandle {
        return handle != 0 ? static_cast<CqHandle>(
                                 db.EditBitmap(handle, bitmap.at.data(), bitmap.text, size))
                           : db.AddBitmap(bitmap.at.data(), bitmap.text, size);
    });
}

}  // namespace cqsurvey
