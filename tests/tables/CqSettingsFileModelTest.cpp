#include <gtest/gtest.h>

#include <random>
#include <string>
#include <string_view>

#include "platform/Text.h"
#include "settings/SettingsBytes.h"
#include "store/StoreExtras.h"
#include "support/CodePageScope.h"
#include "support/SettingsModel.h"
#include "tables/CqSettingsFileFixture.h"

namespace cqsurvey {
namespace {

using CqSettingsFileTest = CqSettingsFileFixture;

/// The characters that make a difference to a settings file, and some that the page has beside.
const std::u16string_view kAlphabet = u"aAkK[]=; \t\u00e9\u00c9\u044f\u042f\u65e5";

CString RandomText(std::mt19937& random, std::size_t longest, std::u16string_view alphabet) {
    CString text;
    for (std::size_t length = random() % (longest + 1); length > 0; --length) {
        text += alphabet[random() % alphabet.size()];
    }
    return text;
}

TEST_F(CqSettingsFileTest, LongRandomSequencesAgreeWithTheModel) {
    ASSERT_NE(StoreBeginStep(m_volume.MountName()), 0);
    ASSERT_EQ(m_settings.Create(Path()), 1);
    for (unsigned seed = 1; seed <= 40; ++seed) {
        SCOPED_TRACE(seed);
        std::mt19937 random(seed);
        SettingsModel model;
        m_settings.Clear();
        m_settings.KeepStep();
        SettingsModel kept = model;
        const auto name = [&] {
            return RandomText(random, 2, u"aAbB\u00e9\u00c9\u044f\u042f=[] ");
        };
        for (int step = 0; step < 400; ++step) {
            SCOPED_TRACE(step);
            const CString section = name();
            const CString key = name();
            CString expected = u"same";
            CString actual = u"same";
            switch (random() % 12) {
                case 0:
                case 1:
                    ASSERT_EQ(m_settings.AddSection(section), model.Add(section) ? 1 : 0);
                    break;
                case 2:
                    ASSERT_EQ(m_settings.DeleteSection(section), model.Delete(section) ? 1 : 0);
                    break;
                case 3:
                case 4:
                case 5: {
                    const CString value = RandomText(random, 5, kAlphabet);
                    ASSERT_EQ(m_settings.WriteString(section, key, value),
                              model.Set(section, key, value) ? 1 : 0);
                    break;
                }
                case 6: {
                    const auto value = static_cast<std::int32_t>(random());
                    ASSERT_EQ(m_settings.WriteInt(section, key, value),
                              model.Set(section, key, FromUtf8(std::to_string(value))) ? 1 : 0);
                    break;
                }
                case 7: {
                    CStringList keys{u"old"};
                    ASSERT_EQ(m_settings.GetKeyList(section, keys),
                              model.HasSection(section) ? 1 : 0);
                    ASSERT_EQ(keys, model.Keys(section));
                    break;
                }
                case 8:
                    ASSERT_EQ(m_settings.GetString(section, key, actual),
                              model.Get(section, key, expected) ? 1 : 0);
                    ASSERT_EQ(actual, expected);
                    break;
                case 9:
                    ASSERT_EQ(m_settings.Write(Path()), 1);
                    ASSERT_EQ(VolumeFileBytes(Path()), ToUtf8(model.Text()));
                    ASSERT_EQ(m_settings.Read(Path()), 1);
                    model = SettingsModel::Parse(model.Text());
                    break;
                case 10:
                    m_settings.KeepStep();
                    kept = model;
                    break;
                default:
                    m_settings.UndoStep();
                    model = kept;
                    break;
            }
            CStringList sections;
            m_settings.GetSectionList(sections);
            ASSERT_EQ(sections, model.Sections());
        }
    }
}

TEST_F(CqSettingsFileTest, WhateverBytesAFileHoldsAreReadAndWrittenAsTheModelsDo) {
    const std::string seedFile =
        "[SETTINGS]\r\nSiPointSize=5.000\r\nVersion=1.00\r\n[BACKGROUND]\r\nType=0\r\n"
        "name=\xe6\x97\xa5\xe6\x9c\xac\r\n[\xc3\xa9t\xc3\xa9]\nlong=" +
        std::string(240, 'x') + "\xf0\x9f\x98\x80\xc3\xa9\x93\xfa\r\n";
    ASSERT_NE(StoreBeginStep(m_volume.MountName()), 0);
    const CString again = m_volume.File(u"again");
    ASSERT_NE(QrfsCreateFile(again, 0), 0);
    for (const int number : {65001, 1252, 932}) {
        const CodePageScope page(number);
        std::mt19937 random(static_cast<unsigned>(number));
        for (int round = 0; round < 400; ++round) {
            SCOPED_TRACE(testing::Message() << "page " << number << " round " << round);
            std::string bytes = seedFile;
            for (std::size_t changes = 1 + random() % 12; changes > 0; --changes) {
                const std::size_t at = random() % bytes.size();
                switch (random() % 4) {
                    case 0:
                        bytes[at] = static_cast<char>(random());
                        break;
                    case 1:
                        bytes.insert(at, 1, "[]=\r\n\t ;"[random() % 8]);
                        break;
                    case 2:
                        bytes.erase(at, 1 + random() % 4);
                        break;
                    default:
                        bytes.insert(at, bytes.substr(random() % bytes.size(), random() % 40));
                        break;
                }
            }
            PutVolumeFile(Path(), bytes);
            ASSERT_EQ(m_settings.Read(Path()), 1);
            // The texts are those of the whole file, converted at once.
            SettingsModel model = SettingsModel::Parse(FromAnsi(bytes));
            CStringList sections;
            m_settings.GetSectionList(sections);
            ASSERT_EQ(sections, model.Sections());
            CStringList keys;
            for (const CString& section : sections) {
                m_settings.GetKeyList(section, keys);
                ASSERT_EQ(keys, model.Keys(section));
            }
            SettingsBytes expected(bytes);
            ASSERT_EQ(m_settings.Write(again), 1);
            ASSERT_EQ(VolumeFileBytes(again), expected.Text());
            // Each change leaves the bytes of all other lines alone.
            for (int change = 0; change < 2 && !sections.empty(); ++change) {
                const CString& section = sections[random() % sections.size()];
                m_settings.GetKeyList(section, keys);
                if (!keys.empty()) {
                    const CString& key = keys[random() % keys.size()];
                    const CString value = FromUtf8(std::to_string(random() % 100)) + u"\u00e9";
                    ASSERT_EQ(m_settings.WriteString(section, key, value), 1);
                    expected.Set(section, key, value);
                }
            }
            ASSERT_EQ(m_settings.Write(again), 1);
            ASSERT_EQ(VolumeFileBytes(again), expected.Text());
            ASSERT_EQ(m_settings.Read(again), 1);
            ASSERT_EQ(m_settings.Write(again), 1);
            ASSERT_EQ(VolumeFileBytes(again), expected.Text());
        }
    }
}

}  // namespace
}  // namespace cqsurvey
