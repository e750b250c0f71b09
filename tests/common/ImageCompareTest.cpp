#include <morvane/common/ImageCompare.h>

#include "support/AllTypes.h"
#include "support/CompareOracle.h"
#include "support/ImageLiterals.h"
#include "support/RandomImages.h"
#include "support/Rows.h"
#include "support/Snapshot.h"

#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <limits>
#include <vector>

namespace morvane::tests
{

namespace
{

constexpr std::array kCodes{0, 1, 2, 3, 4, 5, 6, -1};
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

/// Few empties, many extremes, few values: each comparison holds somewhere and fails elsewhere.
constexpr Mixture kOperands{.emptyShare = 0.2, .specialShare = 0.2, .alphabet = 3};

/// Another size with the same number of pixels, where there is one.
cv::Size Rearranged(Random & random, cv::Size size)
{
    int const total = size.width * size.height;
    if (total == 0) return {size.height, size.width};
    std::vector<int> widths;
    for (int width = 1; width <= total; ++width)
    {
        if (total % width == 0) widths.push_back(width);
    }
    int const width = widths[static_cast<std::size_t>(random.Below(static_cast<int>(widths.size())))];
    return {width, total / width};
}

/// Random images of one pixel count: some rearranged, some views with gaps.
class OperandMaker
{
public:
    OperandMaker(Random & random, cv::Size size)
        : m_random(random)
        , m_size(size)
    {}

    cv::Mat Image(int type)
    {
        cv::Size const size = m_random.Chance(0.2) ? Rearranged(m_random, m_size) : m_size;
        cv::Mat image = RandomImage(m_random, size, type, kOperands);
        if (m_random.Chance(0.6)) return image;
        return FramedImage(image).View();
    }

    double Number(cv::Mat const & left)
    {
        std::vector<double> numbers{0.0,  -0.0,        1.0,       2.0,        2.5,  -1.0,   44.0,  127.0,
                                    44.5, 300.7,       255.0,     256.0,      1e-5, 1e300,  -1e20, 2147483647.0,
                                    0.1,  2147483648., kInfinity, -kInfinity, kNaN, -32768, 3e4};
        if (!left.empty())
        {
            double const pixel = ElementAt(left, m_random.Below(left.rows), m_random.Below(left.cols));
            numbers.insert(numbers.end(), 8, pixel);
            numbers.push_back(std::nextafter(pixel, kInfinity));
            numbers.push_back(std::nextafter(pixel, -kInfinity));
        }
        return numbers[static_cast<std::size_t>(m_random.Below(static_cast<int>(numbers.size())))];
    }

    cv::Scalar Value()
    {
        cv::Scalar value;
        for (int channel = 0; channel < 4; ++channel)
        {
            value[channel] = (m_random.Unit() - 0.5) * std::ldexp(1.0, m_random.Below(40));
        }
        return value;
    }

    /// @param form bit 0: the right operand is an image, bits 1 and 2: so are the values
    Comparison Operands(int leftDepth, int outputType, int form)
    {
        Comparison comparison;
        comparison.left = Image(leftDepth);
        if ((form & 1) != 0)
        {
            comparison.right = Image(leftDepth);
        }
        else
        {
            comparison.right = Number(comparison.left);
        }
        if ((form & 2) != 0)
        {
            comparison.whenTrue = Image(outputType);
        }
        else
        {
            comparison.whenTrue = Value();
        }
        if ((form & 4) != 0)
        {
            comparison.whenFalse = Image(outputType);
        }
        else
        {
            comparison.whenFalse = Value();
        }
        return comparison;
    }

private:
    Random & m_random;
    cv::Size m_size;
};

/// Runs every code, with the output once plain and once a view.
void CheckAllCodes(Random & random, Comparison & comparison, cv::Size outputSize, int outputType)
{
    for (int const code : kCodes)
    {
        comparison.code = code;
        cv::Mat const before = RandomImage(random, outputSize, outputType);
        FramedImage framed(before);
        cv::Mat whole = CopyOf(before);
        cv::Mat & output = random.Chance(0.5) ? framed.View() : whole;
        cv::Mat const expected = OracleCompare(comparison, before);
        SCOPED_TRACE(Describe(comparison, output));
        uchar const * const data = output.data;
        ASSERT_TRUE(CallImageCompare(comparison, output));
        ASSERT_TRUE(EqualImages(output, expected));
        ASSERT_EQ(output.data, data);
        ASSERT_TRUE(framed.IsFrameUntouched());
    }
}

void CheckTypes(Random & random, int leftDepth, int outputType, cv::Size size)
{
    for (int form = 0; form < 8; ++form)
    {
        OperandMaker maker(random, size);
        Comparison comparison = maker.Operands(leftDepth, outputType, form);
        cv::Size const outputSize = random.Chance(0.2) ? Rearranged(random, size) : size;
        CheckAllCodes(random, comparison, outputSize, outputType);
        if (testing::Test::HasFatalFailure()) return;
    }
}

TEST(ImageCompare, AgreesWithThePlainFormForAllTypesCodesAndOperands)
{
    Random random(31);
    for (int const leftDepth : kDepths)
    {
        for (int const outputDepth : kDepths)
        {
            for (int const channels : kChannelCounts)
            {
                cv::Size const size(1 + random.Below(75), 1 + random.Below(9));
                CheckTypes(random, leftDepth, CV_MAKETYPE(outputDepth, channels), size);
                if (HasFatalFailure()) return;
            }
        }
    }
}

TEST(ImageCompare, AgreesWithThePlainFormOnAllWidthsUpToSeventy)
{
    Random random(32);
    for (int width = 0; width <= 70; ++width)
    {
        int const leftDepth = kDepths[static_cast<std::size_t>(random.Below(6))];
        int const outputDepth = kDepths[static_cast<std::size_t>(random.Below(6))];
        CheckTypes(random, leftDepth, leftDepth, {width, 3});
        CheckTypes(random, leftDepth, CV_MAKETYPE(outputDepth, 1 + width % 4), {width, 2});
        if (HasFatalFailure()) return;
    }
}

/// The selection of 1 and 0 as a drawing of one row.
void ExpectSelection(cv::Mat const & left, int code, RightOperand const & right, char const * expected)
{
    SCOPED_TRACE("code " + std::to_string(code));
    cv::Mat output(left.size(), CV_8UC1, cv::Scalar(7));
    EXPECT_TRUE(CallImageCompare({left, code, right, cv::Scalar(1), cv::Scalar(0)}, output));
    ExpectDrawn(output, {expected});
}

TEST(ImageCompare, ComparesTheLeftOperandWithTheRightByTheCode)
{
    cv::Mat const left = Draw<short>({"123"});
    cv::Mat const right = Draw<short>({"222"});
    std::array const expected{".1.", "..1", ".11", "1..", "11.", "1.1"};
    for (int code = 0; code < 6; ++code)
    {
        ExpectSelection(left, code, right, expected[static_cast<std::size_t>(code)]);
        ExpectSelection(left, code, 2.0, expected[static_cast<std::size_t>(code)]);
    }
}

TEST(ImageCompare, WritesTheFalseOperandEverywhereForOtherCodes)
{
    cv::Mat const left = Draw<uchar>({"123"});
    for (int const code : {6, 7, 8, -1, 256, 1 << 16, std::numeric_limits<int>::max(), std::numeric_limits<int>::min()})
    {
        ExpectSelection(left, code, left, "...");
        ExpectSelection(left, code, 2.0, "...");
    }
}

template <class T>
void ExpectNaNComparesOnlyUnequal()
{
    T const nan = std::numeric_limits<T>::quiet_NaN();
    cv::Mat const left = Row<T>({nan, nan, T(1), T(1)});
    cv::Mat const right = Row<T>({nan, T(1), nan, T(1)});
    std::array const images{"...1", "....", "...1", "....", "...1", "111."};
    std::array const numbers{"..11", "....", "..11", "....", "..11", "11.."};
    for (int code = 0; code < 6; ++code)
    {
        ExpectSelection(left, code, right, images[static_cast<std::size_t>(code)]);
        ExpectSelection(left, code, 1.0, numbers[static_cast<std::size_t>(code)]);
        ExpectSelection(left, code, kNaN, code == 5 ? "1111" : "....");
    }
}

TEST(ImageCompare, TakesTheTrueOperandAtNaNOnlyForUnequal)
{
    ExpectNaNComparesOnlyUnequal<float>();
    ExpectNaNComparesOnlyUnequal<double>();
    for (int code = 0; code < 6; ++code)
    {
        ExpectSelection(Draw<uchar>({".1"}), code, kNaN, code == 5 ? "11" : "..");
        ExpectSelection(Draw<int>({".1"}), code, kNaN, code == 5 ? "11" : "..");
    }
}

TEST(ImageCompare, OrdersInfinitiesBeyondAllNumbersAndHoldsBothZerosEqual)
{
    float const infinity = std::numeric_limits<float>::infinity();
    cv::Mat const left = Row<float>({-infinity, -0.0F, 0.0F, 3e38F, infinity});
    ExpectSelection(left, 0, 0.0, ".11..");
    ExpectSelection(left, 0, -0.0, ".11..");
    ExpectSelection(left, 5, -0.0, "1..11");
    ExpectSelection(left, 1, 1e300, "....1");
    ExpectSelection(left, 4, -kInfinity, "1....");
    ExpectSelection(left, 2, kInfinity, "....1");
    ExpectSelection(left, 3, kInfinity, "1111.");
    ExpectSelection(Draw<uchar>({".z"}), 3, kInfinity, "11");
    ExpectSelection(Draw<int>({".z"}), 1, -kInfinity, "11");
}

TEST(ImageCompare, ComparesIntegersWithFractionsAndNumbersOutsideTheirRange)
{
    cv::Mat const bytes = Row<uchar>({0, 2, 3, 44, 255});
    ExpectSelection(bytes, 0, 2.5, ".....");
    ExpectSelection(bytes, 1, 2.5, "..111");
    ExpectSelection(bytes, 3, 2.5, "11...");
    ExpectSelection(bytes, 0, 300.0, ".....");
    ExpectSelection(bytes, 3, 256.0, "11111");
    ExpectSelection(bytes, 1, -1.0, "11111");
    ExpectSelection(bytes, 1, -0.5, "11111");
    ExpectSelection(bytes, 2, 254.5, "....1");
    ExpectSelection(bytes, 4, 1e300, "11111");
    cv::Mat const words = Row<ushort>({0, 1, 32768, 65535});
    ExpectSelection(words, 1, 32767.5, "..11");
    ExpectSelection(words, 3, 65536.0, "1111");
    ExpectSelection(words, 0, -1.0, "....");
    cv::Mat const shorts = Row<short>({-32768, -1, 0, 32767});
    ExpectSelection(shorts, 2, -1.5, ".111");
    ExpectSelection(shorts, 0, 65535.0, "....");
    ExpectSelection(shorts, 1, -32768.5, "1111");
}

TEST(ImageCompare, ComparesLargeIntegersExactly)
{
    cv::Mat const left = Row<int>({INT_MIN, INT_MIN + 1, 16777216, 16777217, INT_MAX - 1, INT_MAX});
    ExpectSelection(left, 0, 16777217.0, "...1..");
    ExpectSelection(left, 1, 16777216.0, "...111");
    ExpectSelection(left, 0, 2147483647.0, ".....1");
    ExpectSelection(left, 3, 2147483647.0, "11111.");
    ExpectSelection(left, 2, 2147483647.5, "......");
    ExpectSelection(left, 3, 2147483648.0, "111111");
    ExpectSelection(left, 4, -2147483648.0, "1.....");
    ExpectSelection(left, 4, -2147483648.5, "......");
    ExpectSelection(left, 0, 4294967296.0 + 16777216.0, "......");
    cv::Mat const right = Row<int>({INT_MAX, INT_MIN, 16777217, 16777216, INT_MAX, INT_MIN});
    ExpectSelection(left, 1, right, ".1.1.1");
    ExpectSelection(left, 3, right, "1.1.1.");
}

TEST(ImageCompare, ComparesSinglePrecisionWithDoublesExactly)
{
    cv::Mat const left = Row<float>({0.1F, 0.5F, 16777216.0F});
    ExpectSelection(left, 0, 0.1, "...");
    ExpectSelection(left, 1, 0.1, "111");
    ExpectSelection(left, 0, static_cast<double>(0.1F), "1..");
    ExpectSelection(left, 0, 0.5, ".1.");
    ExpectSelection(left, 3, 16777217.0, "111");
    ExpectSelection(left, 1, std::nextafter(0.5, 0.0), ".11");
}

TEST(ImageCompare, CopiesTheBytesOfSelectedPixels)
{
    // A NaN with a payload and a negative zero must come through as they are.
    cv::Mat whenTrue(1, 2, CV_32FC1);
    whenTrue.ptr<std::uint32_t>()[0] = 0xFFC12345U;
    whenTrue.ptr<std::uint32_t>()[1] = 0x80000000U;
    cv::Mat output(1, 2, CV_32FC1, cv::Scalar(1));
    EXPECT_TRUE(common::ImageCompare(Draw<uchar>({"12"}), 5, 0.0, whenTrue, cv::Scalar(1), output));
    ExpectEqualImages(output, whenTrue);
}

TEST(ImageCompare, CutsScalarsToTheElementTypeOfTheOutput)
{
    struct Case
    {
        double value;
        double in8U, in16U, in16S, in32S;
    };
    constexpr double kLeast = -2147483648.0;
    for (Case const & c : std::vector<Case>{
             {300.7, 44, 300, 300, 300},
             {1.9, 1, 1, 1, 1},
             {2.9, 2, 2, 2, 2},
             {-0.9, 0, 0, 0, 0},
             {-1.0, 255, 65535, -1, -1},
             {-1.9, 255, 65535, -1, -1},
             {255.99, 255, 255, 255, 255},
             {256.0, 0, 256, 256, 256},
             {40000.5, 64, 40000, -25536, 40000},
             {65537.0, 1, 1, 1, 65537},
             {2147483647.9, 255, 65535, -1, 2147483647},
             {2147483648.0, 0, 0, 0, kLeast},
             {4294967301.0, 0, 0, 0, kLeast},
             {-2147483648.9, 0, 0, 0, kLeast},
             {-2147483649.0, 0, 0, 0, kLeast},
             {1e300, 0, 0, 0, kLeast},
             {kInfinity, 0, 0, 0, kLeast},
             {-kInfinity, 0, 0, 0, kLeast},
             {kNaN, 0, 0, 0, kLeast}})
    {
        SCOPED_TRACE(c.value);
        cv::Mat const left = Draw<uchar>({"12"});
        std::array const expected{c.in8U, c.in16U, c.in16S, c.in32S};
        for (std::size_t index = 0; index < expected.size(); ++index)
        {
            cv::Mat output(1, 2, kDepths[index], cv::Scalar(9));
            EXPECT_TRUE(common::ImageCompare(left, 0, 1.0, cv::Scalar(c.value), cv::Scalar(3), output));
            EXPECT_EQ(ElementAt(output, 0, 0), expected[index]);
            EXPECT_EQ(ElementAt(output, 0, 1), 3);
            EXPECT_TRUE(common::ImageCompare(left, 0, 1.0, cv::Scalar(3), cv::Scalar(c.value), output));
            EXPECT_EQ(ElementAt(output, 0, 0), 3);
            EXPECT_EQ(ElementAt(output, 0, 1), expected[index]);
        }
    }
}

TEST(ImageCompare, ConvertsScalarsPlainlyForFloatingPointOutputs)
{
    cv::Mat const left = Draw<uchar>({"12"});
    cv::Mat single(1, 2, CV_32FC1, cv::Scalar(9));
    EXPECT_TRUE(common::ImageCompare(left, 0, 1.0, cv::Scalar(300.7), cv::Scalar(-kInfinity), single));
    EXPECT_EQ(single.at<float>(0, 0), 300.7F);
    EXPECT_EQ(single.at<float>(0, 1), -std::numeric_limits<float>::infinity());
    cv::Mat twice(1, 2, CV_64FC1, cv::Scalar(9));
    EXPECT_TRUE(common::ImageCompare(left, 0, 1.0, cv::Scalar(1e300), cv::Scalar(kNaN), twice));
    EXPECT_EQ(twice.at<double>(0, 0), 1e300);
    EXPECT_TRUE(std::isnan(twice.at<double>(0, 1)));
}

TEST(ImageCompare, GivesEachChannelItsComponentOfAScalar)
{
    cv::Mat const left = Draw<uchar>({"12"});
    for (int const channels : kChannelCounts)
    {
        cv::Mat output(1, 2, CV_MAKETYPE(CV_16S, channels), cv::Scalar::all(9));
        EXPECT_TRUE(common::ImageCompare(left, 0, 1.0, cv::Scalar(1, 2, 3, 4), cv::Scalar(-5, -6, -7, -8), output));
        for (int channel = 0; channel < channels; ++channel)
        {
            EXPECT_EQ(ElementAt(output, 0, 0, channel), 1 + channel);
            EXPECT_EQ(ElementAt(output, 0, 1, channel), -5 - channel);
        }
    }
}

} // namespace

} // namespace morvane::tests
