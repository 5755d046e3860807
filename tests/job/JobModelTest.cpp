#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <memory>
#include <string>

#include "cqsurvey/CqJobCheck.h"
#include "job/RandomJob.h"
#include "support/ExpectSameLayers.h"

namespace cqsurvey {
namespace {

/// Random steps, and a look at the whole job now and then.
class ComparedJob : public RandomJob {
 public:
    explicit ComparedJob(std::uint32_t seed) : RandomJob(seed) {}

    void Steps(int count) {
        for (int i = 0; i < count; ++i) {
            const bool wasBatch = Step();
            if (testing::Test::HasFatalFailure()) {
                return;
            }
            if (wasBatch || i % 97 == 0) {
                Compare();
            }
            if (i % 211 == 210) {
                Reopen();
                Compare();
            }
        }
        Reopen();
        Compare();
    }

 private:
    void Compare() {
        ComparePoints();
        CompareGroups();
        CompareEntities();
        ASSERT_NO_FATAL_FAILURE(ExpectSameLayers(m_db, m_model.layers));
        ASSERT_EQ(m_db.GetCurrentLayer(), m_model.currentLayerName);
        ASSERT_EQ(m_db.GetCurrentColor(), m_model.currentColor);
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
            ASSERT_EQ(coords, m_model.entities.at(point.entity).at);
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
        for (const CqHandle expected : m_model.chain) {
            ASSERT_EQ(handle, expected);
            const JobModel::Entity& entity = m_model.entities.at(expected);
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

    void CompareSettings() {
        CStringList sections;
        ASSERT_EQ(m_db.GetSettingsSectionList(sections), 1);
        ASSERT_EQ(sections, m_model.settings.Sections());
        for (const CString& section : sections) {
            CStringList keys;
            ASSERT_EQ(m_db.GetSettingsKeyList(section, keys), 1);
            ASSERT_EQ(keys, m_model.settings.Keys(section));
            for (const CString& key : keys) {
                CString value;
                CString expected;
                ASSERT_TRUE(m_model.settings.Get(section, key, expected));
                ASSERT_EQ(m_db.GetSettingsString(section, key, value, u""), 1);
                ASSERT_EQ(value, expected);
            }
        }
    }
};

TEST(JobModel, AJobFollowsItsModelThroughRandomStepsAndReopening) {
    for (const std::uint32_t seed : {1U, 2U, 3U, 4U}) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        ComparedJob(seed).Steps(1500);
        if (HasFatalFailure()) {
            return;
        }
    }
}

}  // namespace
}  // namespace cqsurvey
