#pragma once

#include "job/repair/SavedJob.h"

namespace cqsurvey {

/// Mends what saved records say about anything but the drawing: names, layers, groups, texts,
/// links, and which numbers were given. To be used after DrawingMender, which may add entities.
class RecordMender {
 public:
    explicit RecordMender(SavedJob& job) : m_job(job) {}

    void Mend();

 private:
    void MendLayers();
    void MendGroups();
    void MendPointNames();
    template <class Layout, FieldName Name>
    void MendMemos(SavedJob::Records<Layout>& records, const char* table,
                   std::set<std::uint32_t>& named);
    void MendTexts();
    void MendLinks();
    void NoteNumbers();

    SavedJob& m_job;
};

}  // namespace cqsurvey
