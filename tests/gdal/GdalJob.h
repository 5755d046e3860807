#pragma once

#include <cpl_error.h>
#include <gdal_priv.h>
#include <gtest/gtest.h>
#include <ogrsf_frmts.h>

#include <array>
#include <fstream>
#include <iterator>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include <cqsurvey/cqsurvey.h>

#include "gdal/CqSurveyDriver.h"
#include "support/TempDir.h"

namespace cqsurvey::gdal {

struct CloseDataset {
    void operator()(GDALDataset* dataset) const { GDALClose(dataset); }
};
using Dataset = std::unique_ptr<GDALDataset, CloseDataset>;

/// The messages of GDAL while it lives.
class Messages {
 public:
    Messages() { CPLPushErrorHandlerEx(Keep, this); }
    Messages(const Messages&) = delete;
    Messages& operator=(const Messages&) = delete;
    ~Messages() { CPLPopErrorHandler(); }

    [[nodiscard]] const std::string& Text() const { return m_text; }

 private:
    static void CPL_STDCALL Keep(CPLErr kind, CPLErrorNum /*number*/, const char* text) {
        if (kind >= CE_Warning) {
            static_cast<Messages*>(CPLGetErrorHandlerUserData())->m_text +=
                std::string(text) + "\n";
        }
    }
    std::string m_text;
};

inline constexpr double kNoHeight = std::numeric_limits<double>::quiet_NaN();

/// A job in a folder of its own, and the driver to see it with.
class GdalJob : public testing::Test {
 protected:
    static void SetUpTestSuite() {
        // A plugin that is installed must not take this one's place.
        CPLSetConfigOption("GDAL_DRIVER_PATH", "disable");
        // Plugins come before the drivers that are built in, which know a job as a database.
        RegisterOGRCqSurvey();
        GDALAllRegister();
        ASSERT_NE(GetGDALDriverManager()->GetDriverByName("CqSurvey"), nullptr);
    }

    [[nodiscard]] std::string Path(const char* name = "site.job") const {
        return m_folder.Utf8(name);
    }

    /// Makes the job, lets `draw` draw in it and closes it.
    template <class Draw>
    void MakeJob(Draw&& draw, const char* name = "site.job") const {
        CqSurveyDB db;
        db.CreateNew(FromUtf8(Path(name)));
        draw(db);
        db.Close();
    }

    static CqHandle AddPoint(CqSurveyDB& db, const CString& name, double e, double n,
                             double z = 1.5, int code = 0) {
        const std::array<double, 3> at{e, n, z};
        return db.AddCoordRec(at.data(), name, code, SurveyCoordType{1}, 0);
    }

    struct Vertex {
        double e;
        double n;
        double z;
        double bulge;
    };
    static CqHandle AddLine(CqSurveyDB& db, const std::vector<Vertex>& vertices, int line = 0) {
        CqCadEntityList* list = db.StartPline(line, 0);
        for (const Vertex& vertex : vertices) {
            const std::array<double, 3> at{vertex.e, vertex.n, vertex.z};
            db.AddVertex(list, at.data(), vertex.bulge);
        }
        return db.EndPline(list);
    }

    /// A job of 20 points and circles.
    void DrawSome(const char* name = "site.job") const {
        MakeJob(
            [](CqSurveyDB& db) {
                CqJobSystem(db).SetSystem(u"EPSG:2230");
                CqJobSystem(db).SetUnit(CqLengthUnit::UsSurveyFoot);
                for (int i = 0; i < 20; ++i) {
                    AddPoint(db, FromUtf8("P" + std::to_string(i)), 100 + i, 200 + 2 * i, i);
                    const std::array<double, 3> at{100.0 + i, 200, 0};
                    db.AddCircle(at.data(), 1, 0, i);
                }
            },
            name);
    }

    [[nodiscard]] Dataset Open(std::vector<const char*> options = {},
                               const char* name = "site.job") const {
        return OpenAs(GDAL_OF_READONLY, options, name);
    }
    [[nodiscard]] Dataset OpenToWrite(std::vector<const char*> options = {},
                                      const char* name = "site.job") const {
        return OpenAs(GDAL_OF_UPDATE, options, name);
    }
    [[nodiscard]] Dataset Create(std::vector<const char*> options = {},
                                 const char* name = "new.job") const {
        options.push_back(nullptr);
        GDALDriver* driver = GetGDALDriverManager()->GetDriverByName("CqSurvey");
        return Dataset(driver->Create(Path(name).c_str(), 0, 0, 0, GDT_Unknown,
                                      const_cast<char**>(options.data())));
    }

    [[nodiscard]] std::string Bytes(const char* name = "site.job") const {
        std::ifstream file(Path(name), std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }

    static std::vector<std::string> Texts(OGRLayer& layer, const char* field) {
        std::vector<std::string> texts;
        for (const auto& feature : layer) {
            texts.emplace_back(feature->GetFieldAsString(field));
        }
        return texts;
    }

    static std::string Wkt(const OGRFeature& feature) {
        const OGRGeometry* geometry = feature.GetGeometryRef();
        OGRWktOptions options;
        options.variant = wkbVariantIso;
        return geometry != nullptr ? geometry->exportToWkt(options) : "none";
    }

 private:
    [[nodiscard]] Dataset OpenAs(unsigned flags, std::vector<const char*> options,
                                 const char* name) const {
        options.push_back(nullptr);
        const std::array<const char*, 2> drivers{"CqSurvey", nullptr};
        return Dataset(GDALDataset::Open(Path(name).c_str(), flags | GDAL_OF_VECTOR, drivers.data(),
                                         options.data()));
    }

    TempDir m_folder;
};

}  // namespace cqsurvey::gdal
