#pragma once

#include <optional>
#include <string>

#include "cqsurvey/exchange/LengthUnit.h"
#include "exchange/dxf/Record.h"

namespace cqsurvey::exchange::dxf {

/// What the header of a file says about the file.
struct Header {
    std::string version = "AC1009";  ///< of a file that does not say
    std::string codePage;            ///< such as ANSI_1252
    int unit = 0;                    ///< $INSUNITS, 0 for none

    /// Reads the groups of the header's section.
    void Read(const Record& section);

    /// "R2000", or the file's own word for a version that is not known.
    [[nodiscard]] std::string DescribeVersion() const;

    /// The number of the code page of the file's texts; nothing when its name is not known.
    [[nodiscard]] std::optional<int> GetCodePage() const;
};

}  // namespace cqsurvey::exchange::dxf
