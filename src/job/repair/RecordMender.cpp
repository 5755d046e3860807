#include "job/repair/RecordMender.h"

#include <algorithm>
#include <limits>
#include <set>
#include <string>

#include "cqsurvey/CqCadEntity.h"
#include "cqsurvey/Limits.h"
#include "cqsurvey/Text.h"
#include "platform/CaseFold.h"
#include "tables/CqEntityTable.h"

namespace cqsurvey {

namespace {

constexpr const char* kPoints = PointLayout::kTable.text;
constexpr const char* kEntities = EntityLayout::kTable.text;
constexpr const char* kLayers = LayerLayout::kTable.text;
constexpr const char* kGroups = GroupLayout::kTable.text;
constexpr const char* kLinks = LinkLayout::kTable.text;
constexpr std::uint16_t kFirstLayer = 1;
constexpr std::int32_t kLayerColor = 1;
/// How much of a text that has lost its place is told.
constexpr std::size_t kTold = 200;

std::string Quoted(const CString& name) {
    return "\"" + ToUtf8(name) + "\"";
}

/// "Layer 5", or with another number behind it while there is one of that name already.
template <class Key>
CString FreeName(const std::string& word, CqHandle number, const std::set<CString>& taken,
                 Key&& key) {
    CString name = FromUtf8(word + " " + std::to_string(number));
    for (unsigned again = 2; taken.contains(key(name)); ++again) {
        name = FromUtf8(word + " " + std::to_string(number) + "." + std::to_string(again));
    }
    return name;
}

}  // namespace

void RecordMender::Mend() {
    MendLayers();
    MendGroups();
    MendPointNames();
    MendTexts();
    MendLinks();
    NoteNumbers();
}

void RecordMender::MendLayers() {
    const auto plain = [](const CString& name) { return name; };
    std::set<CString> names;
    std::vector<CqHandle> doubled;
    for (const auto& [number, record] : m_job.layers) {
        if (!names.insert(LayerLayout::Get<"Name">(record.data())).second) {
            doubled.push_back(number);
        }
    }
    for (const CqHandle number : doubled) {
        std::byte* record = m_job.layers[number].data();
        const CString name = FreeName("Layer", number, names, plain);
        m_job.Lose(kLayers, number,
                   "another layer has the name " + Quoted(LayerLayout::Get<"Name">(record)) +
                       " too; this one is now " + Quoted(name));
        LayerLayout::Set<"Name">(record, name);
        names.insert(name);
    }
    std::set<CqHandle> missing;
    for (const auto& [number, record] : m_job.entities) {
        const auto layer = EntityLayout::Get<"LayerIndex">(record.data());
        if (number != CqEntityTable::kHeader && !m_job.layers.contains(layer)) {
            missing.insert(layer);
        }
    }
    // A job has the layer on which it draws what it is told nothing about.
    if (!names.contains(u"0") && !m_job.layers.contains(kFirstLayer)) {
        missing.insert(kFirstLayer);
    }
    for (const CqHandle number : missing) {
        if (number == 0) {
            continue;
        }
        const bool first = number == kFirstLayer && !names.contains(u"0");
        const CString name = first ? CString(u"0") : FreeName("Layer", number, names, plain);
        std::byte* record = m_job.layers[number].data();
        LayerLayout::Set<"Name">(record, name);
        LayerLayout::Set<"ColorID">(record, kLayerColor);
        names.insert(name);
        m_job.Lose(kLayers, number, "the layer is gone; it was made anew as " + Quoted(name));
    }
    // No layer has number 0, so what names it goes to the first one.
    for (auto& [number, record] : m_job.entities) {
        if (number != CqEntityTable::kHeader &&
            EntityLayout::Get<"LayerIndex">(record.data()) == 0) {
            EntityLayout::Set<"LayerIndex">(
                record.data(), static_cast<std::uint16_t>(m_job.layers.begin()->first));
            m_job.Lose(kEntities, number, "its layer is unknown; it is on the first one now");
        }
    }
}

void RecordMender::MendGroups() {
    std::set<CString> names;
    std::vector<CqHandle> doubled;
    const auto folded = [](const CString& name) { return Folded(name); };
    for (const auto& [number, record] : m_job.groups) {
        const CString name = GroupLayout::Get<"GroupName">(record.data());
        if (!name.empty() && !names.insert(Folded(name)).second) {
            doubled.push_back(number);
        }
    }
    for (const CqHandle number : doubled) {
        std::byte* record = m_job.groups[number].data();
        const CString name = FreeName("Group", number, names, folded);
        m_job.Lose(kGroups, number,
                   "another group has the name " + Quoted(GroupLayout::Get<"GroupName">(record)) +
                       " too; this one is now " + Quoted(name));
        GroupLayout::Set<"GroupName">(record, name);
        names.insert(Folded(name));
    }
    for (const auto& [number, record] : m_job.points) {
        const auto group = PointLayout::Get<"GroupIndex">(record.data());
        // A point may name a group that never was. Only one that was lost is made anew.
        if (group == 0 || m_job.groups.contains(group) || !m_job.IsLost(kGroups, group)) {
            continue;
        }
        const CString name = FreeName("Group", group, names, folded);
        GroupLayout::Set<"GroupName">(m_job.groups[group].data(), name);
        names.insert(Folded(name));
        m_job.Lose(kGroups, group, "the group is gone; it was made anew as " + Quoted(name));
    }
}

void RecordMender::MendPointNames() {
    std::set<CString> names;
    for (auto& [number, record] : m_job.points) {
        PointLayout::Set<"PointNumber">(record.data(), number);
        const CString name = PointLayout::Get<"PointName">(record.data());
        if (!name.empty() && !names.insert(name).second) {
            PointLayout::Set<"PointName">(record.data(), CString());
            m_job.Lose(
                kPoints, number,
                "another point has the name " + Quoted(name) + " too; this one has no name now");
        }
    }
}

template <class Layout, FieldName Name>
void RecordMender::MendMemos(SavedJob::Records<Layout>& records, const char* table,
                             std::set<std::uint32_t>& named) {
    for (auto& [number, record] : records) {
        const auto reference = Layout::template Get<Name>(record.data());
        if (reference == 0) {
            continue;
        }
        if (!m_job.memos.contains(reference) || !named.insert(reference).second) {
            Layout::template Set<Name>(record.data(), std::uint32_t{0});
            m_job.Lose(table, number, "its text is gone");
        } else if (m_job.cutMemos.contains(reference)) {
            m_job.Lose(table, number,
                       "of its text only the first " +
                           std::to_string(m_job.memos[reference].size()) + " characters are left");
        }
    }
}

void RecordMender::MendTexts() {
    std::set<std::uint32_t> named;
    MendMemos<TextLayout, "Text">(m_job.texts, TextLayout::kTable.text, named);
    MendMemos<BitmapLayout, "ResName">(m_job.bitmaps, BitmapLayout::kTable.text, named);
    for (auto memo = m_job.memos.begin(); memo != m_job.memos.end();) {
        const bool empty = memo->second.empty();
        if (!empty && named.contains(memo->first)) {
            ++memo;
            continue;
        }
        if (!empty) {
            m_job.Lose(
                TextLayout::kTable.text, 0,
                "a text whose record is gone: " +
                    Quoted(memo->second.substr(
                        0, WholeUtf16Prefix(memo->second, std::min(memo->second.size(), kTold)))));
        }
        memo = m_job.memos.erase(memo);
    }
}

void RecordMender::MendLinks() {
    const auto isOther = [&](CqHandle handle, int type) {
        const auto entity = m_job.entities.find(handle);
        return handle > CqEntityTable::kHeader && entity != m_job.entities.end() &&
               EntityLayout::Get<"ObjectType">(entity->second.data()) != type;
    };
    for (auto link = m_job.links.begin(); link != m_job.links.end();) {
        const std::byte* record = link->second.data();
        if (isOther(LinkLayout::Get<"PointDataID">(record), EntSiPnt) ||
            isOther(LinkLayout::Get<"VertexDataID">(record), EntVertex)) {
            m_job.Lose(kLinks, link->first, "it ties what is not a point and a vertex");
            link = m_job.links.erase(link);
        } else {
            ++link;
        }
    }
}

/// What is named was given, even if it is gone. Where nothing was lost, the job itself says which
/// numbers were given.
void RecordMender::NoteNumbers() {
    const auto note = [&](const char* table, CqHandle number) {
        if (m_job.numbersLost || m_job.IsLost(table, number)) {
            m_job.NoteUsed(table, number);
        }
    };
    for (const auto& [number, record] : m_job.links) {
        note(kEntities, LinkLayout::Get<"PointDataID">(record.data()));
        note(kEntities, LinkLayout::Get<"VertexDataID">(record.data()));
    }
    for (const auto& [number, record] : m_job.points) {
        note(kGroups, PointLayout::Get<"GroupIndex">(record.data()));
    }
}

}  // namespace cqsurvey
