#include "exchange/Headings.h"

#include <glib.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <memory>

namespace cqsurvey::exchange {

namespace {

constexpr std::size_t kAccentLength = 2;

/// True when `text` begins with one of the combining marks U+0300 to U+036F, in UTF-8.
bool IsAccent(std::string_view text) {
    return text.size() >= kAccentLength &&
           (text[0] == '\xCC' || (text[0] == '\xCD' && static_cast<unsigned char>(text[1]) < 0xB0));
}

struct Heading {
    std::string_view text;
    Column column;
};

constexpr std::array kHeadings = {
    Heading{"name", Column::Name},
    Heading{"p", Column::Name},
    Heading{"point", Column::Name},
    Heading{"pointname", Column::Name},
    Heading{"pointno", Column::Name},
    Heading{"pointnumber", Column::Name},
    Heading{"pointid", Column::Name},
    Heading{"pt", Column::Name},
    Heading{"ptname", Column::Name},
    Heading{"ptno", Column::Name},
    Heading{"ptid", Column::Name},
    Heading{"pno", Column::Name},
    Heading{"number", Column::Name},
    Heading{"no", Column::Name},
    Heading{"nr", Column::Name},
    Heading{"num", Column::Name},
    Heading{"id", Column::Name},
    Heading{"nombre", Column::Name},
    Heading{"numero", Column::Name},
    Heading{"punto", Column::Name},
    Heading{"vertice", Column::Name},
    Heading{"nome", Column::Name},
    Heading{"ponto", Column::Name},
    Heading{"punkt", Column::Name},
    Heading{"punktnummer", Column::Name},
    Heading{"punktnr", Column::Name},
    Heading{"easting", Column::Easting},
    Heading{"east", Column::Easting},
    Heading{"e", Column::Easting},
    Heading{"x", Column::Easting},
    Heading{"este", Column::Easting},
    Heading{"leste", Column::Easting},
    Heading{"rechtswert", Column::Easting},
    Heading{"ostwert", Column::Easting},
    Heading{"northing", Column::Northing},
    Heading{"north", Column::Northing},
    Heading{"n", Column::Northing},
    Heading{"y", Column::Northing},
    Heading{"norte", Column::Northing},
    Heading{"hochwert", Column::Northing},
    Heading{"nordwert", Column::Northing},
    Heading{"height", Column::Height},
    Heading{"elevation", Column::Height},
    Heading{"elev", Column::Height},
    Heading{"level", Column::Height},
    Heading{"z", Column::Height},
    Heading{"h", Column::Height},
    Heading{"altitude", Column::Height},
    Heading{"cota", Column::Height},
    Heading{"altura", Column::Height},
    Heading{"altitud", Column::Height},
    Heading{"elevacion", Column::Height},
    Heading{"elevacao", Column::Height},
    Heading{"hohe", Column::Height},
    Heading{"hoehe", Column::Height},
    Heading{"code", Column::Code},
    Heading{"featurecode", Column::Code},
    Heading{"codigo", Column::Code},
    Heading{"description", Column::Description},
    Heading{"desc", Column::Description},
    Heading{"descr", Column::Description},
    Heading{"d", Column::Description},
    Heading{"comment", Column::Description},
    Heading{"comments", Column::Description},
    Heading{"comm", Column::Description},
    Heading{"remark", Column::Description},
    Heading{"remarks", Column::Description},
    Heading{"note", Column::Description},
    Heading{"notes", Column::Description},
    Heading{"descripcion", Column::Description},
    Heading{"descricao", Column::Description},
    Heading{"comentario", Column::Description},
    Heading{"observacion", Column::Description},
    Heading{"observacao", Column::Description},
    Heading{"beschreibung", Column::Description},
    Heading{"bemerkung", Column::Description},
    Heading{"group", Column::Group},
    Heading{"layer", Column::Layer},
    Heading{"flags", Column::Flags},
    Heading{"origin", Column::Origin},
    Heading{"timeutc", Column::Time},
};

constexpr std::array kDegreeHeadings = {
    Heading{"lat", Column::Northing},     Heading{"latitude", Column::Northing},
    Heading{"latitud", Column::Northing}, Heading{"breite", Column::Northing},
    Heading{"lon", Column::Easting},      Heading{"long", Column::Easting},
    Heading{"lng", Column::Easting},      Heading{"longitude", Column::Easting},
    Heading{"longitud", Column::Easting}, Heading{"lange", Column::Easting},
    Heading{"laenge", Column::Easting},
};

template <class Table>
std::optional<Column> Find(const Table& table, std::string_view heading) {
    const std::string plain = NormaliseHeading(heading);
    const auto known = std::find_if(table.begin(), table.end(),
                                    [&](const Heading& entry) { return entry.text == plain; });
    return known == table.end() ? std::nullopt : std::optional(known->column);
}

}  // namespace

std::string NormaliseHeading(std::string_view heading) {
    // In decomposed text, an accent is a character of its own after its letter. Text that is not
    // UTF-8 cannot be decomposed and stays as it is.
    const std::unique_ptr<char, decltype(&g_free)> decomposed(
        g_utf8_normalize(heading.data(), static_cast<gssize>(heading.size()), G_NORMALIZE_NFD),
        &g_free);
    std::string_view rest = decomposed ? std::string_view(decomposed.get()) : heading;
    std::string plain;
    bool afterLetter = false;
    while (!rest.empty()) {
        const char c = rest.front();
        if (afterLetter && IsAccent(rest)) {
            rest.remove_prefix(kAccentLength);
            continue;
        }
        afterLetter = g_ascii_isalpha(c) != 0;
        if (g_ascii_isalnum(c) != 0 || static_cast<unsigned char>(c) >= 0x80) {
            plain += g_ascii_tolower(c);
        }
        rest.remove_prefix(1);
    }
    return plain;
}

std::optional<Column> RecogniseHeading(std::string_view heading) {
    return Find(kHeadings, heading);
}

std::optional<Column> RecogniseDegrees(std::string_view heading) {
    return Find(kDegreeHeadings, heading);
}

}  // namespace cqsurvey::exchange
