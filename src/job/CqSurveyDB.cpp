#include "cqsurvey/CqSurveyDB.h"

#include "job/Job.h"

namespace cqsurvey {

CqSurveyDB::CqSurveyDB() : m_job(std::make_unique<Job>()) {}

CqSurveyDB::CqSurveyDB(const CString& path) : CqSurveyDB() {
    Open(path);
}

CqSurveyDB::~CqSurveyDB() {
    try {
        Close();
    } catch (...) {
        // The job is closed anyway, and a destructor has nobody to tell.
    }
}

void CqSurveyDB::CreateNew(const CString& path) {
    Close();
    m_job->SetDefaultSetting();
    m_job->Create(path);
}

void CqSurveyDB::Open(const CString& path) {
    Close();
    m_job->MountVolume(path, false);
    m_job->OpenMounted();
}

void CqSurveyDB::OpenReadOnly(const CString& path) {
    Close();
    m_job->MountVolume(path, true);
    m_job->OpenMounted();
}

void CqSurveyDB::Close() {
    m_job->Close();
}

bool CqSurveyDB::IsOpen() const {
    return m_job->IsOpen();
}

}  // namespace cqsurvey
