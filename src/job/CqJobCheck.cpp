#include "cqsurvey/CqJobCheck.h"

#include <algorithm>
#include <array>
#include <set>
#include <string_view>
#include <unordered_set>
#include <utility>

#include "cqsurvey/CqSurveyDB.h"
#include "cqsurvey/Text.h"
#include "job/Job.h"
#include "platform/CaseFold.h"
#include "platform/RecordHash.h"
#include "platform/Text.h"
#include "store/StoreExtras.h"

namespace cqsurvey {

using Found = CqJobFinding::Kind;

namespace {

constexpr const char* kPoints = PointLayout::kTable.text;
constexpr const char* kEntities = EntityLayout::kTable.text;
constexpr const char* kLayers = LayerLayout::kTable.text;
constexpr const char* kGroups = GroupLayout::kTable.text;
constexpr const char* kLinks = LinkLayout::kTable.text;
constexpr const char* kSettings = "Settings.ini";

/// An operation makes no polyline of fewer vertices, but they can be deleted one by one.
constexpr std::int32_t kFewestVertices = 2;

std::string Number(CqHandle handle) {
    return std::to_string(handle);
}

std::string Quoted(const CString& name) {
    return "\"" + ToUtf8(name) + "\"";
}

const std::byte* EntityAt(CqEntityTable& entities, CqHandle handle) {
    return handle <= CqEntityTable::kHeader ? nullptr
                                            : StorePeekRecord(entities.GetTable(), handle);
}

CString NameOf(const std::byte* point) {
    return PointLayout::Get<"PointName">(point);
}

/// Names are compared before they are cut, so only names of full length can have become equal.
template <std::size_t Longest>
Found KindOfTwin(const CString& name) {
    return name.size() == Longest ? Found::Note : Found::Fault;
}

/// What it means that a record is gone. Numbers are never used again, so one that was given away
/// belongs to a deleted record; another was never named by an operation.
Found KindOfGone(const CqDbTable& table, CqHandle record) {
    const std::uint32_t next = StoreNextRecord(table.GetTable());
    return next == 0 || record < next ? Found::Note : Found::Fault;
}

}  // namespace

CqJobCheck::CqJobCheck(CqSurveyDB& db, std::size_t maxFindings, const Progress& progress)
    : m_maxFindings(maxFindings) {
    Job& job = db.GetJob();
    if (progress) {
        // Entities are visited three times: as records, along the chain, and for the extents.
        const auto count = [](const CqDbTable& table) {
            return static_cast<std::uint64_t>(table.GetRecordCount());
        };
        m_progress = &progress;
        m_allLooks = count(job.points) + 3 * count(job.entities) + count(job.texts) +
                     count(job.bitmaps) + count(job.links) + count(job.layers) + count(job.groups);
    }
    CheckPoints(job);
    CheckEntities(job);
    CheckChain(job);
    CheckMemos(job);
    CheckLinks(job);
    CheckLayersAndGroups(job);
    CheckExtents(job);
    CheckPages(job);
    CheckSettings(job);
    m_progress = nullptr;
}

void CqJobCheck::Look() {
    if (m_progress != nullptr) {
        (*m_progress)(++m_looks, m_allLooks);
    }
}

template <class Table, class Visit>
void CqJobCheck::ForEach(Table& table, Visit&& visit) {
    for (int found = table.First(kRecordOrder); found != 0; found = table.Next()) {
        Look();
        visit(table.GetCurrentHandle(), table.Record());
    }
}

void CqJobCheck::CheckPages(Job& job) {
    std::uint32_t page = 0;
    do {
        page = StoreFindWrongPage(job.mountName, page);
        Expect(page == 0, "", page, [&] {
            return "page " + Number(page) +
                   " of the file does not match its sum: the medium has changed it";
        });
    } while (page != 0);
}

template <class Text>
bool CqJobCheck::ExpectOr(Found kind, bool condition, const char* table, CqHandle record,
                          Text&& text) {
    ++m_checks;
    if (!condition) {
        std::size_t& count = kind == Found::Fault ? m_faults : m_notes;
        if (count++ < m_maxFindings) {
            m_findings.push_back({kind, table, record, std::forward<Text>(text)()});
        }
    }
    return condition;
}

template <class Text>
bool CqJobCheck::Expect(bool condition, const char* table, CqHandle record, Text&& text) {
    return ExpectOr(Found::Fault, condition, table, record, std::forward<Text>(text));
}

void CqJobCheck::CheckPoints(Job& job) {
    CqPointTable& points = job.points;
    std::vector<std::pair<std::size_t, CqHandle>> names;
    ForEach(points, [&](CqHandle number, const std::byte* point) {
        const auto itself = PointLayout::Get<"PointNumber">(point);
        Expect(itself == number, kPoints, number,
               [&] { return "its PointNumber is " + Number(itself); });
        const auto entity = PointLayout::Get<"EntityIndex">(point);
        const std::byte* shown = EntityAt(job.entities, entity);
        Expect(shown != nullptr && EntityLayout::Get<"ObjectType">(shown) == EntSiPnt &&
                   EntityLayout::Get<"ObjectIndex">(shown) == number,
               kPoints, number, [&] {
                   return "point " + Quoted(NameOf(point)) + " names entity " + Number(entity) +
                          ", which does not belong to it";
               });
        const auto group = PointLayout::Get<"GroupIndex">(point);
        ExpectOr(Found::Note,
                 group == 0 || StorePeekRecord(job.groups.GetTable(), group) != nullptr, kPoints,
                 number, [&] { return "its group " + Number(group) + " does not exist"; });
        const CString name = NameOf(point);
        if (!name.empty()) {
            names.emplace_back(HashName(name), number);
        }
    });
    // Only names of equal hash can be equal. After sorting they are neighbours, so each is compared
    // with few others, and the names themselves need not be kept.
    std::sort(names.begin(), names.end());
    for (std::size_t i = 0; i < names.size(); ++i) {
        bool unique = true;
        for (std::size_t j = i; unique && j > 0 && names[j - 1].first == names[i].first; --j) {
            unique = NameOf(StorePeekRecord(points.GetTable(), names[j - 1].second)) !=
                     NameOf(StorePeekRecord(points.GetTable(), names[i].second));
        }
        const auto name = [&] {
            return NameOf(StorePeekRecord(points.GetTable(), names[i].second));
        };
        ExpectOr(unique ? Found::Note : KindOfTwin<limits::kPointName>(name()), unique, kPoints,
                 names[i].second,
                 [&] { return "an earlier point has the name " + Quoted(name()) + " too"; });
    }
}

void CqJobCheck::CheckEntities(Job& job) {
    struct Kind {
        CqDbTable* table;
        const char* name;
        std::vector<CqHandle> objects;
    };
    // The index is the entity's ObjectType; there is no type 3.
    std::array<Kind, 7> kinds{{{&job.points, kPoints, {}},
                               {&job.plines, PlineLayout::kTable.text, {}},
                               {&job.vertices, VertexLayout::kTable.text, {}},
                               {nullptr, "", {}},
                               {&job.texts, TextLayout::kTable.text, {}},
                               {&job.circles, CircleLayout::kTable.text, {}},
                               {&job.bitmaps, BitmapLayout::kTable.text, {}}}};
    ForEach(job.entities, [&](CqHandle number, const std::byte* entity) {
        if (number == CqEntityTable::kHeader) {
            return;
        }
        const auto type = EntityLayout::Get<"ObjectType">(entity);
        const auto object = EntityLayout::Get<"ObjectIndex">(entity);
        const auto layer = EntityLayout::Get<"LayerIndex">(entity);
        // Number 0 is that of an entity which was added while no layer was current.
        const bool hasLayer = StorePeekRecord(job.layers.GetTable(), layer) != nullptr;
        ExpectOr(hasLayer ? Found::Note : KindOfGone(job.layers, layer), hasLayer, kEntities,
                 number, [&] { return "its layer " + Number(layer) + " is gone"; });
        if (!Expect(type < kinds.size() && kinds[type].table != nullptr, kEntities, number,
                    [&] { return "it has the unknown type " + Number(type); })) {
            return;
        }
        Kind& kind = kinds[type];
        if (Expect(StorePeekRecord(kind.table->GetTable(), object) != nullptr, kEntities, number,
                   [&] {
                       return std::string("its record ") + Number(object) + " of " + kind.name +
                              " is gone";
                   })) {
            kind.objects.push_back(object);
        }
    });
    for (Kind& kind : kinds) {
        if (kind.table == nullptr) {
            continue;
        }
        std::sort(kind.objects.begin(), kind.objects.end());
        const auto doubled = std::adjacent_find(kind.objects.begin(), kind.objects.end());
        Expect(doubled == kind.objects.end(), kind.name,
               doubled == kind.objects.end() ? 0 : *doubled,
               [] { return "more than one entity names it"; });
        const auto used = static_cast<std::size_t>(
            std::unique(kind.objects.begin(), kind.objects.end()) - kind.objects.begin());
        const auto records = static_cast<std::size_t>(kind.table->GetRecordCount());
        Expect(used == records, kind.name, 0, [&] {
            return std::to_string(records - used) + " of its records belong to no entity";
        });
    }
}

void CqJobCheck::CheckChain(Job& job) {
    CqEntityTable& entities = job.entities;
    const std::byte* header = StorePeekRecord(entities.GetTable(), CqEntityTable::kHeader);
    if (!Expect(header != nullptr, kEntities, CqEntityTable::kHeader,
                [] { return "the header of the entity chain is gone"; })) {
        return;
    }
    const auto head = EntityLayout::Get<"NextEntityIndex">(header);
    const auto tail = EntityLayout::Get<"PrevEntityIndex">(header);
    Expect(head == entities.GetHead() && tail == entities.GetTail(), kEntities,
           CqEntityTable::kHeader, [] { return "the header differs from its copy in memory"; });

    // The chain is followed for at most as many steps as there are entities, so that a circle in it
    // ends the walk.
    const std::int32_t total = entities.GetRecordCount() - 1;
    std::int32_t steps = 0;
    CqHandle previous = 0;
    CqHandle pline = 0;
    std::int32_t vertices = 0;
    const auto endPline = [&] {
        ExpectOr(Found::Note, pline == 0 || vertices >= kFewestVertices, kEntities, pline, [&] {
            return "the polyline has " + std::to_string(vertices) + " of at least " +
                   std::to_string(kFewestVertices) + " vertices";
        });
    };
    CqHandle at = head;
    while (at != 0 && steps < total) {
        Look();
        const std::byte* entity = EntityAt(entities, at);
        if (!Expect(entity != nullptr, kEntities, previous, [&] {
                return "the chain goes on to entity " + Number(at) + ", which is gone";
            })) {
            return;
        }
        const auto back = EntityLayout::Get<"PrevEntityIndex">(entity);
        Expect(back == previous, kEntities, at, [&] {
            return "the chain reaches it from " + Number(previous) + " and goes back to " +
                   Number(back);
        });
        const auto type = EntityLayout::Get<"ObjectType">(entity);
        if (type == EntPline) {
            endPline();
            pline = at;
            vertices = 0;
        } else if (type == EntVertex) {
            ++vertices;
            const std::byte* vertex =
                StorePeekRecord(job.vertices.GetTable(), EntityLayout::Get<"ObjectIndex">(entity));
            Expect(
                vertex != nullptr && pline != 0 && VertexLayout::Get<"PlineIndex">(vertex) == pline,
                kEntities, at, [] { return "the vertex does not follow its polyline"; });
        } else {
            endPline();
            pline = 0;
        }
        previous = at;
        at = EntityLayout::Get<"NextEntityIndex">(entity);
        ++steps;
    }
    endPline();
    Expect(at == 0, kEntities, previous,
           [] { return "the chain goes on after as many steps as there are entities"; });
    Expect(steps == total, kEntities, 0, [&] {
        return "the chain holds " + std::to_string(steps) + " of " + std::to_string(total) +
               " entities";
    });
    Expect(previous == tail, kEntities, previous,
           [&] { return "the chain ends here and not at its tail " + Number(tail); });
}

void CqJobCheck::CheckMemos(Job& job) {
    std::unordered_set<std::uint32_t, HandleHash> seen;
    const auto check = [&](CqDbTable& table, const char* name, CqHandle number,
                           std::uint32_t reference) {
        if (reference == 0) {
            return;
        }
        std::array<char16_t, 2> start{};
        Expect(QrdbReadMemo(table.GetTable(), start.data(), sizeof(start), reference) != 0, name,
               number, [] { return "its text is gone"; });
        Expect(seen.insert(reference).second, name, number,
               [] { return "it shares its text with another record"; });
    };
    ForEach(job.texts, [&](CqHandle number, const std::byte* record) {
        check(job.texts, TextLayout::kTable.text, number, TextLayout::Get<"Text">(record));
    });
    ForEach(job.bitmaps, [&](CqHandle number, const std::byte* record) {
        check(job.bitmaps, BitmapLayout::kTable.text, number, BitmapLayout::Get<"ResName">(record));
    });
}

void CqJobCheck::CheckLinks(Job& job) {
    ForEach(job.links, [&](CqHandle number, const std::byte* record) {
        const auto point = LinkLayout::Get<"PointDataID">(record);
        const auto vertex = LinkLayout::Get<"VertexDataID">(record);
        CheckTie(job, number, point, EntSiPnt, "a point");
        CheckTie(job, number, vertex, EntVertex, "a vertex");
    });
}

void CqJobCheck::CheckTie(Job& job, CqHandle link, CqHandle entity, std::uint16_t type,
                          const char* what) {
    const std::byte* record = EntityAt(job.entities, entity);
    // A tie may outlive its point or vertex.
    const Found kind =
        entity <= CqEntityTable::kHeader ? Found::Fault : KindOfGone(job.entities, entity);
    if (ExpectOr(kind, record != nullptr, kLinks, link,
                 [&] { return "entity " + Number(entity) + ", tied as " + what + ", is gone"; })) {
        Expect(EntityLayout::Get<"ObjectType">(record) == type, kLinks, link, [&] {
            return "entity " + Number(entity) + " is tied as " + what + " but is not one";
        });
    }
}

void CqJobCheck::CheckLayersAndGroups(Job& job) {
    std::set<CString> layers;
    ForEach(job.layers, [&](CqHandle number, const std::byte* record) {
        const CString name = LayerLayout::Get<"Name">(record);
        ExpectOr(KindOfTwin<limits::kLayerName>(name), layers.insert(name).second, kLayers, number,
                 [&] { return "an earlier layer has the name " + Quoted(name) + " too"; });
    });
    std::set<CString> groups;
    ForEach(job.groups, [&](CqHandle number, const std::byte* record) {
        const CString name = GroupLayout::Get<"GroupName">(record);
        ExpectOr(KindOfTwin<limits::kGroupName>(name),
                 name.empty() || groups.insert(Folded(name)).second, kGroups, number,
                 [&] { return "an earlier group has the name " + Quoted(name) + " too"; });
    });
}

void CqJobCheck::CheckExtents(Job& job) {
    const auto holds = [&](double x, double y) { return job.extents.Holds(CVector(x, y)); };
    ForEach(job.entities, [&](CqHandle number, const std::byte* entity) {
        const auto type = EntityLayout::Get<"ObjectType">(entity);
        const auto object = EntityLayout::Get<"ObjectIndex">(entity);
        const auto x = EntityLayout::Get<"E">(entity);
        const auto y = EntityLayout::Get<"N">(entity);
        bool inside = true;
        if (number == CqEntityTable::kHeader) {
            return;
        }
        if (type == EntPline) {
            const std::byte* pline = StorePeekRecord(job.plines.GetTable(), object);
            inside = pline == nullptr ||
                     (holds(PlineLayout::Get<"minX">(pline), PlineLayout::Get<"minY">(pline)) &&
                      holds(PlineLayout::Get<"maxX">(pline), PlineLayout::Get<"maxY">(pline)));
        } else if (type == EntCircle) {
            const std::byte* circle = StorePeekRecord(job.circles.GetTable(), object);
            const double radius = circle == nullptr ? 0.0 : CircleLayout::Get<"Radius">(circle);
            inside = holds(x + radius, y + radius) && holds(x - radius, y - radius);
        } else if (type == EntSiPnt || type == EntText || type == EntBitmap) {
            inside = holds(x, y);
        } else {
            return;
        }
        Expect(inside, kEntities, number, [] { return "it lies outside the drawing's extents"; });
    });
}

void CqJobCheck::CheckSettings(Job& job) {
    const SettingsReport report = job.ReportSettings();
    Expect(report.damage.empty(), kSettings, 0, [&] { return report.damage; });
    for (const std::string& note : report.notes) {
        ExpectOr(Found::Note, false, kSettings, 0, [&] { return note; });
    }
}

}  // namespace cqsurvey
