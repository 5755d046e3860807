#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "cqsurvey/exchange/DxfReader.h"
#include "exchange/dxf/read/Blocks.h"
#include "exchange/dxf/read/EntityConverter.h"
#include "exchange/dxf/read/Header.h"
#include "exchange/dxf/read/ImageTaker.h"
#include "exchange/dxf/read/RecordReader.h"
#include "exchange/dxf/read/Scene.h"

namespace cqsurvey::exchange::dxf {

/// Reads one file into a job, section by section: the header, the tables of layers and line types,
/// the blocks, and then the entities, one at a time. It begins no step of its own.
class FileImport {
 public:
    FileImport(TextSource& source, const DxfReadOptions& options, CqSurveyDB& db,
               DrawingReport& report);
    FileImport(const FileImport&) = delete;
    FileImport& operator=(const FileImport&) = delete;

    void Run();

 private:
    enum class Section { None, Header, Tables, Blocks, Entities, Other };
    struct LayerEntry {
        std::string name;
        int color = 0;
        std::string line;
    };

    void Begin(const Record& record);
    void End();
    void ReadTable(const Record& record);
    void ReadBlock(Record& record);
    void ReadEntity(Record& record);
    void ReadObject(const Record& record);
    void FlushPoint();
    void UseHeader();
    void Finish();

    TextSource& m_source;
    const DxfReadOptions& m_options;
    DrawingReport& m_report;
    GroupReader m_groups;
    RecordReader m_records;
    Header m_header;
    TextDecoder m_decoder;
    LineTable m_lines;
    LayerMap m_layers;
    Drawing m_drawing;
    Scene m_scene;
    Blocks m_blocks;
    EntityConverter m_converter;
    ImageTaker m_image;
    Context m_root;
    std::vector<LayerEntry> m_layerEntries;
    std::optional<Record> m_point;  // which the block of the same survey point may follow
    Section m_section = Section::None;
    std::size_t m_tableBytes = 0;
    bool m_inBlock = false;
    bool m_inPaper = false;
    std::uint64_t m_entities = 0;
    std::uint64_t m_objects = 0;
};

}  // namespace cqsurvey::exchange::dxf
