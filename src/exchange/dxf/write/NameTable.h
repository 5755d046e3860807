#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "cqsurvey/Types.h"

namespace cqsurvey::exchange::dxf {

/// The names of a job's layers or text styles as a file may have them. A file has signs that no
/// name may hold, and its names are the same in either letter case; a job's are not.
class NameTable {
 public:
    /// The file's name for a job's name, the same for each call. `changed` is set to true when
    /// the names differ.
    const CString& Find(const CString& name, bool& changed);
    const CString& Find(const CString& name) {
        bool changed = false;
        return Find(name, changed);
    }

 private:
    std::map<CString, CString> m_names;
    std::map<std::string, int> m_taken;  // in upper case, with the number to try next
};

}  // namespace cqsurvey::exchange::dxf
