#pragma once

/// Marks what libcqsurvey.so shows to an application; everything else is hidden.
#define CQSURVEY_API __attribute__((visibility("default")))
