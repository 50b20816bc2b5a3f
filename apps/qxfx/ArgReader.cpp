#include "apps/qxfx/ArgReader.h"

#include <charconv>
#include <cmath>

namespace qx::qxfx {

namespace {

CommandError badValue(std::string_view option, std::string_view text, const std::string& expected)
{
    return CommandError("bad value '" + std::string(text) + "' for " + std::string(option) + " (" + expected + ")");
}

template <typename T>
bool parseWhole(std::string_view text, T& out)
{
    const auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), out);
    return ec == std::errc() && end == text.data() + text.size();
}

}  // namespace

std::string ArgReader::value(std::string_view option)
{
    if (done()) throw CommandError("option " + std::string(option) + " needs a value");
    return std::string(take());
}

long ArgReader::integer(std::string_view option, long min, long max)
{
    const std::string text = value(option);
    long result = 0;
    if (!parseWhole(text, result) || result < min || result > max) {
        throw badValue(option, text, "a whole number from " + std::to_string(min) + " to " + std::to_string(max));
    }
    return result;
}

double ArgReader::number(std::string_view option, double min, double max)
{
    const std::string text = value(option);
    double result = 0;
    if (!parseWhole(text, result) || !std::isfinite(result) || result < min || result > max) {
        throw badValue(option, text, "a number from " + std::to_string(min) + " to " + std::to_string(max));
    }
    return result;
}

std::pair<int, int> ArgReader::size(std::string_view option, int maxSide)
{
    const std::string text = value(option);
    const size_t x = text.find('x');
    int width = 0;
    int height = 0;
    if (x == std::string::npos || !parseWhole(std::string_view(text).substr(0, x), width) ||
        !parseWhole(std::string_view(text).substr(x + 1), height) || width < 1 || height < 1 || width > maxSide ||
        height > maxSide) {
        throw badValue(option, text, "WIDTHxHEIGHT, each from 1 to " + std::to_string(maxSide));
    }
    return {width, height};
}

}  // namespace qx::qxfx
