#pragma once

#include <stdexcept>

#include "cqsurvey/exchange/Export.h"

namespace cqsurvey::exchange {

/// A file could not be read or written. what() is an English sentence in UTF-8, without control
/// characters. It names the file and, when there is one, the line.
class CQSURVEY_EXCHANGE_API ExchangeError : public std::runtime_error {
 public:
    using std::runtime_error::runtime_error;
};

/// The options make no sense, by themselves or for this file. Other options may help.
class CQSURVEY_EXCHANGE_API OptionError : public ExchangeError {
 public:
    using ExchangeError::ExchangeError;
};

}  // namespace cqsurvey::exchange
