#include <cqsurvey/cqsurvey.h>

#include <algorithm>
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
    std::vector<std::size_t> counts(limits::kHighestGroup + 1U);
    for (const auto& [handle, point] : Points(db)) {
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

        CommandLine& list =
            AddAction(command, "list", "List every group and how many points it has",
                      [this](Console& console) { List(console); });
        AddJob(list, "The job; it is not changed");
        AddJson(list);
        AddWide(list);
        list.SetFooter("Example:\n  cqjob groups list site.job");

        CommandLine& add =
            AddAction(command, "add", "Add groups", [this](Console& console) { Add(console); });
        AddJob(add, "The job");
        AddNames(add, "The names of the new groups");
        AddJson(add);
        add.SetFooter(
            "When one of the groups already exists, none is added.\n\n"
            "Example:\n  cqjob groups add site.job Road \"Day 2\"");

        CommandLine& rename = AddAction(command, "rename", "Rename a group",
                                        [this](Console& console) { Rename(console); });
        AddJob(rename, "The job");
        rename.AddRequired("NAME", m_oldName, "The group");
        rename.AddRequired("NEW", m_newName, "Its new name");
        AddJson(rename);
        rename.SetFooter("Example:\n  cqjob groups rename site.job Road \"Road 7\"");

        CommandLine& remove = AddAction(command, "delete", "Delete groups; their points stay",
                                        [this](Console& console) { Delete(console); });
        AddJob(remove, "The job");
        AddNames(remove, "The groups");
        AddJson(remove);
        remove.SetFooter(
            "The points of a deleted group are then in no group. When one of the groups does not\n"
            "exist, none is deleted.\n\n"
            "Example:\n  cqjob groups delete site.job Road");
        return command;
    }

 private:
    void AddNames(CommandLine& command, const std::string& help) {
        command.AddRequired("NAME", m_names, help);
    }

    [[nodiscard]] std::uint16_t RequireGroup(CqSurveyDB& db, const std::string& text) const {
        std::uint16_t id = db.GetGroupID(ReadText(text, "the group's name"));
        const std::optional<std::uint32_t> number = ReadRecordNumber(text);
        if (id == 0 && number && *number <= limits::kHighestGroup &&
            FindName(db, static_cast<std::uint16_t>(*number))) {
            id = static_cast<std::uint16_t>(*number);
        }
        if (id == 0) {
            throw Failure(m_job, "there is no group {}", Quoted(text));
        }
        return id;
    }

    [[nodiscard]] static CString ReadNewName(const std::string& text) {
        CString name = ReadName(text, "the group's name", limits::kGroupName);
        if (name.empty()) {
            throw UsageError("a group needs a name");
        }
        return name;
    }

    [[noreturn]] void ThrowSameName(const std::string& name) const {
        throw Failure(m_job, "there is already a group {}, perhaps in another letter case",
                      Quoted(name));
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
        Answer(console, [&](JsonWriter& json) {
            json.Objects("groups", groups, [&](const Group& group) {
                json.Member("name", group.name);
                json.Member("id", group.id);
                json.Member("points", group.points);
            });
            json.Member("ungrouped", ungrouped);
        });
    }

    void Add(Console& console) const {
        std::vector<CString> names;
        std::transform(m_names.begin(), m_names.end(), std::back_inserter(names), ReadNewName);
        JobChange change(m_job);
        CqSurveyDB& db = change.GetJob();
        std::vector<Group> added;
        for (std::size_t i = 0; i < names.size(); ++i) {
            if (db.AddGroup(names[i]) == 0) {
                ThrowSameName(m_names[i]);
            }
            added.push_back({ToUtf8(names[i]), db.GetGroupID(names[i])});
        }
        change.Commit();
        if (m_json) {
            Answer(console, [&](JsonWriter& json) {
                json.Objects("added", added, [&](const Group& group) {
                    json.Member("name", group.name);
                    json.Member("id", group.id);
                });
            });
        }
    }

    void Rename(Console& console) const {
        const CString newName = ReadNewName(m_newName);
        JobChange change(m_job);
        CqSurveyDB& db = change.GetJob();
        const std::uint16_t id = RequireGroup(db, m_oldName);
        // A group without a name cannot be renamed, but it can be deleted.
        const CString oldName = db.GetGroupName(id);
        if (oldName.empty()) {
            throw Failure(m_job, "the group {} has no name and cannot be given one",
                          Quoted(m_oldName));
        }
        if (db.EditGroup(id, newName) == 0) {
            ThrowSameName(m_newName);
        }
        change.Commit();
        if (m_json) {
            Answer(console, [&](JsonWriter& json) {
                json.Member("id", id);
                json.Member("old_name", oldName);
                json.Member("name", m_newName);
            });
        }
    }

    void Delete(Console& console) const {
        JobChange change(m_job);
        CqSurveyDB& db = change.GetJob();
        const std::vector<std::size_t> counts = CountPoints(db);
        std::vector<Group> deleted;
        for (const std::string& name : m_names) {
            const std::uint16_t id = RequireGroup(db, name);
            deleted.push_back({ToUtf8(db.GetGroupName(id)), id, counts[id]});
            db.DelGroup(id);
        }
        change.Commit();
        if (m_json) {
            Answer(console, [&](JsonWriter& json) {
                json.Objects("deleted", deleted, [&](const Group& group) {
                    json.Member("name", group.name);
                    json.Member("id", group.id);
                    json.Member("points", group.points);
                });
            });
            return;
        }
        for (const Group& group : deleted) {
            console.Say("group {} deleted; {} in no group now\n", Quoted(*group.name),
                        Count(group.points, "point"));
        }
    }

    std::vector<std::string> m_names;
    std::string m_oldName;
    std::string m_newName;
};

}  // namespace

std::unique_ptr<Command> MakeGroupsCommand() {
    return std::make_unique<GroupsCommand>();
}

}  // namespace cqsurvey::cqjob
