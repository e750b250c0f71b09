// The output objects of a walk: label writers and the counter.
#include <morvane/connexity/ConnectedZoneScan.h>

#include "support/ImageLiterals.h"
#include "support/RandomImages.h"
#include "support/Walks.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <limits>

namespace morvane::connexity
{

namespace
{

using tests::Draw;
using tests::ExpectDrawn;

/// Walks the equal-valued zones that are not empty and hands them to @p output.
template <class Output>
void WalkFlatZones(cv::Mat const & image, Output & output)
{
    EqualConnected<uchar> condition;
    Zone zone;
    ConnectedZoneScan<uchar, Output, EqualConnected<uchar>, NoZero> scan(image, eConnexity4, condition, output, zone);
    EXPECT_TRUE(scan.Run());
}

template <class Out>
cv::Mat AreaLabels(cv::Mat const & image, std::size_t bound)
{
    cv::Mat labels(image.size(), cv::DataType<Out>::type, cv::Scalar(0));
    ZoneAreaLabelWriter<Out> writer{&labels, &bound};
    WalkFlatZones(image, writer);
    return labels;
}

TEST(ZoneLabelWriter, StampsZonesFromOneAndNothingElse)
{
    cv::Mat const image = Draw<uchar>({"33.7", "3.77", "..3."});
    cv::Mat labels = tests::DrawLabels({"....", "....", "..Z."});
    labels.at<int>(0, 2) = -5;
    ZoneLabelWriter<int> writer{&labels};
    WalkFlatZones(image, writer);
    EXPECT_EQ(labels.at<int>(0, 2), -5) << "an empty pixel is not written";
    labels.at<int>(0, 2) = 0;
    ExpectDrawn(labels, {"11.2", "1.22", "..3."});
    EXPECT_EQ(writer.label, 3);
}

TEST(ZoneLabelWriter, GoesOnFromItsLabelAndWraps)
{
    cv::Mat labels(1, 5, CV_8UC1, cv::Scalar(77));
    ZoneLabelWriter<uchar> writer{&labels, 254};
    WalkFlatZones(Draw<uchar>({"1.2.3"}), writer);
    cv::Mat const expected = (cv::Mat_<uchar>(1, 5) << 255, 77, 0, 77, 1);
    tests::ExpectEqualImages(labels, expected);

    cv::Mat wide(1, 5, CV_16UC1, cv::Scalar(77));
    ZoneLabelWriter<ushort> wideWriter{&wide, 65534};
    WalkFlatZones(Draw<uchar>({"1.2.3"}), wideWriter);
    cv::Mat const wideExpected = (cv::Mat_<ushort>(1, 5) << 65535, 77, 0, 77, 1);
    tests::ExpectEqualImages(wide, wideExpected);
}

TEST(ZoneLabelWriter, WrapsThirtyTwoBitsWithoutUndefinedBehaviour)
{
    cv::Mat labels(1, 1, CV_32SC1, cv::Scalar(0));
    ZoneLabelWriter<int> writer{&labels, std::numeric_limits<int>::max()};
    WalkFlatZones(Draw<uchar>({"1"}), writer);
    EXPECT_EQ(labels.at<int>(0, 0), std::numeric_limits<int>::min());
}

TEST(ZoneLabelWriter, StoresTheBitPatternInSignedLabels)
{
    cv::Mat labels(1, 1, CV_16SC1, cv::Scalar(0));
    ZoneLabelWriter<ushort> writer{&labels, 39999};
    WalkFlatZones(Draw<uchar>({"1"}), writer);
    EXPECT_EQ(labels.at<short>(0, 0), -25536);
}

TEST(ZoneLabelWriter, WritesIntoAViewOnly)
{
    tests::FramedImage framed(cv::Mat(2, 3, CV_16UC1, cv::Scalar(0)));
    ZoneLabelWriter<ushort> writer{&framed.View()};
    WalkFlatZones(Draw<uchar>({"1.2", "1.2"}), writer);
    ExpectDrawn(framed.View(), {"1.2", "1.2"});
    EXPECT_TRUE(framed.IsFrameUntouched());
}

TEST(ZoneLabelWriter, WritesNothingBeforeTheZoneIsFinished)
{
    cv::Mat const image = Draw<uchar>({"11.1", "11.1"});
    cv::Mat labels(image.size(), CV_32SC1, cv::Scalar(0));
    int early = 0;
    tests::OracleCondition rule;
    rule.add = [&](cv::Point point) {
        early += labels.at<int>(point) != 0 ? 1 : 0;
    };
    rule.isConnected = [&](cv::Point from, cv::Point, cv::Point seed) {
        early += labels.at<int>(from) != 0 || labels.at<int>(seed) != 0 ? 1 : 0;
        return true;
    };
    tests::PositionCondition<uchar> condition(image, rule);
    ZoneLabelWriter<int> writer{&labels};
    Zone zone;
    ConnectedZoneScan<uchar, ZoneLabelWriter<int>, AlwaysConnected<uchar>, NoZero> scan(
        image, eConnexity8, condition, writer, zone);
    scan.Run();
    EXPECT_EQ(early, 0);
    ExpectDrawn(labels, {"11.2", "11.2"});
}

TEST(ZoneAreaLabelWriter, KeepsZonesOfStrictlyMorePixelsAndNumbersThemDensely)
{
    cv::Mat const image = Draw<uchar>({"4444.1", ".....1", "333.22", "55555."});
    ExpectDrawn(AreaLabels<int>(image, 0), {"1111.2", ".....2", "333.44", "55555."});
    ExpectDrawn(AreaLabels<int>(image, 1), {"1111.2", ".....2", "333.44", "55555."});
    ExpectDrawn(AreaLabels<int>(image, 2), {"1111..", "......", "222...", "33333."});
    ExpectDrawn(AreaLabels<int>(image, 3), {"1111..", "......", "......", "22222."});
    ExpectDrawn(AreaLabels<int>(image, 4), {"......", "......", "......", "11111."});
    ExpectDrawn(AreaLabels<int>(image, 5), {"......", "......", "......", "......"});
    ExpectDrawn(
        AreaLabels<int>(image, std::numeric_limits<std::size_t>::max()), {"......", "......", "......", "......"});
}

TEST(ZoneAreaLabelWriter, DropsASmallZoneBeforeALargeOneWithoutUsingALabel)
{
    ExpectDrawn(AreaLabels<ushort>(Draw<uchar>({"333.4444"}), 3), {"....1111"});
    ExpectDrawn(AreaLabels<uchar>(Draw<uchar>({"333.4444"}), 3), {"....1111"});
}

TEST(ZoneAreaLabelWriter, WrapsLikeTheLabelWriter)
{
    std::size_t const bound = 1;
    cv::Mat labels(1, 8, CV_8UC1, cv::Scalar(77));
    ZoneAreaLabelWriter<uchar> writer{&labels, &bound, 255};
    WalkFlatZones(Draw<uchar>({"11.2.333"}), writer);
    cv::Mat const expected = (cv::Mat_<uchar>(1, 8) << 0, 0, 77, 77, 77, 1, 1, 1);
    tests::ExpectEqualImages(labels, expected);
}

TEST(ZoneAreaLabelWriter, DroppedPixelsStayTaken)
{
    // The upper 2 can't be entered, so it seeds a zone below the dropped one.
    cv::Mat const image = Draw<uchar>({"19", "2.", "2."});
    tests::OracleCondition rule;
    rule.isConnected = [&](cv::Point, cv::Point to, cv::Point) {
        return image.at<uchar>(to) != 2 || to.y == 2;
    };
    tests::PositionCondition<uchar> condition(image, rule);
    cv::Mat labels(image.size(), CV_32SC1, cv::Scalar(0));
    std::size_t bound = 2;
    ZoneAreaLabelWriter<int> writer{&labels, &bound};
    Zone zone;
    ConnectedZoneScan<uchar, ZoneAreaLabelWriter<int>, AlwaysConnected<uchar>, NoZero> scan(
        image, eConnexity4, condition, writer, zone);
    scan.Run();
    // The second zone may step onto the 1, but that is taken: it stays at two pixels and is dropped too.
    ExpectDrawn(labels, {"..", "..", ".."});
}

TEST(ZoneCounter, CountsZonesAndStoresTheCountAfterEach)
{
    int count = -7;
    ZoneCounter counter{&count};
    WalkFlatZones(Draw<uchar>({"33.7", "3.77", "..3."}), counter);
    EXPECT_EQ(count, 3);
    EXPECT_EQ(counter.zones, 3);
    count = 0;
    counter(Zone{});
    EXPECT_EQ(count, 4);
}

TEST(ZoneCounter, DoesNotWriteWhenThereIsNoZone)
{
    int count = -7;
    ZoneCounter counter{&count};
    WalkFlatZones(Draw<uchar>({"...", "..."}), counter);
    EXPECT_EQ(count, -7);
    EXPECT_EQ(counter.zones, 0);
}

/// The number of zones of @p image under the test for empty pixels.
template <class In>
int CountZones(cv::Mat const & image)
{
    typename tests::RootCondition<In>::Type condition;
    int count = 0;
    ZoneCounter counter{&count};
    Zone zone;
    ConnectedZoneScan<In, ZoneCounter, typename tests::RootCondition<In>::Type, NoZero> scan(
        image, eConnexity8, condition, counter, zone);
    scan.Run();
    return count;
}

TEST(ZoneCounter, CountsTinyNumbersAndNaNAsNothing)
{
    float const nan = std::numeric_limits<float>::quiet_NaN();
    EXPECT_EQ(CountZones<float>((cv::Mat_<float>(1, 5) << 1e-11F, nan, 1.0F, nan, -1e-11F)), 1);
    EXPECT_EQ(CountZones<double>((cv::Mat_<double>(1, 5) << 1.0, 1e-11, 1.0, static_cast<double>(nan), 1.0)), 3);
    EXPECT_EQ(CountZones<cv::Vec2f>(cv::Mat(1, 1, CV_32FC2, cv::Scalar(1e-11, 0.0))), 0);
    EXPECT_EQ(CountZones<cv::Vec2f>(cv::Mat(1, 1, CV_32FC2, cv::Scalar(1e-10, 1e-10))), 1);
}

} // namespace

} // namespace morvane::connexity
