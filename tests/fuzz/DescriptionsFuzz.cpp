#include "fuzz/FuzzJob.h"
#include "fuzz/FuzzTarget.h"
#include "fuzz/FuzzVolume.h"

namespace cqsurvey {
namespace {

void AppendNumber(std::string& bytes, std::uint32_t number) {
    for (int shift = 0; shift < 32; shift += 8) {
        bytes += static_cast<char>(number >> shift);
    }
}

/// A description file with one block for each text; the first is free.
std::string MakeFile(const std::vector<std::string>& texts) {
    std::string bytes = "QRDBB10";
    bytes.resize(64, '\0');
    std::uint32_t key = 0;
    for (const std::string& text : texts) {
        const std::size_t capacity = (text.size() + 15) / 16 * 16;
        AppendNumber(bytes, key++);
        AppendNumber(bytes, static_cast<std::uint32_t>(text.size()));
        AppendNumber(bytes, static_cast<std::uint32_t>(capacity));
        AppendNumber(bytes, 0);
        bytes += text;
        bytes.append(capacity - text.size(), '\0');
    }
    return bytes;
}

/// The description file of a job from a stranger.
class DescriptionsFuzz : public FuzzTarget {
 public:
    DescriptionsFuzz() : m_job(MakeJobs().back()) {}

    void Run(std::string_view bytes) override {
        m_folder.Put("a.job", m_job);
        RequirePromise(PutIntoVolume(m_folder.Host("a.job"), "Description.BLB", bytes),
                       "a file in a volume can be written");
        CqSurveyDB db;
        Try([&] {
            db.Open(m_folder.Path("a.job"));
            for (CqHandle key = 1; key < 12; ++key) {
                CString text;
                Try([&] { db.GetCoordDescription(key, text); });
                Try([&] { static_cast<void>(db.EditCoordDescription(key, text + u" more")); });
                Try([&] { db.DelCoordDescription(key + 3); });
                Try([&] {
                    static_cast<void>(db.AddCoordDescription(key + 2, u"of sixteen bytes"));
                });
                CString found;
                Try([&] { db.GetCoordDescription(key + 2, found); });
            }
            // What the library itself has written it reads again.
            db.Close();
            db.Open(m_folder.Path("a.job"));
        });
        Try([&] { db.Close(); });
    }

    std::vector<std::string> MakeSeeds() override {
        return {MakeFile({}), MakeFile({"free", "first", "second, which is rather longer"}),
                MakeFile({std::string(16, 'f'), std::string(16, 'x'), "", std::string(300, 'y')})};
    }

    std::vector<std::string> GetWords() override {
        using namespace std::string_literals;
        return {"QRDBB10",          "\x10\0\0\0"s, "\xFF\xFF\xFF\xFF", "\xF0\xFF\xFF\xFF",
                "\xFF\xFF\xFF\x7F", "\0\0\0\x80"s, "\x20\0\0\0"s};
    }

 private:
    FuzzFolder m_folder;
    std::string m_job;
};

}  // namespace

FuzzTarget& GetFuzzTarget() {
    static DescriptionsFuzz target;
    return target;
}

}  // namespace cqsurvey
