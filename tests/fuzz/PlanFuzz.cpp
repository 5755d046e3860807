#include <filesystem>

#include "cqsurvey/plan/PlanDrawing.h"
#include "fuzz/FuzzJob.h"
#include "fuzz/FuzzTarget.h"
#include "fuzz/FuzzVolume.h"

namespace cqsurvey {
namespace {

/// The drawing of a job's file from a stranger, as a picture.
class PlanFuzz : public FuzzTarget {
 public:
    void Run(std::string_view bytes) override {
        m_folder.Put("a.job", bytes);
        std::filesystem::remove(m_folder.Host("a.job-journal"));
        CqSurveyDB db;
        Try([&] {
            db.OpenReadOnly(m_folder.Path("a.job"));
            const plan::PlanDrawing drawing(db);
            plan::PlotOptions options;
            options.format = plan::PictureFormat::Svg;
            options.labelHeights = true;
            options.labelCodes = true;
            options.labelsOfCodes = true;
            options.lineLabels = {.lengths = true, .bearings = true, .areas = true};
            options.fills = {"*"};
            options.fillsPaper = HashOf(bytes) % 2 == 0;
            std::size_t size = 0;
            drawing.Draw(options, [&](std::string_view piece) { size += piece.size(); });
            RequirePromise(size > 0, "a picture that was drawn has bytes");
        });
        Try([&] { db.Close(); });
    }

    std::vector<std::string> MakeSeeds() override { return MakeJobs(); }

    std::optional<std::string> Mutate(const std::string& bytes, std::uint32_t seed) override {
        return MutateVolume(m_folder, bytes, seed);
    }

 private:
    FuzzFolder m_folder;
};

}  // namespace

FuzzTarget& GetFuzzTarget() {
    static PlanFuzz target;
    return target;
}

}  // namespace cqsurvey
