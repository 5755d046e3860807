#include "exchange/FieldTextRow.h"

#include <algorithm>
#include <utility>

#include "exchange/TimeText.h"
#include "text/NumberText.h"

namespace cqsurvey::exchange {

FieldTextRow::FieldTextRow(ColumnOrder order, Separator separator, std::optional<int> decimals,
                           bool decimalComma, bool safe)
    : m_order(std::move(order)),
      m_separator(separator),
      m_decimals(decimals),
      m_decimalComma(decimalComma),
      m_safe(safe) {}

std::string FieldTextRow::Number(double value) const {
    std::string text = m_decimals ? FormatNumber(value, *m_decimals) : FormatNumber(value);
    if (m_decimalComma) {
        std::replace(text.begin(), text.end(), '.', ',');
    }
    return text;
}

/// A spreadsheet runs what begins like a formula, unless an apostrophe is before it.
std::string FieldTextRow::Text(const std::string& text) const {
    constexpr std::string_view kStarts = "=+-@\t\r";
    const bool starts = !text.empty() && kStarts.find(text.front()) != std::string_view::npos;
    return m_safe && starts && ParseNumber(text, m_decimalComma).fault != nullptr ? "'" + text
                                                                                  : text;
}

std::string FieldTextRow::MakeHeader() const {
    static constexpr std::array<std::pair<Column, const char*>, kColumnCount> kHeadings = {{
        {Column::Name, "Name"},
        {Column::Northing, "Northing"},
        {Column::Easting, "Easting"},
        {Column::Height, "Height"},
        {Column::Code, "Code"},
        {Column::Description, "Description"},
        {Column::Group, "Group"},
        {Column::Layer, "Layer"},
        {Column::Flags, "Flags"},
        {Column::Origin, "Origin"},
        {Column::Time, "Time UTC"},
    }};
    CsvWriter writer(m_separator);
    for (std::size_t i = 0; i < m_order.GetWidth(); ++i) {
        const auto* const heading =
            std::find_if(kHeadings.begin(), kHeadings.end(),
                         [&](const auto& entry) { return m_order.Find(entry.first) == i; });
        writer.Add(heading == kHeadings.end() ? "" : heading->second);
    }
    return writer.TakeLine();
}

std::string FieldTextRow::Make(const PointTexts& point) const {
    CsvWriter writer(m_separator);
    for (std::size_t i = 0; i < m_order.GetWidth(); ++i) {
        const auto is = [&](Column column) { return m_order.Find(column) == i; };
        if (is(Column::Name)) {
            writer.Add(Text(point.name));
        } else if (is(Column::Easting)) {
            writer.Add(Number(point.coords[0]));
        } else if (is(Column::Northing)) {
            writer.Add(Number(point.coords[1]));
        } else if (is(Column::Height)) {
            writer.Add(Number(point.coords[2]));
        } else if (is(Column::Code)) {
            writer.Add(std::to_string(point.code));
        } else if (is(Column::Group)) {
            writer.Add(point.group);
        } else if (is(Column::Layer)) {
            writer.Add(point.layer);
        } else if (is(Column::Flags)) {
            writer.Add(std::to_string(point.flags));
        } else if (is(Column::Origin)) {
            writer.Add(std::to_string(point.origin));
        } else if (is(Column::Time)) {
            writer.Add(FormatTime(point.time));
        } else if (!is(Column::Description)) {
            writer.Add("");
        } else if (m_order.Find(Column::Code)) {
            writer.Add(Text(point.description));
        } else {
            AddRest(writer, point);
        }
    }
    return writer.TakeLine();
}

/// Adds the description's column of an order that has no code column.
void FieldTextRow::AddRest(CsvWriter& writer, const PointTexts& point) const {
    const bool plain = !ParseWholeNumber(point.description).has_value();
    if (point.code == 0 && plain) {
        writer.Add(Text(point.description));
        return;
    }
    writer.Add(std::to_string(point.code));
    if (!point.description.empty()) {
        writer.Add(Text(point.description), true);
    }
}

}  // namespace cqsurvey::exchange
