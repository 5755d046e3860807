#pragma once

#include <proj.h>

#include <memory>

namespace cqsurvey::exchange {

struct ProjDeleter {
    void operator()(PJ_CONTEXT* context) const { proj_context_destroy(context); }
    void operator()(PJ* object) const { proj_destroy(object); }
};

using ProjContext = std::unique_ptr<PJ_CONTEXT, ProjDeleter>;
using ProjObject = std::unique_ptr<PJ, ProjDeleter>;

/// A context of PROJ that prints nothing and does not use the network.
[[nodiscard]] ProjContext MakeProjContext();

}  // namespace cqsurvey::exchange
