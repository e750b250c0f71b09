#include "apps/ProgramFixture.h"

#include <gtest/gtest.h>
#include <opencv2/imgcodecs.hpp>

#include <limits>
#include <set>
#include <string>
#include <vector>

namespace
{

using morvane::tests::Program;
using morvane::tests::Read;

/// Three rows alike: the flood needs a border.
template <class Row>
cv::Mat ThreeRows(Row const & row)
{
    cv::Mat rows;
    cv::repeat(row, 3, 1, rows);
    return rows;
}

class FloodCommand : public Program
{
protected:
    void Draw(std::string const & name, cv::Mat const & image) const { ASSERT_TRUE(cv::imwrite(In(name), image)); }

    /// What is written for image.tif, after a run that reports so many labels.
    [[nodiscard]] cv::Mat Flooded(std::vector<std::string> arguments, int labels) const
    {
        arguments.insert(arguments.begin(), {"flood", In("image.tif"), "-o", In("out.tif")});
        process::Outcome const outcome = Run(arguments);
        EXPECT_EQ(outcome.status, 0) << outcome.errors;
        EXPECT_EQ(outcome.errors, "");
        std::string const counted = "\nlabels  " + std::to_string(labels) + "\n";
        EXPECT_NE(outcome.output.find(counted), std::string::npos) << outcome.output;
        return Read(In("out.tif"));
    }

    void Refuses(std::vector<std::string> arguments, std::vector<std::string> const & named) const
    {
        arguments.insert(arguments.begin(), {"flood", In("image.tif"), "-o", In("out.tif")});
        ExpectFailure(arguments, named);
    }
};

/// Markers at single pixels of the middle row.
struct Mark
{
    int x;
    int label;
};

cv::Mat1i Marks(int cols, std::vector<Mark> const & marks)
{
    cv::Mat1i markers(3, cols, 0);
    for (Mark const & mark : marks)
    {
        markers(1, mark.x) = mark.label;
    }
    return markers;
}

void ExpectSame(cv::Mat const & labels, cv::Mat const & expected)
{
    ASSERT_EQ(labels.type(), CV_32SC1);
    ASSERT_EQ(labels.size(), expected.size());
    EXPECT_EQ(cv::norm(labels, expected, cv::NORM_INF), 0.0) << labels;
}

/// Expects the middle row inside a border of -1.
void ExpectInside(cv::Mat const & labels, cv::Mat1i const & row)
{
    cv::Mat1i expected(3, row.cols + 2, -1);
    row.copyTo(expected(cv::Rect(1, 1, row.cols, 1)));
    ExpectSame(labels, expected);
}

/// Two levels, a ridge of 50 between them, and a wall around.
cv::Mat1b Valleys()
{
    cv::Mat1b valleys(3, 9, uchar{60});
    cv::Mat1b const inside = (cv::Mat1b(1, 7) << 10, 10, 10, 50, 20, 20, 20);
    inside.copyTo(valleys(cv::Rect(1, 1, 7, 1)));
    return valleys;
}

TEST_F(FloodCommand, Markers_SpreadUntilTheyMeet)
{
    Draw("image.tif", Valleys());
    Draw("markers.tif", Marks(9, {{1, 5}, {7, 3}}));
    // The ridge waits at a cost of 50, until both are there: a line.
    ExpectInside(Flooded({"--markers", In("markers.tif")}, 2), (cv::Mat1i(1, 7) << 5, 5, 5, -1, 3, 3, 3));
}

TEST_F(FloodCommand, DarkPixels_AreFloodedFirst)
{
    // From the right every step costs 5, from the left 90: the right takes all the dark pixels.
    cv::Mat1b const row = (cv::Mat1b(1, 8) << 0, 90, 90, 5, 5, 5, 5, 0);
    Draw("image.tif", ThreeRows(row));
    Draw("markers.tif", Marks(8, {{1, 1}, {6, 2}}));
    ExpectInside(Flooded({"--markers", In("markers.tif")}, 2), (cv::Mat1i(1, 6) << 1, -1, 2, 2, 2, 2));
}

TEST_F(FloodCommand, Markers_AreTheNumbersAboveZeroOfAnyInteger)
{
    Draw("image.tif", Valleys());
    cv::Mat1i const expected = (cv::Mat1i(1, 7) << 5, 5, 5, -1, 3, 3, 3);
    for (int const depth : {CV_8U, CV_16S})
    {
        SCOPED_TRACE(depth);
        cv::Mat markers;
        Marks(9, {{1, 5}, {4, -2}, {7, 3}}).convertTo(markers, depth);
        Draw("markers.tif", markers);
        ExpectInside(Flooded({"--markers", In("markers.tif")}, 2), expected);
    }
}

TEST_F(FloodCommand, ImagesThatAreNotBytes_AreFloodedAsTheirGreyMap)
{
    Draw("markers.tif", Marks(9, {{1, 5}, {7, 3}}));
    cv::Mat1i const expected = (cv::Mat1i(1, 7) << 5, 5, 5, -1, 3, 3, 3);
    for (int const depth : {CV_16S, CV_64F})
    {
        SCOPED_TRACE(depth);
        cv::Mat image;
        Valleys().convertTo(image, depth, 100.0);
        Draw("image.tif", image);
        ExpectInside(Flooded({"--markers", In("markers.tif")}, 2), expected);
    }
    // Without a range all is black, and the markers meet in the middle.
    Draw("image.tif", cv::Mat1w(3, 9, ushort{700}));
    ExpectInside(Flooded({"--markers", In("markers.tif")}, 2), expected);
}

TEST_F(FloodCommand, NaN_CountsAsZero)
{
    float const nan = std::numeric_limits<float>::quiet_NaN();
    cv::Mat1f image;
    Valleys().convertTo(image, CV_32F);
    image(1, 2) = nan;
    Draw("image.tif", image);
    Draw("markers.tif", Marks(9, {{1, 5}, {7, 3}}));
    ExpectInside(Flooded({"--markers", In("markers.tif")}, 2), (cv::Mat1i(1, 7) << 5, 5, 5, -1, 3, 3, 3));
    // Here it parts two zones.
    cv::Mat1f const row = (cv::Mat1f(1, 7) << 8.0F, 8.0F, 8.0F, nan, 8.0F, 8.0F, 8.0F);
    Draw("image.tif", ThreeRows(row));
    Draw("markers.tif", Marks(7, {{1, 4}}));
    cv::Mat1i const expected = (cv::Mat1i(1, 7) << 4, 4, 4, 0, 0, 0, 0);
    ExpectSame(Flooded({"--markers", In("markers.tif"), "--no-zero", "--connexity", "4"}, 1), ThreeRows(expected));
}

TEST_F(FloodCommand, Dynamic_MakesMarkersOfTheMinimaThatStandOut)
{
    // In the unit of the image, not of the map.
    cv::Mat image;
    Valleys().convertTo(image, CV_16U, 100.0);
    Draw("image.tif", image);
    ExpectInside(Flooded({"--dynamic", "3000", "--connexity", "8"}, 2), (cv::Mat1i(1, 7) << 1, 1, 1, -1, 2, 2, 2));
    ExpectInside(Flooded({"--dynamic", "3001", "--connexity", "8"}, 1), cv::Mat1i(1, 7, 1));
}

TEST_F(FloodCommand, NoZero_GivesZonesOfMeasuredPixelsTheirHighestMarker)
{
    cv::Mat1b const row = (cv::Mat1b(1, 9) << 9, 9, 9, 9, 0, 9, 9, 9, 9);
    Draw("image.tif", ThreeRows(row));
    cv::Mat1i markers = Marks(9, {{1, 4}, {7, 7}});
    Draw("markers.tif", markers);
    std::vector<std::string> const arguments{"--markers", In("markers.tif"), "--no-zero", "--connexity", "4"};
    cv::Mat1i expected = (cv::Mat1i(1, 9) << 4, 4, 4, 4, 0, 7, 7, 7, 7);
    ExpectSame(Flooded(arguments, 2), ThreeRows(expected));

    // One on the border makes no basin, but counts in its zone.
    markers(0, 0) = 9;
    Draw("markers.tif", markers);
    expected = (cv::Mat1i(1, 9) << 9, 9, 9, 9, 0, 7, 7, 7, 7);
    ExpectSame(Flooded(arguments, 2), ThreeRows(expected));

    // A zone without a marker stays empty.
    Draw("markers.tif", Marks(9, {{1, 4}}));
    expected = (cv::Mat1i(1, 9) << 4, 4, 4, 4, 0, 0, 0, 0, 0);
    ExpectSame(Flooded(arguments, 1), ThreeRows(expected));
}

TEST_F(FloodCommand, NoZero_TakesTheNeighbourhoodThatIsAskedFor)
{
    cv::Mat1b const row = (cv::Mat1b(1, 9) << 9, 9, 9, 0, 0, 0, 9, 9, 9);
    Draw("image.tif", ThreeRows(row));
    Draw("markers.tif", Marks(9, {{1, 4}}));
    cv::Mat1i expected = (cv::Mat1i(1, 9) << 4, 4, 4, 0, 0, 0, 4, 4, 4);
    ExpectSame(
        Flooded({"--markers", In("markers.tif"), "--no-zero", "--connexity", "4-wrapped"}, 1), ThreeRows(expected));
    expected = (cv::Mat1i(1, 9) << 4, 4, 4, 0, 0, 0, 0, 0, 0);
    ExpectSame(Flooded({"--markers", In("markers.tif"), "--no-zero", "--connexity", "8"}, 1), ThreeRows(expected));
}

TEST_F(FloodCommand, DynamicAndNoZero_GoTogether)
{
    cv::Mat1b const row = (cv::Mat1b(1, 7) << 10, 10, 10, 50, 20, 20, 20);
    Draw("image.tif", ThreeRows(row));
    // The watershed's line is a basin without a marker.
    cv::Mat1i const expected = (cv::Mat1i(1, 7) << 1, 1, 1, 0, 2, 2, 2);
    ExpectSame(Flooded({"--dynamic", "30", "--no-zero", "--connexity", "4"}, 2), ThreeRows(expected));
}

class FloodCommandDelta : public FloodCommand
{
protected:
    /// One marker in the first zone, whose basin is all there is, and one on the border in the last.
    void SetUp() override
    {
        FloodCommand::SetUp();
        cv::Mat1b const row = (cv::Mat1b(1, 9) << 10, 11, 12, 30, 31, 0, 0, 12, 13);
        Draw("image.tif", ThreeRows(row));
        cv::Mat1b const second = (cv::Mat1b(1, 9) << 1, 1, 5, 5, 5, 5, 5, 5, 5);
        Draw("second.png", ThreeRows(second));
        cv::Mat1i markers = Marks(9, {{1, 4}});
        markers(0, 8) = 9;
        Draw("markers.tif", markers);
    }

    [[nodiscard]] cv::Mat Zones(std::vector<std::string> arguments) const
    {
        arguments.insert(arguments.begin(), {"--markers", In("markers.tif"), "--connexity", "4"});
        return Flooded(arguments, 2);
    }
};

TEST_F(FloodCommandDelta, BoundsTheStepBetweenNeighbours)
{
    cv::Mat1i expected = (cv::Mat1i(1, 9) << 4, 4, 4, 0, 0, 0, 0, 9, 9);
    ExpectSame(Zones({"--delta", "1"}), ThreeRows(expected));
    // Empty pixels are pixels like others.
    expected = (cv::Mat1i(1, 9) << 4, 4, 4, 4, 4, 9, 9, 9, 9);
    ExpectSame(Zones({"--delta", "20"}), ThreeRows(expected));
}

TEST_F(FloodCommandDelta, NoZero_LeavesEmptyPixelsOut)
{
    cv::Mat1i const expected = (cv::Mat1i(1, 9) << 4, 4, 4, 4, 4, 0, 0, 9, 9);
    ExpectSame(Zones({"--delta", "20", "--no-zero"}), ThreeRows(expected));
}

TEST_F(FloodCommandDelta, Second_MustBeAlikeAsWell)
{
    cv::Mat1i expected = (cv::Mat1i(1, 9) << 4, 4, 0, 0, 0, 9, 9, 9, 9);
    ExpectSame(Zones({"--delta", "20", "--second", In("second.png"), "--second-delta", "3"}), ThreeRows(expected));
    expected = (cv::Mat1i(1, 9) << 4, 4, 0, 0, 0, 0, 0, 9, 9);
    ExpectSame(
        Zones({"--delta", "20", "--no-zero", "--second", In("second.png"), "--second-delta", "3"}),
        ThreeRows(expected));
}

TEST_F(FloodCommandDelta, Second_HasTheBoundOfTheFirstUnlessItHasItsOwn)
{
    cv::Mat1i expected = (cv::Mat1i(1, 9) << 4, 4, 0, 0, 0, 0, 0, 9, 9);
    ExpectSame(Zones({"--delta", "3", "--second", In("second.png")}), ThreeRows(expected));
    expected = (cv::Mat1i(1, 9) << 4, 4, 4, 0, 0, 0, 0, 9, 9);
    ExpectSame(Zones({"--delta", "4", "--second", In("second.png")}), ThreeRows(expected));
    ExpectSame(Zones({"--delta", "3", "--second", In("second.png"), "--second-delta", "4"}), ThreeRows(expected));
}

TEST_F(FloodCommandDelta, OtherTypes_KeepTheUnitOfTheImage)
{
    cv::Mat1b const row = (cv::Mat1b(1, 9) << 10, 11, 12, 30, 31, 0, 0, 12, 13);
    cv::Mat1i const expected = (cv::Mat1i(1, 9) << 4, 4, 4, 4, 4, 0, 0, 9, 9);
    for (int const depth : {CV_16U, CV_32S, CV_32F})
    {
        SCOPED_TRACE(depth);
        cv::Mat image;
        ThreeRows(row).convertTo(image, depth);
        Draw("image.tif", image);
        ExpectSame(Zones({"--delta", "18", "--no-zero"}), ThreeRows(expected));
    }
}

TEST_F(FloodCommand, Picture_IsBlackOnLinesAndTheBorder)
{
    Draw("image.tif", Valleys());
    Draw("markers.tif", Marks(9, {{1, 5}, {7, 3}}));
    process::Outcome const outcome =
        Run({"flood", In("image.tif"), "--markers", In("markers.tif"), "--picture", In("picture.png")});
    EXPECT_EQ(outcome.status, 0) << outcome.errors;
    EXPECT_NE(outcome.output.find("size   9 x 3\n"), std::string::npos) << outcome.output;
    cv::Mat const picture = Read(In("picture.png"));
    ASSERT_EQ(picture.type(), CV_8UC3);
    ASSERT_EQ(picture.size(), cv::Size(9, 3));
    auto const left = picture.at<cv::Vec3b>(1, 1);
    auto const right = picture.at<cv::Vec3b>(1, 7);
    cv::Vec3b const black(0, 0, 0);
    EXPECT_NE(left, right);
    EXPECT_NE(left, black);
    EXPECT_NE(right, black);
    cv::Mat3b expected(3, 9, black);
    expected(cv::Rect(1, 1, 3, 1)).setTo(left);
    expected(cv::Rect(5, 1, 3, 1)).setTo(right);
    EXPECT_EQ(cv::norm(picture, expected, cv::NORM_INF), 0.0) << picture;
    EXPECT_EQ(Files(), (std::set<std::string>{"image.tif", "markers.tif", "picture.png"}));
}

} // namespace
