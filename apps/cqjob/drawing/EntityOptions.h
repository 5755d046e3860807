#pragma once

#include <cqsurvey/cqsurvey.h>

#include <optional>
#include <string>

#include "cqjob/CommandLine.h"

namespace cqsurvey::cqjob {

/// The options --layer, --color, --line and --code of commands that draw.
class EntityOptions {
 public:
    /// `hasLine` adds --line, which texts do not have.
    void AddTo(CommandLine& command, bool hasLine);

    [[nodiscard]] bool IsGiven() const { return m_layer || m_color || m_line || m_code; }

    /// The line type and the feature code, or `other` without the option.
    [[nodiscard]] int GetLine(int other) const { return m_line.value_or(other); }
    [[nodiscard]] int GetCode(int other) const;

    /// Chooses the layer and colour of what is added from now on; without options the layer 0 and
    /// the layer's colour. Throws Failure when there is no such layer.
    void Choose(CqSurveyDB& db, const std::string& job) const;

    /// Gives an entity the layer and colour, where there is an option. Throws as Choose.
    void Apply(CqSurveyDB& db, const std::string& job, CqHandle entity) const;

 private:
    std::optional<std::string> m_layer;
    std::optional<int> m_color;
    std::optional<int> m_line;
    std::optional<std::string> m_code;
};

}  // namespace cqsurvey::cqjob
