#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "cqsurvey/exchange/ExchangeError.h"
#include "cqsurvey/exchange/Export.h"

namespace cqsurvey::exchange {

/// Kinds of files that are no texts of points.
enum class ForeignFile { Dxf, Dwg, LandXml, Xml, Gzip, Zip, Job, Database, Picture, Pdf, Program };

/// What kind of file begins with these bytes; nothing when it may be a text of points. The first
/// 4,096 bytes are enough, or the whole of a shorter file.
[[nodiscard]] CQSURVEY_EXCHANGE_API std::optional<ForeignFile> FindForeignFile(
    std::string_view start);

/// The kind in words, such as "a DXF drawing".
[[nodiscard]] CQSURVEY_EXCHANGE_API const char* DescribeForeignFile(ForeignFile kind);

/// A file that should be a text of points is something else.
class CQSURVEY_EXCHANGE_API ForeignFileError : public ExchangeError {
 public:
    ForeignFileError(const std::string& text, ForeignFile kind)
        : ExchangeError(text), m_kind(kind) {}

    [[nodiscard]] ForeignFile GetKind() const { return m_kind; }

 private:
    ForeignFile m_kind;
};

}  // namespace cqsurvey::exchange
