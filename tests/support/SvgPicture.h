#pragma once

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace cqsurvey {

/// What an SVG picture draws, as far as the tests ask: paths and texts with their colours, in the
/// order in which they are drawn, and the names of the groups that they are in.
class SvgPicture {
 public:
    struct Step {
        char command = 0;  ///< M, L, C or Z
        std::vector<double> numbers;
    };
    struct Path {
        std::string stroke;  ///< as "#ff0000"; "" for none
        std::string fill;
        std::string dashes;  ///< "" for a continuous line
        double width = 0.0;
        std::string group;
        std::vector<Step> steps;

        [[nodiscard]] std::size_t Count(char command) const {
            return static_cast<std::size_t>(
                std::count_if(steps.begin(), steps.end(),
                              [&](const Step& step) { return step.command == command; }));
        }
        /// The box of all ends and of the curves' middles: least x and y, largest x and y.
        [[nodiscard]] std::vector<double> Box() const {
            std::vector<double> box{1e9, 1e9, -1e9, -1e9};
            const auto add = [&](double x, double y) {
                box = {std::min(box[0], x), std::min(box[1], y), std::max(box[2], x),
                       std::max(box[3], y)};
            };
            double lastX = 0.0;
            double lastY = 0.0;
            for (const Step& step : steps) {
                const std::vector<double>& n = step.numbers;
                if (n.size() == 6) {
                    add((lastX + 3 * n[0] + 3 * n[2] + n[4]) / 8,
                        (lastY + 3 * n[1] + 3 * n[3] + n[5]) / 8);
                }
                if (n.size() >= 2) {
                    lastX = n[n.size() - 2];
                    lastY = n.back();
                    add(lastX, lastY);
                }
            }
            return box;
        }
    };
    struct Text {
        double x = 0.0;  ///< left end of the baseline
        double y = 0.0;
        std::string text;
        std::string fill;
        double size = 0.0;
        double length = 0.0;
        double rotation = 0.0;  ///< degrees, clockwise
        bool hasHalo = false;
        std::string group;
    };

    explicit SvgPicture(const std::string& text) {
        std::vector<std::string> open;
        for (std::size_t at = text.find('<'); at != std::string::npos;
             at = text.find('<', at + 1)) {
            const std::size_t end = text.find('>', at);
            const std::string_view tag = std::string_view(text).substr(at + 1, end - at - 1);
            const std::string name(tag.substr(0, tag.find_first_of(" \n/", 1)));
            const std::map<std::string, std::string> attributes = Attributes(tag);
            const auto get = [&](const char* key) {
                const auto found = attributes.find(key);
                return found == attributes.end() ? std::string() : found->second;
            };
            if (name == "svg") {
                width = Number(get("width"));
                height = Number(get("height"));
            } else if (name == "g") {
                open.push_back(get("inkscape:label"));
                groups.insert(groups.end(), open.back().empty() ? 0U : 1U, open.back());
            } else if (name == "/g") {
                open.pop_back();
            } else if (name == "image") {
                ++images;
            } else if (name == "path") {
                paths.push_back({get("stroke"), get("fill"), get("stroke-dasharray"),
                                 Number(get("stroke-width")), GroupOf(open), Steps(get("d"))});
            } else if (name == "text") {
                const std::string turn = get("transform");
                texts.push_back({Number(get("x")), Number(get("y")),
                                 text.substr(end + 1, text.find('<', end) - end - 1), get("fill"),
                                 Number(get("font-size")), Number(get("textLength")),
                                 turn.empty() ? 0.0 : Number(turn.substr(turn.find('(') + 1)),
                                 !get("stroke").empty(), GroupOf(open)});
            }
        }
    }

    [[nodiscard]] std::vector<Path> WithStroke(const std::string& color) const {
        std::vector<Path> found;
        std::copy_if(paths.begin(), paths.end(), std::back_inserter(found),
                     [&](const Path& path) { return path.stroke == color; });
        return found;
    }
    [[nodiscard]] std::vector<Text> WithFill(const std::string& color) const {
        std::vector<Text> found;
        std::copy_if(texts.begin(), texts.end(), std::back_inserter(found),
                     [&](const Text& text) { return text.fill == color; });
        return found;
    }
    /// The texts of a group; a path's or text's group is the innermost with a name.
    [[nodiscard]] std::vector<Text> InGroup(const std::string& group) const {
        std::vector<Text> found;
        std::copy_if(texts.begin(), texts.end(), std::back_inserter(found),
                     [&](const Text& text) { return text.group == group; });
        return found;
    }
    [[nodiscard]] bool Says(const std::string& words) const {
        return std::any_of(texts.begin(), texts.end(),
                           [&](const Text& text) { return text.text == words; });
    }

    double width = 0.0;  ///< in points of 1/72 inch
    double height = 0.0;
    int images = 0;
    std::vector<Path> paths;
    std::vector<Text> texts;
    std::vector<std::string> groups;

 private:
    static double Number(std::string_view text) {
        double value = 0.0;
        std::from_chars(text.data(), text.data() + text.size(), value);
        return value;
    }

    static std::map<std::string, std::string> Attributes(std::string_view tag) {
        std::map<std::string, std::string> found;
        for (std::size_t at = tag.find("=\""); at != std::string_view::npos;
             at = tag.find("=\"", at + 1)) {
            const std::size_t begin = tag.find_last_of(" \n", at) + 1;
            const std::size_t end = tag.find('"', at + 2);
            found[std::string(tag.substr(begin, at - begin))] = tag.substr(at + 2, end - at - 2);
            at = end;
        }
        return found;
    }

    static std::string GroupOf(const std::vector<std::string>& open) {
        const auto named = std::find_if(open.rbegin(), open.rend(),
                                        [](const std::string& name) { return !name.empty(); });
        return named == open.rend() ? "" : *named;
    }

    static std::vector<Step> Steps(const std::string& data) {
        std::vector<Step> steps;
        std::size_t at = 0;
        while (at < data.size()) {
            const std::size_t end = std::min(data.find(' ', at), data.size());
            const std::string_view word = std::string_view(data).substr(at, end - at);
            if (!word.empty() && word.front() >= 'A') {
                steps.push_back({word.front(), {}});
            } else if (!word.empty()) {
                steps.back().numbers.push_back(Number(word));
            }
            at = end + 1;
        }
        return steps;
    }
};

}  // namespace cqsurvey
