#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "cqsurvey/CqJobRepair.h"
#include "cqsurvey/Types.h"
#include "store/StoreRepair.h"
#include "tables/JobSchema.h"

namespace cqsurvey {

/// The records that were read from a damaged job, while they are mended: by number, in memory, and
/// with no promise that any of them fits the others.
struct SavedJob {
    template <class Layout>
    using Records = std::map<CqHandle, typename Layout::Bytes>;

    Records<BitmapLayout> bitmaps;
    Records<CircleLayout> circles;
    Records<EntityLayout> entities;
    Records<LayerLayout> layers;
    Records<PlineLayout> plines;
    Records<PointLayout> points;
    Records<LinkLayout> links;
    Records<TextLayout> texts;
    Records<VertexLayout> vertices;
    Records<GroupLayout> groups;
    std::map<std::uint32_t, CString> memos;
    std::set<std::uint32_t> cutMemos;
    std::map<std::string, std::uint32_t> highest;
    bool numbersLost;
    std::vector<CqJobLoss> losses;

    /// The tables of a job, in the order of `Salvaged::tables`.
    [[nodiscard]] static std::vector<StoreTableLayout> Layouts();

    /// Takes the records out of `salvaged`; its files stay.
    explicit SavedJob(Salvaged& salvaged);

    /// Puts the records into `salvaged` and leaves none here.
    void PutInto(Salvaged& salvaged);

    /// Lists a loss of one record, or of a file when the number is 0.
    void Lose(const char* table, CqHandle number, std::string text) {
        losses.push_back({table, number, number, std::move(text)});
    }
    /// Whether the record may have been on a bad page.
    [[nodiscard]] bool IsLost(const char* table, CqHandle number) const;
    /// Keeps a number from being given again.
    void NoteUsed(const char* table, CqHandle number) {
        std::uint32_t& known = highest[table];
        known = std::max(known, number);
    }

 private:
    /// By table, the first and last record of each range that was lost.
    std::map<std::string, std::map<CqHandle, CqHandle>> m_lost;

    /// Calls `visit` with each of the tables and its layout's type.
    template <class Visit>
    void ForEachTable(Visit&& visit);
};

}  // namespace cqsurvey
