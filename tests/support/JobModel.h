#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "cqsurvey/CqCadEntity.h"
#include "cqsurvey/Types.h"
#include "support/Box.h"
#include "support/JobLines.h"
#include "support/SettingsModel.h"

namespace cqsurvey {

/// A job as plain maps: what the operations are described to do, without any of the library. The
/// numbers of new records are known, because they are consecutive. Tests that do random work keep
/// one beside the job.
struct JobModel {
    using Coords = std::array<double, 3>;

    struct Point {
        CString name;
        int code = 0;
        int origin = 1;
        std::uint32_t flags = 0;
        int group = 0;
        CqHandle entity = 0;
        CString description;
    };
    /// Everything that an entity of any kind has, side by side.
    struct Entity {
        EntType type = EntSiPnt;
        Coords at{};
        CqHandle layer = 1;
        int color = 256;
        CqHandle point = 0;
        int code = 0;
        int line = 0;
        Box bound{0.0, 0.0, 0.0, 0.0};
        double bulge = 0.0;
        CqHandle pline = 0;
        CString text;
        int align = 0;
        CString style;
        double height = 0.0;
        double rotation = 0.0;
        std::uint32_t option = 0;
        int interval = 0;
        int thickness = 0;
        double radius = 0.0;
        double size = 0.0;
    };
    struct Layer {
        CString name;
        int color = 1;
        int line = 0;
    };
    struct Link {
        CqHandle point = 0;
        CqHandle vertex = 0;
    };

    JobModel();

    // What the job's file holds.
    std::map<CqHandle, Point> points;
    std::map<CqHandle, Entity> entities;
    std::vector<CqHandle> chain;
    std::map<CqHandle, Layer> layers{{1, {u"0", 1, 0}}};
    std::map<int, CString> groups;
    std::map<CqHandle, Link> links;
    SettingsModel settings;
    std::string image;
    CqHandle lastPoint = 0;
    CqHandle lastEntity = 1;
    CqHandle lastLayer = 1;
    CqHandle lastLink = 0;
    int lastGroup = 0;

    // What the object that has it open knows besides.
    CqHandle currentLayer = 1;
    int currentGroup = 0;
    std::map<CqHandle, CqHandle> linkOfVertex;

    /// What was known besides is gone, as when the job is opened.
    void Reopen();

    /// Makes an entity of the current layer; it is not in the chain yet.
    Entity& NewEntity(EntType type, const Coords& at, int color);
    Entity& AppendEntity(EntType type, const Coords& at, int color);
    void RemoveEntity(CqHandle handle);
    /// Adds a point with its entity.
    CqHandle AddPoint(const CString& name, const Coords& at, int code, int color);
    void RemovePoint(CqHandle handle);
    void AddLink(CqHandle point, CqHandle vertex);
    /// Removes the tie of a vertex; false when it has none, or one to another point than `point`,
    /// of which the object then knows no more. 0 stands for any point.
    bool Unlink(CqHandle vertex, CqHandle point = 0);
    /// Inserts a vertex behind the head or a vertex of a polyline, on its layer in its colour.
    void InsertVertex(CqHandle behind, const Coords& at, double bulge);
    void RemoveVertex(CqHandle handle);
    void RemovePline(CqHandle handle);
    CqHandle AddLayer(const CString& name, int color, int line);
    /// Changes an entity, and with a polyline the vertices in the records after its own.
    void ChangeWithVertices(CqHandle handle, const std::function<void(Entity&)>& change);

    [[nodiscard]] CqHandle FindLayer(const CString& name) const;
    [[nodiscard]] bool Is(CqHandle handle, EntType type) const;
    [[nodiscard]] std::size_t PlaceOf(CqHandle handle) const;
    /// Widens a box by what an entity adds to the extents of its drawing.
    static void Widen(Box& extents, const Entity& entity);

    /// As ReadJob would give it after opening.
    [[nodiscard]] JobLines Lines() const;

 private:
    void AddPointLines(JobLines& lines) const;
    void AddEntityLines(JobLines& lines) const;
    void AddSettingsLines(JobLines& lines) const;
};

}  // namespace cqsurvey
