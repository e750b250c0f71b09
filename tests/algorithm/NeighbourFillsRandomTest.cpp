// The fills from neighbours against their plain forms, on random images.
#include <morvane/algorithm/Filling.h>

#include "support/AllTypes.h"
#include "support/AnyNumbers.h"
#include "support/FillingOracle.h"
#include "support/ImageLiterals.h"
#include "support/MeasureOracle.h"
#include "support/RandomImages.h"

#include <gtest/gtest.h>
#include <opencv2/core.hpp>

#include <array>

namespace morvane::algorithm
{

namespace
{

using tests::FramedImage;
using tests::Random;

/// Sizes of every kind, narrow ones above all.
cv::Size SomeSize(Random & random)
{
    switch (random.Below(4))
    {
    case 0:
        return {1 + random.Below(5), 1 + random.Below(20)};
    case 1:
        return {1 + random.Below(200), 1 + random.Below(4)};
    default:
        return tests::RandomSize(random, 24);
    }
}

/// A mask of some density; in floating point, its full pixels may be NaN and its empty ones -0.
cv::Mat SomeMask(Random & random, cv::Size size, int type)
{
    cv::Mat mask = tests::RandomImage(random, size, type, {random.Unit(), 0.2, 3});
    for (int y = 0; y < mask.rows; ++y)
    {
        for (int x = 0; x < mask.cols; ++x)
        {
            if (tests::ElementAt(mask, y, x) == 0.0 && random.Chance(0.3)) tests::SetElement(mask, y, x, 0, -0.0);
        }
    }
    return mask;
}

TEST(FillImageWithMeanRandom, AgreesWithThePlainForm)
{
    Random random(8411);
    for (int const depth : tests::kDepths)
    {
        for (int shape = 0; shape < tests::kConnexityCount; ++shape)
        {
            for (int repeat = 0; repeat < 12; ++repeat)
            {
                cv::Size const size = SomeSize(random);
                SCOPED_TRACE(tests::Case(depth, size, shape));
                FramedImage image(tests::AnyNumbers(random, size, depth));
                FramedImage mask(SomeMask(random, size, depth));
                FramedImage out(tests::AnyNumbers(random, size, depth));
                cv::Mat const expected = tests::OracleMeanFill(image.View(), mask.View(), shape, out.View());
                ASSERT_TRUE(FillImageWithMean(image.View(), mask.View(), out.View(), tests::Shape(shape)));
                ASSERT_TRUE(tests::EqualImages(tests::WithOneNaN(out.View()), tests::WithOneNaN(expected)));
                ASSERT_TRUE(out.IsFrameUntouched());
                // In place.
                ASSERT_TRUE(FillImageWithMean(image.View(), mask.View(), image.View(), tests::Shape(shape)));
                ASSERT_TRUE(tests::EqualImages(tests::WithOneNaN(image.View()), tests::WithOneNaN(expected)));
                ASSERT_TRUE(image.IsFrameUntouched());
            }
        }
    }
}

TEST(FillImageWithMeanRandom, WithTheImageAsItsMask_AgreesWithThePlainForm)
{
    Random random(8412);
    for (int const depth : tests::kDepths)
    {
        for (int shape = 0; shape < tests::kConnexityCount; ++shape)
        {
            for (int repeat = 0; repeat < 6; ++repeat)
            {
                cv::Mat const image = SomeMask(random, SomeSize(random), depth);
                SCOPED_TRACE(tests::Case(depth, image.size(), shape));
                cv::Mat out(image.size(), depth);
                tests::FillBytes(out, 0x5A);
                cv::Mat const expected = tests::OracleMeanFill(image, image, shape, out);
                ASSERT_TRUE(FillImageWithMean(image, image, out, tests::Shape(shape)));
                ASSERT_TRUE(tests::EqualImages(tests::WithOneNaN(out), tests::WithOneNaN(expected)));
            }
        }
    }
}

TEST(FillImageWithMeanRandom, KeepsTheBitsOfWhatTheMaskHolds)
{
    Random random(8413);
    for (int const depth : tests::kDepths)
    {
        cv::Mat const image = tests::AnyNumbers(random, {50, 40}, depth);
        cv::Mat const full(image.size(), depth, cv::Scalar(1));
        cv::Mat out = tests::AnyNumbers(random, image.size(), depth);
        ASSERT_TRUE(FillImageWithMean(image, full, out, connexity::eConnexity8));
        EXPECT_TRUE(tests::EqualImages(out, image));
    }
}

TEST(FillImageWithMeanRandom, IntoSeveralChannels_AgreesWithThePlainForm)
{
    Random random(8414);
    for (int const depth : tests::kDepths)
    {
        for (int const maskChannels : tests::kChannelCounts)
        {
            for (int const outChannels : tests::kChannelCounts)
            {
                cv::Size const size = tests::RandomSize(random, 20);
                SCOPED_TRACE(tests::Case(CV_MAKETYPE(depth, outChannels), size, maskChannels));
                cv::Mat const image = tests::AnyNumbers(random, size, depth);
                cv::Mat const mask = tests::RandomImage(random, size, CV_MAKETYPE(depth, maskChannels), {0.6, 0.1, 3});
                cv::Mat out = tests::AnyNumbers(random, size, CV_MAKETYPE(depth, outChannels));
                cv::Mat const expected = tests::OracleMeanFill(image, mask, connexity::eConnexity8, out);
                ASSERT_TRUE(FillImageWithMean(image, mask, out, connexity::eConnexity8));
                ASSERT_TRUE(tests::EqualImages(tests::WithOneNaN(out), tests::WithOneNaN(expected)));
            }
        }
    }
}

using Operator = bool (*)(cv::Mat const & image, cv::Mat & out, connexity::eConnexityType connexity);

/// The two medians, in the order of a bool.
constexpr std::array<Operator, 2> kMedians{FillImageWithMedian, FillImageWithMedianNoZero};

/// Few holes or few pixels; one kind of NaN and of zero, as sorting does not tell the others apart.
cv::Mat ImageWithHoles(Random & random, cv::Size size, int type)
{
    cv::Mat image = tests::WithOneNaN(tests::RandomImage(random, size, type, {random.Unit(), 0.3 * random.Unit(), 9}));
    for (int y = 0; y < image.rows; ++y)
    {
        for (int x = 0; x < image.cols; ++x)
        {
            if (tests::ElementAt(image, y, x) == 0.0) tests::SetElement(image, y, x, 0, 0.0);
        }
    }
    return image;
}

TEST(FillImageWithMedianRandom, AgreesWithThePlainForm)
{
    Random random(8415);
    for (bool const closeUp : {false, true})
    {
        for (int const depth : tests::kDepths)
        {
            for (int shape = 0; shape < tests::kConnexityCount; ++shape)
            {
                for (int repeat = 0; repeat < 12; ++repeat)
                {
                    cv::Size const size = SomeSize(random);
                    SCOPED_TRACE(tests::Case(depth, size, shape));
                    FramedImage image(ImageWithHoles(random, size, depth));
                    FramedImage out(tests::AnyNumbers(random, size, depth));
                    cv::Mat const before = image.View().clone();
                    cv::Mat const expected = tests::OracleMedianFill(image.View(), shape, closeUp, out.View());
                    ASSERT_TRUE(kMedians[closeUp ? 1 : 0](image.View(), out.View(), tests::Shape(shape)));
                    ASSERT_TRUE(tests::EqualImages(out.View(), expected));
                    ASSERT_TRUE(out.IsFrameUntouched());
                    ASSERT_TRUE(size.empty() || tests::EqualImages(image.View(), before));
                }
            }
        }
    }
}

TEST(FillImageWithMedianRandom, KeepsTheBitsOfWhatIsNotZero)
{
    Random random(8416);
    for (int const depth : tests::kDepths)
    {
        for (Operator const fill : kMedians)
        {
            cv::Mat image = tests::AnyNumbers(random, {50, 40}, depth);
            image.setTo(3, image == 0);
            cv::Mat out = tests::AnyNumbers(random, image.size(), depth);
            ASSERT_TRUE(fill(image, out, connexity::eConnexity8));
            EXPECT_TRUE(tests::EqualImages(out, image));
        }
    }
}

TEST(FillImageWithMedianRandom, IntoSeveralChannels_AgreesWithThePlainForm)
{
    Random random(8417);
    for (bool const closeUp : {false, true})
    {
        for (int const depth : tests::kDepths)
        {
            for (int const channels : tests::kChannelCounts)
            {
                cv::Mat const image = ImageWithHoles(random, tests::RandomSize(random, 20), depth);
                SCOPED_TRACE(tests::Case(CV_MAKETYPE(depth, channels), image.size(), 4));
                FramedImage out(tests::AnyNumbers(random, image.size(), CV_MAKETYPE(depth, channels)));
                cv::Mat const expected = tests::OracleMedianFill(image, 4, closeUp, out.View());
                ASSERT_TRUE(kMedians[closeUp ? 1 : 0](image, out.View(), connexity::eConnexity8Wrapped));
                ASSERT_TRUE(tests::EqualImages(out.View(), expected));
                ASSERT_TRUE(out.IsFrameUntouched());
            }
        }
    }
}

} // namespace

} // namespace morvane::algorithm
