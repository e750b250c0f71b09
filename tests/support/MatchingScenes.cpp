#include "support/MatchingScenes.h"

#include <morvane/algorithm/MatchingScores.h>

#include <cstddef>

namespace morvane::tests
{

cv::Size SomeSize(Random & random, int largest)
{
    return {1 + random.Below(largest), 1 + random.Below(largest)};
}

cv::Mat IntegersOf(Random & random, cv::Size size, std::vector<int> const & values)
{
    cv::Mat image(size, CV_32S);
    for (int & pixel : cv::Mat1i(image))
    {
        pixel = values[static_cast<std::size_t>(random.Below(static_cast<int>(values.size())))];
    }
    return image;
}

cv::Mat StrewnReference(Random & random, cv::Mat const & moving, cv::Size size, std::vector<int> const & values)
{
    cv::Mat reference = IntegersOf(random, size, values);
    for (int part = 0; part < 4; ++part)
    {
        cv::Mat turned;
        double dx = 0.0;
        double dy = 0.0;
        algorithm::utils::RotateImage(moving, random.Below(24) * 15.0, turned, dx, dy);
        cv::Rect const place(
            random.Below(size.width) - turned.cols / 2, random.Below(size.height) - turned.rows / 2, turned.cols,
            turned.rows);
        cv::Rect const common = place & cv::Rect({0, 0}, size);
        turned(common - place.tl()).copyTo(reference(common));
    }
    return reference;
}

std::vector<int> ValuesUpTo(int largest)
{
    std::vector<int> values;
    for (int const value :
         {std::numeric_limits<int>::min(),
          -65533,
          -253,
          -3,
          -1,
          0,
          1,
          2,
          3,
          4,
          5,
          253,
          254,
          255,
          256,
          257,
          259,
          260,
          65534,
          65535,
          65536,
          65537,
          65539,
          65795,
          0x1000003,
          std::numeric_limits<int>::max() - 1,
          std::numeric_limits<int>::max()})
    {
        if (value <= largest) values.push_back(value);
    }
    return values;
}

Prior RandomPrior(Random & random, cv::Size reference, cv::Size moving)
{
    constexpr std::array kRanges{-1.0, 0.0, 0.2, 0.5, 1.0, 1.3, 2.5, 4.0, 7.75, 100.0};
    auto const place = [&](cv::Size const & size) {
        double const x = (random.Unit() * 1.4 - 0.2) * size.width;
        double const y = (random.Unit() * 1.4 - 0.2) * size.height;
        bool const isWhole = random.Chance(0.5);
        return isWhole ? cv::Point_<double>(cv::Point(static_cast<int>(x), static_cast<int>(y)))
                       : cv::Point_<double>(x, y);
    };
    Prior prior;
    prior.ratio = random.Chance(0.2) ? 0.0 : random.Unit() * 1.2;
    prior.refOnRef = place(reference);
    prior.movOnMov = place(moving);
    prior.movOnRef = place(reference);
    prior.translation = {random.Below(9) * 0.5 - 2.0, random.Below(9) * 0.5 - 2.0};
    prior.range = kRanges.at(static_cast<std::size_t>(random.Below(kRanges.size())));
    prior.center = random.Below(24) * 15.0 - 180.0;
    prior.orientationRange = random.Below(5) * 7.5;
    prior.orientationStep = random.Chance(0.5) ? 15.0 : 7.7;
    return prior;
}

} // namespace morvane::tests
