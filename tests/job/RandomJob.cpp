#include "job/RandomJob.h"

#include <array>
#include <cstdlib>
#include <iterator>
#include <string>

#include "cqsurvey/CqBatch.h"
#include "cqsurvey/Text.h"
#include "support/Points.h"

namespace cqsurvey {

CString RandomJob::PickName() {
    switch (Pick(12)) {
        case 0:
            return u"";
        case 1:
            return u"a long name of a point " + CString(1, static_cast<char16_t>(u'a' + Pick(3)));
        default:
            return FromUtf8("P" + std::to_string(Pick(60)));
    }
}

CString RandomJob::PickLayerName() {
    return Pick(8) == 0 ? u"0" : CString(u"layer ") + static_cast<char16_t>(u'A' + Pick(6));
}

CqHandle RandomJob::PickPoint() {
    if (m_model.points.empty() || Pick(15) == 0) {
        return Pick(2) == 0 ? 0 : 900000;
    }
    auto at = m_model.points.begin();
    std::advance(at, Pick(static_cast<int>(m_model.points.size())));
    return at->first;
}

RandomJob::Coords RandomJob::PickCoords() {
    std::uniform_real_distribution<double> value(-1e6, 1e6);
    return {value(m_random), value(m_random), value(m_random)};
}

CString RandomJob::PickGroupName() {
    static constexpr std::array<const char16_t*, 8> kNames{
        u"Road", u"ROAD", u"Wall", u"wall", u"Trees and hedges, 1", u"TREES AND HEDGES, 10",
        u"",     u"Ditch"};
    return kNames[static_cast<std::size_t>(Pick(static_cast<int>(kNames.size())))];
}

bool RandomJob::Step() {
    switch (Pick(20)) {
        case 0:
        case 1:
        case 2:
        case 3:
            Add();
            break;
        case 4:
            EditByName();
            break;
        case 5:
        case 6:
            EditByHandle();
            break;
        case 7:
        case 8:
            Delete();
            break;
        case 9:
            Flags();
            break;
        case 10:
        case 11:
            Layers();
            break;
        case 12:
        case 13:
            Settings();
            break;
        case 14:
            CurrentThings();
            break;
        case 15:
        case 16:
            Groups();
            break;
        case 17:
        case 18:
            Descriptions();
            break;
        default:
            if (!m_inBatch) {
                Batch();
                return true;
            }
            break;
    }
    return false;
}

void RandomJob::Add() {
    const CString name = PickName();
    const Coords coords = PickCoords();
    const int code = Pick(5);
    const int origin = 1 << Pick(6);
    const auto flags = static_cast<std::uint32_t>(m_random());
    CqHandle handle = 0;
    const std::int32_t thrown = CodeThrownBy([&] {
        handle = m_db.AddCoordRec(coords.data(), name, code, static_cast<SurveyCoordType>(origin),
                                  flags);
    });
    if (m_model.FindName(name) != 0) {
        ASSERT_EQ(thrown, error::kDuplicatePointName);
        return;
    }
    ASSERT_EQ(thrown, 0);
    const CString stored = name.substr(0, 19);
    ASSERT_EQ(handle, m_model.AddPoint(stored, coords, code, m_model.currentColor));
    m_model.points.at(handle).origin = origin;
    m_model.points.at(handle).flags = flags;
    m_model.EnterName(handle);
}

void RandomJob::EditByName() {
    const CString name = PickName();
    const Coords coords = PickCoords();
    const int code = Pick(5);
    const CqHandle handle = m_model.FindName(name);
    ASSERT_EQ(m_db.EditCoordRec(name, coords.data(), code), handle == 0 ? 0 : 1);
    if (handle != 0) {
        m_model.Move(handle, coords, code);
    }
}

void RandomJob::EditByHandle() {
    const CqHandle handle = PickPoint();
    const CString name = PickName();
    const Coords coords = PickCoords();
    const int code = Pick(5);
    int result = -1;
    const std::int32_t thrown =
        CodeThrownBy([&] { result = m_db.EditCoordRec(handle, name, coords.data(), code); });
    if (!m_model.points.contains(handle)) {
        ASSERT_EQ(thrown, handle == 0 ? 0 : error::kNoRecord);
        return;
    }
    ASSERT_EQ(thrown, 0);
    JobModel::Point& point = m_model.points.at(handle);
    if (!name.empty() && name == point.name) {
        // Passed on to the form by name, which edits the point that the index holds.
        const CqHandle held = m_model.FindName(name);
        ASSERT_EQ(result, held == 0 ? 0 : 1);
        if (held != 0) {
            m_model.Move(held, coords, code);
        }
        return;
    }
    if (m_model.FindName(name) != 0) {
        ASSERT_EQ(result, 0);
        return;
    }
    ASSERT_EQ(result, 1);
    m_model.Move(handle, coords, code);
    if (name != point.name) {
        m_model.names.erase(point.name);
        point.name = name.substr(0, 19);
        m_model.EnterName(handle);
    }
}

void RandomJob::Delete() {
    const bool byName = Pick(2) == 0;
    const CString name = PickName();
    const CqHandle handle = byName ? m_model.FindName(name) : PickPoint();
    int result = -1;
    const std::int32_t thrown =
        CodeThrownBy([&] { result = byName ? m_db.DelCoordRec(name) : m_db.DelCoordRec(handle); });
    if (!m_model.points.contains(handle)) {
        ASSERT_EQ(thrown, handle == 0 ? 0 : error::kNoRecord);
        ASSERT_LE(result, 0);
        return;
    }
    ASSERT_EQ(result, 1);
    m_model.names.erase(m_model.points.at(handle).name);
    m_model.descriptions.erase(handle);
    m_model.RemovePoint(handle);
}

void RandomJob::Flags() {
    const CqHandle handle = PickPoint();
    const auto flags = static_cast<std::uint32_t>(m_random());
    const std::int32_t thrown = CodeThrownBy([&] { m_db.EditCoordRecFlags(handle, flags); });
    if (m_model.points.contains(handle)) {
        ASSERT_EQ(thrown, 0);
        m_model.points[handle].flags = flags;
    }
}

void RandomJob::Groups() {
    const CString name = PickGroupName();
    const int found = m_model.FindGroup(name);
    switch (Pick(7)) {
        case 0:
        case 1:
            ASSERT_EQ(m_db.AddGroup(name), name.empty() || found != 0 ? 0 : 1);
            if (!name.empty() && found == 0) {
                m_model.groups[++m_model.lastGroup] = name.substr(0, 19);
            }
            break;
        case 2: {
            const CString newName = PickGroupName();
            const bool refused = found == 0 || m_model.FindGroup(newName) != 0;
            ASSERT_EQ(m_db.EditGroup(name, newName), refused ? 0 : 1);
            if (!refused) {
                m_model.groups[found] = newName.substr(0, 19);
            }
            break;
        }
        case 3: {
            const int id = Pick(m_model.lastGroup + 2);
            int result = 0;
            const std::int32_t thrown = CodeThrownBy(
                [&] { result = m_db.EditGroup(static_cast<std::uint16_t>(id), name); });
            const auto group = m_model.groups.find(id);
            if (group == m_model.groups.end()) {
                ASSERT_EQ(thrown, id == 0 ? 0 : error::kNoRecord);
                ASSERT_EQ(result, 0);
                break;
            }
            ASSERT_EQ(result, group->second.empty() || found != 0 ? 0 : 1);
            if (result != 0) {
                group->second = name.substr(0, 19);
            }
            break;
        }
        case 4:
            ASSERT_EQ(m_db.DelGroup(name), found != 0 ? 1 : 0);
            m_model.groups.erase(found);
            for (auto& [handle, point] : m_model.points) {
                point.group = point.group == found ? 0 : point.group;
            }
            m_model.currentGroup = m_model.currentGroup == found ? 0 : m_model.currentGroup;
            break;
        case 5:
            ASSERT_EQ(m_db.SetCurrentGroup(name), name.empty() || found != 0 ? 1 : 0);
            m_model.currentGroup = found;
            break;
        default: {
            const CqHandle point = PickPoint();
            const int id = Pick(m_model.lastGroup + 2);
            if (m_model.points.contains(point)) {
                ASSERT_EQ(m_db.EditCoordRecGroup(point, static_cast<std::uint16_t>(id)), 1);
                m_model.points[point].group = id;
            }
            break;
        }
    }
}

void RandomJob::Descriptions() {
    const CqHandle handle = PickPoint();
    const CString text =
        CString(static_cast<std::size_t>(Pick(50)), static_cast<char16_t>(u'\u00DF' + Pick(9)));
    const bool known = m_model.descriptions.contains(handle);
    int result = 0;
    bool done = false;
    switch (Pick(3)) {
        case 0:
            result = m_db.AddCoordDescription(handle, text);
            done = handle != 0 && !known && !text.empty();
            break;
        case 1:
            result = m_db.EditCoordDescription(handle, text);
            done = known && !text.empty();
            break;
        default:
            ASSERT_EQ(m_db.DelCoordDescription(handle), known ? 1 : 0);
            m_model.descriptions.erase(handle);
            return;
    }
    ASSERT_EQ(result, done ? 1 : 0);
    if (done) {
        m_model.descriptions[handle] = text;
    }
}

void RandomJob::Layers() {
    const CString name = PickLayerName();
    const CqHandle layer = m_model.FindLayer(name);
    const int color = Pick(9) - 4;
    const int found = layer != 0 ? 1 : 0;
    int line = 7;
    switch (Pick(6)) {
        case 0:
            line = Pick(3);
            ASSERT_EQ(m_db.AddLayer(name, color, line), 1 - found);
            if (layer == 0) {
                m_model.AddLayer(name, color, line);
            }
            break;
        case 1:
            if (Pick(4) == 0) {
                ASSERT_EQ(m_db.DeleteLayer(name), found);
                m_model.layers.erase(layer);
            }
            break;
        case 2: {
            const int show = Pick(2);
            ASSERT_EQ(m_db.ShowLayer(name, show), found);
            if (layer != 0) {
                const int shown = std::abs(m_model.layers[layer].color);
                m_model.layers[layer].color = show != 0 ? shown : -shown;
            }
            break;
        }
        case 3:
            ASSERT_EQ(m_db.EditLayerColor(name, color), found);
            if (layer != 0) {
                m_model.layers[layer].color = color;
            }
            break;
        case 4:
            ASSERT_EQ(m_db.EditLayerLine(name, line), found);
            if (layer != 0) {
                m_model.layers[layer].line = line;
            }
            break;
        default:
            MoveToLayer(name, layer, color);
            break;
    }
}

void RandomJob::MoveToLayer(const CString& name, CqHandle layer, int color) {
    const CqHandle point = PickPoint();
    if (!m_model.points.contains(point)) {
        return;
    }
    const CqHandle entity = m_model.points[point].entity;
    switch (Pick(3)) {
        case 0:
            ASSERT_EQ(m_db.EditLayer(entity, name), 1);
            if (layer == 0) {
                layer = m_model.AddLayer(name, 1, 0);
            }
            m_model.entities[entity].layer = layer;
            break;
        case 1:
            ASSERT_EQ(m_db.EditCadEntityLayer(entity, name), layer != 0 ? 1 : 0);
            if (layer != 0) {
                m_model.entities[entity].layer = layer;
            }
            break;
        default:
            ASSERT_EQ(m_db.EditCadEntityColor(entity, color), 1);
            m_model.entities[entity].color = color;
            break;
    }
}

void RandomJob::CurrentThings() {
    const CString name = PickLayerName();
    const CqHandle layer = m_model.FindLayer(name);
    ASSERT_EQ(m_db.SetCurrentLayer(name), layer != 0 ? 1 : 0);
    if (layer != 0) {
        m_model.currentLayer = layer;
        m_model.currentLayerName = name;
    }
    const int color = Pick(600) - 300;
    const bool inRange = std::abs(color) <= 256;
    ASSERT_EQ(m_db.SetCurrentColor(color), inRange ? 1 : 0);
    if (inRange) {
        m_model.currentColor = color;
    }
}

void RandomJob::Settings() {
    const CString section = CString(u"MY ") + static_cast<char16_t>(u'A' + Pick(3));
    const CString key = CString(u"key") + static_cast<char16_t>(u'a' + Pick(3));
    switch (Pick(4)) {
        case 0:
            ASSERT_EQ(m_db.AddSettingsSection(section), m_model.settings.Add(section) ? 1 : 0);
            break;
        case 1:
            if (Pick(4) == 0) {
                ASSERT_EQ(m_db.DeleteSettingsSection(section),
                          m_model.settings.Delete(section) ? 1 : 0);
            }
            break;
        default: {
            const CString value =
                Pick(4) == 0 ? u"" : FromUtf8("wért=" + std::to_string(Pick(100)));
            ASSERT_EQ(m_db.WriteSettingsString(section, key, value),
                      m_model.settings.Set(section, key, value) ? 1 : 0);
        }
    }
}

void RandomJob::Batch() {
    const OpenJobModel before = m_model;
    const bool keep = Pick(2) == 0;
    m_inBatch = true;
    {
        CqBatch batch(m_db);
        for (int i = Pick(30); i > 0; --i) {
            Step();
        }
        if (keep) {
            batch.Commit();
        }
    }
    m_inBatch = false;
    if (!keep) {
        m_model = before;
    }
}

void RandomJob::Reopen() {
    m_db.Close();
    m_db.Open(m_path);
    m_model.Reopen();
}

}  // namespace cqsurvey
