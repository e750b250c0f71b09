#include "support/UnionFindOpening.h"

#include <algorithm>
#include <cstdint>
#include <numeric>
#include <utility>
#include <vector>

namespace benchmarks
{

namespace
{

/// The pixels in rising order of their values, raster order among equal ones.
template <class T>
std::vector<std::uint32_t> Sorted(std::vector<T> const & values)
{
    std::vector<std::uint32_t> order(values.size());
    if constexpr (sizeof(T) <= 2)
    {
        std::vector<std::uint32_t> starts((std::size_t{1} << (8 * sizeof(T))) + 1);
        for (T const value : values)
        {
            ++starts[std::size_t{value} + 1];
        }
        std::partial_sum(starts.begin(), starts.end(), starts.begin());
        for (std::uint32_t pixel = 0; pixel < values.size(); ++pixel)
        {
            order[starts[values[pixel]]++] = pixel;
        }
    }
    else
    {
        std::iota(order.begin(), order.end(), 0U);
        std::stable_sort(order.begin(), order.end(), [&](std::uint32_t one, std::uint32_t other) {
            return values[one] < values[other];
        });
    }
    return order;
}

std::uint32_t Root(std::vector<std::uint32_t> & forest, std::uint32_t pixel)
{
    while (forest[pixel] != pixel)
    {
        forest[pixel] = forest[forest[pixel]];
        pixel = forest[pixel];
    }
    return pixel;
}

/// The image on a plane with a frame of one pixel that is never immersed.
template <class T>
struct Framed
{
    explicit Framed(cv::Mat const & image)
        : stride(image.cols + 2)
        , values(static_cast<std::size_t>(stride) * static_cast<std::size_t>(image.rows + 2))
        , isInside(values.size())
    {
        for (int y = 0; y < image.rows; ++y)
        {
            std::copy_n(image.ptr<T>(y), image.cols, values.begin() + RowStart(y));
            std::fill_n(isInside.begin() + RowStart(y), image.cols, uchar{1});
        }
    }

    [[nodiscard]] std::ptrdiff_t RowStart(int y) const { return std::ptrdiff_t{y + 1} * stride + 1; }

    int stride;
    std::vector<T> values;
    std::vector<uchar> isInside;
};

constexpr std::uint32_t kNone = ~std::uint32_t{0};

/// Immerses the pixels from the highest on. @return the parent of each: a pixel of its node, or of the one below
template <class T>
std::vector<std::uint32_t> Immerse(Framed<T> const & image, std::vector<std::uint32_t> const & order)
{
    std::size_t const total = image.values.size();
    std::vector<std::uint32_t> parents(total, kNone);
    std::vector<std::uint32_t> forest(total, kNone);
    std::vector<std::uint32_t> tops(total);
    std::vector<uchar> ranks(total);
    int const stride = image.stride;
    int const offsets[] = {-stride - 1, -stride, -stride + 1, -1, 1, stride - 1, stride, stride + 1};
    for (auto it = order.rbegin(); it != order.rend(); ++it)
    {
        std::uint32_t const pixel = *it;
        if (image.isInside[pixel] == 0) continue;
        parents[pixel] = forest[pixel] = tops[pixel] = pixel;
        std::uint32_t root = pixel;
        for (int const offset : offsets)
        {
            auto const neighbour = static_cast<std::uint32_t>(static_cast<int>(pixel) + offset);
            if (forest[neighbour] == kNone) continue;
            std::uint32_t other = Root(forest, neighbour);
            if (other == root) continue;
            parents[tops[other]] = pixel;
            if (ranks[root] < ranks[other]) std::swap(root, other);
            forest[other] = root;
            ranks[root] = static_cast<uchar>(ranks[root] + (ranks[root] == ranks[other] ? 1 : 0));
            tops[root] = pixel;
        }
    }
    return parents;
}

/// Makes each pixel's parent the first pixel of its node, or of the parent node.
template <class T>
void PointAtFirst(
    Framed<T> const & image, std::vector<std::uint32_t> const & order, std::vector<std::uint32_t> & parents)
{
    for (std::uint32_t const pixel : order)
    {
        if (image.isInside[pixel] == 0) continue;
        std::uint32_t const parent = parents[pixel];
        if (image.values[parents[parent]] == image.values[parent]) parents[pixel] = parents[parent];
    }
}

template <class T>
cv::Mat Open(cv::Mat const & image, int area)
{
    Framed<T> const framed(image);
    std::vector<T> const & values = framed.values;
    std::vector<std::uint32_t> const order = Sorted(values);
    std::vector<std::uint32_t> parents = Immerse(framed, order);
    PointAtFirst(framed, order, parents);
    std::vector<std::uint32_t> areas(values.size(), 1);
    for (auto it = order.rbegin(); it != order.rend(); ++it)
    {
        if (framed.isInside[*it] != 0 && parents[*it] != *it) areas[parents[*it]] += areas[*it];
    }
    std::vector<T> levels(values.size());
    for (std::uint32_t const pixel : order)
    {
        if (framed.isInside[pixel] == 0) continue;
        std::uint32_t const parent = parents[pixel];
        bool const isRoot = parent == pixel;
        bool const isFirst = isRoot || values[parent] != values[pixel];
        T const inherited = isRoot ? T{0} : levels[parent];
        bool const stays = areas[pixel] >= static_cast<std::uint32_t>(area);
        levels[pixel] = isFirst && stays ? values[pixel] : inherited;
    }
    cv::Mat out(image.size(), image.type());
    for (int y = 0; y < image.rows; ++y)
    {
        std::copy_n(levels.begin() + framed.RowStart(y), image.cols, out.ptr<T>(y));
    }
    return out;
}

} // namespace

cv::Mat UnionFindAreaOpening(cv::Mat const & image, int area)
{
    switch (image.depth())
    {
    case CV_8U:
        return Open<uchar>(image, area);
    case CV_16U:
        return Open<ushort>(image, area);
    default:
        return Open<int>(image, area);
    }
}

} // namespace benchmarks
