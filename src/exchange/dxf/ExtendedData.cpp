#include "exchange/dxf/ExtendedData.h"

namespace cqsurvey::exchange::dxf {

Extras ExtrasOf(const Record& record) {
    constexpr int kExtendedText = 1000;
    Extras extras;
    for (const Entry& entry : record.GetEntries()) {
        if (entry.code == 0) {
            break;
        }
        if (entry.code == kExtendedText) {
            const std::string_view text = record.Text(entry);
            if (const std::size_t equals = text.find('='); equals != std::string_view::npos) {
                extras.Set(std::string(text.substr(0, equals)), text.substr(equals + 1));
            }
        }
    }
    return extras;
}

}  // namespace cqsurvey::exchange::dxf
