#include <gtest/gtest.h>

#include <iterator>
#include <random>
#include <string>

#include "cqsurvey/CqBatch.h"
#include "settings/JobSettingsFixture.h"
#include "settings/SettingsBytes.h"
#include "support/SettingsModel.h"

namespace cqsurvey {
namespace {

using JobSettingsTest = JobSettingsFixture;

TEST_F(JobSettingsTest, RandomSequencesAgreeWithTheModelAcrossReopening) {
    for (unsigned seed = 1; seed <= 3; ++seed) {
        SCOPED_TRACE(seed);
        m_db.CreateNew(m_folder.Path(u"job" + FromUtf8(std::to_string(seed))));
        SettingsModel model = SettingsModel::Parse(FromUtf8(kDefaultSettings));
        std::mt19937 random(seed);
        const CString sections[] = {u"SETTINGS", u"background", u"Mine", u"\u00c9t\u00e9", u"none"};
        const CString keys[] = {u"SiPointSize", u"JCOORDDIVISION", u"EntityColor", u"k", u"\u044f"};
        for (int step = 0; step < 100; ++step) {
            SCOPED_TRACE(step);
            const CString& section = sections[random() % std::size(sections)];
            const CString& key = keys[random() % std::size(keys)];
            const int number = static_cast<int>(random() % 400) - 100;
            switch (random() % 9) {
                case 0:
                    ASSERT_EQ(m_db.AddSettingsSection(section), model.Add(section) ? 1 : 0);
                    break;
                case 1: {
                    const bool fixed = SettingsModel::Alike(section, u"SETTINGS") ||
                                       SettingsModel::Alike(section, u"BACKGROUND");
                    ASSERT_EQ(m_db.DeleteSettingsSection(section),
                              !fixed && model.Delete(section) ? 1 : 0);
                    break;
                }
                case 2:
                case 3: {
                    const CString value = random() % 3 == 0 ? CString() : CString(u"v=\u65e5 ;x");
                    ASSERT_EQ(m_db.WriteSettingsString(section, key, value),
                              model.Set(section, key, value) ? 1 : 0);
                    break;
                }
                case 4: {
                    const CString text = FromUtf8(std::to_string(number));
                    ASSERT_EQ(m_db.WriteSettingsInt(section, key, number),
                              model.Set(section, key, text) ? 1 : 0);
                    break;
                }
                case 5: {
                    const bool inRange = number >= 1 && number <= 19;
                    ASSERT_EQ(m_db.SetJCoordDivision(number), inRange ? 1 : 0);
                    if (inRange) {
                        model.Set(u"SETTINGS", u"JCoordDivision", FromUtf8(std::to_string(number)));
                        ASSERT_EQ(m_db.GetJCoordDivision(), number);
                    }
                    break;
                }
                case 6: {
                    const bool inRange = number >= -1 && number <= 255;
                    ASSERT_EQ(m_db.SetDrawingForceMonotone(number), inRange ? 1 : 0);
                    if (inRange) {
                        model.Set(u"BACKGROUND", u"EntityColor", FromUtf8(std::to_string(number)));
                    }
                    break;
                }
                case 7: {
                    CString expected = u"default";
                    CString actual;
                    const bool found = model.Get(section, key, expected);
                    ASSERT_EQ(m_db.GetSettingsString(section, key, actual, u"default"),
                              found ? 1 : 0);
                    ASSERT_EQ(actual, expected);
                    break;
                }
                default:
                    if (random() % 8 == 0) {
                        const CString path = m_folder.Path(u"job" + FromUtf8(std::to_string(seed)));
                        m_db.Close();
                        m_db.Open(path);
                    }
                    break;
            }
            ASSERT_EQ(Exported(), ToUtf8(model.Text()));
        }
    }
}

TEST_F(JobSettingsTest, AnyBytesAreImportedWhollyOrNotAtAll) {
    std::mt19937 random(99);
    int accepted = 0;
    m_db.SetSiPointSize(3);
    CqBatch batch(m_db);
    for (int round = 0; round < 300; ++round) {
        SCOPED_TRACE(round);
        std::string bytes = kDefaultSettings + "[Own]\r\nnote=\xe6\x97\xa5\r\n";
        for (std::size_t changes = 1 + random() % 2; changes > 0; --changes) {
            const std::size_t at = random() % bytes.size();
            if (random() % 2 == 0) {
                bytes[at] = static_cast<char>(random());
            } else {
                bytes.insert(at, 1, "[]=\r\n 19"[random() % 8]);
            }
        }
        const std::string before = Exported();
        if (Import(bytes) != 0) {
            ++accepted;
            ASSERT_EQ(Exported(), bytes);
            ASSERT_GE(m_db.GetJCoordDivision(), 0);
            ASSERT_LE(m_db.GetJCoordDivision(), 19);
        } else {
            ASSERT_EQ(Exported(), before);
        }
        ASSERT_EQ(m_db.WriteSettingsInt(u"BACKGROUND", u"Type", round), 1);
        ASSERT_EQ(Exported(), SettingsBytes(Exported()).Text());
    }
    EXPECT_GT(accepted, 50);
    EXPECT_LT(accepted, 270);
}

}  // namespace
}  // namespace cqsurvey
