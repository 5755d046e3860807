#include <cqsurvey/cqsurvey.h>

#include <algorithm>
#include <array>
#include <limits>

#include "cqjob/Command.h"
#include "cqjob/EntityKind.h"
#include "cqjob/Failure.h"
#include "cqjob/JobFile.h"
#include "cqjob/JsonWriter.h"
#include "cqjob/TextTable.h"
#include "text/NumberText.h"
#include "text/Printable.h"

namespace cqsurvey::cqjob {

namespace {

/// The attributes that only entities of this kind have, on one line.
std::string Describe(const CqCadEntity& entity) {
    switch (entity.GetType()) {
        case EntSiPnt:
            return fmt::format("{} code {}", Quoted(ToUtf8(entity.GetName())), entity.GetCode());
        case EntPline:
            return fmt::format("line {} code {}", entity.GetLine(), entity.GetCode());
        case EntVertex: {
            std::string text = fmt::format("of {}", entity.GetPlineHandle());
            if (entity.GetBulge() != 0.0) {
                text += " bulge " + FormatNumber(entity.GetBulge());
            }
            if (entity.GetMcadSiPointHandle() != 0) {
                text += fmt::format(" tied to {}", entity.GetMcadSiPointHandle());
            }
            return text;
        }
        case EntText:
            return fmt::format("{} height {} code {}", Quoted(ToUtf8(entity.GetText())),
                               FormatNumber(entity.GetHeight()), entity.GetCode());
        case EntCircle:
            return fmt::format("radius {} line {} code {}", FormatNumber(entity.GetRadius()),
                               entity.GetLine(), entity.GetCode());
        case EntBitmap:
            return fmt::format("{} width {}", Quoted(ToUtf8(entity.GetResName())),
                               FormatNumber(entity.GetSize().GetX()));
    }
    return {};
}

void WriteDetails(JsonWriter& json, const CqCadEntity& entity) {
    constexpr unsigned kAlignBits = 16;
    constexpr unsigned kAlignMask = 0xFFFF;
    switch (entity.GetType()) {
        case EntSiPnt:
            json.Member("name", ToUtf8(entity.GetName()));
            json.Member("code", entity.GetCode());
            json.Key("vertices");
            json.BeginArray();
            for (int i = 0; i < entity.GetMcadNumVertex(); ++i) {
                json.Value(entity.GetMcadVertexHandle(i));
            }
            json.EndArray();
            break;
        case EntPline:
            json.Member("line", entity.GetLine());
            json.Member("code", entity.GetCode());
            break;
        case EntVertex:
            json.Member("pline", entity.GetPlineHandle());
            json.Member("bulge", entity.GetBulge());
            json.Member("point", entity.GetMcadSiPointHandle());
            break;
        case EntText: {
            const auto align = static_cast<unsigned>(entity.GetAlign());
            json.Member("text", ToUtf8(entity.GetText()));
            json.Member("align1", align & kAlignMask);
            json.Member("align2", align >> kAlignBits);
            json.Member("style", ToUtf8(entity.GetStyle()));
            json.Member("textHeight", entity.GetHeight());
            json.Member("rotation", entity.GetRot());
            json.Member("code", entity.GetCode());
            json.Member("optionStyle", entity.GetOptionStyle());
            json.Member("interval", entity.GetInterval());
            json.Member("thickness", entity.GetThickness());
            break;
        }
        case EntCircle:
            json.Member("radius", entity.GetRadius());
            json.Member("line", entity.GetLine());
            json.Member("code", entity.GetCode());
            break;
        case EntBitmap:
            json.Member("resource", ToUtf8(entity.GetResName()));
            json.Member("width", entity.GetSize().GetX());
            break;
    }
}

class EntitiesCommand : public Command {
 public:
    CommandLine& AddTo(CommandLine& program) override {
        CommandLine& command =
            program.AddCommand("entities", "List the entities of a job's drawing, in its order");
        AddJob(command, "The job; it is not changed");
        AddJson(command);
        command
            .Add("--type", m_kinds,
                 "Only entities of these kinds: point, pline, vertex, text, circle, bitmap")
            .Placeholder("KIND,...")
            .SplitAt(',')
            .OneOf(KindWords());
        command.Add("--layer", m_layers, "Only entities of this layer; may be given several times")
            .Placeholder("NAME")
            .ShowOneValue();
        command.Add("--limit", m_limit, "List at most this many entities")
            .Placeholder("N")
            .InRange(1, std::numeric_limits<int>::max());
        command
            .Add("--decimals", m_decimals,
                 "Decimal places of the coordinates in the table; JSON has them all")
            .Placeholder("N")
            .InRange(0, 17)
            .ShowDefault();
        command.SetFooter(
            "A polyline comes before its vertices. Colour 256 is that of the layer.\n"
            "\n"
            "Example:\n"
            "  cqjob entities site.job --type text,circle\n"
            "  cqjob entities site.job --layer Road --json");
        return command;
    }

    int Run(Console& console) override {
        for (const std::string& word : m_kinds) {
            m_wanted.push_back(*FindKind(word));
        }
        CqSurveyDB db;
        OpenToRead(db, m_job);
        const int there = db.GetNumCadEntities();
        int walked = 0;
        std::size_t matching = 0;
        std::size_t listed = 0;
        TextTable table(console, {{"Handle", true},
                                  {"Type"},
                                  {"Layer"},
                                  {"Color", true},
                                  {"Easting", true},
                                  {"Northing", true},
                                  {"Height", true},
                                  {"Details"}});
        JsonWriter json(console);
        if (m_json) {
            json.BeginObject();
            json.Member("job", m_job);
            json.Member("total", there);
            json.Key("entities");
            json.BeginArray();
        }
        for (const CqCadEntityPtr& entity : Entities(db)) {
            ++walked;
            if (!IsWanted(*entity)) {
                continue;
            }
            ++matching;
            if (m_limit != 0 && listed == static_cast<std::size_t>(m_limit)) {
                continue;
            }
            ++listed;
            if (m_json) {
                WriteJson(json, *entity);
            } else {
                AddRow(table, *entity);
            }
        }
        if (m_json) {
            json.EndArray();
            json.Member("count", listed);
            json.Member("matching", matching);
            json.EndObject();
        } else {
            table.Finish();
            if (matching != listed) {
                console.Say("{} of {} entities that match\n", listed, matching);
            } else {
                console.Say("{} of {} entities\n", listed, there);
            }
        }
        db.Close();
        if (walked != there) {
            throw Failure(
                fmt::format("{}: only {} of {} entities can be reached; cqjob check says more",
                            Printable(m_job), walked, there));
        }
        return 0;
    }

 private:
    bool IsWanted(const CqCadEntity& entity) const {
        const auto holds = [](const auto& list, const auto& value) {
            return list.empty() || std::find(list.begin(), list.end(), value) != list.end();
        };
        return holds(m_wanted, entity.GetType()) && holds(m_layers, ToUtf8(entity.GetLayer()));
    }

    void AddRow(TextTable& table, const CqCadEntity& entity) const {
        std::array<double, 3> point{};
        entity.GetPoint(point.data());
        table.Add({fmt::format("{}", entity.GetHandle()), std::string(KindWord(entity.GetType())),
                   ToUtf8(entity.GetLayer()), fmt::format("{}", entity.GetColor()),
                   FormatNumber(point[0], m_decimals), FormatNumber(point[1], m_decimals),
                   FormatNumber(point[2], m_decimals), Describe(entity)});
    }

    static void WriteJson(JsonWriter& json, const CqCadEntity& entity) {
        std::array<double, 3> point{};
        entity.GetPoint(point.data());
        json.BeginObject();
        json.Member("handle", entity.GetHandle());
        json.Member("type", KindWord(entity.GetType()));
        json.Member("layer", ToUtf8(entity.GetLayer()));
        json.Member("color", entity.GetColor());
        json.Member("easting", point[0]);
        json.Member("northing", point[1]);
        json.Member("height", point[2]);
        WriteDetails(json, entity);
        json.EndObject();
    }

    std::vector<std::string> m_kinds;
    std::vector<std::string> m_layers;
    std::vector<EntType> m_wanted;
    int m_limit = 0;
    int m_decimals = 3;
};

}  // namespace

std::unique_ptr<Command> MakeEntitiesCommand() {
    return std::make_unique<EntitiesCommand>();
}

}  // namespace cqsurvey::cqjob
