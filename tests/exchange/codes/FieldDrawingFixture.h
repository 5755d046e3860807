#pragma once

#include <cqsurvey/cqsurvey.h>
#include <fmt/format.h>
#include <gtest/gtest.h>

#include <array>
#include <string>

#include "cqsurvey/exchange/FieldDrawing.h"
#include "support/TempDir.h"

namespace cqsurvey::exchange {

/// A new job, a table of codes of each kind, and the drawing as text.
class FieldDrawingFixture : public testing::Test {
 protected:
    FieldDrawingFixture() {
        m_db.CreateNew(m_folder.Path(u"job"));
        Row({.code = u"EP",
             .number = 12,
             .layer = u"Road",
             .color = 3,
             .line = 1,
             .kind = CqCodeKind::Line});
        Row({.code = u"KERB", .number = 13, .layer = u"Kerb", .kind = CqCodeKind::Line});
        Row({.code = u"BLD", .layer = u"Buildings", .kind = CqCodeKind::ClosedLine});
        Row({.code = u"TR",
             .number = 40,
             .layer = u"Trees",
             .symbol = u"deciduous",
             .label = u"{text}"});
        Row({.code = u"GS", .layer = u"Ground"});
        Row({.code = u"TX",
             .layer = u"Texts",
             .kind = CqCodeKind::Text,
             .size = 2.5,
             .text = u"{text}"});
        Row({.code = u"MH", .layer = u"Pipes", .kind = CqCodeKind::Circle, .size = 0.4});
    }

    void Row(const CqCode& code) { ASSERT_EQ(m_codes.Add(code), 1); }

    void Point(const std::string& name, double e, double n, const std::string& description,
               double z = 0.0) {
        const std::array<double, 3> coords{e, n, z};
        const CqHandle handle =
            m_db.AddCoordRec(coords.data(), FromUtf8(name), 0, SurveyCoordType{1}, 0);
        if (!description.empty()) {
            ASSERT_EQ(m_db.AddCoordDescription(handle, FromUtf8(description)), 1);
        }
    }

    CodeReport Draw(bool redraw = false) {
        DrawOptions options;
        options.codes = m_codes;
        options.redraw = redraw;
        options.textHeight = 1.0;
        return FieldDrawing(options).Draw(m_db);
    }

    /// The drawing without the points, an entity a line.
    std::string Show() {
        std::string text;
        std::array<double, 3> at{};
        for (const CqCadEntityPtr& entity : Entities(m_db)) {
            entity->GetPoint(at.data());
            switch (entity->GetType()) {
                case EntPline:
                    text += fmt::format("line {} {} {} {}:\n", ToUtf8(entity->GetLayer()),
                                        entity->GetColor(), entity->GetLine(), entity->GetCode());
                    break;
                case EntVertex:
                    text +=
                        fmt::format("  {:.3f} {:.3f} {:.3f} bulge {:.4f} {}\n", at[0], at[1], at[2],
                                    entity->GetBulge(), TiedName(entity->GetMcadSiPointHandle()));
                    break;
                case EntCircle:
                    text +=
                        fmt::format("circle {} {:.3f} {:.3f} r {:.3f}\n",
                                    ToUtf8(entity->GetLayer()), at[0], at[1], entity->GetRadius());
                    break;
                case EntText:
                    text += fmt::format("text {} {:.3f} {:.3f} h {:.3f} {}\n",
                                        ToUtf8(entity->GetLayer()), at[0], at[1],
                                        entity->GetHeight(), ToUtf8(entity->GetText()));
                    break;
                default:
                    break;
            }
        }
        return text;
    }

    std::string TiedName(CqHandle entity) {
        if (entity == 0) {
            return "free";
        }
        CqCoordRec record;
        static_cast<void>(
            m_db.GetCoordRec(m_db.GetCoordRecHandleByCadEntityHandle(entity), record));
        return ToUtf8(record.GetPtName());
    }

    static std::string Show(const CodeReport& report) {
        std::string text;
        for (const CodeRow& row : report.rows) {
            text += fmt::format("{} {}: {}{}{}{}{}\n", row.name, row.code, CodeFateWord(row.fate),
                                row.what.empty() ? "" : ", ", row.what,
                                row.reason.empty() ? "" : ": ", row.reason);
        }
        return text;
    }

    CqHandle FirstLine() {
        for (const CqCadEntityPtr& entity : Entities(m_db)) {
            if (entity->GetType() == EntPline) {
                return entity->GetHandle();
            }
        }
        return 0;
    }

    TempDir m_folder;
    CqSurveyDB m_db;
    CqCodeTable m_codes;
};

}  // namespace cqsurvey::exchange
