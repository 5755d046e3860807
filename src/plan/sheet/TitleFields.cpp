#include "plan/sheet/TitleFields.h"

#include <cmath>

#include "text/NumberText.h"

namespace cqsurvey::plan {

std::vector<TitleField> MakeTitleFields(const Plan& plan, const SheetNumber& sheet) {
    std::vector<TitleField> fields;
    const auto add = [&](const char* caption, const std::string& text) {
        if (!text.empty()) {
            fields.push_back({caption, text});
        }
    };
    const PlanTitle& title = plan.title;
    add("Client", title.client);
    add("Place", title.place);
    add("Surveyed by", title.surveyedBy);
    add("Drawn by", title.drawnBy);
    add("Date", title.date);
    add("Drawing number", title.drawingNumber);
    add("Coordinate system", plan.system);
    add("Height system", title.heightSystem);
    add("Unit of length", plan.unit ? GetUnitName(*plan.unit) : "");
    const std::string count = std::to_string(sheet.count);
    if (sheet.number == 0) {
        add("Sheet", "key plan of " + count + (sheet.count == 1 ? " sheet" : " sheets"));
    } else if (sheet.count > 1 || !fields.empty()) {
        add("Sheet", std::to_string(sheet.number) + " of " + count);
    }
    return fields;
}

std::string DescribePaper(const PaperSize& paper) {
    constexpr double kSame = 0.5;
    std::string names = PaperNames();
    for (std::size_t begin = 0; begin < names.size();) {
        const std::size_t end = std::min(names.find(',', begin), names.size());
        std::string name(Trim(std::string_view(names).substr(begin, end - begin)));
        begin = end + 1;
        const std::optional<PaperSize> size = FindPaper(name);
        if (!size) {
            continue;
        }
        const auto is = [&](double width, double height) {
            return std::fabs(paper.width - width) < kSame &&
                   std::fabs(paper.height - height) < kSame;
        };
        if (is(size->width, size->height) || is(size->height, size->width)) {
            return name;
        }
    }
    return FormatNumber(paper.width, 0) + " x " + FormatNumber(paper.height, 0) + " mm";
}

}  // namespace cqsurvey::plan
