// Margins that are cut off an image.
#include <morvane/warping/Warping.h>

#include "support/AllTypes.h"
#include "support/ImageLiterals.h"
#include "support/RandomImages.h"
#include "support/Snapshot.h"
#include "support/WarpingOracle.h"

#include <gtest/gtest.h>
#include <opencv2/core.hpp>

#include <cmath>
#include <limits>
#include <vector>

namespace morvane::warping
{

namespace
{

using tests::Draw;
using tests::Random;
using tests::Snapshot;

using Bins = std::vector<unsigned int>;

TEST(CropImage, CutsThinMargins)
{
    // The columns weigh 0 0 5 7 8 0, the rows 1 9 9 1 0; of 20, 18 stay.
    cv::Mat const occupancy = Draw<float>({
        "....1.",
        "..333.",
        "..234.",
        "...1..",
        "......",
    });
    cv::Mat const image = Draw<short>({
        "abcdef",
        "ghijkl",
        "mnopqr",
        "stuvwx",
        "ABCDEF",
    });
    cv::Mat out;
    int dx = 77;
    int dy = 77;
    EXPECT_TRUE(CropImage(occupancy, image, out, 0.9, dx, dy));
    // Columns: those of 0 at the start go, then that at the end, as it is lighter; 2 to 4 is even, and 5 comes back.
    // Rows: 0 and 1 go at the end, 1 at the start; the range of rows 1 to 2 leaves the last one out.
    tests::ExpectDrawn(out, {"ijk"});
    EXPECT_EQ(out.type(), CV_16SC1);
    // The middle of 2 and 5, rounded down, against 6 / 2; that of 1 and 2 against 5 / 2, rounded down.
    EXPECT_EQ(dx, 0);
    EXPECT_EQ(dy, -1);
}

TEST(CropImage, OfNoOccupancy_KeepsNearlyAll)
{
    cv::Mat const image = Draw<uchar>({"123456", "789abc", "defghi", "jklmno"});
    cv::Mat out;
    int dx = 77;
    int dy = 77;
    EXPECT_TRUE(CropImage(cv::Mat::zeros(image.size(), CV_32FC1), image, out, 0.5, dx, dy));
    // All bins are light enough to stay, as none may go.
    tests::ExpectDrawn(out, {"12345", "789ab", "defgh"});
    EXPECT_EQ(dx, 2 - 3);
    EXPECT_EQ(dy, 1 - 2);
    // Odd numbers of columns and rows lose two.
    cv::Mat const odd = image(cv::Rect(0, 0, 5, 3));
    EXPECT_TRUE(CropImage(cv::Mat::zeros(odd.size(), CV_32FC1), odd, out, 0.5, dx, dy));
    tests::ExpectDrawn(out, {"123"});
    EXPECT_EQ(dx, 1 - 2);
    EXPECT_EQ(dy, 0 - 1);
}

TEST(CropImage, TakesAnyTypeOfImage)
{
    cv::Mat const occupancy(4, 4, CV_32FC1, cv::Scalar(1));
    for (int const type : {CV_8UC3, CV_8SC1, CV_16FC1, CV_32SC2, CV_64FC4, CV_32FC(7)})
    {
        SCOPED_TRACE(cv::typeToString(type));
        cv::Mat image(4, 4, type);
        tests::FillBytes(image, 5);
        cv::Mat out;
        int dx = 0;
        int dy = 0;
        EXPECT_TRUE(CropImage(occupancy, image, out, 1.0, dx, dy));
        tests::ExpectEqualImages(out, image(cv::Rect(0, 0, 3, 3)));
        EXPECT_NE(out.data, image.data);
    }
}

TEST(CropImage, ReplacesTheOutput)
{
    cv::Mat parent(5, 5, CV_8UC1, cv::Scalar(9));
    cv::Mat out = parent(cv::Rect(1, 1, 3, 3));
    int dx = 0;
    int dy = 0;
    EXPECT_TRUE(CropImage(cv::Mat::ones(4, 4, CV_32FC1), cv::Mat::zeros(4, 4, CV_8UC1), out, 1.0, dx, dy));
    tests::ExpectDrawn(out, {"...", "...", "..."});
    EXPECT_EQ(cv::countNonZero(parent != 9), 0);
}

TEST(CropImageRefusal, LeavesEverything)
{
    auto const expectRefused = [](cv::Mat const & occupancy, double ratio) {
        cv::Mat const image = Draw<uchar>({"1234", "5678", "9abc", "defg"});
        cv::Mat out = Draw<short>({"12", "34"});
        Snapshot const before(out);
        int dx = 77;
        int dy = 78;
        EXPECT_FALSE(CropImage(occupancy, image, out, ratio, dx, dy));
        EXPECT_TRUE(before.IsUntouched());
        EXPECT_EQ(dx, 77);
        EXPECT_EQ(dy, 78);
    };
    cv::Mat const ones = cv::Mat::ones(4, 4, CV_32FC1);
    for (double const ratio : {-0.1, 1.1, std::numeric_limits<double>::quiet_NaN(), HUGE_VAL, -HUGE_VAL})
    {
        expectRefused(ones, ratio);
    }
    for (int const type : {CV_8UC1, CV_8SC1, CV_16UC1, CV_16SC1, CV_32SC1, CV_64FC1, CV_32FC2})
    {
        expectRefused(cv::Mat::ones(4, 4, type), 0.5);
    }
    expectRefused(cv::Mat(4, 4, CV_16FC1), 0.5);
    expectRefused(cv::Mat(std::vector<int>{4, 4, 4}, CV_32FC1, cv::Scalar(1)), 0.5);
    // Nothing would be left.
    for (cv::Size const size : {cv::Size(0, 0), cv::Size(4, 0), cv::Size(0, 4), cv::Size(1, 4), cv::Size(4, 1)})
    {
        expectRefused(cv::Mat::ones(size, CV_32FC1), 0.5);
        expectRefused(cv::Mat::ones(size, CV_32FC1), 1.0);
    }
}

TEST(CropImage, OfAnImageThatIsTooSmall_Throws)
{
    cv::Mat out;
    int dx = 0;
    int dy = 0;
    cv::Mat const occupancy = cv::Mat::ones(6, 6, CV_32FC1);
    EXPECT_THROW(
        static_cast<void>(CropImage(occupancy, cv::Mat::ones(4, 6, CV_8UC1), out, 1.0, dx, dy)), cv::Exception);
    // It goes by the columns and rows that stay alone.
    EXPECT_TRUE(CropImage(occupancy, cv::Mat::ones(5, 5, CV_8UC1), out, 1.0, dx, dy));
    EXPECT_EQ(out.size(), cv::Size(5, 5));
    EXPECT_EQ(dx, 2 - 2);
}

TEST(CropImageRandom, AgreesWithThePlainForm)
{
    Random random(102005);
    int cropped = 0;
    for (int repeat = 0; repeat < 300; ++repeat)
    {
        cv::Size const size(2 + random.Below(30), 2 + random.Below(30));
        cv::Mat occupancy = cv::Mat::zeros(size, CV_32FC1);
        Bins columns(static_cast<std::size_t>(size.width));
        Bins rows(static_cast<std::size_t>(size.height));
        for (int y = 0; y < size.height; ++y)
        {
            for (int x = 0; x < size.width; ++x)
            {
                bool const isMargin = x < size.width / 4 || y < size.height / 4 || x > size.width * 3 / 4;
                int const weight = random.Chance(isMargin ? 0.1 : 0.8) ? random.Below(9) : 0;
                occupancy.at<float>(y, x) = static_cast<float>(weight) + 0.75F;
                columns.at(static_cast<std::size_t>(x)) += static_cast<unsigned>(weight);
                rows.at(static_cast<std::size_t>(y)) += static_cast<unsigned>(weight);
            }
        }
        double const ratio = random.Below(21) * 0.05;
        if (ratio > 1.0) continue;
        cv::Mat image = tests::RandomImage(random, size, tests::kDepths.at(static_cast<std::size_t>(repeat % 6)));
        tests::OracleBins const x = tests::OracleNarrowed(columns, ratio);
        tests::OracleBins const y = tests::OracleNarrowed(rows, ratio);
        tests::FramedImage framedOccupancy(occupancy);
        tests::FramedImage framedImage(image);
        cv::Mat out;
        int dx = 0;
        int dy = 0;
        ASSERT_TRUE(CropImage(framedOccupancy.View(), framedImage.View(), out, ratio, dx, dy));
        ASSERT_TRUE(tests::EqualImages(out, image(cv::Rect(x.first, y.first, x.last - x.first, y.last - y.first))));
        ASSERT_EQ(dx, std::floor((x.first + x.last) * 0.5) - std::floor(size.width * 0.5));
        ASSERT_EQ(dy, std::floor((y.first + y.last) * 0.5) - std::floor(size.height * 0.5));
        cropped += out.total() < image.total() / 2 ? 1 : 0;
    }
    EXPECT_GT(cropped, 50);
}

} // namespace

} // namespace morvane::warping
