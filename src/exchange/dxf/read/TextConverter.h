#pragma once

#include <string>

#include "exchange/dxf/read/Scene.h"

namespace cqsurvey::exchange::dxf {

/// Converts texts: TEXT, ATTRIB, constant ATTDEF, MTEXT.
class TextConverter {
 public:
    explicit TextConverter(Scene& scene) : m_scene(scene) {}

    [[nodiscard]] DrawingOutcome Text(const Record& record, const Context& context);
    [[nodiscard]] DrawingOutcome Attribute(const Record& record, const Context& context);
    [[nodiscard]] DrawingOutcome AttributeDefinition(const Record& record, const Context& context);
    [[nodiscard]] DrawingOutcome MText(const Record& record, const Context& context);

    /// The text of an ATTRIB as the job would hold it.
    [[nodiscard]] static CString ValueOf(const Record& record, TextDecoder& decoder);

 private:
    DrawingOutcome Draw(DrawnText text, const Affine& map, const Record& record,
                        const Context& context, bool changed);
    CString StyleName(const Record& record);

    Scene& m_scene;
};

}  // namespace cqsurvey::exchange::dxf
