#include "cqsurvey/exchange/LandXmlReader.h"
#include "cqsurvey/exchange/LandXmlWriter.h"
#include "fuzz/DrawingFuzz.h"

namespace cqsurvey {
namespace {

/// A LandXML file from a stranger; and what we write of it can be read again.
class LandXmlFuzz : public DrawingFuzz {
 public:
    std::vector<std::string> MakeSeeds() override {
        const std::string front =
            "<?xml version=\"1.0\" encoding=\"iso-8859-1\"?><LandXML "
            "xmlns=\"http://www.landxml.org/"
            "schema/LandXML-1.2\" version=\"1.2\"><Units><Metric linearUnit=\"meter\"/></Units>"
            "<CoordinateSystem epsgCode=\"28356\"/><CgPoints name=\"G\"><CgPoint name=\"A\" "
            "code=\"7\" desc=\"d\">1 2 3</CgPoint><CgPoint name=\"B\" pntRef=\"A\"/></CgPoints>";
        const auto feature = [](const std::string& geometry) {
            return "<PlanFeatures><PlanFeature name=\"K\"><CoordGeom>" + geometry +
                   "</CoordGeom><Feature code=\"CQSURVEY\"><Property label=\"COLOR\" value=\"3\"/>"
                   "</Feature></PlanFeature></PlanFeatures>";
        };
        const std::vector<std::string> parts = {
            feature("<Line><Start pntRef=\"A\"/><End>5 5</End></Line><Line><Start>5 5 1</Start>"
                    "<End>1 2</End></Line>"),
            feature("<Curve rot=\"ccw\" radius=\"10\"><Start>0 10</Start><Center>0 0</Center>"
                    "<End>10 0</End></Curve><Curve rot=\"cw\" radius=\"3\" length=\"9\">"
                    "<Start>10 0</Start><End>12 1</End></Curve>"),
            feature("<Spiral rot=\"cw\" spiType=\"bloss\" length=\"60\" radiusStart=\"INF\" "
                    "radiusEnd=\"200\"><Start>0 0</Start><PI>3 3</PI><End>3 59</End></Spiral>"),
            feature("<IrregularLine><Start>0 0</Start><End>3 3</End><PntList2D>1 1 2 1</PntList2D>"
                    "</IrregularLine><Chain>A B A</Chain>"),
            "<Parcels><Parcel name=\"1\"><Center>1 1</Center><CoordGeom><Line><Start>0 0</Start>"
            "<End>0 8</End></Line></CoordGeom><Parcels><Parcel name=\"2\"/></Parcels></Parcel>"
            "</Parcels>",
            "<Surfaces><Surface name=\"S\"><SourceData><Breaklines><Breakline><PntList3D>0 0 1 5 5 "
            "2"
            "</PntList3D></Breakline></Breaklines><Contours><Contour elev=\"7\"><PntList2D>1 1 2 2"
            "</PntList2D></Contour></Contours></SourceData><Definition><Pnts><P id=\"1\">1 2 3</P>"
            "</Pnts></Definition></Surface></Surfaces>"};
        std::vector<std::string> seeds;
        char way = 0;
        std::string all;
        for (const std::string& part : parts) {
            seeds.push_back(way++ + front + part + "</LandXML>");
            all += part;
        }
        seeds.push_back('\x07' + front + all + "</LandXML>");
        seeds.push_back('\x07' + all + front);
        return seeds;
    }

    std::vector<std::string> GetWords() override {
        return {"<CgPoint ", "<CgPoints>", "<Line>",     "<Curve ",     "<Spiral ",   "<Start>",
                "<End>",     "<Center>",   "pntRef=\"A", "rot=\"cw\"",  "INF",        "1e308",
                "-1e308",    "<Parcel>",   "<Parcels>",  "<Alignment>", "<!DOCTYPE ", "<!ENTITY ",
                "&#x0;",     "<![CDATA[",  "<Surface>",  "encoding=\"", "Shift_JIS",  "radius=\"",
                "length=\"", "KIND",       "CIRCLE",     "TEXT",        "LAYER",      "RADIUS"};
    }

 private:
    void Import(exchange::TextSource& source, CqSurveyDB& db, unsigned way) override {
        exchange::LandXmlReadOptions options;
        options.surfacePoints = (way & 1U) != 0;
        options.surfaceLines = (way & 2U) != 0;
        if ((way & 4U) != 0) {
            options.jobUnit = exchange::LengthUnit::Foot;
        }
        options.duplicates = exchange::Duplicates::Rename;
        static_cast<void>(exchange::LandXmlReader(source, options).Import(db));
        std::string text;
        exchange::LandXmlWriteOptions how;
        how.unit = exchange::LengthUnit::Foot;
        how.time = 0;
        static_cast<void>(exchange::LandXmlWriter(db, how, [&](std::string_view piece) {
                              text += piece;
                          }).Write());
        exchange::StringSource again(text);
        options.anySystem = true;
        options.fileUnit = options.jobUnit;
        const exchange::DrawingReport report = exchange::LandXmlReader(again, options).Import(db);
        RequirePromise(report.GetSum() > 0, "what we write can be read");
    }
};

}  // namespace

FuzzTarget& GetFuzzTarget() {
    static LandXmlFuzz target;
    return target;
}

}  // namespace cqsurvey
