#include "golden/JobListing.h"

#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <sstream>

#include "cqsurvey/cqsurvey.h"
#include "support/JobImage.h"

namespace cqsurvey {

namespace {

std::string Hex(std::uint64_t number) {
    std::array<char, 16> digits{};
    return {digits.data(),
            std::to_chars(digits.data(), digits.data() + digits.size(), number, 16).ptr};
}

std::string Number(double number) {
    if (std::isnan(number)) {
        return "nan:" + Hex(std::bit_cast<std::uint64_t>(number));
    }
    std::array<char, 40> digits{};
    return {digits.data(), std::to_chars(digits.data(), digits.data() + digits.size(), number).ptr};
}

std::string Numbers(const double* numbers, int count) {
    std::string text;
    for (int i = 0; i < count; ++i) {
        text += (i == 0 ? "" : " ") + Number(numbers[i]);
    }
    return text;
}

std::string Place(const CVector& at) {
    return Number(at.GetX()) + " " + Number(at.GetY());
}

std::string Quoted(const CString& text) {
    constexpr std::size_t kShown = 60;
    std::string shown = "\"";
    for (const char16_t unit : text.substr(0, kShown)) {
        if (unit >= u' ' && unit <= u'~' && unit != u'"' && unit != u'\\') {
            shown += static_cast<char>(unit);
        } else {
            const std::string digits = Hex(unit);
            shown += "\\u" + std::string(4 - digits.size(), '0') + digits;
        }
    }
    shown += "\"";
    if (text.size() > kShown) {
        std::uint64_t sum = 0;
        for (const char16_t unit : text) {
            sum += unit;
        }
        shown += " ... " + std::to_string(text.size()) + " units, sum " + std::to_string(sum);
    }
    return shown;
}

void ListGroupsAndLayers(CqSurveyDB& db, std::ostream& out) {
    CStringList groups;
    db.GetGroupList(groups);
    for (const CString& group : groups) {
        out << "group " << db.GetGroupID(group) << " " << Quoted(group) << "\n";
    }
    CString name;
    int color = 0;
    for (CqHandle handle = db.GetFirstLayerHandle(); handle != 0;) {
        out << "layer " << handle;
        db.GetNextLayer(handle, name, color);
        out << " " << Quoted(name) << " color " << color << " line " << db.GetLayerLine(name)
            << "\n";
    }
}

void ListPoints(CqSurveyDB& db, std::ostream& out) {
    for (const auto& [handle, point] : Points(db)) {
        std::array<double, 3> at{};
        point.GetPoint(at.data());
        out << "point " << handle << " " << Quoted(point.GetPtName()) << " at "
            << Numbers(at.data(), 3) << " code " << point.GetCode() << " origin " << point.GetType()
            << " group " << point.GetGroup() << " flags " << point.GetFlags() << " time "
            << point.GetRecTime() << " entity " << db.GetCadEntityHandleByCoordRecHandle(handle);
        CString text;
        if (db.GetCoordDescription(handle, text) != 0) {
            out << " description " << Quoted(text);
        }
        out << "\n";
    }
}

void ListView(CqSurveyDB& db, std::ostream& out) {
    std::uint16_t key = 0;
    std::uint16_t order = 0;
    COORDFILTER filter;
    out << "view of " << db.GetSortCoordSetting(key, order, filter) << ":";
    CqCoordRec point;
    for (int i = 0; i < db.GetSortCoordRecs(); ++i) {
        out << " " << db.GetSortCoordAt(i, point);
    }
    out << "\n";
}

void ListEntity(const CqCadEntity& entity, std::ostream& out) {
    std::array<double, 3> at{};
    entity.GetPoint(at.data());
    CVector min;
    CVector max;
    out << "entity " << entity.GetHandle() << " type " << entity.GetType() << " layer "
        << Quoted(entity.GetLayer().substr(0, 8)) << " color " << entity.GetColor() << " at "
        << Numbers(at.data(), 3);
    switch (entity.GetType()) {
        case EntSiPnt:
            out << " name " << Quoted(entity.GetName()) << " code " << entity.GetCode();
            for (int i = 0; i < entity.GetMcadNumVertex(); ++i) {
                out << " vertex " << entity.GetMcadVertexHandle(i);
            }
            break;
        case EntPline:
            entity.GetBound(min, max);
            out << " line " << entity.GetLine() << " code " << entity.GetCode() << " bound "
                << Place(min) << " to " << Place(max);
            break;
        case EntVertex:
            out << " bulge " << Number(entity.GetBulge()) << " polyline " << entity.GetPlineHandle()
                << " previous " << entity.GetPrevVertexHandle() << " next "
                << entity.GetNextVertexHandle() << " point " << entity.GetMcadSiPointHandle();
            break;
        case EntText:
            out << " text " << Quoted(entity.GetText()) << " align " << entity.GetAlign()
                << " style " << Quoted(entity.GetStyle()) << " height "
                << Number(entity.GetHeight()) << " rotation " << Number(entity.GetRot()) << " code "
                << entity.GetCode() << " option " << entity.GetOptionStyle() << " interval "
                << entity.GetInterval() << " thickness " << entity.GetThickness();
            break;
        case EntCircle:
            out << " radius " << Number(entity.GetRadius()) << " line " << entity.GetLine()
                << " code " << entity.GetCode();
            break;
        case EntBitmap:
            out << " resource " << Quoted(entity.GetResName()) << " width "
                << Number(entity.GetSize().GetX());
            break;
    }
    out << "\n";
}

void ListSettings(CqSurveyDB& db, std::ostream& out) {
    CStringList sections;
    db.GetSettingsSectionList(sections);
    for (const CString& section : sections) {
        out << "section " << Quoted(section) << "\n";
        CStringList keys;
        db.GetSettingsKeyList(section, keys);
        for (const CString& key : keys) {
            CString value;
            db.GetSettingsString(section, key, value, u"");
            out << "setting " << Quoted(key) << " = " << Quoted(value) << "\n";
        }
    }
}

void ListImage(CqSurveyDB& db, std::ostream& out) {
    const auto image = JobImage::Read(db);
    if (!image) {
        out << "no image\n";
        return;
    }
    std::uint64_t sum = 0;
    std::uint64_t place = 0;
    for (const char byte : image->bytes) {
        sum += ++place * static_cast<unsigned char>(byte);
    }
    out << "image of " << image->bytes.size() << " bytes, sum of place times byte " << sum
        << ", type " << image->type << " centre " << Place(image->centre) << " size "
        << Place(image->size) << " rotation " << Number(image->rotation) << "\n";
}

}  // namespace

std::string ListJob(CqSurveyDB& db) {
    std::ostringstream out;
    ListGroupsAndLayers(db, out);
    ListPoints(db, out);
    ListView(db, out);
    for (const CqCadEntityPtr& entity : Entities(db)) {
        ListEntity(*entity, out);
    }
    CVector min;
    CVector max;
    db.GetEntityBound(min, max);
    out << "extents " << Place(min) << " to " << Place(max) << "\n";
    CList<int, int> codes;
    db.GetUsedCode(codes);
    out << "codes in use: " << codes.size() << "\n";
    ListSettings(db, out);
    ListImage(db, out);
    return out.str();
}

}  // namespace cqsurvey
