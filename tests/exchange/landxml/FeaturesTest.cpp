#include "exchange/landxml/read/Features.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

#include "exchange/drawing/DrawingJob.h"
#include "exchange/landxml/Names.h"

namespace cqsurvey::exchange::landxml {
namespace {

using List = std::vector<std::string>;

class FeaturesTest : public testing::Test {
 protected:
    static XmlElement Element(const char* name,
                              std::vector<XmlElement::Attribute> attributes = {}) {
        XmlElement element;
        element.name = name;
        element.attributes = std::move(attributes);
        return element;
    }

    /// A line from one point or place to another: a place begins with a digit.
    void AddLine(const std::string& start, const std::string& end) {
        features.BeginSegment(Element("Line"));
        for (const auto& [name, at] : {std::pair("Start", start), std::pair("End", end)}) {
            const bool numbers = at.front() >= '0' && at.front() <= '9';
            features.BeginPlace(
                Element(name, {{"pntRef", numbers ? std::string_view() : std::string_view(at)}}));
            features.EndPlaceOfSegment(name, numbers ? at : "");
        }
        features.EndSegment("");
    }

    void AddFeature(const XmlElement& element, const std::string& start, const std::string& end) {
        features.Begin(element, "All");
        AddLine(start, end);
        features.End();
    }

    List Layers() {
        List list;
        for (const CqCadEntityPtr& entity : Entities(job.db)) {
            if (entity->GetType() == EntPline) {
                list.push_back(ToUtf8(entity->GetLayer()));
            }
        }
        return list;
    }

    DrawingJob job;
    DrawingReport report;
    LandXmlReadOptions options;
    Drawing drawing{job.db, report};
    LayerMap layers{job.db, [](std::string_view bytes) { return FromUtf8(bytes); }, report};
    MemoryLimit limit{1'000'000, [] { throw std::length_error("too much"); }};
    FeatureDrawer drawer{options, drawing, layers, report, limit};
    PlaceTable places;
    LostAttributes lost;
    Features features{drawer, places, lost, report, limit};
};

TEST_F(FeaturesTest, AFeatureIsDrawnWhenItEnds) {
    features.Begin(Element("PlanFeature", {{"name", "Kerb"}}), "");
    AddLine("0 0", "0 5");
    EXPECT_TRUE(job.List().empty());
    features.End();
    EXPECT_EQ(job.List(), List{"line 0,0,- 5,0,-"});
    EXPECT_EQ(Layers(), List{"Kerb"});
}

TEST_F(FeaturesTest, FromTheFirstThatWaitsForAPointAllWaitAndStayInOrder) {
    AddFeature(Element("PlanFeature", {{"name", "a"}}), "0 0", "0 1");
    AddFeature(Element("PlanFeature", {{"name", "b"}}), "0 0", "late");
    AddFeature(Element("PlanFeature", {{"name", "c"}}), "0 0", "0 3");
    EXPECT_EQ(Layers(), List{"a"});
    places.Add("late", *ReadPlace("7 2", 1.0));
    features.Finish();
    EXPECT_EQ(Layers(), (List{"a", "b", "c"}));
    EXPECT_EQ(job.List().at(1), "line 0,0,- 2,7,-");
}

TEST_F(FeaturesTest, TheLayerIsTheCodeTheDescriptionTheNameOrTheCollection) {
    AddFeature(Element("PlanFeature", {{"name", "n"}, {"desc", "d"}, {"code", "c"}}), "0 0", "0 1");
    AddFeature(Element("PlanFeature", {{"name", "n"}, {"desc", "d"}, {"code", "7"}}), "0 0", "0 1");
    AddFeature(Element("PlanFeature", {{"name", "n"}}), "0 0", "0 1");
    AddFeature(Element("PlanFeature"), "0 0", "0 1");
    AddFeature(Element("Alignment", {{"name", "R1"}}), "0 0", "0 1");
    AddFeature(Element("Parcel"), "0 0", "0 1");
    EXPECT_EQ(Layers(), (List{"c", "d", "n", "All", "Alignments", "Parcels"}));
}

TEST_F(FeaturesTest, WhatWeKeptComesBeforeWhatOthersSee) {
    features.Begin(Element("PlanFeature", {{"name", "n"}}), "");
    AddLine("0 0", "0 1");
    Extras extras;
    extras.Set(std::string(kLayerKey), "Kerb");
    features.SetExtras(extras);
    features.End();
    EXPECT_EQ(Layers(), List{"Kerb"});
}

TEST_F(FeaturesTest, AParcelInAParcelEndsFirst) {
    features.Begin(Element("Parcel", {{"name", "1"}}), "");
    features.Begin(Element("Parcel", {{"name", "1A"}}), "");
    features.BeginPlace(Element("Center"));
    features.EndPlaceOfFeature("Center", "5 5");
    features.End();
    features.BeginPlace(Element("Center"));
    features.EndPlaceOfFeature("Center", "1 1");
    features.End();
    EXPECT_EQ(job.List(), (List{"text 1A 5,5,- h1 r0 a12", "text 1 1,1,- h1 r0 a12"}));
}

TEST_F(FeaturesTest, AChainHasTheNamesBetweenItsBlanksAndAListItsPlaces) {
    places.Add("A", *ReadPlace("1 2", 1.0));
    places.Add("B", *ReadPlace("3 4", 1.0));
    features.Begin(Element("PlanFeature"), "");
    features.BeginSegment(Element("Chain"));
    features.EndSegment("\n A\tB  ");
    features.BeginSegment(Element("Chain"));
    features.EndSegment("  ");
    features.BeginSegment(Element("IrregularLine"));
    features.AddPlaces("PntList2D", "9 9 8 8");
    features.BeginPlace(Element("Start"));
    features.EndPlaceOfSegment("Start", "9 9");
    features.BeginPlace(Element("End"));
    features.EndPlaceOfSegment("End", "7 7");
    features.EndSegment("");
    features.End();
    EXPECT_EQ(job.List(), (List{"line 2,1,- 4,3,-", "line 9,9,- 8,8,- 7,7,-"}));
}

}  // namespace
}  // namespace cqsurvey::exchange::landxml
