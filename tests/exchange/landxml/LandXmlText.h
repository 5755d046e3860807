#pragma once

#include <gtest/gtest.h>

#include <string>

#include "cqsurvey/exchange/LandXmlReader.h"
#include "cqsurvey/exchange/LandXmlWriter.h"
#include "cqsurvey/exchange/TextSource.h"
#include "exchange/drawing/DrawingJob.h"

namespace cqsurvey::exchange {

/// A file in metres with these elements in its root.
inline std::string LandXmlText(const std::string& elements) {
    return "<?xml version=\"1.0\"?>\n"
           "<LandXML xmlns=\"http://www.landxml.org/schema/LandXML-1.2\" version=\"1.2\">\n"
           "<Units><Metric linearUnit=\"meter\"/></Units>\n" +
           elements + "\n</LandXML>\n";
}

/// A plan feature with these elements in its geometry.
inline std::string PlanFeatureText(const std::string& geometry) {
    return "<PlanFeatures><PlanFeature name=\"Kerb\"><CoordGeom>" + geometry +
           "</CoordGeom></PlanFeature></PlanFeatures>";
}

/// A new job, and what was drawn in it from a LandXML file.
class LandXmlJob : public DrawingJob {
 public:
    DrawingReport Read(const std::string& text, const LandXmlReadOptions& options = {}) {
        StringSource source(text);
        return LandXmlReader(source, options).Import(db);
    }

    std::string Write(LandXmlWriteOptions options = {.unit = LengthUnit::Metre}) {
        std::string text;
        options.time = 0;
        static_cast<void>(
            LandXmlWriter(db, options, [&](std::string_view bytes) { text += bytes; }).Write());
        return text;
    }
};

/// Writes the job, reads the file into a new one, and compares the two.
inline void ExpectSameJob(LandXmlJob& job) {
    LandXmlJob back;
    const std::string text = job.Write();
    static_cast<void>(back.Read(text));
    EXPECT_EQ(Details(back.db), Details(job.db)) << text;
    EXPECT_EQ(LayersOf(back.db), LayersOf(job.db));
}

}  // namespace cqsurvey::exchange
