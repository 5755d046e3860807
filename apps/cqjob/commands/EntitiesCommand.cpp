#include <cqsurvey/cqsurvey.h>

#include <algorithm>
#include <array>
#include <functional>
#include <limits>
#include <unordered_map>

#include "cqjob/Command.h"
#include "cqjob/EntityKind.h"
#include "cqjob/Failure.h"
#include "cqjob/JobFile.h"
#include "cqjob/JsonWriter.h"
#include "cqjob/PolylineMeasure.h"
#include "cqjob/TextTable.h"
#include "text/NumberText.h"
#include "text/Printable.h"

namespace cqsurvey::cqjob {

namespace {

/// "3 vertices, length 24.850, easting 2000 to 2010, northing 5000 to 5020"
std::string Describe(const PolylineMeasure& line) {
    if (line.GetVertices() == 0) {
        return "no vertices";
    }
    const Extents box = line.GetExtents();
    const auto range = [](double from, double to) {
        return FormatNumber(from) + " to " + FormatNumber(to);
    };
    return fmt::format(
        "{}, length {}, easting {}, northing {}",
        line.GetVertices() == 1 ? "1 vertex" : fmt::format("{} vertices", line.GetVertices()),
        FormatNumber(line.GetLength(), 3), range(box.min.GetX(), box.max.GetX()),
        range(box.min.GetY(), box.max.GetY()));
}

/// The attributes that only entities of this kind have, on one line.
std::string Describe(const CqCadEntity& entity, const PolylineMeasure& line) {
    switch (entity.GetType()) {
        case EntSiPnt:
            return fmt::format("{} code {}", Quoted(ToUtf8(entity.GetName())), entity.GetCode());
        case EntPline:
            return fmt::format("line {} code {}, {}", entity.GetLine(), entity.GetCode(),
                               Describe(line));
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

/// Writes the members that only entities of this kind have.
void WriteDetails(JsonWriter& json, const CqCadEntity& entity, const PolylineMeasure& line) {
    constexpr unsigned kAlignBits = 16;
    constexpr unsigned kAlignMask = 0xFFFF;
    switch (entity.GetType()) {
        case EntSiPnt:
            json.Member("name", entity.GetName());
            json.Member("code", entity.GetCode());
            json.Array("vertices", [&] {
                for (int i = 0; i < entity.GetMcadNumVertex(); ++i) {
                    json.Value(entity.GetMcadVertexHandle(i));
                }
            });
            break;
        case EntPline:
            json.Member("line", entity.GetLine());
            json.Member("code", entity.GetCode());
            json.Member("vertex_count", line.GetVertices());
            if (line.GetVertices() > 0) {
                json.Member("length", line.GetLength());
                json.Object("extents", [&] { WriteMembers(json, line.GetExtents()); });
            }
            break;
        case EntVertex:
            json.Member("pline", entity.GetPlineHandle());
            json.Member("bulge", entity.GetBulge());
            json.Member("point", entity.GetMcadSiPointHandle());
            break;
        case EntText: {
            const auto align = static_cast<unsigned>(entity.GetAlign());
            json.Member("text", entity.GetText());
            json.Member("align1", align & kAlignMask);
            json.Member("align2", align >> kAlignBits);
            json.Member("style", entity.GetStyle());
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
            json.Member("resource", entity.GetResName());
            json.Member("width", entity.GetSize().GetX());
            break;
    }
}

void WriteMembers(JsonWriter& json, const CqCadEntity& entity, const PolylineMeasure& line) {
    json.Member("handle", entity.GetHandle());
    json.Member("type", KindWord(entity.GetType()));
    json.Member("layer", entity.GetLayer());
    json.Member("color", entity.GetColor());
    if (entity.GetType() != EntPline) {
        std::array<double, 3> point{};
        entity.GetPoint(point.data());
        json.Member("easting", point[0]);
        json.Member("northing", point[1]);
        json.Member("height", point[2]);
    }
    WriteDetails(json, entity, line);
}

class EntitiesCommand : public Command {
 public:
    CommandLine& AddTo(CommandLine& program) override {
        CommandLine& command =
            program.AddCommand("entities", "List the entities of a job's drawing, in its order");
        AddJob(command, "The job; it is not changed");
        AddJson(command);
        AddWide(command);
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
        m_lines = MeasureLines(db);
        const Counts counts = m_json ? WriteJson(console, db) : WriteTable(console, db);
        db.Close();
        if (counts.walked != there) {
            throw Failure(m_job, "only {} of {} entities can be reached; cqjob check says more",
                          counts.walked, there);
        }
        return 0;
    }

 private:
    using Lines = std::unordered_map<CqHandle, PolylineMeasure>;

    /// What there is to say about each polyline. Its vertices come after it.
    Lines MeasureLines(const CqSurveyDB& db) const {
        Lines lines;
        if (!IsWantedKind(EntPline)) {
            return lines;
        }
        for (const CqCadEntityPtr& entity : Entities(db)) {
            if (entity->GetType() == EntVertex) {
                lines[entity->GetPlineHandle()].Add(*entity);
            }
        }
        return lines;
    }

    const PolylineMeasure& FindLine(const CqCadEntity& entity) const {
        static const PolylineMeasure kNone;
        const auto found = m_lines.find(entity.GetHandle());
        return found == m_lines.end() ? kNone : found->second;
    }

    bool IsWantedKind(EntType kind) const {
        return m_wanted.empty() ||
               std::find(m_wanted.begin(), m_wanted.end(), kind) != m_wanted.end();
    }

    bool IsWanted(const CqCadEntity& entity) const {
        const auto holds = [](const auto& list, const auto& value) {
            return list.empty() || std::find(list.begin(), list.end(), value) != list.end();
        };
        return IsWantedKind(entity.GetType()) && holds(m_layers, ToUtf8(entity.GetLayer()));
    }

    struct Counts {
        int walked = 0;
        std::size_t matching = 0;
        std::size_t listed = 0;
    };

    using List = std::function<void(const CqCadEntity& entity, const PolylineMeasure& line)>;

    /// Calls `list` for each entity that is to be listed.
    Counts Walk(const CqSurveyDB& db, const List& list) const {
        Counts counts;
        for (const CqCadEntityPtr& entity : Entities(db)) {
            ++counts.walked;
            if (!IsWanted(*entity)) {
                continue;
            }
            ++counts.matching;
            if (m_limit == 0 || counts.listed < static_cast<std::size_t>(m_limit)) {
                ++counts.listed;
                list(*entity, FindLine(*entity));
            }
        }
        return counts;
    }

    Counts WriteTable(Console& console, const CqSurveyDB& db) const {
        TextTable table(console, {{"Handle", true},
                                  {"Type"},
                                  {"Layer"},
                                  {"Color", true},
                                  {"Easting", true},
                                  {"Northing", true},
                                  {"Height", true},
                                  {"Details"}});
        const Counts counts = Walk(db, [&](const CqCadEntity& entity, const PolylineMeasure& line) {
            std::array<double, 3> point{};
            entity.GetPoint(point.data());
            // A polyline has no place of its own.
            const auto coordinate = [&](double number) {
                return entity.GetType() == EntPline ? std::string("-")
                                                    : FormatNumber(number, m_decimals);
            };
            table.Add({fmt::format("{}", entity.GetHandle()),
                       std::string(KindWord(entity.GetType())), ToUtf8(entity.GetLayer()),
                       fmt::format("{}", entity.GetColor()), coordinate(point[0]),
                       coordinate(point[1]), coordinate(point[2]), Describe(entity, line)});
        });
        table.Finish();
        if (counts.matching != counts.listed) {
            console.Say("{} of {} entities that match\n", counts.listed, counts.matching);
        } else {
            console.Say("{} of {} entities\n", counts.listed, db.GetNumCadEntities());
        }
        return counts;
    }

    Counts WriteJson(Console& console, const CqSurveyDB& db) const {
        Counts counts;
        Answer(console, [&](JsonWriter& json) {
            json.Member("total", db.GetNumCadEntities());
            json.Array("entities", [&] {
                counts = Walk(db, [&](const CqCadEntity& entity, const PolylineMeasure& line) {
                    json.Object([&] { WriteMembers(json, entity, line); });
                });
            });
            json.Member("count", counts.listed);
            json.Member("matching", counts.matching);
        });
        return counts;
    }

    std::vector<std::string> m_kinds;
    std::vector<std::string> m_layers;
    std::vector<EntType> m_wanted;
    Lines m_lines;
    int m_limit = 0;
    int m_decimals = 3;
};

}  // namespace

std::unique_ptr<Command> MakeEntitiesCommand() {
    return std::make_unique<EntitiesCommand>();
}

}  // namespace cqsurvey::cqjob
