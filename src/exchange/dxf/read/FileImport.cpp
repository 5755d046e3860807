#include "exchange/dxf/read/FileImport.h"

#include <fmt/format.h>

#include <cstdlib>
#include <utility>

#include "cqsurvey/CqPalette.h"
#include "cqsurvey/Limits.h"
#include "cqsurvey/Text.h"
#include "cqsurvey/exchange/ExchangeError.h"
#include "exchange/drawing/LengthScale.h"
#include "exchange/drawing/Names.h"
#include "exchange/dxf/PointBlock.h"
#include "text/NumberText.h"
#include "text/Printable.h"

namespace cqsurvey::exchange::dxf {

namespace {

constexpr int kInk = 7;
constexpr int kFrozen = 1;

/// The colour of a LAYER record, negative for a layer that is off or frozen.
int ColorOfLayer(const Record& record) {
    const int written = record.Whole(62, kInk);
    int color = std::abs(written);
    if (const Entry* trueColor = record.Find(420)) {
        bool exact = true;
        color = FindPaletteColor(static_cast<std::uint32_t>(record.Whole(*trueColor)), exact);
    }
    if (color < 1 || color > limits::kHighestPaletteColor) {
        color = kInk;
    }
    const bool hidden = written < 0 || (record.Whole(70) & kFrozen) != 0;
    return hidden ? -color : color;
}

bool IsPaper(std::string_view block) {
    const std::string name = Upper(block);
    return name.starts_with("*PAPER_SPACE") || name.starts_with("$PAPER_SPACE");
}

}  // namespace

FileImport::FileImport(TextSource& source, const DxfReadOptions& options, CqSurveyDB& db,
                       DrawingReport& report)
    : m_source(source),
      m_options(options),
      m_report(report),
      m_groups(source),
      m_records(m_groups, options.mostEntityBytes),
      m_lines(report),
      m_layers(
          db, [this](std::string_view bytes) { return m_decoder.DecodeName(bytes); }, report),
      m_drawing(db, report),
      m_scene{options, m_decoder, m_layers, m_lines, m_drawing, report},
      m_blocks(options.mostBlockBytes),
      m_converter(m_scene, m_blocks),
      m_image(options, m_decoder, db) {}

void FileImport::Run() {
    Record record;
    bool ended = false;
    bool begun = false;
    while (!ended && m_records.Next(record)) {
        if (!begun && record.type != "SECTION") {
            m_records.GetOrigin().Fail(record.place,
                                       "this is no DXF file: it does not begin with "
                                       "a section");
        }
        begun = true;
        if (record.type == "SECTION") {
            Begin(record);
        } else if (record.type == "ENDSEC") {
            End();
        } else if (record.type == "EOF") {
            ended = true;
        } else if (m_section == Section::Tables) {
            ReadTable(record);
        } else if (m_section == Section::Blocks) {
            ReadBlock(record);
        } else if (m_section == Section::Entities) {
            ReadEntity(record);
        } else {
            ReadObject(record);
        }
        if (m_options.progress) {
            m_options.progress(m_entities, m_source.GetBytes(), m_source.GetSize());
        }
    }
    if (!ended) {
        m_records.GetOrigin().Fail(
            m_records.GetPlace(),
            begun ? "the file is cut off: it ends without EOF" : "the file is empty");
    }
    Finish();
}

void FileImport::Begin(const Record& record) {
    const std::string name = Upper(record.Text(2));
    if (m_section != Section::None) {
        m_records.GetOrigin().Fail(record.place, "a section begins inside another");
    }
    m_section = name == "HEADER"     ? Section::Header
                : name == "TABLES"   ? Section::Tables
                : name == "BLOCKS"   ? Section::Blocks
                : name == "ENTITIES" ? Section::Entities
                                     : Section::Other;
    if (m_section == Section::Header) {
        m_header.Read(record);
    } else {
        UseHeader();
    }
}

void FileImport::End() {
    if (m_section == Section::Tables) {
        for (const LayerEntry& layer : m_layerEntries) {
            const int line = m_lines.Find(layer.line);
            m_layers.Define(layer.name, layer.color,
                            line < 0 || line == limits::kByLayer ? 0 : line);
        }
        m_layerEntries.clear();
    } else if (m_section == Section::Entities) {
        FlushPoint();
    }
    m_section = Section::None;
    m_inBlock = false;
}

void FileImport::UseHeader() {
    if (!m_report.version.empty()) {
        return;
    }
    m_report.version = m_header.DescribeVersion();
    const std::optional<int> page = m_header.GetCodePage();
    if (page) {
        m_decoder = TextDecoder(*page);
    } else {
        m_report.Note(
            fmt::format("the code page {} is not known; texts were read as Western "
                        "European",
                        Quoted(m_header.codePage)));
    }
    m_report.codePage = m_decoder.GetCodePage();

    const std::optional<LengthUnit> said = UnitOfNumber(m_header.unit);
    const std::optional<LengthUnit> file = m_options.fileUnit ? m_options.fileUnit : said;
    m_report.unit = file                 ? UnitWord(*file)
                    : m_header.unit == 0 ? "unspecified"
                                         : fmt::format("number {}", m_header.unit);
    ScaleLengths(file, m_options.jobUnit, m_report);
    m_root.map = Affine::Scale(m_report.scale, m_report.scale, m_report.scale);
}

void FileImport::ReadTable(const Record& record) {
    // What is kept of an entry beside its texts.
    constexpr std::size_t kEntry = 256;
    m_tableBytes += kEntry + record.Text(2).size() + record.Text(6).size();
    if (m_tableBytes > m_options.mostBlockBytes) {
        m_records.GetOrigin().Fail(record.place, "the tables of the file are too large");
    }
    if (record.type == "LTYPE") {
        m_lines.Define(record);
    } else if (record.type == "LAYER") {
        m_layerEntries.push_back({std::string(record.Text(2)), ColorOfLayer(record),
                                  std::string(record.Text(6, "CONTINUOUS"))});
    }
}

void FileImport::ReadBlock(Record& record) {
    if (record.type == "BLOCK") {
        m_inBlock = true;
        m_inPaper = IsPaper(record.Text(2));
        m_blocks.Begin(record);
    } else if (record.type == "ENDBLK") {
        m_inBlock = false;
    } else if (!m_inBlock) {
        m_records.GetOrigin().Fail(record.place, "an entity of the blocks stands in no block");
    } else if (m_inPaper) {
        ++m_entities;
        m_converter.Count(record, m_root, LeftOut("it is in paper space"));
    } else {
        m_blocks.Add(std::move(record));
        record = Record();
    }
}

void FileImport::ReadEntity(Record& record) {
    ++m_entities;
    if (record.type == "POINT") {
        FlushPoint();
        m_point = std::move(record);
        record = Record();
        return;
    }
    if (m_point && m_converter.IsPointInsert(record)) {
        if (PointOf(*m_point, 10) == PointOf(record, 10) && m_point->Text(8) == record.Text(8)) {
            const Record point = std::move(*m_point);
            m_point.reset();
            const DrawingOutcome outcome = m_converter.Convert(record, m_root);
            m_converter.Count(point, m_root,
                              outcome.fate == DrawingFate::LeftOut
                                  ? outcome
                                  : Taken("survey point, with the block that follows"));
            return;
        }
    }
    FlushPoint();
    // The file of an image is known only at the end.
    if (!m_image.Keep(record)) {
        m_converter.Convert(record, m_root);
    }
}

void FileImport::ReadObject(const Record& record) {
    if (!m_image.Define(record)) {
        ++m_objects;
    }
}

void FileImport::FlushPoint() {
    if (m_point) {
        const Record point = std::move(*m_point);
        m_point.reset();
        m_converter.Convert(point, m_root);
    }
}

void FileImport::Finish() {
    UseHeader();
    m_converter.GetPoints().NameAfterTexts();
    if (const Record* image = m_image.GetImage()) {
        m_converter.Count(*image, m_root, m_image.Store(m_root.map));
    }
    std::size_t unused = 0;
    std::size_t inside = 0;
    for (const auto& [name, block] : m_blocks.GetAll()) {
        const bool counts = !block.used && !block.entities.empty() && name != kPointBlock;
        unused += counts ? 1 : 0;
        inside += counts ? block.entities.size() : 0;
    }
    if (unused > 0) {
        m_report.Note(
            fmt::format("{} with {} drawn nowhere, and left out", Count(unused, "block"),
                        inside == 1 ? "1 entity is" : fmt::format("{} entities are", inside)));
    }
    if (m_objects > 0) {
        m_report.Note(
            fmt::format("{} in other sections of the file, which are no entities, were "
                        "not read",
                        Count(m_objects, "object")));
    }
    if (m_decoder.GetBad() > 0) {
        m_report.Note(fmt::format("{} with bytes that are no characters of code page {}",
                                  Count(m_decoder.GetBad(), "text"), m_decoder.GetCodePage()));
    }
    if (m_report.GetSum() < m_entities) {
        throw ExchangeError(fmt::format(
            "{}: of {} entities {} were accounted for, so nothing was recorded; this is a fault of "
            "the program",
            Printable(m_source.GetName()), m_entities, m_report.GetSum()));
    }
    m_drawing.Finish();
}

}  // namespace cqsurvey::exchange::dxf
