#include <string>
#include <string_view>

#include "cqsurvey/CqSurveyDB.h"
#include "job/Job.h"
#include "job/JobStep.h"
#include "platform/Text.h"

namespace cqsurvey {

namespace {

template <class View>
View UpToZero(View text) {
    return text.substr(0, text.find(typename View::value_type{0}));
}

std::string Narrow(const CString& text) {
    return ToAnsi(UpToZero(std::u16string_view(text)));
}

}  // namespace

int CqSurveyDB::AddCoordDescription(CqHandle handle, const CString& text) const {
    return Atomically(*m_job,
                      [&] { return m_job->descriptions.Add(handle, Narrow(text)) ? 1 : 0; });
}

int CqSurveyDB::GetCoordDescription(CqHandle handle, CString& text) const {
    std::string bytes;
    if (!m_job->descriptions.Get(handle, bytes)) {
        return 0;
    }
    text = FromAnsi(UpToZero(std::string_view(bytes)));
    return 1;
}

int CqSurveyDB::EditCoordDescription(CqHandle handle, const CString& text) const {
    return Atomically(*m_job,
                      [&] { return m_job->descriptions.Edit(handle, Narrow(text)) ? 1 : 0; });
}

int CqSurveyDB::DelCoordDescription(CqHandle handle) const {
    return Atomically(*m_job, [&] { return m_job->descriptions.Delete(handle) ? 1 : 0; });
}

}  // namespace cqsurvey
