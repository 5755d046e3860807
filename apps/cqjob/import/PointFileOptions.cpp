#include "cqjob/import/PointFileOptions.h"

#include "cqjob/Failure.h"
#include "cqjob/SeparatorOption.h"
#include "text/NumberText.h"
#include "text/Printable.h"

namespace cqsurvey::cqjob {

using exchange::ColumnOrder;

void PointFileOptions::AddTo(CommandLine& command) {
    m_command = &command;
    command
        .Add("--order", m_order, "Order of the columns: pnezd, penzd or other letters, or header")
        .Placeholder("ORDER");
    command
        .Add("--columns", m_columns,
             "Columns by words (name,easting,-,northing,height,code,desc) or by "
             "heading or number (easting=EASTING,name=3)")
        .Placeholder("LIST");
    command
        .Add("--header", m_header,
             "Lines of header: a number, none, or auto: the first line, if its northing "
             "and easting are words")
        .Placeholder("N|auto|none")
        .ShowDefault();
    AddSeparator(command, m_separator, true);
    command.Add("--comment", m_comment, "What a comment line begins with; empty: no comments")
        .Placeholder("MARK")
        .ShowDefault();
    command.AddFlag("--decimal-comma", m_decimalComma,
                    "The decimal sign is the comma, not the point");
    command
        .Add("--code-page", m_codePage,
             "Code page of the file: 65001 is UTF-8; SIMA: 932 without it")
        .Placeholder("N")
        .ShowDefault();
    command
        .Add("--no-height", m_noHeight,
             "What means a missing height, besides an empty column; may be given several times")
        .Placeholder("VALUE")
        .OneValueEach();
    command
        .Add("--from-crs", m_system,
             "The coordinate system of the file, such as EPSG:4326, if it is not that of the job")
        .Placeholder("SYSTEM");
    command
        .Add("--height-unit", m_heightUnit,
             "With --from-crs: the unit of the heights, m, ft or us-ft; without it, that of the "
             "system, and m for latitudes and longitudes")
        .Placeholder("UNIT");
    command
        .AddFlag("--plane", m_plane,
                 "These are northings and eastings, even if they look like degrees")
        .Excludes("--from-crs");
}

std::optional<int> PointFileOptions::GetCodePage() const {
    return m_command->IsGiven("--code-page") ? std::optional(m_codePage) : std::nullopt;
}

exchange::FieldTextReadOptions PointFileOptions::Read() const {
    exchange::FieldTextReadOptions options;
    const bool assigns = ColumnOrder::IsAssignment(m_columns);
    if (m_order.empty() && m_columns.empty()) {
        throw UsageError(
            "which column is the northing and which the easting? Use --order pnezd, --order "
            "penzd, --columns or, if the file's header names them, --order header");
    }
    if (m_order == "header") {
        if (!m_columns.empty() && !assigns) {
            throw UsageError("--order header and a list of columns exclude each other");
        }
        options.recognise = true;
    } else if (!m_order.empty()) {
        if (!m_columns.empty()) {
            throw UsageError("--order and --columns exclude each other");
        }
        options.order = ColumnOrder::FromLetters(m_order, kOptionPrefix);
    } else if (!assigns) {
        options.order = ColumnOrder::FromWords(m_columns);
    }
    if (assigns) {
        options.assigned = ColumnOrder::ReadAssignments(m_columns);
    }
    if (m_header == "none") {
        options.headerLines = 0;
    } else if (m_header != "auto") {
        const std::optional<std::int32_t> lines = ParseWholeNumber(m_header);
        if (!lines || *lines < 0) {
            throw UsageError("--header takes a number of lines, auto or none, not " +
                             Quoted(m_header));
        }
        options.headerLines = static_cast<std::uint64_t>(*lines);
    }
    if (!options.order && options.headerLines == 0U) {
        throw UsageError("the columns cannot come from a header when the file has none");
    }
    if (m_separator != "auto") {
        options.separator = ReadSeparator(m_separator);
    }
    if (!m_system.empty()) {
        options.system = exchange::CoordinateSystem::Find(m_system);
    }
    if (!m_heightUnit.empty()) {
        options.heightUnit = FindLengthUnit(m_heightUnit);
        if (!options.heightUnit || m_system.empty()) {
            throw UsageError("--height-unit takes m, ft or us-ft, and needs --from-crs");
        }
    }
    options.plane = m_plane;
    options.comment = m_comment;
    options.decimalComma = m_decimalComma;
    options.codePage = m_codePage;
    options.noHeight = m_noHeight;
    options.optionPrefix = kOptionPrefix;
    return options;
}

}  // namespace cqsurvey::cqjob
