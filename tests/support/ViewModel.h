#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <random>
#include <set>
#include <vector>

#include "cqsurvey/Records.h"
#include "cqsurvey/Types.h"

namespace cqsurvey {

/// What a view of the points must be, by the plainest means: an array that is searched, shifted
/// and compared entry by entry. It shares no code with the library.
class ViewModel {
 public:
    struct Point {
        CString name;
        std::int32_t code = 0;
        std::uint16_t origin = 0;
        std::uint16_t group = 0;
        CqHandle entity = 0;
    };

    struct Key {
        CString prefix;
        std::int64_t number = -1;
    };

    static Key KeyOf(const CString& name) {
        Key key{name};
        CString digits;
        while (!key.prefix.empty() && key.prefix.back() >= u'0' && key.prefix.back() <= u'9') {
            digits.insert(digits.begin(), key.prefix.back());
            key.prefix.pop_back();
        }
        if (!digits.empty()) {
            key.number = 0;
            for (const char16_t digit : digits) {
                key.number = key.number * 10 + (digit - u'0');
                if (key.number > 2147483647) {
                    key.number = 2147483647;
                }
            }
        }
        return key;
    }

    static std::int64_t Compare(const Key& a, const Key& b) {
        if (a.prefix > b.prefix) {
            return 1;
        }
        return a.prefix < b.prefix ? -1 : a.number - b.number;
    }

    [[nodiscard]] bool Admits(const Point& point) const {
        const std::size_t star = filter.nameFrom.find(u'*');
        if (!filter.nameFrom.empty() || !filter.nameTo.empty() || !filter.codes.empty()) {
            if (star == CString::npos) {
                const Key from = KeyOf(filter.nameFrom);
                const Key to = KeyOf(filter.nameTo);
                if (!filter.nameFrom.empty() && Compare(from, KeyOf(point.name)) > 0) {
                    return false;
                }
                if (!filter.nameTo.empty() && Compare(to, KeyOf(point.name)) < 0) {
                    return false;
                }
            } else if (point.name.substr(0, star) != filter.nameFrom.substr(0, star)) {
                return false;
            }
            bool codeFound = filter.codes.empty();
            for (const std::int32_t code : filter.codes) {
                codeFound = codeFound || code == point.code;
            }
            if (!codeFound) {
                return false;
            }
        }
        if ((filter.originMask & point.origin) == 0) {
            return false;
        }
        return filter.group == 0 || (point.group == 0 && filter.withUngrouped != 0) ||
               point.group == filter.group;
    }

    /// The wrapping difference of two codes as a 32-bit machine computes it.
    static std::int64_t CodeDifference(std::int64_t a, std::int64_t b) {
        std::int64_t difference = a - b;
        if (difference > 2147483647) {
            difference -= 4294967296;
        } else if (difference < -2147483648LL) {
            difference += 4294967296;
        }
        return difference;
    }

    [[nodiscard]] bool IsBehind(const Point& point, const Point& entry) const {
        std::int64_t comparison = key == 1 ? CodeDifference(point.code, entry.code)
                                           : Compare(KeyOf(point.name), KeyOf(entry.name));
        if (order == 1) {
            // The lowest number is its own opposite.
            comparison = comparison == -2147483648LL && key == 1 ? comparison : -comparison;
        }
        return comparison >= 1;
    }

    [[nodiscard]] Point At(CqHandle handle) const {
        const auto found = points.find(handle);
        return found == points.end() ? Point{} : found->second;
    }

    void Insert(CqHandle handle) {
        const Point point = At(handle);
        if (!Admits(point)) {
            return;
        }
        std::size_t low = 0;
        std::size_t high = view.size();
        if (key > 1) {
            low = order != 0 ? 0 : view.size();
        } else {
            while (low < high) {
                const std::size_t middle = (low + high) / 2;
                if (IsBehind(point, At(view[middle]))) {
                    low = middle + 1;
                } else {
                    high = middle;
                }
            }
        }
        view.insert(view.begin() + static_cast<std::ptrdiff_t>(low), handle);
        EnterEntity(point.entity);
    }

    void EnterEntity(CqHandle entity) {
        if (entity != 0) {
            entities.insert(entity);
        }
    }

    void Remove(CqHandle handle) {
        const Point point = At(handle);
        if (!Admits(point)) {
            return;
        }
        entities.erase(point.entity);
        for (std::size_t i = 0; i < view.size(); ++i) {
            if (view[i] == handle) {
                view.erase(view.begin() + static_cast<std::ptrdiff_t>(i));
                return;
            }
        }
    }

    void Rebuild(std::uint16_t newKey, std::uint16_t newOrder, const COORDFILTER& newFilter) {
        key = newKey;
        order = newOrder;
        filter = newFilter;
        view.clear();
        entities.clear();
        for (const auto& [handle, point] : points) {
            Insert(handle);
        }
    }

    std::map<CqHandle, Point> points;
    std::uint16_t key = 0;
    std::uint16_t order = 0;
    COORDFILTER filter;
    std::vector<CqHandle> view;
    std::set<CqHandle> entities;
};

/// Names, codes and settings that meet the borders of a view's rules often.
class ViewDice {
 public:
    explicit ViewDice(unsigned seed) : m_random(seed) {}

    [[nodiscard]] std::uint32_t Below(std::uint32_t bound) {
        return std::uniform_int_distribution<std::uint32_t>(0, bound - 1)(m_random);
    }
    [[nodiscard]] bool OneIn(std::uint32_t times) { return Below(times) == 0; }

    template <class T>
    [[nodiscard]] const T& One(const std::vector<T>& choices) {
        return choices[Below(static_cast<std::uint32_t>(choices.size()))];
    }

    [[nodiscard]] CString Name() {
        static const std::vector<CString> prefixes{
            u"",      u"",      u"P",      u"P",          u"p",      u"A",
            u"AB",    u"ABC",   u"ABCD",   u"ABCDE",      u"ABCD1E", u"ABCDEFGH",
            u"TREE-", u"TREE.", u"\u00E9", u"\U0001F333", u"\uFFFF", u"ABCDEFGHIJKLM",
            u"1A",    u"P0P"};
        static const std::vector<CString> numbers{
            u"",    u"",   u"0",          u"00",         u"1",           u"01",
            u"001", u"10", u"2147483647", u"2147483648", u"99999999999", u"4294967297"};
        // Of such letters only six stand in a digest.
        CString name = OneIn(10) ? CString(15, u'\u0434') : One(prefixes);
        if (OneIn(3)) {
            name += One(numbers);
        } else {
            for (std::uint32_t number = Below(OneIn(2) ? 20 : 100000); number != 0; number /= 10) {
                name.push_back(static_cast<char16_t>(u'0' + number % 10));
            }
        }
        return name.substr(0, 19);
    }

    [[nodiscard]] std::int32_t Code(bool wrapping) {
        static const std::vector<std::int32_t> extremes{
            -2147483647 - 1, -2147483647, -1073741825, -1073741824, -1, 0, 1,
            1073741823,      1073741824,  2147483646,  2147483647};
        if (wrapping && OneIn(2)) {
            return One(extremes);
        }
        const auto code = static_cast<std::int32_t>(Below(wrapping ? 2147483647 : 12));
        return OneIn(2) ? code : -code;
    }

    [[nodiscard]] COORDFILTER Filter(bool wrapping) {
        COORDFILTER filter;
        if (OneIn(4)) {
            return filter;
        }
        if (OneIn(3)) {
            filter.nameFrom = Name();
            if (OneIn(2)) {
                filter.nameFrom.insert(
                    Below(static_cast<std::uint32_t>(filter.nameFrom.size()) + 1), u"*");
            }
        }
        if (OneIn(3)) {
            filter.nameTo = Name();
        }
        if (OneIn(3)) {
            for (std::uint32_t i = Below(6); i != 0; --i) {
                filter.codes.push_back(Code(wrapping));
            }
        }
        if (OneIn(6)) {
            filter.originMask = static_cast<std::uint16_t>(Below(64));
        }
        if (!OneIn(3)) {
            filter.group = static_cast<std::uint16_t>(Below(4));
            filter.withUngrouped = OneIn(2) ? 1 : 0;
        }
        return filter;
    }

    [[nodiscard]] std::uint16_t SortKey() {
        static const std::vector<std::uint16_t> keys{0, 0, 1, 1, 7};
        return One(keys);
    }
    [[nodiscard]] std::uint16_t SortOrder() {
        static const std::vector<std::uint16_t> orders{0, 0, 1, 1, 2};
        return One(orders);
    }

 private:
    std::mt19937 m_random;
};

}  // namespace cqsurvey
