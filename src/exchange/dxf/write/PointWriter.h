#pragma once

#include <string_view>

#include "cqsurvey/CqSurveyDB.h"
#include "cqsurvey/exchange/DxfWriter.h"
#include "exchange/dxf/write/Contents.h"
#include "exchange/dxf/write/EntityFrame.h"
#include "exchange/dxf/write/GroupWriter.h"

namespace cqsurvey::exchange::dxf {

/// Writes survey points: as POINT, and as the insert of a block with attributes for name, height,
/// code and description.
class PointWriter {
 public:
    PointWriter(CqSurveyDB& db, GroupWriter& out, Contents& contents,
                const DxfWriteOptions& options);

    [[nodiscard]] DrawingOutcome Write(const CqCadEntity& entity);

    /// The entities of the block.
    static void WriteDefinitions(GroupWriter& out, double height);

 private:
    void WritePoint(const CqCadEntity& entity, const CString& layer, const Vec3& at,
                    const Extras& extras);
    void WriteInsert(const CqCadEntity& entity, const CString& layer, const Vec3& at, bool noHeight,
                     const Extras& extras);

    CqSurveyDB& m_db;
    GroupWriter& m_out;
    Contents& m_contents;
    const DxfWriteOptions& m_options;
    EntityFrame m_frame;
};

}  // namespace cqsurvey::exchange::dxf
