// What ImageCompare accepts and refuses: types, channels, totals, other shapes, shared matrices.
#include <morvane/common/ImageCompare.h>

#include "support/AllTypes.h"
#include "support/CompareOracle.h"
#include "support/ImageLiterals.h"
#include "support/RandomImages.h"
#include "support/Snapshot.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

namespace morvane::tests
{

namespace
{

constexpr int kFormCount = 8;

cv::Mat Filled(cv::Size size, int type, uchar byte)
{
    cv::Mat image(size, type);
    FillBytes(image, byte);
    return image;
}

/// The arguments of a call, which a case below spoils in one point.
struct Call
{
    Comparison comparison;
    cv::Mat output;

    cv::Mat * Right() { return std::get_if<cv::Mat>(&comparison.right); }
    cv::Mat * WhenTrue() { return std::get_if<cv::Mat>(&comparison.whenTrue); }
    cv::Mat * WhenFalse() { return std::get_if<cv::Mat>(&comparison.whenFalse); }
};

/// @param form bit 0: the right operand is an image, bits 1 and 2: so are the values
Call MakeCall(int form, cv::Size size, int leftType, int outputType)
{
    Call call;
    call.comparison.left = Filled(size, leftType, 1);
    call.comparison.code = 0;
    call.comparison.right = 1.0;
    if ((form & 1) != 0) call.comparison.right = Filled(size, leftType, 1);
    call.comparison.whenTrue = cv::Scalar(5);
    if ((form & 2) != 0) call.comparison.whenTrue = Filled(size, outputType, 2);
    call.comparison.whenFalse = cv::Scalar(6);
    if ((form & 4) != 0) call.comparison.whenFalse = Filled(size, outputType, 3);
    call.output = Filled(size, outputType, 0x5A);
    return call;
}

void ExpectRefused(Call & call)
{
    SCOPED_TRACE(Describe(call.comparison, call.output));
    Snapshot const snapshot(call.output);
    EXPECT_FALSE(CallImageCompare(call.comparison, call.output));
    EXPECT_TRUE(snapshot.IsUntouched());
}

void ExpectAccepted(Call & call)
{
    SCOPED_TRACE(Describe(call.comparison, call.output));
    cv::Mat const expected = OracleCompare(call.comparison, call.output);
    Snapshot const snapshot(call.output);
    EXPECT_TRUE(CallImageCompare(call.comparison, call.output));
    ExpectEqualImages(call.output, expected);
    EXPECT_EQ(bool(snapshot.IsUntouched()), call.output.empty());
}

/// Spoils an operand, null where the form has none; false: nothing to spoil.
bool Spoil(cv::Mat * operand, cv::Size size, int type)
{
    if (operand == nullptr) return false;
    *operand = Filled(size, type, 1);
    return true;
}

TEST(ImageCompare, AcceptsEachFormThatTheRefusalsBelowSpoil)
{
    for (int form = 0; form < kFormCount; ++form)
    {
        for (cv::Size const size : {cv::Size(4, 3), cv::Size(0, 3), cv::Size(4, 0), cv::Size(0, 0)})
        {
            Call call = MakeCall(form, size, CV_16SC1, CV_32SC2);
            ExpectAccepted(call);
        }
    }
}

TEST(ImageCompare, RefusesOperandsOfAnotherTotal)
{
    cv::Size const size(4, 3);
    for (cv::Size const other : {cv::Size(4, 4), cv::Size(5, 3), cv::Size(3, 3), cv::Size(12, 0), cv::Size(0, 0)})
    {
        for (int form = 0; form < kFormCount; ++form)
        {
            Call left = MakeCall(form, size, CV_16SC1, CV_32SC2);
            if (Spoil(&left.comparison.left, other, CV_16SC1)) ExpectRefused(left);
            Call right = MakeCall(form, size, CV_16SC1, CV_32SC2);
            if (Spoil(right.Right(), other, CV_16SC1)) ExpectRefused(right);
            Call whenTrue = MakeCall(form, size, CV_16SC1, CV_32SC2);
            if (Spoil(whenTrue.WhenTrue(), other, CV_32SC2)) ExpectRefused(whenTrue);
            Call whenFalse = MakeCall(form, size, CV_16SC1, CV_32SC2);
            if (Spoil(whenFalse.WhenFalse(), other, CV_32SC2)) ExpectRefused(whenFalse);
            Call output = MakeCall(form, size, CV_16SC1, CV_32SC2);
            if (Spoil(&output.output, other, CV_32SC2)) ExpectRefused(output);
        }
    }
}

TEST(ImageCompare, RefusesAnOutputThatWasNeverMade)
{
    cv::Mat output;
    EXPECT_FALSE(common::ImageCompare(Draw<uchar>({"12"}), 0, 1.0, cv::Scalar(1), cv::Scalar(2), output));
    EXPECT_TRUE(output.empty());
}

/// Runs @p check for every form on an image with pixels and on empty ones, whose types decide all the same.
void ForEachFormAndSize(std::function<void(int form, cv::Size size)> const & check)
{
    for (int form = 0; form < kFormCount; ++form)
    {
        for (cv::Size const size : {cv::Size(4, 3), cv::Size(0, 3), cv::Size(0, 0)})
        {
            check(form, size);
        }
    }
}

TEST(ImageCompare, RefusesSeveralChannelsInTheComparedImages)
{
    ForEachFormAndSize([](int form, cv::Size size) {
        for (int const channels : {2, 3, 4, 5})
        {
            int const type = CV_MAKETYPE(CV_16S, channels);
            Call both = MakeCall(form, size, type, CV_32SC2);
            ExpectRefused(both);
            Call left = MakeCall(form, size, CV_16SC1, CV_32SC2);
            if (Spoil(&left.comparison.left, size, type)) ExpectRefused(left);
            Call right = MakeCall(form, size, CV_16SC1, CV_32SC2);
            if (Spoil(right.Right(), size, type)) ExpectRefused(right);
        }
    });
}

TEST(ImageCompare, RefusesValuesWithOtherChannelsThanTheOutput)
{
    ForEachFormAndSize([](int form, cv::Size size) {
        for (int const channels : {1, 3, 4, 5})
        {
            int const type = CV_MAKETYPE(CV_32S, channels);
            Call whenTrue = MakeCall(form, size, CV_16SC1, CV_32SC2);
            if (Spoil(whenTrue.WhenTrue(), size, type)) ExpectRefused(whenTrue);
            Call whenFalse = MakeCall(form, size, CV_16SC1, CV_32SC2);
            if (Spoil(whenFalse.WhenFalse(), size, type)) ExpectRefused(whenFalse);
            Call output = MakeCall(form, size, CV_16SC1, CV_32SC2);
            bool const hasImages = output.WhenTrue() != nullptr || output.WhenFalse() != nullptr;
            if (hasImages && Spoil(&output.output, size, type)) ExpectRefused(output);
        }
    });
}

TEST(ImageCompare, RefusesDepthsThatDoNotMatch)
{
    ForEachFormAndSize([](int form, cv::Size size) {
        for (int const depth : {CV_8U, CV_8S, CV_16U, CV_32F, CV_64F, CV_16F})
        {
            Call right = MakeCall(form, size, CV_16SC1, CV_32SC2);
            if (Spoil(right.Right(), size, depth)) ExpectRefused(right);
            Call whenTrue = MakeCall(form, size, CV_16SC1, CV_32SC2);
            if (Spoil(whenTrue.WhenTrue(), size, CV_MAKETYPE(depth, 2))) ExpectRefused(whenTrue);
            Call whenFalse = MakeCall(form, size, CV_16SC1, CV_32SC2);
            if (Spoil(whenFalse.WhenFalse(), size, CV_MAKETYPE(depth, 2))) ExpectRefused(whenFalse);
            Call output = MakeCall(form, size, CV_16SC1, CV_32SC2);
            bool const hasImages = output.WhenTrue() != nullptr || output.WhenFalse() != nullptr;
            if (hasImages && Spoil(&output.output, size, CV_MAKETYPE(depth, 2))) ExpectRefused(output);
        }
    });
}

TEST(ImageCompare, RefusesDepthsAndChannelCountsThatTheLibraryDoesNotKnow)
{
    ForEachFormAndSize([](int form, cv::Size size) {
        for (int const depth : kRefusedDepths)
        {
            Call left = MakeCall(form, size, depth, CV_32SC2);
            ExpectRefused(left);
            for (int const channels : kChannelCounts)
            {
                Call output = MakeCall(form, size, CV_16SC1, CV_MAKETYPE(depth, channels));
                ExpectRefused(output);
            }
        }
        for (int const channels : {5, 6, 8, 512})
        {
            Call output = MakeCall(form, size, CV_16SC1, CV_MAKETYPE(CV_32S, channels));
            ExpectRefused(output);
        }
    });
}

TEST(ImageCompare, AcceptsEmptyImagesOfDifferentShapes)
{
    cv::Mat const left(0, 5, CV_32FC1);
    cv::Mat const right(7, 0, CV_32FC1);
    cv::Mat output(3, 0, CV_8UC3);
    EXPECT_TRUE(common::ImageCompare(left, 0, right, cv::Scalar(1), cv::Mat(0, 2, CV_8UC3), output));
    EXPECT_EQ(output.rows, 3);
    cv::Mat nothing;
    EXPECT_TRUE(common::ImageCompare(cv::Mat(), 0, cv::Mat(), cv::Mat(), cv::Mat(), nothing));
}

TEST(ImageCompare, ReadsImagesOfOtherShapesByRasterNumber)
{
    cv::Mat const left = Draw<uchar>({"123456", "789abc"});
    cv::Mat output(3, 4, CV_8UC1);
    EXPECT_TRUE(common::ImageCompare(left, 1, 6.0, cv::Scalar(1), cv::Scalar(0), output));
    ExpectDrawn(output, {"....", "..11", "1111"});
    cv::Mat const right = Draw<uchar>({"1", "9", "3", "9", "5", "9", "7", "9", "9", "9", "b", "9"});
    EXPECT_TRUE(common::ImageCompare(
        left, 0, right, Draw<uchar>({"abcdefghijkl"}), Draw<uchar>({"111", "222", "333", "444"}), output));
    ExpectDrawn(output, {"a1c2", "e2g3", "i4k4"});
    cv::Mat column(12, 1, CV_8UC1);
    EXPECT_TRUE(common::ImageCompare(left, 3, right, cv::Scalar(1), left, column));
    ExpectDrawn(column.t(), {"113151719abc"});
}

} // namespace

} // namespace morvane::tests
