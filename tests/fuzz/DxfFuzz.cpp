#include "cqsurvey/exchange/DxfReader.h"
#include "fuzz/DrawingFuzz.h"

namespace cqsurvey {
namespace {

/// A DXF file from a stranger.
class DxfFuzz : public DrawingFuzz {
 public:
    std::vector<std::string> MakeSeeds() override {
        const std::string front =
            "0\nSECTION\n2\nHEADER\n9\n$ACADVER\n1\nAC1015\n9\n$DWGCODEPAGE\n3\nANSI_1252\n9\n"
            "$INSUNITS\n70\n6\n0\nENDSEC\n0\nSECTION\n2\nTABLES\n0\nTABLE\n2\nLAYER\n0\nLAYER\n2\n"
            "Road\n70\n0\n62\n-"
            "3\n6\nDASHED\n0\nENDTAB\n0\nENDSEC\n0\nSECTION\n2\nBLOCKS\n0\nBLOCK\n"
            "2\nB\n10\n0\n20\n0\n0\nLINE\n8\n0\n10\n1\n20\n2\n11\n3\n21\n4\n0\nENDBLK\n0\nENDSEC\n0"
            "\n"
            "SECTION\n2\nENTITIES\n";
        const std::string back = "0\nENDSEC\n0\nEOF\n";
        const std::vector<std::string> entities = {
            "0\nPOINT\n8\nRoad\n10\n1\n20\n2\n30\n3\n",
            "0\nLWPOLYLINE\n8\nRoad\n90\n2\n70\n1\n10\n0\n20\n0\n42\n0.5\n10\n4\n20\n0\n",
            "0\nPOLYLINE\n66\n1\n70\n8\n0\nVERTEX\n10\n1\n20\n2\n30\n3\n70\n32\n0\nVERTEX\n10\n4\n"
            "20\n5\n0\nSEQEND\n",
            "0\nELLIPSE\n10\n1\n20\n2\n11\n5\n21\n1\n40\n0.5\n41\n0\n42\n4\n",
            "0\nSPLINE\n70\n8\n71\n3\n72\n8\n73\n4\n40\n0\n40\n0\n40\n0\n40\n0\n40\n1\n40\n1\n40\n1"
            "\n"
            "40\n1\n10\n0\n20\n0\n10\n1\n20\n3\n10\n4\n20\n3\n10\n5\n20\n0\n",
            "0\nINSERT\n2\nB\n10\n1\n20\n2\n41\n2\n42\n-1\n50\n30\n70\n2\n71\n2\n44\n5\n45\n5\n",
            "0\nHATCH\n91\n1\n92\n2\n72\n1\n73\n1\n93\n2\n10\n0\n20\n0\n42\n0\n10\n1\n20\n1\n42\n0"
            "\n",
            "0\nMTEXT\n10\n1\n20\n2\n40\n2.5\n71\n5\n1\n{\\fArial|b1;bold}\\Pline \\U+03A9\n",
            "0\nCIRCLE\n10\n1\n20\n2\n40\n5\n210\n0\n220\n0\n230\n-1\n",
            "0\nARC\n10\n1\n20\n2\n40\n5\n50\n10\n51\n300\n",
            "0\nTEXT\n10\n1\n20\n2\n40\n5\n1\nlabel %%d\n72\n1\n11\n4\n21\n4\n"};
        std::vector<std::string> seeds;
        char way = 0;
        std::string all;
        for (const std::string& entity : entities) {
            seeds.push_back(way++ + front + entity + back);
            all += entity;
        }
        seeds.push_back('\x0F' + front + all + back);
        return seeds;
    }

    std::vector<std::string> GetWords() override {
        return {"SECTION",   "ENDSEC",
                "ENTITIES",  "BLOCKS",
                "INSERT",    "VERTEX",
                "SEQEND",    "ATTRIB",
                "HATCH",     "SPLINE",
                "\n0\n",     "\n10\n",
                "1e308",     "-1e308",
                "\n42\n",    "\n70\n",
                "\n90\n",    "\n91\n",
                "\n2\nB",    "SOLID",
                "DIMENSION", "AutoCAD Binary DXF\r\n\x1A"};
    }

 private:
    void Import(exchange::TextSource& source, CqSurveyDB& db, unsigned way) override {
        exchange::DxfReadOptions options;
        options.fills = (way & 1U) != 0;
        options.namesFromTexts = (way & 2U) != 0;
        options.mostDrawn = 2000;
        if ((way & 4U) != 0) {
            options.jobUnit = exchange::LengthUnit::Foot;
        }
        if ((way & 8U) != 0) {
            options.duplicates = exchange::Duplicates::Rename;
        }
        static_cast<void>(exchange::DxfReader(source, options).Import(db));
    }
};

}  // namespace

FuzzTarget& GetFuzzTarget() {
    static DxfFuzz target;
    return target;
}

}  // namespace cqsurvey
