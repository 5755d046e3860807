#include "cqsurvey/exchange/FieldTextReader.h"

#include <fmt/format.h>

#include <cstdint>
#include <optional>
#include <utility>

#include "cqsurvey/CodePage.h"
#include "cqsurvey/CqBatch.h"
#include "cqsurvey/CqSurveyDB.h"
#include "cqsurvey/exchange/ExchangeError.h"
#include "exchange/FieldTextFile.h"
#include "exchange/PointImport.h"
#include "exchange/systems/PointProjection.h"
#include "text/Printable.h"

namespace cqsurvey::exchange {

FieldTextReader::FieldTextReader(TextSource& source, FieldTextReadOptions options)
    : m_source(source) {
    const int codePage = options.codePage;
    m_file = std::make_unique<FieldTextFile>(source, std::move(options));
    if (source.HasMark() && codePage != CqCodePage::kUtf8) {
        throw OptionError(fmt::format(
            "{}: begins with the byte-order mark of UTF-8, so it is not in code page {}",
            Printable(source.GetName()), codePage));
    }
}

FieldTextReader::~FieldTextReader() = default;

bool FieldTextReader::Next(FieldTextLine& line) {
    return m_file->Next(line);
}

ImportReport FieldTextReader::Import(CqSurveyDB& db, const ImportOptions& options) {
    using Fate = ImportReport::Fate;
    const FieldTextReadOptions& how = m_file->GetOptions();
    CqBatch batch(db);
    RequirePlaneJob(db);
    std::optional<PointProjection> projection;
    if (how.system) {
        projection.emplace(db, *how.system, how.heightUnit, how.optionPrefix);
    }
    ImportReport report(options.note, options.mostNotes);
    PointImport import(db, report, options, projection ? &*projection : nullptr);
    import.Run(*m_file, m_source);
    if (projection) {
        projection->Report(report);
    } else if (!how.plane && import.LooksLikeDegrees()) {
        throw OptionError(fmt::format(
            "{}: the numbers look like latitudes and longitudes, which are no northings and "
            "eastings; {}from-crs EPSG:4326 or another geographic system projects them into the "
            "job's system, and {}plane takes them for northings and eastings all the same",
            Printable(m_source.GetName()), how.optionPrefix, how.optionPrefix));
    }
    const bool refused = report.Get(Fate::Refused) > 0;
    const std::uint64_t taken = report.Get(Fate::Recorded) + report.Get(Fate::Updated);
    if (refused && options.strict) {
        report.Withhold();
    } else if (!options.dryRun && (!refused || taken > 0)) {
        batch.Commit();
    }
    return report;
}

Separator FieldTextReader::GetSeparator() const {
    return m_file->GetSeparator();
}

const std::optional<ColumnOrder>& FieldTextReader::GetOrder() const {
    return m_file->GetOrder();
}

const std::vector<std::string>& FieldTextReader::GetUntaken() const {
    return m_file->GetUntaken();
}

}  // namespace cqsurvey::exchange
