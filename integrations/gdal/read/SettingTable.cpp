#include "gdal/read/SettingTable.h"

#include <numeric>

namespace cqsurvey::gdal {

SettingTable::SettingTable(const LayerContext& context)
    : JobLayer(context, RecordKind::Settings, "settings", wkbNone,
               {FieldRole::Section, FieldRole::Key, FieldRole::Value}) {}

const std::vector<SettingTable::Setting>& SettingTable::Settings() {
    if (m_version != Context().job.Version()) {
        m_settings.clear();
        CStringList sections;
        Db().GetSettingsSectionList(sections);
        for (const CString& section : sections) {
            CStringList keys;
            Db().GetSettingsKeyList(section, keys);
            for (const CString& key : keys) {
                Setting setting{section, key, CString()};
                Db().GetSettingsString(section, key, setting.value, CString());
                m_settings.push_back(std::move(setting));
            }
        }
        m_version = Context().job.Version();
    }
    return m_settings;
}

std::vector<CqHandle> SettingTable::List() {
    std::vector<CqHandle> handles(Settings().size());
    std::iota(handles.begin(), handles.end(), CqHandle{1});
    return handles;
}

GIntBig SettingTable::Count() {
    return static_cast<GIntBig>(Settings().size());
}

std::unique_ptr<OGRFeature> SettingTable::Read(CqHandle handle) {
    if (handle == 0 || handle > Settings().size()) {
        return nullptr;
    }
    const Setting& setting = Settings()[handle - 1];
    FeatureFiller filler = Fill(handle);
    filler.Set(FieldRole::Section, setting.section);
    filler.Set(FieldRole::Key, setting.key);
    filler.Set(FieldRole::Value, setting.value);
    return filler.Take();
}

}  // namespace cqsurvey::gdal
