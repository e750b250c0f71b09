#include "support/Images.h"
#include "support/Timing.h"

#include <morvane/filters/Sampling.h>

#include <cstring>
#include <string>
#include <utility>

namespace
{

using namespace morvane::filters;

/// An image of one type, with what a reduction makes of it.
struct Pyramid
{
    explicit Pyramid(int side, int depth)
    {
        benchmarks::GreyTerrain(side).convertTo(image, depth);
        low = cv::Mat::zeros(side / 2, side / 2, depth);
        high = cv::Mat::zeros(side, side, depth);
    }

    cv::Mat image;
    cv::Mat low;
    cv::Mat high;
};

template <class Work>
void TimePyramid(std::string const & name, int side, int depth, std::size_t bytes, Work work)
{
    benchmarks::Time(
        name + "/" + std::to_string(side),
        [=] {
            return [=, pyramid = Pyramid(side, depth)]() mutable {
                return work(pyramid);
            };
        },
        side, static_cast<std::int64_t>(bytes));
}

[[maybe_unused]] bool const registered = [] {
    for (auto const & [name, depth] : {std::pair<std::string, int>{"8U", CV_8U}, {"16S", CV_16S}})
    {
        for (int const side : {256, 512, 1024, 2048, 4096})
        {
            // An image and its two parts are read or written; the peer reads and writes the image.
            std::size_t const image =
                static_cast<std::size_t>(side) * static_cast<std::size_t>(side) * CV_ELEM_SIZE1(depth);
            std::size_t const moved = image * 9 / 4;
            TimePyramid("DownSampling/morvane/" + name, side, depth, moved, [](Pyramid & pyramid) {
                return DownSampling(pyramid.image, pyramid.low, pyramid.high);
            });
            TimePyramid("UpSampling/morvane/" + name, side, depth, moved, [](Pyramid & pyramid) {
                return UpSampling(pyramid.low, pyramid.high, pyramid.image);
            });
            TimePyramid("UpSampling/morvane/without detail-" + name, side, depth, image * 5 / 4, [](Pyramid & pyramid) {
                return UpSampling(pyramid.low, pyramid.image);
            });
            TimePyramid("DownSampling/morvane/max-" + name, side, depth, moved, [](Pyramid & pyramid) {
                return DownSamplingWithMax(pyramid.image, pyramid.low, pyramid.high);
            });
            for (char const * const timed : {"DownSampling/memcpy/", "UpSampling/memcpy/"})
            {
                TimePyramid(timed + name, side, depth, 2 * image, [](Pyramid & pyramid) {
                    return std::memcpy(
                        pyramid.high.data, pyramid.image.data, pyramid.image.total() * pyramid.image.elemSize());
                });
            }
        }
    }
    return true;
}();

} // namespace
