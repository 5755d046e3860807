#pragma once

#include <optional>
#include <string>

#include "cqsurvey/CqImagePlace.h"
#include "cqsurvey/CqSurveyDB.h"
#include "cqsurvey/exchange/DxfReader.h"
#include "exchange/drawing/Outcomes.h"
#include "exchange/dxf/Affine.h"
#include "exchange/dxf/Record.h"
#include "exchange/dxf/read/TextDecoder.h"

namespace cqsurvey::exchange::dxf {

/// Takes the first IMAGE of a drawing as the job's background image.
///
/// A DXF file has only the name of a picture. The name comes from a stranger, so no more of it is
/// used than its last part, and only a regular file of that name in the folder of the options is
/// opened: no folder that the file names, and no link that may lead out of that one.
class ImageTaker {
 public:
    /// The arguments outlive this.
    ImageTaker(const DxfReadOptions& options, TextDecoder& decoder, CqSurveyDB& db)
        : m_options(options), m_decoder(decoder), m_db(db) {}
    ImageTaker(const ImageTaker&) = delete;
    ImageTaker& operator=(const ImageTaker&) = delete;

    /// Keeps the record when it is the first IMAGE of the drawing itself; false for any other.
    [[nodiscard]] bool Keep(const Record& record);

    /// Takes the name of the picture when the record is the IMAGEDEF of the image that was kept;
    /// false for any other.
    [[nodiscard]] bool Define(const Record& record);

    /// The image that was kept, null for none.
    [[nodiscard]] const Record* GetImage() const { return m_image ? &*m_image : nullptr; }

    /// Stores the image that was kept in the job, at its place in the coordinates of `map`.
    [[nodiscard]] DrawingOutcome Store(const Affine& map);

 private:
    [[nodiscard]] std::optional<CqImagePlace> FindPlace(const Affine& map) const;
    [[nodiscard]] std::optional<std::string> FindName() const;
    [[nodiscard]] bool IsClipped() const;
    [[nodiscard]] DrawingOutcome Copy(const std::string& path, const CqImagePlace& place);

    const DxfReadOptions& m_options;
    TextDecoder& m_decoder;
    CqSurveyDB& m_db;
    std::optional<Record> m_image;
    std::optional<CString> m_path;  // of the picture, as the file has it
};

}  // namespace cqsurvey::exchange::dxf
