#include "support/WarpingOracle.h"

#include "support/ImageLiterals.h"
#include "support/Snapshot.h"

#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstring>
#include <limits>

namespace morvane::tests
{

namespace
{

/// A number from -limit to limit.
double Around0(Random & random, double limit)
{
    return (random.Unit() * 2.0 - 1.0) * limit;
}

double StrangeNumber(Random & random)
{
    double const infinity = std::numeric_limits<double>::infinity();
    double const nan = std::numeric_limits<double>::quiet_NaN();
    double const most = std::numeric_limits<double>::max();
    double const least = std::numeric_limits<double>::denorm_min();
    std::array const numbers{infinity, -infinity, nan,   most, -most, 1e298, -1e298,       1.01e298, 1e10,
                             -1e10,    1e300,     1e155, -0.0, least, -1e-9, 4294967296.0, 0.5,      2147483648.0};
    return numbers[static_cast<std::size_t>(random.Below(static_cast<int>(numbers.size())))];
}

bool LeadsNowhere(cv::Mat const & matrix)
{
    bool nowhere = false;
    for (int row = 0; row < 2; ++row)
    {
        for (int column = 0; column < 3; ++column)
        {
            double const element = matrix.at<double>(row, column);
            nowhere = nowhere || std::isnan(element) || std::abs(element) > 1e298;
        }
    }
    return nowhere;
}

void Put(cv::Mat & out, int y, int x, uchar const * found, WarpRule rule)
{
    uchar * const pixel = out.ptr(y) + static_cast<std::size_t>(x) * out.elemSize();
    if (rule == WarpRule::FillsEmpty)
    {
        if (ElementAt(out, y, x) == 0.0) std::memcpy(pixel, found, out.elemSize());
        return;
    }
    for (std::size_t byte = 0; byte < out.elemSize(); ++byte)
    {
        pixel[byte] = static_cast<uchar>(pixel[byte] | found[byte]);
    }
}

} // namespace

cv::Mat OracleWarped(cv::Mat const & source, cv::Mat const & out, cv::Mat const & matrix, WarpRule rule)
{
    cv::Mat warped = out.empty() ? cv::Mat::zeros(source.size(), source.type()) : CopyOf(out);
    if (LeadsNowhere(matrix)) return warped;
    for (int y = 0; y < warped.rows; ++y)
    {
        for (int x = 0; x < warped.cols; ++x)
        {
            double const u = x + 0.5;
            double const v = y + 0.5;
            double const sx =
                std::floor(v * matrix.at<double>(0, 1) + u * matrix.at<double>(0, 0) + matrix.at<double>(0, 2));
            double const sy =
                std::floor(v * matrix.at<double>(1, 1) + u * matrix.at<double>(1, 0) + matrix.at<double>(1, 2));
            bool const isInside = sx >= 0.0 && sx < warped.cols && sy >= 0.0 && sy < warped.rows;
            if (!isInside || sx >= source.cols || sy >= source.rows) continue;
            uchar const * const row = source.ptr(static_cast<int>(sy));
            Put(warped, y, x, row + static_cast<std::size_t>(sx) * source.elemSize(), rule);
        }
    }
    return warped;
}

OracleSquare OracleSquareOf(cv::Mat const & image, double angle)
{
    double const squares = std::pow(image.rows, 2.0) + std::pow(image.cols, 2.0);
    int const diagonal = static_cast<int>(std::floor(std::sqrt(squares) + 0.5));
    int const side = diagonal % 2 == 0 ? diagonal + 1 : diagonal;
    int const left = static_cast<int>(std::floor((side - image.cols) * 0.5));
    int const top = static_cast<int>(std::floor((side - image.rows) * 0.5));
    OracleSquare square;
    square.canvas = cv::Mat::zeros(side, side, image.type());
    for (int y = 0; y < image.rows && image.cols > 0; ++y)
    {
        std::size_t const bytes = static_cast<std::size_t>(image.cols) * image.elemSize();
        uchar * const row = square.canvas.ptr(y + top);
        std::memcpy(row + static_cast<std::size_t>(left) * image.elemSize(), image.ptr(y), bytes);
    }
    cv::Point2f const centre(static_cast<float>(side) * 0.5F, static_cast<float>(side) * 0.5F);
    square.matrix = cv::getRotationMatrix2D(centre, angle, 1.0);
    square.dx = square.matrix.at<double>(0, 2) - static_cast<double>(centre.x);
    square.dy = square.matrix.at<double>(1, 2) - static_cast<double>(centre.y);
    return square;
}

namespace
{

void MendParity(std::vector<unsigned int> const & histogram, OracleBins & bins)
{
    int const end = static_cast<int>(histogram.size()) - 1;
    if (histogram.at(static_cast<std::size_t>(bins.first)) >= histogram.at(static_cast<std::size_t>(bins.last)))
    {
        if (bins.first > 0)
        {
            bins.first -= 1;
            bins.parity = ParityStep::HeavyFirstStartsEarlier;
        }
        else if (bins.last < end)
        {
            bins.last += 1;
            bins.parity = ParityStep::HeavyFirstEndsLater;
        }
        else
        {
            bins.last -= 1;
            bins.parity = ParityStep::HeavyFirstEndsEarlier;
        }
    }
    else if (bins.last < end)
    {
        bins.last += 1;
        bins.parity = ParityStep::HeavyLastEndsLater;
    }
    else if (bins.first > 0)
    {
        bins.first -= 1;
        bins.parity = ParityStep::HeavyLastStartsEarlier;
    }
    else
    {
        bins.first += 1;
        bins.parity = ParityStep::HeavyLastStartsLater;
    }
}

} // namespace

OracleBins OracleNarrowed(std::vector<unsigned int> const & histogram, double ratio)
{
    int total = 0;
    for (unsigned const bin : histogram)
    {
        total += static_cast<int>(bin);
    }
    int const keep = static_cast<int>(std::floor(total * ratio));
    int const limit = total - keep;
    OracleBins bins{0, static_cast<int>(histogram.size()) - 1, ParityStep::None};
    while (bins.first != bins.last - 1)
    {
        int const a = static_cast<int>(histogram.at(static_cast<std::size_t>(bins.first)));
        int const b = static_cast<int>(histogram.at(static_cast<std::size_t>(bins.last)));
        if (a > b)
        {
            if (b >= limit) break;
            total -= b;
            if (total - keep < 0) break;
            bins.last -= 1;
        }
        else
        {
            if (a >= limit) break;
            total -= a;
            if (total - keep < 0) break;
            bins.first += 1;
        }
    }
    if ((bins.last - bins.first) % 2 == 0) MendParity(histogram, bins);
    return bins;
}

cv::Mat RandomAffine(Random & random, cv::Size size)
{
    double const longest = std::max({size.width, size.height, 1});
    int const kind = random.Below(8);
    cv::Mat matrix(2, 3, CV_64FC1);
    if (kind < 2)
    {
        cv::Point2f const centre(static_cast<float>(size.width) * 0.5F, static_cast<float>(size.height) * 0.5F);
        double const scale = kind == 0 ? 1.0 : Around0(random, 3.0);
        return cv::getRotationMatrix2D(centre, random.Below(73) * 5.0 - 180.0, scale);
    }
    for (int row = 0; row < 2; ++row)
    {
        for (int column = 0; column < 3; ++column)
        {
            bool const isOffset = column == 2;
            double & element = matrix.at<double>(row, column);
            // Whole and half numbers meet the borders of pixels exactly.
            double const half = (random.Below(9) - 4) * 0.5;
            element = kind < 5 ? half : Around0(random, 2.0);
            if (isOffset) element = kind < 5 ? half + random.Below(5) : Around0(random, longest);
            if (kind == 7 && random.Chance(0.3)) element = StrangeNumber(random);
        }
    }
    return matrix;
}

} // namespace morvane::tests
