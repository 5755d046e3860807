#pragma once

#include "gdal/read/JobLayer.h"

namespace cqsurvey::gdal {

/// The settings, as a table. A feature's id counts them from 1.
class SettingTable : public JobLayer {
 public:
    explicit SettingTable(const LayerContext& context);

 protected:
    std::vector<CqHandle> List() override;
    GIntBig Count() override;
    std::unique_ptr<OGRFeature> Read(CqHandle handle) override;

 private:
    struct Setting {
        CString section;
        CString key;
        CString value;
    };
    const std::vector<Setting>& Settings();

    std::vector<Setting> m_settings;
    std::uint64_t m_version = 0;
};

}  // namespace cqsurvey::gdal
