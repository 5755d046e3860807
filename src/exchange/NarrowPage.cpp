#include "exchange/NarrowPage.h"

#include <fmt/format.h>

#include "cqsurvey/exchange/ExchangeError.h"

namespace cqsurvey::exchange {

CqCodePage RequireNarrowPage(int number) {
    CqCodePage page(number);
    if (!page.KeepsAscii()) {
        throw OptionError(
            fmt::format("{} is not a narrow code page that this system knows; 65001 is UTF-8, 1252 "
                        "Western Europe, 1251 Cyrillic, 932 Japan",
                        number));
    }
    return page;
}

}  // namespace cqsurvey::exchange
