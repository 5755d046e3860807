#include <cqsurvey/cqsurvey.h>

#include <array>
#include <limits>
#include <optional>

#include "cqjob/Arguments.h"
#include "cqjob/Command.h"
#include "cqjob/Failure.h"
#include "cqjob/JobChange.h"
#include "cqjob/JsonWriter.h"
#include "cqjob/drawing/JobLayer.h"
#include "cqjob/points/PointArgument.h"
#include "cqjob/points/PointDetails.h"
#include "text/NumberText.h"
#include "text/Printable.h"

namespace cqsurvey::cqjob {

namespace {

class EditCommand : public Command {
 public:
    CommandLine& AddTo(CommandLine& program) override {
        CommandLine& command = program.AddCommand("edit", "Change points");
        AddJob(command, "The job");
        command.AddRequired("POINT", m_points, "The points to change");
        command.Add("--name", m_name, "New name; an empty one removes the name")
            .Placeholder("NAME");
        AddNumber(command, "--east", m_east, "New easting");
        AddNumber(command, "--north", m_north, "New northing");
        const Argument height = AddNumber(command, "--height", m_height, "New height");
        command.AddFlag("--no-height", m_noHeight, "Forget the height").Excludes(height);
        command.Add("--code", m_code, "New feature code")
            .Placeholder("CODE")
            .Check(FindWholeNumberFault);
        command.Add("--flags", m_flags, "New flags: 32 bits as a decimal or a 0x number")
            .Placeholder("BITS");
        command
            .Add("--group", m_group, "Put the points into this group; an empty name means no group")
            .Placeholder("NAME");
        command.Add("--layer", m_layer, "Put the points on this layer").Placeholder("NAME");
        AddJson(command);
        command.SetFooter(
            "What no option names stays as it is. When one of the points cannot be changed, none "
            "is.\n" +
            std::string(kPointArgument) +
            "\n"
            "Example:\n"
            "  cqjob edit site.job P17 --height 312.5 --code 7\n"
            "  cqjob edit site.job P17 --name P18\n"
            "  cqjob edit site.job P1 P2 P3 --group Road");
        return command;
    }

    int Run(Console& console) override {
        CheckOptions();
        JobChange change(m_job);
        CqSurveyDB& db = change.GetJob();
        if (m_group && !m_group->empty()) {
            m_groupId = db.GetGroupID(ReadText(*m_group, "the group's name"));
            if (m_groupId == 0) {
                throw Failure(m_job, "there is no group {}; add it with cqjob groups add",
                              Quoted(*m_group));
            }
        }
        if (m_layer) {
            static_cast<void>(RequireLayer(db, m_job, *m_layer));
        }
        std::vector<CqHandle> handles;
        for (const std::string& point : m_points) {
            handles.push_back(RequirePoint(db, m_job, point));
        }
        for (const CqHandle handle : handles) {
            Change(db, handle);
        }
        std::vector<PointDetails> points;
        for (std::size_t i = 0; m_json && i < handles.size(); ++i) {
            points.emplace_back(db, handles[i], ReadPoint(db, handles[i]));
        }
        change.Commit();
        if (m_json) {
            Answer(console, [&](JsonWriter& json) {
                json.Array("points", [&] {
                    for (const PointDetails& point : points) {
                        point.WriteJson(json);
                    }
                });
            });
        }
        return 0;
    }

 private:
    static Argument AddNumber(CommandLine& command, const std::string& name,
                              std::optional<std::string>& value, const std::string& help) {
        return command.Add(name, value, help).Placeholder("NUMBER").Check(FindNumberFault);
    }

    void CheckOptions() {
        if (!m_name && !m_east && !m_north && !m_height && !m_noHeight && !m_code && !m_flags &&
            !m_group && !m_layer) {
            throw UsageError("there is nothing to change; use --name, --east, --code ...");
        }
        if (m_name && m_points.size() > 1) {
            throw UsageError("several points cannot have the same name");
        }
        m_newName = ReadName(m_name.value_or(""), "the point's name", limits::kPointName);
    }

    void Change(CqSurveyDB& db, CqHandle handle) const {
        if (m_name || m_east || m_north || m_height || m_noHeight || m_code) {
            ChangeRecord(db, handle);
        }
        if (m_flags) {
            db.EditCoordRecFlags(handle, *m_flags);
        }
        if (m_group) {
            db.EditCoordRecGroup(handle, m_groupId);
        }
        if (m_layer) {
            db.EditLayer(db.GetCadEntityHandleByCoordRecHandle(handle), FromUtf8(*m_layer));
        }
    }

    void ChangeRecord(CqSurveyDB& db, CqHandle handle) const {
        const CqCoordRec point = ReadPoint(db, handle);
        const CString name = m_name ? m_newName : point.GetPtName();
        std::array<double, 3> coords{};
        point.GetPoint(coords.data());
        const auto set = [](double& value, const std::optional<std::string>& text) {
            value = text ? ParseNumber(*text).value : value;
        };
        set(coords[0], m_east);
        set(coords[1], m_north);
        set(coords[2], m_height);
        if (m_noHeight) {
            coords[2] = std::numeric_limits<double>::quiet_NaN();
        }
        const int code = m_code ? ParseWholeNumber(*m_code).value_or(0) : point.GetCode();
        if (db.EditCoordRec(handle, name, coords.data(), code) != 0) {
            return;
        }
        const CqHandle other = db.GetCoordRecHandleByPtName(name);
        if (other != 0 && other != handle) {
            throw Failure(m_job, "the job already has a point {}", Quoted(ToUtf8(name)));
        }
        throw Failure(m_job, "the point record {} cannot be changed; cqjob check says more",
                      handle);
    }

    std::vector<std::string> m_points;
    std::optional<std::string> m_name;
    std::optional<std::string> m_east;
    std::optional<std::string> m_north;
    std::optional<std::string> m_height;
    bool m_noHeight = false;
    std::optional<std::string> m_code;
    std::optional<std::uint32_t> m_flags;
    std::optional<std::string> m_group;
    std::optional<std::string> m_layer;
    CString m_newName;
    std::uint16_t m_groupId = 0;
};

}  // namespace

std::unique_ptr<Command> MakeEditCommand() {
    return std::make_unique<EditCommand>();
}

}  // namespace cqsurvey::cqjob
