#include "exchange/systems/Proj.h"

#include <new>

namespace cqsurvey::exchange {

ProjContext MakeProjContext() {
    ProjContext context(proj_context_create());
    if (!context) {
        throw std::bad_alloc();
    }
    proj_log_level(context.get(), PJ_LOG_NONE);
    proj_context_set_enable_network(context.get(), 0);
    return context;
}

}  // namespace cqsurvey::exchange
