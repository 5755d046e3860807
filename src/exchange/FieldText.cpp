#include "cqsurvey/exchange/FieldText.h"

namespace cqsurvey::exchange {

const char* SeparatorWord(Separator separator) {
    switch (separator) {
        case Separator::Comma:
            return "comma";
        case Separator::Semicolon:
            return "semicolon";
        case Separator::Tab:
            return "tab";
        case Separator::Blank:
            break;
    }
    return "blank";
}

}  // namespace cqsurvey::exchange
