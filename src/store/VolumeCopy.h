#pragma once

#include <string>

#include "store/Volume.h"

namespace cqsurvey {

/// Writes a copy of a mounted volume as the draft for `path` (VolumeDraftPath), page by page, and
/// compares it with the volume. The copy is durable when the function returns. On failure nothing
/// is left behind.
///
/// The pages are read through the database's own open file. To open the file a second time would
/// not do: when a process closes a file, the system gives up all locks that it holds on it. Nobody
/// else can change the file meanwhile, and no page waits in memory, since no step is open.
///
/// Throws error::kInvalidArgument while a step is open, error::kDamaged when the file was cut off,
/// and else as VolumeDatabase::CreateDraft.
void CopyVolume(const Volume& volume, const std::string& path);

}  // namespace cqsurvey
