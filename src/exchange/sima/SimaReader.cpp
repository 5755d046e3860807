#include "cqsurvey/exchange/SimaReader.h"

#include <fmt/format.h>

#include <utility>

#include "cqsurvey/CodePage.h"
#include "cqsurvey/CqBatch.h"
#include "cqsurvey/CqSurveyDB.h"
#include "cqsurvey/exchange/ExchangeError.h"
#include "exchange/sima/FileImport.h"

namespace cqsurvey::exchange {

SimaReader::SimaReader(TextSource& source, SimaReadOptions options)
    : m_source(source), m_options(std::move(options)) {
    if (!CqCodePage(m_options.codePage).KeepsAscii()) {
        throw OptionError(fmt::format("code page {} is not known", m_options.codePage));
    }
}

DrawingReport SimaReader::Import(CqSurveyDB& db) {
    CqBatch batch(db);
    DrawingReport report;
    sima::FileImport(m_source, m_options, db, report).Run();
    batch.Commit();
    return report;
}

}  // namespace cqsurvey::exchange
