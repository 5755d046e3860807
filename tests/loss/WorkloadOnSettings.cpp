#include "loss/Workload.h"

#include <array>
#include <cstdio>
#include <string>

#include "cqsurvey/Text.h"

namespace cqsurvey {

namespace {

CString ThreeDecimals(double value) {
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), "%.3f", value);
    return FromUtf8(text.data());
}

CString Number(int value) {
    return FromUtf8(std::to_string(value));
}

}  // namespace

void Workload::Settings() {
    JobModel& job = Job();
    const CString section = Named(u"MINE ", Below(3));
    if (!job.settings.HasSection(section)) {
        job.settings.Add(section);
        Expect(1, [&](CqSurveyDB& db) { return db.AddSettingsSection(section); });
        return;
    }
    const CString key = Named(u"key", Below(4));
    const int value = Below(10000);
    switch (Below(5)) {
        case 0:
            job.settings.Delete(section);
            Expect(1, [&](CqSurveyDB& db) { return db.DeleteSettingsSection(section); });
            break;
        case 1: {
            const int answer = job.settings.Set(section, key, u"") ? 1 : 0;
            Expect(answer,
                   [&](CqSurveyDB& db) { return db.WriteSettingsString(section, key, u""); });
            break;
        }
        case 2:
            job.settings.Set(section, key, Number(value));
            Expect(1, [&](CqSurveyDB& db) { return db.WriteSettingsInt(section, key, value); });
            break;
        default: {
            const CString text = Named(u"\u00FCber ", value);
            job.settings.Set(section, key, text);
            Expect(1, [&](CqSurveyDB& db) { return db.WriteSettingsString(section, key, text); });
        }
    }
}

void Workload::FixedSettings() {
    SettingsModel& settings = Job().settings;
    const CString fixed = u"SETTINGS";
    const CString background = u"BACKGROUND";
    switch (Below(6)) {
        case 0: {
            const double size = Below(100) * 0.25;
            settings.Set(fixed, u"SiPointSize", ThreeDecimals(size));
            Expect(1, [&](CqSurveyDB& db) { return db.SetSiPointSize(size), 1; });
            break;
        }
        case 1: {
            const int division = 1 + Below(19);
            settings.Set(fixed, u"JCoordDivision", Number(division));
            Expect(1, [&](CqSurveyDB& db) { return db.SetJCoordDivision(division); });
            break;
        }
        case 2: {
            const int color = Below(257) - 1;
            settings.Set(background, u"EntityColor", Number(color));
            Expect(1, [&](CqSurveyDB& db) { return db.SetDrawingForceMonotone(color); });
            break;
        }
        case 3: {
            const int brightness = Below(511) - 255;
            const int contrast = Below(65001);
            settings.Set(background, u"Brightness", Number(brightness));
            settings.Set(background, u"Contrast", Number(contrast));
            settings.Set(background, u"Monotone", u"1");
            Expect(1, [&](CqSurveyDB& db) {
                return db.SetBackgroundImageSettings(brightness, contrast, 1);
            });
            break;
        }
        case 4: {
            const int color = Below(1 << 24);
            settings.Set(background, u"BKColor", Number(color));
            Expect(1, [&](CqSurveyDB& db) {
                return db.SetBackgroundColor(static_cast<std::uint32_t>(color)), 1;
            });
            break;
        }
        default: {
            const std::string name = OneIn(2) ? "one.ini" : "two.ini";
            settings = SettingsModel::Parse(FromUtf8(m_files.at(name)));
            Expect(1, [&](CqSurveyDB& db) { return db.ImportSettingsFile(PathOf(name)); });
        }
    }
}

void Workload::Image() {
    JobModel& job = Job();
    const CString background = u"BACKGROUND";
    if (OneIn(4)) {
        const int answer = job.image.empty() ? 0 : 1;
        if (!job.image.empty()) {
            for (const char16_t* key : {u"CenterX", u"CenterY", u"SizeX", u"SizeY"}) {
                job.settings.Set(background, key, u"0");
            }
            job.image.clear();
        }
        Expect(answer, [](CqSurveyDB& db) { return db.DeleteBackgroundImageFile(); });
        return;
    }
    const std::string name = OneIn(2) ? "small.img" : "large.img";
    const int type = Below(5);
    const CVector centre(Length(), Length());
    const CVector size(Length(), Length());
    const double rotation = Below(1440) * 0.25;
    job.image = m_files.at(name);
    job.settings.Set(background, u"Type", Number(type));
    job.settings.Set(background, u"CenterX", ThreeDecimals(centre.GetX()));
    job.settings.Set(background, u"CenterY", ThreeDecimals(centre.GetY()));
    job.settings.Set(background, u"SizeX", ThreeDecimals(size.GetX()));
    job.settings.Set(background, u"SizeY", ThreeDecimals(size.GetY()));
    job.settings.Set(background, u"Rotation", ThreeDecimals(rotation));
    Expect(1, [&](CqSurveyDB& db) {
        return db.StoreBackgroundImageFile(PathOf(name), type, centre, size, rotation);
    });
}

}  // namespace cqsurvey
