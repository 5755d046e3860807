#include "exchange/landxml/read/LostAttributes.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstddef>

#include "text/Printable.h"

namespace cqsurvey::exchange::landxml {

void LostAttributes::Look(const XmlElement& element,
                          std::initializer_list<std::string_view> known) {
    constexpr std::size_t kMost = 100;
    for (const XmlElement::Attribute& attribute : element.attributes) {
        if (std::find(known.begin(), known.end(), attribute.name) != known.end()) {
            continue;
        }
        auto place = m_lost.find(element.name);
        if (place == m_lost.end()) {
            place = m_lost.try_emplace(std::string(element.name)).first;
        }
        if (place->second.size() < kMost) {
            place->second.emplace(attribute.name);
        }
    }
}

void LostAttributes::Report(DrawingReport& report) const {
    for (const auto& [element, attributes] : m_lost) {
        std::string list;
        for (const std::string& attribute : attributes) {
            list += (list.empty() ? "" : ", ") + attribute;
        }
        report.Note(fmt::format("of {}, these attributes were left out: {}", Printable(element),
                                Printable(list)));
    }
}

}  // namespace cqsurvey::exchange::landxml
