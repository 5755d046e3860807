#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>

#include "cqsurvey/CVector.h"
#include "cqsurvey/CqCadEntity.h"
#include "cqsurvey/CqCadEntityList.h"
#include "cqsurvey/CqCoordRec.h"
#include "cqsurvey/CqSurveyException.h"
#include "cqsurvey/Export.h"
#include "cqsurvey/Records.h"
#include "cqsurvey/Types.h"

namespace cqsurvey {

struct Job;

/// One surveying job: its points, its drawing and its settings, in one file.
///
/// Coordinates are arrays of three doubles: easting (the drawing's x), northing (y), height. They
/// and every radius and size in the drawing are in the job's unit of length, which CqJobSystem
/// tells. By convention a height that was not measured is a quiet not-a-number.
///
/// Points, entities and layers are named by handles, the numbers of their records. Handle 0 names
/// nothing. Entity handle 1 is the header of the entity chain and never an entity: the operations
/// of the drawing refuse it as they refuse 0.
///
/// Results: unless its comment says otherwise, an operation that returns int returns 1 when it did
/// what it was asked to do, and 0, with nothing changed, when it refuses. Handle 0 is refused, and
/// so is entity handle 1. A handle whose record was deleted throws error::kNoRecord unless the
/// operation says otherwise. A failure of the store throws CqSurveyException, whose m_code is one
/// of ErrorCodes.h.
///
/// Every operation is one atomic step on disk: after a crash the job holds all of it or nothing.
/// When the step cannot be written, the operation throws, and the file and the object are as they
/// were before it; error::kReadWriteFailed also when the job's file was removed, renamed, replaced
/// or cut off while it was open. CqBatch makes one step of many operations.
///
/// All operations but CreateNew, Open, OpenReadOnly, Close, IsOpen and GetDBInformation need an
/// open job. Use an object from one thread at a time; different objects may be used by different
/// threads.
class CQSURVEY_API CqSurveyDB {
 public:
    static const CString m_SettingsPath;
    static const CString m_SettingsSection;
    static const CString m_BGSettingsSection;
    static const CString m_Version;
    static const CString m_BGName;
    static const std::array<CString, 4> m_SettingsKey;
    static const std::array<CString, 11> m_BGSettingsKey;

    /// Opens no job.
    CqSurveyDB();
    /// Opens the job at `path` as Open does. When that fails, the file is unlocked and the
    /// exception thrown.
    explicit CqSurveyDB(const CString& path);
    CqSurveyDB(const CqSurveyDB&) = delete;
    CqSurveyDB& operator=(const CqSurveyDB&) = delete;
    /// Closes a job that is still open, and hides a failure to do so.
    ~CqSurveyDB();

    // ---- The job's life ----

    /// Closes the open job, resets the current colour, group and pending polyline attributes, and
    /// creates a job at `path`. Throws error::kFileExists when anything exists there, and leaves
    /// that alone. The job is made under another name in the same folder, and gets its path when it
    /// is complete; a failure leaves nothing at `path`.
    void CreateNew(const CString& path);
    /// Closes the open job and opens the one at `path`; read-only when the system does not allow
    /// writing. Afterwards layer "0" is current, and no group. Throws error::kNoVolume when there
    /// is no such file, error::kDamaged when it is not a job or is damaged, error::kVolumeMounted
    /// when it is already open, here or in another process, and error::kNewerVersion when a newer
    /// version wrote it. After a failure the object may still hold the file locked; Close gives it
    /// up, and so does the next CreateNew or Open.
    void Open(const CString& path);
    /// As Open, but never writes to the job: every change throws error::kAccessDenied.
    void OpenReadOnly(const CString& path);
    /// Closes the job, of which exactly one file is left. Does nothing when no job is open. No job
    /// is open afterwards, even when it throws.
    void Close();
    [[nodiscard]] bool IsOpen() const;

    /// Copies the open job to a new file at `path`, byte for byte as the last step left it. The job
    /// may be open for writing or for reading; it is not changed, nor closed. The copy is made
    /// under another name in the same folder, compared with the job, opened and checked like
    /// CqJobCheck, and gets its path when it is whole and on the disk; a failure leaves nothing.
    /// Returns how many faults the check found: the job has the same ones.
    ///
    /// Throws error::kInvalidArgument while a batch is open, since a batch may still be undone;
    /// error::kFileExists when anything exists at `path`; error::kDamaged when the job cannot be
    /// read as a whole.
    std::size_t Backup(const CString& path) const;

    /// The inside of the job, for the library's own classes.
    [[nodiscard]] Job& GetJob() const noexcept { return *m_job; }

    /// Fills the fields of `info` that `mask` asks for, from the job at `path` without loading it.
    /// Asks `db` instead, unless it is null, when that job is open or `path` is empty. Returns 0
    /// when neither can answer; a job that cannot be mounted is not thrown.
    static int GetDBInformation(std::uint32_t mask, const CString& path, SVDB_INFORMATION& info,
                                CqSurveyDB* db);

    /// Whether the settings of the job at `path` are damaged: gone, unreadable, or without one of
    /// the two fixed sections. Returns 1 and says in `text` in English what is wrong, or 0, with
    /// `text` unchanged, when they are sound or the job cannot be mounted. `db` is asked as for
    /// GetDBInformation.
    static int GetSettingsDamage(const CString& path, CString& text, CqSurveyDB* db);

    // ---- Coordinate records ----

    /// Adds a point on the current layer, in the current colour and group, and returns its handle.
    /// A name is cut to its first 19 code units; any number of points may have an empty name.
    /// `code` is the feature code, `origin` one bit that says how the point came to be, `flags` is
    /// stored as it is. Throws error::kDuplicatePointName, with nothing written, when a point has
    /// the name already.
    CqHandle AddCoordRec(const double* coords, const CString& name, int code,
                         SurveyCoordType origin, std::uint32_t flags);
    [[nodiscard]] int GetNumCoordRecs() const;
    /// The first point in record order, 0 when there are no points.
    [[nodiscard]] CqHandle GetFirstCoordRecHandle() const;
    /// Reads the point `handle` into `rec`. Returns 0, with `rec` unchanged, when there is no such
    /// point or its entity is not a survey point. Throws error::kNoRecord when the point has lost
    /// its entity, which happens only in a damaged job.
    [[nodiscard]] int GetCoordRec(CqHandle handle, CqCoordRec& rec) const;
    /// As GetCoordRec, and then sets `handle` to the next point in record order, 0 after the last.
    /// When it returns 0, `handle` is unchanged. Points(db) of Ranges.h does the same as a range.
    int GetNextCoordRec(CqHandle& handle, CqCoordRec& rec) const;
    /// The point of exactly this name, 0 when there is none.
    [[nodiscard]] CqHandle GetCoordRecHandleByPtName(const CString& name) const;
    /// The point that a survey-point entity shows, 0 for an entity of another kind.
    [[nodiscard]] CqHandle GetCoordRecHandleByCadEntityHandle(CqHandle entity) const;
    /// The survey-point entity that shows the point.
    [[nodiscard]] CqHandle GetCadEntityHandleByCoordRecHandle(CqHandle handle) const;
    /// The survey-point entity of the named point, 0 when there is no such point.
    [[nodiscard]] CqHandle GetCadEntityHandleByPtName(const CString& name) const;
    /// Gives the point new coordinates and a new feature code. Returns 0 when no point has the
    /// name, or when the point and its entity do not name each other.
    [[nodiscard]] int EditCoordRec(const CString& name, const double* coords, int code);
    /// Gives the point a new name (empty: no name), new coordinates and a new feature code. Returns
    /// 0 when another point has the name, or when the point and its entity do not name each other.
    [[nodiscard]] int EditCoordRec(CqHandle handle, const CString& newName, const double* coords,
                                   int code);
    /// Deletes the point, its entity and its description; polylines through it stay. Vertices that
    /// were tied to it count as free until the job is opened again. From then on they are tied to
    /// the deleted entity; UnlinkSiPntAndVertex with point 0 removes such a tie.
    int DelCoordRec(const CString& name) const;
    int DelCoordRec(CqHandle handle) const;
    int EditCoordRecFlags(const CString& name, std::uint32_t flags) const;
    int EditCoordRecFlags(CqHandle handle, std::uint32_t flags) const;
    /// Sets when the point was added, in seconds since 1970-01-01 00:00 UTC: for points that come
    /// from elsewhere, where they already were.
    int EditCoordRecTime(CqHandle handle, std::uint32_t seconds) const;

    // ---- Point groups ----
    //
    // A group has a name and an ID: the number of its record, cut to 16 bits. ID 0 is no group.
    // Names are compared without regard to letter case. A zero ends a name.

    /// Replaces `list` by the group names in record order; returns 0 when there are no groups.
    int GetGroupList(CStringList& list) const;
    /// Returns 0 for an empty name and for the name of a group. A name is cut to its first 19 code
    /// units.
    int AddGroup(const CString& name) const;
    /// Returns 0 for an unknown group, and when a group has the new name. That may be the group
    /// itself, so the letter case alone cannot be changed. An empty new name is accepted.
    int EditGroup(const CString& oldName, const CString& newName) const;
    int EditGroup(std::uint16_t id, const CString& newName) const;
    /// Deletes the group; its points are then in no group.
    int DelGroup(const CString& name);
    int DelGroup(std::uint16_t id);
    /// Chooses the group of the points that are added from now on. An empty name chooses no group;
    /// so does an unknown one, which also returns 0.
    int SetCurrentGroup(const CString& name);
    CString GetCurrentGroup();
    /// The group's ID, 0 for an unknown name.
    [[nodiscard]] std::uint16_t GetGroupID(const CString& name) const;
    CString GetGroupName(std::uint16_t id);
    /// Puts the point into group `id`, whether or not there is such a group. The sorted view does
    /// not follow until SetSortCoordSetting is called again.
    int EditCoordRecGroup(const CString& pointName, std::uint16_t id) const;
    int EditCoordRecGroup(CqHandle handle, std::uint16_t id) const;

    // ---- Point descriptions ----
    //
    // One text for each point, kept in the narrow code page of Text.h.

    /// Returns 0 for an empty text, and when the handle has a description. There need not be a
    /// point of that handle.
    [[nodiscard]] int AddCoordDescription(CqHandle handle, const CString& text) const;
    /// Returns 0, with `text` unchanged, when the handle has no description.
    int GetCoordDescription(CqHandle handle, CString& text) const;
    /// Returns 0 for an empty text, and when the handle has no description.
    [[nodiscard]] int EditCoordDescription(CqHandle handle, const CString& text) const;
    int DelCoordDescription(CqHandle handle) const;

    // ---- The sorted and filtered view ----
    //
    // A list of points kept in memory, for an application that shows them by index. It follows
    // every point that is added, edited or deleted. An opened job's view holds the points whose
    // origin has one of its five lowest bits set, by name.

    /// Builds the view anew and returns the number of its points. Key 0 sorts by name in natural
    /// order (P2 before P10), 1 by feature code; any other key keeps record order. Order 1 is
    /// descending; record order is reversed by any order but 0. Natural order compares the numbers
    /// at the ends of the names by their values: a name without one comes before all others with
    /// the same beginning, and every number above 2147483647 counts as that number.
    std::int32_t SetSortCoordSetting(std::uint16_t key, std::uint16_t order,
                                     const COORDFILTER& filter);
    /// Replaces all three arguments by the setting in force; returns the number of points.
    std::int32_t GetSortCoordSetting(std::uint16_t& key, std::uint16_t& order, COORDFILTER& filter);
    std::int32_t GetSortCoordRecs();
    /// Reads the point at `index` (from 0) into `rec` and returns its handle; 0 outside the view.
    /// Changing a point's group can make it fail the filter while it is in the view. If it is then
    /// deleted, it stays in the view until the view is built anew: its handle is returned, and
    /// `rec` is unchanged.
    CqHandle GetSortCoordAt(int index, CqCoordRec& rec);

    // ---- Feature codes in use; survey points and the view ----

    /// Replaces `codes` by every feature code of a point, polyline or text, each once. The order is
    /// fixed, but not sorted. Returns 1.
    int GetUsedCode(CList<int, int>& codes);
    /// Returns 1 when the entity is the survey point of a point in the view.
    [[nodiscard]] int IsMatchSiPoint(CqHandle entity) const;

    // ---- Layers; names are compared exactly, and a zero ends a name ----
    //
    // A colour is a number of the drawing's palette: 1 to 9 are red, yellow, green, cyan, blue,
    // magenta, the ink (black on white) and two greys, 10 to 249 are 24 hues in ten shades each,
    // 250 to 255 are greys. A layer's colour is negative while the layer is hidden. An entity's
    // colour 256 is that of its layer, and 0 is drawn in ink. A line number names a line type: 0 is
    // solid, 1 dashed, 2 dotted, 3 dash-dot, 4 dash-dot-dot, 5 long dashes, 6 short dashes, 7 long
    // and short dashes. The job stores any number; these are the meanings that the plan draws.

    /// Returns 0 when there is a layer of that name, and when the layer numbers are used up. A name
    /// is cut to its first 51 code units, `line` to 16 bits.
    int AddLayer(const CString& name, int color, int line);
    /// Deletes the layer's record. Its entities stay, and keep the number of the deleted layer.
    int DeleteLayer(const CString& name);
    int GetNumLayers();
    CqHandle GetFirstLayerHandle();
    /// Reads layer `h` and sets `h` to the next layer in record order, 0 after the last.
    int GetNextLayer(CqHandle& h, CString& name, int& color);
    /// Sets the sign of the layer's colour; 0 hides the layer. A layer of colour 0 cannot be
    /// hidden.
    int ShowLayer(const CString& name, int show);
    /// The layer's colour with its sign, 0 when there is no such layer.
    int GetLayerColor(const CString& name);
    /// The layer's line number, 0 when there is no such layer.
    int GetLayerLine(const CString& name);
    int EditLayerColor(const CString& name, int color);
    int EditLayerLine(const CString& name, int line);
    /// Puts one entity on the layer, which is added when there is none of that name. The vertices
    /// of a polyline do not follow.
    int EditLayer(CqHandle entity, const CString& name);
    /// Chooses the layer of the entities that are added from now on.
    int SetCurrentLayer(const CString& name);
    [[nodiscard]] const CString& GetCurrentLayer() const;
    /// Chooses the colour of the entities that are added from now on. Returns 0 unless it is -256
    /// to 256.
    int SetCurrentColor(int color);
    [[nodiscard]] int GetCurrentColor() const;

    // ---- The entity chain ----
    //
    // The drawing is a chain: each entity names the one before it and the one after it, and a
    // header names both ends. New entities go to the end. Walking along the chain is walking in
    // drawing order; a polyline is followed by its vertices.

    int GetNumCadEntities() const;
    /// The first entity of the drawing, 0 when it is empty.
    [[nodiscard]] CqHandle GetFirstCadEntityHandle() const;
    /// Reads entity `h` into a new object and sets `h` to the next entity of the drawing, 0 after
    /// the last. `e` must be null; return the object with DeleteCqCadEntityObject. Returns 0, with
    /// both unchanged, when there is no such entity. Throws error::kUnknown for a record of unknown
    /// type. Entities(db) of Ranges.h does the same as a range.
    int GetNextCadEntity(CqHandle& h, CqCadEntity*& e) const;
    /// Destroys an object that GetNextCadEntity handed out and sets `e` to null. CqCadEntityPtr
    /// does so at the end of its scope.
    static void DeleteCqCadEntityObject(CqCadEntity*& e);
    /// Puts the entity on the layer, and with a polyline the vertices that follow it in record
    /// order. Returns 0 when there is no such layer.
    int EditCadEntityLayer(CqHandle h, const CString& layer);
    /// Gives the entity the colour, and with a polyline the vertices that follow it in record
    /// order. Returns 0 unless the colour is -256 to 256.
    int EditCadEntityColor(CqHandle h, int color);

    // ---- Polylines ----
    //
    // A polyline has no mark that closes it: it is closed when its last vertex lies where its first
    // one does. A vertex's bulge says how the segment from it to the next vertex is curved. It is
    // the tangent of a quarter of the arc's included angle: 0 is a straight line, 1 a half circle.
    // A positive arc turns counter-clockwise, and so lies to the right of its chord.

    /// Begins a polyline and returns the list in which it is built. Hand the list to AddVertex, and
    /// at the end to EndPline or CancelPline; either destroys it.
    [[nodiscard]] CqCadEntityList* StartPline(int line, int code);
    int AddVertex(CqCadEntityList* list, const double* coords, double bulge);
    /// Adds the polyline on the current layer and in the current colour, and returns its entity
    /// handle. Returns 0, with nothing written, when it has fewer than 2 vertices. Destroys the
    /// list in any case, even when it throws.
    [[nodiscard]] CqHandle EndPline(CqCadEntityList* list);
    int CancelPline(CqCadEntityList* list);
    int EditPline(CqHandle h, int line, int code);
    /// Inserts a vertex after entity `h`, a polyline or a vertex. Like MoveVertex and DeleteVertex,
    /// it leaves the polyline's stored bound as it was.
    int InsertVertex(CqHandle h, const double* coords, double bulge);
    /// Moves a vertex and gives it a new bulge. A bulge with the bits 0x36A00001262D4AB6 (about
    /// 1.4013e-45) keeps the old one.
    int MoveVertex(CqHandle h, const double* coords, double bulge);
    int DeleteVertex(CqHandle h);
    int DeletePline(CqHandle h);

    // ---- Links ----
    //
    // A link ties a vertex to the survey point that it runs through. A vertex has at most one link,
    // a survey point any number.

    /// Ties the vertex to the survey-point entity. Returns 0 when either is of another kind or the
    /// vertex is tied already.
    int LinkSiPntAndVertex(CqHandle point, CqHandle vertex);
    /// Removes the link of the vertex to `point`; point 0 stands for any. When the vertex is tied
    /// to another point, it returns 0 and forgets the tie until the job is opened again.
    int UnlinkSiPntAndVertex(CqHandle point, CqHandle vertex);

    // ---- Texts, circles, bitmaps ----
    //
    // A text's height is that of its capitals in the job's unit of length, its rotation degrees
    // counter-clockwise from east. align1 is 0 left, 1 centre, 2 right; align2 is 0 baseline,
    // 1 bottom, 2 middle, 3 top. The job stores any number; these are the meanings that the plan
    // draws. What style, option style, interval and thickness mean is up to the application.

    CqHandle AddText(const double* coords, const CString& text, int align1, int align2,
                     const CString& style, double height, double rot, int code,
                     std::uint32_t optionStyle, int interval, int thickness);
    int EditText(CqHandle h, const double* coords, const CString& text, int align1, int align2,
                 const CString& style, double height, double rot, int code,
                 std::uint32_t optionStyle, int interval, int thickness);
    int DeleteText(CqHandle h);
    CqHandle AddCircle(const double* coords, double radius, int line, int code);
    int EditCircle(CqHandle h, const double* coords, double radius, int line, int code);
    int DeleteCircle(CqHandle h);
    /// Adds a picture that is named by a resource, its lower left corner at the point. Only the
    /// size along x is kept.
    CqHandle AddBitmap(const double* coords, const CString& resName, const CVector& size);
    int EditBitmap(CqHandle h, const double* coords, const CString& resName, const CVector& size);
    int DeleteBitmap(CqHandle h);

    // ---- Extents ----

    /// A box that holds the drawing. Operations widen it, and only opening the job again narrows
    /// it. Returns 0 and two zero vectors when the drawing is empty.
    int GetEntityBound(CVector& min, CVector& max);

    // ---- Settings; sections and keys are compared without regard to letter case ----
    //
    // A job whose settings are damaged (GetSettingsDamage) opens all the same: what is missing has
    // the values of a new job. The first change of a setting keeps the damaged file, or what can be
    // read of it, under the name "Settings.damaged" in the job, and then "Settings.damaged2" to
    // "Settings.damaged9"; an earlier one is never overwritten. CqJobCheck tells of them.
    //
    // Bytes of a settings file that the narrow code page does not define are U+FFFD in texts. In a
    // line that nobody changes they stay as they are.

    int GetSettingsSectionList(CStringList& list);
    int GetSettingsKeyList(const CString& section, CStringList& list);
    /// Returns 0 when there is such a section, and when the settings would become longer than
    /// limits::kSettingsText.
    int AddSettingsSection(const CString& section);
    /// Returns 0 for the two fixed sections and for an unknown one.
    int DeleteSettingsSection(const CString& section);
    /// Returns 1 and the value, or 0 and the default when the key is absent.
    int GetSettingsString(const CString& section, const CString& key, CString& value,
                          const CString& defaultValue);
    int GetSettingsInt(const CString& section, const CString& key, int& value, int defaultValue);
    /// Returns 0 when there is no such section, and when the settings would become longer than
    /// limits::kSettingsText. An empty value removes the key.
    [[nodiscard]] int WriteSettingsString(const CString& section, const CString& key,
                                          const CString& value);
    [[nodiscard]] int WriteSettingsInt(const CString& section, const CString& key, int value);
    /// Replaces the job's settings by a host file, if that has every fixed key with a value in its
    /// range. Otherwise returns 0, and the previous settings stay in force. May throw
    /// CQrfsFileException.
    [[nodiscard]] int ImportSettingsFile(const CString& hostPath);
    /// Copies the job's settings to a host file, replacing an existing one. Returns 0, and leaves
    /// the file alone, when it is a job that is open in this process or has the name of a file that
    /// SQLite keeps beside such a job: the job's own with "-journal", "-wal" or "-shm" added. May
    /// throw CQrfsFileException.
    [[nodiscard]] int ExportSettingsFile(const CString& hostPath);
    /// The size of survey-point symbols on paper, in points of 1/72 inch.
    double GetSiPointSize();
    void SetSiPointSize(double size);
    int GetJCoordDivision();
    /// The number of the plane coordinate system that the job is in. Returns 0 unless it is 1 to
    /// 19.
    int SetJCoordDivision(int division);
    /// Sets the colour, 0 to 255, in which everything is drawn; -1 for each entity's own. Returns 0
    /// for any other number.
    int SetDrawingForceMonotone(int color);
    /// Reads that colour; returns 0 when it is -1.
    int IsDrawingForceMonotone(int& color);

    // ---- Background image ----

    /// Copies a host file into the job and saves its placement. The library does not look into the
    /// bytes, so any image format will do, and `type` is a number of the application's own. (The
    /// plan recognises PNG, JPEG and BMP by their bytes.) `centre` and `size` are in the job's unit
    /// of length, `rotation` in degrees counter-clockwise. Returns 0, with the settings unchanged,
    /// when the host file cannot be read. Also returns 0, instead of throwing, when the job's
    /// medium fails: the previous image stays then, and a batch around the call can no longer be
    /// committed.
    [[nodiscard]] int StoreBackgroundImageFile(const CString& sourcePath, int type,
                                               const CVector& centre, const CVector& size,
                                               double rotation);
    /// Reads the image and its placement. `data` is allocated with malloc, and the caller frees it.
    /// Ignore the arguments when the result is 0.
    int ReadBackgroundImageFile(std::uint8_t*& data, std::uint32_t& length, int& type,
                                CVector& centre, CVector& size, double& rotation);
    int DeleteBackgroundImageFile();
    int IsBackgroundImageFile();
    /// Brightness is added to each part of a colour, contrast is a percentage, and any monotone but
    /// 0 makes the image grey. Returns 0 unless brightness is -255 to 255 and contrast 0 to 65000.
    int SetBackgroundImageSettings(int brightness, int contrast, int monotone);
    void GetBackgroundImageSettings(int& brightness, int& contrast, int& monotone);
    /// The colour has red in its lowest byte, then green and blue.
    void SetBackgroundColor(std::uint32_t color);
    std::uint32_t GetBackgroundColor();

 private:
    std::unique_ptr<Job> m_job;
};

}  // namespace cqsurvey
