#pragma once

/// The job database of a field surveying application: everything an application needs.

#if __cplusplus < 202002L
#error "cqsurvey needs C++20 (-std=c++20)"
#endif

#include "cqsurvey/CException.h"
#include "cqsurvey/CQrfsFileException.h"
#include "cqsurvey/CVector.h"
#include "cqsurvey/CodePage.h"
#include "cqsurvey/CodeWord.h"
#include "cqsurvey/CqBatch.h"
#include "cqsurvey/CqBitmapCadEntity.h"
#include "cqsurvey/CqCadEntity.h"
#include "cqsurvey/CqCadEntityList.h"
#include "cqsurvey/CqCadEntityPtr.h"
#include "cqsurvey/CqCircleCadEntity.h"
#include "cqsurvey/CqCoordRec.h"
#include "cqsurvey/CqJobCheck.h"
#include "cqsurvey/CqJobIdentity.h"
#include "cqsurvey/CqJobRepair.h"
#include "cqsurvey/CqJobSystem.h"
#include "cqsurvey/CqLengthUnit.h"
#include "cqsurvey/CqPalette.h"
#include "cqsurvey/CqPlineCadEntity.h"
#include "cqsurvey/CqSiPntCadEntity.h"
#include "cqsurvey/CqSurveyDB.h"
#include "cqsurvey/CqSurveyException.h"
#include "cqsurvey/CqTextCadEntity.h"
#include "cqsurvey/CqVertexCadEntity.h"
#include "cqsurvey/ErrorCodes.h"
#include "cqsurvey/Limits.h"
#include "cqsurvey/Ranges.h"
#include "cqsurvey/Records.h"
#include "cqsurvey/Text.h"
#include "cqsurvey/Types.h"
