#include <cqsurvey/cqsurvey.h>

#include <cstdlib>

#include "cqjob/Command.h"
#include "cqjob/JobFile.h"
#include "cqjob/JobTable.h"
#include "cqjob/JsonWriter.h"
#include "cqjob/settings/SystemOptions.h"
#include "text/NumberText.h"
#include "text/Printable.h"

namespace cqsurvey::cqjob {

namespace {

constexpr std::uint32_t kEverything = 0xFFFFFFFF;

struct Layer {
    std::string name;
    int color = 0;
    int line = 0;
};

struct Summary {
    SVDB_INFORMATION counts;
    CStringList groups;
    bool hasExtents = false;
    CVector min;
    CVector max;
    std::vector<Layer> layers;
    double symbolSize = 0.0;
    int mapScale = 0;
    std::string settingsDamage;  ///< empty when there is none
    std::string identity;
};

Summary Summarise(CqSurveyDB& db) {
    Summary summary;
    summary.counts.groupNames = &summary.groups;
    CqSurveyDB::GetDBInformation(kEverything, CString(), summary.counts, &db);
    summary.hasExtents = db.GetEntityBound(summary.min, summary.max) != 0 &&
                         summary.min.GetX() <= summary.max.GetX();
    CString name;
    Layer layer;
    CqHandle handle = db.GetFirstLayerHandle();
    while (handle != 0 && db.GetNextLayer(handle, name, layer.color) != 0) {
        layer.name = ToUtf8(name);
        layer.line = db.GetLayerLine(name);
        summary.layers.push_back(layer);
    }
    summary.symbolSize = db.GetSiPointSize();
    summary.identity = ToUtf8(CqJobIdentity(db).Get());
    const CString section = CqSurveyDB::m_SettingsSection;
    db.GetSettingsInt(section, u"Mapscale", summary.mapScale, 500);
    CString damage;
    CqSurveyDB::GetSettingsDamage(CString(), damage, &db);
    summary.settingsDamage = ToUtf8(damage);
    return summary;
}

class InfoCommand : public Command {
 public:
    CommandLine& AddTo(CommandLine& program) override {
        CommandLine& command = program.AddCommand("info", "Show what one job or several jobs hold");
        command.Add("JOB", m_jobs, "The jobs; they are not changed").Required().Placeholder("");
        command.AddFlag("--table", m_table, "Show a table for a single job, too");
        AddJson(command);
        AddWide(command);
        command.SetFooter(
            "A single job is described in full. Several jobs make a table with their extents, the\n"
            "days of their first and last point, and their size. A job that cannot be read has a\n"
            "row that says why, and the exit status is 1.\n"
            "\n"
            "Example:\n"
            "  cqjob info site.job\n"
            "  cqjob info *.job --json");
        return command;
    }

    int Run(Console& console) override {
        if (m_table || m_jobs.size() > 1) {
            return WriteJobTable(console, m_jobs, m_json);
        }
        m_job = m_jobs.front();
        CqSurveyDB db;
        OpenToRead(db, m_job);
        const Summary summary = Summarise(db);
        if (m_json) {
            WriteJson(console, summary, db);
        } else {
            WriteText(console, summary, db);
        }
        db.Close();
        return 0;
    }

 private:
    void WriteText(Console& console, const Summary& summary, CqSurveyDB& db) const {
        const SVDB_INFORMATION& counts = summary.counts;
        console.Print("Job             {}\n", Printable(m_job));
        console.Print("Identity        {}\n", summary.identity.empty() ? "none" : summary.identity);
        console.Print("Points          {}\n", counts.numPoints);
        console.Print("Entities        {}\n", counts.numEntities);
        console.Print("  polylines     {}, {} vertices\n", counts.numPlines, counts.numVertices);
        console.Print("  texts         {}\n", counts.numTexts);
        console.Print("  circles       {}\n", counts.numCircles);
        console.Print("  bitmaps       {}\n", counts.numBitmaps);
        console.Print("Groups          {}\n", counts.numGroups);
        for (const CString& group : summary.groups) {
            console.Print("  {}\n", Printable(ToUtf8(group)));
        }
        if (summary.hasExtents) {
            console.Print("Easting         {} to {}\n", FormatNumber(summary.min.GetX()),
                          FormatNumber(summary.max.GetX()));
            console.Print("Northing        {} to {}\n", FormatNumber(summary.min.GetY()),
                          FormatNumber(summary.max.GetY()));
        } else {
            console.Print("Easting         nothing drawn\nNorthing        nothing drawn\n");
        }
        console.Print("Layers          {}\n", counts.numLayers);
        for (const Layer& layer : summary.layers) {
            console.Print("  {:<13} colour {}, line {}{}\n", Printable(layer.name),
                          std::abs(static_cast<long>(layer.color)), layer.line,
                          layer.color < 0 ? ", hidden" : "");
        }
        console.Print("Map scale       1:{}\n", summary.mapScale);
        console.Print("Symbol size     {}\n", FormatNumber(summary.symbolSize));
        console.Print("Division        {}\n", counts.jCoordDivision);
        if (!summary.settingsDamage.empty()) {
            console.Print("Damaged         {}; what is missing is as in a new job\n",
                          Printable(summary.settingsDamage));
        }
        console.Print("Length unit     {}\n", DescribeUnit(db));
        console.Print("System          {}\n", DescribeSystem(db));
    }

    void WriteJson(Console& console, const Summary& summary, CqSurveyDB& db) const {
        const SVDB_INFORMATION& counts = summary.counts;
        JsonWriter json(console);
        json.BeginObject();
        json.Member("job", m_job);
        json.Key("id");
        if (summary.identity.empty()) {
            json.Null();
        } else {
            json.Value(summary.identity);
        }
        json.Member("points", counts.numPoints);
        json.Member("entities", counts.numEntities);
        json.Member("polylines", counts.numPlines);
        json.Member("vertices", counts.numVertices);
        json.Member("texts", counts.numTexts);
        json.Member("circles", counts.numCircles);
        json.Member("bitmaps", counts.numBitmaps);
        json.Key("groups");
        json.BeginArray();
        for (const CString& group : summary.groups) {
            json.Value(ToUtf8(group));
        }
        json.EndArray();
        if (summary.hasExtents) {
            json.Key("extents");
            json.BeginObject();
            json.Member("min_easting", summary.min.GetX());
            json.Member("min_northing", summary.min.GetY());
            json.Member("max_easting", summary.max.GetX());
            json.Member("max_northing", summary.max.GetY());
            json.EndObject();
        }
        json.Key("layers");
        json.BeginArray();
        for (const Layer& layer : summary.layers) {
            json.BeginObject();
            json.Member("name", layer.name);
            json.Member("color", layer.color);
            json.Member("line", layer.line);
            json.Member("visible", layer.color >= 0);
            json.EndObject();
        }
        json.EndArray();
        json.Member("map_scale", summary.mapScale);
        json.Member("symbol_size", summary.symbolSize);
        json.Member("coordinate_division", counts.jCoordDivision);
        if (!summary.settingsDamage.empty()) {
            json.Member("settings_damage", summary.settingsDamage);
        }
        WriteSystem(json, db);
        json.EndObject();
    }

    std::vector<std::string> m_jobs;
    bool m_table = false;
};

}  // namespace

std::unique_ptr<Command> MakeInfoCommand() {
    return std::make_unique<InfoCommand>();
}

}  // namespace cqsurvey::cqjob
