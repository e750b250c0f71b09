#include <morvane/visual/ColorMaps.h>

#include "support/AllTypes.h"
#include "support/ImageLiterals.h"
#include "support/RandomLabels.h"
#include "support/Rows.h"
#include "support/Snapshot.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <limits>

namespace morvane::tests
{

namespace
{

using visual::ApplyLut;

constexpr std::array kLutChannels{1, 3};

/// The table entry of each label, zero for those that are not in the table.
cv::Mat OracleLut(cv::Mat const & labels, cv::Mat const & lut)
{
    cv::Mat expected(labels.rows, labels.cols, lut.type(), cv::Scalar::all(0));
    for (int y = 0; y < labels.rows; ++y)
    {
        for (int x = 0; x < labels.cols; ++x)
        {
            double const label = ElementAt(labels, y, x);
            if (label <= 0 || label >= lut.rows) continue;
            std::size_t const bytes = lut.elemSize();
            std::memcpy(expected.ptr(y) + static_cast<std::size_t>(x) * bytes, lut.ptr(static_cast<int>(label)), bytes);
        }
    }
    return expected;
}

cv::Mat RandomLut(Random & random, int rows, int type)
{
    return RandomImage(random, {1, rows}, type, {.emptyShare = 0.1, .specialShare = 0.5, .alphabet = 200});
}

void CheckLut(Random & random, int labelDepth, int lutType, LabelPattern pattern)
{
    cv::Size const size = RandomLabelSize(random);
    SCOPED_TRACE(Case(labelDepth, size, 0) + ", table " + cv::typeToString(lutType));
    bool const isSigned = labelDepth == CV_16S || labelDepth == CV_32S;
    LabelMixture const mixture{
        .largest = random.Chance(0.5) ? 10 : 255, .negativeShare = isSigned && random.Chance(0.5) ? 0.2 : 0.0};
    cv::Mat const labels = RandomLabels(random, size, labelDepth, pattern, mixture);
    cv::Mat const lut = RandomLut(random, random.Below(300), lutType);
    cv::Mat const expected = OracleLut(labels, lut);
    cv::Mat unwritten(size, lutType);
    FillBytes(unwritten, 0x5B);
    FramedImage framed(unwritten);
    FramedImage framedLabels(labels);
    FramedImage framedLut(lut);
    ASSERT_TRUE(ApplyLut(labels, lut, unwritten));
    ASSERT_TRUE(EqualImages(unwritten, expected));
    ASSERT_TRUE(ApplyLut(framedLabels.View(), framedLut.View(), framed.View()));
    ASSERT_TRUE(EqualImages(framed.View(), expected));
    ASSERT_TRUE(framed.IsFrameUntouched());
}

TEST(ApplyLut, AgreesWithThePlainFormForAllTypes)
{
    Random random(101);
    for (int const labelDepth : kLabelDepths)
    {
        for (int const lutDepth : kDepths)
        {
            for (int const channels : kLutChannels)
            {
                for (int repeat = 0; repeat < 40; ++repeat)
                {
                    LabelPattern const pattern = kLabelPatterns[static_cast<std::size_t>(repeat % 4)];
                    CheckLut(random, labelDepth, CV_MAKETYPE(lutDepth, channels), pattern);
                    if (HasFatalFailure()) return;
                }
            }
        }
    }
}

TEST(ApplyLut, WritesTheEntryOfEachLabelAndZeroForLabelZero)
{
    cv::Mat const lut = Row<float>({9.5F, 1.5F, -2.5F, 3.5F}).t();
    cv::Mat output(2, 3, CV_32FC1);
    ASSERT_TRUE(ApplyLut(DrawLabels({".12", "321"}), lut, output));
    cv::Mat const expected = (cv::Mat_<float>(2, 3) << 0.0F, 1.5F, -2.5F, 3.5F, -2.5F, 1.5F);
    ExpectEqualImages(output, expected);
}

TEST(ApplyLut, GivesZeroToLabelsBeyondTheTable)
{
    cv::Mat const lut = Row<cv::Vec3b>({{1, 1, 1}, {2, 3, 4}}).t();
    cv::Vec3b const zero(0, 0, 0);
    cv::Mat output(1, 4, CV_8UC3);
    ASSERT_TRUE(ApplyLut(Row<int>({1, 2, 3, std::numeric_limits<int>::max()}), lut, output));
    ExpectEqualImages(output, Row<cv::Vec3b>({{2, 3, 4}, zero, zero, zero}));
    ASSERT_TRUE(ApplyLut(Row<ushort>({1, 2, 32769, 65535}), lut, output));
    ExpectEqualImages(output, Row<cv::Vec3b>({{2, 3, 4}, zero, zero, zero}));
}

TEST(ApplyLut, GivesZeroToNegativeLabels)
{
    cv::Mat const lut = Row<int>({5, 6, 7}).t();
    cv::Mat output(1, 4, CV_32SC1);
    ASSERT_TRUE(ApplyLut(Row<short>({-1, 1, -32768, 2}), lut, output));
    ExpectEqualImages(output, Row<int>({0, 6, 0, 7}));
    ASSERT_TRUE(ApplyLut(Row<int>({-1, 1, std::numeric_limits<int>::min(), 2}), lut, output));
    ExpectEqualImages(output, Row<int>({0, 6, 0, 7}));
}

TEST(ApplyLut, GivesZeroToLabelsBeyondTheHalfOf16BitsReadAsSigned)
{
    cv::Mat labels = Row<ushort>({1, 40000, 32767, 32768, 65535, 2});
    cv::Mat const asSigned(labels.size(), CV_16SC1, labels.data, labels.step);
    cv::Mat const lut(65536, 1, CV_32FC3, cv::Scalar(7, 8, 9));
    cv::Vec3f const entry(7, 8, 9);
    cv::Vec3f const zero(0, 0, 0);
    cv::Mat output(1, 6, CV_32FC3, cv::Scalar::all(1));
    ASSERT_TRUE(ApplyLut(asSigned, lut, output));
    ExpectEqualImages(output, Row<cv::Vec3f>({entry, zero, entry, zero, zero, entry}));
    ASSERT_TRUE(ApplyLut(labels, lut, output));
    ExpectEqualImages(output, Row<cv::Vec3f>({entry, entry, entry, entry, entry, entry}));
}

TEST(ApplyLut, WritesOverItsTable)
{
    cv::Mat const labels = Draw<uchar>({"2", ".", "1", "3"});
    cv::Mat table = Row<int>({5, 6, 7, 8}).t();
    ASSERT_TRUE(ApplyLut(labels, table, table));
    ExpectEqualImages(table, Row<int>({7, 0, 6, 8}).t());
}

TEST(ApplyLut, ReachesTheLastEntriesOfLargeTables)
{
    cv::Mat lut(70000, 1, CV_32SC1);
    for (int row = 0; row < lut.rows; ++row)
    {
        lut.at<int>(row) = -row;
    }
    cv::Mat output(1, 3, CV_32SC1);
    ASSERT_TRUE(ApplyLut(Row<uchar>({255, 128, 0}), lut, output));
    ExpectEqualImages(output, Row<int>({-255, -128, 0}));
    ASSERT_TRUE(ApplyLut(Row<ushort>({65535, 32768, 0}), lut, output));
    ExpectEqualImages(output, Row<int>({-65535, -32768, 0}));
    ASSERT_TRUE(ApplyLut(Row<int>({69999, 70000, 65536}), lut, output));
    ExpectEqualImages(output, Row<int>({-69999, 0, -65536}));
}

TEST(ApplyLut, GivesZerosForATableWithoutRows)
{
    for (int const depth : kDepths)
    {
        cv::Mat output = Draw({"789"}, depth);
        EXPECT_TRUE(ApplyLut(DrawLabels({".12"}), cv::Mat(0, 1, depth), output));
        ExpectDrawn(output, {"..."});
    }
}

TEST(ApplyLut, CopiesTheBytesOfTheEntry)
{
    cv::Mat lut(2, 1, CV_32FC1);
    lut.at<std::uint32_t>(0) = 0;
    lut.at<std::uint32_t>(1) = 0xFF8ABCDEU; // a signalling NaN
    cv::Mat output(1, 1, CV_32FC1);
    ASSERT_TRUE(ApplyLut(DrawLabels({"1"}), lut, output));
    EXPECT_EQ(output.at<std::uint32_t>(0), 0xFF8ABCDEU);
}

TEST(ApplyLut, WorksInPlace)
{
    Random random(102);
    for (int const depth : kLabelDepths)
    {
        for (LabelPattern const pattern : kLabelPatterns)
        {
            cv::Mat const labels = RandomLabels(random, {203, 11}, depth, pattern);
            cv::Mat const lut = RandomLut(random, 15, depth);
            cv::Mat const expected = OracleLut(labels, lut);
            cv::Mat whole = CopyOf(labels);
            EXPECT_TRUE(ApplyLut(whole, lut, whole));
            ExpectEqualImages(whole, expected);
            FramedImage framed(labels);
            EXPECT_TRUE(ApplyLut(framed.View(), lut, framed.View()));
            ExpectEqualImages(framed.View(), expected);
            EXPECT_TRUE(framed.IsFrameUntouched());
        }
    }
}

TEST(ApplyLut, AcceptsEmptyImages)
{
    cv::Mat const lut = Row<int>({5, 6, 7}).t();
    for (cv::Size const size : {cv::Size(0, 0), cv::Size(0, 3), cv::Size(4, 0)})
    {
        cv::Mat output(size, CV_32SC1);
        EXPECT_TRUE(ApplyLut(cv::Mat(size, CV_8UC1), lut, output));
        EXPECT_EQ(output.size(), size);
    }
}

void ExpectRefused(cv::Mat const & image, cv::Mat const & lut, cv::Mat output)
{
    SCOPED_TRACE(
        testing::Message() << cv::typeToString(image.type()) << ' ' << image.size() << " by "
                           << cv::typeToString(lut.type()) << ' ' << lut.size() << " to "
                           << cv::typeToString(output.type()) << ' ' << output.size());
    FillBytes(output, 0x33);
    Snapshot const snapshot(output);
    EXPECT_FALSE(ApplyLut(image, lut, output));
    EXPECT_TRUE(snapshot.IsUntouched());
}

TEST(ApplyLut, RefusesImagesThatAreNoLabels)
{
    cv::Size const size(3, 2);
    for (int const depth : kRefusedLabelDepths)
    {
        ExpectRefused(cv::Mat(size, depth), cv::Mat::ones(4, 1, CV_32S), cv::Mat(size, CV_32S));
    }
    for (int const depth : kLabelDepths)
    {
        for (int const channels : {2, 3, 4, 5})
        {
            cv::Mat image(size, CV_MAKETYPE(depth, channels));
            FillBytes(image, 1);
            ExpectRefused(image, cv::Mat::ones(4, 1, CV_32S), cv::Mat(size, CV_32S));
        }
    }
}

TEST(ApplyLut, RefusesTypesOfTableAndOutputThatDifferOrAreNotMapped)
{
    cv::Size const size(3, 2);
    cv::Mat const image = DrawLabels({"123", "..."});
    for (int lutType = 0; lutType < CV_MAKETYPE(0, 6); ++lutType)
    {
        for (int outputType = 0; outputType < CV_MAKETYPE(0, 6); ++outputType)
        {
            int const channels = CV_MAT_CN(outputType);
            bool const mapped = (channels == 1 || channels == 3) && CV_MAT_DEPTH(outputType) != CV_8S &&
                                CV_MAT_DEPTH(outputType) != CV_16F;
            if (lutType == outputType && mapped) continue;
            ExpectRefused(image, cv::Mat(4, 1, lutType), cv::Mat(size, outputType));
        }
    }
}

TEST(ApplyLut, RefusesTablesWithoutExactlyOneColumn)
{
    cv::Mat const image = Draw<uchar>({"123", "..."});
    for (cv::Mat const & lut :
         {cv::Mat(4, 2, CV_32S), cv::Mat(1, 4, CV_32S), cv::Mat(4, 0, CV_32S), cv::Mat(0, 0, CV_32S)})
    {
        ExpectRefused(image, lut, cv::Mat(2, 3, CV_32S));
    }
    ExpectRefused(image, cv::Mat(), cv::Mat(2, 3, CV_8U));
}

TEST(ApplyLut, RefusesOutputsOfAnotherSize)
{
    cv::Mat const image = Draw<ushort>({"123", "..."});
    for (cv::Size const size : {cv::Size(2, 3), cv::Size(3, 3), cv::Size(4, 2), cv::Size(6, 1), cv::Size()})
    {
        ExpectRefused(image, cv::Mat::ones(4, 1, CV_32S), cv::Mat(size, CV_32S));
    }
    ExpectRefused(cv::Mat(0, 0, CV_16U), cv::Mat::ones(4, 1, CV_32S), cv::Mat(2, 3, CV_32S));
}

} // namespace

} // namespace morvane::tests
