#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "cqsurvey/CqLengthUnit.h"
#include "cqsurvey/exchange/Export.h"

namespace cqsurvey::exchange {

/// A coordinate reference system of the PROJ database, or one that a text defines.
class CQSURVEY_EXCHANGE_API CoordinateSystem {
 public:
    enum class Kind {
        Projected,   ///< northings and eastings on a plane
        Geographic,  ///< latitudes and longitudes
        Other        ///< anything else, such as heights alone
    };

    /// Finds a system by its code ("EPSG:2230"), by its name in the database, or by a definition as
    /// WKT or a PROJ string. Throws OptionError when there is none, and ExchangeError when PROJ has
    /// no database to look in.
    [[nodiscard]] static CoordinateSystem Find(std::string_view text);

    /// The code, such as "EPSG:2230"; the text that it was found by when it has none.
    [[nodiscard]] const std::string& GetId() const { return m_id; }

    /// The name, such as "NAD83 / California zone 6 (ftUS)".
    [[nodiscard]] const std::string& GetName() const { return m_name; }

    [[nodiscard]] Kind GetKind() const { return m_kind; }

    /// The unit of a projected system's northings and eastings; nothing for another kind, and for a
    /// unit that no job has.
    [[nodiscard]] std::optional<CqLengthUnit> GetUnit() const { return m_unit; }

    /// "EPSG:2230 NAD83 / California zone 6 (ftUS)", or the name alone when there is no code.
    [[nodiscard]] std::string Describe() const;

 private:
    CoordinateSystem() = default;

    std::string m_id;
    std::string m_name;
    Kind m_kind = Kind::Other;
    std::optional<CqLengthUnit> m_unit;
};

}  // namespace cqsurvey::exchange
