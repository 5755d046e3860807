#include <cqsurvey/cqsurvey.h>

#include <algorithm>
#include <limits>
#include <utility>

#include "cqjob/Arguments.h"
#include "cqjob/Command.h"
#include "cqjob/Failure.h"
#include "cqjob/JobChange.h"
#include "cqjob/JobFile.h"
#include "cqjob/JsonWriter.h"
#include "cqjob/TextTable.h"
#include "text/Printable.h"

namespace cqsurvey::cqjob {

namespace {

struct Group {
    std::optional<std::string> name;  ///< nothing for a group that does not exist, but has points
    std::uint16_t id = 0;             ///< 0 when unknown: a group without a name and points
    std::size_t points = 0;
};

/// How many points have each group number; 0 is no group.
std::vector<std::size_t> CountPoints(const CqSurveyDB& db) {
    std::vector<std::size_t> counts(std::numeric_limits<std::uint16_t>::max() + 1U);
    CqCoordRec point;
    for (CqHandle next = db.GetFirstCoordRecHandle();
         next != 0 && db.GetNextCoordRec(next, point) != 0;) {
        ++counts[point.GetGroup()];
    }
    return counts;
}

/// The name of group `id`; nothing when there is no such group.
std::optional<std::string> FindName(CqSurveyDB& db, std::uint16_t id) {
    try {
        return ToUtf8(db.GetGroupName(id));
    } catch (const CqSurveyException& error) {
        if (error.m_code != static_cast<std::int32_t>(error::kNoRecord)) {
            throw;
        }
        return std::nullopt;
    }
}

class GroupsCommand : public Command {
 public:
    CommandLine& AddTo(CommandLine& program) override {
        CommandLine& command =
            program.AddCommand("groups", "List, add, rename and delete groups of points");
        command.RequireCommand();
        command.SetFooter(
            "Names of groups are compared without regard to case. \"#3\" is the group of number "
            "3,\n"
            "unless a group has that name. cqjob edit --group puts points into a group.\n"
            "\n"
            "Example:\n"
            "  cqjob groups list site.job\n"
            "  cqjob groups rename site.job Road \"Road 7\"");

        m_list = &command.AddCommand("list", "List every group and how many points it has");
        AddJob(*m_list, "The job; it is not changed");
        AddJson(*m_list);
        AddWide(*m_list);
        m_list->SetFooter("Example:\n  cqjob groups list site.job");

        m_add = &command.AddCommand("add", "Add groups");
        AddJob(*m_add, "The job");
        AddNames(*m_add, "The names of the new groups");
        AddJson(*m_add);
        m_add->SetFooter(
            "When one of the groups already exists, none is added.\n\n"
            "Example:\n  cqjob groups add site.job Road \"Day 2\"");

        m_rename = &command.AddCommand("rename", "Rename a group");
        AddJob(*m_rename, "The job");
        m_rename->Add("NAME", m_oldName, "The group").Required().Placeholder("");
        m_rename->Add("NEW", m_newName, "Its new name").Required().Placeholder("");
        AddJson(*m_rename);
        m_rename->SetFooter("Example:\n  cqjob groups rename site.job Road \"Road 7\"");

        m_delete = &command.AddCommand("delete", "Delete groups; their points stay");
        AddJob(*m_delete, "The job");
        AddNames(*m_delete, "The groups");
        AddJson(*m_delete);
        m_delete->SetFooter(
            "The points of a deleted group are then in no group. When one of the groups does not\n"
            "exist, none is deleted.\n\n"
            "Example:\n  cqjob groups delete site.job Road");
        return command;
    }

    int Run(Console& console) override {
        if (m_list->IsGiven()) {
            List(console);
        } else if (m_add->IsGiven()) {
            Add(console);
        } else if (m_rename->IsGiven()) {
            Rename(console);
        } else {
            Delete(console);
        }
        return 0;
    }

 private:
    void AddNames(CommandLine& command, const std::string& help) {
        command.Add("NAME", m_names, help).Required().Placeholder("");
    }

    [[nodiscard]] std::uint16_t RequireGroup(CqSurveyDB& db, const std::string& text) const {
        std::uint16_t id = db.GetGroupID(ReadText(text, "the group's name"));
        const std::optional<std::uint32_t> number = ReadRecordNumber(text);
        if (id == 0 && number && *number <= std::numeric_limits<std::uint16_t>::max() &&
            FindName(db, static_cast<std::uint16_t>(*number))) {
            id = static_cast<std::uint16_t>(*number);
        }
        if (id == 0) {
            throw Failure(fmt::format("{}: there is no group {}", Printable(m_job), Quoted(text)));
        }
        return id;
    }

    [[nodiscard]] static CString ReadNewName(const std::string& text) {
        CString name = ReadName(text, "the group's name");
        if (name.empty()) {
            throw UsageError("a group needs a name");
        }
        return name;
    }

    [[noreturn]] void ThrowSameName(const std::string& name) const {
        throw Failure(fmt::format("{}: there is already a group {}, perhaps in another letter case",
                                  Printable(m_job), Quoted(name)));
    }

    /// Every group in record order, then the numbers that points have although there is no such
    /// group.
    static std::vector<Group> FindGroups(CqSurveyDB& db, std::vector<std::size_t>& counts) {
        CStringList names;
        db.GetGroupList(names);
        std::vector<Group> groups;
        std::size_t nameless = 0;
        for (const CString& name : names) {
            const std::uint16_t id = db.GetGroupID(name);
            if (id == 0) {
                ++nameless;
            } else {
                groups.push_back({ToUtf8(name), id, std::exchange(counts[id], 0)});
            }
        }
        for (std::size_t id = 1; id < counts.size(); ++id) {
            if (counts[id] > 0) {
                const auto group = static_cast<std::uint16_t>(id);
                groups.push_back({FindName(db, group), group, counts[id]});
                if (nameless > 0 && groups.back().name == "") {
                    --nameless;
                }
            }
        }
        groups.insert(groups.end(), nameless, Group{.name = ""});
        return groups;
    }

    void List(Console& console) const {
        CqSurveyDB db;
        OpenToRead(db, m_job);
        std::vector<std::size_t> counts = CountPoints(db);
        const std::size_t ungrouped = counts[0];
        const std::vector<Group> groups = FindGroups(db, counts);
        if (m_json) {
            WriteJson(console, groups, ungrouped);
        } else {
            TextTable table(console, {{"Group"}, {"Number", true}, {"Points", true}});
            for (const Group& group : groups) {
                table.Add({group.name ? *group.name : "(no such group)",
                           group.id == 0 ? "" : fmt::format("{}", group.id),
                           fmt::format("{}", group.points)});
            }
            table.Add({"(in no group)", "", fmt::format("{}", ungrouped)});
            table.Finish();
        }
        db.Close();
    }

    void WriteJson(Console& console, const std::vector<Group>& groups,
                   std::size_t ungrouped) const {
        JsonWriter json(console);
        json.BeginObject();
        json.Member("job", m_job);
        json.Key("groups");
        json.BeginArray();
        for (const Group& group : groups) {
            json.BeginObject();
            if (group.name) {
                json.Member("name", *group.name);
            } else {
                json.Key("name");
                json.Null();
            }
            json.Member("id", group.id);
            json.Member("points", group.points);
            json.EndObject();
        }
        json.EndArray();
        json.Member("ungrouped", ungrouped);
        json.EndObject();
    }

    void Add(Console& console) const {
        std::vector<CString> names;
        std::transform(m_names.begin(), m_names.end(), std::back_inserter(names), ReadNewName);
        CqSurveyDB db;
        OpenToWrite(db, m_job);
        CqBatch batch(db);
        for (std::size_t i = 0; i < names.size(); ++i) {
            if (db.AddGroup(names[i]) == 0) {
                ThrowSameName(m_names[i]);
            }
        }
        batch.Commit();
        if (m_json) {
            JsonWriter json(console);
            json.BeginObject();
            json.Member("job", m_job);
            json.Key("added");
            json.BeginArray();
            for (const CString& name : names) {
                json.BeginObject();
                json.Member("name", ToUtf8(name));
                json.Member("id", db.GetGroupID(name));
                json.EndObject();
            }
            json.EndArray();
            json.EndObject();
        }
        CloseChanged(db);
    }

    void Rename(Console& console) const {
        const CString newName = ReadNewName(m_newName);
        CqSurveyDB db;
        OpenToWrite(db, m_job);
        const std::uint16_t id = RequireGroup(db, m_oldName);
        // A group without a name cannot be renamed, but it can be deleted.
        const CString oldName = db.GetGroupName(id);
        if (oldName.empty()) {
            throw Failure(fmt::format("{}: the group {} has no name and cannot be given one",
                                      Printable(m_job), Quoted(m_oldName)));
        }
        if (db.EditGroup(id, newName) == 0) {
            ThrowSameName(m_newName);
        }
        CloseChanged(db);
        if (m_json) {
            JsonWriter json(console);
            json.BeginObject();
            json.Member("job", m_job);
            json.Member("id", id);
            json.Member("old_name", ToUtf8(oldName));
            json.Member("name", m_newName);
            json.EndObject();
        }
    }

    void Delete(Console& console) const {
        CqSurveyDB db;
        OpenToWrite(db, m_job);
        std::vector<std::size_t> counts = CountPoints(db);
        std::vector<Group> deleted;
        CqBatch batch(db);
        for (const std::string& name : m_names) {
            const std::uint16_t id = RequireGroup(db, name);
            deleted.push_back({ToUtf8(db.GetGroupName(id)), id, counts[id]});
            db.DelGroup(id);
        }
        batch.Commit();
        CloseChanged(db);
        if (m_json) {
            JsonWriter json(console);
            json.BeginObject();
            json.Member("job", m_job);
            json.Key("deleted");
            json.BeginArray();
            for (const Group& group : deleted) {
                json.BeginObject();
                json.Member("name", *group.name);
                json.Member("id", group.id);
                json.Member("points", group.points);
                json.EndObject();
            }
            json.EndArray();
            json.EndObject();
            return;
        }
        for (const Group& group : deleted) {
            console.Say("group {} deleted; {} in no group now\n", Quoted(*group.name),
                        Count(group.points, "point"));
        }
    }

    CommandLine* m_list = nullptr;
    CommandLine* m_add = nullptr;
    CommandLine* m_rename = nullptr;
    CommandLine* m_delete = nullptr;
    std::vector<std::string> m_names;
    std::string m_oldName;
    std::string m_newName;
};

}  // namespace

std::unique_ptr<Command> MakeGroupsCommand() {
    return std::make_unique<GroupsCommand>();
}

}  // namespace cqsurvey::cqjob
