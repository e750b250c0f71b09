#include "support/ScoreOracle.h"

#include "support/ImageLiterals.h"
#include "support/Snapshot.h"

#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <vector>

namespace morvane::tests
{

namespace
{

ushort WordOf(cv::Mat const & image, int number)
{
    return static_cast<ushort>(ElementAt(image, number / image.cols, number % image.cols));
}

float FloatOf(cv::Mat const & image, int number)
{
    return static_cast<float>(ElementAt(image, number / image.cols, number % image.cols));
}

/// What one pair of equal masks adds.
double OccupancyOfMasks(unsigned a, unsigned b)
{
    unsigned const whole = a;
    int both = 0;
    int one = 0;
    int neither = 0;
    for (; a != 0; a >>= 1U, b >>= 1U)
    {
        unsigned const bits = (a & 1U) + (b & 1U);
        both += bits == 2 ? 1 : 0;
        one += bits == 1 ? 1 : 0;
        neither += bits == 0 ? 1 : 0;
    }
    bool const isAlike = (static_cast<double>(whole) - one) / whole > 0.9;
    return isAlike ? 30.0 * (both + one) + neither : 0.0;
}

/// 255 where both images are above 0.
cv::Mat BothAbove0(ImagePair const & pair)
{
    cv::Mat mask = cv::Mat::zeros(pair.b.size(), CV_8U);
    for (int y = 0; y < mask.rows; ++y)
    {
        for (int x = 0; x < mask.cols; ++x)
        {
            if (ElementAt(pair.a, y, x) > 0.0 && ElementAt(pair.b, y, x) > 0.0) mask.at<uchar>(y, x) = 255;
        }
    }
    return mask;
}

/// The difference of both images, none below 0 in integers; 0 outside of the mask.
cv::Mat MaskedDifference(ImagePair const & pair, cv::Mat const & mask)
{
    cv::Mat difference = cv::Mat::zeros(pair.b.size(), pair.b.type());
    for (int y = 0; y < mask.rows; ++y)
    {
        for (int x = 0; x < mask.cols; ++x)
        {
            if (mask.at<uchar>(y, x) == 0) continue;
            double const exact = ElementAt(pair.a, y, x) - ElementAt(pair.b, y, x);
            if (difference.depth() == CV_32F) difference.at<float>(y, x) = static_cast<float>(exact);
            if (difference.depth() != CV_32F) SetElement(difference, y, x, 0, std::max(exact, 0.0));
        }
    }
    return difference;
}

cv::Mat OnTop(cv::Mat const & top, cv::Mat const & bottom)
{
    cv::Mat stack = cv::Mat::zeros(top.rows + bottom.rows, top.cols, top.type());
    for (int y = 0; y < stack.rows; ++y)
    {
        cv::Mat const & half = y < top.rows ? top : bottom;
        half.row(y < top.rows ? y : y - top.rows).copyTo(stack.row(y));
    }
    return stack;
}

} // namespace

int OracleHamming(unsigned a, unsigned b)
{
    int count = 0;
    for (unsigned bit = 0; bit < 16; ++bit)
    {
        count += ((a >> bit) & 1U) != ((b >> bit) & 1U) ? 1 : 0;
    }
    return count;
}

int OracleOccupancy(unsigned a, unsigned b)
{
    int score = 0;
    for (; a != 0 || b != 0; a >>= 1U, b >>= 1U)
    {
        bool const inA = (a & 1U) != 0;
        bool const inB = (b & 1U) != 0;
        if (inA && inB) ++score;
        if (inA != inB) --score;
    }
    return score;
}

OracleWordScores OracleScoresOfWords(cv::Mat const & a, cv::Mat const & b)
{
    OracleWordScores scores;
    for (int x = 0; x < a.cols; ++x)
    {
        for (int y = 0; y < a.rows; ++y)
        {
            int const number = y * a.cols + x;
            int const p = WordOf(a, number);
            int const q = WordOf(b, number);
            if (p == 0 || q == 0) continue;
            scores.haming += 16 - OracleHamming(static_cast<unsigned>(p), static_cast<unsigned>(q));
            scores.occupancy += OracleOccupancy(static_cast<unsigned>(p), static_cast<unsigned>(q));
            if (p == q) scores.chain += 16.0 - std::abs(p - q);
        }
    }
    return scores;
}

OracleMaskScores OracleScoresOfMasks(cv::Mat const & m1, cv::Mat const & m2)
{
    OracleMaskScores scores;
    int const count = static_cast<int>(std::min(m1.total(), m2.total()));
    for (int number = 0; number < count; ++number)
    {
        // The lowest byte comes first.
        uchar const a = PixelNumber(m1, number)[0];
        uchar const b = PixelNumber(m2, number)[0];
        if (a != b || a < 3) continue;
        scores.elevation += 16.0 - std::abs(a - b);
        scores.occupancy += OccupancyOfMasks(a, b);
    }
    return scores;
}

OracleShift OracleMeanShift(cv::Mat const & a, cv::Mat const & b, double offsetA, double offsetB)
{
    double sum = 0.0;
    int count = 0;
    for (int x = 0; x < a.cols; ++x)
    {
        for (int y = 0; y < a.rows; ++y)
        {
            double const p = static_cast<double>(FloatOf(a, y * a.cols + x));
            double const q = static_cast<double>(FloatOf(b, y * a.cols + x));
            if (p == 0.0 || q == 0.0) continue;
            sum += (p + offsetA) - (q + offsetB);
            ++count;
        }
    }
    if (count == 0) return {};
    return {sum / count, true};
}

double OraclePeakOfDifferences(ImagePair const & first, ImagePair const & second)
{
    cv::Mat const mask1 = BothAbove0(first);
    cv::Mat const difference1 = MaskedDifference(first, mask1);
    cv::Mat const difference2 = MaskedDifference(second, BothAbove0(second));
    cv::Mat const differences = OnTop(difference1, difference2);
    cv::Mat const mask = OnTop(mask1, mask1);
    int const full = cv::countNonZero(mask);
    if (full < 10) return 0.0;
    double low = 0.0;
    double high = 0.0;
    cv::minMaxLoc(difference1, &low, &high, nullptr, nullptr, mask1);
    if (high == low) return low;
    int const bins = static_cast<int>(std::ceil((high - low) / 50.0));
    std::vector<float> const limits{static_cast<float>(low), static_cast<float>(high)};
    cv::Mat histogram;
    cv::calcHist(std::vector<cv::Mat>{differences}, {0}, mask, histogram, {bins}, limits, false);
    int peak = 0;
    for (int bin = 1; bin < bins; ++bin)
    {
        if (histogram.at<float>(bin) > histogram.at<float>(peak)) peak = bin;
    }
    return peak * 50.0 + low;
}

} // namespace morvane::tests
