// The extremities of zones, and the measures of their longest paths.
#include <morvane/connexity/GeodesicMeasures.h>

#include "support/AllTypes.h"
#include "support/ImageLiterals.h"

#include <gtest/gtest.h>
#include <opencv2/core.hpp>

#include <cmath>

namespace morvane::connexity
{

namespace
{

using tests::Draw;
using tests::Drawing;
using tests::ExpectEqualImages;

/// The number that elongations are made with.
constexpr double kPi = 3.141598;

cv::Mat FirstExtremities(cv::Mat const & image)
{
    cv::Mat out;
    EXPECT_TRUE(GeodesicExtremityOnFlatZonesNoZero(image, out));
    return out;
}

cv::Mat BothExtremities(cv::Mat const & image)
{
    cv::Mat out;
    EXPECT_TRUE(GeodesicExtremitiesOnFlatZonesNoZero(image, out));
    return out;
}

cv::Mat Diameters(cv::Mat const & image)
{
    cv::Mat out;
    EXPECT_TRUE(LabelFlatZonesNoZeroWithGeodesicDiameter(image, out));
    return out;
}

cv::Mat Elongations(cv::Mat const & image)
{
    cv::Mat out;
    EXPECT_TRUE(LabelFlatZonesNoZeroWithGeodesicElongation(image, out));
    return out;
}

cv::Mat Tortuosities(cv::Mat const & image)
{
    cv::Mat out;
    EXPECT_TRUE(LabelFlatZonesNoZeroWithGeodesicTortuosity(image, out));
    return out;
}

/// 255 where something is drawn.
cv::Mat DrawMarks(Drawing const & drawing)
{
    return Draw<uchar>(drawing) * 255;
}

TEST(GeodesicExtremities, AreTheEndsOfEachZone)
{
    cv::Mat const image = Draw<uchar>({
        "111.2.....",
        "..1.2.3333",
        "..1.2.3...",
        "......3..5",
    });
    ExpectEqualImages(
        BothExtremities(image), DrawMarks({
                                    "1...1.....",
                                    ".........1",
                                    "..1.1.....",
                                    "......1..1",
                                }));
    // Each is found on the way back from the end that is found first: of ends as far from the middle, the upper one, else
    // the farther one.
    ExpectEqualImages(
        FirstExtremities(image), DrawMarks({
                                     "1.........",
                                     ".........1",
                                     "....1.....",
                                     ".........1",
                                 }));
}

TEST(GeodesicExtremities, OfEqualValuesThatDoNotTouch_AreThoseOfZonesOfTheirOwn)
{
    ExpectEqualImages(
        BothExtremities(Draw<short>({"777.77", "......", "77777."})), DrawMarks({"1.1.11", "......", "1...1."}));
    // Diagonal neighbours touch; other values do not.
    ExpectEqualImages(
        BothExtremities(Draw<short>({"7..8", ".78.", ".87.", "8..7"})), DrawMarks({"1..1", "....", "....", "1..1"}));
}

TEST(GeodesicExtremities, OfOnePixel_AreThePixel)
{
    ExpectEqualImages(BothExtremities(Draw<float>({"1"})), DrawMarks({"1"}));
    ExpectEqualImages(FirstExtremities(Draw<float>({"1"})), DrawMarks({"1"}));
    ExpectEqualImages(BothExtremities(Draw<int>({"1.2", ".3.", "4.5"})), DrawMarks({"1.1", ".1.", "1.1"}));
}

TEST(GeodesicMeasures, AreInEachPixelOfTheirZone)
{
    // A zone of 5 pixels with a bend, a bar of 3, a square of 4, and a pixel.
    cv::Mat const image = Draw<ushort>({
        "111..22",
        "..1..22",
        "..1....",
        "333...5",
    });
    // With the corner cut off, the bend has 4 pixels on its path. The bar that it touches has another value.
    ExpectEqualImages(Diameters(image), Draw<double>({"444..22", "..4..22", "..4....", "333...1"}));
    cv::Mat1d tortuosities(image.size(), 0.0);
    tortuosities.setTo(4.0 / std::sqrt(8.0), image == 1);
    tortuosities.setTo(3.0 / 2.0, image == 3);
    tortuosities.setTo(1.0, image == 5);
    // A square of 4 pixels is as long as its sides and as its diagonals. The lower right pixel is the nearest to the
    // middle; from there the walk goes to the first pixel, then to the first of the other three, and back.
    tortuosities.setTo(2.0 / 1.0, image == 2);
    ExpectEqualImages(Tortuosities(image), tortuosities);
    cv::Mat1d elongations(image.size(), 0.0);
    elongations.setTo(4.0 * kPi * 4.0 / (5.0 * 4.0), image == 1);
    elongations.setTo(2.0 * kPi * 2.0 / (4.0 * 4.0), image == 2);
    elongations.setTo(3.0 * kPi * 3.0 / (3.0 * 4.0), image == 3);
    elongations.setTo(kPi / 4.0, image == 5);
    ExpectEqualImages(Elongations(image), elongations);
}

TEST(GeodesicMeasures, OfABarOfAnyLength_AreThoseOfItsPixels)
{
    for (int n = 1; n <= 40; ++n)
    {
        SCOPED_TRACE(n);
        cv::Mat image(3, n + 2, CV_8UC1, cv::Scalar(0));
        image.row(1).colRange(1, n + 1).setTo(9);
        cv::Mat const bar = image != 0;
        cv::Mat1d diameter(image.size(), 0.0);
        diameter.setTo(n, bar);
        cv::Mat1d tortuosity(image.size(), 0.0);
        tortuosity.setTo(n == 1 ? 1.0 : static_cast<double>(n) / (n - 1), bar);
        cv::Mat1d elongation(image.size(), 0.0);
        elongation.setTo(n * kPi * n / (n * 4.0), bar);
        cv::Mat1b ends(image.size(), uchar{0});
        ends(1, 1) = 255;
        ends(1, n) = 255;
        ExpectEqualImages(Diameters(image), diameter);
        ExpectEqualImages(Tortuosities(image), tortuosity);
        ExpectEqualImages(Elongations(image), elongation);
        ExpectEqualImages(BothExtremities(image), ends);
        cv::Mat const standing = image.t();
        ExpectEqualImages(Diameters(standing), diameter.t());
        ExpectEqualImages(Tortuosities(standing), tortuosity.t());
        ExpectEqualImages(Elongations(standing), elongation.t());
        ExpectEqualImages(BothExtremities(standing), ends.t());
        // Without a border, too.
        ExpectEqualImages(Diameters(cv::Mat(1, n, CV_32FC1, cv::Scalar(2))), cv::Mat(1, n, CV_64FC1, cv::Scalar(n)));
        ExpectEqualImages(Diameters(cv::Mat(n, 1, CV_32SC1, cv::Scalar(2))), cv::Mat(n, 1, CV_64FC1, cv::Scalar(n)));
    }
}

TEST(GeodesicMeasures, OfADiagonalBar_CountItsPixels)
{
    for (int n = 2; n <= 12; ++n)
    {
        cv::Mat const image = cv::Mat::eye(n, n, CV_16SC1);
        cv::Mat flipped;
        cv::flip(image, flipped, 1);
        for (cv::Mat const & bar : {image, flipped})
        {
            cv::Mat1d diameter(n, n, 0.0);
            diameter.setTo(n, bar != 0);
            ExpectEqualImages(Diameters(bar), diameter);
            cv::Mat1d tortuosity(n, n, 0.0);
            tortuosity.setTo(n / std::sqrt(2.0 * (n - 1) * (n - 1)), bar != 0);
            ExpectEqualImages(Tortuosities(bar), tortuosity);
        }
    }
}

TEST(GeodesicMeasures, OfARingOfAClosedPath_AreThoseOfHalfOfIt)
{
    cv::Mat const image = Draw<double>({".333.", "3...3", "3...3", "3...3", ".333."});
    // From the pixel above the middle, of 12 in the ring, the opposite one is 7 pixels away, and 4 rows below.
    cv::Mat const ring = image != 0;
    cv::Mat1d tortuosity(image.size(), 0.0);
    tortuosity.setTo(7.0 / 4.0, ring);
    ExpectEqualImages(Tortuosities(image), tortuosity);
    cv::Mat1d elongation(image.size(), 0.0);
    elongation.setTo(7.0 * kPi * 7.0 / (12.0 * 4.0), ring);
    ExpectEqualImages(Elongations(image), elongation);
    ExpectEqualImages(BothExtremities(image), DrawMarks({"..1..", ".....", ".....", ".....", "..1.."}));
    ExpectEqualImages(FirstExtremities(image), DrawMarks({"..1..", ".....", ".....", ".....", "....."}));
}

TEST(GeodesicMeasures, WithoutZones_AreZeroEverywhere)
{
    for (int const depth : tests::kDepths)
    {
        for (int const channels : tests::kChannelCounts)
        {
            cv::Mat const image(4, 7, CV_MAKETYPE(depth, channels), cv::Scalar::all(0));
            cv::Mat const none(4, 7, CV_64FC1, cv::Scalar(0));
            ExpectEqualImages(Diameters(image), none);
            ExpectEqualImages(Elongations(image), none);
            ExpectEqualImages(Tortuosities(image), none);
            ExpectEqualImages(BothExtremities(image), cv::Mat(4, 7, CV_8UC1, cv::Scalar(0)));
            ExpectEqualImages(FirstExtremities(image), cv::Mat(4, 7, CV_8UC1, cv::Scalar(0)));
        }
    }
}

} // namespace

} // namespace morvane::connexity
