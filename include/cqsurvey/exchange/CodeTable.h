#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "cqsurvey/CqCodeTable.h"
#include "cqsurvey/exchange/Export.h"
#include "cqsurvey/exchange/TextSource.h"

namespace cqsurvey::exchange {

/// What is wrong with a line of a code table: an English sentence in UTF-8, without the line.
struct CodeTableFault {
    std::uint64_t line = 0;
    std::string text;
};

/// A code table that was read from a file. It makes sense only when there are no faults.
struct CodeTable {
    CqCodeTable codes;
    std::vector<CodeTableFault> faults;
};

/// Reads a code table as a spreadsheet saves it: UTF-8, comma, semicolon or tab between columns (as
/// in the heading), with the semicolon also a decimal comma.
///
///     code,number,layer,color,line,kind,symbol,size,label,text
///     EP,12,Road,7,0,line,,,,
///     TREE*,40,Trees,3,,point,deciduous,4,{text},
///     *,,Other,,,point,,,,
///
/// The heading names the columns, in any order; only `code` must be there. An empty number is 0, an
/// empty colour or line that of the layer, an empty kind `point`. A line that begins with "#" is a
/// comment. Reading goes on after a fault, up to kMostFaults. Throws ExchangeError when the source
/// cannot be read, and OptionError when `words` makes no sense (see DrawOptions).
[[nodiscard]] CQSURVEY_EXCHANGE_API CodeTable ReadCodeTable(TextSource& source,
                                                            const std::string& words = {});

inline constexpr std::size_t kMostFaults = 100;

/// The table as such a file, from which ReadCodeTable reads the same rows: UTF-8 with CR LF.
[[nodiscard]] CQSURVEY_EXCHANGE_API std::string FormatCodeTable(const CqCodeTable& table);

}  // namespace cqsurvey::exchange
