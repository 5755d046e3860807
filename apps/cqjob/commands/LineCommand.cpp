#include <cqsurvey/cqsurvey.h>

#include <algorithm>

#include "cqjob/Command.h"
#include "cqjob/Failure.h"
#include "cqjob/JobChange.h"
#include "cqjob/JsonWriter.h"
#include "cqjob/drawing/EntityOptions.h"
#include "cqjob/drawing/PlaceArgument.h"
#include "cqjob/drawing/VertexList.h"
#include "text/NumberText.h"
#include "text/Printable.h"

namespace cqsurvey::cqjob {

namespace {

/// A change of one vertex as the command line gives it: "3=P7".
struct VertexChange {
    std::size_t index = 0;  ///< from 0
    std::string value;
};

VertexChange ReadChange(const std::string& text, const std::string& option) {
    const std::size_t equals = text.find('=');
    const std::optional<std::int32_t> number = ParseWholeNumber(text.substr(0, equals));
    if (equals == std::string::npos || !number || *number < 1) {
        throw UsageError(fmt::format("{} takes the number of a vertex, = and a value, not {}",
                                     option, Quoted(text)));
    }
    return {static_cast<std::size_t>(*number) - 1, text.substr(equals + 1)};
}

/// A vertex of the polyline in the job.
struct JobVertex {
    CqHandle handle = 0;
    Place place;
    double bulge = 0.0;
};

class LineCommand : public Command {
 public:
    CommandLine& AddTo(CommandLine& program) override {
        CommandLine& command = program.AddCommand("line", "Draw, change and delete polylines");
        command.RequireCommand();
        command.SetFooter(
            "Example:\n"
            "  cqjob line add site.job P1 P2 P3 --layer Road\n"
            "  cqjob line edit site.job 214 --move 2=P7");

        m_add = &command.AddCommand("add", "Draw a polyline through places");
        AddJob(*m_add, "The job");
        m_add->AddRequired("PLACE", m_words, "Its vertices");
        m_add->AddFlag("--close", m_close, "Go back to the first place");
        m_options.AddTo(*m_add, true);
        AddJson(*m_add);
        m_add->SetFooter(std::string(kPlaceArgument) + "Vertices at points are tied to them.\n" +
                         kVertexArguments +
                         "\n"
                         "Example:\n"
                         "  cqjob line add site.job P1 bulge=0.41421 P2 through=P3 P4 --close");

        m_edit = &command.AddCommand("edit", "Change a polyline or its vertices");
        AddJob(*m_edit, "The job");
        AddLines(*m_edit, "The polyline, by its number in cqjob entities");
        AddChanges(*m_edit, "--move", m_moves, "Move vertex K to a place", "K=PLACE");
        AddChanges(*m_edit, "--bulge", m_bulges, "Bend the segment behind vertex K", "K=B");
        AddChanges(*m_edit, "--through", m_throughs,
                   "Make the segment behind vertex K the arc through a place", "K=PLACE");
        AddChanges(*m_edit, "--insert", m_inserts, "Add a vertex behind vertex K", "K=PLACE");
        m_edit->Add("--remove", m_removes, "Delete vertex K").Placeholder("K").OneValueEach();
        m_options.AddTo(*m_edit, true);
        AddJson(*m_edit);
        m_edit->SetFooter(
            "Vertices are numbered from 1, as they were before the change. A vertex that is moved\n"
            "to a point is tied to it.\n" +
            std::string(kPlaceArgument) +
            "\n"
            "Example:\n"
            "  cqjob line edit site.job 214 --move 2=P7 --remove 4 --color 3");

        m_delete = &command.AddCommand("delete", "Delete polylines with their vertices");
        AddJob(*m_delete, "The job");
        AddLines(*m_delete, "The polylines, by their numbers in cqjob entities");
        AddJson(*m_delete);
        m_delete->SetFooter("Points stay.\n\nExample:\n  cqjob line delete site.job 214 230");
        return command;
    }

    int Run(Console& console) override {
        JobChange change(m_job);
        CqSurveyDB& db = change.GetJob();
        std::vector<CqHandle> lines;
        if (m_add->IsGiven()) {
            lines.push_back(Add(db));
        } else {
            for (const std::string& line : m_lines) {
                lines.push_back(ReadEntityHandle(line));
                static_cast<void>(RequireEntity(db, m_job, lines.back(), EntPline));
            }
            if (m_edit->IsGiven()) {
                Edit(db, lines);
            } else {
                for (const CqHandle line : lines) {
                    db.DeletePline(line);
                }
            }
        }
        change.Commit();
        Tell(console, lines);
        return 0;
    }

 private:
    void AddLines(CommandLine& command, const std::string& help) {
        command.AddRequired("LINE", m_lines, help);
    }

    static void AddChanges(CommandLine& command, const std::string& name,
                           std::vector<std::string>& changes, const std::string& help,
                           const std::string& placeholder) {
        command.Add(name, changes, help).Placeholder(placeholder).OneValueEach();
    }

    CqHandle Add(CqSurveyDB& db) {
        std::vector<LineVertex> vertices = ReadVertices(db, m_job, m_words);
        if (m_close) {
            LineVertex first = vertices.front();
            first.bulge = 0.0;
            vertices.push_back(first);
        }
        m_options.Choose(db, m_job);
        CqCadEntityList* list =
            db.StartPline(m_options.GetLine(limits::kByLayer), m_options.GetCode(0));
        for (const LineVertex& vertex : vertices) {
            db.AddVertex(list, vertex.place.coords.data(), vertex.bulge);
        }
        const CqHandle line = db.EndPline(list);
        // The vertices of a new polyline have the handles after its own.
        CqHandle handle = line;
        for (const LineVertex& vertex : vertices) {
            ++handle;
            if (vertex.place.point != 0) {
                db.LinkSiPntAndVertex(vertex.place.point, handle);
            }
        }
        return line;
    }

    static std::vector<JobVertex> ReadLine(const CqSurveyDB& db, CqHandle line) {
        std::vector<JobVertex> vertices;
        CqHandle next = line;
        CqCadEntity* head = nullptr;
        db.GetNextCadEntity(next, head);
        CqSurveyDB::DeleteCqCadEntityObject(head);
        for (int left = db.GetNumCadEntities(); next != 0 && left > 0; --left) {
            CqCadEntity* read = nullptr;
            if (db.GetNextCadEntity(next, read) == 0) {
                break;
            }
            const CqCadEntityPtr vertex(read);
            if (vertex->GetType() != EntVertex || vertex->GetPlineHandle() != line) {
                break;
            }
            JobVertex& found = vertices.emplace_back();
            found.handle = vertex->GetHandle();
            found.bulge = vertex->GetBulge();
            vertex->GetPoint(found.place.coords.data());
            found.place.point = vertex->GetMcadSiPointHandle();
        }
        return vertices;
    }

    [[nodiscard]] std::size_t RequireVertex(const std::vector<JobVertex>& vertices,
                                            std::size_t index, bool withSegment = false) const {
        if (index + (withSegment ? 1 : 0) >= vertices.size()) {
            if (withSegment) {
                throw Failure(m_job, "there is no segment behind vertex {}", index + 1);
            }
            throw Failure(m_job, "the line has {} vertices, not {}", vertices.size(), index + 1);
        }
        return index;
    }

    void Edit(CqSurveyDB& db, const std::vector<CqHandle>& lines) const {
        const bool vertices = !m_moves.empty() || !m_bulges.empty() || !m_throughs.empty() ||
                              !m_inserts.empty() || !m_removes.empty();
        if (!vertices && !m_options.IsGiven()) {
            throw UsageError("there is nothing to change; use --move, --layer, --color ...");
        }
        if (vertices && lines.size() > 1) {
            throw UsageError("the vertices of several lines cannot be changed at once");
        }
        if (vertices) {
            EditVertices(db, lines.front());
        }
        for (const CqHandle line : lines) {
            const CqCadEntityPtr head = RequireEntity(db, m_job, line, EntPline);
            db.EditPline(line, m_options.GetLine(head->GetLine()),
                         m_options.GetCode(head->GetCode()));
            m_options.Apply(db, m_job, line);
        }
    }

    void EditVertices(CqSurveyDB& db, CqHandle line) const {
        std::vector<JobVertex> vertices = ReadLine(db, line);
        std::vector<bool> tied(vertices.size(), false);
        for (const std::string& text : m_moves) {
            const VertexChange change = ReadChange(text, "--move");
            const std::size_t i = RequireVertex(vertices, change.index);
            vertices[i].place = ReadPlace(db, m_job, change.value);
            tied[i] = true;
        }
        for (const std::string& text : m_bulges) {
            const VertexChange change = ReadChange(text, "--bulge");
            vertices[RequireVertex(vertices, change.index, true)].bulge = ReadBulge(change.value);
        }
        for (const std::string& text : m_throughs) {
            const VertexChange change = ReadChange(text, "--through");
            const std::size_t i = RequireVertex(vertices, change.index, true);
            vertices[i].bulge = FindBulge(m_job, vertices[i].place, vertices[i + 1].place,
                                          ReadPlace(db, m_job, change.value));
        }
        for (std::size_t i = 0; i < vertices.size(); ++i) {
            const JobVertex& vertex = vertices[i];
            db.MoveVertex(vertex.handle, vertex.place.coords.data(), vertex.bulge);
            if (tied[i]) {
                db.UnlinkSiPntAndVertex(0, vertex.handle);
                if (vertex.place.point != 0) {
                    db.LinkSiPntAndVertex(vertex.place.point, vertex.handle);
                }
            }
        }
        Insert(db, vertices);
        Remove(db, vertices);
    }

    void Insert(CqSurveyDB& db, const std::vector<JobVertex>& vertices) const {
        // Of several behind one vertex, the last is inserted first.
        for (auto text = m_inserts.rbegin(); text != m_inserts.rend(); ++text) {
            const VertexChange change = ReadChange(*text, "--insert");
            const CqHandle before = vertices[RequireVertex(vertices, change.index)].handle;
            const Place place = ReadPlace(db, m_job, change.value);
            db.InsertVertex(before, place.coords.data(), 0.0);
            CqHandle next = before;
            CqCadEntity* entity = nullptr;
            db.GetNextCadEntity(next, entity);
            CqSurveyDB::DeleteCqCadEntityObject(entity);
            if (place.point != 0) {
                db.LinkSiPntAndVertex(place.point, next);
            }
        }
    }

    void Remove(CqSurveyDB& db, const std::vector<JobVertex>& vertices) const {
        std::vector<CqHandle> gone;
        for (const std::string& text : m_removes) {
            const VertexChange change = ReadChange(text + "=", "--remove");
            gone.push_back(vertices[RequireVertex(vertices, change.index)].handle);
            if (std::find(gone.begin(), gone.end() - 1, gone.back()) != gone.end() - 1) {
                throw UsageError(fmt::format("vertex {} cannot be deleted twice", text));
            }
        }
        if (!gone.empty() && vertices.size() + m_inserts.size() < gone.size() + 2) {
            throw Failure(m_job, "fewer than two vertices would be left; use cqjob line delete");
        }
        for (const CqHandle vertex : gone) {
            db.DeleteVertex(vertex);
        }
    }

    void Tell(Console& console, const std::vector<CqHandle>& lines) const {
        if (m_json) {
            Answer(console, [&](JsonWriter& json) { json.Values("lines", lines); });
        } else if (m_add->IsGiven()) {
            console.Print("{}\n", lines.front());
        }
    }

    std::vector<std::string> m_words;
    std::vector<std::string> m_lines;
    std::vector<std::string> m_moves;
    std::vector<std::string> m_bulges;
    std::vector<std::string> m_throughs;
    std::vector<std::string> m_inserts;
    std::vector<std::string> m_removes;
    bool m_close = false;
    EntityOptions m_options;
    CommandLine* m_add = nullptr;
    CommandLine* m_edit = nullptr;
    CommandLine* m_delete = nullptr;
};

}  // namespace

std::unique_ptr<Command> MakeLineCommand() {
    return std::make_unique<LineCommand>();
}

}  // namespace cqsurvey::cqjob
