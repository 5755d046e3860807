#pragma once

#include <array>
#include <cstdint>

#include "cqsurvey/CqCadEntity.h"
#include "cqsurvey/CqCoordRec.h"
#include "cqsurvey/Records.h"
#include "cqsurvey/Types.h"
#include "index/Extents.h"
#include "index/LinkIndex.h"
#include "index/PointIndex.h"
#include "job/JobDefaults.h"
#include "tables/CqBitmapTable.h"
#include "tables/CqCircleTable.h"
#include "tables/CqDescriptionStore.h"
#include "tables/CqEntityTable.h"
#include "tables/CqGroupTable.h"
#include "tables/CqLayerTable.h"
#include "tables/CqLinkTable.h"
#include "tables/CqPlineTable.h"
#include "tables/CqPointTable.h"
#include "tables/CqSettingsFile.h"
#include "tables/CqTextTable.h"
#include "tables/CqVertexTable.h"
#include "tables/JobPart.h"

namespace cqsurvey {

/// The inside of CqSurveyDB: everything that one job consists of while it is open, and the helpers
/// that more than one public operation needs. Each helper is defined where its subject is:
/// src/drawing/Extents.cpp holds MakeBoundData.
///
/// The members are public: the operations of CqSurveyDB work on them directly, each within a step
/// (JobStep.h).
struct Job {
    Job();
    Job(const Job&) = delete;
    Job& operator=(const Job&) = delete;
    ~Job() = default;

    // ---- Life ----

    [[nodiscard]] bool IsOpen() const { return !mountName.empty(); }
    void SetDefaultSetting();
    /// Creates the job's volume and everything on it.
    void Create(const CString& path);
    /// Mounts the volume at `path` under the first free name "JOB1", "JOB2" ...
    void MountVolume(const CString& path, bool readOnly);
    /// Reads what is on the mounted volume.
    void OpenMounted();
    /// Closed afterwards, also when it throws.
    void Close();

    /// What a path of files on the job's volume begins with.
    [[nodiscard]] CString Root() const { return mountName + u":/"; }
    /// The folder of a job: what stands before the last separator, or "\" where that is nothing.
    [[nodiscard]] static CString GetProjectPath(const CString& path);

    // ---- Steps; JobStep and CqBatch call these ----

    void BeginStep();
    /// On failure everything is undone and the store's failure is thrown.
    void CommitStep();
    void RollbackStep() noexcept;

    // ---- Information ----

    [[nodiscard]] int GetInformation(std::uint32_t mask, SVDB_INFORMATION& info);

    // ---- Points ----

    /// Fills `rec` from the point; false, and `rec` unchanged, when the point's entity is no survey
    /// point. Throws error::kNoRecord when point or entity is gone.
    [[nodiscard]] bool ReadCoordRec(CqHandle point, CqCoordRec& rec);
    /// Whether the point and its survey-point entity name each other.
    [[nodiscard]] bool HasEntityOf(CqHandle entity, CqHandle point);
    /// New coordinates and code for a point and, unless it is null, a new name; 0, and nothing
    /// changed, when the point and its entity do not name each other.
    int EditPoint(CqHandle point, const CString* newName, const double* coords, int code);
    /// Deletes the groups whose name is that of a file or folder beside the job; 0 when it found
    /// one.
    int CheckGroup(const CString& jobPath);
    /// Moves the points of a group to none. Returns 1.
    int CnvInvalidGroup(std::uint16_t id);
    /// Deletes the group's record and moves its points to none. Returns 1.
    int DeleteGroup(std::uint16_t id);

    // ---- Drawing ----

    /// Makes the object of the entity table's current record; 0 when `e` is not null.
    int ReadCurrentCadEntityRec(CqCadEntity*& e);
    /// Makes the extents anew from the tables; 0 when the drawing is empty.
    int MakeBoundData();
    /// Appends an entity on the current layer and in the current colour at the end of the drawing.
    CqHandle AppendToDrawing(EntType type, CqHandle data, const double* coords);

    // ---- Settings ----

    int SetDefaultSettingsIniFile();
    int CreateSettingsIniFile();
    int ReadSettingsIniFile();
    int WriteSettingsIniFile();
    int CheckSettingsIniFile();
    int CheckSettingsIniFileSections();
    int CheckSettingsIniFileKeys();
    int CheckSettingsIniFileValue();
    static int CheckJCoordDivision(int value);
    static int CheckImageBrightness(int value);
    static int CheckImageContrast(int value);
    static int CheckImageMonotoneMode(int value);
    /// Whether a section and key are fixed ones, for callers that must tell them from their own.
    static int CheckSettingsIniFileReserved(const CString& section, const CString& key);

    // ---- What it holds ----

    /// Empty while no job is open.
    CString mountName;

    CqBitmapTable bitmaps;
    CqCircleTable circles;
    CqEntityTable entities;
    CqLayerTable layers;
    CqPlineTable plines;
    CqPointTable points;
    CqLinkTable links;
    CqTextTable texts;
    CqVertexTable vertices;
    CqGroupTable groups;
    PointIndex pointIndex{points};
    LinkIndex linkIndex{links};
    CqDescriptionStore descriptions;
    CqSettingsFile settings;
    Extents extents;
    JobDefaults defaults;

    static constexpr std::int32_t kNoFile = -1;
    /// The background image, left open where it was found empty; at most one file.
    std::int32_t emptyImage = kNoFile;

    /// How many operations the open step is inside of.
    std::uint32_t stepDepth = 0;
    /// The number of the last batch, and whether it is open.
    std::uint32_t batchNumber = 0;
    bool batchOpen = false;

 private:
    void KeepStep() noexcept;
    void UndoStep() noexcept;

    /// In the order in which they are created, opened and closed: an index after its table.
    const std::array<JobPart*, 16> m_parts{
        &bitmaps,   &circles, &entities, &layers, &plines,       &points,   &pointIndex, &links,
        &linkIndex, &texts,   &vertices, &groups, &descriptions, &settings, &extents,    &defaults};
};

}  // namespace cqsurvey
