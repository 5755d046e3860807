#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "exchange/dxf/GroupReader.h"

namespace cqsurvey::exchange::dxf {

/// One group of a record; its value is in the record's text.
struct Entry {
    std::int32_t code = 0;
    std::uint32_t begin = 0;
    std::uint32_t length = 0;
    std::uint32_t place = 0;  ///< counted from the record's place
};

/// The groups from one group 0 to the next: an entity, a layer, a block. The vertices of a polyline
/// and the attributes of an inserted block are records of their own in the file; here they are part
/// of the record that they belong to, each begun by an entry of code 0.
class Record {
 public:
    std::string type;         ///< "LINE"
    std::uint64_t place = 0;  ///< of its first group

    void Begin(const Origin& origin, const Group& group);
    /// Throws ExchangeError when the texts of the record, or its entries, take more bytes than
    /// `most`.
    void Add(const Group& group, std::size_t most);

    [[nodiscard]] const std::vector<Entry>& GetEntries() const { return m_entries; }
    [[nodiscard]] std::string_view Text(const Entry& entry) const {
        return std::string_view(m_text).substr(entry.begin, entry.length);
    }
    /// The value as a number. Throws ExchangeError with the place when it is none.
    [[nodiscard]] double Number(const Entry& entry) const;
    [[nodiscard]] int Whole(const Entry& entry) const;

    /// The first group of the code before the first part, null when there is none.
    [[nodiscard]] const Entry* Find(int code) const;
    [[nodiscard]] std::string_view Text(int code, std::string_view fallback = {}) const;
    [[nodiscard]] double Number(int code, double fallback = 0.0) const;
    [[nodiscard]] int Whole(int code, int fallback = 0) const;

    /// Hands over the parts, each as a record of its own that is valid until the next: all of them
    /// at once may take several times the memory of the record.
    void ForEachPart(const std::function<void(const Record&)>& take) const;

    /// How much memory it takes.
    [[nodiscard]] std::size_t GetSize() const;

    /// Gives back memory that is not in use.
    void Shrink();

    [[nodiscard]] const Origin& GetOrigin() const { return *m_origin; }

 private:
    const Origin* m_origin = nullptr;
    std::vector<Entry> m_entries;
    std::string m_text;
};

}  // namespace cqsurvey::exchange::dxf
