#include "exchange/landxml/read/Places.h"

#include <algorithm>
#include <cstddef>
#include <limits>
#include <vector>

#include "text/NumberText.h"

namespace cqsurvey::exchange::landxml {

namespace {

Place MakePlace(const double* numbers, int size, double scale) {
    Place place;
    place.at = {numbers[1] * scale, numbers[0] * scale, size == 3 ? numbers[2] * scale : 0.0};
    place.hasHeight = size == 3;
    place.known = true;
    return place;
}

}  // namespace

std::string_view TakeWord(std::string_view& text) {
    constexpr std::string_view kBlanks = " \t\r\n";
    const std::size_t begin = std::min(text.find_first_not_of(kBlanks), text.size());
    text.remove_prefix(begin);
    const std::string_view word = text.substr(0, text.find_first_of(kBlanks));
    text.remove_prefix(word.size());
    return word;
}

std::optional<double> ReadNumber(std::string_view text) {
    if (text == "INF" || text == "+INF") {
        return std::numeric_limits<double>::infinity();
    }
    const ParsedNumber number = ParseNumber(text);
    return number.fault == nullptr ? std::optional(number.value) : std::nullopt;
}

std::optional<std::size_t> CountPlaces(std::string_view text, int size) {
    std::size_t numbers = 0;
    for (std::string_view word = TakeWord(text); !word.empty(); word = TakeWord(text)) {
        if (ParseNumber(word).fault != nullptr) {
            return std::nullopt;
        }
        ++numbers;
    }
    const auto each = static_cast<std::size_t>(size);
    return numbers % each == 0 ? std::optional(numbers / each) : std::nullopt;
}

Place TakePlace(std::string_view& text, int size, double scale) {
    double numbers[3] = {};
    for (int i = 0; i < size; ++i) {
        numbers[i] = ParseNumber(TakeWord(text)).value;
    }
    return MakePlace(numbers, size, scale);
}

std::optional<Place> ReadPlace(std::string_view text, double scale) {
    double numbers[3] = {};
    int count = 0;
    for (std::string_view word = TakeWord(text); !word.empty(); word = TakeWord(text)) {
        const ParsedNumber number = ParseNumber(word);
        if (number.fault != nullptr || count == 3) {
            return std::nullopt;
        }
        numbers[count++] = number.value;
    }
    return count >= 2 ? std::optional(MakePlace(numbers, count, scale)) : std::nullopt;
}

std::size_t PlaceTable::Add(const std::string& name, const Place& place) {
    // A node of the map beside its value, about.
    constexpr std::size_t kNode = 48;
    const bool added = m_places.try_emplace(name, Named{place}).second;
    return added ? kNode + sizeof name + name.size() + sizeof(Named) + place.ref.size() : 0;
}

bool PlaceTable::Resolve(Place& place) {
    ++m_walks;
    std::vector<Place*> passed;
    Place* last = &place;
    while (!last->known && !last->ref.empty()) {
        const auto found = m_places.find(last->ref);
        // Names that go in a circle lead to nothing, too.
        if (found == m_places.end() || found->second.walk == m_walks) {
            break;
        }
        found->second.walk = m_walks;
        last = &found->second.place;
        passed.push_back(last);
    }
    if (passed.empty()) {
        return place.known;
    }
    passed.pop_back();
    CqHandle entity = last->entity;
    const auto lead = [&](Place& to) {
        entity = to.entity == 0 ? entity : to.entity;
        if (last->known) {
            to.at = last->at;
            to.hasHeight = last->hasHeight;
            to.known = true;
            to.entity = entity;
        }
    };
    std::for_each(passed.rbegin(), passed.rend(), [&](Place* to) {
        lead(*to);
        to->ref = last->ref;
    });
    lead(place);
    return place.known;
}

}  // namespace cqsurvey::exchange::landxml
