#pragma once

#include <string>

#include "cqsurvey/exchange/SimaReader.h"
#include "cqsurvey/exchange/SimaWriter.h"
#include "cqsurvey/exchange/TextSource.h"
#include "exchange/drawing/DrawingJob.h"

namespace cqsurvey::exchange {

/// A new job, and what was drawn in it from a SIMA file.
class SimaJob : public DrawingJob {
 public:
    DrawingReport Read(const std::string& text, const SimaReadOptions& options = {}) {
        StringSource source(text, 5);
        return SimaReader(source, options).Import(db);
    }

    DrawingReport WriteTo(std::string& text,
                          const SimaWriteOptions& options = {.unit = LengthUnit::Metre}) {
        return SimaWriter(db, options, [&](std::string_view bytes) { text += bytes; }).Write();
    }

    std::string Write(const SimaWriteOptions& options = {.unit = LengthUnit::Metre}) {
        std::string text;
        static_cast<void>(WriteTo(text, options));
        return text;
    }
};

}  // namespace cqsurvey::exchange
