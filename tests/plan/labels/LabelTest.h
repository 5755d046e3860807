#pragma once

#include <gtest/gtest.h>

#include <cstddef>

#include "cqsurvey/plan/PlotOptions.h"
#include "plan/Plan.h"
#include "plan/SvgPage.h"
#include "plan/labels/LabelRoom.h"

namespace cqsurvey::plan {

/// Lets a painter write the labels of a plan, of which nothing else is drawn.
template <class Painter>
class LabelTest : public testing::Test {
 protected:
    SvgPicture Draw() {
        Painter painter(page.Get(), room, plan, options);
        painter.Draw();
        lost = painter.GetLost();
        return page.Finish();
    }

    Plan plan;
    PlotOptions options;
    LabelRoom room;
    SvgPage page;
    std::size_t lost = 0;
};

}  // namespace cqsurvey::plan
