#include "gdal/NameCondition.h"

#include <ogr_swq.h>

#include <algorithm>

namespace cqsurvey::gdal {

namespace {

bool IsField(const swq_expr_node& node, int field) {
    return node.eNodeType == SNT_COLUMN && node.field_index == field && node.table_index == 0;
}

bool IsText(const swq_expr_node& node) {
    return node.eNodeType == SNT_CONSTANT && node.field_type == SWQ_STRING && node.is_null == 0 &&
           node.string_value != nullptr;
}

std::optional<std::vector<std::string>> Search(const swq_expr_node& node, int field) {
    if (node.eNodeType != SNT_OPERATION) {
        return std::nullopt;
    }
    const auto part = [&](int index) -> const swq_expr_node& { return *node.papoSubExpr[index]; };
    if (node.nOperation == SWQ_AND && node.nSubExprCount == 2) {
        auto found = Search(part(0), field);
        return found ? found : Search(part(1), field);
    }
    const bool equal = node.nOperation == SWQ_EQ && node.nSubExprCount == 2;
    if ((!equal && node.nOperation != SWQ_IN) || node.nSubExprCount < 2 ||
        !IsField(part(0), field)) {
        return std::nullopt;
    }
    std::vector<std::string> values;
    for (int i = 1; i < node.nSubExprCount; ++i) {
        if (!IsText(part(i))) {
            return std::nullopt;
        }
        values.push_back(FoldAscii(part(i).string_value));
    }
    return values;
}

}  // namespace

std::optional<std::vector<std::string>> ValuesAsked(OGRFeatureQuery& query, int field) {
    const auto* expression = static_cast<const swq_expr_node*>(query.GetSWQExpr());
    return expression != nullptr ? Search(*expression, field) : std::nullopt;
}

std::string FoldAscii(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(), [](char c) {
        return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    });
    return text;
}

}  // namespace cqsurvey::gdal
