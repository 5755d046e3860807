#include "support/JobModel.h"

#include <algorithm>
#include <functional>
#include <iterator>
#include <string>

#include "cqsurvey/Text.h"
#include "support/DefaultSettings.h"

namespace cqsurvey {

JobModel::JobModel() : settings(SettingsModel::Parse(FromUtf8(kDefaultSettings))) {}

void JobModel::Reopen() {
    currentLayer = FindLayer(u"0");
    currentGroup = 0;
    linkOfVertex.clear();
    for (const auto& [number, link] : links) {
        linkOfVertex[link.vertex] = number;
    }
}

JobModel::Entity& JobModel::NewEntity(EntType type, const Coords& at, int color) {
    Entity& entity = entities[++lastEntity];
    entity.type = type;
    entity.at = at;
    entity.layer = currentLayer;
    entity.color = color;
    return entity;
}

JobModel::Entity& JobModel::AppendEntity(EntType type, const Coords& at, int color) {
    Entity& entity = NewEntity(type, at, color);
    chain.push_back(lastEntity);
    return entity;
}

void JobModel::RemoveEntity(CqHandle handle) {
    chain.erase(std::find(chain.begin(), chain.end(), handle));
    entities.erase(handle);
}

CqHandle JobModel::AddPoint(const CString& name, const Coords& at, int code, int color) {
    const CqHandle handle = ++lastPoint;
    Entity& entity = AppendEntity(EntSiPnt, at, color);
    entity.point = handle;
    Point& point = points[handle];
    point.name = name;
    point.code = code;
    point.group = currentGroup;
    point.entity = lastEntity;
    return handle;
}

void JobModel::RemovePoint(CqHandle handle) {
    const CqHandle entity = points.at(handle).entity;
    // The ties stay in the file, and their vertices count as free until the job is opened again.
    for (const auto& [number, link] : links) {
        if (link.point == entity) {
            linkOfVertex.erase(link.vertex);
        }
    }
    RemoveEntity(entity);
    points.erase(handle);
}

void JobModel::AddLink(CqHandle point, CqHandle vertex) {
    links[++lastLink] = {point, vertex};
    linkOfVertex[vertex] = lastLink;
}

bool JobModel::Unlink(CqHandle vertex, CqHandle point) {
    const auto tie = linkOfVertex.find(vertex);
    if (tie == linkOfVertex.end()) {
        return false;
    }
    const CqHandle number = tie->second;
    linkOfVertex.erase(tie);
    if (point != 0 && point != links.at(number).point) {
        return false;
    }
    links.erase(number);
    return true;
}

void JobModel::InsertVertex(CqHandle behind, const Coords& at, double bulge) {
    const Entity before = entities.at(behind);
    Entity& vertex = NewEntity(EntVertex, at, before.color);
    vertex.layer = before.layer;
    vertex.bulge = bulge;
    vertex.pline = before.type == EntPline ? behind : before.pline;
    chain.insert(chain.begin() + static_cast<std::ptrdiff_t>(PlaceOf(behind)) + 1, lastEntity);
}

void JobModel::RemoveVertex(CqHandle handle) {
    Unlink(handle);
    RemoveEntity(handle);
}

void JobModel::RemovePline(CqHandle handle) {
    const std::size_t next = PlaceOf(handle) + 1;
    while (next < chain.size() && Is(chain[next], EntVertex)) {
        RemoveVertex(chain[next]);
    }
    RemoveEntity(handle);
}

CqHandle JobModel::AddLayer(const CString& name, int color, int line) {
    layers[++lastLayer] = {name, color, line};
    return lastLayer;
}

void JobModel::ChangeWithVertices(CqHandle handle, const std::function<void(Entity&)>& change) {
    auto entity = entities.find(handle);
    const bool withVertices = entity->second.type == EntPline;
    do {
        change(entity->second);
        ++entity;
    } while (withVertices && entity != entities.end() && entity->second.type == EntVertex);
}

CqHandle JobModel::FindLayer(const CString& name) const {
    const auto found = std::find_if(layers.begin(), layers.end(),
                                    [&](const auto& layer) { return layer.second.name == name; });
    return found == layers.end() ? 0 : found->first;
}

bool JobModel::Is(CqHandle handle, EntType type) const {
    const auto found = entities.find(handle);
    return found != entities.end() && found->second.type == type;
}

std::size_t JobModel::PlaceOf(CqHandle handle) const {
    return static_cast<std::size_t>(
        std::distance(chain.begin(), std::find(chain.begin(), chain.end(), handle)));
}

void JobModel::Widen(Box& extents, const Entity& entity) {
    const auto [x, y, z] = entity.at;
    switch (entity.type) {
        case EntPline:
            extents.Add(entity.bound.minX, entity.bound.minY);
            extents.Add(entity.bound.maxX, entity.bound.maxY);
            break;
        case EntCircle:
            extents.Add(x - entity.radius, y - entity.radius);
            extents.Add(x + entity.radius, y + entity.radius);
            break;
        case EntVertex:
            break;
        default:
            extents.Add(x, y);
    }
}

JobLines JobModel::Lines() const {
    JobModel opened = *this;
    opened.Reopen();
    JobLines lines;
    opened.AddPointLines(lines);
    opened.AddEntityLines(lines);
    for (const auto& [handle, layer] : layers) {
        lines.push_back(MakeLine("layer", handle, layer.name, layer.color, layer.line));
    }
    for (const auto& [id, name] : groups) {
        lines.push_back(MakeLine("group", id, name));
    }
    opened.AddSettingsLines(lines);
    return lines;
}

void JobModel::AddPointLines(JobLines& lines) const {
    lines.push_back(MakeLine("points", points.size()));
    for (const auto& [handle, point] : points) {
        const Coords& at = entities.at(point.entity).at;
        lines.push_back(MakeLine("point", handle, point.name, at[0], at[1], at[2], point.code,
                                 point.origin, point.flags, point.group, point.entity,
                                 point.name.empty() ? 0 : handle, point.description));
    }
}

void JobModel::AddEntityLines(JobLines& lines) const {
    lines.push_back(MakeLine("entities", entities.size()));
    Box extents;
    for (std::size_t place = 0; place < chain.size(); ++place) {
        const CqHandle handle = chain[place];
        const Entity& e = entities.at(handle);
        const bool isPoint = e.type == EntSiPnt;
        const bool isVertex = e.type == EntVertex;
        const CqHandle next = place + 1 < chain.size() ? chain[place + 1] : 0;
        const auto tie = linkOfVertex.find(handle);
        const CqHandle tied =
            isVertex && tie != linkOfVertex.end() ? links.at(tie->second).point : 0;
        std::string line =
            MakeLine("entity", handle, static_cast<int>(e.type), e.at[0], e.at[1], e.at[2],
                     layers.at(e.layer).name, e.color, isPoint ? points.at(e.point).name : u"",
                     isPoint ? points.at(e.point).code : e.code, e.line, e.bound.minX, e.bound.minY,
                     e.bound.maxX, e.bound.maxY, e.bulge, e.pline, isVertex ? chain[place - 1] : 0,
                     isVertex && Is(next, EntVertex) ? next : 0, tied) +
            MakeLine("", e.text, e.align, e.style, e.height, e.rotation, e.option, e.interval,
                     e.thickness, e.radius, e.size);
        for (const auto& [number, link] : links) {
            if (isPoint && link.point == handle) {
                line += MakeLine("", link.vertex);
            }
        }
        lines.push_back(line);
        Widen(extents, e);
    }
    if (chain.empty()) {
        lines.push_back(MakeLine("bound", 0, 0.0, 0.0, 0.0, 0.0));
    } else {
        lines.push_back(
            MakeLine("bound", 1, extents.minX, extents.minY, extents.maxX, extents.maxY));
    }
}

void JobModel::AddSettingsLines(JobLines& lines) const {
    SettingsModel model = settings;
    for (const CString& section : model.Sections()) {
        lines.push_back(MakeLine("section", section));
        for (const CString& key : model.Keys(section)) {
            CString value;
            model.Get(section, key, value);
            lines.push_back(MakeLine("key", key, value));
        }
    }
    if (!image.empty()) {
        lines.push_back(MakeLine("image", image.size(), std::hash<std::string>()(image)));
    }
}

}  // namespace cqsurvey
