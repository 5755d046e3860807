#include <filesystem>

#include "fuzz/FuzzJob.h"
#include "fuzz/FuzzTarget.h"
#include "fuzz/FuzzVolume.h"

namespace cqsurvey {
namespace {

/// A whole job's file from a stranger.
class VolumeFuzz : public FuzzTarget {
 public:
    VolumeFuzz() {
        m_folder.Put("image", std::string(9000, 'i'));
        m_folder.Put("settings", "[SETTINGS]\n");
    }

    void Run(std::string_view bytes) override {
        // Every second time as a file of the first version, whose pages have no sums: what is wrong
        // in it gets further.
        std::string file(bytes);
        if (file.size() > 100 && HashOf(bytes) % 2 == 0) {
            file[63] = 1;  // the lowest byte of the format version
            file[99] = 0;  // and that of the writer's
        }
        m_folder.Put("a.job", file);
        std::filesystem::remove(m_folder.Host("a.job-journal"));
        CStringList groups;
        SVDB_INFORMATION information;
        information.groupNames = &groups;
        CqSurveyDB::GetDBInformation(0xFFFFFFFF, m_folder.Path("a.job"), information, nullptr);
        CqSurveyDB db;
        Try([&] {
            db.Open(m_folder.Path("a.job"));
            LookAtJob(db);
            ChangeJob(db, m_folder, HashOf(bytes));
            LookAtJob(db);
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
    static VolumeFuzz target;
    return target;
}

}  // namespace cqsurvey
