#pragma once

/// Marks what libcqsurvey_plan.so shows to an application; everything else is hidden.
#define CQSURVEY_PLAN_API __attribute__((visibility("default")))
