#include "cqjob/images/WorldFile.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <filesystem>
#include <numbers>
#include <system_error>
#include <vector>

#include "cqjob/Failure.h"
#include "text/NumberText.h"

namespace cqsurvey::cqjob {

namespace {

/// The endings that the world file of an image with this ending may have.
std::vector<std::string> Endings(const std::string& ending) {
    std::vector<std::string> endings;
    if (ending.size() > 2) {
        // ".jpg" has ".jgw", ".JPEG" has ".JGW".
        const bool upper = ending.back() >= 'A' && ending.back() <= 'Z';
        const char w = upper ? 'W' : 'w';
        endings.push_back({'.', ending[1], ending.back(), w});
        endings.push_back(ending + w);
    }
    endings.emplace_back(".wld");
    return endings;
}

std::array<double, 6> ReadNumbers(const std::string& path, std::string_view text) {
    std::array<double, 6> numbers{};
    std::size_t count = 0;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find_first_of(" \t\r\n"), text.size());
        const std::string_view word = text.substr(0, end);
        text.remove_prefix(std::min(end + 1, text.size()));
        if (word.empty()) {
            continue;
        }
        const ParsedNumber number = ParseNumber(word);
        if (number.fault != nullptr || !std::isfinite(number.value) || count == numbers.size()) {
            count = 0;
            break;
        }
        numbers[count++] = number.value;
    }
    if (count != numbers.size()) {
        throw Failure(path, "is no world file, which has six numbers");
    }
    return numbers;
}

}  // namespace

std::optional<std::string> WorldFile::Find(const std::string& image) {
    const std::filesystem::path path(image);
    for (const std::string& ending : Endings(path.extension().string())) {
        std::filesystem::path world = path;
        world.replace_extension(ending);
        std::error_code none;
        if (std::filesystem::is_regular_file(world, none)) {
            return world.string();
        }
    }
    return std::nullopt;
}

CqImagePlace WorldFile::Read(const std::string& path, std::string_view text,
                             const exchange::ImageHeader& image) {
    const auto [a, d, b, e, c, f] = ReadNumbers(path, text);
    if (image.width == 0 || image.height == 0) {
        throw Failure(path, "the size of the {} image beside it cannot be read", image.format);
    }
    const double column = std::hypot(a, d);
    const double row = std::hypot(b, e);
    constexpr double kSquare = 1e-6;
    if (!(column > 0.0) || !(row > 0.0) || std::fabs(a * b + d * e) > kSquare * column * row ||
        a * e - b * d > 0.0) {
        throw Failure(path,
                      "makes the image a mirror image or no rectangle, which a job cannot hold");
    }
    const double middleColumn = (image.width - 1.0) / 2.0;
    const double middleRow = (image.height - 1.0) / 2.0;
    return {.east = a * middleColumn + b * middleRow + c,
            .north = d * middleColumn + e * middleRow + f,
            .width = column * image.width,
            .height = row * image.height,
            .rotation = std::atan2(d, a) * 180.0 / std::numbers::pi};
}

}  // namespace cqsurvey::cqjob
