#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <functional>
#include <map>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "cqsurvey/CqBatch.h"
#include "cqsurvey/CqJobCheck.h"
#include "cqsurvey/CqSurveyDB.h"
#include "cqsurvey/Text.h"
#include "support/Points.h"
#include "support/TempDir.h"

namespace cqsurvey {
namespace {

using Coords = std::array<double, 3>;

/// A job as plain lists: what the operations are described to do, without any of the library.
struct Model {
    struct Point {
        CString name;
        Coords coords;
        int code;
        int origin;
        std::uint32_t flags;
        CqHandle entity;
        int group;
    };
    struct Entity {
        CqHandle layer;
        int color;
    };
    struct Layer {
        CString name;
        int color;
        int line;
    };
    struct Section {
        CString name;
        std::vector<std::pair<CString, CString>> keys;
    };

    std::map<CqHandle, Point> points;
    std::map<CString, CqHandle> names;
    std::map<CqHandle, Entity> entities;  // added at the end only, so the chain is in their order
    std::map<CqHandle, Layer> layers{{1, {u"0", 1, 0}}};
    std::map<int, CString> groups;
    std::map<CqHandle, CString> descriptions;
    std::vector<Section> sections;
    CqHandle nextPoint = 1;
    CqHandle nextEntity = 2;
    CqHandle nextLayer = 2;
    int nextGroup = 1;
    int currentGroup = 0;
    CqHandle currentLayer = 1;
    CString currentLayerName = u"0";
    int currentColor = 256;

    void Reopen() {
        currentGroup = 0;
        names.clear();
        for (const auto& [handle, point] : points) {
            if (!point.name.empty()) {
                names[point.name] = handle;
            }
        }
        if (const CqHandle zero = FindLayer(u"0")) {
            currentLayer = zero;
            currentLayerName = u"0";
        } else {
            currentLayer = 0;
            currentLayerName.clear();
        }
    }

    [[nodiscard]] CqHandle FindLayer(const CString& name) const {
        for (const auto& [handle, layer] : layers) {
            if (layer.name == name) {
                return handle;
            }
        }
        return 0;
    }

    static CString Lower(CString name) {
        for (char16_t& unit : name) {
            unit = static_cast<char16_t>(unit >= u'A' && unit <= u'Z' ? unit + 32 : unit);
        }
        return name;
    }

    [[nodiscard]] int FindGroup(const CString& name) const {
        for (const auto& [id, group] : groups) {
            if (!name.empty() && Lower(group) == Lower(name)) {
                return id;
            }
        }
        return 0;
    }

    [[nodiscard]] CqHandle FindName(const CString& name) const {
        const auto found = names.find(name);
        return name.empty() || found == names.end() ? 0 : found->second;
    }

    Section* FindSection(const CString& name) {
        const auto found = std::find_if(sections.begin(), sections.end(),
                                        [&](const Section& s) { return s.name == name; });
        return found == sections.end() ? nullptr : &*found;
    }
};

class RandomSteps {
 public:
    explicit RandomSteps(std::uint32_t seed) : m_random(seed) { m_db.CreateNew(m_path); }

    void Steps(int count) {
        for (int i = 0; i < count; ++i) {
            Step();
            if (testing::Test::HasFatalFailure()) {
                return;
            }
            if (i % 97 == 0) {
                Compare();
            }
            if (i % 211 == 210) {
                Reopen();
            }
        }
        Reopen();
    }

 private:
    int Pick(int below) { return std::uniform_int_distribution<int>(0, below - 1)(m_random); }

    CString PickName() {
        switch (Pick(12)) {
            case 0:
                return u"";
            case 1:
                return u"a long name of a point " +
                       CString(1, static_cast<char16_t>(u'a' + Pick(3)));
            default:
                return FromUtf8("P" + std::to_string(Pick(60)));
        }
    }

    CString PickLayerName() {
        return Pick(8) == 0 ? u"0" : CString(u"layer ") + static_cast<char16_t>(u'A' + Pick(6));
    }

    CqHandle PickPoint() {
        if (m_model.points.empty() || Pick(15) == 0) {
            return Pick(2) == 0 ? 0 : 900000;
        }
        auto at = m_model.points.begin();
        std::advance(at, Pick(static_cast<int>(m_model.points.size())));
        return at->first;
    }

    Coords PickCoords() {
        std::uniform_real_distribution<double> value(-1e6, 1e6);
        return {value(m_random), value(m_random), value(m_random)};
    }

    void Step() {
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
                }
                break;
        }
    }

    void Add() {
        const CString name = PickName();
        const Coords coords = PickCoords();
        const int code = Pick(5);
        const int origin = 1 << Pick(6);
        const auto flags = static_cast<std::uint32_t>(m_random());
        CqHandle handle = 0;
        const std::int32_t thrown = CodeThrownBy([&] {
            handle = m_db.AddCoordRec(coords.data(), name, code,
                                      static_cast<SurveyCoordType>(origin), flags);
        });
        if (m_model.FindName(name) != 0) {
            ASSERT_EQ(thrown, error::kDuplicatePointName);
            return;
        }
        ASSERT_EQ(thrown, 0);
        ASSERT_EQ(handle, m_model.nextPoint);
        const CString stored = name.substr(0, 19);
        m_model.points[handle] = {
            stored, coords, code, origin, flags, m_model.nextEntity, m_model.currentGroup};
        m_model.entities[m_model.nextEntity] = {m_model.currentLayer, m_model.currentColor};
        if (!stored.empty()) {
            m_model.names[stored] = handle;
        }
        ++m_model.nextPoint;
        ++m_model.nextEntity;
    }

    void EditByName() {
        const CString name = PickName();
        const Coords coords = PickCoords();
        const int code = Pick(5);
        const CqHandle handle = m_model.FindName(name);
        ASSERT_EQ(m_db.EditCoordRec(name, coords.data(), code), handle == 0 ? 0 : 1);
        if (handle != 0) {
            m_model.points[handle].coords = coords;
            m_model.points[handle].code = code;
        }
    }

    void EditByHandle() {
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
        Model::Point& point = m_model.points[handle];
        if (!name.empty() && name == point.name) {
            // Passed on to the form by name, which edits the point that the index holds.
            const CqHandle held = m_model.FindName(name);
            ASSERT_EQ(result, held == 0 ? 0 : 1);
            if (held != 0) {
                m_model.points[held].coords = coords;
                m_model.points[held].code = code;
            }
            return;
        }
        if (m_model.FindName(name) != 0) {
            ASSERT_EQ(result, 0);
            return;
        }
        ASSERT_EQ(result, 1);
        point.coords = coords;
        point.code = code;
        if (name != point.name) {
            m_model.names.erase(point.name);
            point.name = name.substr(0, 19);
            if (!point.name.empty()) {
                m_model.names[point.name] = handle;
            }
        }
    }

    void Delete() {
        const bool byName = Pick(2) == 0;
        const CString name = PickName();
        const CqHandle handle = byName ? m_model.FindName(name) : PickPoint();
        int result = -1;
        const std::int32_t thrown = CodeThrownBy(
            [&] { result = byName ? m_db.DelCoordRec(name) : m_db.DelCoordRec(handle); });
        const auto found = m_model.points.find(handle);
        if (found == m_model.points.end()) {
            ASSERT_EQ(thrown, handle == 0 ? 0 : error::kNoRecord);
            ASSERT_LE(result, 0);
            return;
        }
        ASSERT_EQ(result, 1);
        m_model.names.erase(found->second.name);
        m_model.entities.erase(found->second.entity);
        m_model.descriptions.erase(handle);
        m_model.points.erase(found);
    }

    void Flags() {
        const CqHandle handle = PickPoint();
        const auto flags = static_cast<std::uint32_t>(m_random());
        const std::int32_t thrown = CodeThrownBy([&] { m_db.EditCoordRecFlags(handle, flags); });
        if (m_model.points.contains(handle)) {
            ASSERT_EQ(thrown, 0);
            m_model.points[handle].flags = flags;
        }
    }

    CString PickGroupName() {
        static constexpr std::array<const char16_t*, 8> kNames{
            u"Road", u"ROAD", u"Wall", u"wall", u"Trees and hedges, 1", u"TREES AND HEDGES, 10",
            u"",     u"Ditch"};
        return kNames[static_cast<std::size_t>(Pick(static_cast<int>(kNames.size())))];
    }

    void Groups() {
        const CString name = PickGroupName();
        const int found = m_model.FindGroup(name);
        switch (Pick(7)) {
            case 0:
            case 1:
                ASSERT_EQ(m_db.AddGroup(name), name.empty() || found != 0 ? 0 : 1);
                if (!name.empty() && found == 0) {
                    m_model.groups[m_model.nextGroup++] = name.substr(0, 19);
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
                const int id = Pick(m_model.nextGroup + 1);
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
                const int id = Pick(m_model.nextGroup + 1);
                if (m_model.points.contains(point)) {
                    ASSERT_EQ(m_db.EditCoordRecGroup(point, static_cast<std::uint16_t>(id)), 1);
                    m_model.points[point].group = id;
                }
                break;
            }
        }
    }

    void Descriptions() {
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

    void Layers() {
        const CString name = PickLayerName();
        const CqHandle layer = m_model.FindLayer(name);
        const int color = Pick(9) - 4;
        const int found = layer != 0 ? 1 : 0;
        switch (Pick(6)) {
            case 0:
                ASSERT_EQ(m_db.AddLayer(name, color, Pick(3)), 1 - found);
                if (layer == 0) {
                    m_model.layers[m_model.nextLayer] = {name, color, m_db.GetLayerLine(name)};
                    ++m_model.nextLayer;
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
                ASSERT_EQ(m_db.EditLayerLine(name, 7), found);
                if (layer != 0) {
                    m_model.layers[layer].line = 7;
                }
                break;
            default:
                MoveToLayer(name, layer, color);
                break;
        }
    }

    void MoveToLayer(const CString& name, CqHandle layer, int color) {
        const CqHandle point = PickPoint();
        if (!m_model.points.contains(point)) {
            return;
        }
        const CqHandle entity = m_model.points[point].entity;
        switch (Pick(3)) {
            case 0:
                ASSERT_EQ(m_db.EditLayer(entity, name), 1);
                if (layer == 0) {
                    layer = m_model.nextLayer++;
                    m_model.layers[layer] = {name, 1, 0};
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

    void CurrentThings() {
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

    void Settings() {
        const CString section = CString(u"MY ") + static_cast<char16_t>(u'A' + Pick(3));
        const CString key = CString(u"key") + static_cast<char16_t>(u'a' + Pick(3));
        Model::Section* known = m_model.FindSection(section);
        switch (Pick(4)) {
            case 0:
                ASSERT_EQ(m_db.AddSettingsSection(section), known == nullptr ? 1 : 0);
                if (known == nullptr) {
                    m_model.sections.push_back({section, {}});
                }
                return;
            case 1:
                if (Pick(4) != 0) {
                    return;
                }
                ASSERT_EQ(m_db.DeleteSettingsSection(section), known != nullptr ? 1 : 0);
                std::erase_if(m_model.sections,
                              [&](const Model::Section& s) { return s.name == section; });
                return;
            default:
                break;
        }
        const CString value = Pick(4) == 0 ? u"" : FromUtf8("wért=" + std::to_string(Pick(100)));
        const int result = m_db.WriteSettingsString(section, key, value);
        if (known == nullptr) {
            ASSERT_EQ(result, 0);
            return;
        }
        const auto line = std::find_if(known->keys.begin(), known->keys.end(),
                                       [&](const auto& entry) { return entry.first == key; });
        const bool there = line != known->keys.end();
        ASSERT_EQ(result, value.empty() && !there ? 0 : 1);
        if (value.empty()) {
            if (there) {
                known->keys.erase(line);
            }
        } else if (there) {
            line->second = value;
        } else {
            known->keys.emplace_back(key, value);
        }
    }

    void Batch() {
        const Model before = m_model;
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
        Compare();
    }

    void Reopen() {
        m_db.Close();
        m_db.Open(m_path);
        m_model.Reopen();
        Compare();
    }

    void Compare() {
        ComparePoints();
        CompareGroups();
        CompareEntities();
        CompareLayers();
        CompareSettings();
        const CqJobCheck check(m_db);
        for (const CqJobFinding& finding : check.GetFindings()) {
            ASSERT_EQ(finding.kind, CqJobFinding::Kind::Note)
                << finding.table << " " << finding.record << ": " << finding.text;
        }
    }

    void ComparePoints() {
        ASSERT_EQ(m_db.GetNumCoordRecs(), static_cast<int>(m_model.points.size()));
        CqHandle handle = m_db.GetFirstCoordRecHandle();
        for (const auto& [expected, point] : m_model.points) {
            ASSERT_EQ(handle, expected);
            CqCoordRec rec;
            ASSERT_EQ(m_db.GetNextCoordRec(handle, rec), 1);
            Coords coords{};
            rec.GetPoint(coords.data());
            ASSERT_EQ(rec.GetPtName(), point.name);
            ASSERT_EQ(coords, point.coords);
            ASSERT_EQ(rec.GetCode(), point.code);
            ASSERT_EQ(rec.GetType(), point.origin);
            ASSERT_EQ(rec.GetFlags(), point.flags);
            ASSERT_EQ(rec.GetGroup(), point.group);
            CString text;
            const auto described = m_model.descriptions.find(expected);
            const bool has = described != m_model.descriptions.end();
            ASSERT_EQ(m_db.GetCoordDescription(expected, text), has ? 1 : 0);
            ASSERT_EQ(text, has ? described->second : u"");
            ASSERT_EQ(m_db.GetCoordRecHandleByPtName(point.name), m_model.FindName(point.name));
        }
        ASSERT_EQ(handle, 0U);
        const auto admitted = std::count_if(m_model.points.begin(), m_model.points.end(),
                                            [](const auto& p) { return p.second.origin < 32; });
        ASSERT_EQ(m_db.GetSortCoordRecs(), admitted);
    }

    void CompareGroups() {
        CStringList expected;
        for (const auto& [id, name] : m_model.groups) {
            expected.push_back(name);
            ASSERT_EQ(m_db.GetGroupName(static_cast<std::uint16_t>(id)), name);
            ASSERT_EQ(m_db.GetGroupID(name), m_model.FindGroup(name));
        }
        CStringList list{u"left over"};
        ASSERT_EQ(m_db.GetGroupList(list), expected.empty() ? 0 : 1);
        ASSERT_EQ(list, expected);
        const auto current = m_model.groups.find(m_model.currentGroup);
        ASSERT_EQ(m_db.GetCurrentGroup(), current == m_model.groups.end() ? u"" : current->second);
    }

    void CompareEntities() {
        CqHandle handle = m_db.GetFirstCadEntityHandle();
        for (const auto& [expected, entity] : m_model.entities) {
            ASSERT_EQ(handle, expected);
            CqCadEntity* object = nullptr;
            ASSERT_EQ(m_db.GetNextCadEntity(handle, object), 1);
            const std::unique_ptr<CqCadEntity> owner(object);
            const auto layer = m_model.layers.find(entity.layer);
            ASSERT_EQ(owner->GetLayer(), layer == m_model.layers.end() ? u"" : layer->second.name);
            ASSERT_EQ(owner->GetColor(), entity.color);
        }
        ASSERT_EQ(handle, 0U);
        ASSERT_EQ(m_db.GetNumCadEntities(), static_cast<int>(m_model.entities.size()));
    }

    void CompareLayers() {
        CqHandle handle = m_db.GetFirstLayerHandle();
        for (const auto& [expected, layer] : m_model.layers) {
            ASSERT_EQ(handle, expected);
            CString name;
            int color = 0;
            ASSERT_EQ(m_db.GetNextLayer(handle, name, color), 1);
            ASSERT_EQ(name, layer.name);
            ASSERT_EQ(color, layer.color);
            ASSERT_EQ(m_db.GetLayerLine(name), layer.line);
        }
        ASSERT_EQ(handle, 0U);
        ASSERT_EQ(m_db.GetCurrentLayer(), m_model.currentLayerName);
        ASSERT_EQ(m_db.GetCurrentColor(), m_model.currentColor);
    }

    void CompareSettings() {
        CStringList sections;
        ASSERT_EQ(m_db.GetSettingsSectionList(sections), 1);
        CStringList expected{u"SETTINGS", u"BACKGROUND"};
        for (const Model::Section& section : m_model.sections) {
            expected.push_back(section.name);
            CStringList keys;
            ASSERT_EQ(m_db.GetSettingsKeyList(section.name, keys), 1);
            ASSERT_EQ(keys.size(), section.keys.size());
            for (std::size_t i = 0; i < keys.size(); ++i) {
                ASSERT_EQ(keys[i], section.keys[i].first);
                CString value;
                ASSERT_EQ(m_db.GetSettingsString(section.name, keys[i], value, u""), 1);
                ASSERT_EQ(value, section.keys[i].second);
            }
        }
        ASSERT_EQ(sections, expected);
    }

    std::mt19937 m_random;
    TempDir m_folder;
    CString m_path = m_folder.Path(u"a.job");
    CqSurveyDB m_db;
    Model m_model;
    bool m_inBatch = false;
};

TEST(JobModel, AJobFollowsItsModelThroughRandomStepsAndReopening) {
    for (const std::uint32_t seed : {1U, 2U, 3U, 4U}) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        RandomSteps(seed).Steps(1500);
        if (HasFatalFailure()) {
            return;
        }
    }
}

}  // namespace
}  // namespace cqsurvey
