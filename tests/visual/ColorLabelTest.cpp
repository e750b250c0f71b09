#include <morvane/visual/ColorMaps.h>

#include "support/AllTypes.h"
#include "support/ImageLiterals.h"
#include "support/RandomLabels.h"
#include "support/Rows.h"
#include "support/Snapshot.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <limits>
#include <vector>

namespace morvane::tests
{

namespace
{

using visual::ColorLabel;

/// Starts the generator of this thread anew, and gives it back its state at the end of the scope.
class SeededGenerator
{
public:
    explicit SeededGenerator(std::uint64_t seed)
        : m_before(cv::theRNG())
    {
        cv::theRNG() = cv::RNG(seed);
    }
    ~SeededGenerator() { cv::theRNG() = m_before; }
    SeededGenerator(SeededGenerator const &) = delete;
    SeededGenerator & operator=(SeededGenerator const &) = delete;

private:
    cv::RNG m_before;
};

/// The colours of a label image, drawn from @p generator: three numbers for each label up to the largest.
cv::Mat OracleColors(cv::Mat const & labels, cv::RNG & generator)
{
    int largest = 0;
    for (int number = 0; number < labels.rows * labels.cols; ++number)
    {
        double const label = ElementAt(labels, number / labels.cols, number % labels.cols);
        largest = std::max(largest, static_cast<int>(label));
    }
    std::vector<cv::Vec3b> colors;
    for (int label = 1; label <= largest; ++label)
    {
        auto const blue = static_cast<uchar>(generator.next() % 255);
        auto const green = static_cast<uchar>(generator.next() % 255);
        auto const red = static_cast<uchar>(generator.next() % 255);
        colors.emplace_back(blue, green, red);
    }
    cv::Mat expected(labels.rows, labels.cols, CV_8UC3, cv::Scalar::all(0));
    for (int number = 0; number < labels.rows * labels.cols; ++number)
    {
        int const y = number / labels.cols;
        int const x = number % labels.cols;
        double const label = ElementAt(labels, y, x);
        if (label > 0) expected.at<cv::Vec3b>(y, x) = colors[static_cast<std::size_t>(label) - 1];
    }
    return expected;
}

void ExpectDrawnColors(cv::Mat const & labels, cv::Mat & output)
{
    cv::RNG replay = cv::theRNG();
    EXPECT_TRUE(ColorLabel(labels, output));
    ExpectEqualImages(output, OracleColors(labels, replay));
    EXPECT_EQ(cv::theRNG().state, replay.state);
}

TEST(ColorLabel, DrawsThreeNumbersForEachLabelFromTheGeneratorOfTheThread)
{
    SeededGenerator const seeded(4711);
    Random random(91);
    for (int const depth : kLabelDepths)
    {
        for (LabelPattern const pattern : kLabelPatterns)
        {
            for (int repeat = 0; repeat < 10; ++repeat)
            {
                cv::Size const size = RandomLabelSize(random);
                SCOPED_TRACE(Case(depth, size, 0));
                int const largest = depth == CV_8U ? 255 : 1 + random.Below(5000);
                cv::Mat const labels = RandomLabels(random, size, depth, pattern, {.largest = largest});
                FramedImage framedLabels(labels);
                FramedImage framed(cv::Mat(size, CV_8UC3, cv::Scalar::all(77)));
                ExpectDrawnColors(framedLabels.View(), framed.View());
                EXPECT_TRUE(framed.IsFrameUntouched());
                cv::Mat output(size, CV_8UC3, cv::Scalar::all(77));
                ExpectDrawnColors(labels, output);
            }
        }
    }
}

TEST(ColorLabel, ReachesTheLargestLabelsOfEachType)
{
    SeededGenerator const seeded(4712);
    cv::Mat output(1, 3, CV_8UC3);
    ExpectDrawnColors(Row<uchar>({255, 0, 1}), output);
    ExpectDrawnColors(Row<ushort>({65535, 0, 32768}), output);
    ExpectDrawnColors(Row<short>({32767, 0, 1}), output);
    ExpectDrawnColors(Row<int>({300000, 0, 70000}), output);
}

TEST(ColorLabel, ChangesColoursFromCallToCall)
{
    SeededGenerator const seeded(4713);
    cv::Mat const labels = DrawLabels({"1234567"});
    cv::Mat first(labels.size(), CV_8UC3);
    cv::Mat second(labels.size(), CV_8UC3);
    ASSERT_TRUE(ColorLabel(labels, first));
    ASSERT_TRUE(ColorLabel(labels, second));
    EXPECT_FALSE(EqualImages(first, second));
}

TEST(ColorLabel, PaintsAnAllZeroImageBlackWithoutDrawing)
{
    SeededGenerator const seeded(4714);
    auto const before = cv::theRNG().state;
    cv::Mat output(2, 3, CV_8UC3, cv::Scalar::all(9));
    ASSERT_TRUE(ColorLabel(DrawLabels({"...", "..."}), output));
    ExpectEqualImages(output, cv::Mat::zeros(2, 3, CV_8UC3));
    EXPECT_EQ(cv::theRNG().state, before);
}

TEST(ColorLabel, PaintsNegativeLabelsBlack)
{
    SeededGenerator const seeded(4715);
    cv::Mat output(1, 4, CV_8UC3, cv::Scalar::all(9));
    ExpectDrawnColors(Row<short>({-1, 2, -32768, 1}), output);
    ExpectDrawnColors(Row<int>({-1, 2, std::numeric_limits<int>::min(), 1}), output);
    ExpectDrawnColors(Row<int>({-1, -2, -3, -4}), output);
}

TEST(ColorLabel, PaintsLabelsBeyondTheHalfOf16BitsBlackWhereTheyAreReadAsSigned)
{
    SeededGenerator const seeded(4716);
    cv::Mat labels = Row<ushort>({2, 40000, 1, 32768, 65535});
    cv::Mat const asSigned(labels.size(), CV_16SC1, labels.data, labels.step);
    cv::Mat output(1, 5, CV_8UC3, cv::Scalar::all(9));
    // Six draws: two labels remain.
    cv::RNG replay = cv::theRNG();
    std::array<uchar, 6> draws;
    for (uchar & draw : draws)
    {
        draw = static_cast<uchar>(replay.next() % 255);
    }
    ASSERT_TRUE(ColorLabel(asSigned, output));
    EXPECT_EQ(cv::theRNG().state, replay.state);
    cv::Vec3b const black(0, 0, 0);
    cv::Vec3b const first(draws[0], draws[1], draws[2]);
    cv::Vec3b const second(draws[3], draws[4], draws[5]);
    ExpectEqualImages(output, Row<cv::Vec3b>({second, black, first, black, black}));
    ExpectDrawnColors(labels, output);
}

TEST(ColorLabel, AcceptsEmptyImages)
{
    for (cv::Size const size : {cv::Size(0, 0), cv::Size(0, 3), cv::Size(4, 0)})
    {
        cv::Mat output(size, CV_8UC3);
        EXPECT_TRUE(ColorLabel(cv::Mat(size, CV_32SC1), output));
    }
}

void ExpectRefused(cv::Mat const & labels, cv::Mat output)
{
    SCOPED_TRACE(cv::typeToString(labels.type()) + " to " + cv::typeToString(output.type()));
    auto const before = cv::theRNG().state;
    FillBytes(output, 0x33);
    Snapshot const snapshot(output);
    EXPECT_FALSE(ColorLabel(labels, output));
    EXPECT_TRUE(snapshot.IsUntouched());
    EXPECT_EQ(cv::theRNG().state, before);
}

TEST(ColorLabel, RefusesOtherTypesAndSizesWithoutDrawing)
{
    cv::Size const size(3, 2);
    for (int const depth : kLabelDepths)
    {
        for (int const channels : {2, 3, 4, 5})
        {
            cv::Mat labels(size, CV_MAKETYPE(depth, channels));
            FillBytes(labels, 1);
            ExpectRefused(labels, cv::Mat(size, CV_8UC3));
        }
        for (int const type : {CV_8UC1, CV_8UC2, CV_8UC4, CV_8SC3, CV_16UC3, CV_16SC3, CV_32SC3, CV_32FC3, CV_64FC3})
        {
            ExpectRefused(cv::Mat::ones(size, depth), cv::Mat(size, type));
        }
        for (cv::Size const other : {cv::Size(2, 3), cv::Size(3, 3), cv::Size(4, 2), cv::Size(6, 1), cv::Size()})
        {
            ExpectRefused(cv::Mat::ones(size, depth), cv::Mat(other, CV_8UC3));
        }
    }
    for (int const depth : kRefusedLabelDepths)
    {
        ExpectRefused(cv::Mat::zeros(size, depth), cv::Mat(size, CV_8UC3));
    }
}

} // namespace

} // namespace morvane::tests
