#include "cqsurvey/exchange/DxfWriter.h"

#include <fmt/format.h>

#include <array>
#include <cmath>

#include <utility>
#include <vector>

#include "cqsurvey/CqSurveyDB.h"
#include "cqsurvey/Ranges.h"
#include "cqsurvey/Text.h"
#include "cqsurvey/exchange/ExchangeError.h"
#include "exchange/dxf/write/ImageWriter.h"
#include "exchange/dxf/write/LineWriter.h"
#include "exchange/dxf/write/PointWriter.h"
#include "exchange/dxf/write/Skeleton.h"
#include "exchange/dxf/write/TextWriter.h"
#include "text/Printable.h"

namespace cqsurvey::exchange {

namespace {

using namespace dxf;

/// Writes the entities of a job, and an account of them. A polyline is written when its last vertex
/// is known.
class EntityWalk {
 public:
    EntityWalk(CqSurveyDB& db, GroupWriter& out, Contents& contents, const DxfWriteOptions& options,
               DrawingReport& report)
        : m_db(db),
          m_options(options),
          m_report(report),
          m_points(db, out, contents, options),
          m_lines(out, contents, options),
          m_texts(out, contents),
          m_r12(out.IsR12()) {}

    void Run() {
        std::size_t walked = 0;
        for (CqCadEntityPtr& entity : Entities(m_db)) {
            if (entity->GetType() == EntVertex) {
                AddVertex(*entity);
            } else {
                EndLine();
                Write(entity);
            }
            if (m_options.progress) {
                m_options.progress(++walked);
            }
        }
        EndLine();
    }

 private:
    void Count(const char* kind, const CqCadEntity& entity, const DrawingOutcome& outcome) {
        m_report.Count(kind, ToUtf8(entity.GetLayer()), outcome, false, entity.GetHandle());
        if (m_r12 && entity.GetColor() < 0 && outcome.fate != DrawingFate::LeftOut) {
            m_report.Note("entities that the job hides are shown: R12 cannot hide an entity");
        }
    }

    void AddVertex(const CqCadEntity& vertex) {
        if (!m_line) {
            Count("vertex", vertex, {DrawingFate::LeftOut, "it belongs to no polyline"});
            return;
        }
        std::array<double, 3> at{};
        vertex.GetPoint(at.data());
        m_vertices.push_back({{at[0], at[1], at[2]}, vertex.GetBulge()});
    }

    void EndLine() {
        if (m_line) {
            Count("polyline", *m_line, m_lines.Polyline(*m_line, std::move(m_vertices)));
            m_vertices.clear();
            m_line.reset();
        }
    }

    void Write(CqCadEntityPtr& entity) {
        switch (entity->GetType()) {
            case EntSiPnt:
                Count("point", *entity, m_points.Write(*entity));
                break;
            case EntPline:
                m_line = std::move(entity);
                break;
            case EntText:
                Count("text", *entity, m_texts.Write(*entity));
                break;
            case EntCircle:
                Count("circle", *entity, m_lines.Circle(*entity));
                break;
            case EntBitmap:
                Count("bitmap", *entity, {DrawingFate::LeftOut, "its picture is not in the job"});
                break;
            case EntVertex:
                break;
        }
    }

    CqSurveyDB& m_db;
    const DxfWriteOptions& m_options;
    DrawingReport& m_report;
    PointWriter m_points;
    LineWriter m_lines;
    TextWriter m_texts;
    bool m_r12;
    CqCadEntityPtr m_line;
    std::vector<PathVertex> m_vertices;
};

void NoteLosses(CqSurveyDB& db, const Contents& contents, const DxfWriteOptions& options,
                DrawingReport& report) {
    if (contents.GetLinks() > 0) {
        report.Note(fmt::format("{} of vertices to survey points not written",
                                contents.GetLinks() == 1
                                    ? "1 tie is"
                                    : fmt::format("{} ties are", contents.GetLinks())));
    }
    report.Note("the times of the points, the job's settings and empty groups are not written");
    if (db.IsBackgroundImageFile() != 0 && (!options.image || options.version == DxfVersion::R12)) {
        report.Note(options.version == DxfVersion::R12
                        ? "the background image is not written: R12 has no images"
                        : "the background image is not written");
    }
    if (options.version == DxfVersion::R12 && options.unit) {
        report.Note("R12 cannot say the unit of its lengths");
    }
}

}  // namespace

DxfWriter::DxfWriter(CqSurveyDB& db, DxfWriteOptions options, Sink sink)
    : m_db(db), m_options(std::move(options)), m_sink(std::move(sink)) {
    if (!std::isfinite(m_options.tolerance) || !(m_options.tolerance > 0.0)) {
        throw OptionError("the tolerance must be a positive number");
    }
}

DrawingReport DxfWriter::Write() {
    DrawingReport report;
    report.version = m_options.version == DxfVersion::R12     ? "R12"
                     : m_options.version == DxfVersion::R2000 ? "R2000"
                                                              : "R2018";
    report.unit = m_options.unit ? UnitWord(*m_options.unit) : "unspecified";
    constexpr int kUtf8 = 65001;
    constexpr int kWesternEurope = 1252;
    report.codePage = m_options.version == DxfVersion::R2018 ? kUtf8 : kWesternEurope;
    GroupWriter out(m_options.version, m_sink);
    Contents contents(m_db, m_options, report);
    Skeleton skeleton(out, contents, m_options);
    skeleton.WriteFront();
    if (m_options.image && !out.IsR12()) {
        WriteImage(m_db, out, contents, *m_options.image, report);
    }
    EntityWalk(m_db, out, contents, m_options, report).Run();
    skeleton.WriteBack();
    NoteLosses(m_db, contents, m_options, report);
    return report;
}

}  // namespace cqsurvey::exchange
