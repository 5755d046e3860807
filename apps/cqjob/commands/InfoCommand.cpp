#include <cqsurvey/cqsurvey.h>

#include <optional>

#include "cqjob/Command.h"
#include "cqjob/Extents.h"
#include "cqjob/JobFile.h"
#include "cqjob/JobTable.h"
#include "cqjob/JsonWriter.h"
#include "cqjob/drawing/JobLayer.h"
#include "cqjob/settings/SystemOptions.h"
#include "text/NumberText.h"
#include "text/Printable.h"

namespace cqsurvey::cqjob {

namespace {

constexpr std::uint32_t kEverything = 0xFFFFFFFF;

struct Summary {
    SVDB_INFORMATION counts;
    CStringList groups;
    std::optional<Extents> extents;
    std::vector<JobLayer> layers;
    double symbolSize = 0.0;
    int mapScale = 0;
    std::string settingsDamage;  ///< empty when there is none
    std::string identity;
};

Summary Summarise(CqSurveyDB& db) {
    Summary summary;
    summary.counts.groupNames = &summary.groups;
    CqSurveyDB::GetDBInformation(kEverything, CString(), summary.counts, &db);
    summary.extents = FindExtents(db);
    summary.layers = ReadLayers(db);
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
        command.AddRequired("JOB", m_jobs, "The jobs; they are not changed");
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
        if (const auto& box = summary.extents) {
            console.Print("Easting         {} to {}\n", FormatNumber(box->min.GetX()),
                          FormatNumber(box->max.GetX()));
            console.Print("Northing        {} to {}\n", FormatNumber(box->min.GetY()),
                          FormatNumber(box->max.GetY()));
        } else {
            console.Print("Easting         nothing drawn\nNorthing        nothing drawn\n");
        }
        console.Print("Layers          {}\n", counts.numLayers);
        for (const JobLayer& layer : summary.layers) {
            console.Print("  {:<13} colour {}, line {}{}\n", Printable(ToUtf8(layer.name)),
                          layer.GetPlainColor(), layer.line, layer.IsHidden() ? ", hidden" : "");
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
        Answer(console, [&](JsonWriter& json) {
            json.Member("id",
                        summary.identity.empty() ? std::nullopt : std::optional(summary.identity));
            json.Member("points", counts.numPoints);
            json.Member("entities", counts.numEntities);
            json.Member("polylines", counts.numPlines);
            json.Member("vertices", counts.numVertices);
            json.Member("texts", counts.numTexts);
            json.Member("circles", counts.numCircles);
            json.Member("bitmaps", counts.numBitmaps);
            json.Values("groups", summary.groups);
            if (summary.extents) {
                json.Object("extents", [&] { WriteMembers(json, *summary.extents); });
            }
            json.Objects("layers", summary.layers, [&](const JobLayer& layer) {
                json.Member("name", layer.name);
                json.Member("color", layer.color);
                json.Member("line", layer.line);
                json.Member("visible", !layer.IsHidden());
            });
            json.Member("map_scale", summary.mapScale);
            json.Member("symbol_size", summary.symbolSize);
            json.Member("coordinate_division", counts.jCoordDivision);
            if (!summary.settingsDamage.empty()) {
                json.Member("settings_damage", summary.settingsDamage);
            }
            WriteSystem(json, db);
        });
    }

    std::vector<std::string> m_jobs;
    bool m_table = false;
};

}  // namespace

std::unique_ptr<Command> MakeInfoCommand() {
    return std::make_unique<InfoCommand>();
}

}  // namespace cqsurvey::cqjob
