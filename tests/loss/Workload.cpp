#include "loss/Workload.h"

#include <fstream>
#include <iterator>
#include <memory>

#include "cqsurvey/CqBatch.h"
#include "cqsurvey/Text.h"

namespace cqsurvey {

namespace {

constexpr std::size_t kMostJobs = 3;
constexpr std::size_t kManyEntities = 120;

/// Settings as an application might have exported them.
std::string MakeSettings(int division) {
    return "[SETTINGS]\r\nSiPointSize=4.500\r\nJCoordDivision=" + std::to_string(division) +
           "\r\nVersion=1.00\r\nMapscale=250\r\n[BACKGROUND]\r\nEntityColor=-1\r\nType=0\r\n"
           "CenterX=0\r\nCenterY=0\r\nSizeX=0\r\nSizeY=0\r\nRotation=0\r\nBrightness=0\r\n"
           "Contrast=100\r\nMonotone=0\r\nBKColor=16777215\r\n[OFFICE]\r\nName=Gr\xC3\xB6\xC3\x9F"
           "e " +
           std::to_string(division) + "\r\n";
}

std::string MakeBytes(std::size_t size, unsigned seed) {
    std::string bytes(size, '\0');
    for (char& byte : bytes) {
        seed = seed * 1664525U + 1013904223U;
        byte = static_cast<char>(seed >> 24);
    }
    return bytes;
}

}  // namespace

Workload::Workload(const std::string& folder) : m_folder(folder) {
    m_files = {{"one.ini", MakeSettings(7)},
               {"two.ini", MakeSettings(9)},
               {"small.img", MakeBytes(700, 1)},
               {"large.img", MakeBytes(150'000, 2)}};
    for (const auto& [name, bytes] : m_files) {
        std::ofstream(m_folder + "/" + name, std::ios::binary) << bytes;
    }
}

void Workload::Begin(std::uint32_t seed) {
    m_random.seed(seed);
    m_color = 256;
    if (!m_current.empty()) {
        Job().Reopen();
    }
}

std::set<std::string> Workload::GetFiles() const {
    std::set<std::string> names;
    for (const auto& [name, bytes] : m_files) {
        names.insert(name);
    }
    return names;
}

CString Workload::PathOf(const std::string& name) const {
    return FromUtf8(m_folder + "/" + name);
}

CString Workload::Named(const CString& stem, int number) {
    return stem + FromUtf8(std::to_string(number));
}

CString Workload::Words(int most) {
    static const CString kLetters = u"abc def \u00E4\u4E95\u0436\"',;";
    CString text = u"w";
    for (int length = Below(most); length > 0; --length) {
        text += kLetters[static_cast<std::size_t>(Below(static_cast<int>(kLetters.size())))];
    }
    return text;
}

CqHandle Workload::PickPoint() {
    JobModel& job = Job();
    if (job.points.empty()) {
        return 0;
    }
    return std::next(job.points.begin(), Below(static_cast<int>(job.points.size())))->first;
}

CqHandle Workload::PickEntity(EntType type) {
    std::vector<CqHandle> found;
    for (const auto& [handle, entity] : Job().entities) {
        if (entity.type == type) {
            found.push_back(handle);
        }
    }
    return found.empty() ? 0
                         : found[static_cast<std::size_t>(Below(static_cast<int>(found.size())))];
}

void Workload::Step(CqSurveyDB* db) {
    m_db = db;
    if (m_jobs.empty() || (m_jobs.size() < kMostJobs && OneIn(30))) {
        CreateJob();
    } else if (OneIn(25)) {
        OpenJob();
    } else if (OneIn(12)) {
        Batch();
    } else {
        Operation();
    }
    m_db = nullptr;
}

void Workload::Operation() {
    if (Job().entities.size() > kManyEntities && OneIn(2)) {
        return DeleteSomething();
    }
    switch (Below(24)) {
        case 0:
        case 1:
        case 2:
            return AddPoint();
        case 3:
        case 4:
            return Points();
        case 5:
            return PointDetails();
        case 6:
        case 7:
            return Groups();
        case 8:
        case 9:
            return Descriptions();
        case 10:
            return Layers();
        case 11:
            return LayersOfEntities();
        case 12:
            return AddPline();
        case 13:
            return Polylines();
        case 14:
        case 15:
            return Vertices();
        case 16:
            return Ties();
        case 17:
            return Texts();
        case 18:
            return Circles();
        case 19:
            return Bitmaps();
        case 20:
            return Settings();
        case 21:
            return FixedSettings();
        case 22:
            return Image();
        default:
            return m_inBatch ? AddPoint() : Import();
    }
}

void Workload::DeleteSomething() {
    const CqHandle handle = OneIn(2) ? PickEntity(EntPline) : 0;
    if (handle != 0) {
        Job().RemovePline(handle);
        Expect(1, [&](CqSurveyDB& db) { return db.DeletePline(handle); });
    } else if (const CqHandle point = PickPoint()) {
        Job().RemovePoint(point);
        Expect(1, [&](CqSurveyDB& db) { return db.DelCoordRec(point); });
    }
}

void Workload::Batch() {
    const JobModel before = Job();
    const int color = m_color;
    const int steps = 1 + Below(25);
    const bool keep = !OneIn(4);
    CqSurveyDB* db = m_db;
    m_inBatch = true;
    std::unique_ptr<CqBatch> batch(db != nullptr ? new CqBatch(*db) : nullptr);
    for (int i = 0; i < steps; ++i) {
        Operation();
    }
    if (keep && batch != nullptr) {
        batch->Commit();
    }
    if (!keep) {
        Job() = before;
        m_color = color;
    }
    m_inBatch = false;
}

void Workload::CreateJob() {
    m_current = "job" + std::to_string(m_jobs.size() + 1) + ".job";
    m_jobs.emplace(m_current, JobModel());
    m_color = 256;
    Expect(1, [&](CqSurveyDB& db) { return db.CreateNew(PathOf(m_current)), 1; });
}

void Workload::OpenJob() {
    m_current = std::next(m_jobs.begin(), Below(static_cast<int>(m_jobs.size())))->first;
    Job().Reopen();
    const bool closes = OneIn(2);
    Expect(1, [&](CqSurveyDB& db) {
        if (closes) {
            db.Close();
        }
        return db.Open(PathOf(m_current)), 1;
    });
}

}  // namespace cqsurvey
