#include <cqsurvey/cqsurvey.h>

#include <cstdlib>
#include <map>

#include "cqjob/Command.h"
#include "cqjob/Failure.h"
#include "cqjob/JobChange.h"
#include "cqjob/JobFile.h"
#include "cqjob/JsonWriter.h"
#include "cqjob/TextTable.h"
#include "text/Printable.h"

namespace cqsurvey::cqjob {

namespace {

constexpr std::size_t kLongestLayerName = 51;
constexpr int kMaxColor = 255;
constexpr int kMaxLine = 65535;

class LayersCommand : public Command {
 public:
    CommandLine& AddTo(CommandLine& program) override {
        CommandLine& command = program.AddCommand("layers", "List, add and change a job's layers");
        command.RequireCommand(true);
        m_command = &command;
        command.Add("JOB", m_job, "The job whose layers to list").Placeholder("");
        AddJson(command);
        command.SetFooter(
            "Names are compared exactly. Without an action the layers are listed.\n"
            "\n"
            "Example:\n"
            "  cqjob layers site.job\n"
            "  cqjob layers add site.job Road --color 1\n"
            "  cqjob layers hide site.job Road");

        m_list = &command.AddCommand("list", "List every layer");
        AddJob(*m_list, "The job; it is not changed");
        AddJson(*m_list);
        AddWide(*m_list);
        m_list->SetFooter("Example:\n  cqjob layers list site.job");

        m_add = &command.AddCommand("add", "Add a layer");
        AddJob(*m_add, "The job");
        m_add->Add("NAME", m_name, "The layer's name, at most 51 characters")
            .Required()
            .Placeholder("");
        m_add->Add("--color", m_color, "Its colour, 1 to 255; 7 is black on white")
            .Placeholder("N")
            .InRange(1, kMaxColor)
            .ShowDefault();
        m_add->Add("--line", m_line, "Its line type; cqjob plot --help lists them")
            .Placeholder("N")
            .InRange(0, kMaxLine)
            .ShowDefault();
        m_add->AddFlag("--hidden", m_hidden, "Hide the new layer");
        m_add->SetFooter("Example:\n  cqjob layers add site.job Road --color 1 --line 2");

        m_show = &command.AddCommand("show", "Show layers that were hidden");
        AddNames(*m_show);
        m_show->SetFooter("Example:\n  cqjob layers show site.job Road Trees");

        m_hide = &command.AddCommand("hide", "Hide layers");
        AddNames(*m_hide);
        m_hide->SetFooter("Example:\n  cqjob layers hide site.job Road Trees");

        m_colorAction = &command.AddCommand("color", "Change a layer's colour");
        AddJob(*m_colorAction, "The job");
        AddName(*m_colorAction);
        m_colorAction->Add("COLOR", m_color, "The colour, 1 to 255")
            .Required()
            .Placeholder("")
            .InRange(1, kMaxColor);
        m_colorAction->SetFooter(
            "A hidden layer stays hidden.\n"
            "\n"
            "Example:\n"
            "  cqjob layers color site.job Road 5");

        m_lineAction = &command.AddCommand("line", "Change a layer's line type");
        AddJob(*m_lineAction, "The job");
        AddName(*m_lineAction);
        m_lineAction->Add("LINE", m_line, "The line type; cqjob plot --help lists them")
            .Required()
            .Placeholder("")
            .InRange(0, kMaxLine);
        m_lineAction->SetFooter("Example:\n  cqjob layers line site.job Road 2");

        m_rename = &command.AddCommand("rename", "Give a layer another name");
        AddJob(*m_rename, "The job");
        AddName(*m_rename);
        m_rename->Add("NEW", m_other, "The new name, at most 51 characters")
            .Required()
            .Placeholder("");
        AddJson(*m_rename);
        m_rename->SetFooter(
            "The layer keeps its colour and line type, and goes to the end of the list. Layer 0\n"
            "keeps its name.\n"
            "\n"
            "Example:\n"
            "  cqjob layers rename site.job Road \"Road edge\"");

        m_delete = &command.AddCommand("delete", "Delete a layer");
        AddJob(*m_delete, "The job");
        AddName(*m_delete);
        m_delete->Add("--move-to", m_other, "Move what is on it to this layer")
            .Placeholder("LAYER");
        AddJson(*m_delete);
        m_delete->SetFooter(
            "A layer that holds anything is deleted only when it can be moved elsewhere. Layer 0\n"
            "stays.\n"
            "\n"
            "Example:\n"
            "  cqjob layers delete site.job Road --move-to 0");
        return command;
    }

    int Run(Console& console) override {
        if (m_add->IsGiven()) {
            return Add();
        }
        if (m_show->IsGiven() || m_hide->IsGiven()) {
            return Show();
        }
        if (m_colorAction->IsGiven() || m_lineAction->IsGiven()) {
            return Edit();
        }
        if (m_rename->IsGiven() || m_delete->IsGiven()) {
            return m_rename->IsGiven() ? Rename(console) : Delete(console);
        }
        if (!m_list->IsGiven() && !m_command->IsGiven("JOB")) {
            throw UsageError("JOB is required");
        }
        return List(console);
    }

 private:
    void AddName(CommandLine& command) {
        command.Add("NAME", m_name, "The layer").Required().Placeholder("");
    }

    void AddNames(CommandLine& command) {
        AddJob(command, "The job");
        command.Add("NAME", m_names, "The layers").Required().Placeholder("");
    }

    int List(Console& console) const {
        CqSurveyDB db;
        OpenToRead(db, m_job);
        std::map<CString, std::size_t> entities;
        for (const CqCadEntityPtr& entity : Entities(db)) {
            ++entities[entity->GetLayer()];
        }
        TextTable table(console,
                        {{"Name"}, {"Color", true}, {"Line", true}, {"Shown"}, {"Entities", true}});
        JsonWriter json(console);
        if (m_json) {
            json.BeginObject();
            json.Member("job", m_job);
            json.Key("layers");
            json.BeginArray();
        }
        std::size_t count = 0;
        CString name;
        int color = 0;
        // The count ends the walk in a damaged job.
        const auto there = static_cast<std::size_t>(db.GetNumLayers());
        for (CqHandle handle = db.GetFirstLayerHandle();
             handle != 0 && count < there && db.GetNextLayer(handle, name, color) != 0; ++count) {
            const bool shown = color >= 0;
            if (m_json) {
                json.BeginObject();
                json.Member("name", ToUtf8(name));
                json.Member("color", std::abs(static_cast<long>(color)));
                json.Member("line", db.GetLayerLine(name));
                json.Member("shown", shown);
                json.Member("entities", entities[name]);
                json.EndObject();
            } else {
                table.Add({ToUtf8(name), fmt::format("{}", std::abs(static_cast<long>(color))),
                           fmt::format("{}", db.GetLayerLine(name)), shown ? "yes" : "no",
                           fmt::format("{}", entities[name])});
            }
        }
        if (m_json) {
            json.EndArray();
            json.EndObject();
        } else {
            table.Finish();
            console.Say("{}\n", Count(count, "layer"));
        }
        db.Close();
        return 0;
    }

    static CString ToName(const std::string& name) {
        if (name.empty()) {
            throw UsageError("a layer's name cannot be empty");
        }
        if (!IsUtf8(name)) {
            throw UsageError("the name " + Quoted(name) + " is not UTF-8");
        }
        return FromUtf8(name);
    }

    [[noreturn]] void FailAbout(const std::string& name, const char* what) const {
        throw Failure(fmt::format("{}: there is {} {}", Printable(m_job), what, Quoted(name)));
    }

    int Add() const {
        const CString name = ToName(m_name);
        if (name.size() > kLongestLayerName) {
            throw UsageError(fmt::format("the name {} has more than {} characters", Quoted(m_name),
                                         kLongestLayerName));
        }
        CqSurveyDB db;
        OpenToWrite(db, m_job);
        if (db.AddLayer(name, m_hidden ? -m_color : m_color, m_line) == 0) {
            FailAbout(m_name, "already a layer");
        }
        CloseChanged(db);
        return 0;
    }

    int Show() const {
        CqSurveyDB db;
        OpenToWrite(db, m_job);
        CqBatch batch(db);
        for (const std::string& name : m_names) {
            if (db.ShowLayer(ToName(name), m_show->IsGiven() ? 1 : 0) == 0) {
                FailAbout(name, "no layer");
            }
            if (m_hide->IsGiven() && db.GetLayerColor(ToName(name)) == 0) {
                throw Failure(fmt::format("{}: layer {} has colour 0 and cannot be hidden",
                                          Printable(m_job), Quoted(name)));
            }
        }
        batch.Commit();
        CloseChanged(db);
        return 0;
    }

    int Edit() const {
        const CString name = ToName(m_name);
        CqSurveyDB db;
        OpenToWrite(db, m_job);
        const int done =
            m_lineAction->IsGiven()
                ? db.EditLayerLine(name, m_line)
                : db.EditLayerColor(name, db.GetLayerColor(name) < 0 ? -m_color : m_color);
        if (done == 0) {
            FailAbout(m_name, "no layer");
        }
        CloseChanged(db);
        return 0;
    }

    /// Moves everything on one layer to another, and returns how many entities that were.
    static std::size_t Move(CqSurveyDB& db, const CString& from, const CString& to) {
        std::vector<CqHandle> handles;
        for (const CqCadEntityPtr& entity : Entities(db)) {
            if (entity->GetLayer() == from) {
                handles.push_back(entity->GetHandle());
            }
        }
        for (const CqHandle handle : handles) {
            db.EditLayer(handle, to);
        }
        return handles.size();
    }

    /// Throws Failure unless there is such a layer and it may go.
    void RequireOwnLayer(CqSurveyDB& db, const CString& name) const {
        if (!HasLayer(db, name)) {
            FailAbout(m_name, "no layer");
        }
        if (name == u"0") {
            throw Failure(Printable(m_job) + ": every job has the layer \"0\"");
        }
    }

    static bool HasLayer(CqSurveyDB& db, const CString& wanted) {
        CString name;
        int color = 0;
        auto left = db.GetNumLayers();
        for (CqHandle handle = db.GetFirstLayerHandle();
             handle != 0 && left > 0 && db.GetNextLayer(handle, name, color) != 0; --left) {
            if (name == wanted) {
                return true;
            }
        }
        return false;
    }

    int Rename(Console& console) const {
        const CString name = ToName(m_name);
        const CString newName = ToName(m_other);
        if (newName.size() > kLongestLayerName) {
            throw UsageError(fmt::format("the name {} has more than {} characters", Quoted(m_other),
                                         kLongestLayerName));
        }
        CqSurveyDB db;
        OpenToWrite(db, m_job);
        RequireOwnLayer(db, name);
        CqBatch batch(db);
        if (db.AddLayer(newName, db.GetLayerColor(name), db.GetLayerLine(name)) == 0) {
            FailAbout(m_other, "already a layer");
        }
        const std::size_t moved = Move(db, name, newName);
        db.DeleteLayer(name);
        batch.Commit();
        Answer(console, "name", moved);
        CloseChanged(db);
        return 0;
    }

    int Delete(Console& console) const {
        const CString name = ToName(m_name);
        CqSurveyDB db;
        OpenToWrite(db, m_job);
        RequireOwnLayer(db, name);
        CqBatch batch(db);
        std::size_t moved = 0;
        if (!m_other.empty()) {
            const CString other = ToName(m_other);
            if (other == name || !HasLayer(db, other)) {
                FailAbout(m_other, "no other layer");
            }
            moved = Move(db, name, other);
        }
        for (const CqCadEntityPtr& entity : Entities(db)) {
            if (entity->GetLayer() == name) {
                throw Failure(fmt::format(
                    "{}: the layer {} is not empty; --move-to moves what is on it to another layer",
                    Printable(m_job), Quoted(m_name)));
            }
        }
        db.DeleteLayer(name);
        batch.Commit();
        Answer(console, "moved_to", moved);
        CloseChanged(db);
        return 0;
    }

    void Answer(Console& console, const char* otherKey, std::size_t moved) const {
        if (!m_json) {
            return;
        }
        JsonWriter json(console);
        json.BeginObject();
        json.Member("job", m_job);
        json.Member("layer", m_name);
        json.Member(otherKey, m_other);
        json.Member("moved", moved);
        json.EndObject();
    }

    CommandLine* m_command = nullptr;
    CommandLine* m_rename = nullptr;
    CommandLine* m_delete = nullptr;
    std::string m_other;
    CommandLine* m_list = nullptr;
    CommandLine* m_add = nullptr;
    CommandLine* m_show = nullptr;
    CommandLine* m_hide = nullptr;
    CommandLine* m_colorAction = nullptr;
    CommandLine* m_lineAction = nullptr;
    std::string m_name;
    std::vector<std::string> m_names;
    int m_color = 7;
    int m_line = 0;
    bool m_hidden = false;
};

}  // namespace

std::unique_ptr<Command> MakeLayersCommand() {
    return std::make_unique<LayersCommand>();
}

}  // namespace cqsurvey::cqjob
