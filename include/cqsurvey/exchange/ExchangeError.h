#pragma once

#include <stdexcept>

#include "cqsurvey/exchange/Export.h"

namespace cqsurvey::exchange {

/// A file could not be read or written. what() is an English sentence in UTF-8, without control
/// characters, that names the file and, where there is one, the line.
class CQSURVEY_EXCHANGE_API ExchangeError : public std::runtime_error {
 public:
    using std::runtime_error::runtime_error;
};

/// The options make no sense, by themselves or for this file; other options would do.
class CQSURVEY_EXCHANGE_API OptionError : public ExchangeError {
 public:
    using ExchangeError::ExchangeError;
};

}  // namespace cqsurvey::exchange
