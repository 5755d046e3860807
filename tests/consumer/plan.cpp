#include <cqsurvey/cqsurvey.h>
#include <cqsurvey/plan/plan.h>

#include <cstdio>
#include <exception>
#include <filesystem>
#include <string>

/// An application as it is outside this tree: it draws the plan of a job with one point. Ends with
/// 0 when that went well.
int main() {
    try {
        cqsurvey::CqSurveyDB db;
        db.CreateNew(u"plan.job");
        const double corner[3] = {2000.25, 5000.5, 312.125};
        db.AddCoordRec(corner, u"101", 7, cqsurvey::SurveyCoordType{1}, 0);
        const cqsurvey::plan::PlanDrawing drawing(db);
        db.Close();
        std::filesystem::remove("plan.job");
        cqsurvey::plan::PlotOptions options;
        options.format = cqsurvey::plan::PictureFormat::Svg;
        std::string picture;
        drawing.Draw(options, [&](std::string_view bytes) { picture += bytes; });
        return drawing.GetCount() == 1 && picture.find("<svg") != std::string::npos ? 0 : 1;
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "%s\n", failure.what());
        return 1;
    }
}
