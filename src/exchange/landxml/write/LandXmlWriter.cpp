#include "cqsurvey/exchange/LandXmlWriter.h"

#include <fmt/format.h>

#include <ctime>
#include <utility>

#include "cqsurvey/CodePage.h"
#include "cqsurvey/CqJobSystem.h"
#include "cqsurvey/CqSurveyDB.h"
#include "cqsurvey/Text.h"
#include "cqsurvey/exchange/CoordinateSystem.h"
#include "cqsurvey/exchange/ExchangeError.h"
#include "exchange/TimeText.h"
#include "exchange/landxml/Names.h"
#include "exchange/landxml/write/FeatureWriter.h"
#include "text/Printable.h"

namespace cqsurvey::exchange {

namespace {

using namespace landxml;

void WriteUnits(XmlWriter& out, LengthUnit unit) {
    const char* imperial = unit == LengthUnit::Foot           ? "foot"
                           : unit == LengthUnit::UsSurveyFoot ? "USSurveyFoot"
                           : unit == LengthUnit::Inch         ? "inch"
                                                              : nullptr;
    out.Begin("Units");
    out.Begin(imperial == nullptr ? "Metric" : "Imperial");
    if (imperial == nullptr) {
        out.Attribute("areaUnit", "squareMeter");
        out.Attribute("linearUnit", unit == LengthUnit::Millimetre   ? "millimeter"
                                    : unit == LengthUnit::Centimetre ? "centimeter"
                                    : unit == LengthUnit::Kilometre  ? "kilometer"
                                                                     : "meter");
        out.Attribute("volumeUnit", "cubicMeter");
        out.Attribute("temperatureUnit", "celsius");
        out.Attribute("pressureUnit", "milliBars");
    } else {
        out.Attribute("areaUnit", "squareFoot");
        out.Attribute("linearUnit", imperial);
        out.Attribute("volumeUnit", "cubicFeet");
        out.Attribute("temperatureUnit", "fahrenheit");
        out.Attribute("pressureUnit", "inchHG");
    }
    out.Attribute("angularUnit", "decimal degrees");
    out.Attribute("directionUnit", "decimal degrees");
    out.End();
    out.End();
}

void WriteSystem(XmlWriter& out, CqSurveyDB& db, DrawingReport& report) {
    const std::string stated = ToUtf8(CqJobSystem(db).GetSystem());
    if (stated.empty()) {
        return;
    }
    constexpr std::string_view kAuthority = "EPSG:";
    try {
        const CoordinateSystem system = CoordinateSystem::Find(stated);
        if (system.GetId().starts_with(kAuthority)) {
            out.Begin("CoordinateSystem");
            out.Attribute("name", system.GetName());
            out.Attribute("epsgCode", system.GetId().substr(kAuthority.size()));
            out.End();
            return;
        }
    } catch (const ExchangeError&) {
        // A text that PROJ does not know has no code either.
    }
    report.Note(
        fmt::format("the job's system {} is not written: it has no EPSG code", Printable(stated)));
}

void WriteProject(XmlWriter& out, CqSurveyDB& db, const std::string& name) {
    out.Begin("Project");
    out.Attribute("name", name);
    CString layer;
    int color = 0;
    int left = db.GetNumLayers();
    for (CqHandle handle = db.GetFirstLayerHandle();
         handle != 0 && left > 0 && db.GetNextLayer(handle, layer, color) != 0; --left) {
        Extras extras;
        extras.Set(std::string(kLayerKey), ToUtf8(layer));
        constexpr int kInk = 7;
        extras.SetWhole("COLOR", color, kInk);
        extras.SetWhole("LINE", db.GetLayerLine(layer));
        WriteExtras(out, extras);
    }
    out.End();
}

void BeginRoot(XmlWriter& out, std::uint32_t time) {
    const std::string written = FormatTime(time);
    constexpr std::size_t kDate = 10;
    constexpr std::size_t kTime = 8;
    out.Begin("LandXML");
    out.Attribute("xmlns", "http://www.landxml.org/schema/LandXML-1.2");
    out.Attribute("version", "1.2");
    out.Attribute("date", written.substr(0, kDate));
    out.Attribute("time", written.substr(kDate + 1, kTime));
    out.Attribute("readOnly", "false");
}

}  // namespace

LandXmlWriter::LandXmlWriter(CqSurveyDB& db, LandXmlWriteOptions options, Sink sink)
    : m_db(db), m_options(std::move(options)), m_sink(std::move(sink)) {
    if (!m_options.unit) {
        throw OptionError(
            "a LandXML file tells the unit of its lengths, and the job's is not known");
    }
}

DrawingReport LandXmlWriter::Write() {
    DrawingReport report;
    report.version = "1.2";
    report.unit = UnitWord(*m_options.unit);
    report.codePage = CqCodePage::kUtf8;
    XmlWriter out(m_sink);
    BeginRoot(out, m_options.time.value_or(static_cast<std::uint32_t>(std::time(nullptr))));
    WriteUnits(out, *m_options.unit);
    WriteSystem(out, m_db, report);
    WriteProject(out, m_db, m_options.project);
    out.Begin("Application");
    out.Attribute("name", "CqSurvey");
    out.End();
    const auto count = [&](const char* kind, const CqCadEntity& entity,
                           const DrawingOutcome& outcome) {
        report.Count(kind, ToUtf8(entity.GetLayer()), outcome, false, entity.GetHandle());
    };
    PointsWriter points(m_db, out);
    WalkDrawing(m_db, m_options.progress, [&](const CqCadEntity& entity, const auto&) {
        if (entity.GetType() == EntSiPnt) {
            count("point", entity, points.Write(entity));
        }
    });
    points.Finish();
    FeatureWriter features(out, points);
    bool any = false;
    WalkDrawing(m_db, nullptr,
                [&](const CqCadEntity& entity, const std::vector<WalkedVertex>& vertices) {
                    if (entity.GetType() == EntSiPnt) {
                        return;
                    }
                    if (!any) {
                        out.Begin("PlanFeatures");
                        any = true;
                    }
                    switch (entity.GetType()) {
                        case EntPline:
                            count("polyline", entity, features.Polyline(entity, vertices));
                            break;
                        case EntCircle:
                            count("circle", entity, features.Circle(entity));
                            break;
                        case EntText:
                            count("text", entity, features.Text(entity));
                            break;
                        case EntBitmap:
                            count("bitmap", entity, LeftOut("its picture is not in the job"));
                            break;
                        case EntVertex:
                            count("vertex", entity, LeftOut("it belongs to no polyline"));
                            break;
                        case EntSiPnt:
                            break;
                    }
                });
    if (any) {
        out.End();
    }
    out.End();
    out.Finish();
    if (features.GetLostTies() > 0) {
        report.Note(fmt::format(
            "{} of vertices to points without a name, or at another place, "
            "not written",
            features.GetLostTies() == 1 ? "1 tie is"
                                        : fmt::format("{} ties are", features.GetLostTies())));
    }
    report.Note(
        "points come before the other entities; their times, the job's other settings and empty "
        "groups are not written");
    if (m_db.IsBackgroundImageFile() != 0) {
        report.Note("the background image is not written");
    }
    return report;
}

}  // namespace cqsurvey::exchange
