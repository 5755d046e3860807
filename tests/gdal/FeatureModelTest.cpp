#include <algorithm>
#include <cmath>
#include <map>
#include <random>

#include "gdal/GdalJob.h"

namespace cqsurvey::gdal {
namespace {

/// What a feature has to be, kept without the driver.
struct ModelFeature {
    std::string layer;                          ///< of the dataset
    std::map<std::string, std::string> fields;  ///< "null" where there is nothing
    std::vector<std::array<double, 3>> course;  ///< places; of an arc also the one half way
};
using Model = std::map<GIntBig, ModelFeature>;

/// Random work on features through GDAL, compared with a model of what has to come out.
class FeatureModelTest : public GdalJob {
 protected:
    void Run(std::uint32_t seed, int steps) {
        m_random.seed(seed);
        MakeJob([](CqSurveyDB&) {});
        m_dataset = OpenToWrite();
        ASSERT_NE(m_dataset, nullptr);
        for (int step = 0; step < steps && !HasFailure(); ++step) {
            SCOPED_TRACE("seed " + std::to_string(seed) + ", step " + std::to_string(step));
            Step();
            if (step % 20 == 19) {
                Compare();
            }
        }
        SCOPED_TRACE("seed " + std::to_string(seed) + ", at the end");
        if (m_inTransaction) {
            ASSERT_EQ(m_dataset->CommitTransaction(), OGRERR_NONE);
        }
        m_dataset = Open();
        Compare();
        m_dataset.reset();
        CqSurveyDB db;
        db.OpenReadOnly(FromUtf8(Path()));
        EXPECT_EQ(CqJobCheck(db).GetCount(), 0U);
    }

 private:
    int Below(int count) { return std::uniform_int_distribution<int>(0, count - 1)(m_random); }

    void Step() {
        switch (Below(20)) {
            case 0:
                StartOrEnd();
                break;
            case 1:
                Reopen();
                break;
            case 2:
            case 3:
                Delete();
                break;
            case 4:
            case 5:
                Refused();
                break;
            case 6:
            case 7:
            case 8:
            case 9:
            case 10:
            case 11:
                Change();
                break;
            default:
                Create();
        }
    }

    void StartOrEnd() {
        if (!m_inTransaction) {
            ASSERT_EQ(m_dataset->StartTransaction(), OGRERR_NONE);
            m_before = m_model;
        } else if (Below(2) == 0) {
            ASSERT_EQ(m_dataset->CommitTransaction(), OGRERR_NONE);
        } else {
            ASSERT_EQ(m_dataset->RollbackTransaction(), OGRERR_NONE);
            m_model = m_before;
        }
        m_inTransaction = !m_inTransaction;
    }

    void Reopen() {
        // What was not committed goes.
        m_dataset.reset();
        if (m_inTransaction) {
            m_model = m_before;
            m_inTransaction = false;
        }
        m_dataset = OpenToWrite();
        ASSERT_NE(m_dataset, nullptr);
    }

    void Create() {
        const std::array<const char*, 4> layers{"points", "texts", "circles", "polylines"};
        ModelFeature wanted;
        wanted.layer = layers.at(static_cast<std::size_t>(Below(4)));
        wanted.fields = {{"layer", "0"}, {"color", "256"}, {"hidden", "0"}};
        if (wanted.layer == "points") {
            wanted.fields.insert(
                {{"name", "null"}, {"code", "0"}, {"description", "null"}, {"group_name", "null"}});
        } else if (wanted.layer == "texts") {
            wanted.fields.insert({{"text", "x"}, {"rotation", "0"}, {"code", "0"}});
        } else if (wanted.layer == "circles") {
            wanted.fields.insert({{"radius", "1"}, {"code", "0"}, {"line_type", "0"}});
        } else {
            wanted.fields.insert({{"code", "0"}, {"line_type", "0"}});
        }
        ChangeFields(wanted, 2);
        ChangeCourse(wanted);
        OGRLayer& layer = *m_dataset->GetLayerByName(wanted.layer.c_str());
        OGRFeature feature(layer.GetLayerDefn());
        Fill(feature, wanted, wanted.fields, true);
        ASSERT_EQ(layer.CreateFeature(&feature), OGRERR_NONE);
        ASSERT_FALSE(m_model.contains(Key(wanted.layer, feature.GetFID())));
        m_model[Key(wanted.layer, feature.GetFID())] = wanted;
    }

    void Change() {
        const auto entry = Choose();
        if (entry == m_model.end()) {
            return;
        }
        const ModelFeature before = entry->second;
        ChangeFields(entry->second, 3);
        const bool moves = Below(2) == 0;
        if (moves) {
            ChangeCourse(entry->second);
        }
        OGRLayer& layer = *m_dataset->GetLayerByName(before.layer.c_str());
        const GIntBig id = IdOf(entry->first);
        OGRFeatureUniquePtr feature(layer.GetFeature(id));
        ASSERT_NE(feature, nullptr);
        std::map<std::string, std::string> changed;
        for (const auto& [field, value] : entry->second.fields) {
            if (before.fields.at(field) != value) {
                changed[field] = value;
            }
        }
        if (Below(2) == 0 && moves) {
            // One that is made anew: fields that are not set stay.
            feature.reset(new OGRFeature(layer.GetLayerDefn()));
            feature->SetFID(id);
        } else if (!moves && Below(2) == 0) {
            changed.insert(entry->second.fields.begin(), entry->second.fields.end());
        }
        Fill(*feature, entry->second, changed, moves);
        EXPECT_EQ(layer.SetFeature(feature.get()), OGRERR_NONE);
    }

    void Delete() {
        const auto entry = Choose();
        if (entry == m_model.end()) {
            return;
        }
        OGRLayer& layer = *m_dataset->GetLayerByName(entry->second.layer.c_str());
        EXPECT_EQ(layer.DeleteFeature(IdOf(entry->first)), OGRERR_NONE);
        EXPECT_EQ(layer.DeleteFeature(IdOf(entry->first)), OGRERR_NON_EXISTING_FEATURE);
        m_model.erase(entry);
    }

    /// What a job refuses changes nothing, neither here nor there.
    void Refused() {
        const auto entry = Choose();
        if (entry == m_model.end()) {
            return;
        }
        const Messages quiet;
        OGRLayer& layer = *m_dataset->GetLayerByName(entry->second.layer.c_str());
        const OGRFeatureUniquePtr feature(layer.GetFeature(IdOf(entry->first)));
        ASSERT_NE(feature, nullptr);
        feature->SetField("layer", "never");
        feature->SetField("code", 4711);
        const auto other = Choose();
        const std::string name =
            other->second.layer == "points" ? other->second.fields.at("name") : "null";
        if (entry->second.layer == "points" && other != entry && name != "null") {
            feature->SetField("name", name.c_str());
        } else {
            feature->SetField("color", 300);
        }
        EXPECT_NE(layer.SetFeature(feature.get()), OGRERR_NONE);
        feature->SetGeometry(nullptr);
        EXPECT_NE(layer.SetFeature(feature.get()), OGRERR_NONE);
        EXPECT_NE(layer.CreateFeature(feature.get()), OGRERR_NONE);
    }

    void ChangeFields(ModelFeature& feature, int most) {
        for (int i = Below(most + 1); i > 0; --i) {
            auto at = feature.fields.begin();
            std::advance(at, Below(static_cast<int>(feature.fields.size())));
            const std::string& field = at->first;
            std::string& value = at->second;
            if (field == "name") {
                value = FreeName();
            } else if (field == "layer" || field == "group_name" || field == "text") {
                value = field + std::to_string(Below(4));
            } else if (field == "description") {
                value = Below(3) == 0 ? "null" : "word " + std::to_string(Below(100));
            } else if (field == "color") {
                value = std::to_string(Below(257) * (Below(4) == 0 ? -1 : 1));
            } else if (field != "hidden") {
                value = std::to_string(Below(8) + (field == "radius" ? 1 : 0));
            }
        }
        feature.fields["hidden"] = feature.fields["color"][0] == '-' ? "1" : "0";
        if (feature.fields["color"] == "0" || feature.fields["color"] == "-0") {
            feature.fields["color"] = "7";
            feature.fields["hidden"] = "0";
        }
    }

    std::string FreeName() {
        const std::string name = "P" + std::to_string(Below(200));
        const bool taken = std::any_of(m_model.begin(), m_model.end(), [&](const auto& entry) {
            return entry.second.layer == "points" && entry.second.fields.at("name") == name;
        });
        return taken ? "null" : name;
    }

    double Place() { return 2.0 * (Below(1000) - 500); }
    double Height() { return Below(5) == 0 ? kNoHeight : Below(100) / 4.0; }

    void ChangeCourse(ModelFeature& feature) {
        if (feature.layer != "polylines") {
            feature.course = {{Place(), Place(), Height()}};
            return;
        }
        // Some places stay, in their order.
        std::vector<std::array<double, 3>> course;
        for (const auto& at : feature.course) {
            if (Below(3) != 0) {
                course.push_back(at);
            }
            if (Below(4) == 0) {
                course.push_back({Place(), Place(), Height()});
            }
        }
        while (course.size() < 2) {
            course.push_back({Place(), Place(), Height()});
        }
        feature.course = course;
    }

    static void Fill(OGRFeature& feature, const ModelFeature& wanted,
                     const std::map<std::string, std::string>& fields, bool moves) {
        for (const auto& [field, value] : fields) {
            // Whether it is hidden follows from its colour.
            if (field == "hidden") {
                continue;
            }
            const int index = feature.GetFieldIndex(field.c_str());
            if (value == "null") {
                feature.SetFieldNull(index);
            } else {
                feature.SetField(index, value.c_str());
            }
        }
        if (!moves && wanted.layer != "circles") {
            return;
        }
        const auto& at = wanted.course.front();
        if (wanted.layer == "polylines") {
            auto line = std::make_unique<OGRLineString>();
            for (const auto& place : wanted.course) {
                line->addPoint(place[0], place[1], place[2]);
            }
            feature.SetGeometryDirectly(line.release());
        } else if (wanted.layer == "circles") {
            const double radius = std::stod(wanted.fields.at("radius"));
            auto circle = std::make_unique<OGRCircularString>();
            circle->addPoint(at[0] + radius, at[1], at[2]);
            circle->addPoint(at[0] - radius, at[1], at[2]);
            circle->addPoint(at[0] + radius, at[1], at[2]);
            feature.SetGeometryDirectly(circle.release());
            feature.SetField("radius", radius);
            feature.SetField("easting", at[0]);
            feature.SetField("northing", at[1]);
        } else {
            feature.SetGeometryDirectly(new OGRPoint(at[0], at[1], at[2]));
            if (wanted.layer == "points") {
                feature.UnsetField(feature.GetFieldIndex("height"));
            }
        }
    }

    void Compare() {
        std::size_t read = 0;
        std::map<std::string, GIntBig> counts;
        for (const auto& [key, wanted] : m_model) {
            ++counts[wanted.layer];
        }
        for (const char* name : {"points", "texts", "circles", "polylines"}) {
            OGRLayer& layer = *m_dataset->GetLayerByName(name);
            EXPECT_EQ(layer.GetFeatureCount(), counts[name]) << name;
            for (const auto& feature : layer) {
                ++read;
                const auto wanted = m_model.find(Key(name, feature->GetFID()));
                ASSERT_NE(wanted, m_model.end()) << name << " " << feature->GetFID();
                CompareOne(*feature, wanted->second);
            }
        }
        EXPECT_EQ(read, m_model.size());
    }

    static void CompareOne(const OGRFeature& feature, const ModelFeature& wanted) {
        SCOPED_TRACE(wanted.layer + " " + std::to_string(feature.GetFID()));
        for (const auto& [field, value] : wanted.fields) {
            const int index = feature.GetFieldIndex(field.c_str());
            EXPECT_EQ(
                feature.IsFieldSetAndNotNull(index) != 0 ? feature.GetFieldAsString(index) : "null",
                value)
                << field;
        }
        const std::vector<std::array<double, 3>> course = CourseOf(*feature.GetGeometryRef());
        ASSERT_EQ(course.size(), wanted.course.size());
        for (std::size_t i = 0; i < course.size(); ++i) {
            EXPECT_EQ(course[i][0], wanted.course[i][0]);
            EXPECT_EQ(course[i][1], wanted.course[i][1]);
            EXPECT_TRUE(course[i][2] == wanted.course[i][2] ||
                        (std::isnan(course[i][2]) && std::isnan(wanted.course[i][2])))
                << course[i][2] << " for " << wanted.course[i][2];
        }
    }

    static std::vector<std::array<double, 3>> CourseOf(const OGRGeometry& geometry) {
        std::vector<std::array<double, 3>> course;
        const auto add = [&](double x, double y, double z) { course.push_back({x, y, z}); };
        const OGRwkbGeometryType type = wkbFlatten(geometry.getGeometryType());
        if (type == wkbPoint) {
            const OGRPoint& point = *geometry.toPoint();
            add(point.getX(), point.getY(), point.getZ());
        } else if (type == wkbCircularString) {
            const OGRSimpleCurve& circle = *geometry.toSimpleCurve();
            add((circle.getX(0) + circle.getX(2)) / 2, circle.getY(0), circle.getZ(0));
        } else {
            const OGRSimpleCurve& line = *geometry.toCompoundCurve()->getCurve(0)->toSimpleCurve();
            for (int i = 0; i < line.getNumPoints(); ++i) {
                add(line.getX(i), line.getY(i), line.getZ(i));
            }
        }
        return course;
    }

    /// Points and entities have handles of their own.
    static GIntBig Key(const std::string& layer, GIntBig id) {
        return layer == "points" ? id : id + (GIntBig{1} << 40);
    }
    static GIntBig IdOf(GIntBig key) { return key & ((GIntBig{1} << 40) - 1); }

    Model::iterator Choose() {
        auto at = m_model.begin();
        if (!m_model.empty()) {
            std::advance(at, Below(static_cast<int>(m_model.size())));
        }
        return at;
    }

    std::mt19937 m_random;
    Dataset m_dataset;
    Model m_model;
    Model m_before;
    bool m_inTransaction = false;
};

TEST_F(FeatureModelTest, RandomWorkComesOutAsTheModelSays) {
    Run(20261122, 700);
}

TEST_F(FeatureModelTest, RandomWorkOfAnotherSeedComesOutAsTheModelSays) {
    Run(4711, 700);
}

}  // namespace
}  // namespace cqsurvey::gdal
