#include <mutex>

#include "cqsurvey/CqSurveyDB.h"
#include "job/Job.h"
#include "store/Qrfs.h"

namespace cqsurvey {

namespace {

const CString kTemporaryMount = u"TMP1";
const CString kDivisionKey = u"JCoordDivision";

enum Wanted : std::uint32_t {
    kEntities = 0x1,
    kLayersOfOpenJob = 0x2,
    kPoints = 0x4,
    kPlines = 0x8,
    kVertices = 0x10,
    kBitmaps = 0x20,
    kCircles = 0x40,
    kTexts = 0x80,
    kGroups = 0x100,
    kDivision = 0x1000,
    kGroupNames = 0x2000,
};

template <class Layout>
std::int32_t Count(const CString& root) {
    return CqDbTable::CountRecords(root + CString(Layout::kTable.View()));
}

void ReadGroupNames(CqGroupTable& groups, CStringList& names) {
    names.clear();
    for (int found = groups.First(kRecordOrder); found != 0; found = groups.Next()) {
        names.push_back(groups.Get<"GroupName">());
    }
}

/// The temporary mount, given up at the end of the scope.
class TemporaryMount {
 public:
    explicit TemporaryMount(const CString& path)
        : m_mounted(QrfsMount(path, kTemporaryMount) != 0) {}
    TemporaryMount(const TemporaryMount&) = delete;
    TemporaryMount& operator=(const TemporaryMount&) = delete;
    ~TemporaryMount() {
        if (m_mounted) {
            QrfsUnmount(kTemporaryMount);
        }
    }
    [[nodiscard]] bool IsMounted() const { return m_mounted; }

 private:
    bool m_mounted;
};

}  // namespace

int CqSurveyDB::GetDBInformation(std::uint32_t mask, const CString& path, SVDB_INFORMATION& info,
                                 CqSurveyDB* db) {
    if (path.empty()) {
        return db == nullptr ? 0 : db->GetJob().GetInformation(mask, info);
    }
    // The one mount name serves all threads in turn.
    static std::mutex oneAtATime;
    const std::unique_lock lock(oneAtATime);
    const TemporaryMount mount(path);
    if (!mount.IsMounted()) {
        return QrfsGetLastError() == error::kVolumeMounted && db != nullptr
                   ? db->GetJob().GetInformation(mask, info)
                   : 0;
    }
    const CString root = kTemporaryMount + u":/";
    if ((mask & kEntities) != 0) {
        const std::int32_t records = Count<EntityLayout>(root);
        info.numEntities = records > 0 ? records - 1 : records;
        info.numLayers = Count<LayerLayout>(root);
    }
    if ((mask & kPlines) != 0) {
        info.numPlines = Count<PlineLayout>(root);
    }
    if ((mask & kPoints) != 0) {
        info.numPoints = Count<PointLayout>(root);
    }
    if ((mask & kTexts) != 0) {
        info.numTexts = Count<TextLayout>(root);
    }
    if ((mask & kVertices) != 0) {
        info.numVertices = Count<VertexLayout>(root);
    }
    if ((mask & kBitmaps) != 0) {
        info.numBitmaps = Count<BitmapLayout>(root);
    }
    if ((mask & kCircles) != 0) {
        info.numCircles = Count<CircleLayout>(root);
    }
    if ((mask & kGroups) != 0) {
        info.numGroups = Count<GroupLayout>(root);
    }
    if ((mask & kDivision) != 0) {
        CqSettingsFile settings;
        info.jCoordDivision = 0;
        if (settings.Read(kTemporaryMount + m_SettingsPath) != 0) {
            settings.GetInt(m_SettingsSection, kDivisionKey, info.jCoordDivision);
        }
    }
    if ((mask & kGroupNames) != 0 && info.groupNames != nullptr) {
        try {
            CqGroupTable groups;
            groups.Open(root + CString(GroupLayout::kTable.View()));
            ReadGroupNames(groups, *info.groupNames);
        } catch (const CqSurveyException&) {
            info.groupNames->clear();
        }
    }
    return 1;
}

int Job::GetInformation(std::uint32_t mask, SVDB_INFORMATION& info) {
    if (!IsOpen()) {
        return 0;
    }
    if ((mask & kEntities) != 0) {
        info.numEntities = entities.GetRecordCount() - 1;
    }
    if ((mask & kLayersOfOpenJob) != 0) {
        info.numLayers = layers.GetRecordCount();
    }
    if ((mask & kPlines) != 0) {
        info.numPlines = plines.GetRecordCount();
    }
    if ((mask & kPoints) != 0) {
        info.numPoints = points.GetRecordCount();
    }
    if ((mask & kTexts) != 0) {
        info.numTexts = texts.GetRecordCount();
    }
    if ((mask & kVertices) != 0) {
        info.numVertices = vertices.GetRecordCount();
    }
    if ((mask & kBitmaps) != 0) {
        info.numBitmaps = bitmaps.GetRecordCount();
    }
    if ((mask & kCircles) != 0) {
        info.numCircles = circles.GetRecordCount();
    }
    if ((mask & kGroups) != 0) {
        info.numGroups = groups.GetRecordCount();
    }
    if ((mask & kDivision) != 0) {
        info.jCoordDivision = 0;
        settings.GetInt(CqSurveyDB::m_SettingsSection, kDivisionKey, info.jCoordDivision);
    }
    if ((mask & kGroupNames) != 0 && info.groupNames != nullptr) {
        ReadGroupNames(groups, *info.groupNames);
    }
    return 1;
}

}  // namespace cqsurvey
