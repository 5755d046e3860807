#include "exchange/FieldTextRow.h"

#include <gtest/gtest.h>

#include <cmath>

namespace cqsurvey::exchange {
namespace {

const PointTexts kPoint = {
    .name = "P1", .coords = {10.5, 20.25, std::nan("")}, .code = 0, .description = "FENCE"};

TEST(FieldTextRow, WritesTheColumnsAsTheOrderSays) {
    EXPECT_EQ(
        FieldTextRow(ColumnOrder::FromLetters("penzcd"), Separator::Comma, {}, false).Make(kPoint),
        "P1,10.5,20.25,,0,FENCE\r\n");
    EXPECT_EQ(
        FieldTextRow(ColumnOrder::FromLetters("pnezd"), Separator::Comma, {}, false).Make(kPoint),
        "P1,20.25,10.5,,FENCE\r\n");
    EXPECT_EQ(FieldTextRow(ColumnOrder::FromWords("e,n,-,desc,code"), Separator::Tab, {}, false)
                  .Make(kPoint),
              "10.5\t20.25\t\tFENCE\t0\r\n");
}

TEST(FieldTextRow, WritesDecimalsAsAskedFor) {
    const ColumnOrder order = ColumnOrder::FromLetters("en");
    EXPECT_EQ(FieldTextRow(order, Separator::Comma, 3, false).Make(kPoint), "10.500,20.250\r\n");
    EXPECT_EQ(FieldTextRow(order, Separator::Semicolon, 1, true).Make(kPoint), "10,5;20,2\r\n");
    EXPECT_EQ(FieldTextRow(order, Separator::Comma, {}, true).Make(kPoint),
              "\"10,5\",\"20,25\"\r\n");
}

TEST(FieldTextRow, ForASpreadsheetNoTextBeginsLikeAFormula) {
    const FieldTextRow row(ColumnOrder::FromLetters("pend"), Separator::Comma, 0, false, true);
    PointTexts point = {.name = "=1+1", .coords = {-1, 2, 3}, .code = 0, .description = "@SUM(A1)"};
    EXPECT_EQ(row.Make(point), "'=1+1,-1,2,'@SUM(A1)\r\n");
    point.name = "-5.5";
    point.description = "+cmd";
    EXPECT_EQ(row.Make(point), "-5.5,-1,2,'+cmd\r\n") << "a number is no formula";
    point.name = "A-1";
    point.code = 7;
    point.description = "-x";
    EXPECT_EQ(row.Make(point), "A-1,-1,2,7,\"'-x\"\r\n");
}

TEST(FieldTextRow, NamesTheColumns) {
    EXPECT_EQ(
        FieldTextRow(ColumnOrder::FromLetters("penzcd"), Separator::Comma, {}, false).MakeHeader(),
        "Name,Easting,Northing,Height,Code,Description\r\n");
    EXPECT_EQ(
        FieldTextRow(ColumnOrder::FromWords("n,-,e"), Separator::Comma, {}, false).MakeHeader(),
        "Northing,,Easting\r\n");
}

TEST(FieldTextRow, OneColumnHoldsTheCodeOrTheDescriptionOrTheCodeBeforeTheDescription) {
    const FieldTextRow row(ColumnOrder::FromLetters("end"), Separator::Comma, 0, false);
    PointTexts point = {.name = "", .coords = {1, 2, 3}, .code = 0, .description = ""};
    EXPECT_EQ(row.Make(point), "1,2,\r\n");
    point.code = 50;
    EXPECT_EQ(row.Make(point), "1,2,50\r\n");
    point.description = "oak";
    EXPECT_EQ(row.Make(point), "1,2,50,\"oak\"\r\n");
    point.code = 0;
    EXPECT_EQ(row.Make(point), "1,2,oak\r\n");
    point.description = "4711";
    EXPECT_EQ(row.Make(point), "1,2,0,\"4711\"\r\n") << "or it would come back as a code";
}

}  // namespace
}  // namespace cqsurvey::exchange
