#include "cqsurvey/exchange/DxfReader.h"

#include <cmath>
#include <utility>

#include "cqsurvey/CqBatch.h"
#include "cqsurvey/CqSurveyDB.h"
#include "cqsurvey/exchange/ExchangeError.h"
#include "exchange/dxf/read/FileImport.h"

namespace cqsurvey::exchange {

DxfReader::DxfReader(TextSource& source, DxfReadOptions options)
    : m_source(source), m_options(std::move(options)) {
    const auto isPositive = [](double value) { return std::isfinite(value) && value > 0.0; };
    if (!isPositive(m_options.tolerance) || !isPositive(m_options.nameReach)) {
        throw OptionError("the tolerance and the reach of names must be positive numbers");
    }
}

DrawingReport DxfReader::Import(CqSurveyDB& db) {
    CqBatch batch(db);
    DrawingReport report;
    dxf::FileImport(m_source, m_options, db, report).Run();
    batch.Commit();
    return report;
}

}  // namespace cqsurvey::exchange
