#pragma once

/// Other formats in and out of a job: everything an application needs.
///
/// So far field text files, the lists of points that surveyors pass on as CSV and the like.
/// FieldTextReader reads one into an open job, FieldTextWriter makes the lines of one.

#include "cqsurvey/exchange/ColumnOrder.h"
#include "cqsurvey/exchange/ExchangeError.h"
#include "cqsurvey/exchange/FieldText.h"
#include "cqsurvey/exchange/FieldTextReader.h"
#include "cqsurvey/exchange/FieldTextWriter.h"
#include "cqsurvey/exchange/Import.h"
#include "cqsurvey/exchange/ImportReport.h"
#include "cqsurvey/exchange/TextSource.h"
