#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

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

/// What a check finds in the settings, in English sentences: what is damaged, empty if nothing is,
/// and what operations left.
struct SettingsReport {
    std::string damage;
    std::vector<std::string> notes;
};

/// Everything that one job consists of while it is open. CqSurveyDB, the public class, holds one
/// pointer to it and nothing else, so that applications see none of the internal headers.
///
///     CqSurveyDB --> Job --+-- tables         bitmaps ... groups      on the job's volume
///                          +-- files          descriptions, settings  on the job's volume
///                          +-- indexes        pointIndex, linkIndex   in memory, made from tables
///                          +-- extents, defaults                      in memory
///
/// The volume is mounted under a name of its own, "JOB1" for instance, and mountName is empty while
/// no job is open. All of the above are JobParts, listed in m_parts: opening, closing, and keeping
/// or undoing a step are loops over that list.
///
/// The members are public, because the operations of CqSurveyDB work on them directly; each that
/// changes the job does so within a step (JobStep.h). The functions here are what more than one
/// operation needs. Each is defined in the folder of its subject: src/drawing/Extents.cpp holds
/// MakeBoundData.
struct Job {
    Job();
    Job(const Job&) = delete;
    Job& operator=(const Job&) = delete;
    ~Job() = default;

    // ---- Life ----

    // Failures throw CqSurveyException.

    [[nodiscard]] bool IsOpen() const { return !mountName.empty(); }
    /// Resets settings, defaults and extents to those of a new job.
    void SetDefaultSetting();
    /// Creates the job's volume and everything on it, and leaves the job open. On failure what was
    /// created is removed when the job is closed.
    void Create(const CString& path);
    /// The same, but under the other name that the new job has until StorePublishVolume gives it
    /// `path`. Leaves the job closed and returns that name.
    CString CreateDraft(const CString& path);
    /// Mounts the volume at `path` under the first free name "JOB1", "JOB2" ...
    void MountVolume(const CString& path, bool readOnly);
    /// Opens the parts of the job on the mounted volume, and makes the extents.
    void OpenMounted();
    /// Closes the job and undoes a step that is still open. The job is closed afterwards, even when
    /// this throws.
    void Close();

    /// The beginning of every path on the job's volume.
    [[nodiscard]] CString Root() const { return mountName + u":/"; }
    /// The folder of a job: the part of its path before the last separator, or "\" when that is
    /// empty.
    [[nodiscard]] static CString GetProjectPath(const CString& path);

    // ---- Steps; only JobStep and CqBatch call these ----

    void BeginStep();
    /// On failure the step is undone and the store's failure is thrown.
    void CommitStep();
    void RollbackStep() noexcept;

    // ---- Information ----

    [[nodiscard]] int GetInformation(std::uint32_t mask, SVDB_INFORMATION& info);

    // ---- Points ----

    /// Fills `rec` from the point. False, with `rec` unchanged, when the point's entity is not a
    /// survey point. Throws error::kNoRecord when the point or its entity is gone.
    [[nodiscard]] bool ReadCoordRec(CqHandle point, CqCoordRec& rec);
    /// Whether the point and its survey-point entity name each other.
    [[nodiscard]] bool HasEntityOf(CqHandle entity, CqHandle point);
    /// Gives a point new coordinates (easting, northing, height), a new code and, unless `newName`
    /// is null, a new name. 0, with nothing changed, when the point and its entity do not name each
    /// other.
    int EditPoint(CqHandle point, const CString* newName, const double* coords, int code);
    /// Deletes the groups that have the name of a file or folder beside the job. 0 when there were
    /// any.
    int CheckGroup(const CString& jobPath);
    /// Takes the points of a group out of it, so that they are in no group. Returns 1.
    int CnvInvalidGroup(std::uint16_t id);
    /// The same, and deletes the group's record. Returns 1.
    int DeleteGroup(std::uint16_t id);

    // ---- Drawing ----

    /// Makes the object for the entity table's current record; 0 when `e` is not null already.
    int ReadCurrentCadEntityRec(CqCadEntity*& e);
    /// Computes the extents anew from the tables; 0 when the drawing is empty.
    int MakeBoundData();
    /// Appends an entity at the end of the drawing, on the current layer and in the current colour,
    /// and returns its handle. `data` is the record of its own data.
    CqHandle AppendToDrawing(EntType type, CqHandle data, const double* coords);

    // ---- Settings ----

    int SetDefaultSettingsIniFile();
    int CreateSettingsIniFile();
    int ReadSettingsIniFile();
    /// Sets damaged settings aside first.
    int WriteSettingsIniFile();
    /// Reads the settings when the job is opened. Where they are damaged, the defaults fill in.
    void OpenSettings();
    /// What is wrong with the settings file that was read into `file`, in English; empty when it
    /// holds settings.
    [[nodiscard]] static std::string DescribeSettingsDamage(const CqSettingsFile& file);
    /// Reads the settings file for it.
    [[nodiscard]] SettingsReport ReportSettings() const;
    /// At most so many settings files that were damaged are kept.
    static constexpr int kMostKeptSettings = 9;
    /// The names of those that are.
    [[nodiscard]] CStringList ListKeptSettings() const;
    int CheckSettingsIniFile();
    int CheckSettingsIniFileSections();
    int CheckSettingsIniFileKeys();
    int CheckSettingsIniFileValue();
    static int CheckJCoordDivision(int value);
    static int CheckImageBrightness(int value);
    static int CheckImageContrast(int value);
    static int CheckImageMonotoneMode(int value);
    /// Whether a section and key belong to the library, for callers that keep settings of their
    /// own.
    static int CheckSettingsIniFileReserved(const CString& section, const CString& key);

    // ---- What a job holds ----

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
    /// The handle of the background image's file, which stays open when it was found to be empty;
    /// at most one file.
    std::int32_t emptyImage = kNoFile;

    /// How many operations and batches are nested in the open step; 0 when no step is open.
    std::uint32_t stepDepth = 0;
    /// Batches are numbered, because an object whose batch ended with the closing of the job must
    /// not touch a later batch.
    std::uint32_t batchNumber = 0;
    bool batchOpen = false;

 private:
    /// Gives the damaged settings file another name and creates an empty one. False on a failure of
    /// the volume.
    bool SetSettingsAside();

    void KeepStep() noexcept;
    void UndoStep() noexcept;

    /// In the order in which they are created, opened and closed. An index comes after its table,
    /// because it is made from the table's records.
    const std::array<JobPart*, 16> m_parts{
        &bitmaps,   &circles, &entities, &layers, &plines,       &points,   &pointIndex, &links,
        &linkIndex, &texts,   &vertices, &groups, &descriptions, &settings, &extents,    &defaults};
};

}  // namespace cqsurvey
