#include "gdal/read/PointLayer.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>
#include <utility>

#include "gdal/NameCondition.h"
#include "gdal/Style.h"
#include "gdal/read/GroupTable.h"

namespace cqsurvey::gdal {

PointLayer::PointLayer(const LayerContext& context)
    : JobLayer(context, RecordKind::Points, "points", wkbPoint25D,
               {FieldRole::Name, FieldRole::Code, FieldRole::CodeWord, FieldRole::Description,
                FieldRole::Group, FieldRole::Layer, FieldRole::Color, FieldRole::Hidden,
                FieldRole::Time, FieldRole::Height, FieldRole::Origin, FieldRole::Flags}) {}

std::vector<CqHandle> PointLayer::List() {
    std::vector<CqHandle> handles;
    handles.reserve(static_cast<std::size_t>(Db().GetNumCoordRecs()));
    for (const CqPointItem& point : Points(Db())) {
        handles.push_back(point.handle);
    }
    return handles;
}

GIntBig PointLayer::Count() {
    return Db().GetNumCoordRecs();
}

std::unique_ptr<OGRFeature> PointLayer::Read(CqHandle handle) {
    CqCoordRec record;
    const bool there = [&] {
        try {
            return Db().GetCoordRec(handle, record) != 0;
        } catch (const CqSurveyException& failure) {
            if (failure.m_code == error::kNoRecord) {
                return false;
            }
            throw;
        }
    }();
    if (!there) {
        return nullptr;
    }
    const CqCadEntityPtr symbol =
        ReadEntity(Db(), Db().GetCadEntityHandleByCoordRecHandle(handle), EntSiPnt);
    const bool hidden = symbol && Context().job.Look().IsHidden(*symbol);
    if (hidden && !Context().hidden) {
        return nullptr;
    }
    FeatureFiller filler = Fill(handle);
    filler.Set(FieldRole::Name, record.GetPtName());
    filler.Set(FieldRole::Code, record.GetCode());
    CString description;
    Db().GetCoordDescription(handle, description);
    filler.Set(FieldRole::Description, description);
    filler.Set(FieldRole::CodeWord, CString(CodeWord(std::u16string_view(description))));
    filler.Set(FieldRole::Group, GroupTable::NameOf(Db(), record.GetGroup()));
    filler.SetTime(FieldRole::Time, record.GetRecTime());
    filler.Set(FieldRole::Origin, static_cast<int>(record.GetType()));
    filler.Set(FieldRole::Flags, static_cast<GIntBig>(record.GetFlags()));
    filler.Set(FieldRole::Hidden, hidden ? 1 : 0);
    std::array<double, 3> at{};
    record.GetPoint(at.data());
    filler.Set(FieldRole::Height, at[2]);
    if (symbol) {
        filler.Set(FieldRole::Layer, symbol->GetLayer());
        filler.Set(FieldRole::Color, symbol->GetColor());
        filler.SetStyle(SymbolStyle(Context().job.Look().ColorOf(*symbol), Db().GetSiPointSize()));
    }
    if (filler.WantsGeometry() && std::isfinite(at[0]) && std::isfinite(at[1])) {
        filler.Set(std::make_unique<OGRPoint>(at[0], at[1],
                                              std::isnan(at[2]) ? Context().missingHeight : at[2]));
    }
    return filler.Take();
}

OGREnvelope PointLayer::BoxOf(CqHandle handle) {
    OGREnvelope box;
    CqCoordRec record;
    if (Db().GetCoordRec(handle, record) != 0) {
        std::array<double, 3> at{};
        record.GetPoint(at.data());
        if (std::isfinite(at[0]) && std::isfinite(at[1])) {
            box.Merge(at[0], at[1]);
        }
    }
    return box;
}

const PointLayer::Names& PointLayer::ByName() {
    if (m_namesVersion != Context().job.Version()) {
        m_names.clear();
        m_names.reserve(static_cast<std::size_t>(Db().GetNumCoordRecs()));
        for (const CqPointItem& point : Points(Db())) {
            m_names.emplace(FoldAscii(ToUtf8(point.record.GetPtName())), point.handle);
        }
        m_namesVersion = Context().job.Version();
    }
    return m_names;
}

bool PointLayer::Narrow(OGRFeatureQuery& filter, std::vector<CqHandle>& handles) {
    const std::optional<std::vector<std::string>> values =
        ValuesAsked(filter, Fields().Find(FieldRole::Name).value_or(-1));
    if (!values) {
        return false;
    }
    handles.clear();
    for (const std::string& value : *values) {
        const auto [first, last] = ByName().equal_range(value);
        std::for_each(first, last, [&](const auto& entry) { handles.push_back(entry.second); });
    }
    std::sort(handles.begin(), handles.end());
    handles.erase(std::unique(handles.begin(), handles.end()), handles.end());
    return true;
}

void PointLayer::Follow(CqHandle handle, std::uint64_t version) {
    CqCoordRec record;
    if (m_namesVersion == version && Db().GetCoordRec(handle, record) != 0) {
        m_names.emplace(FoldAscii(ToUtf8(record.GetPtName())), handle);
        m_namesVersion = Context().job.Version();
    }
}

}  // namespace cqsurvey::gdal
