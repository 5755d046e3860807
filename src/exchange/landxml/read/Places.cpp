#include "exchange/landxml/read/Places.h"

#include <algorithm>
#include <cstddef>
#include <limits>

#include "text/NumberText.h"

namespace cqsurvey::exchange::landxml {

namespace {

constexpr std::string_view kBlanks = " \t\r\n";

/// Takes the next word off the text; empty at its end.
std::string_view TakeWord(std::string_view& text) {
    const std::size_t begin = std::min(text.find_first_not_of(kBlanks), text.size());
    text.remove_prefix(begin);
    const std::string_view word = text.substr(0, text.find_first_of(kBlanks));
    text.remove_prefix(word.size());
    return word;
}

Place MakePlace(const double* numbers, int size, double scale) {
    Place place;
    place.at = {numbers[1] * scale, numbers[0] * scale, size == 3 ? numbers[2] * scale : 0.0};
    place.hasHeight = size == 3;
    place.known = true;
    return place;
}

}  // namespace

std::optional<double> ReadNumber(std::string_view text) {
    if (text == "INF" || text == "+INF") {
        return std::numeric_limits<double>::infinity();
    }
    const ParsedNumber number = ParseNumber(text);
    return number.fault == nullptr ? std::optional(number.value) : std::nullopt;
}

std::optional<std::vector<Place>> ReadPlaces(std::string_view text, int size, double scale) {
    std::vector<Place> places;
    double numbers[3] = {};
    int count = 0;
    for (std::string_view word = TakeWord(text); !word.empty(); word = TakeWord(text)) {
        const ParsedNumber number = ParseNumber(word);
        if (number.fault != nullptr) {
            return std::nullopt;
        }
        numbers[count++] = number.value;
        if (count == size) {
            places.push_back(MakePlace(numbers, size, scale));
            count = 0;
        }
    }
    return count == 0 ? std::optional(std::move(places)) : std::nullopt;
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

void PlaceTable::Add(const std::string& name, const Place& place) {
    m_places.try_emplace(name, Named{place});
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
