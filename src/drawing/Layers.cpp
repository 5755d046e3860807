#include <cstdint>
#include <cstdlib>

#include "cqsurvey/CqSurveyDB.h"
#include "cqsurvey/Limits.h"
#include "job/Job.h"
#include "job/JobStep.h"

namespace cqsurvey {

namespace {

constexpr std::int32_t kNewLayerColor = 1;

/// The colour with the sign that shows or hides its layer. The lowest integer has no positive
/// partner and stays as it is.
std::int32_t WithVisibility(std::int32_t color, bool show) {
    const auto bits = static_cast<std::uint32_t>(color);
    const bool flip = show ? color < 0 : color > 0;
    return static_cast<std::int32_t>(flip ? 0U - bits : bits);
}

}  // namespace

int CqSurveyDB::AddLayer(const CString& name, int color, int line) {
    if (m_job->layers.FindByName(name) || m_job->layers.NextHandle() > limits::kHighestLayer) {
        return 0;
    }
    return Atomically(*m_job, [&] {
        m_job->layers.AppendLayer(name, color, line);
        return 1;
    });
}

int CqSurveyDB::DeleteLayer(const CString& name) {
    if (!m_job->layers.FindByName(name)) {
        return 0;
    }
    return Atomically(*m_job, [&] {
        m_job->layers.DeleteLayer();
        return 1;
    });
}

int CqSurveyDB::GetNumLayers() {
    return m_job->layers.GetRecordCount();
}

CqHandle CqSurveyDB::GetFirstLayerHandle() {
    return m_job->layers.First(kRecordOrder) != 0 ? m_job->layers.GetCurrentHandle() : 0;
}

int CqSurveyDB::GetNextLayer(CqHandle& h, CString& name, int& color) {
    if (h == 0) {
        return 0;
    }
    m_job->layers.GoTo(h);
    name = m_job->layers.Get<"Name">();
    color = m_job->layers.Get<"ColorID">();
    h = m_job->layers.Next() != 0 ? m_job->layers.GetCurrentHandle() : 0;
    return 1;
}

int CqSurveyDB::ShowLayer(const CString& name, int show) {
    if (!m_job->layers.FindByName(name)) {
        return 0;
    }
    const std::int32_t color = m_job->layers.Get<"ColorID">();
    const std::int32_t shown = WithVisibility(color, show != 0);
    if (shown == color) {
        return 1;
    }
    return Atomically(*m_job, [&] {
        m_job->layers.Set<"ColorID">(shown);
        m_job->layers.StoreLayer();
        return 1;
    });
}

int CqSurveyDB::GetLayerColor(const CString& name) {
    return m_job->layers.FindByName(name) ? m_job->layers.Get<"ColorID">() : 0;
}

int CqSurveyDB::GetLayerLine(const CString& name) {
    return m_job->layers.FindByName(name) ? m_job->layers.Get<"LineID">() : 0;
}

int CqSurveyDB::EditLayerColor(const CString& name, int color) {
    if (!m_job->layers.FindByName(name)) {
        return 0;
    }
    return Atomically(*m_job, [&] {
        m_job->layers.Set<"ColorID">(color);
        m_job->layers.StoreLayer();
        return 1;
    });
}

int CqSurveyDB::EditLayerLine(const CString& name, int line) {
    if (!m_job->layers.FindByName(name)) {
        return 0;
    }
    return Atomically(*m_job, [&] {
        m_job->layers.Set<"LineID">(static_cast<std::uint16_t>(line));
        m_job->layers.StoreLayer();
        return 1;
    });
}

int CqSurveyDB::EditLayer(CqHandle entity, const CString& name) {
    if (entity <= CqEntityTable::kHeader) {
        return 0;
    }
    CqLayerTable& layers = m_job->layers;
    return Atomically(*m_job, [&] {
        const bool known = layers.FindByName(name);
        if ((known ? layers.GetCurrentHandle() : layers.NextHandle()) > limits::kHighestLayer) {
            return 0;
        }
        const CqHandle layer =
            known ? layers.GetCurrentHandle() : layers.AppendLayer(name, kNewLayerColor, 0);
        m_job->entities.Edit(entity, [layer](std::byte* record) {
            EntityLayout::Set<"LayerIndex">(record, static_cast<std::uint16_t>(layer));
        });
        return 1;
    });
}

int CqSurveyDB::SetCurrentLayer(const CString& name) {
    return m_job->layers.SetCurrentLayer(name) ? 1 : 0;
}

const CString& CqSurveyDB::GetCurrentLayer() const {
    return m_job->layers.GetCurrentLayerName();
}

int CqSurveyDB::SetCurrentColor(int color) {
    if (color < limits::kLowestColor || color > limits::kHighestColor) {
        return 0;
    }
    m_job->defaults.now.color = color;
    return 1;
}

int CqSurveyDB::GetCurrentColor() const {
    return m_job->defaults.now.color;
}

}  // namespace cqsurvey
