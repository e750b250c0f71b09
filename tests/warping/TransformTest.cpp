// Warping through affine maps: which pixel is taken, what stays, and what is refused.
#include <morvane/warping/Warping.h>

#include "support/AllTypes.h"
#include "support/ImageLiterals.h"
#include "support/RandomImages.h"
#include "support/Rows.h"
#include "support/Snapshot.h"

#include <gtest/gtest.h>
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>

#include <array>
#include <limits>
#include <vector>

namespace morvane::warping
{

namespace
{

using tests::Draw;
using tests::Row;
using tests::Snapshot;

using Operator = bool (*)(cv::Mat const & source, cv::Mat & out, cv::Mat const & matrix);

constexpr std::array<Operator, 2> kOperators{Transform, TransformBinary};
constexpr std::array kBinaryDepths{CV_8U, CV_16U, CV_32S};

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

cv::Mat Affine(double m00, double m01, double m02, double m10, double m11, double m12)
{
    return (cv::Mat_<double>(2, 3) << m00, m01, m02, m10, m11, m12);
}

cv::Mat Identity()
{
    return Affine(1, 0, 0, 0, 1, 0);
}

bool IsBinaryDepth(int depth)
{
    return depth == CV_8U || depth == CV_16U || depth == CV_32S;
}

TEST(Transform, ByTheIdentity_CopiesEachPixelToItself)
{
    for (int const depth : tests::kDepths)
    {
        SCOPED_TRACE(cv::depthToString(depth));
        cv::Mat const source = Draw({"123", "4.6"}, depth);
        cv::Mat out;
        EXPECT_TRUE(Transform(source, out, Identity()));
        tests::ExpectEqualImages(out, source);
        out.release();
        EXPECT_EQ(TransformBinary(source, out, Identity()), IsBinaryDepth(depth));
        if (IsBinaryDepth(depth)) tests::ExpectEqualImages(out, source);
    }
}

TEST(Transform, LeadsFromTheOutputToTheSource)
{
    // Each pixel looks two columns to the right and one row up.
    for (Operator const transform : kOperators)
    {
        cv::Mat out;
        EXPECT_TRUE(transform(Draw<uchar>({"1234", "5678", "9abc"}), out, Affine(1, 0, 2, 0, 1, -1)));
        tests::ExpectDrawn(out, {"....", "34..", "78.."});
    }
}

TEST(Transform, ByAQuarterTurnAboutTheMiddle_TurnsClockwise)
{
    cv::Mat const turn = cv::getRotationMatrix2D({1.5F, 1.5F}, 90.0, 1.0);
    for (Operator const transform : kOperators)
    {
        cv::Mat out;
        EXPECT_TRUE(transform(Draw<uchar>({"123", "456", "789"}), out, turn));
        tests::ExpectDrawn(out, {"741", "852", "963"});
    }
}

TEST(Transform, RoundsDownTheMiddlesOfPixels)
{
    // The middles 0.5, 1.5, 2.5 of the columns become 0.25, 0.75, 1.25.
    cv::Mat out = cv::Mat::zeros(1, 5, CV_8UC1);
    EXPECT_TRUE(Transform(Row<uchar>({1, 2, 3}), out, Affine(0.5, 0, 0, 0, 1, 0)));
    tests::ExpectDrawn(out, {"11223"});
    // Just at a border: the later pixel. Just before 0: none, not the first.
    out = cv::Mat::zeros(1, 4, CV_8UC1);
    EXPECT_TRUE(Transform(Row<uchar>({1, 2, 3, 4}), out, Affine(1, 0, -0.5, 0, 1, 0)));
    tests::ExpectDrawn(out, {"1234"});
    out = cv::Mat::zeros(1, 4, CV_8UC1);
    EXPECT_TRUE(Transform(Row<uchar>({1, 2, 3, 4}), out, Affine(1, 0, -0.75, 0, 1, 0)));
    tests::ExpectDrawn(out, {".123"});
}

TEST(Transform, KeepsWhatIsThere)
{
    for (int const depth : tests::kDepths)
    {
        SCOPED_TRACE(cv::depthToString(depth));
        cv::Mat out = Draw({".9.", "9.."}, depth);
        uchar const * const data = out.data;
        EXPECT_TRUE(Transform(Draw({"123", "4.6"}, depth), out, Identity()));
        tests::ExpectDrawn(out, {"193", "9.6"});
        EXPECT_EQ(out.data, data);
    }
}

TEST(Transform, FillsWhatIsExactly0)
{
    float const tiny = std::numeric_limits<float>::denorm_min();
    float const nan = std::numeric_limits<float>::quiet_NaN();
    cv::Mat out = Row<float>({tiny, nan, -0.0F, 0.0F, -1.0F});
    EXPECT_TRUE(Transform(Row<float>({5, 5, 5, 5, 5}), out, Identity()));
    tests::ExpectEqualImages(out, Row<float>({tiny, nan, 5, 5, -1}));
    cv::Mat wide = Row<double>({1e-300, -0.0});
    EXPECT_TRUE(Transform(Row<double>({5, 5}), wide, Identity()));
    tests::ExpectEqualImages(wide, Row<double>({1e-300, 5}));
    // Any value goes there.
    out = cv::Mat::zeros(1, 3, CV_32FC1);
    EXPECT_TRUE(Transform(Row<float>({nan, -0.0F, tiny}), out, Identity()));
    tests::ExpectEqualImages(out, Row<float>({nan, -0.0F, tiny}));
}

TEST(TransformBinary, MergesBits)
{
    cv::Mat out = Row<uchar>({0x0F, 0xF0, 0, 0x80});
    EXPECT_TRUE(TransformBinary(Row<uchar>({0x3C, 0xF0, 7, 0}), out, Identity()));
    tests::ExpectEqualImages(out, Row<uchar>({0x3F, 0xF0, 7, 0x80}));
    out = Row<ushort>({0x8001, 0});
    EXPECT_TRUE(TransformBinary(Row<ushort>({0x7000, 0xFFFF}), out, Identity()));
    tests::ExpectEqualImages(out, Row<ushort>({0xF001, 0xFFFF}));
    out = Row<int>({std::numeric_limits<int>::min(), 1});
    EXPECT_TRUE(TransformBinary(Row<int>({1, -2}), out, Identity()));
    tests::ExpectEqualImages(out, Row<int>({std::numeric_limits<int>::min() + 1, -1}));
}

TEST(Transform, PlacesBeyondTheSizeOfTheOutputDoNotCount)
{
    // The source has what is two columns to the right of the output, and two rows below it.
    cv::Mat const source = Draw<uchar>({"12345", "6789a", "bcdef", "ghijk"});
    for (Operator const transform : kOperators)
    {
        cv::Mat out = cv::Mat::zeros(2, 3, CV_8UC1);
        EXPECT_TRUE(transform(source, out, Affine(1, 0, 1, 0, 1, 0)));
        tests::ExpectDrawn(out, {"23.", "78."});
        out = cv::Mat::zeros(2, 3, CV_8UC1);
        EXPECT_TRUE(transform(source, out, Affine(1, 0, 0, 0, 1, 1)));
        tests::ExpectDrawn(out, {"678", "..."});
    }
}

TEST(Transform, PlacesBeyondASmallerSource_StayAsTheyAre)
{
    cv::Mat const whole = Draw<uchar>({"12zzz", "34zzz", "zzzzz"});
    cv::Mat const source = whole(cv::Rect(0, 0, 2, 2));
    for (Operator const transform : kOperators)
    {
        cv::Mat out = cv::Mat::zeros(3, 4, CV_8UC1);
        out.at<uchar>(2, 3) = 9;
        EXPECT_TRUE(transform(source, out, Identity()));
        tests::ExpectDrawn(out, {"12..", "34..", "...9"});
    }
}

TEST(Transform, AFlatMap_TakesOnePixelForAll)
{
    for (Operator const transform : kOperators)
    {
        cv::Mat out;
        EXPECT_TRUE(transform(Draw<uchar>({"123", "456"}), out, Affine(0, 0, 2.9, 0, 0, 1.0)));
        tests::ExpectDrawn(out, {"666", "666"});
        out.release();
        EXPECT_TRUE(transform(Draw<uchar>({"123", "456"}), out, Affine(0, 0, 0, 0, 0, 0)));
        tests::ExpectDrawn(out, {"111", "111"});
    }
}

TEST(Transform, EmptyOutput_TakesTheShapeOfTheSource)
{
    cv::Mat const source = Draw<short>({"123", "456"});
    // Whatever type it has.
    for (cv::Mat out : {cv::Mat(), cv::Mat(0, 7, CV_64FC3), cv::Mat(4, 0, CV_8SC1)})
    {
        EXPECT_TRUE(Transform(source, out, Identity()));
        tests::ExpectEqualImages(out, source);
    }
}

TEST(Transform, OfNothing_FillsNothing)
{
    for (Operator const transform : kOperators)
    {
        cv::Mat out;
        EXPECT_TRUE(transform(cv::Mat(0, 0, CV_8UC1), out, Identity()));
        EXPECT_TRUE(out.empty());
        out = Draw<uchar>({"1.", ".2"});
        Snapshot const before(out);
        EXPECT_TRUE(transform(cv::Mat(0, 5, CV_8UC1), out, Identity()));
        EXPECT_TRUE(before.IsUntouched());
        EXPECT_TRUE(transform(cv::Mat(5, 0, CV_8UC1), out, Identity()));
        EXPECT_TRUE(before.IsUntouched());
    }
}

TEST(Transform, ByNumbersWithoutMeaning_LeadsNowhere)
{
    for (double const strange : {kInfinity, -kInfinity, kNaN, 1.01e298, -1.7e308})
    {
        for (int element = 0; element < 6; ++element)
        {
            SCOPED_TRACE(::testing::Message() << strange << " as element " << element);
            cv::Mat matrix = Identity();
            matrix.at<double>(element / 3, element % 3) = strange;
            for (Operator const transform : kOperators)
            {
                cv::Mat out;
                EXPECT_TRUE(transform(Draw<uchar>({"123", "456"}), out, matrix));
                tests::ExpectDrawn(out, {"...", "..."});
            }
        }
    }
}

TEST(Transform, ByLargeNumbersThatCancel_GoesByTheSum)
{
    // Twice the middle of the row minus twice that of the column, times 1e298, plus 1: the diagonal meets column 1.
    for (Operator const transform : kOperators)
    {
        cv::Mat out;
        EXPECT_TRUE(transform(Draw<uchar>({"123", "456", "789"}), out, Affine(-1e298, 1e298, 1, 0, 1, 0)));
        tests::ExpectDrawn(out, {"2..", ".5.", "..8"});
        // A little larger, they lead nowhere.
        out.release();
        EXPECT_TRUE(transform(Draw<uchar>({"123"}), out, Affine(-1.01e298, 1.01e298, 1, 0, 1, 0)));
        tests::ExpectDrawn(out, {"..."});
        out.release();
        // The row comes first, then the column, then the offset: what is lost is lost in this order.
        out.release();
        EXPECT_TRUE(transform(Draw<uchar>({"123", "456", "789"}), out, Affine(1e20, 0, -5e19, 0, 1, 0)));
        tests::ExpectDrawn(out, {"1..", "4..", "7.."});
        out.release();
        EXPECT_TRUE(transform(Draw<uchar>({"123", "456", "789"}), out, Affine(1e20, 4, -5e19, 0, 1, 0)));
        tests::ExpectDrawn(out, {"1..", "4..", "7.."});
    }
}

TEST(TransformRefusal, LeavesTheOutput)
{
    auto const expectRefused = [](Operator transform, cv::Mat const & source, cv::Mat out, cv::Mat const & matrix) {
        Snapshot const before(out);
        EXPECT_FALSE(transform(source, out, matrix));
        EXPECT_TRUE(before.IsUntouched());
        cv::Mat none;
        bool const isType = source.dims <= 2 && out.type() != source.type();
        if (isType) return;
        EXPECT_FALSE(transform(source, none, matrix));
        EXPECT_TRUE(none.empty());
    };
    for (Operator const transform : kOperators)
    {
        for (int const depth : tests::kRefusedDepths)
        {
            SCOPED_TRACE(cv::depthToString(depth));
            cv::Mat source(2, 2, depth);
            tests::FillBytes(source, 1);
            expectRefused(transform, source, cv::Mat::zeros(2, 2, depth), Identity());
        }
        for (int const depth : kBinaryDepths)
        {
            SCOPED_TRACE(cv::depthToString(depth));
            cv::Mat const source = Draw({"11", "11"}, depth);
            for (int const other : {CV_8U, CV_8S, CV_16U, CV_16S, CV_32S, CV_32F, CV_64F, CV_16F})
            {
                if (other == depth) continue;
                cv::Mat out(2, 2, other);
                tests::FillBytes(out, 0);
                expectRefused(transform, source, out, Identity());
            }
            for (int const channels : {2, 3, 4})
            {
                int const type = CV_MAKETYPE(depth, channels);
                expectRefused(transform, Draw({"11", "11"}, type), cv::Mat::zeros(2, 2, type), Identity());
                expectRefused(transform, source, cv::Mat::zeros(2, 2, type), Identity());
            }
            for (cv::Mat const & matrix :
                 {cv::Mat(), cv::Mat(cv::Mat::eye(2, 3, CV_32FC1)), cv::Mat(cv::Mat::eye(3, 3, CV_64FC1)),
                  cv::Mat(cv::Mat::eye(2, 2, CV_64FC1)), cv::Mat(cv::Mat::eye(3, 2, CV_64FC1)),
                  cv::Mat(2, 3, CV_64FC2, cv::Scalar(1, 1))})
            {
                expectRefused(transform, source, cv::Mat::zeros(2, 2, depth), matrix);
            }
            cv::Mat const cube(std::vector<int>{2, 2, 2}, depth, cv::Scalar(1));
            cv::Mat out = cv::Mat::zeros(2, 2, depth);
            Snapshot const before(out);
            EXPECT_FALSE(transform(cube, out, Identity()));
            EXPECT_TRUE(before.IsUntouched());
            cv::Mat outCube(std::vector<int>{2, 2, 2}, depth, cv::Scalar(0));
            EXPECT_FALSE(transform(source, outCube, Identity()));
            EXPECT_EQ(cv::countNonZero(outCube.reshape(1, 1)), 0);
        }
    }
    for (int const depth : {CV_16S, CV_32F, CV_64F})
    {
        SCOPED_TRACE(cv::depthToString(depth));
        expectRefused(TransformBinary, Draw({"11", "11"}, depth), cv::Mat::zeros(2, 2, depth), Identity());
    }
}

TEST(Transform, ReadsMatricesThatAreViews)
{
    cv::Mat parent(4, 6, CV_64FC1, cv::Scalar(kNaN));
    cv::Mat const matrix = parent(cv::Rect(2, 1, 3, 2));
    Affine(1, 0, 1, 0, 1, 0).copyTo(matrix);
    cv::Mat out;
    EXPECT_TRUE(Transform(Draw<uchar>({"123", "456"}), out, matrix));
    tests::ExpectDrawn(out, {"23.", "56."});
}

} // namespace

} // namespace morvane::warping
