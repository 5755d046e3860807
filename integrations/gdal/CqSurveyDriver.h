#pragma once

#include <cpl_port.h>

/// Registers the driver "CqSurvey" with GDAL, which calls it when it loads the plugin. Does nothing
/// the second time.
extern "C" CPL_DLL void RegisterOGRCqSurvey();
