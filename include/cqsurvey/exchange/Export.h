#pragma once

/// Marks what libcqsurvey_exchange.so shows to an application; everything else is hidden.
#define CQSURVEY_EXCHANGE_API __attribute__((visibility("default")))
