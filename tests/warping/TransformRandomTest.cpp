// Warping against one pixel after the other.
#include <morvane/warping/Warping.h>

#include "support/AllTypes.h"
#include "support/AnyNumbers.h"
#include "support/ImageLiterals.h"
#include "support/RandomImages.h"
#include "support/Snapshot.h"
#include "support/WarpingOracle.h"

#include <gtest/gtest.h>
#include <opencv2/core.hpp>

#include <algorithm>
#include <array>

namespace morvane::warping
{

namespace
{

using tests::FramedImage;
using tests::Random;
using tests::WarpRule;

/// A source of any values or of few, with some 0.
cv::Mat RandomSource(Random & random, cv::Size size, int depth)
{
    return random.Chance(0.5) ? tests::AnyNumbers(random, size, depth) : tests::RandomImage(random, size, depth);
}

/// Calls an operator on images without gaps and on views, and expects what the plain form gives.
void ExpectPlain(
    bool (*transform)(cv::Mat const &, cv::Mat &, cv::Mat const &), cv::Mat const & source, cv::Mat const & before,
    cv::Mat const & matrix, WarpRule rule)
{
    cv::Mat const expected = tests::OracleWarped(source, before, matrix, rule);
    cv::Mat out = tests::CopyOf(before);
    ASSERT_TRUE(transform(source, out, matrix)) << matrix;
    ASSERT_TRUE(tests::EqualImages(out, expected)) << matrix;
    if (before.empty()) return;
    FramedImage framedSource(source);
    FramedImage framedOut(before);
    ASSERT_TRUE(transform(framedSource.View(), framedOut.View(), matrix));
    ASSERT_TRUE(tests::EqualImages(framedOut.View(), expected)) << matrix;
    ASSERT_TRUE(framedOut.IsFrameUntouched());
    ASSERT_TRUE(framedSource.IsFrameUntouched());
}

/// The size of the output: that of the source, one near it, or any.
cv::Size RandomOutSize(Random & random, cv::Size size)
{
    int const kind = random.Below(4);
    if (kind < 2) return size;
    if (kind == 2)
        return {std::max(size.width + random.Below(7) - 3, 0), std::max(size.height + random.Below(7) - 3, 0)};
    return tests::RandomSize(random, 90);
}

TEST(TransformRandom, AgreesWithThePlainForm)
{
    Random random(102001);
    for (int const depth : tests::kDepths)
    {
        for (int repeat = 0; repeat < 250; ++repeat)
        {
            // Wider than the blocks of 64 in which columns are taken, now and then.
            cv::Size const size = tests::RandomSize(random, repeat % 3 == 0 ? 150 : 30);
            cv::Size const outSize = RandomOutSize(random, size);
            SCOPED_TRACE(tests::Case(depth, size, repeat));
            cv::Mat const source = RandomSource(random, size, depth);
            cv::Mat const matrix = tests::RandomAffine(random, size);
            cv::Mat const prefilled = RandomSource(random, outSize, depth);
            cv::Mat const clear = cv::Mat::zeros(outSize, depth);
            for (cv::Mat const & before : {prefilled, clear, cv::Mat()})
            {
                ASSERT_NO_FATAL_FAILURE(ExpectPlain(Transform, source, before, matrix, WarpRule::FillsEmpty));
                if (depth != CV_8U && depth != CV_16U && depth != CV_32S) continue;
                ASSERT_NO_FATAL_FAILURE(ExpectPlain(TransformBinary, source, before, matrix, WarpRule::MergesBits));
            }
        }
    }
}

TEST(TransformRandom, ASecondTransform_FillsOnlyWhatTheFirstLeft)
{
    Random random(102002);
    for (int repeat = 0; repeat < 50; ++repeat)
    {
        cv::Size const size(1 + random.Below(20), 1 + random.Below(20));
        cv::Mat const first = tests::RandomImage(random, size, CV_16UC1);
        cv::Mat const second = tests::RandomImage(random, size, CV_16UC1);
        cv::Mat out;
        ASSERT_TRUE(Transform(first, out, tests::RandomAffine(random, size)));
        cv::Mat const before = out.clone();
        ASSERT_TRUE(Transform(second, out, tests::RandomAffine(random, size)));
        cv::Mat kept = cv::Mat::zeros(size, CV_16UC1);
        out.copyTo(kept, before != 0);
        ASSERT_TRUE(tests::EqualImages(kept, before));
    }
}

} // namespace

} // namespace morvane::warping
