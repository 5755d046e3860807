#pragma once

#include <string>
#include <utility>

#include "cqsurvey/exchange/TextSource.h"

namespace cqsurvey::exchange {

/// A file that goes on with the same piece for ever.
class EndlessSource : public TextSource {
 public:
    EndlessSource(std::string begin, std::string piece)
        : TextSource("endless"), m_begin(std::move(begin)), m_piece(std::move(piece)) {}

 private:
    void ReadSome(std::string& buffer) override { buffer += std::exchange(m_begin, m_piece); }

    std::string m_begin;
    std::string m_piece;
};

}  // namespace cqsurvey::exchange
