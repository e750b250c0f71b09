// Floods over and under masks with NaN and zeros of both signs, where the order of equal priorities shows.
#include <morvane/geodesy/Reconstruction.h>

#include "support/AllTypes.h"
#include "support/ImageLiterals.h"
#include "support/RandomImages.h"
#include "support/ReconstructionOracle.h"

#include <gtest/gtest.h>

#include <limits>

namespace morvane::tests
{

namespace
{

TEST(OverBuildNaN, FloodTakesEqualPrioritiesAsAHeapGivesThem)
{
    Random random(71);
    float const nan = std::numeric_limits<float>::quiet_NaN();
    for (int count = 0; count < 200; ++count)
    {
        int const number = random.Below(kConnexityCount);
        cv::Size const size(1 + random.Below(12), 1 + random.Below(8));
        cv::Mat1f mask(size);
        cv::Mat1f marker(size);
        for (int y = 0; y < size.height; ++y)
        {
            for (int x = 0; x < size.width; ++x)
            {
                mask(y, x) = static_cast<float>(random.Below(8));
                marker(y, x) = random.Chance(0.7) ? 9.0F : mask(y, x);
                // In both, as the larger of a number and NaN depends on the processor.
                if (random.Chance(0.1)) mask(y, x) = marker(y, x) = nan;
            }
        }
        SCOPED_TRACE(Case(CV_32FC1, size, number));
        cv::Mat out;
        ASSERT_TRUE(geodesy::OverBuild(mask, marker, Shape(number), out));
        ASSERT_TRUE(EqualImages(out, OracleBuild(true, mask, marker, number, Equals::AsInHeap)));
        cv::Mat const flipped = 9 - marker;
        ASSERT_TRUE(geodesy::UnderBuild(9 - mask, flipped, Shape(number), out));
        ASSERT_TRUE(EqualImages(out, OracleBuild(false, 9 - mask, flipped, number, Equals::AsInHeap)));
    }
}

} // namespace

} // namespace morvane::tests
