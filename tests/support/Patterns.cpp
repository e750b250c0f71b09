#include "support/Patterns.h"

#include <algorithm>

namespace morvane::tests
{

namespace
{

template <class IsFull>
cv::Mat1b Filled(cv::Size size, IsFull const & isFull)
{
    cv::Mat1b mask(size.height, size.width);
    for (int y = 0; y < size.height; ++y)
    {
        for (int x = 0; x < size.width; ++x)
        {
            mask(y, x) = isFull(x, y) ? 1 : 0;
        }
    }
    return mask;
}

} // namespace

cv::Mat1b Spiral(cv::Size size)
{
    cv::Mat1b mask(size.height, size.width, uchar{0});
    if (size.empty()) return mask;
    cv::Rect const inside(cv::Point(), size);
    auto const isFull = [&](cv::Point at) {
        return inside.contains(at) && mask(at) != 0;
    };
    cv::Point at(0, 0);
    cv::Point step(1, 0);
    mask(at) = 1;
    for (int turns = 0; turns < 2;)
    {
        if (inside.contains(at + step) && !isFull(at + step) && !isFull(at + 2 * step))
        {
            at += step;
            mask(at) = 1;
            turns = 0;
            continue;
        }
        step = {-step.y, step.x};
        ++turns;
    }
    return mask;
}

std::vector<Pattern> AllPatterns(cv::Size size)
{
    int const right = size.width - 1;
    int const bottom = size.height - 1;
    std::vector<Pattern> patterns;
    auto const add = [&](char const * name, auto const & isFull) {
        patterns.push_back({name, Filled(size, isFull)});
    };
    add("full", [](int, int) { return true; });
    add("empty", [](int, int) { return false; });
    add("checkerboard", [](int x, int y) { return (x + y) % 2 == 0; });
    add("inverse checkerboard", [](int x, int y) { return (x + y) % 2 == 1; });
    add("columns", [](int x, int) { return x % 2 == 0; });
    add("rows", [](int, int y) { return y % 2 == 1; });
    add("diagonals", [](int x, int y) { return (x + y) % 3 == 0; });
    add("falling diagonals", [](int x, int y) { return (x + 2 * y) % 3 == 0; });
    add("comb, spine below", [=](int x, int y) { return x % 2 == 0 || y == bottom; });
    add("comb, spine above", [=](int x, int y) { return x % 2 == 1 || y == 0; });
    add("comb, spine left", [=](int x, int y) { return y % 2 == 0 || x == 0; });
    add("comb, spine right", [=](int x, int y) { return y % 2 == 0 || x == right; });
    // Two combs with their teeth between each other, which never touch.
    add("interlocked combs",
        [=](int x, int y) { return y == 0 || y == bottom || (x % 4 == 0 && y < bottom - 1) || (x % 4 == 2 && y > 1); });
    // Nested brackets that close at the bottom: every merge comes late.
    add("nested cups", [=](int x, int y) {
        int const depth = std::min(x, right - x);
        return depth % 2 == 0 && y <= bottom - depth ? true : (bottom - y) % 2 == 0 && depth > bottom - y;
    });
    add("rings", [=](int x, int y) { return std::min({x, y, right - x, bottom - y}) % 2 == 0; });
    add("first bit of a word", [](int x, int y) { return x % 64 == 0 && y % 2 == 0; });
    add("last bit of a word", [](int x, int y) { return x % 64 == 63 && y % 2 == 0; });
    add("across words", [](int x, int) { return x % 64 == 0 || x % 64 == 63; });
    add("diagonally across words", [](int x, int y) { return x % 64 == (y % 2 == 0 ? 63 : 0); });
    add("all but word borders", [](int x, int) { return x % 64 != 0; });
    add("border columns", [=](int x, int y) { return (x == 0 && y % 2 == 0) || (x == right && y % 2 == 1); });
    add("frame", [=](int x, int y) { return x == 0 || y == 0 || x == right || y == bottom; });
    patterns.push_back({"spiral", Spiral(size)});
    return patterns;
}

} // namespace morvane::tests
