#include <cqsurvey/cqsurvey.h>

#include <array>

#include "cqjob/Arguments.h"
#include "cqjob/Command.h"
#include "cqjob/Failure.h"
#include "cqjob/JobChange.h"
#include "cqjob/JsonWriter.h"
#include "cqjob/drawing/EntityOptions.h"
#include "cqjob/drawing/PlaceArgument.h"
#include "text/NumberText.h"

namespace cqsurvey::cqjob {

namespace {

class CircleCommand : public Command {
 public:
    CommandLine& AddTo(CommandLine& program) override {
        CommandLine& command = program.AddCommand("circle", "Draw, change and delete circles");
        command.RequireCommand();
        command.SetFooter(
            "Example:\n"
            "  cqjob circle add site.job P1 1.25 --layer Trees\n"
            "  cqjob circle edit site.job 214 --radius 2");

        m_add = &command.AddCommand("add", "Draw a circle around a place");
        AddJob(*m_add, "The job");
        m_add->AddRequired("PLACE", m_place, "Its centre");
        m_add->AddRequired("RADIUS", m_radius, "Its radius").Check(FindNumberFault);
        m_options.AddTo(*m_add, true);
        AddJson(*m_add);
        m_add->SetFooter(std::string(kPlaceArgument) +
                         "\nExample:\n  cqjob circle add site.job 2000.5,5000 1.25");

        m_edit = &command.AddCommand("edit", "Change circles");
        AddJob(*m_edit, "The job");
        AddCircles(*m_edit);
        m_edit->Add("--at", m_place, "Move it to a place").Placeholder("PLACE");
        m_edit->Add("--radius", m_radius, "Its radius")
            .Placeholder("LENGTH")
            .Check(FindNumberFault);
        m_options.AddTo(*m_edit, true);
        AddJson(*m_edit);
        m_edit->SetFooter("What no option names stays as it is.\n" + std::string(kPlaceArgument) +
                          "\nExample:\n  cqjob circle edit site.job 214 --radius 2 --at P1");

        m_delete = &command.AddCommand("delete", "Delete circles");
        AddJob(*m_delete, "The job");
        AddCircles(*m_delete);
        AddJson(*m_delete);
        m_delete->SetFooter("Example:\n  cqjob circle delete site.job 214 215");
        return command;
    }

    int Run(Console& console) override {
        JobChange change(m_job);
        CqSurveyDB& db = change.GetJob();
        std::vector<CqHandle> circles;
        if (m_add->IsGiven()) {
            circles.push_back(Add(db));
        } else {
            for (const std::string& circle : m_circles) {
                circles.push_back(ReadEntityHandle(circle));
                const CqCadEntityPtr entity = RequireEntity(db, m_job, circles.back(), EntCircle);
                if (m_edit->IsGiven()) {
                    Edit(db, *entity);
                } else {
                    db.DeleteCircle(circles.back());
                }
            }
        }
        change.Commit();
        Tell(console, circles);
        return 0;
    }

 private:
    void AddCircles(CommandLine& command) {
        command.AddRequired("ENTITY", m_circles, "The circles, by their numbers in cqjob entities");
    }

    [[nodiscard]] double NewRadius(double other) const {
        const double radius = m_radius ? ParseNumber(*m_radius).value : other;
        if (m_radius && !(radius > 0.0)) {
            throw UsageError("the radius of a circle must be above 0");
        }
        return radius;
    }

    CqHandle Add(CqSurveyDB& db) const {
        const Place place = ReadPlace(db, m_job, *m_place);
        m_options.Choose(db, m_job);
        return db.AddCircle(place.coords.data(), NewRadius(0.0),
                            m_options.GetLine(limits::kByLayer), m_options.GetCode(0));
    }

    void Edit(CqSurveyDB& db, const CqCadEntity& circle) const {
        if (!m_place && !m_radius && !m_options.IsGiven()) {
            throw UsageError("there is nothing to change; use --radius, --at, --layer ...");
        }
        std::array<double, 3> coords{};
        circle.GetPoint(coords.data());
        if (m_place) {
            coords = ReadPlace(db, m_job, *m_place).coords;
        }
        db.EditCircle(circle.GetHandle(), coords.data(), NewRadius(circle.GetRadius()),
                      m_options.GetLine(circle.GetLine()), m_options.GetCode(circle.GetCode()));
        m_options.Apply(db, m_job, circle.GetHandle());
    }

    void Tell(Console& console, const std::vector<CqHandle>& circles) const {
        if (m_json) {
            Answer(console, [&](JsonWriter& json) { json.Values("circles", circles); });
        } else if (m_add->IsGiven()) {
            console.Print("{}\n", circles.front());
        }
    }

    std::optional<std::string> m_place;
    std::optional<std::string> m_radius;
    std::vector<std::string> m_circles;
    EntityOptions m_options;
    CommandLine* m_add = nullptr;
    CommandLine* m_edit = nullptr;
    CommandLine* m_delete = nullptr;
};

}  // namespace

std::unique_ptr<Command> MakeCircleCommand() {
    return std::make_unique<CircleCommand>();
}

}  // namespace cqsurvey::cqjob
