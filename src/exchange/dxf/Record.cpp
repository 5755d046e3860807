#include "exchange/dxf/Record.h"

#include <fmt/format.h>

#include <charconv>
#include <cmath>
#include <limits>
#include <system_error>

#include "text/NumberText.h"
#include "text/Printable.h"

namespace cqsurvey::exchange::dxf {

void Record::Begin(const Origin& origin, const Group& group) {
    m_origin = &origin;
    m_entries.clear();
    m_text.clear();
    type = group.value;
    place = group.place;
}

void Record::Add(const Group& group, std::size_t most) {
    if (m_text.size() + group.value.size() > most || m_entries.size() >= most / sizeof(Entry)) {
        m_origin->Fail(group.place, fmt::format("{} goes on for too long",
                                                Quoted(type.empty() ? "a record" : type)));
    }
    m_entries.push_back({group.code, static_cast<std::uint32_t>(m_text.size()),
                         static_cast<std::uint32_t>(group.value.size()),
                         static_cast<std::uint32_t>(group.place - place)});
    m_text += group.value;
}

double Record::Number(const Entry& entry) const {
    std::string_view text = Trim(Text(entry));
    if (text.starts_with('+')) {
        text.remove_prefix(1);
    }
    double value = 0.0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error == std::errc::result_out_of_range && end == text.data() + text.size()) {
        // Programs write numbers as small as 1e-320 where they mean 0.
        return text.find("e-") != std::string_view::npos ||
                       text.find("E-") != std::string_view::npos
                   ? 0.0
                   : HUGE_VAL;
    }
    if (error != std::errc{} || end != text.data() + text.size()) {
        m_origin->Fail(place + entry.place, fmt::format("{} of group {} is not a number",
                                                        Quoted(Text(entry)), entry.code));
    }
    return value;
}

int Record::Whole(const Entry& entry) const {
    if (const std::optional<std::int32_t> value = ParseWholeNumber(Text(entry))) {
        return *value;
    }
    const double value = Number(entry);
    if (!(std::fabs(value) <= 2147483647.0) || value != std::floor(value)) {
        m_origin->Fail(place + entry.place, fmt::format("{} of group {} is not a whole number",
                                                        Quoted(Text(entry)), entry.code));
    }
    return static_cast<int>(value);
}

const Entry* Record::Find(int code) const {
    for (const Entry& entry : m_entries) {
        if (entry.code == code) {
            return &entry;
        }
        if (entry.code == 0) {
            break;
        }
    }
    return nullptr;
}

std::string_view Record::Text(int code, std::string_view fallback) const {
    const Entry* entry = Find(code);
    return entry == nullptr ? fallback : Text(*entry);
}

double Record::Number(int code, double fallback) const {
    const Entry* entry = Find(code);
    return entry == nullptr ? fallback : Number(*entry);
}

int Record::Whole(int code, int fallback) const {
    const Entry* entry = Find(code);
    return entry == nullptr ? fallback : Whole(*entry);
}

void Record::ForEachPart(const std::function<void(const Record&)>& take) const {
    Record part;
    for (const Entry& entry : m_entries) {
        const Group group{entry.code, Text(entry), place + entry.place};
        if (entry.code != 0) {
            if (part.m_origin != nullptr) {
                part.Add(group, std::numeric_limits<std::size_t>::max());
            }
            continue;
        }
        if (part.m_origin != nullptr) {
            take(part);
        }
        part.Begin(*m_origin, group);
    }
    if (part.m_origin != nullptr) {
        take(part);
    }
}

std::size_t Record::GetSize() const {
    return sizeof(Record) + type.capacity() + m_text.capacity() +
           m_entries.capacity() * sizeof(Entry);
}

void Record::Shrink() {
    m_entries.shrink_to_fit();
    m_text.shrink_to_fit();
}

}  // namespace cqsurvey::exchange::dxf
