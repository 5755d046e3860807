#include "cqsurvey/exchange/FieldTextWriter.h"

#include <fmt/format.h>

#include <array>
#include <cmath>

#include "cqsurvey/CqCadEntityPtr.h"
#include "cqsurvey/CqCoordRec.h"
#include "cqsurvey/CqSurveyDB.h"
#include "cqsurvey/CqSurveyException.h"
#include "cqsurvey/ErrorCodes.h"
#include "cqsurvey/Text.h"
#include "cqsurvey/exchange/ExchangeError.h"
#include "exchange/FieldTextRow.h"
#include "exchange/NarrowPage.h"
#include "text/Printable.h"

namespace cqsurvey::exchange {

namespace {

/// The name of the point's group; empty when it is in none, or in one that does not exist.
CString FindGroup(CqSurveyDB& db, const CqCoordRec& point) {
    if (point.GetGroup() == 0) {
        return {};
    }
    try {
        return db.GetGroupName(point.GetGroup());
    } catch (const CqSurveyException& failure) {
        if (failure.m_code != error::kNoRecord) {
            throw;
        }
        return {};
    }
}

/// The name of the layer of the point's entity.
CString FindLayer(CqSurveyDB& db, CqHandle handle) {
    CqHandle next = db.GetCadEntityHandleByCoordRecHandle(handle);
    CqCadEntity* entity = nullptr;
    if (db.GetNextCadEntity(next, entity) == 0) {
        return {};
    }
    return CqCadEntityPtr(entity)->GetLayer();
}

}  // namespace

class FieldTextWriter::State {
 public:
    explicit State(const FieldTextWriteOptions& options)
        : row(options.order, options.separator, options.decimals, options.decimalComma,
              options.safe),
          writesGroup(options.order.Find(Column::Group).has_value()),
          writesLayer(options.order.Find(Column::Layer).has_value()),
          m_codePage(RequireNarrowPage(options.codePage)),
          m_jobName(options.jobName) {}

    std::string Encode(const CString& text, CqHandle handle) {
        std::optional<std::string> bytes = m_codePage.TryEncode(text);
        if (!bytes) {
            throw ExchangeError(fmt::format(
                "{}{} of point record {} cannot be written in code page {}{}",
                NamePrefix(m_jobName), Quoted(ToUtf8(text)), handle, m_codePage.GetNumber(),
                m_codePage.GetNumber() == CqCodePage::kUtf8 ? ""
                                                            : "; 65001 holds every character"));
        }
        return std::move(*bytes);
    }

    const FieldTextRow row;
    const bool writesGroup;
    const bool writesLayer;
    std::size_t notFinite = 0;

 private:
    CqCodePage m_codePage;
    std::string m_jobName;
};

FieldTextWriter::FieldTextWriter(const FieldTextWriteOptions& options) {
    const ColumnOrder& order = options.order;
    if (order.Find(Column::Description) && !order.TakesRest() && !order.Find(Column::Code)) {
        throw OptionError("a description that is not the last column needs a code column");
    }
    m_state = std::make_unique<State>(options);
}

FieldTextWriter::~FieldTextWriter() = default;

std::string FieldTextWriter::MakeHeader() const {
    return m_state->row.MakeHeader();
}

std::string FieldTextWriter::MakeLine(CqSurveyDB& db, CqHandle handle, const CqCoordRec& point) {
    CString description;
    db.GetCoordDescription(handle, description);
    std::array<double, 3> coords{};
    point.GetPoint(coords.data());
    if (!std::isfinite(coords[0]) || !std::isfinite(coords[1]) || std::isinf(coords[2])) {
        ++m_state->notFinite;
    }
    return m_state->row.Make(
        {.name = m_state->Encode(point.GetPtName(), handle),
         .coords = coords,
         .code = point.GetCode(),
         .description = m_state->Encode(description, handle),
         .group = m_state->writesGroup ? m_state->Encode(FindGroup(db, point), handle) : "",
         .layer = m_state->writesLayer ? m_state->Encode(FindLayer(db, handle), handle) : "",
         .flags = point.GetFlags(),
         .origin = static_cast<std::uint32_t>(point.GetType()),
         .time = point.GetRecTime()});
}

std::size_t FieldTextWriter::GetNotFinite() const {
    return m_state->notFinite;
}

}  // namespace cqsurvey::exchange
