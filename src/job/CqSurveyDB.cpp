#include "cqsurvey/CqSurveyDB.h"

#include <exception>
#include <string>

#include "cqsurvey/Text.h"
#include "job/JobStep.h"
#include "job/JobViews.h"
#include "store/Qrfs.h"
#include "store/ThrowStorageError.h"
#include "tables/CqBitmapTable.h"
#include "tables/CqCircleTable.h"
#include "tables/CqDescriptionStore.h"
#include "tables/CqEntityTable.h"
#include "tables/CqGroupTable.h"
#include "tables/CqLayerTable.h"
#include "tables/CqLinkTable.h"
#include "tables/CqPlineTable.h"
#include "tables/CqPointTable.h"
#include "tables/CqSettingsFile.h"
#include "tables/CqTextTable.h"
#include "tables/CqVertexTable.h"

namespace cqsurvey {

namespace {

constexpr std::int32_t kDefaultColor = 256;

template <class Layout>
CString TableName() {
    return CString(Layout::kTable.View());
}

}  // namespace

CqSurveyDB::CqSurveyDB()
    : m_bitmaps(std::make_unique<CqBitmapTable>()),
      m_circles(std::make_unique<CqCircleTable>()),
      m_entities(std::make_unique<CqEntityTable>()),
      m_layers(std::make_unique<CqLayerTable>()),
      m_plines(std::make_unique<CqPlineTable>()),
      m_points(std::make_unique<CqPointTable>()),
      m_links(std::make_unique<CqLinkTable>()),
      m_texts(std::make_unique<CqTextTable>()),
      m_vertices(std::make_unique<CqVertexTable>()),
      m_groups(std::make_unique<CqGroupTable>()),
      m_descriptions(std::make_unique<CqDescriptionStore>()),
      m_settings(std::make_unique<CqSettingsFile>()) {
    SetDefaultSetting();
}

CqSurveyDB::CqSurveyDB(const CString& path) : CqSurveyDB() {
    Open(path);
}

CqSurveyDB::~CqSurveyDB() {
    try {
        Close();
    } catch (...) {
        // The job is closed all the same, and a destructor has nobody to tell.
    }
}

void CqSurveyDB::SetDefaultSetting() {
    SetDefaultSettingsIniFile();
    SetCurrentColor(kDefaultColor);
    m_currentGroup = 0;
    m_plineLine = kDefaultColor;
    m_plineCode = 0;
    InitBoundData();
}

void CqSurveyDB::CreateNew(const CString& path) {
    Close();
    SetDefaultSetting();
    Create(path);
}

void CqSurveyDB::MountVolume(const CString& path, bool readOnly) {
    // No bound: the loop ends at a free name or at another error.
    for (unsigned long number = 1;; ++number) {
        const CString name = FromUtf8("JOB" + std::to_string(number));
        if ((readOnly ? QrfsMountReadOnly(path, name) : QrfsMount(path, name)) != 0) {
            m_mountName = name;
            return;
        }
        if (QrfsGetLastError() != error::kMountNameInUse) {
            ThrowLastStorageError();
        }
    }
}

void CqSurveyDB::Create(const CString& path) {
    if (QrfsCreateVolume(path) == 0) {
        ThrowLastStorageError();
    }
    MountVolume(path, false);
    const auto fill = [&] {
        CreateSettingsIniFile();
        const CString root = m_mountName + u":/";
        m_bitmaps->Create(root + TableName<BitmapLayout>());
        m_circles->Create(root + TableName<CircleLayout>());
        m_entities->Create(root + TableName<EntityLayout>());
        m_layers->Create(root + TableName<LayerLayout>());
        m_plines->Create(root + TableName<PlineLayout>());
        m_points->Create(root + TableName<PointLayout>());
        m_links->Create(root + TableName<LinkLayout>());
        m_texts->Create(root + TableName<TextLayout>());
        m_vertices->Create(root + TableName<VertexLayout>());
        m_groups->Create(root + TableName<GroupLayout>());
        m_descriptions->Create(root + CqDescriptionStore::kFileName);
        CreateJobViews(root);
    };
    try {
        Atomically(*this, fill);
    } catch (...) {
        // What would be left is no job, and in the way of the next try.
        QrfsDiscardVolume(m_mountName);
        throw;
    }
}

void CqSurveyDB::Open(const CString& path) {
    Close();
    MountVolume(path, false);
    OpenMounted();
}

void CqSurveyDB::OpenReadOnly(const CString& path) {
    Close();
    MountVolume(path, true);
    OpenMounted();
}

void CqSurveyDB::OpenMounted() {
    m_currentGroup = 0;
    ReadSettingsIniFile();
    const CString root = m_mountName + u":/";
    m_bitmaps->Open(root + TableName<BitmapLayout>());
    m_circles->Open(root + TableName<CircleLayout>());
    m_entities->Open(root + TableName<EntityLayout>());
    m_layers->Open(root + TableName<LayerLayout>());
    m_plines->Open(root + TableName<PlineLayout>());
    m_points->Open(root + TableName<PointLayout>());
    m_links->Open(root + TableName<LinkLayout>());
    m_texts->Open(root + TableName<TextLayout>());
    m_vertices->Open(root + TableName<VertexLayout>());
    m_groups->Open(root + TableName<GroupLayout>());
    m_descriptions->Open(root + CqDescriptionStore::kFileName);
    MakeBoundData();
}

void CqSurveyDB::Close() {
    if (m_mountName.empty()) {
        return;
    }
    m_batchOpen = false;
    m_stepDepth = 0;
    // Whatever fails, the rest is closed and the volume given up.
    std::exception_ptr failure;
    const auto close = [&failure](auto& part) {
        try {
            part.Close();
        } catch (...) {
            failure = failure ? failure : std::current_exception();
        }
    };
    close(*m_bitmaps);
    close(*m_circles);
    close(*m_entities);
    close(*m_layers);
    close(*m_plines);
    close(*m_points);
    close(*m_links);
    close(*m_texts);
    close(*m_vertices);
    close(*m_groups);
    close(*m_descriptions);
    const bool unmounted = QrfsUnmount(m_mountName) != 0;
    m_mountName.clear();
    if (!unmounted) {
        ThrowLastStorageError();
    }
    if (failure) {
        std::rethrow_exception(failure);
    }
}

CString CqSurveyDB::GetProjectPath(const CString& path) {
    const std::size_t last = path.find_last_of(u"\\/");
    return last == CString::npos || last == 0 ? CString(u"\\") : path.substr(0, last);
}

void CqSurveyDB::BeginStep() {
    // What was changed outside any step, such as the current layer, no undo takes back.
    KeepStep();
    if (QrfsBeginStep(m_mountName) == 0) {
        ThrowLastStorageError();
    }
}

void CqSurveyDB::CommitStep() {
    if (QrfsCommitStep(m_mountName) != 0) {
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

void CqSurveyDB::RollbackStep() noexcept {
    QrfsRollbackStep(m_mountName);
    UndoStep();
}

void CqSurveyDB::KeepStep() noexcept {
    m_entities->KeepStep();
    m_layers->KeepStep();
    m_points->KeepStep();
    m_links->KeepStep();
    m_descriptions->KeepStep();
    m_settings->KeepStep();
    m_beforeStep = {m_currentColor, m_plineLine,   m_plineCode,
                    m_currentGroup, m_vecBoundMax, m_vecBoundMin};
}

void CqSurveyDB::UndoStep() noexcept {
    m_bitmaps->ForgetLoaded();
    m_circles->ForgetLoaded();
    m_entities->ForgetLoaded();
    m_layers->ForgetLoaded();
    m_plines->ForgetLoaded();
    m_points->ForgetLoaded();
    m_links->ForgetLoaded();
    m_texts->ForgetLoaded();
    m_vertices->ForgetLoaded();
    m_groups->ForgetLoaded();
    m_entities->UndoStep();
    m_layers->UndoStep();
    m_points->UndoStep();
    m_links->UndoStep();
    m_descriptions->UndoStep();
    m_settings->UndoStep();
    m_currentColor = m_beforeStep.color;
    m_plineLine = m_beforeStep.plineLine;
    m_plineCode = m_beforeStep.plineCode;
    m_currentGroup = m_beforeStep.group;
    m_vecBoundMax = m_beforeStep.boundMax;
    m_vecBoundMin = m_beforeStep.boundMin;
}

}  // namespace cqsurvey
