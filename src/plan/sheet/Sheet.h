#pragma once

#include <cstddef>
#include <optional>

#include "cqsurvey/CVector.h"
#include "cqsurvey/plan/Box.h"
#include "cqsurvey/plan/Paper.h"

namespace cqsurvey::plan {

/// The smallest of the scales that are used on plans (1, 1.25, 1.5, 2, 2.5, 4, 5 or 7.5 times a
/// power of ten) that is at least `scale`. `scale` is greater than 0.
[[nodiscard]] double RoundScale(double scale);

/// The largest round distance (1, 2 or 5 times a power of ten) that is at most `distance`.
/// `distance` is greater than 0.
[[nodiscard]] double RoundDistance(double distance);

/// The sheet that is asked for.
struct SheetRequest {
    PaperSize paper{210.0, 297.0};
    /// Turn the paper by a quarter turn if the plan fits better that way.
    bool turns = true;
    /// The 500 of 1 : 500. Without a scale, that of the job, or the next round one at which the
    /// plan fits.
    std::optional<double> scale;
    /// Without `scale`: take the smallest round one at which the plan fits, whatever that of the
    /// job is.
    bool fits = false;
    /// The job's unit of length in metres.
    double unit = 1.0;
    /// How many fields the title block has below the heading, and how many entries the legend. They
    /// get no room where it would be more than two fifths of the paper, the legend first.
    std::size_t fields = 0;
    std::size_t entries = 0;
};

/// Fields or entries of the same size, row by row.
struct Tiles {
    std::size_t columns = 1;
    std::size_t rows = 0;
    double width = 0.0;   ///< of each, in millimetres
    double height = 0.0;  ///< of each
};

/// One sheet of paper with a map on it. The sheet knows where on the paper the map and the title
/// block are, and where on it each position of the job is. On paper x goes right and y down, in
/// millimetres.
class Sheet {
 public:
    /// Centres `extents` on the map. An empty box counts as the origin.
    Sheet(const SheetRequest& request, const Box& extents, double jobScale);

    [[nodiscard]] const PaperSize& GetPaper() const { return m_paper; }
    [[nodiscard]] double GetScale() const { return m_scale; }
    /// The length in the job of a length on paper.
    [[nodiscard]] double ToJob(double length) const { return length * m_scale / (1000.0 * m_unit); }
    /// The map's frame.
    [[nodiscard]] const Box& GetMap() const { return m_map; }
    /// The title block below it; empty when the paper is too small for one.
    [[nodiscard]] const Box& GetTitle() const { return m_title; }
    /// The fields in the lower part of the title block.
    [[nodiscard]] const Tiles& GetFields() const { return m_fields; }
    /// The legend, between the map and the title block; empty without entries.
    [[nodiscard]] const Box& GetLegend() const { return m_legend; }
    [[nodiscard]] const Tiles& GetEntries() const { return m_entries; }

    /// The same sheet with another part of the job in its map.
    [[nodiscard]] Sheet MoveTo(const CVector& middle) const;
    /// The part of the job that the frame shows.
    [[nodiscard]] Box GetWindow() const;
    /// True when all of the extents lie in the frame.
    [[nodiscard]] bool HoldsAll() const { return m_holdsAll; }

    /// Where a position of the job is on paper.
    [[nodiscard]] CVector ToPaper(const CVector& place) const;
    /// The length on paper of a length in the job.
    [[nodiscard]] double ToPaper(double length) const { return length * 1000.0 * m_unit / m_scale; }

 private:
    void Arrange(const PaperSize& paper, const SheetRequest& request);
    /// The scale at which the extents just fill the map.
    [[nodiscard]] double FillScale(const Box& extents) const;

    PaperSize m_paper;
    Box m_map;
    Box m_title;
    Box m_legend;
    Tiles m_fields;
    Tiles m_entries;
    CVector m_middle;
    double m_scale = 1.0;
    double m_unit = 1.0;
    bool m_holdsAll = true;
};

}  // namespace cqsurvey::plan
