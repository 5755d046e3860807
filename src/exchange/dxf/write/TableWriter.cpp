#include "exchange/dxf/write/TableWriter.h"

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
#include "exchange/dxf/write/Handles.h"

namespace cqsurvey::exchange::dxf {

using namespace handles;

TableWriter::TableWriter(GroupWriter& out, Contents& contents) : m_out(out), m_contents(contents) {}

void TableWriter::Write() {
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

std::uint64_t TableWriter::BeginTable(std::string_view name, std::size_t count) {
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

void TableWriter::BeginEntry(std::string_view type, std::string_view subclass, std::uint64_t table,
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

void TableWriter::WriteViews() {
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

void TableWriter::WriteLine(std::uint64_t table, std::string_view name, int line) {
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

void TableWriter::WriteLines() {
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

void TableWriter::WriteLayers() {
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

void TableWriter::WriteStyle(std::uint64_t table, const CString& name) {
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

void TableWriter::WriteStyles() {
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

void TableWriter::WriteEmpty(std::string_view name) {
    BeginTable(name, 0);
    m_out.Raw(0, "ENDTAB");
}

void TableWriter::WriteApplications() {
    const std::uint64_t table = BeginTable("APPID", 2);
    for (const std::string_view name : {std::string_view("ACAD"), kApplication}) {
        BeginEntry("APPID", "AcDbRegAppTableRecord", table);
        m_out.Raw(2, name);
        m_out.Whole(70, 0);
    }
    m_out.Raw(0, "ENDTAB");
}

void TableWriter::WriteDimensions() {
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

void TableWriter::WriteBlockRecords() {
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

}  // namespace cqsurvey::exchange::dxf
