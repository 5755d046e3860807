#pragma once

#include <initializer_list>
#include <map>
#include <set>
#include <string>
#include <string_view>

#include "cqsurvey/exchange/DrawingReport.h"
#include "exchange/xml/XmlParser.h"

namespace cqsurvey::exchange::landxml {

/// Which attributes of the elements that were read nobody asked for.
class LostAttributes {
 public:
    /// `known` are those that are taken.
    void Look(const XmlElement& element, std::initializer_list<std::string_view> known);

    /// Tells them, a sentence for each kind of element.
    void Report(DrawingReport& report) const;

 private:
    std::map<std::string, std::set<std::string>, std::less<>> m_lost;  // by element
};

}  // namespace cqsurvey::exchange::landxml
