#pragma once

#include <utility>
#include <vector>

#include "cqsurvey/Types.h"
#include "exchange/drawing/CurveFitter.h"

namespace cqsurvey::exchange::sima {

/// Finds for a parcel the text inside it.
class ParcelNames {
 public:
    void Add(const Vec3& at, CString text) { m_texts.push_back({at, std::move(text), false}); }

    /// Call it after the last Add.
    void Sort();

    /// The first text inside the closed path that no parcel had before; empty when there is none.
    [[nodiscard]] CString Find(const std::vector<PathVertex>& path);

 private:
    struct Text {
        Vec3 at;
        CString text;
        bool used = false;
    };

    std::vector<Text> m_texts;  // from west to east
};

}  // namespace cqsurvey::exchange::sima
