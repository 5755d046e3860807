#include "loss/JobModel.h"

#include <algorithm>
#include <functional>
#include <iterator>
#include <limits>
#include <string_view>

namespace cqsurvey {

namespace {

constexpr const char16_t* kNewSettings =
    u"[SETTINGS]\nSiPointSize=5.000\nJCoordDivision=0\nVersion=1.00\nMapscale=500\n"
    u"[BACKGROUND]\nEntityColor=-1\nType=0\nCenterX=0\nCenterY=0\nSizeX=0\nSizeY=0\nRotation=0\n"
    u"Brightness=0\nContrast=100\nMonotone=0\nBKColor=16777215\n";

/// A box that grows.
struct Extents {
    static constexpr double kFar = std::numeric_limits<double>::max();

    double minX = kFar;
    double minY = kFar;
    double maxX = -kFar;
    double maxY = -kFar;

    void Widen(double x, double y) {
        minX = std::min(minX, x);
        minY = std::min(minY, y);
        maxX = std::max(maxX, x);
        maxY = std::max(maxY, y);
    }
    void WidenBy(const JobModel::Entity& entity) {
        switch (entity.type) {
            case EntPline:
                Widen(entity.bound[0], entity.bound[1]);
                Widen(entity.bound[2], entity.bound[3]);
                break;
            case EntCircle:
                Widen(entity.at[0] - entity.radius, entity.at[1] - entity.radius);
                Widen(entity.at[0] + entity.radius, entity.at[1] + entity.radius);
                break;
            case EntVertex:
                break;
            default:
                Widen(entity.at[0], entity.at[1]);
        }
    }
};

}  // namespace

JobModel::JobModel() : settings(SettingsModel::Parse(kNewSettings)) {}

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

void JobModel::Unlink(CqHandle vertex) {
    const auto tie = linkOfVertex.find(vertex);
    if (tie != linkOfVertex.end()) {
        links.erase(tie->second);
        linkOfVertex.erase(tie);
    }
}

void JobModel::RemoveVertex(CqHandle handle) {
    Unlink(handle);
    RemoveEntity(handle);
}

void JobModel::RemovePline(CqHandle handle) {
    const std::size_t next = PlaceOf(handle) + 1;
    while (next < chain.size() && IsVertex(chain[next])) {
        RemoveVertex(chain[next]);
    }
    RemoveEntity(handle);
}

CqHandle JobModel::FindLayer(const CString& name) const {
    const auto found = std::find_if(layers.begin(), layers.end(),
                                    [&](const auto& layer) { return layer.second.name == name; });
    return found == layers.end() ? 0 : found->first;
}

bool JobModel::IsVertex(CqHandle handle) const {
    const auto found = entities.find(handle);
    return found != entities.end() && found->second.type == EntVertex;
}

std::size_t JobModel::PlaceOf(CqHandle handle) const {
    return static_cast<std::size_t>(
        std::distance(chain.begin(), std::find(chain.begin(), chain.end(), handle)));
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
    Extents extents;
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
                     isPoint ? points.at(e.point).code : e.code, e.line, e.bound[0], e.bound[1],
                     e.bound[2], e.bound[3], e.bulge, e.pline, isVertex ? chain[place - 1] : 0,
                     isVertex && IsVertex(next) ? next : 0, tied) +
            MakeLine("", e.text, e.align, e.style, e.height, e.rotation, e.option, e.interval,
                     e.thickness, e.radius, e.size);
        for (const auto& [number, link] : links) {
            if (isPoint && link.point == handle) {
                line += MakeLine("", link.vertex);
            }
        }
        lines.push_back(line);
        extents.WidenBy(e);
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
        lines.push_back(MakeLine("image", image.size(),
                                 std::hash<std::string_view>()(std::string_view(image))));
    }
}

}  // namespace cqsurvey
