#include "support/FillingOracle.h"

#include "support/CompareOracle.h"
#include "support/ImageLiterals.h"
#include "support/MeasureOracle.h"
#include "support/Oracles.h"
#include "support/Snapshot.h"

#include <morvane/algorithm/Filling.h>

#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <cstdint>
#include <sstream>
#include <vector>

namespace morvane::tests
{

namespace
{

/// What stands for the pixels outside: the lowest number of a type where the highest is sought, and the other way round.
double Outside(int depth, bool seeksHighest)
{
    switch (depth)
    {
    case CV_8U:
        return seeksHighest ? 0.0 : 255.0;
    case CV_16U:
        return seeksHighest ? 0.0 : 65535.0;
    case CV_16S:
        return seeksHighest ? -32768.0 : 32767.0;
    case CV_32F:
        return seeksHighest ? -static_cast<double>(FLT_MAX) : static_cast<double>(FLT_MAX);
    default:
        return seeksHighest ? -DBL_MAX : DBL_MAX;
    }
}

/// The highest or the lowest value in a square around each pixel; squares of an even size reach further up and left.
cv::Mat Extremes(cv::Mat const & image, int size, bool seeksHighest)
{
    cv::Mat result = CopyOf(image);
    cv::Rect const inside(0, 0, image.cols, image.rows);
    for (int number = 0; number < image.rows * image.cols * image.channels(); ++number)
    {
        int const channel = number % image.channels();
        cv::Point const pixel(number / image.channels() % image.cols, number / image.channels() / image.cols);
        cv::Rect const square(pixel.x - size / 2, pixel.y - size / 2, size, size);
        cv::Rect const window = square & inside;
        double extreme =
            window == square ? ElementAt(image, pixel.y, pixel.x, channel) : Outside(image.depth(), seeksHighest);
        for (int y = window.y; y < window.br().y; ++y)
        {
            for (int x = window.x; x < window.br().x; ++x)
            {
                double const value = ElementAt(image, y, x, channel);
                extreme = seeksHighest ? std::max(extreme, value) : std::min(extreme, value);
            }
        }
        SetElement(result, pixel.y, pixel.x, channel, extreme);
    }
    return result;
}

/// The largest number of an image; NaN is none.
double Maximum(cv::Mat const & image)
{
    double maximum = -HUGE_VAL;
    for (int number = 0; number < image.rows * image.cols; ++number)
    {
        double const value = ElementAt(image, number / image.cols, number % image.cols);
        if (value > maximum) maximum = value;
    }
    return maximum;
}

/// The element number @p x of row @p y, whatever the channels.
double RowElement(cv::Mat const & image, int y, int x)
{
    return ElementAt(image, y, x / image.channels(), x % image.channels());
}

void SetRowElement(cv::Mat & image, int y, int x, double value)
{
    SetElement(image, y, x / image.channels(), x % image.channels(), value);
}

double SumInType(double sum, double value, int depth)
{
    if (depth == CV_64F) return sum + value;
    if (depth == CV_32F) return static_cast<double>(static_cast<float>(sum) + static_cast<float>(value));
    return OracleLowBits(static_cast<std::int64_t>(sum) + static_cast<std::int64_t>(value), CV_32S);
}

double QuotientInType(double sum, int count, int depth)
{
    if (depth == CV_64F) return sum / count;
    if (depth == CV_32F) return static_cast<double>(static_cast<float>(sum) / static_cast<float>(count));
    std::int64_t const towardsZero = static_cast<std::int64_t>(sum) / count;
    return static_cast<double>(towardsZero);
}

double MeanOfNeighbours(cv::Mat const & image, cv::Mat const & mask, cv::Point pixel, int connexity)
{
    double sum = 0.0;
    int count = 0;
    for (cv::Point const & offset : OracleOffsets(connexity))
    {
        int const y = std::clamp(pixel.y + offset.y, 0, image.rows - 1);
        int x = pixel.x + offset.x;
        bool const wraps = OracleWraps(connexity);
        if (x < 0)
        {
            x = wraps ? image.cols - 1 : 0;
        }
        else if (x >= image.cols)
        {
            x = wraps ? 0 : image.cols - 1;
        }
        if (RowElement(mask, y, x) == 0.0) continue;
        sum = SumInType(sum, ElementAt(image, y, x), image.depth());
        ++count;
    }
    return count == 0 ? 0.0 : QuotientInType(sum, count, image.depth());
}

/// The neighbours in the order of their offsets.
std::vector<double> Neighbours(cv::Mat const & image, cv::Point pixel, int connexity)
{
    std::vector<double> values;
    for (cv::Point const & offset : OracleOffsets(connexity))
    {
        int const y = std::clamp(pixel.y + offset.y, 0, image.rows - 1);
        int x = pixel.x + offset.x;
        if (!OracleWraps(connexity))
        {
            x = std::clamp(x, 0, image.cols - 1);
        }
        else if (x < 0)
        {
            x += image.cols;
        }
        else if (x >= image.cols)
        {
            x -= image.cols;
        }
        bool const outside = x < 0 || x >= image.cols;
        values.push_back(outside ? 0.0 : ElementAt(image, y, x));
    }
    return values;
}

/// Writes what is not 0 over the places from the first on.
void CloseUp(std::vector<double> & values)
{
    std::size_t place = 0;
    for (std::size_t index = 0; index < values.size(); ++index)
    {
        if (values[index] == 0.0) continue;
        values[place] = values[index];
        ++place;
    }
}

double OneAboveTheMiddle(std::vector<double> values)
{
    std::stable_sort(values.begin(), values.end(), [](double one, double other) {
        if (std::isnan(one)) return false;
        return std::isnan(other) || one < other;
    });
    return values[values.size() / 2 + 1];
}

/// The region of measured pixels to which each pixel that is empty or not above 0 is nearest.
cv::Mat NearestRegions(cv::Mat const & closed, int size)
{
    cv::Mat1b empty(closed.rows, closed.cols);
    for (int number = 0; number < closed.rows * closed.cols; ++number)
    {
        int const y = number / closed.cols;
        int const x = number % closed.cols;
        empty(y, x) = ElementAt(closed, y, x) == 0.0 ? 255 : 0;
    }
    cv::Mat distances;
    cv::Mat labels;
    cv::distanceTransform(empty, distances, labels, cv::DIST_L2, size, cv::DIST_LABEL_CCOMP);
    for (int number = 0; number < closed.rows * closed.cols; ++number)
    {
        int const y = number / closed.cols;
        int const x = number % closed.cols;
        if (ElementAt(closed, y, x) > 0.0) labels.at<int>(y, x) = 0;
    }
    return labels;
}

bool HasNaN(cv::Mat const & image)
{
    for (int number = 0; number < image.rows * image.cols; ++number)
    {
        if (std::isnan(ElementAt(image, number / image.cols, number % image.cols))) return true;
    }
    return false;
}

/// The extreme of the dilated image over a part, from the start value of measure tables.
double ExtremeOf(HoleFill fill, cv::Mat const & dilated, std::vector<cv::Point> part)
{
    std::sort(part.begin(), part.end(), [](cv::Point one, cv::Point other) {
        return one.y != other.y ? one.y < other.y : one.x < other.x;
    });
    bool const single = dilated.depth() == CV_32F;
    double const start = fill == HoleFill::Max ? kMaxStart : kMinStart;
    double extreme = single ? static_cast<double>(static_cast<float>(start)) : start;
    for (cv::Point const pixel : part)
    {
        double const value = ElementAt(dilated, pixel.y, pixel.x);
        bool const stays = fill == HoleFill::Max ? extreme > value : extreme < value;
        if (!stays) extreme = value;
    }
    return extreme;
}

std::string ImageText(cv::Mat const & image, int size)
{
    std::ostringstream text;
    text << cv::typeToString(image.type()) << ", rows " << image.rows << ", columns " << image.cols << ", size "
         << size;
    return text.str();
}

} // namespace

bool CallSquareFill(SquareFill fill, cv::Mat const & image, cv::Mat & out, int size)
{
    switch (fill)
    {
    case SquareFill::Closing:
        return algorithm::FillImageWithClosing(image, out, size);
    case SquareFill::Dilation:
        return algorithm::FillImageWithDilation(image, out, size);
    case SquareFill::Erosion:
        return algorithm::FillImageWithErosion(image, out, size);
    default:
        return algorithm::FillImageWithOpening(image, out, size);
    }
}

cv::Mat OracleFiltered(SquareFill fill, cv::Mat const & image, int size)
{
    switch (fill)
    {
    case SquareFill::Closing:
        return Extremes(Extremes(image, size, true), size, false);
    case SquareFill::Dilation:
        return Extremes(image, size, true);
    case SquareFill::Erosion:
        return Extremes(image, size, false);
    default:
        return Extremes(Extremes(image, size, false), size, true);
    }
}

cv::Mat FilteredByOpenCV(SquareFill fill, cv::Mat const & image, int size)
{
    constexpr std::array operations{cv::MORPH_CLOSE, cv::MORPH_DILATE, cv::MORPH_ERODE, cv::MORPH_OPEN};
    cv::Mat const square = cv::getStructuringElement(cv::MORPH_RECT, cv::Size(size, size));
    cv::Mat filtered;
    cv::morphologyEx(CopyOf(image), filtered, operations[static_cast<std::size_t>(fill)], square);
    return filtered;
}

cv::Mat OracleSquareFill(SquareFill fill, cv::Mat const & image, cv::Mat const & filtered)
{
    bool const fillsZeros = fill == SquareFill::Closing || fill == SquareFill::Dilation;
    double const emptiness = fillsZeros ? 0.0 : Maximum(image);
    return OracleCompare({image, 0, emptiness, filtered, image}, image);
}

cv::Mat OracleMeanFill(cv::Mat const & image, cv::Mat const & mask, int connexity, cv::Mat const & before)
{
    cv::Mat out = CopyOf(before);
    for (int y = 0; y < image.rows; ++y)
    {
        for (int x = 0; x < image.cols; ++x)
        {
            bool const holds = RowElement(mask, y, x) != 0.0;
            SetRowElement(out, y, x, holds ? ElementAt(image, y, x) : MeanOfNeighbours(image, mask, {x, y}, connexity));
        }
    }
    return out;
}

cv::Mat OracleMedianFill(cv::Mat const & image, int connexity, bool closeUp, cv::Mat const & before)
{
    cv::Mat out = CopyOf(before);
    for (int y = 0; y < image.rows; ++y)
    {
        for (int x = 0; x < image.cols; ++x)
        {
            double value = ElementAt(image, y, x);
            if (value == 0.0)
            {
                std::vector<double> neighbours = Neighbours(image, {x, y}, connexity);
                if (closeUp) CloseUp(neighbours);
                value = OneAboveTheMiddle(neighbours);
            }
            SetRowElement(out, y, x, value);
        }
    }
    return out;
}

bool CallHoleFill(HoleFill fill, cv::Mat const & image, cv::Mat & out, int size)
{
    return fill == HoleFill::Max ? algorithm::FillHolesInterpolationWithMax(image, out, size)
                                 : algorithm::FillHolesInterpolationWithMin(image, out, size);
}

cv::Mat OracleHoleFill(HoleFill fill, cv::Mat const & image, int size)
{
    auto const filtered = [&](SquareFill filter, cv::Mat const & source) {
        return HasNaN(source) ? FilteredByOpenCV(filter, source, size) : OracleFiltered(filter, source, size);
    };
    cv::Mat const closed = OracleSquareFill(SquareFill::Closing, image, filtered(SquareFill::Closing, image));
    cv::Mat dilated = filtered(SquareFill::Dilation, closed);
    if (fill == HoleFill::Min)
    {
        dilated = OracleCompare({dilated, 0, 0.0, cv::Scalar(Maximum(closed) + 1.0), dilated}, dilated);
    }
    cv::Mat const regions = NearestRegions(closed, size);
    OracleCondition sameRegion;
    sameRegion.isConnected = [&](cv::Point from, cv::Point to, cv::Point) {
        return regions.at<int>(from) == regions.at<int>(to);
    };
    cv::Mat out = closed.clone();
    for (std::vector<cv::Point> const & part :
         OracleZones(OracleTakesPart(regions), connexity::eConnexity8, sameRegion))
    {
        double const extreme = ExtremeOf(fill, dilated, part);
        for (cv::Point const pixel : part)
        {
            if (ElementAt(closed, pixel.y, pixel.x) == 0.0) SetElement(out, pixel.y, pixel.x, 0, extreme);
        }
    }
    return out;
}

cv::Mat Plainly(cv::Mat const & image)
{
    cv::Mat plain = CopyOf(image);
    for (int y = 0; y < plain.rows; ++y)
    {
        for (int element = 0; element < plain.cols * plain.channels(); ++element)
        {
            double const value = RowElement(plain, y, element);
            if (std::isnan(value)) SetRowElement(plain, y, element, 3.0);
            if (value == 0.0) SetRowElement(plain, y, element, 0.0);
        }
    }
    return plain;
}

cv::Mat ImageToFill(Random & random, cv::Size size, int type)
{
    Mixture const mixture{0.9 * random.Unit(), 0.3 * random.Unit(), 2 + random.Below(50)};
    cv::Mat image = Plainly(RandomImage(random, size, type, mixture));
    if (image.channels() > 1 || image.empty()) return image;
    double const maximum = Maximum(image);
    for (int y = 0; y < size.height; ++y)
    {
        for (int x = 0; x < size.width; ++x)
        {
            if (random.Chance(0.15)) SetElement(image, y, x, 0, maximum);
        }
    }
    return image;
}

std::string FillCase(SquareFill fill, cv::Mat const & image, int size)
{
    constexpr std::array names{"closing of ", "dilation of ", "erosion of ", "opening of "};
    return names[static_cast<std::size_t>(fill)] + ImageText(image, size);
}

std::string FillCase(HoleFill fill, cv::Mat const & image, int size)
{
    return (fill == HoleFill::Max ? "max of " : "min of ") + ImageText(image, size);
}

} // namespace morvane::tests
