#include "gdal/write/TableRecorder.h"

#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <span>
#include <string>
#include <utility>
#include <vector>

namespace cqsurvey::gdal {

namespace {

/// The layers of the job with their handles.
std::vector<std::pair<CString, CqHandle>> ListLayers(CqSurveyDB& db) {
    std::vector<std::pair<CString, CqHandle>> layers;
    CqHandle next = db.GetFirstLayerHandle();
    for (int left = db.GetNumLayers(); left > 0 && next != 0; --left) {
        const CqHandle handle = next;
        CString name;
        int color = 0;
        if (db.GetNextLayer(next, name, color) == 0) {
            break;
        }
        layers.emplace_back(std::move(name), handle);
    }
    return layers;
}

/// A file of the system with these bytes, as long as it lives.
class ScratchFile {
 public:
    explicit ScratchFile(std::span<const std::uint8_t> bytes)
        : m_path((std::filesystem::temp_directory_path() / "cqsurvey-XXXXXX").string()) {
        const int file = mkstemp(m_path.data());
        if (file < 0) {
            throw RecordFailure("No file can be made in " +
                                std::filesystem::temp_directory_path().string());
        }
        bool written = true;
        while (written && !bytes.empty()) {
            const ssize_t count = write(file, bytes.data(), bytes.size());
            written = count > 0;
            bytes = bytes.subspan(written ? static_cast<std::size_t>(count) : 0);
        }
        if (close(file) != 0 || !written) {
            unlink(m_path.c_str());
            throw RecordFailure("The file " + m_path + " cannot be written");
        }
    }
    ScratchFile(const ScratchFile&) = delete;
    ScratchFile& operator=(const ScratchFile&) = delete;
    ~ScratchFile() { unlink(m_path.c_str()); }

    [[nodiscard]] const std::string& Path() const { return m_path; }

 private:
    std::string m_path;
};

}  // namespace

TableRecorder::TableRecorder(SharedJob& job, RecordingReport& report, DrawingPen& pen)
    : m_job(job), m_report(report), m_pen(pen), m_drawn(job.Db().GetNumCadEntities() > 0) {
    if (m_drawn) {
        for (const auto& [name, handle] : ListLayers(job.Db())) {
            m_ownLayers.insert(name);
        }
    }
}

CqHandle TableRecorder::RecordLayer(const FeatureFields& fields) {
    CqSurveyDB& db = m_job.Db();
    const CString name = m_pen.Cut(fields.Text(FieldRole::Name), limits::kLayerName, "Layer names");
    const std::optional<std::int32_t> color = fields.Int(FieldRole::Color);
    const std::optional<std::int32_t> line = fields.Int(FieldRole::Line);
    constexpr int kInk = 7;
    if (db.AddLayer(name, color.value_or(kInk), line.value_or(0)) == 0 &&
        !m_ownLayers.contains(name)) {
        if (color) {
            db.EditLayerColor(name, *color);
        }
        if (line) {
            db.EditLayerLine(name, *line);
        }
    }
    for (const auto& [found, handle] : ListLayers(db)) {
        if (found == name) {
            return handle;
        }
    }
    throw RecordFailure(fields.Describe() + ": the job takes no layer \"" + ToUtf8(name) + "\"");
}

CqHandle TableRecorder::RecordGroup(const FeatureFields& fields) {
    const CString name =
        m_pen.Cut(fields.Text(FieldRole::Name), limits::kGroupName, "Names of groups");
    m_job.Db().AddGroup(name);
    const std::uint16_t id = m_job.Db().GetGroupID(name);
    if (id == 0) {
        throw RecordFailure(fields.Describe() + ": the job takes no group \"" + ToUtf8(name) +
                            "\"");
    }
    return id;
}

CqHandle TableRecorder::RecordSetting(const FeatureFields& fields) {
    CqSurveyDB& db = m_job.Db();
    const CString section = fields.Text(FieldRole::Section);
    const CString key = fields.Text(FieldRole::Key);
    const GIntBig id = fields.Feature().GetFID();
    CString own;
    const bool there = db.GetSettingsString(section, key, own, CString()) != 0;
    if (there && (m_drawn || section == CqJobIdentity::kSection)) {
        if (own != fields.Text(FieldRole::Value)) {
            m_report.Count("Settings of the job stayed as they were", ToUtf8(key));
        }
        return static_cast<CqHandle>(id > 0 ? id : 1);
    }
    db.AddSettingsSection(section);
    if (db.WriteSettingsString(section, key, fields.Text(FieldRole::Value)) == 0) {
        throw RecordFailure(fields.Describe() + ": the job takes no setting \"" + ToUtf8(key) +
                            "\"");
    }
    return static_cast<CqHandle>(id > 0 ? id : 1);
}

CqHandle TableRecorder::RecordBackground(const FeatureFields& fields) {
    if (m_drawn && m_job.Db().IsBackgroundImageFile() != 0) {
        m_report.Count("The job's background image stayed as it was", fields.Describe());
    } else {
        StoreBackground(fields);
    }
    return 1;
}

void TableRecorder::StoreBackground(const FeatureFields& fields) {
    const std::span<const std::uint8_t> image = fields.Bytes(FieldRole::Image);
    if (image.empty()) {
        throw RecordFailure(fields.Describe() + " has no image");
    }
    const auto number = [&](FieldRole role) { return fields.Real(role).value_or(0.0); };
    const int type = fields.Int(FieldRole::ImageType).value_or(0);
    const ScratchFile file(image);
    if (m_job.Db().StoreBackgroundImageFile(
            FromUtf8(file.Path()), type,
            CVector(number(FieldRole::Easting), number(FieldRole::Northing)),
            CVector(number(FieldRole::Width), number(FieldRole::ImageHeight)),
            number(FieldRole::Rotation)) == 0) {
        throw RecordFailure(fields.Describe() + ": the job does not take the image");
    }
}

void TableRecorder::EditLayer(CqHandle handle, const FeatureChange& change) {
    CqSurveyDB& db = m_job.Db();
    const FeatureFields& fields = change.After();
    if (change.Is(FieldRole::Name)) {
        throw RecordFailure(fields.Describe() +
                            ": a layer gets another name with cqjob layers rename only");
    }
    CqHandle next = handle;
    CString name;
    int was = 0;
    db.GetNextLayer(next, name, was);
    const int color = change.Int(FieldRole::Color, was);
    const int line = change.Int(FieldRole::Line, db.GetLayerLine(name));
    if (line < 0 || line > limits::kHighestLine) {
        throw RecordFailure(fields.Describe() + ": there is no line type " + std::to_string(line));
    }
    if (change.Is(FieldRole::Color)) {
        db.EditLayerColor(name, color);
    } else if (change.Is(FieldRole::Hidden)) {
        db.ShowLayer(name, fields.Int(FieldRole::Hidden).value_or(0) != 0 ? 0 : 1);
    }
    if (change.Is(FieldRole::Line)) {
        db.EditLayerLine(name, line);
    }
}

void TableRecorder::EditGroup(CqHandle handle, const FeatureChange& change) {
    if (!change.Is(FieldRole::Name)) {
        return;
    }
    const FeatureFields& fields = change.After();
    const CString name =
        m_pen.Cut(fields.Text(FieldRole::Name), limits::kGroupName, "Names of groups");
    if (name.empty() || m_job.Db().EditGroup(static_cast<std::uint16_t>(handle), name) == 0) {
        throw RecordFailure(fields.Describe() + ": the group cannot be called \"" + ToUtf8(name) +
                            "\"");
    }
}

}  // namespace cqsurvey::gdal
