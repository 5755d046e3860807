#include "support/HostFault.h"

#include <filesystem>
#include <system_error>
#include <utility>

namespace cqsurvey {

namespace {

HostFault* s_current = nullptr;

}  // namespace

HostFault::HostFault(Kind kind, std::string ending, int at)
    : m_kind(kind), m_ending(std::move(ending)), m_left(at) {
    s_current = this;
}

HostFault::~HostFault() {
    s_current = nullptr;
}

bool HostFault::Strikes(Kind kind, int descriptor) {
    if (s_current == nullptr || s_current->m_kind != kind || s_current->m_left == 0) {
        return false;
    }
    std::error_code failure;
    const std::string path =
        std::filesystem::read_symlink("/proc/self/fd/" + std::to_string(descriptor), failure)
            .string();
    return path.ends_with(s_current->m_ending) && --s_current->m_left == 0;
}

bool HostFault::StrikesRenaming(Kind kind, const std::string& path) {
    if (s_current == nullptr || !path.ends_with(s_current->m_ending)) {
        return false;
    }
    const bool both = s_current->m_kind == Kind::Link && kind == Kind::RenameNew;
    return both ||
           (s_current->m_kind == kind && s_current->m_left != 0 && --s_current->m_left == 0);
}

}  // namespace cqsurvey
