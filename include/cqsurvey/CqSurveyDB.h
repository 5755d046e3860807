#pragma once

#include <array>
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
/// Coordinates are arrays of three doubles: easting (the drawing's x), northing (y), height. All
/// three, and every radius and size in the drawing, are in the job's unit of length; the job does
/// not say which that is. A height that was not measured is a quiet not-a-number by convention.
///
/// Results: an operation that refuses what it was asked to do returns 0 and changes nothing unless
/// it says otherwise. A failure of the store throws CqSurveyException, whose m_code is one of
/// ErrorCodes.h. A handle of 0 is refused with 0, and so is entity handle 1, which is the header of
/// the entity chain and never an entity; a handle whose record is gone throws error::kNoRecord
/// unless the operation says otherwise.
///
/// Every operation is one atomic step on disk: after a crash all of it is in the job, or nothing.
/// When its commit fails the exception is thrown, and job and memory are as before the operation.
/// CqBatch makes one step of many operations.
///
/// All operations but CreateNew, Open, OpenReadOnly, Close, IsOpen and GetDBInformation need an
/// open job. An object stays with one thread at a time; different objects may be used by different
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

    /// No job is open afterwards.
    CqSurveyDB();
    /// Opens the job at `path`; when that throws nothing stays mounted.
    explicit CqSurveyDB(const CString& path);
    CqSurveyDB(const CqSurveyDB&) = delete;
    CqSurveyDB& operator=(const CqSurveyDB&) = delete;
    /// Closes a job that is still open; a failure to do so is lost.
    ~CqSurveyDB();

    // ---- The job's life ----

    /// Closes the open job, resets the current colour, group and pending polyline attributes, and
    /// creates a job at `path`. Throws error::kFileExists, and touches nothing, when anything
    /// exists there. When it fails later on, the file that it has made goes when the object is
    /// closed.
    void CreateNew(const CString& path);
    /// Closes the open job and opens the one at `path`, read-only when the system does not let it
    /// be written. Throws error::kNoVolume when nothing is there, error::kDamaged when it is no job
    /// or is damaged, error::kVolumeMounted when it is open already, here or in another process,
    /// error::kNewerVersion when a newer version wrote it. Layer "0" is current and no group
    /// afterwards. A failure that comes after the file was locked leaves the object open, as one of
    /// CreateNew does: Close gives the file up, and so does the next CreateNew or Open.
    void Open(const CString& path);
    /// As Open, but the job is not written: every change throws error::kAccessDenied.
    void OpenReadOnly(const CString& path);
    /// Closes the job; one file is left. Does nothing when none is open. Always ends closed, also
    /// when it throws.
    void Close();
    [[nodiscard]] bool IsOpen() const;

    /// The inside of the job, for the classes of the library that work on it.
    [[nodiscard]] Job& GetJob() const noexcept { return *m_job; }

    /// Fills the fields of `info` that `mask` asks for from the job at `path` without loading it;
    /// from `db`, when it is not null, if the job is open or `path` is empty. 0 when neither can
    /// answer; never throws for a job that cannot be mounted.
    static int GetDBInformation(std::uint32_t mask, const CString& path, SVDB_INFORMATION& info,
                                CqSurveyDB* db);

    // ---- Coordinate records ----

    /// Adds a point on the current layer, in the current colour and group; a name is cut to its
    /// first 19 code units, an empty one is allowed any number of times. `code` is the feature
    /// code, `origin` one bit that says how the point came to be, `flags` is stored as it is.
    /// Returns the point's handle. Throws error::kDuplicatePointName, with nothing written, when a
    /// point is named `name` already.
    CqHandle AddCoordRec(const double* coords, const CString& name, int code,
                         SurveyCoordType origin, std::uint32_t flags);
    [[nodiscard]] int GetNumCoordRecs() const;
    /// The first point in record order, 0 when there is none.
    [[nodiscard]] CqHandle GetFirstCoordRecHandle() const;
    /// Reads the point `handle` into `rec`. Returns 1; 0, with `rec` unchanged, when there is no
    /// such point or its entity is no survey point. Throws error::kNoRecord when the point is there
    /// and its entity is gone, which only a damaged job shows.
    [[nodiscard]] int GetCoordRec(CqHandle handle, CqCoordRec& rec) const;
    /// GetCoordRec, which also sets `handle` to the next point in record order, 0 after the last;
    /// `handle` stays where the result is 0. Points(db) of Ranges.h walks over all in a range-for.
    int GetNextCoordRec(CqHandle& handle, CqCoordRec& rec) const;
    /// The point of exactly that name, 0 if there is none.
    [[nodiscard]] CqHandle GetCoordRecHandleByPtName(const CString& name) const;
    /// The point that a survey-point entity shows, 0 for an entity of another kind.
    [[nodiscard]] CqHandle GetCoordRecHandleByCadEntityHandle(CqHandle entity) const;
    /// The point's survey-point entity.
    [[nodiscard]] CqHandle GetCadEntityHandleByCoordRecHandle(CqHandle handle) const;
    /// The named point's survey-point entity, 0 if there is none.
    [[nodiscard]] CqHandle GetCadEntityHandleByPtName(const CString& name) const;
    /// New coordinates and feature code. 0, and nothing changed, when no point has the name or the
    /// point and its entity do not name each other.
    [[nodiscard]] int EditCoordRec(const CString& name, const double* coords, int code);
    /// New name (empty: unnamed), coordinates and feature code. 0, and nothing changed, when
    /// another point has the name or the point and its entity do not name each other.
    [[nodiscard]] int EditCoordRec(CqHandle handle, const CString& newName, const double* coords,
                                   int code);
    /// Deletes the point, its entity and its description; polylines through it stay. Vertices tied
    /// to it are free until the job is opened again, and from then on tied to the entity that is
    /// gone; UnlinkSiPntAndVertex with point 0 removes such a tie.
    int DelCoordRec(const CString& name) const;
    int DelCoordRec(CqHandle handle) const;
    int EditCoordRecFlags(const CString& name, std::uint32_t flags) const;
    int EditCoordRecFlags(CqHandle handle, std::uint32_t flags) const;

    // ---- Point groups; names are compared without case ----

    /// Fills `list` with the group names in record order; 0 when there are none.
    int GetGroupList(CStringList& list) const;
    /// 0 for an empty name and for one that a group has; a name is cut to its first 19 code units.
    int AddGroup(const CString& name) const;
    /// 0 for an unknown group and when a group has the new name, the group itself included, so that
    /// letter case alone cannot be changed. An empty new name is accepted.
    int EditGroup(const CString& oldName, const CString& newName) const;
    int EditGroup(std::uint16_t id, const CString& newName) const;
    /// Deletes the group; its points are in no group afterwards.
    int DelGroup(const CString& name);
    int DelGroup(std::uint16_t id);
    /// The group of points added from now on. An empty name clears it; an unknown one clears it too
    /// and returns 0.
    int SetCurrentGroup(const CString& name);
    CString GetCurrentGroup();
    /// The group's record number cut to 16 bits, 0 for an unknown name.
    [[nodiscard]] std::uint16_t GetGroupID(const CString& name) const;
    CString GetGroupName(std::uint16_t id);
    /// Stores any ID; the sorted view does not follow until it is set again.
    int EditCoordRecGroup(const CString& pointName, std::uint16_t id) const;
    int EditCoordRecGroup(CqHandle handle, std::uint16_t id) const;

    // ---- Point descriptions, kept in the narrow code page of Text.h ----

    /// 0 for an empty text or when the handle has a description; the point need not exist.
    [[nodiscard]] int AddCoordDescription(CqHandle handle, const CString& text) const;
    /// 0, and `text` unchanged, when there is none.
    int GetCoordDescription(CqHandle handle, CString& text) const;
    /// 0 for an empty text or when the handle has no description.
    [[nodiscard]] int EditCoordDescription(CqHandle handle, const CString& text) const;
    int DelCoordDescription(CqHandle handle) const;

    // ---- The sorted and filtered view ----

    /// Key 0 sorts by name in natural order, 1 by feature code, any other keeps record order; order
    /// 1 is descending (record order: any but 0). Returns the number of points in the view.
    std::int32_t SetSortCoordSetting(std::uint16_t key, std::uint16_t order,
                                     const COORDFILTER& filter);
    /// Replaces what the three held by the setting in force; returns the number of points.
    std::int32_t GetSortCoordSetting(std::uint16_t& key, std::uint16_t& order, COORDFILTER& filter);
    std::int32_t GetSortCoordRecs();
    /// Reads the point at `index` (from 0) and returns its handle; 0 outside the view. A point that
    /// left the filter by an edit of its group and was deleted then stays in the view until that is
    /// set again: its handle is returned, and `rec` is left unchanged.
    CqHandle GetSortCoordAt(int index, CqCoordRec& rec);

    // ---- Feature codes in use; survey points and the view ----

    /// Fills `codes` with each code of a point, polyline or text once, in an order that is the same
    /// for the same job. Returns 1.
    int GetUsedCode(CList<int, int>& codes);
    /// 1 when the entity is the survey point of a point in the view.
    [[nodiscard]] int IsMatchSiPoint(CqHandle entity) const;

    // ---- Layers; names are compared exactly ----
    //
    // A colour is a number of the drawing's palette: 1 to 9 are red, yellow, green, cyan, blue,
    // magenta, the ink (black on white) and two greys, 10 to 249 are 24 hues in ten shades each,
    // 250 to 255 are greys. A layer's colour is negative while the layer is hidden. An entity's
    // colour 256 is that of its layer, and 0 is drawn in ink. A line number names a line type: 0 is
    // solid, 1 dashed, 2 dotted, 3 dash-dot, 4 dash-dot-dot, 5 long dashes, 6 short dashes, 7 long
    // and short dashes. The job stores any number; these are the meanings that the plan draws.

    /// 0 when the layer exists; a name is cut to its first 51 code units, the line to 16 bits.
    int AddLayer(const CString& name, int color, int line);
    /// Deletes the layer's record; its entities keep its number.
    int DeleteLayer(const CString& name);
    int GetNumLayers();
    CqHandle GetFirstLayerHandle();
    /// Reads layer `h` and sets `h` to the next in record order, 0 after the last.
    int GetNextLayer(CqHandle& h, CString& name, int& color);
    int ShowLayer(const CString& name, int show);
    int GetLayerColor(const CString& name);
    int GetLayerLine(const CString& name);
    int EditLayerColor(const CString& name, int color);
    int EditLayerLine(const CString& name, int line);
    /// Puts one entity on the layer, which is added when there is none of that name. The vertices
    /// of a polyline do not follow.
    int EditLayer(CqHandle entity, const CString& name);
    int SetCurrentLayer(const CString& name);
    [[nodiscard]] const CString& GetCurrentLayer() const;
    /// 0 unless -256 to 256.
    int SetCurrentColor(int color);
    [[nodiscard]] int GetCurrentColor() const;

    // ---- The entity chain ----

    int GetNumCadEntities() const;
    /// The first entity of the drawing, 0 when it is empty.
    [[nodiscard]] CqHandle GetFirstCadEntityHandle() const;
    /// Reads entity `h` into a new object and sets `h` to the next entity of the drawing, 0 after
    /// the last. `e` must be null; give the object back with DeleteCqCadEntityObject. 0 with both
    /// unchanged when there is no such entity. Throws error::kUnknown for a record of unknown type.
    /// Entities(db) of Ranges.h walks over all in a range-for.
    int GetNextCadEntity(CqHandle& h, CqCadEntity*& e) const;
    /// Destroys an object that GetNextCadEntity handed out and sets `e` to null. CqCadEntityPtr
    /// does it by itself.
    static void DeleteCqCadEntityObject(CqCadEntity*& e);
    /// Moves the entity, and the vertices of a polyline that follow it in record order; 0 when
    /// there is no such layer.
    int EditCadEntityLayer(CqHandle h, const CString& layer);
    /// As EditCadEntityLayer; 0 unless the colour is -256 to 256.
    int EditCadEntityColor(CqHandle h, int color);

    // ---- Polylines ----
    //
    // A polyline has no mark that closes it: one whose last vertex is at the place of its first is
    // closed. A vertex's bulge is the tangent of a quarter of the included angle of the arc from it
    // to the next vertex: 0 is straight, 1 a half circle, and a positive arc turns
    // counter-clockwise and so lies to the right of its chord.

    /// Begins a polyline and returns the list that it is built in: hand it to AddVertex, then to
    /// EndPline or CancelPline, either of which destroys it.
    [[nodiscard]] CqCadEntityList* StartPline(int line, int code);
    int AddVertex(CqCadEntityList* list, const double* coords, double bulge);
    /// Commits the polyline on the current layer and in the current colour and destroys the list,
    /// also when it refuses or throws. Returns its entity handle; 0, with nothing written, for
    /// fewer than 2 vertices.
    [[nodiscard]] CqHandle EndPline(CqCadEntityList* list);
    int CancelPline(CqCadEntityList* list);
    int EditPline(CqHandle h, int line, int code);
    /// Inserts a vertex after entity `h`, a polyline or a vertex. The polyline's stored bound does
    /// not follow this nor the next two.
    int InsertVertex(CqHandle h, const double* coords, double bulge);
    /// Moves a vertex; the bulge whose bits are 0x36A00001262D4AB6 (1.4013e-45) keeps the stored
    /// one.
    int MoveVertex(CqHandle h, const double* coords, double bulge);
    int DeleteVertex(CqHandle h);
    int DeletePline(CqHandle h);

    // ---- Ties between survey points and vertices ----

    /// Ties a vertex to a survey-point entity. 0 when either is of another kind or the vertex is
    /// tied already.
    int LinkSiPntAndVertex(CqHandle point, CqHandle vertex);
    /// Point 0 means any. With a wrong point it returns 0, and the vertex's tie is forgotten until
    /// the job is opened again.
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
    /// A picture named by a resource, its lower left corner at the point. Only the size along x is
    /// kept.
    CqHandle AddBitmap(const double* coords, const CString& resName, const CVector& size);
    int EditBitmap(CqHandle h, const double* coords, const CString& resName, const CVector& size);
    int DeleteBitmap(CqHandle h);

    // ---- Extents ----

    /// The drawing's extents as they were widened since the job was opened; 0 and two zero vectors
    /// when the drawing is empty.
    int GetEntityBound(CVector& min, CVector& max);

    // ---- Settings; sections and keys are compared without case ----

    int GetSettingsSectionList(CStringList& list);
    int GetSettingsKeyList(const CString& section, CStringList& list);
    int AddSettingsSection(const CString& section);
    /// 0 for the two fixed sections and for an unknown one.
    int DeleteSettingsSection(const CString& section);
    /// 1 and the value, or 0 and the default.
    int GetSettingsString(const CString& section, const CString& key, CString& value,
                          const CString& defaultValue);
    int GetSettingsInt(const CString& section, const CString& key, int& value, int defaultValue);
    /// 0 when there is no such section. An empty value removes the key.
    [[nodiscard]] int WriteSettingsString(const CString& section, const CString& key,
                                          const CString& value);
    [[nodiscard]] int WriteSettingsInt(const CString& section, const CString& key, int value);
    /// Replaces the job's settings by a file of the host when it has every fixed key in its range;
    /// 0, with the previous settings in force, otherwise. May throw CQrfsFileException.
    [[nodiscard]] int ImportSettingsFile(const CString& hostPath);
    /// Copies the job's settings to a file of the host, over one that is there. May throw
    /// CQrfsFileException.
    [[nodiscard]] int ExportSettingsFile(const CString& hostPath);
    /// The size of survey-point symbols on paper, in points of 1/72 inch.
    double GetSiPointSize();
    void SetSiPointSize(double size);
    int GetJCoordDivision();
    /// The number of the plane coordinate system that the job is in; 0 unless 1 to 19.
    int SetJCoordDivision(int division);
    /// -1 for none, else the colour 0 to 255 to draw everything in.
    int SetDrawingForceMonotone(int color);
    int IsDrawingForceMonotone(int& color);

    // ---- Background image ----

    /// Copies the host's file into the job and saves its placement. The bytes may be an image of
    /// any format: the library does not look into them, and `type` is a number of the application's
    /// own (the plan recognises PNG, JPEG and BMP by their bytes). `centre` and `size` are in the
    /// job's unit of length, `rotation` degrees counter-clockwise. 0, with the settings unchanged,
    /// when the file cannot be read, and also when the job's medium fails, which is not thrown
    /// here: the image that was there stays then, and a batch around it can no longer be committed.
    [[nodiscard]] int StoreBackgroundImageFile(const CString& sourcePath, int type,
                                               const CVector& centre, const CVector& size,
                                               double rotation);
    /// `data` comes from malloc, the caller frees it; ignore it when the result is 0.
    int ReadBackgroundImageFile(std::uint8_t*& data, std::uint32_t& length, int& type,
                                CVector& centre, CVector& size, double& rotation);
    int DeleteBackgroundImageFile();
    int IsBackgroundImageFile();
    /// Brightness is added to each part of a colour, contrast is a percentage, and monotone other
    /// than 0 makes the image grey. 0 unless brightness is -255 to 255 and contrast 0 to 65000.
    int SetBackgroundImageSettings(int brightness, int contrast, int monotone);
    void GetBackgroundImageSettings(int& brightness, int& contrast, int& monotone);
    /// Red in the lowest byte, then green and blue.
    void SetBackgroundColor(std::uint32_t color);
    std::uint32_t GetBackgroundColor();

 private:
    std::unique_ptr<Job> m_job;
};

}  // namespace cqsurvey
