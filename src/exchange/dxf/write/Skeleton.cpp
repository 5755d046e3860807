#include "exchange/dxf/write/Skeleton.h"

#include <array>
#include <cmath>
#include <set>
#include <span>
#include <vector>

#include "cqsurvey/Limits.h"
#include "cqsurvey/Text.h"
#include "exchange/drawing/Extras.h"
#include "exchange/drawing/Names.h"
#include "exchange/dxf/LineTypes.h"
#include "exchange/dxf/PointBlock.h"
#include "exchange/dxf/write/PointWriter.h"

namespace cqsurvey::exchange::dxf {

namespace {

using namespace handles;

constexpr std::string_view kModelName = "*Model_Space";
constexpr std::string_view kPaperName = "*Paper_Space";
constexpr int kOwner = 330;
constexpr int kSoftOwner = 350;

const char* VersionWord(DxfVersion version) {
    return version == DxfVersion::R12     ? "AC1009"
           : version == DxfVersion::R2000 ? "AC1015"
                                          : "AC1032";
}

}  // namespace

Skeleton::Skeleton(GroupWriter& out, Contents& contents, const DxfWriteOptions& options)
    : m_out(out),
      m_contents(contents),
      m_options(options),
      m_image(options.image && !out.IsR12()) {}

void Skeleton::WriteFront() {
    WriteHeader();
    if (!m_out.IsR12()) {
        WriteClasses();
    }
    WriteTables();
    WriteBlocks();
    m_out.Raw(0, "SECTION");
    m_out.Raw(2, "ENTITIES");
}

void Skeleton::WriteBack() {
    m_out.Raw(0, "ENDSEC");
    if (!m_out.IsR12()) {
        WriteObjects();
    }
    m_out.Raw(0, "EOF");
    m_out.Flush();
}

void Skeleton::WriteHeader() {
    m_out.Raw(0, "SECTION");
    m_out.Raw(2, "HEADER");
    const auto variable = [&](std::string_view name) { m_out.Raw(9, name); };
    variable("$ACADVER");
    m_out.Raw(1, VersionWord(m_options.version));
    variable("$DWGCODEPAGE");
    m_out.Raw(3, "ANSI_1252");
    const Vec3 least = m_contents.GetLeast();
    const Vec3 largest = m_contents.GetLargest();
    variable("$INSBASE");
    m_out.Point(10, {});
    variable("$EXTMIN");
    m_out.Point(10, least);
    variable("$EXTMAX");
    m_out.Point(10, largest);
    variable("$LIMMIN");
    m_out.PlanPoint(10, least.x, least.y);
    variable("$LIMMAX");
    m_out.PlanPoint(10, largest.x, largest.y);
    // Points are drawn as crosses of a fixed size on the screen; a dot would not be seen.
    constexpr int kCross = 3;
    variable("$PDMODE");
    m_out.Whole(70, kCross);
    variable("$PDSIZE");
    m_out.Number(40, m_contents.GetPointTextHeight() / 2);
    if (!m_out.IsR12()) {
        // It has to be above every handle, and stands before all of them.
        variable("$HANDSEED");
        m_out.Raw(5, "7FFFFFFF");
        variable("$INSUNITS");
        m_out.Whole(70, m_options.unit ? static_cast<int>(*m_options.unit) : 0);
        variable("$MEASUREMENT");
        const bool imperial = m_options.unit == LengthUnit::Foot ||
                              m_options.unit == LengthUnit::UsSurveyFoot ||
                              m_options.unit == LengthUnit::Inch;
        m_out.Whole(70, imperial ? 0 : 1);
    }
    m_out.Raw(0, "ENDSEC");
}

void Skeleton::WriteClasses() {
    struct Class {
        const char* name;
        const char* cpp;
        int flags;
        bool entity;
    };
    static constexpr std::array<Class, 4> kClasses{
        {{"RASTERVARIABLES", "AcDbRasterVariables", 0, false},
         {"IMAGE", "AcDbRasterImage", 2175, true},
         {"IMAGEDEF", "AcDbRasterImageDef", 0, false},
         {"IMAGEDEF_REACTOR", "AcDbRasterImageDefReactor", 1, false}}};
    m_out.Raw(0, "SECTION");
    m_out.Raw(2, "CLASSES");
    if (m_image) {
        for (const Class& one : kClasses) {
            m_out.Raw(0, "CLASS");
            m_out.Raw(1, one.name);
            m_out.Raw(2, one.cpp);
            m_out.Raw(3, "ISM");
            m_out.Whole(90, one.flags);
            if (m_options.version == DxfVersion::R2018) {
                m_out.Whole(91, 1);
            }
            m_out.Whole(280, 0);
            m_out.Whole(281, one.entity ? 1 : 0);
        }
    }
    m_out.Raw(0, "ENDSEC");
}

std::uint64_t Skeleton::BeginTable(std::string_view name, std::size_t count) {
    m_out.Raw(0, "TABLE");
    m_out.Raw(2, name);
    std::uint64_t handle = 0;
    if (!m_out.IsR12()) {
        handle = m_out.NewHandle();
        m_out.Handle(5, handle);
        m_out.Raw(kOwner, "0");
        m_out.Subclass("AcDbSymbolTable");
    }
    m_out.Whole(70, static_cast<std::int64_t>(count));
    return handle;
}

void Skeleton::BeginEntry(std::string_view type, std::string_view subclass, std::uint64_t table,
                          std::uint64_t handle) {
    m_out.Raw(0, type);
    if (m_out.IsR12()) {
        return;
    }
    m_out.Handle(type == "DIMSTYLE" ? 105 : 5, handle == 0 ? m_out.NewHandle() : handle);
    m_out.Handle(kOwner, table);
    m_out.Subclass("AcDbSymbolTableRecord");
    m_out.Subclass(subclass);
}

void Skeleton::WriteTables() {
    m_out.Raw(0, "SECTION");
    m_out.Raw(2, "TABLES");
    WriteViews();
    WriteLines();
    WriteLayers();
    WriteStyles();
    WriteEmpty("VIEW");
    WriteEmpty("UCS");
    WriteApplications();
    WriteDimensions();
    if (!m_out.IsR12()) {
        WriteBlockRecords();
    }
    m_out.Raw(0, "ENDSEC");
}

void Skeleton::WriteViews() {
    const Vec3 least = m_contents.GetLeast();
    const Vec3 largest = m_contents.GetLargest();
    const double width = std::fmax(largest.x - least.x, 1.0);
    const double height = std::fmax(largest.y - least.y, 1.0);
    const std::uint64_t table = BeginTable("VPORT", 1);
    BeginEntry("VPORT", "AcDbViewportTableRecord", table);
    m_out.Raw(2, "*ACTIVE");
    m_out.Whole(70, 0);
    m_out.PlanPoint(10, 0.0, 0.0);
    m_out.PlanPoint(11, 1.0, 1.0);
    m_out.PlanPoint(12, (least.x + largest.x) / 2, (least.y + largest.y) / 2);
    m_out.PlanPoint(13, 0.0, 0.0);
    m_out.PlanPoint(14, 1.0, 1.0);
    m_out.PlanPoint(15, 1.0, 1.0);
    m_out.Point(16, {0.0, 0.0, 1.0});
    m_out.Point(17, {});
    m_out.Number(40, std::fmax(height, width) * 1.1);
    m_out.Number(41, 1.5);
    m_out.Number(42, 50.0);
    m_out.Raw(0, "ENDTAB");
}

void Skeleton::WriteLine(std::uint64_t table, std::string_view name, int line) {
    BeginEntry("LTYPE", "AcDbLinetypeTableRecord", table);
    const std::span<const double> pattern = LinePattern(line);
    double length = 0.0;
    for (const double part : pattern) {
        length += std::fabs(part);
    }
    m_out.Raw(2, name);
    m_out.Whole(70, 0);
    m_out.Raw(3, "");
    m_out.Whole(72, 65);
    m_out.Whole(73, static_cast<std::int64_t>(pattern.size()));
    m_out.Number(40, length);
    for (const double part : pattern) {
        m_out.Number(49, part);
        if (!m_out.IsR12()) {
            m_out.Whole(74, 0);
        }
    }
}

void Skeleton::WriteLines() {
    std::set<int> lines = m_contents.GetLines();
    lines.insert(kSolidLine);
    lines.erase(limits::kByLayer);
    const std::uint64_t table = BeginTable("LTYPE", lines.size() + 2);
    if (!m_out.IsR12()) {
        WriteLine(table, "ByBlock", kSolidLine);
        WriteLine(table, "ByLayer", kSolidLine);
    }
    for (const int line : lines) {
        WriteLine(table, LineName(line), line);
    }
    m_out.Raw(0, "ENDTAB");
}

void Skeleton::WriteLayers() {
    const std::uint64_t table = BeginTable("LAYER", m_contents.GetLayers().size());
    for (const Contents::Layer& layer : m_contents.GetLayers()) {
        BeginEntry("LAYER", "AcDbLayerTableRecord", table);
        m_out.Text(2, m_contents.LayerName(layer.name));
        m_out.Whole(70, 0);
        m_out.Whole(62, layer.color);
        m_out.Raw(6, LineName(layer.line == limits::kByLayer ? kSolidLine : layer.line));
    }
    m_out.Raw(0, "ENDTAB");
}

void Skeleton::WriteStyle(std::uint64_t table, const CString& name) {
    BeginEntry("STYLE", "AcDbTextStyleTableRecord", table);
    m_out.Text(2, name);
    m_out.Whole(70, 0);
    m_out.Number(40, 0.0);
    m_out.Number(41, 1.0);
    m_out.Number(50, 0.0);
    m_out.Whole(71, 0);
    m_out.Number(42, 1.0);
    m_out.Raw(3, m_out.IsR12() ? "txt" : "arial.ttf");
    m_out.Raw(4, "");
}

void Skeleton::WriteStyles() {
    // Texts that name no style are in this one, which every file has.
    const CString usual = u"STANDARD";
    std::vector<CString> styles;
    bool used = false;
    for (const CString& style : m_contents.GetStyles()) {
        styles.push_back(m_contents.StyleName(style));
        used |= Upper(ToUtf8(styles.back())) == ToUtf8(usual);
    }
    if (!used) {
        styles.insert(styles.begin(), usual);
    }
    const std::uint64_t table = BeginTable("STYLE", styles.size());
    for (const CString& style : styles) {
        WriteStyle(table, style);
    }
    m_out.Raw(0, "ENDTAB");
}

void Skeleton::WriteEmpty(std::string_view name) {
    BeginTable(name, 0);
    m_out.Raw(0, "ENDTAB");
}

void Skeleton::WriteApplications() {
    const std::uint64_t table = BeginTable("APPID", 2);
    for (const std::string_view name : {std::string_view("ACAD"), kApplication}) {
        BeginEntry("APPID", "AcDbRegAppTableRecord", table);
        m_out.Raw(2, name);
        m_out.Whole(70, 0);
    }
    m_out.Raw(0, "ENDTAB");
}

void Skeleton::WriteDimensions() {
    const std::uint64_t table = BeginTable("DIMSTYLE", 1);
    if (!m_out.IsR12()) {
        m_out.Subclass("AcDbDimStyleTable");
        m_out.Whole(71, 0);
    }
    BeginEntry("DIMSTYLE", "AcDbDimStyleTableRecord", table);
    m_out.Raw(2, "STANDARD");
    m_out.Whole(70, 0);
    m_out.Raw(0, "ENDTAB");
}

void Skeleton::WriteBlockRecords() {
    const std::uint64_t table = BeginTable("BLOCK_RECORD", 3);
    const auto record = [&](std::string_view name, std::uint64_t handle, std::uint64_t layout) {
        BeginEntry("BLOCK_RECORD", "AcDbBlockTableRecord", table, handle);
        m_out.Raw(2, name);
        m_out.Handle(340, layout);
    };
    record(kModelName, kModel, kModelLayout);
    record(kPaperName, kPaper, kPaperLayout);
    record(kPointBlock, kPointRecord, 0);
    m_out.Raw(0, "ENDTAB");
}

void Skeleton::BeginBlock(std::string_view name, std::uint64_t owner) {
    m_out.Raw(0, "BLOCK");
    if (!m_out.IsR12()) {
        m_out.Handle(5, m_out.NewHandle());
        m_out.Handle(kOwner, owner);
        m_out.Subclass("AcDbEntity");
    }
    m_out.Raw(8, "0");
    m_out.Subclass("AcDbBlockBegin");
    m_out.Raw(2, name);
    // A block with attributes says so.
    m_out.Whole(70, name == kPointBlock ? 2 : 0);
    m_out.Point(10, {});
    m_out.Raw(3, name);
    m_out.Raw(1, "");
}

void Skeleton::EndBlock(std::uint64_t owner) {
    m_out.Raw(0, "ENDBLK");
    if (!m_out.IsR12()) {
        m_out.Handle(5, m_out.NewHandle());
        m_out.Handle(kOwner, owner);
        m_out.Subclass("AcDbEntity");
    }
    m_out.Raw(8, "0");
    m_out.Subclass("AcDbBlockEnd");
}

void Skeleton::WriteBlocks() {
    m_out.Raw(0, "SECTION");
    m_out.Raw(2, "BLOCKS");
    if (!m_out.IsR12()) {
        BeginBlock(kModelName, kModel);
        EndBlock(kModel);
        BeginBlock(kPaperName, kPaper);
        EndBlock(kPaper);
    }
    BeginBlock(kPointBlock, kPointRecord);
    PointWriter::WriteDefinitions(m_out, m_contents.GetPointTextHeight());
    EndBlock(kPointRecord);
    m_out.Raw(0, "ENDSEC");
}

void Skeleton::WriteDictionary(std::uint64_t handle, std::uint64_t owner) {
    m_out.Raw(0, "DICTIONARY");
    m_out.Handle(5, handle);
    m_out.Handle(kOwner, owner);
    m_out.Subclass("AcDbDictionary");
    m_out.Whole(281, 1);
}

void Skeleton::WriteObjects() {
    const auto member = [&](std::string_view name, std::uint64_t handle) {
        m_out.Raw(3, name);
        m_out.Handle(kSoftOwner, handle);
    };
    m_out.Raw(0, "SECTION");
    m_out.Raw(2, "OBJECTS");
    WriteDictionary(kRoot, 0);
    member("ACAD_GROUP", kGroups);
    if (m_image) {
        member("ACAD_IMAGE_DICT", kImages);
        member("ACAD_IMAGE_VARS", kImageVariables);
    }
    member("ACAD_LAYOUT", kLayouts);
    WriteDictionary(kGroups, kRoot);
    WriteDictionary(kLayouts, kRoot);
    member("Model", kModelLayout);
    member("Layout1", kPaperLayout);
    WriteLayout("Model", kModelLayout, kModel, 0);
    WriteLayout("Layout1", kPaperLayout, kPaper, 1);
    if (m_image) {
        WriteImageObjects();
    }
    m_out.Raw(0, "ENDSEC");
}

void Skeleton::WriteLayout(std::string_view name, std::uint64_t handle, std::uint64_t block,
                           int order) {
    m_out.Raw(0, "LAYOUT");
    m_out.Handle(5, handle);
    m_out.Handle(kOwner, kLayouts);
    m_out.Subclass("AcDbPlotSettings");
    m_out.Raw(1, "");
    m_out.Raw(2, "none_device");
    m_out.Whole(70, order == 0 ? 1024 : 0);
    m_out.Subclass("AcDbLayout");
    m_out.Raw(1, name);
    m_out.Whole(70, 1);
    m_out.Whole(71, order);
    m_out.PlanPoint(10, 0.0, 0.0);
    m_out.PlanPoint(11, 420.0, 297.0);
    m_out.Point(12, {});
    m_out.Point(14, m_contents.GetLeast());
    m_out.Point(15, m_contents.GetLargest());
    m_out.Number(146, 0.0);
    m_out.Point(13, {});
    m_out.Point(16, {1.0, 0.0, 0.0});
    m_out.Point(17, {0.0, 1.0, 0.0});
    m_out.Whole(76, 0);
    m_out.Handle(kOwner, block);
}

void Skeleton::WriteImageObjects() {
    WriteDictionary(kImages, kRoot);
    m_out.Raw(3, "BACKGROUND");
    m_out.Handle(kSoftOwner, kImageFile);
    m_out.Raw(0, "RASTERVARIABLES");
    m_out.Handle(5, kImageVariables);
    m_out.Handle(kOwner, kRoot);
    m_out.Subclass("AcDbRasterVariables");
    m_out.Whole(90, 0);
    m_out.Whole(70, 0);
    m_out.Whole(71, 1);
    m_out.Whole(72, 3);
    m_out.Raw(0, "IMAGEDEF");
    m_out.Handle(5, kImageFile);
    m_out.Raw(102, "{ACAD_REACTORS");
    m_out.Handle(kOwner, kImages);
    m_out.Handle(kOwner, kImageReactor);
    m_out.Raw(102, "}");
    m_out.Handle(kOwner, kImages);
    m_out.Subclass("AcDbRasterImageDef");
    m_out.Whole(90, 0);
    m_out.Text(1, FromUtf8(m_options.image->fileName));
    m_out.PlanPoint(10, m_options.image->width, m_options.image->height);
    m_out.PlanPoint(11, 1.0, 1.0);
    m_out.Whole(280, 1);
    m_out.Whole(281, 0);
    m_out.Raw(0, "IMAGEDEF_REACTOR");
    m_out.Handle(5, kImageReactor);
    m_out.Handle(kOwner, kImage);
    m_out.Subclass("AcDbRasterImageDefReactor");
    m_out.Whole(90, 2);
    m_out.Handle(kOwner, kImage);
}

}  // namespace cqsurvey::exchange::dxf
