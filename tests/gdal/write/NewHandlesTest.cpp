#include "gdal/write/NewHandles.h"

#include <gtest/gtest.h>

namespace cqsurvey::gdal {
namespace {

TEST(NewHandlesTest, AnIdIsFoundUnderItsLastHandle) {
    NewHandles handles;
    EXPECT_EQ(handles.Find(7), std::nullopt);
    handles.Set(7, 3);
    handles.Set(7, 4);
    EXPECT_EQ(handles.Find(7), 4U);
}

TEST(NewHandlesTest, OnlyWhatATransactionHasSetGoesWithIt) {
    NewHandles handles;
    handles.Set(1, 11);
    handles.BeginTransaction();
    handles.Set(1, 12);
    handles.Set(1, 13);
    handles.Set(2, 22);
    handles.UndoTransaction();
    EXPECT_EQ(handles.Find(1), 11U);
    EXPECT_EQ(handles.Find(2), std::nullopt);
    handles.BeginTransaction();
    handles.Set(2, 23);
    handles.KeepTransaction();
    handles.UndoTransaction();
    EXPECT_EQ(handles.Find(2), 23U);
}

}  // namespace
}  // namespace cqsurvey::gdal
