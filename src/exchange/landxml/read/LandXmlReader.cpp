#include "cqsurvey/exchange/LandXmlReader.h"

#include <cmath>
#include <utility>

#include "cqsurvey/CqBatch.h"
#include "cqsurvey/CqSurveyDB.h"
#include "cqsurvey/exchange/ExchangeError.h"
#include "exchange/landxml/read/FileImport.h"

namespace cqsurvey::exchange {

LandXmlReader::LandXmlReader(TextSource& source, LandXmlReadOptions options)
    : m_source(source), m_options(std::move(options)) {
    if (!std::isfinite(m_options.tolerance) || !(m_options.tolerance > 0.0)) {
        throw OptionError("the tolerance must be a positive number");
    }
}

DrawingReport LandXmlReader::Import(CqSurveyDB& db) {
    CqBatch batch(db);
    DrawingReport report;
    landxml::FileImport(m_source, m_options, db, report).Run();
    batch.Commit();
    return report;
}

}  // namespace cqsurvey::exchange
