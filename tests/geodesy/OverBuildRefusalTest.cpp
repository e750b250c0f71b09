// What the floods over and under a mask refuse, and what is left of the output.
#include <morvane/geodesy/Reconstruction.h>

#include "support/AllTypes.h"
#include "support/ImageLiterals.h"
#include "support/Snapshot.h"

#include <gtest/gtest.h>

#include <array>
#include <utility>

namespace morvane::geodesy
{

namespace
{

using connexity::eConnexity4;
using connexity::eConnexity8Wrapped;

cv::Mat Filled(cv::Size size, int type, uchar byte = 3)
{
    cv::Mat image(size.height, size.width, type);
    tests::FillBytes(image, byte);
    return image;
}

/// Both floods refuse, and leave a full output and an empty one as they are.
void ExpectRefused(cv::Mat const & mask, cv::Mat const & marker)
{
    SCOPED_TRACE(cv::typeToString(mask.type()) + " and " + cv::typeToString(marker.type()));
    for (cv::Mat out : {cv::Mat(), Filled({4, 3}, CV_8UC1), Filled({2, 2}, CV_64FC2)})
    {
        tests::Snapshot const snapshot(out);
        EXPECT_FALSE(OverBuild(mask, marker, eConnexity4, out));
        EXPECT_TRUE(snapshot.IsUntouched());
        EXPECT_FALSE(UnderBuild(mask, marker, eConnexity8Wrapped, out));
        EXPECT_TRUE(snapshot.IsUntouched());
    }
}

TEST(OverBuildRefusal, MaskAndMarkerOfDifferentTypes)
{
    cv::Size const size(4, 3);
    using Types = std::pair<int, int>;
    for (auto const & [mask, marker] :
         {Types{CV_8UC1, CV_32SC1}, Types{CV_32FC1, CV_32SC1}, Types{CV_8UC1, CV_8UC3}, Types{CV_16UC1, CV_8UC1}})
    {
        ExpectRefused(Filled(size, mask), Filled(size, marker));
        ExpectRefused(Filled(size, marker), Filled(size, mask));
        // Before the sizes come into it.
        ExpectRefused(Filled(size, mask), Filled({3, 3}, marker));
    }
}

TEST(OverBuildRefusal, DepthsWithoutAFlood)
{
    for (int const depth : {CV_8S, CV_16U, CV_16S, CV_64F, CV_16F})
    {
        for (int const channels : {1, 3})
        {
            cv::Mat const image = Filled({4, 3}, CV_MAKETYPE(depth, channels));
            ExpectRefused(image, image);
            // Before the sizes come into it.
            ExpectRefused(image, Filled({3, 4}, image.type()));
        }
    }
}

TEST(OverBuildRefusal, EmptyImages)
{
    for (int const type : {CV_8UC1, CV_32SC1, CV_32FC1})
    {
        cv::Mat const image = Filled({4, 3}, type);
        for (cv::Size const none : {cv::Size(0, 0), cv::Size(4, 0), cv::Size(0, 3)})
        {
            cv::Mat const empty = Filled(none, type);
            ExpectRefused(empty, empty);
            ExpectRefused(image, empty);
            ExpectRefused(empty, image);
        }
    }
}

TEST(OverBuildRefusal, ImagesOfThreeDimensions)
{
    std::array const sizes{4, 3, 2};
    cv::Mat const block(3, sizes.data(), CV_8UC1, cv::Scalar(3));
    ExpectRefused(block, block);
    ExpectRefused(Filled({3, 4}, CV_8UC1), block);
    ExpectRefused(block, Filled({3, 4}, CV_8UC1));
}

TEST(OverBuildRefusal, SeveralChannels_AfterTheLargerOfBothIsWritten)
{
    for (int const depth : {CV_8U, CV_32S, CV_32F})
    {
        for (int const channels : {2, 3, 4, 5})
        {
            int const type = CV_MAKETYPE(depth, channels);
            cv::Mat const mask = tests::Draw({"159"}, CV_MAKETYPE(depth, 1));
            cv::Mat const marker = tests::Draw({"555"}, CV_MAKETYPE(depth, 1));
            auto const repeated = [channels](cv::Mat const & image) {
                cv::Mat many;
                cv::merge(std::vector<cv::Mat>(static_cast<std::size_t>(channels), image), many);
                return many;
            };
            cv::Mat out;
            EXPECT_FALSE(OverBuild(repeated(mask), repeated(marker), eConnexity4, out));
            ASSERT_EQ(out.type(), type);
            tests::ExpectEqualImages(out, repeated(tests::Draw({"559"}, depth)));
            EXPECT_FALSE(UnderBuild(repeated(mask), repeated(marker), eConnexity4, out));
            tests::ExpectEqualImages(out, repeated(tests::Draw({"155"}, depth)));
        }
    }
}

TEST(OverBuildRefusal, DifferentSizes_PassOnTheExceptionOfOpenCV)
{
    for (int const type : {CV_8UC1, CV_32SC1, CV_32FC1, CV_8UC3})
    {
        cv::Mat const mask = Filled({4, 3}, type);
        for (cv::Size const other : {cv::Size(3, 4), cv::Size(4, 2), cv::Size(5, 3), cv::Size(12, 1), cv::Size(1, 2)})
        {
            cv::Mat const marker = Filled(other, type);
            cv::Mat out;
            EXPECT_THROW(static_cast<void>(OverBuild(mask, marker, eConnexity4, out)), cv::Exception) << other;
            EXPECT_THROW(static_cast<void>(OverBuild(marker, mask, eConnexity4, out)), cv::Exception) << other;
            EXPECT_THROW(static_cast<void>(UnderBuild(mask, marker, eConnexity4, out)), cv::Exception) << other;
            EXPECT_THROW(static_cast<void>(UnderBuild(marker, mask, eConnexity4, out)), cv::Exception) << other;
        }
    }
}

/// The answer, false in place of an exception.
template <class Call>
bool AnswerOf(Call const & call)
{
    try
    {
        return call();
    }
    catch (cv::Exception const &)
    {
        return false;
    }
}

TEST(OverBuildRefusal, MaskOfOnePixelBelowALargerMarker_IsNotReadBesideThatPixel)
{
    // OpenCV takes an image of one pixel for a number, so that its own check of sizes lets this pass.
    for (int const type : {CV_8UC1, CV_32SC1, CV_32FC1})
    {
        cv::Mat const mask = tests::Draw({"5"}, type);
        cv::Mat const marker = tests::Draw({"18"}, type);
        cv::Mat out;
        EXPECT_FALSE(AnswerOf([&] { return OverBuild(mask, marker, eConnexity4, out); }));
        EXPECT_FALSE(AnswerOf([&] { return UnderBuild(mask, marker, eConnexity4, out); }));
    }
}

} // namespace

} // namespace morvane::geodesy
