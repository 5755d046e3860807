#include "loss/Workload.h"

#include <iterator>
#include <sstream>

#include "cqsurvey/Text.h"
#include "cqsurvey/exchange/FieldTextReader.h"

namespace cqsurvey {

void Workload::AddPoint() {
    const CString name = OneIn(8) ? u"" : NewName();
    const Coords at = Place();
    const int code = Below(5);
    const int origin = 1 << Below(6);
    const auto flags = static_cast<std::uint32_t>(m_random());
    const CqHandle handle = Job().AddPoint(name, at, code, m_color);
    Job().points.at(handle).origin = origin;
    Job().points.at(handle).flags = flags;
    Expect(handle, [&](CqSurveyDB& db) {
        return db.AddCoordRec(at.data(), name, code, static_cast<SurveyCoordType>(origin), flags);
    });
}

void Workload::Points() {
    const CqHandle handle = PickPoint();
    if (handle == 0) {
        return;
    }
    JobModel::Point& point = Job().points.at(handle);
    const CString name = point.name;
    const bool byName = !name.empty() && OneIn(2);
    if (OneIn(4)) {
        Job().RemovePoint(handle);
        Expect(1, [&](CqSurveyDB& db) {
            return byName ? db.DelCoordRec(name) : db.DelCoordRec(handle);
        });
        return;
    }
    const Coords at = Place();
    const CString newName = byName ? name : NewName();
    point.name = newName;
    point.code = Below(5);
    Job().entities.at(point.entity).at = at;
    Expect(1, [&](CqSurveyDB& db) {
        return byName ? db.EditCoordRec(name, at.data(), point.code)
                      : db.EditCoordRec(handle, newName, at.data(), point.code);
    });
}

void Workload::PointDetails() {
    const CqHandle handle = PickPoint();
    if (handle == 0) {
        return;
    }
    JobModel::Point& point = Job().points.at(handle);
    const bool byName = !point.name.empty() && OneIn(2);
    if (OneIn(2)) {
        point.flags = static_cast<std::uint32_t>(m_random());
        Expect(1, [&](CqSurveyDB& db) {
            return byName ? db.EditCoordRecFlags(point.name, point.flags)
                          : db.EditCoordRecFlags(handle, point.flags);
        });
    } else {
        point.group = Below(Job().lastGroup + 1);
        const auto id = static_cast<std::uint16_t>(point.group);
        Expect(1, [&](CqSurveyDB& db) {
            return byName ? db.EditCoordRecGroup(point.name, id) : db.EditCoordRecGroup(handle, id);
        });
    }
}

void Workload::Groups() {
    JobModel& job = Job();
    if (job.groups.empty() || OneIn(3)) {
        const CString name = Named(u"group ", ++m_names);
        job.groups[++job.lastGroup] = name;
        Expect(1, [&](CqSurveyDB& db) { return db.AddGroup(name); });
        return;
    }
    const auto group = std::next(job.groups.begin(), Below(static_cast<int>(job.groups.size())));
    const int number = group->first;
    const auto id = static_cast<std::uint16_t>(number);
    const CString name = group->second;
    const bool byName = OneIn(2);
    switch (Below(4)) {
        case 0: {
            const CString newName = Named(u"renamed ", ++m_names);
            group->second = newName;
            Expect(1, [&](CqSurveyDB& db) {
                return byName ? db.EditGroup(name, newName) : db.EditGroup(id, newName);
            });
            break;
        }
        case 1:
            job.groups.erase(group);
            for (auto& [handle, point] : job.points) {
                point.group = point.group == number ? 0 : point.group;
            }
            job.currentGroup = job.currentGroup == number ? 0 : job.currentGroup;
            Expect(1, [&](CqSurveyDB& db) { return byName ? db.DelGroup(name) : db.DelGroup(id); });
            break;
        default:
            job.currentGroup = number;
            Expect(1, [&](CqSurveyDB& db) { return db.SetCurrentGroup(name); });
    }
}

void Workload::Descriptions() {
    const CqHandle handle = PickPoint();
    if (handle == 0) {
        return;
    }
    CString& description = Job().points.at(handle).description;
    const bool known = !description.empty();
    if (known && OneIn(3)) {
        description.clear();
        Expect(1, [&](CqSurveyDB& db) { return db.DelCoordDescription(handle); });
        return;
    }
    description = Words(OneIn(10) ? 3000 : 60);
    Expect(1, [&](CqSurveyDB& db) {
        return known ? db.EditCoordDescription(handle, description)
                     : db.AddCoordDescription(handle, description);
    });
}

void Workload::Import() {
    JobModel& job = Job();
    exchange::ImportOptions options;
    if (OneIn(2)) {
        options.group = Named(u"imported ", ++m_names);
        job.groups[++job.lastGroup] = options.group;
        job.currentGroup = job.lastGroup;
    }
    const int count = 1 + Below(20);
    std::ostringstream text;
    text.precision(17);
    for (int i = 0; i < count; ++i) {
        const CString name = NewName();
        const Coords at = Place();
        const CString description = OneIn(2) ? Named(u"stone ", i) : CString();
        const CqHandle point = job.AddPoint(name, at, 0, m_color);
        job.points.at(point).description = description;
        text << ToUtf8(name) << ',' << at[1] << ',' << at[0] << ',' << at[2] << ','
             << ToUtf8(description) << '\n';
    }
    Expect(static_cast<std::uint64_t>(count), [&](CqSurveyDB& db) {
        const std::string bytes = text.str();
        exchange::StringSource source(bytes);
        exchange::FieldTextReadOptions reading;
        reading.order = exchange::ColumnOrder::FromLetters("pnezd");
        reading.separator = exchange::Separator::Comma;
        exchange::FieldTextReader reader(source, reading);
        return reader.Import(db, options).Get(exchange::ImportReport::Fate::Recorded);
    });
}

}  // namespace cqsurvey
