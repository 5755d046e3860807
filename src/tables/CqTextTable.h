#pragma once

#include <string_view>

#include "tables/CqRecordTable.h"
#include "tables/JobSchema.h"

namespace cqsurvey {

/// What a text record holds in addition to the text.
struct TextAttributes {
    std::int32_t align;
    std::u16string_view style;
    double height;
    double rotation;
    std::int32_t code;
    std::uint32_t optionStyle;
    std::int32_t interval;
    std::int32_t thickness;
};

/// The texts' own data. The text is a memo, since it may be long; the insertion point, layer and
/// colour are those of the text's entity.
class CqTextTable : public CqRecordTable<TextLayout> {
 public:
    CqHandle AppendText(const CString& text, const TextAttributes& attributes) {
        Layout::Bytes record{};
        SetMemo<"Text">(record, text);
        Fill(record, attributes);
        return AppendRecord(record);
    }

    void EditText(CqHandle handle, const CString& text, const TextAttributes& attributes) {
        GoTo(handle);
        SetMemo<"Text">(text);
        Fill(m_record, attributes);
        Store();
    }

 private:
    static void Fill(Layout::Bytes& record, const TextAttributes& attributes) {
        Layout::Set<"Align">(record.data(), attributes.align);
        Layout::Set<"Style">(record.data(), attributes.style);
        Layout::Set<"Height">(record.data(), attributes.height);
        Layout::Set<"Rotation">(record.data(), attributes.rotation);
        Layout::Set<"FeatureCode">(record.data(), attributes.code);
        Layout::Set<"OptionStyle">(record.data(), attributes.optionStyle);
        Layout::Set<"Interval">(record.data(), attributes.interval);
        Layout::Set<"Thickness">(record.data(), attributes.thickness);
    }
};

}  // namespace cqsurvey
