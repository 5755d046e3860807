#include <array>
#include <mutex>
#include <string>

#include "cqsurvey/CqSurveyDB.h"
#include "cqsurvey/Text.h"
#include "job/Job.h"
#include "store/Qrfs.h"
#include "store/StoreExtras.h"

namespace cqsurvey {

namespace {

const CString kTemporaryMount = u"TMP1";
const CString kDivisionKey = u"JCoordDivision";

constexpr std::uint32_t kEntities = 0x1;
constexpr std::uint32_t kDivision = 0x1000;
constexpr std::uint32_t kGroupNames = 0x2000;

/// One number of the answer: the bit of the mask that asks for it, for a closed and for an open
/// job, the field that it goes to, and the table whose records are counted.
struct Count {
    std::uint32_t closedBit;
    std::uint32_t openBit;
    std::int32_t SVDB_INFORMATION::*field;
    std::u16string_view table;
    CqDbTable& (*of)(Job&);
};

template <auto Table>
CqDbTable& Of(Job& job) {
    return job.*Table;
}

template <auto Table, class Type>
constexpr Count MakeCount(std::uint32_t closedBit, std::uint32_t openBit,
                          std::int32_t SVDB_INFORMATION::*field, Type Job::* /*table*/) {
    return {closedBit, openBit, field, Type::Layout::kTable.View(), &Of<Table>};
}

// The layers of a closed job are asked for by the bit of the entities, those of an open one by a
// bit of their own.
const std::array kCounts{
    MakeCount<&Job::entities>(0x1, 0x1, &SVDB_INFORMATION::numEntities, &Job::entities),
    MakeCount<&Job::layers>(0x1, 0x2, &SVDB_INFORMATION::numLayers, &Job::layers),
    MakeCount<&Job::plines>(0x8, 0x8, &SVDB_INFORMATION::numPlines, &Job::plines),
    MakeCount<&Job::points>(0x4, 0x4, &SVDB_INFORMATION::numPoints, &Job::points),
    MakeCount<&Job::texts>(0x80, 0x80, &SVDB_INFORMATION::numTexts, &Job::texts),
    MakeCount<&Job::vertices>(0x10, 0x10, &SVDB_INFORMATION::numVertices, &Job::vertices),
    MakeCount<&Job::bitmaps>(0x20, 0x20, &SVDB_INFORMATION::numBitmaps, &Job::bitmaps),
    MakeCount<&Job::circles>(0x40, 0x40, &SVDB_INFORMATION::numCircles, &Job::circles),
    MakeCount<&Job::groups>(0x100, 0x100, &SVDB_INFORMATION::numGroups, &Job::groups)};

/// The first record of the entity table is the chain's header and not an entity.
std::int32_t WithoutHead(const Count& count, std::int32_t records) {
    return (count.closedBit & count.openBit & kEntities) != 0 && records > 0 ? records - 1
                                                                             : records;
}

void ReadGroupNames(CqGroupTable& groups, CStringList& names) {
    names.clear();
    groups.ForEach([&](CqHandle /*group*/, const std::byte* record) {
        names.push_back(GroupLayout::Get<"GroupName">(record));
    });
}

/// Mounts a closed job for one question and unmounts it at the end of the scope. If another process
/// has the job open for reading, it is mounted for reading here, too. There is one mount name, so
/// only one thread at a time can use it; the others wait.
class TemporaryMount {
 public:
    explicit TemporaryMount(const CString& path)
        : m_lock(s_oneAtATime),
          m_mounted(QrfsMount(path, kTemporaryMount) != 0 ||
                    (QrfsGetLastError() == error::kVolumeMounted &&
                     StoreMountReadOnly(path, kTemporaryMount) != 0)),
          m_openElsewhere(!m_mounted && QrfsGetLastError() == error::kVolumeMounted) {}
    TemporaryMount(const TemporaryMount&) = delete;
    TemporaryMount& operator=(const TemporaryMount&) = delete;
    ~TemporaryMount() {
        if (m_mounted) {
            QrfsUnmount(kTemporaryMount);
        }
    }
    [[nodiscard]] bool IsMounted() const { return m_mounted; }
    [[nodiscard]] bool IsOpenElsewhere() const { return m_openElsewhere; }

 private:
    static std::mutex s_oneAtATime;

    std::unique_lock<std::mutex> m_lock;
    bool m_mounted;
    bool m_openElsewhere;
};

std::mutex TemporaryMount::s_oneAtATime;

/// Fills `info` from the mounted volume; false when a table cannot be read.
bool ReadMounted(std::uint32_t mask, SVDB_INFORMATION& info) {
    const CString root = kTemporaryMount + u":/";
    for (const Count& count : kCounts) {
        if ((mask & count.closedBit) != 0) {
            const std::int32_t records = CqDbTable::CountRecords(root + CString(count.table));
            if (records < 0) {
                return false;
            }
            info.*count.field = WithoutHead(count, records);
        }
    }
    if ((mask & kDivision) != 0) {
        CqSettingsFile settings;
        info.jCoordDivision = 0;
        if (settings.Read(kTemporaryMount + CqSurveyDB::m_SettingsPath) != 0) {
            settings.GetInt(CqSurveyDB::m_SettingsSection, kDivisionKey, info.jCoordDivision);
        }
    }
    if ((mask & kGroupNames) != 0 && info.groupNames != nullptr) {
        info.groupNames->clear();
        try {
            CqGroupTable groups;
            groups.OnOpen(root);
            ReadGroupNames(groups, *info.groupNames);
        } catch (const CqSurveyException& failure) {
            return failure.m_code == error::kNoTable;
        }
    }
    return true;
}

}  // namespace

int CqSurveyDB::GetDBInformation(std::uint32_t mask, const CString& path, SVDB_INFORMATION& info,
                                 CqSurveyDB* db) {
    if (path.empty()) {
        return db == nullptr ? 0 : db->GetJob().GetInformation(mask, info);
    }
    const TemporaryMount mount(path);
    if (mount.IsMounted()) {
        return ReadMounted(mask, info) ? 1 : 0;
    }
    return mount.IsOpenElsewhere() && db != nullptr ? db->GetJob().GetInformation(mask, info) : 0;
}

int CqSurveyDB::GetSettingsDamage(const CString& path, CString& text, CqSurveyDB* db) {
    const auto look = [&](const CString& mountName) {
        CqSettingsFile settings;
        settings.Read(mountName + m_SettingsPath);
        const std::string damage = Job::DescribeSettingsDamage(settings);
        if (damage.empty()) {
            return 0;
        }
        text = FromUtf8(damage);
        return 1;
    };
    const bool isOpen = db != nullptr && db->IsOpen();
    if (path.empty()) {
        return isOpen ? look(db->GetJob().mountName) : 0;
    }
    const TemporaryMount mount(path);
    if (mount.IsMounted()) {
        return look(kTemporaryMount);
    }
    return mount.IsOpenElsewhere() && isOpen ? look(db->GetJob().mountName) : 0;
}

int Job::GetInformation(std::uint32_t mask, SVDB_INFORMATION& info) {
    if (!IsOpen()) {
        return 0;
    }
    for (const Count& count : kCounts) {
        if ((mask & count.openBit) != 0) {
            info.*count.field = WithoutHead(count, count.of(*this).GetRecordCount());
        }
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
