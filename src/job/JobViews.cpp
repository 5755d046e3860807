#include "job/JobViews.h"

#include <array>

#include "store/Qrdb.h"
#include "store/StoreExtras.h"
#include "store/ThrowStorageError.h"

namespace cqsurvey {

namespace {

// A view spares its reader the handles: it joins a record with its entity, layer, group and text,
// and names the columns in full. An outer join keeps what has lost one of them.
struct View {
    const char16_t* name;
    const char* sql;
};

constexpr std::array<View, 8> kViews{{
    {u"Points",
     "SELECT p.Record AS Point, p.PointName AS Name, e.E AS Easting, e.N AS Northing,"
     " e.Z AS Height, p.FeatureCode AS Code, g.GroupName AS \"Group\", l.Name AS Layer,"
     " p.DataOrigin AS Origin, p.FeatureFlags AS Flags,"
     " datetime(p.RecTime, 'unixepoch') AS RecordedUtc, p.EntityIndex AS Entity"
     " FROM _PointData p LEFT JOIN _EntityData e ON e.Record = p.EntityIndex"
     " LEFT JOIN _GroupData g ON g.Record = p.GroupIndex"
     " LEFT JOIN _Layer l ON l.Record = e.LayerIndex"},
    {u"Layers",
     "SELECT Record AS Layer, Name, abs(ColorID) AS Color, ColorID >= 0 AS Visible,"
     " LineID AS LineType FROM _Layer"},
    {u"Groups", "SELECT Record AS \"Group\", GroupName AS Name FROM _GroupData"},
    {u"Polylines",
     "SELECT e.Record AS Entity, l.Name AS Layer, e.ColorID AS Color, d.LineID AS LineType,"
     " d.FeatureCode AS Code, d.minX AS MinEasting, d.minY AS MinNorthing,"
     " d.maxX AS MaxEasting, d.maxY AS MaxNorthing"
     " FROM _EntityData e JOIN _PlineData d ON d.Record = e.ObjectIndex"
     " LEFT JOIN _Layer l ON l.Record = e.LayerIndex WHERE e.ObjectType = 1"},
    {u"Vertices",
     "SELECT e.Record AS Entity, d.PlineIndex AS Polyline, e.E AS Easting, e.N AS Northing,"
     " e.Z AS Height, d.Bulge, k.PointDataID AS PointEntity"
     " FROM _EntityData e JOIN _VertexData d ON d.Record = e.ObjectIndex"
     " LEFT JOIN (SELECT VertexDataID, PointDataID, max(Record) FROM _PointToVertexLink"
     " GROUP BY VertexDataID) k ON k.VertexDataID = e.Record WHERE e.ObjectType = 2"},
    {u"Texts",
     "SELECT e.Record AS Entity, l.Name AS Layer, e.ColorID AS Color, e.E AS Easting,"
     " e.N AS Northing, e.Z AS Height, m.Text, d.Style, d.Height AS TextHeight, d.Rotation,"
     " d.Align & 65535 AS Align1, d.Align >> 16 AS Align2, d.FeatureCode AS Code"
     " FROM _EntityData e JOIN _TextData d ON d.Record = e.ObjectIndex"
     " LEFT JOIN Volume_Memo m ON m.Reference = d.Text"
     " LEFT JOIN _Layer l ON l.Record = e.LayerIndex WHERE e.ObjectType = 4"},
    {u"Circles",
     "SELECT e.Record AS Entity, l.Name AS Layer, e.ColorID AS Color, e.E AS Easting,"
     " e.N AS Northing, e.Z AS Height, d.Radius, d.LineID AS LineType, d.FeatureCode AS Code"
     " FROM _EntityData e JOIN _CircleData d ON d.Record = e.ObjectIndex"
     " LEFT JOIN _Layer l ON l.Record = e.LayerIndex WHERE e.ObjectType = 5"},
    {u"Bitmaps",
     "SELECT e.Record AS Entity, l.Name AS Layer, e.E AS Easting, e.N AS Northing, e.Z AS Height,"
     " m.Text AS Resource, d.sizeX AS Width"
     " FROM _EntityData e JOIN _BitmapData d ON d.Record = e.ObjectIndex"
     " LEFT JOIN Volume_Memo m ON m.Reference = d.ResName"
     " LEFT JOIN _Layer l ON l.Record = e.LayerIndex WHERE e.ObjectType = 6"},
}};

}  // namespace

void CreateJobViews(const CString& root) {
    for (const View& view : kViews) {
        if (StoreCreateView(root + view.name, view.sql) == 0) {
            ThrowLastStorageError();
        }
    }
}

}  // namespace cqsurvey
