#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "cqsurvey/Types.h"

namespace cqsurvey {

/// Something of a volume that could not be read.
struct SalvageLoss {
    std::string table;    ///< "" when it is not in a table of records
    std::uint32_t first;  ///< the first record that may have been lost
    std::uint32_t last;   ///< the last one; 4294967295 when there is no telling
    std::string text;     ///< one English sentence
};

/// What was read from the file of a damaged volume.
struct Salvaged {
    struct Table {
        std::vector<std::uint32_t> numbers;  ///< of the records, each once, in no certain order
        std::vector<std::byte> bytes;        ///< the packed records, in the order of the numbers
    };
    struct File {
        CString name;                         ///< empty when it was lost
        std::optional<std::uint32_t> length;  ///< in bytes; nothing when it was lost
        std::map<std::uint32_t, std::string> blocks;
    };

    std::vector<Table> tables;  ///< as many as there were layouts, in their order
    std::map<std::uint32_t, CString> memos;
    std::set<std::uint32_t> cutMemos;              ///< those of which only the beginning is left
    std::map<std::string, std::uint32_t> highest;  ///< the number ever given in a table
    bool numbersLost = false;                      ///< some of these
    std::map<std::uint32_t, File> files;
    std::vector<SalvageLoss> losses;
};

}  // namespace cqsurvey
