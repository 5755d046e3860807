#include "job/Job.h"

#include <exception>
#include <string>

#include "cqsurvey/Text.h"
#include "job/JobStep.h"
#include "job/JobViews.h"
#include "store/Qrfs.h"
#include "store/StoreExtras.h"
#include "store/ThrowStorageError.h"

namespace cqsurvey {

Job::Job() {
    SetDefaultSetting();
}

void Job::SetDefaultSetting() {
    SetDefaultSettingsIniFile();
    defaults.now = {};
    extents.InitBoundData();
}

void Job::MountVolume(const CString& path, bool readOnly) {
    // No bound: the loop ends at a free name or at another error.
    for (unsigned long number = 1;; ++number) {
        const CString name = FromUtf8("JOB" + std::to_string(number));
        if ((readOnly ? StoreMountReadOnly(path, name) : QrfsMount(path, name)) != 0) {
            mountName = name;
            return;
        }
        if (QrfsGetLastError() != error::kMountNameInUse) {
            ThrowLastStorageError();
        }
    }
}

void Job::Create(const CString& path) {
    CString draft;
    if (StoreDraftVolume(path, draft) == 0) {
        ThrowLastStorageError();
    }
    MountVolume(draft, false);
    try {
        Atomically(*this, [&] {
            CreateSettingsIniFile();
            for (JobPart* part : m_parts) {
                part->OnCreate(Root());
            }
            CreateJobViews(Root());
        });
    } catch (...) {
        // What would be left is no job, and in the way of the next try.
        StoreDiscardVolume(mountName);
        throw;
    }
    Close();
    if (StorePublishVolume(path) == 0) {
        ThrowLastStorageError();
    }
    MountVolume(path, false);
    OpenMounted();
}

void Job::OpenMounted() {
    defaults.now.group = 0;
    ReadSettingsIniFile();
    for (JobPart* part : m_parts) {
        part->OnOpen(Root());
    }
    MakeBoundData();
}

void Job::Close() {
    if (!IsOpen()) {
        return;
    }
    const bool undone = stepDepth != 0;
    batchOpen = false;
    stepDepth = 0;
    emptyImage = kNoFile;
    // Whatever fails, the rest is closed and the volume given up.
    std::exception_ptr failure;
    for (JobPart* part : m_parts) {
        try {
            part->OnClose();
        } catch (...) {
            failure = failure ? failure : std::current_exception();
        }
    }
    const bool unmounted = QrfsUnmount(mountName) != 0;
    mountName.clear();
    if (undone) {
        // The volume has undone the batch that was open; so do colour, extents and settings.
        UndoStep();
    }
    if (!unmounted) {
        ThrowLastStorageError();
    }
    if (failure) {
        std::rethrow_exception(failure);
    }
}

CString Job::GetProjectPath(const CString& path) {
    const std::size_t last = path.find_last_of(u"\\/");
    return last == CString::npos || last == 0 ? CString(u"\\") : path.substr(0, last);
}

void Job::BeginStep() {
    // What was changed outside any step, such as the current layer, no undo takes back.
    KeepStep();
    if (StoreBeginStep(mountName) == 0) {
        ThrowLastStorageError();
    }
}

void Job::CommitStep() {
    if (StoreCommitStep(mountName) != 0) {
        KeepStep();
        return;
    }
    try {
        ThrowLastStorageError();
    } catch (...) {
        UndoStep();
        throw;
    }
}

void Job::RollbackStep() noexcept {
    StoreRollbackStep(mountName);
    UndoStep();
}

void Job::KeepStep() noexcept {
    for (JobPart* part : m_parts) {
        part->KeepStep();
    }
}

void Job::UndoStep() noexcept {
    for (JobPart* part : m_parts) {
        part->UndoStep();
    }
}

}  // namespace cqsurvey
