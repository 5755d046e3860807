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
    // The loop needs no bound: it ends at a free name or with another error.
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

CString Job::CreateDraft(const CString& path) {
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
        // What would be left is not a job and would be in the way of the next try. The file can
        // only be removed after the volume was closed, which Close does.
        StoreDiscardVolume(mountName);
        throw;
    }
    Close();
    return draft;
}

void Job::Create(const CString& path) {
    CreateDraft(path);
    if (StorePublishVolume(path) == 0) {
        ThrowLastStorageError();
    }
    MountVolume(path, false);
    OpenMounted();
}

void Job::OpenMounted() {
    // The group belongs to the job that was open before. The extents come last, because they are
    // computed from the tables.
    defaults.now.group = 0;
    OpenSettings();
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
    // Whatever fails, the other parts are closed and the volume is unmounted; the first failure is
    // thrown at the end.
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
        // Unmounting has undone the open batch on the volume. What the job holds apart from the
        // volume, such as colour, extents and settings, must follow.
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
    // Some things, such as the current layer, are changed outside of any step. An undo must not
    // take them back, so they are kept first.
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
    // The exception is made first: undoing may set the store's last error anew.
    try {
        ThrowLastStorageError();
    } catch (...) {
        UndoStep();
        throw;
    }
}

void Job::RollbackStep() noexcept {
    // The store first: the parts rely on records and files that have been put back.
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
