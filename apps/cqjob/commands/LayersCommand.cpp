#include <cqsurvey/cqsurvey.h>

#include <map>

#include "cqjob/Arguments.h"
#include "cqjob/Command.h"
#include "cqjob/Failure.h"
#include "cqjob/JobChange.h"
#include "cqjob/JobFile.h"
#include "cqjob/JsonWriter.h"
#include "cqjob/TextTable.h"
#include "cqjob/drawing/JobLayer.h"
#include "text/Printable.h"

namespace cqsurvey::cqjob {

namespace {

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

        CommandLine& list = AddAction(command, "list", "List every layer",
                                      [this](Console& console) { List(console); });
        AddJob(list, "The job; it is not changed");
        AddJson(list);
        AddWide(list);
        list.SetFooter("Example:\n  cqjob layers list site.job");

        CommandLine& add = AddAction(command, "add", "Add a layer", [this](Console&) { Add(); });
        AddJob(add, "The job");
        add.AddRequired("NAME", m_name,
                        fmt::format("The layer's name, at most {} characters", limits::kLayerName));
        add.Add("--color", m_color,
                fmt::format("Its colour, 1 to {}; 7 is black on white",
                            limits::kHighestPaletteColor))
            .Placeholder("N")
            .InRange(1, limits::kHighestPaletteColor)
            .ShowDefault();
        add.Add("--line", m_line, "Its line type; cqjob plot --help lists them")
            .Placeholder("N")
            .InRange(0, limits::kHighestLine)
            .ShowDefault();
        add.AddFlag("--hidden", m_hidden, "Hide the new layer");
        add.SetFooter("Example:\n  cqjob layers add site.job Road --color 1 --line 2");

        CommandLine& show = AddAction(command, "show", "Show layers that were hidden",
                                      [this](Console&) { Show(true); });
        AddNames(show);
        show.SetFooter("Example:\n  cqjob layers show site.job Road Trees");

        CommandLine& hide =
            AddAction(command, "hide", "Hide layers", [this](Console&) { Show(false); });
        AddNames(hide);
        hide.SetFooter("Example:\n  cqjob layers hide site.job Road Trees");

        CommandLine& color = AddAction(command, "color", "Change a layer's colour",
                                       [this](Console&) { EditColor(); });
        AddJob(color, "The job");
        AddName(color);
        color
            .AddRequired("COLOR", m_color,
                         fmt::format("The colour, 1 to {}", limits::kHighestPaletteColor))
            .InRange(1, limits::kHighestPaletteColor);
        color.SetFooter(
            "A hidden layer stays hidden.\n"
            "\n"
            "Example:\n"
            "  cqjob layers color site.job Road 5");

        CommandLine& line = AddAction(command, "line", "Change a layer's line type",
                                      [this](Console&) { EditLine(); });
        AddJob(line, "The job");
        AddName(line);
        line.AddRequired("LINE", m_line, "The line type; cqjob plot --help lists them")
            .InRange(0, limits::kHighestLine);
        line.SetFooter("Example:\n  cqjob layers line site.job Road 2");

        CommandLine& rename = AddAction(command, "rename", "Give a layer another name",
                                        [this](Console& console) { Rename(console); });
        AddJob(rename, "The job");
        AddName(rename);
        rename.AddRequired("NEW", m_other,
                           fmt::format("The new name, at most {} characters", limits::kLayerName));
        AddJson(rename);
        rename.SetFooter(
            "The layer keeps its colour and line type, and goes to the end of the list. Layer 0\n"
            "keeps its name.\n"
            "\n"
            "Example:\n"
            "  cqjob layers rename site.job Road \"Road edge\"");

        CommandLine& remove = AddAction(command, "delete", "Delete a layer",
                                        [this](Console& console) { Delete(console); });
        AddJob(remove, "The job");
        AddName(remove);
        remove.Add("--move-to", m_other, "Move what is on it to this layer").Placeholder("LAYER");
        AddJson(remove);
        remove.SetFooter(
            "A layer that holds anything is deleted only when it can be moved elsewhere. Layer 0\n"
            "stays.\n"
            "\n"
            "Example:\n"
            "  cqjob layers delete site.job Road --move-to 0");
        return command;
    }

    int Run(Console& console) override {
        if (!RunAction(console)) {
            if (!m_command->IsGiven("JOB")) {
                throw UsageError("JOB is required");
            }
            List(console);
        }
        return 0;
    }

 private:
    void AddName(CommandLine& command) { command.AddRequired("NAME", m_name, "The layer"); }

    void AddNames(CommandLine& command) {
        AddJob(command, "The job");
        command.AddRequired("NAME", m_names, "The layers");
    }

    void List(Console& console) const {
        CqSurveyDB db;
        OpenToRead(db, m_job);
        std::map<CString, std::size_t> entities;
        for (const CqCadEntityPtr& entity : Entities(db)) {
            ++entities[entity->GetLayer()];
        }
        const std::vector<JobLayer> layers = ReadLayers(db);
        db.Close();
        if (m_json) {
            Answer(console, [&](JsonWriter& json) {
                json.Objects("layers", layers, [&](const JobLayer& layer) {
                    json.Member("name", layer.name);
                    json.Member("color", layer.GetPlainColor());
                    json.Member("line", layer.line);
                    json.Member("shown", !layer.IsHidden());
                    json.Member("entities", entities[layer.name]);
                });
            });
            return;
        }
        TextTable table(console,
                        {{"Name"}, {"Color", true}, {"Line", true}, {"Shown"}, {"Entities", true}});
        for (const JobLayer& layer : layers) {
            table.Add({ToUtf8(layer.name), std::to_string(layer.GetPlainColor()),
                       std::to_string(layer.line), layer.IsHidden() ? "no" : "yes",
                       std::to_string(entities[layer.name])});
        }
        table.Finish();
        console.Say("{}\n", Count(layers.size(), "layer"));
    }

    static CString ReadLayerName(const std::string& name) {
        if (name.empty()) {
            throw UsageError("a layer's name cannot be empty");
        }
        return ReadText(name, "the name");
    }

    static CString ReadNewName(const std::string& text) {
        CString name = ReadLayerName(text);
        if (name.size() > limits::kLayerName) {
            throw UsageError(fmt::format("the name {} has more than {} characters", Quoted(text),
                                         limits::kLayerName));
        }
        return name;
    }

    [[noreturn]] void FailAbout(const std::string& name, const char* what) const {
        throw Failure(m_job, "there is {} {}", what, Quoted(name));
    }

    void Add() const {
        const CString name = ReadNewName(m_name);
        JobChange change(m_job);
        if (change.GetJob().AddLayer(name, m_hidden ? -m_color : m_color, m_line) == 0) {
            FailAbout(m_name, "already a layer");
        }
        change.Commit();
    }

    void Show(bool shown) const {
        JobChange change(m_job);
        CqSurveyDB& db = change.GetJob();
        for (const std::string& text : m_names) {
            const CString name = ReadLayerName(text);
            if (db.ShowLayer(name, shown ? 1 : 0) == 0) {
                FailAbout(text, "no layer");
            }
            if (!shown && db.GetLayerColor(name) == 0) {
                throw Failure(m_job, "layer {} has colour 0 and cannot be hidden", Quoted(text));
            }
        }
        change.Commit();
    }

    void EditColor() const {
        const CString name = ReadLayerName(m_name);
        JobChange change(m_job);
        CqSurveyDB& db = change.GetJob();
        if (db.EditLayerColor(name, db.GetLayerColor(name) < 0 ? -m_color : m_color) == 0) {
            FailAbout(m_name, "no layer");
        }
        change.Commit();
    }

    void EditLine() const {
        const CString name = ReadLayerName(m_name);
        JobChange change(m_job);
        if (change.GetJob().EditLayerLine(name, m_line) == 0) {
            FailAbout(m_name, "no layer");
        }
        change.Commit();
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
            throw Failure(m_job, "every job has the layer \"0\"");
        }
    }

    void Rename(Console& console) const {
        const CString name = ReadLayerName(m_name);
        const CString newName = ReadNewName(m_other);
        JobChange change(m_job);
        CqSurveyDB& db = change.GetJob();
        RequireOwnLayer(db, name);
        if (db.AddLayer(newName, db.GetLayerColor(name), db.GetLayerLine(name)) == 0) {
            FailAbout(m_other, "already a layer");
        }
        const std::size_t moved = Move(db, name, newName);
        db.DeleteLayer(name);
        change.Commit();
        Tell(console, "name", moved);
    }

    void Delete(Console& console) const {
        const CString name = ReadLayerName(m_name);
        JobChange change(m_job);
        CqSurveyDB& db = change.GetJob();
        RequireOwnLayer(db, name);
        std::size_t moved = 0;
        if (!m_other.empty()) {
            const CString other = ReadLayerName(m_other);
            if (other == name || !HasLayer(db, other)) {
                FailAbout(m_other, "no other layer");
            }
            moved = Move(db, name, other);
        }
        for (const CqCadEntityPtr& entity : Entities(db)) {
            if (entity->GetLayer() == name) {
                throw Failure(
                    m_job,
                    "the layer {} is not empty; --move-to moves what is on it to another layer",
                    Quoted(m_name));
            }
        }
        db.DeleteLayer(name);
        change.Commit();
        Tell(console, "moved_to", moved);
    }

    void Tell(Console& console, const char* otherKey, std::size_t moved) const {
        if (m_json) {
            Answer(console, [&](JsonWriter& json) {
                json.Member("layer", m_name);
                json.Member(otherKey, m_other);
                json.Member("moved", moved);
            });
        }
    }

    CommandLine* m_command = nullptr;
    std::string m_other;
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
