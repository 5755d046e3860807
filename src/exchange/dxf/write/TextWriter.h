#pragma once

#include <string>

#include "cqsurvey/exchange/DxfWriter.h"
#include "exchange/dxf/write/Contents.h"
#include "exchange/dxf/write/EntityFrame.h"
#include "exchange/dxf/write/GroupWriter.h"

namespace cqsurvey::exchange::dxf {

/// The text with its doubled percent signs protected, which begin a code in a DXF text.
[[nodiscard]] CString EscapePercent(const CString& text);

/// Writes texts: a single line as TEXT, several as MTEXT, or in R12 each line as a TEXT.
class TextWriter {
 public:
    TextWriter(GroupWriter& out, Contents& contents)
        : m_out(out), m_contents(contents), m_frame(out, contents) {}

    [[nodiscard]] DrawingOutcome Write(const CqCadEntity& entity);

 private:
    void WriteLine(const CqCadEntity& entity, const CString& line, const Vec3& at,
                   const Extras& extras);
    void WriteLines(const CqCadEntity& entity, const Vec3& at, const Extras& extras);
    void WriteStyle(const CqCadEntity& entity);
    void WriteChunks(const CString& text);

    GroupWriter& m_out;
    Contents& m_contents;
    EntityFrame m_frame;
};

}  // namespace cqsurvey::exchange::dxf
