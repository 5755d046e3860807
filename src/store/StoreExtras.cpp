#include "store/StoreExtras.h"

#include <memory>
#include <vector>

#include "cqsurvey/Text.h"
#include "platform/HostFile.h"
#include "platform/System.h"
#include "store/Registry.h"
#include "store/VolumeCopy.h"
#include "store/VolumePath.h"

namespace cqsurvey {

int StoreMountReadOnly(const CString& path, const CString& mountName) {
    return Registry::Run(0, [&](Registry& open) {
        open.Mount(path, mountName, true);
        return 1;
    });
}

int StoreDraftVolume(const CString& path, CString& draft) {
    return Registry::Run(0, [&](Registry& open) {
        const std::string host = RequireHostPath(path);
        const CString name = FromUtf8(VolumeDraftPath(host));
        if (open.IsMounted(name)) {
            throw StoreFailure(error::kVolumeMounted, host + " is being created");
        }
        VolumeDatabase::CreateDraft(host);
        draft = name;
        return 1;
    });
}

int StorePublishVolume(const CString& path) {
    return Registry::Run(0, [&](Registry&) {
        VolumeDatabase::Publish(RequireHostPath(path));
        return 1;
    });
}

int StoreCopyVolume(const CString& mountName, const CString& path, CString& draft) {
    return Registry::Run(0, [&](Registry& open) {
        const std::string host = RequireHostPath(path);
        const CString name = FromUtf8(VolumeDraftPath(host));
        if (open.IsMounted(name)) {
            throw StoreFailure(error::kVolumeMounted, host + " is being created");
        }
        CopyVolume(open.Find(mountName), host);
        draft = name;
        return 1;
    });
}

void StoreRemoveDraft(const CString& path) {
    system::Remove(VolumeDraftPath(HostPath(path)));
}

int StoreDiscardVolume(const CString& mountName) {
    return Registry::Run(0, [&](Registry& open) {
        open.Find(mountName).Discard();
        return 1;
    });
}

int StoreIsMountedVolume(const CString& hostPath) {
    return Registry::Run(0, [&](Registry& open) { return open.IsMounted(hostPath) ? 1 : 0; });
}

int StoreIsPartOfMountedVolume(const CString& hostPath) {
    return Registry::Run(0, [&](Registry& open) {
        return open.IsMounted(hostPath) || open.IsBesideMounted(hostPath) ? 1 : 0;
    });
}

int StoreBeginStep(const CString& mountName) {
    return Registry::Run(0, [&](Registry& open) {
        open.Find(mountName).BeginStep();
        return 1;
    });
}

int StoreCommitStep(const CString& mountName) {
    return Registry::Run(0, [&](Registry& open) {
        open.Find(mountName).CommitStep();
        return 1;
    });
}

int StoreRollbackStep(const CString& mountName) {
    return Registry::Run(0, [&](Registry& open) {
        open.Find(mountName).RollbackStep();
        return 1;
    });
}

int StoreSpoilStep(const CString& mountName, std::int32_t code) {
    return Registry::Run(0, [&](Registry& open) {
        if (code == error::kNone) {
            throw StoreFailure(error::kInvalidArgument,
                               "a step can be spoilt only with the code of a failure");
        }
        open.Find(mountName).SpoilStep(code, "an operation of the step failed halfway");
        return 1;
    });
}

int StoreSetFileAside(const CString& path, const CString& aside, std::uint32_t most) {
    return Registry::Run(0, [&](Registry& open) {
        const auto [volume, name] = open.Resolve(path);
        const auto [other, asideName] = open.Resolve(aside);
        if (volume != other) {
            throw StoreFailure(error::kInvalidArgument, "a file cannot be moved to another volume");
        }
        const std::shared_ptr<VolumeFile> file = volume->FindFile(name);
        if (file == nullptr || file->IsSound()) {
            volume->Perform(
                1, [v = volume, &from = name, &to = asideName] { v->RenameFile(from, to); });
            return 1;
        }
        const std::vector<std::byte> bytes = file->Salvage(most);
        volume->Perform(1 + bytes.size() / VolumeFile::kBlock,
                        [&, v = volume, &from = name, &to = asideName] {
                            v->CreateFile(to);
                            v->WriteFile(*v->FindFile(to), 0, bytes.data(),
                                         static_cast<std::uint32_t>(bytes.size()));
                            v->DeleteFile(from);
                        });
        return 1;
    });
}

int StoreCheckTable(std::uint32_t table, std::uint32_t fieldCount, const QrdbFieldDef* fields) {
    return Registry::Run(0, [&](Registry& open) {
        const RecordTable& records = *open.Table(table).table;
        if (!(records.GetFormat() == RecordFormat(fieldCount, fields))) {
            throw StoreFailure(error::kDamaged,
                               "table " + records.GetName() + " does not have the expected fields");
        }
        return 1;
    });
}

std::uint32_t StoreNextRecord(std::uint32_t table) {
    return Registry::Run(std::uint32_t{0},
                         [&](Registry& open) { return open.Table(table).table->NextNumber(); });
}

std::uint32_t StoreAppendCurrent(std::uint32_t table, const void* record) {
    return Registry::Run(std::uint32_t{0}, [&](Registry& open) {
        TableCursor& cursor = open.Table(table);
        std::uint32_t number = 0;
        cursor.volume->Perform(
            1, [&] { number = cursor.table->Append(static_cast<const std::byte*>(record)); });
        cursor.place = number;
        cursor.valid = true;
        return number;
    });
}

const std::byte* StorePeekRecord(std::uint32_t table, std::uint32_t record) {
    return Registry::Run(static_cast<const std::byte*>(nullptr), [&](Registry& open) {
        const std::byte* bytes = open.Table(table).table->Find(record);
        if (bytes == nullptr) {
            Registry::SetLastError(error::kNone);
        }
        return bytes;
    });
}

std::uint32_t StoreFindWrongPage(const CString& mountName, std::uint32_t after) {
    return Registry::Run(std::uint32_t{0},
                         [&](Registry& open) { return open.Find(mountName).FindWrongPage(after); });
}

int StoreCreateView(const CString& path, const char* sql) {
    return Registry::Run(0, [&](Registry& open) {
        const auto [volume, name] = open.Resolve(path);
        volume->Perform(1, [&, v = volume, &n = name] { v->CreateView(ToUtf8(n), sql); });
        return 1;
    });
}

}  // namespace cqsurvey
