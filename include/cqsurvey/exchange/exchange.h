#pragma once

/// Reads and writes other formats than the job's own: everything an application needs.
///
/// Field text files are the lists of points that surveyors exchange as CSV and the like:
/// FieldTextReader reads a file into an open job, FieldTextWriter makes the lines of a file. DXF,
/// LandXML and SIMA files are drawings: DxfReader, LandXmlReader and SimaReader read one into an
/// open job, DxfWriter, LandXmlWriter and SimaWriter write a job as one. GeoJsonWriter and
/// KmlWriter write one for the globe. CodeTable and FieldDrawing make the drawing of a job from the
/// field codes of its points. JobInspection looks for mistakes in the points of a job, such as
/// those that come with a file.

#include "cqsurvey/exchange/CodeReport.h"
#include "cqsurvey/exchange/CodeTable.h"
#include "cqsurvey/exchange/ColumnOrder.h"
#include "cqsurvey/exchange/CoordinateOperation.h"
#include "cqsurvey/exchange/CoordinateSystem.h"
#include "cqsurvey/exchange/DrawingReport.h"
#include "cqsurvey/exchange/DxfReader.h"
#include "cqsurvey/exchange/DxfWriter.h"
#include "cqsurvey/exchange/ExchangeError.h"
#include "cqsurvey/exchange/FieldDrawing.h"
#include "cqsurvey/exchange/FieldText.h"
#include "cqsurvey/exchange/FieldTextReader.h"
#include "cqsurvey/exchange/FieldTextWriter.h"
#include "cqsurvey/exchange/ForeignFile.h"
#include "cqsurvey/exchange/GeoJsonWriter.h"
#include "cqsurvey/exchange/ImageHeader.h"
#include "cqsurvey/exchange/Import.h"
#include "cqsurvey/exchange/ImportReport.h"
#include "cqsurvey/exchange/JobInspection.h"
#include "cqsurvey/exchange/KmlWriter.h"
#include "cqsurvey/exchange/LandXmlReader.h"
#include "cqsurvey/exchange/LandXmlWriter.h"
#include "cqsurvey/exchange/LengthUnit.h"
#include "cqsurvey/exchange/SimaReader.h"
#include "cqsurvey/exchange/SimaWriter.h"
#include "cqsurvey/exchange/TextSource.h"
