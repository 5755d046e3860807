#include "exchange/dxf/write/Skeleton.h"

#include <array>

#include "cqsurvey/Text.h"
#include "exchange/dxf/PointBlock.h"
#include "exchange/dxf/write/Handles.h"
#include "exchange/dxf/write/PointWriter.h"
#include "exchange/dxf/write/TableWriter.h"

namespace cqsurvey::exchange::dxf {

namespace {

using namespace handles;

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
    TableWriter(m_out, m_contents).Write();
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
