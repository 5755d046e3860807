#include "cqsurvey/exchange/FieldTextReader.h"

#include <fmt/format.h>

#include <utility>

#include "cqsurvey/CodePage.h"
#include "cqsurvey/CqBatch.h"
#include "cqsurvey/CqSurveyDB.h"
#include "cqsurvey/Text.h"
#include "cqsurvey/exchange/ExchangeError.h"
#include "exchange/FieldTextFile.h"
#include "exchange/PointImport.h"
#include "text/Printable.h"

namespace cqsurvey::exchange {

namespace {

void UseGroup(CqSurveyDB& db, const ImportOptions& options) {
    const CString& group = options.group;
    if (db.SetCurrentGroup(group) == 0 &&
        (db.AddGroup(group) == 0 || db.SetCurrentGroup(group) == 0)) {
        throw ExchangeError(fmt::format("{}the group {} could not be added",
                                        NamePrefix(options.jobName), Quoted(ToUtf8(group))));
    }
}

}  // namespace

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
    CqBatch batch(db);
    if (!options.group.empty()) {
        UseGroup(db, options);
    }
    ImportReport report(options.note);
    PointImport(db, report, options.duplicates, options.origin)
        .Run(*m_file, m_source, options.progress);
    const bool refused = report.Get(Fate::Refused) > 0;
    if (refused && options.strict) {
        report.Withhold();
    } else if (!refused || report.Get(Fate::Recorded) > 0) {
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
