// The seeded wand whose steps are bounded in two images at once.
#include <morvane/algorithm/RegionGrowing.h>

#include "support/AllTypes.h"
#include "support/ImageLiterals.h"
#include "support/LabelChecks.h"
#include "support/Rows.h"

#include <gtest/gtest.h>

#include <limits>
#include <vector>

namespace morvane::algorithm
{

namespace
{

using connexity::eConnexity4;
using connexity::eConnexity4Wrapped;
using tests::Draw;
using tests::ExpectDrawn;
using tests::Row;
using tests::Shape;

using Seeds = std::vector<cv::Point>;

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();

cv::Mat WandOfTwo(
    cv::Mat const & image1, cv::Mat const & image2, int connexity, Seeds const & seeds, float delta1, float delta2)
{
    return tests::Written(image1.size(), CV_32SC1, [&](cv::Mat & out) {
        return MagicWand(image1, image2, Shape(connexity), seeds, delta1, delta2, out);
    });
}

TEST(SeededWandOfTwo, Step_MustBeSmallInBothImages)
{
    cv::Mat const image1 = Draw<uchar>({
        "11115",
        "99111",
        "11119",
    });
    cv::Mat const image2 = Draw<float>({
        "33333",
        "333z3",
        "33333",
    });
    ExpectDrawn(WandOfTwo(image1, image2, eConnexity4, {{0, 0}}, 0.0F, 0.0F), {"1111.", "..1..", "1111."});
    ExpectDrawn(WandOfTwo(image1, image2, eConnexity4, {{0, 0}}, 4.0F, 0.0F), {"11111", "..1.1", "1111."});
    ExpectDrawn(WandOfTwo(image1, image2, eConnexity4, {{0, 0}, {3, 1}}, 0.0F, 31.0F), {"1111.", "..12.", "1111."});
    ExpectDrawn(WandOfTwo(image1, image2, eConnexity4, {{0, 0}, {3, 1}}, 0.0F, 32.0F), {"1111.", "..111", "1111."});
}

TEST(SeededWandOfTwo, StepsNotRegions_AreCompared)
{
    // Both ends lie in one region of each image, on different ways: no chain is connected in both.
    cv::Mat const image1 = Draw<uchar>({
        "111",
        "191",
        "199",
    });
    cv::Mat const image2 = Draw<uchar>({
        "199",
        "191",
        "111",
    });
    ExpectDrawn(WandOfTwo(image1, image2, eConnexity4, {{0, 0}, {2, 1}}, 0.0F, 0.0F), {"1..", "1.2", "1.."});
}

TEST(SeededWandOfTwo, Deltas_AreConvertedByTheDepthOfTheirImage)
{
    cv::Mat const bytes = Row<uchar>({10, 54, 99});
    cv::Mat const words = Row<ushort>({0, 300, 601});
    ExpectDrawn(WandOfTwo(bytes, words, eConnexity4, {{0, 0}}, 300.0F, 300.0F), {"11."});
    ExpectDrawn(WandOfTwo(words, bytes, eConnexity4, {{0, 0}}, 300.0F, 300.0F), {"11."});
    ExpectDrawn(WandOfTwo(words, bytes, eConnexity4, {{0, 0}}, 301.0F, 300.0F), {"11."});
    ExpectDrawn(WandOfTwo(words, bytes, eConnexity4, {{0, 0}}, 301.0F, 301.0F), {"111"});
    ExpectDrawn(WandOfTwo(bytes, words, eConnexity4, {{0, 0}}, 301.0F, 299.0F), {"1.."});
    cv::Mat const floats = Row<float>({0.0F, 0.5F, 1.0F});
    ExpectDrawn(WandOfTwo(bytes, floats, eConnexity4, {{0, 0}}, 255.0F, 0.5F), {"111"});
    ExpectDrawn(WandOfTwo(bytes, floats, eConnexity4, {{0, 0}}, 255.0F, 0.4F), {"1.."});
}

TEST(SeededWandOfTwo, WiderSecondImage_IsReadAsFarAsTheFirstReaches)
{
    cv::Mat const image1 = Draw<uchar>({
        "111",
        "111",
    });
    cv::Mat const image2 = Draw<short>({
        "55577",
        "55755",
    });
    ExpectDrawn(WandOfTwo(image1, image2, eConnexity4, {{0, 0}}, 0.0F, 0.0F), {"111", "11."});
    // The wrap is that of the first image: column 2 lies beside column 0.
    cv::Mat const split = Draw<uchar>({
        "595",
        "999",
    });
    ExpectDrawn(WandOfTwo(split, image2, eConnexity4Wrapped, {{0, 0}}, 0.0F, 0.0F), {"1.1", "..."});
}

TEST(SeededWandOfTwo, NarrowerSecondImage_Holds0BeyondItsEnd)
{
    cv::Mat const image1 = Draw<uchar>({
        "11111",
        "11111",
    });
    cv::Mat const image2 = Draw<double>({
        "551",
        "558",
    });
    ExpectDrawn(WandOfTwo(image1, image2, eConnexity4, {{4, 1}, {0, 0}, {2, 1}}, 0.0F, 1.0F), {"22111", "22311"});
    cv::Mat const none(2, 0, CV_32FC1);
    ExpectDrawn(WandOfTwo(image1, none, eConnexity4, {{4, 1}}, 0.0F, 0.0F), {"11111", "11111"});
}

TEST(SeededWandOfTwo, NarrowerViewAsSecondImage_IsNotReadBeyondItsEnd)
{
    // What lies beside the view must not be seen.
    cv::Mat const parent = Draw<uchar>({
        "5559999",
        "5559999",
    });
    cv::Mat const image1 = Draw<uchar>({
        "11111",
        "11111",
    });
    cv::Mat const view = parent.colRange(0, 3);
    ExpectDrawn(WandOfTwo(image1, view, eConnexity4, {{0, 0}, {4, 0}}, 0.0F, 4.0F), {"11122", "11122"});
    ExpectDrawn(WandOfTwo(image1, view, eConnexity4, {{0, 0}}, 0.0F, 5.0F), {"11111", "11111"});
}

TEST(SeededWandOfTwo, NaNInEitherImage_IsNotPassed)
{
    cv::Mat const even = Draw<float>({"1111"});
    cv::Mat broken = even.clone();
    broken.at<float>(0, 2) = kNaN;
    ExpectDrawn(WandOfTwo(even, broken, eConnexity4, {{0, 0}, {3, 0}, {2, 0}}, 9.0F, 9.0F), {"1132"});
    ExpectDrawn(WandOfTwo(broken, even, eConnexity4, {{0, 0}, {3, 0}, {2, 0}}, 9.0F, 9.0F), {"1132"});
}

} // namespace

} // namespace morvane::algorithm
