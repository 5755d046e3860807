#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace cqsurvey {

/// A wide string of UTF-16 code units. Surrogate pairs are not checked.
using CString = std::u16string;

using CStringList = std::vector<CString>;

/// A growable list; the second argument is the type by which elements are passed.
template <class T, class ARG = const T&>
using CList = std::vector<T>;

/// The number of a record in its table. 0 names no record. The number of a deleted record is never
/// used again.
using CqHandle = std::uint32_t;

}  // namespace cqsurvey
