#include "cqsurvey/exchange/SimaWriter.h"

#include <fmt/format.h>

#include <cmath>
#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "cqsurvey/CodePage.h"
#include "cqsurvey/CqSurveyDB.h"
#include "cqsurvey/Text.h"
#include "cqsurvey/exchange/ExchangeError.h"
#include "exchange/drawing/Chords.h"
#include "exchange/drawing/DrawingWalk.h"
#include "exchange/drawing/Outcomes.h"
#include "exchange/drawing/Parcels.h"
#include "exchange/sima/ParcelNames.h"
#include "text/NumberText.h"

namespace cqsurvey::exchange {

namespace {

constexpr std::string_view kLineEnd = "\r\n";

/// A polyline as a parcel: its corners, the last where the first is.
struct Outline {
    std::vector<PathVertex> path;
    bool broken = false;  ///< it had arcs
    double deviation = 0.0;
};

/// Writes one file, in three walks over the job: its points, the corners of parcels where no point
/// is, its parcels.
class FileWriter {
 public:
    FileWriter(CqSurveyDB& db, const SimaWriteOptions& options, const SimaWriter::Sink& sink,
               DrawingReport& report)
        : m_db(db),
          m_options(options),
          m_sink(sink),
          m_report(report),
          m_page(options.codePage),
          m_scale(MetresOf(*options.unit)) {}

    void Run() {
        bool changed = false;
        Line("G00,03," + Encode(FromUtf8(m_options.project), changed) + ",");
        Line("Z00," + Encode(u"\u5EA7\u6A19\uFF83\uFF9E\uFF70\uFF80", changed) + ",");
        Line("A00,");
        WalkDrawing(m_db, m_options.progress,
                    [this](const CqCadEntity& entity, const auto&) { Point(entity); });
        WalkDrawing(m_db, nullptr, [this](const CqCadEntity& entity, const auto& vertices) {
            if (entity.GetType() == EntPline) {
                Corners(vertices);
            }
        });
        Line("A99,");
        Line("Z00," + Encode(u"\u533A\u753B\uFF83\uFF9E\uFF70\uFF80", changed) + ",");
        m_names.Sort();
        WalkDrawing(m_db, nullptr, [this](const CqCadEntity& entity, const auto& vertices) {
            Other(entity, vertices);
        });
        m_sink(m_buffer);
        m_report.Note(
            "codes, descriptions, groups, layers, colours and times are not written; nor are the "
            "job's settings and the background image");
    }

 private:
    struct Corner {
        std::uint64_t number = 0;
        std::string name;
        bool hasHeight = false;
        double height = 0.0;
    };

    void Line(const std::string& line) {
        constexpr std::size_t kPiece = 65536;
        m_buffer += line;
        m_buffer += kLineEnd;
        if (m_buffer.size() >= kPiece) {
            m_sink(m_buffer);
            m_buffer.clear();
        }
    }

    /// The text in the file's code page, without what would end its field.
    std::string Encode(const CString& text, bool& changed) {
        constexpr char16_t kWideComma = 0xFF0C;
        CString field;
        for (const char16_t c : text) {
            const bool breaks = c == u',' || c < u' ';
            changed |= breaks;
            field += c == u',' ? kWideComma : breaks ? u' ' : c;
        }
        const auto bytes = m_page.TryEncode(field);
        changed |= !bytes.has_value();
        return bytes ? *bytes : m_page.Encode(field);
    }

    void Count(const char* kind, const CqCadEntity& entity, const DrawingOutcome& outcome) {
        m_report.Count(kind, ToUtf8(entity.GetLayer()), outcome, false, entity.GetHandle());
    }

    [[nodiscard]] Vec3 InMetres(const Vec3& at) const {
        return {at.x * m_scale, at.y * m_scale, at.z * m_scale};
    }

    void WritePoint(const std::string& name, const Vec3& at, bool hasHeight) {
        ++m_number;
        const Vec3 metres = InMetres(at);
        Line(fmt::format("A01,{},{},{},{},{},", m_number, name, FormatNumber(metres.y),
                         FormatNumber(metres.x), hasHeight ? FormatNumber(metres.z) : ""));
        m_corners.try_emplace({at.x, at.y}, Corner{m_number, name, hasHeight, at.z});
    }

    void Point(const CqCadEntity& entity) {
        bool hasHeight = false;
        const Vec3 at = PlaceOf(entity, hasHeight);
        if (entity.GetType() == EntText && IsFinite(at) &&
            ToUtf8(entity.GetLayer()) == kParcelNames) {
            m_names.Add(at, entity.GetText());
        }
        if (entity.GetType() != EntSiPnt) {
            return;
        }
        if (!IsFinite(InMetres(at))) {
            Count("point", entity, LeftOut(kNotFinite));
            return;
        }
        bool changed = false;
        WritePoint(Encode(entity.GetName(), changed), at, hasHeight);
        Count("point", entity,
              changed ? Converted("A01, its name without characters that the file cannot hold")
                      : Taken("A01"));
    }

    /// Why a polyline is no parcel is in `fault`; nothing is returned then.
    [[nodiscard]] std::optional<Outline> OutlineOf(const std::vector<WalkedVertex>& vertices,
                                                   std::string_view& fault) const {
        fault = kNotFinite;
        constexpr std::size_t kFewest = 4;
        Outline outline;
        for (const WalkedVertex& vertex : vertices) {
            if (!IsFinite(vertex.vertex.at) || !std::isfinite(vertex.vertex.bulge)) {
                return std::nullopt;
            }
            outline.broken |= vertex.vertex.bulge != 0.0 && &vertex != &vertices.back();
            outline.path.push_back(vertex.vertex);
        }
        fault = "it is not closed, so it is no parcel";
        if (outline.path.empty() || outline.path.front().at.x != outline.path.back().at.x ||
            outline.path.front().at.y != outline.path.back().at.y) {
            return std::nullopt;
        }
        outline.path = BreakArcs(outline.path, m_options.tolerance, outline.deviation);
        for (const PathVertex& vertex : outline.path) {
            if (!IsFinite(InMetres(vertex.at))) {
                fault = kNotFinite;
                return std::nullopt;
            }
        }
        return outline.path.size() < kFewest ? std::nullopt : std::optional(std::move(outline));
    }

    void Corners(const std::vector<WalkedVertex>& vertices) {
        std::string_view fault;
        if (const std::optional<Outline> outline = OutlineOf(vertices, fault)) {
            for (const PathVertex& vertex : outline->path) {
                if (!m_corners.contains({vertex.at.x, vertex.at.y})) {
                    WritePoint({}, vertex.at, vertex.hasHeight);
                    m_added.insert(m_number);
                }
            }
        }
    }

    void Other(const CqCadEntity& entity, const std::vector<WalkedVertex>& vertices) {
        switch (entity.GetType()) {
            case EntPline:
                Count("polyline", entity, Parcel(vertices));
                break;
            case EntText:
                Count("text", entity,
                      ToUtf8(entity.GetLayer()) == kParcelNames
                          ? Converted("the name of the parcel around it, if there is one")
                          : LeftOut("SIMA has nothing like it"));
                break;
            case EntCircle:
                Count("circle", entity, LeftOut("SIMA has nothing like it"));
                break;
            case EntBitmap:
                Count("bitmap", entity, LeftOut("its picture is not in the job"));
                break;
            case EntVertex:
                Count("vertex", entity, LeftOut("it belongs to no polyline"));
                break;
            case EntSiPnt:
                break;
        }
    }

    DrawingOutcome Parcel(const std::vector<WalkedVertex>& vertices) {
        std::string_view fault;
        const std::optional<Outline> outline = OutlineOf(vertices, fault);
        if (!outline) {
            return LeftOut(fault);
        }
        ++m_parcel;
        bool changed = false;
        const CString text = m_names.Find(outline->path);
        const std::string name = text.empty() ? std::to_string(m_parcel) : Encode(text, changed);
        Line(fmt::format("D00,{},{},1,", m_parcel, name));
        bool own = false;
        for (std::size_t i = 0; i + 1 < outline->path.size(); ++i) {
            const PathVertex& vertex = outline->path[i];
            const Corner& corner = m_corners.at({vertex.at.x, vertex.at.y});
            own |= m_added.contains(corner.number);
            changed |= corner.hasHeight != vertex.hasHeight ||
                       (vertex.hasHeight && corner.height != vertex.at.z);
            Line(fmt::format("B01,{},{},", corner.number, corner.name));
        }
        Line("D99,");
        return outline->broken ? Converted("D00, its arcs broken into lines", outline->deviation)
               : own           ? Converted("D00, with corners that are new points of the file")
               : changed       ? Converted("D00, with the heights of its points")
                               : Taken("D00");
    }

    CqSurveyDB& m_db;
    const SimaWriteOptions& m_options;
    const SimaWriter::Sink& m_sink;
    DrawingReport& m_report;
    CqCodePage m_page;
    double m_scale;
    std::string m_buffer;
    std::uint64_t m_number = 0;
    std::uint64_t m_parcel = 0;
    std::map<std::pair<double, double>, Corner> m_corners;
    std::set<std::uint64_t> m_added;  // numbers of points that the job does not have
    sima::ParcelNames m_names;
};

}  // namespace

SimaWriter::SimaWriter(CqSurveyDB& db, SimaWriteOptions options, Sink sink)
    : m_db(db), m_options(std::move(options)), m_sink(std::move(sink)) {
    if (!m_options.unit) {
        throw OptionError("a SIMA file is in metres, and the job's unit is not known");
    }
    if (!CqCodePage(m_options.codePage).KeepsAscii()) {
        throw OptionError(fmt::format("code page {} is not known", m_options.codePage));
    }
    if (!std::isfinite(m_options.tolerance) || !(m_options.tolerance > 0.0)) {
        throw OptionError("the tolerance must be a positive number");
    }
}

DrawingReport SimaWriter::Write() {
    DrawingReport report;
    report.version = "SIMA";
    report.unit = UnitWord(LengthUnit::Metre);
    report.scale = MetresOf(*m_options.unit);
    report.codePage = m_options.codePage;
    FileWriter(m_db, m_options, m_sink, report).Run();
    return report;
}

}  // namespace cqsurvey::exchange
