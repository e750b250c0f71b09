// The description of zones: both sides of each limit, the largest zone, coarse parts.
#include <morvane/connexity/QuasiFlatZones.h>

#include <morvane/connexity/ZoneMeasures.h>

#include "support/AllTypes.h"
#include "support/ImageLiterals.h"
#include "support/QuasiFlatOracle.h"
#include "support/RandomImages.h"
#include "support/Snapshot.h"
#include "support/ThreadCounts.h"

#include <gtest/gtest.h>
#include <opencv2/core.hpp>

#include <array>
#include <cmath>
#include <limits>
#include <string>
#include <vector>

namespace morvane::quasi_flat_internals
{

namespace
{

using tests::EqualRegions;
using tests::Random;
using tests::Region;

using Regions = std::vector<RegionInfo>;

/// Heights that interpolation does not round.
constexpr float kGround = 1024.0F;
constexpr double kTolerance = 4000.0;

/// A flat image with one zone in one coarse part, and what is built on it.
struct Scene
{
    explicit Scene(cv::Size size = {40, 40}, float height = kGround)
        : image(size, CV_32FC1, cv::Scalar(height))
        , labels(size, CV_32SC1, cv::Scalar(1))
        , coarse(size, CV_32SC1, cv::Scalar(1))
    {}

    /// Gives a rectangle a height and a number.
    void Build(cv::Rect const & where, float height, int label)
    {
        image(where).setTo(cv::Scalar(height));
        labels(where).setTo(cv::Scalar(label));
    }

    [[nodiscard]] bool Describe(Regions & regions) const
    {
        cv::Mat const areas = connexity::LabelFlatZonesNoZeroWithArea(labels, connexity::eConnexity8);
        return ComputeRegions(image, areas, labels, coarse, areaLimit, pixelSize, regions);
    }
    [[nodiscard]] Regions Described() const
    {
        Regions regions;
        EXPECT_TRUE(Describe(regions));
        return regions;
    }

    cv::Mat image;
    cv::Mat labels;
    cv::Mat coarse;
    int areaLimit = 20;
    double pixelSize = 1000.0;
};

/// The record of the zone that is the whole of a scene.
RegionInfo Whole(Scene const & scene, int label = 1)
{
    return Region(label, static_cast<int>(scene.image.total()), 1, {{0, 0}, scene.image.size()});
}

TEST(ComputeRegions, OfOneZone_IsThisZone)
{
    for (cv::Size const size : {cv::Size(40, 40), cv::Size(7, 3), cv::Size(1, 1), cv::Size(1, 9), cv::Size(9, 1)})
    {
        Scene const scene(size);
        EXPECT_TRUE(EqualRegions(scene.Described(), {Whole(scene)}));
    }
}

TEST(ComputeRegions, DoesNotAskForTheAreaOfASingleZoneOfNumber1)
{
    Scene scene;
    scene.areaLimit = 1600;
    EXPECT_TRUE(EqualRegions(scene.Described(), {Whole(scene)}));
    // Of number 2, it is asked.
    scene.labels.setTo(2);
    EXPECT_TRUE(EqualRegions(scene.Described(), {}));
    scene.areaLimit = 1599;
    EXPECT_TRUE(EqualRegions(scene.Described(), {Whole(scene, 2)}));
}

/// A ground with a block of 100 pixels, of which the inner ones are flat.
Scene GroundWithBlock(double height)
{
    Scene scene;
    scene.Build({15, 15, 10, 10}, static_cast<float>(height), 2);
    return scene;
}

RegionInfo const kGroundRecord = Region(1, 1500, 1, {0, 0, 40, 40});
RegionInfo const kBlockRecord = Region(2, 100, 1, {15, 15, 10, 10});

TEST(ComputeRegions, DropsWhatStandsFarAboveTheFloor)
{
    float const limit = kGround + static_cast<float>(kTolerance);
    for (float const low : {kGround + 10.0F, kGround + 3990.0F, limit})
    {
        EXPECT_TRUE(EqualRegions(GroundWithBlock(low).Described(), {kGroundRecord, kBlockRecord})) << low;
    }
    for (float const high : {std::nextafter(limit, 1e9F), limit + 1.0F, 1e6F})
    {
        EXPECT_TRUE(EqualRegions(GroundWithBlock(high).Described(), {kGroundRecord})) << high;
    }
}

TEST(ComputeRegions, DropsWhatLiesFarBelowTheFloor)
{
    // Cells of 8 pixels leave the last 7 columns out: their heights are not in the floor.
    constexpr float kHigh = 8192.0F;
    float const limit = kHigh - static_cast<float>(kTolerance);
    for (float const height : {limit, std::nextafter(limit, 0.0F)})
    {
        Scene scene({71, 71}, kHigh);
        scene.pixelSize = 3125.0;
        scene.Build({64, 0, 7, 71}, height, 2);
        Regions expected{Region(1, 64 * 71, 1, {0, 0, 64, 71}), Region(2, 7 * 71, 1, {64, 0, 7, 71})};
        if (height < limit) expected.pop_back();
        EXPECT_TRUE(EqualRegions(scene.Described(), expected)) << height;
    }
}

TEST(ComputeRegions, RoundsTheCellsOfTheFloorToWholePixels)
{
    // Cells of 5 pixels leave the last 4 columns of 64 out, and what is low there is far below the floor; cells of 4 do
    // not, and the floor is low there as well. Between them lies a pixel size of 25000 / 4.5.
    for (double const pixelSize : {5000.0, 5555.0, 5556.0, 6250.0})
    {
        Scene scene({64, 64}, 8192.0F);
        scene.pixelSize = pixelSize;
        scene.Build({60, 0, 4, 64}, 2192.0F, 2);
        Regions expected{Region(1, 60 * 64, 1, {0, 0, 60, 64})};
        if (pixelSize > 5555.5) expected.push_back(Region(2, 4 * 64, 1, {60, 0, 4, 64}));
        EXPECT_TRUE(EqualRegions(scene.Described(), expected)) << pixelSize;
    }
    // Cells have 3 pixels at least, with which the last 2 columns of 62 are left out; of 2 pixels, none would be.
    for (double const pixelSize : {8333.0, 12500.0, 20000.0})
    {
        Scene scene({62, 62}, 32768.0F);
        scene.pixelSize = pixelSize;
        scene.Build({60, 0, 2, 62}, 28767.0F, 2);
        EXPECT_TRUE(EqualRegions(scene.Described(), {Region(1, 60 * 62, 1, {0, 0, 60, 62})})) << pixelSize;
    }
}

TEST(ComputeRegions, DropsZonesOfTheLimitAndKeepsLargerOnes)
{
    Scene scene = GroundWithBlock(2000.0);
    scene.areaLimit = 99;
    EXPECT_TRUE(EqualRegions(scene.Described(), {kGroundRecord, kBlockRecord}));
    scene.areaLimit = 100;
    EXPECT_TRUE(EqualRegions(scene.Described(), {kGroundRecord}));
    scene.areaLimit = 1499;
    EXPECT_TRUE(EqualRegions(scene.Described(), {kGroundRecord}));
    scene.areaLimit = 1500;
    EXPECT_TRUE(EqualRegions(scene.Described(), {}));
}

/// Two low strips at the sides, so that the floor is low everywhere, and a high plateau between them.
Scene PlateauBetweenStrips()
{
    Scene scene;
    scene.Build({8, 0, 24, 40}, 9216.0F, 2);
    scene.Build({32, 0, 8, 40}, kGround, 3);
    return scene;
}

TEST(ComputeRegions, KeepsTheLargestZoneHoweverHigh)
{
    Scene scene = PlateauBetweenStrips();
    RegionInfo const left = Region(1, 320, 1, {0, 0, 8, 40});
    RegionInfo const right = Region(3, 320, 1, {32, 0, 8, 40});
    EXPECT_TRUE(EqualRegions(scene.Described(), {Region(2, 960, 1, {8, 0, 24, 40}), left, right}));
    // Of two equal ones, the one whose pixels come first.
    scene.labels(cv::Rect(20, 0, 12, 40)).setTo(4);
    EXPECT_TRUE(EqualRegions(scene.Described(), {Region(2, 480, 1, {8, 0, 12, 40}), left, right}));
    scene.labels(cv::Rect(8, 0, 12, 40)).setTo(4);
    scene.labels(cv::Rect(20, 0, 12, 40)).setTo(2);
    EXPECT_TRUE(EqualRegions(scene.Described(), {Region(4, 480, 1, {8, 0, 12, 40}), left, right}));
}

/// A plane along x with a ripple, as an exact one has no normal.
Scene RippledPlane(double degrees)
{
    Scene scene;
    scene.pixelSize = 10.0;
    for (int y = 0; y < scene.image.rows; ++y)
    {
        for (int x = 0; x < scene.image.cols; ++x)
        {
            double const height =
                1000.0 + scene.pixelSize * (std::tan(degrees * CV_PI / 180.0) * x + 0.02 * ((x + y) % 2));
            scene.image.at<float>(y, x) = static_cast<float>(height);
        }
    }
    return scene;
}

TEST(ComputeRegions, DropsWhatIsSteeperThan30Degrees)
{
    for (double const degrees : {0.0, 15.0, 29.5, -29.5})
    {
        Scene const scene = RippledPlane(degrees);
        EXPECT_TRUE(EqualRegions(scene.Described(), {Whole(scene)})) << degrees;
    }
    for (double const degrees : {30.5, 45.0, 80.0, -30.5})
    {
        EXPECT_TRUE(EqualRegions(RippledPlane(degrees).Described(), {})) << degrees;
    }
}

TEST(ComputeRegions, LooksForSlopesInPixelsOfTheirSize)
{
    Scene scene = RippledPlane(45.0);
    scene.pixelSize = 100.0;
    EXPECT_EQ(scene.Described().size(), 1U);
    scene = RippledPlane(15.0);
    scene.pixelSize = 1.0;
    EXPECT_TRUE(scene.Described().empty());
}

TEST(ComputeRegions, PutsAZoneIntoThePartOfItsFirstPixel)
{
    Scene scene = PlateauBetweenStrips();
    scene.coarse.setTo(5);
    scene.coarse.at<int>(0, 0) = 8;
    scene.coarse(cv::Rect(32, 0, 8, 40)).setTo(0);
    scene.coarse(cv::Rect(32, 1, 8, 39)).setTo(7);
    // The first flat pixel of the plateau is the place of the largest area.
    scene.coarse(cv::Rect(8, 0, 24, 1)).setTo(6);
    EXPECT_TRUE(EqualRegions(
        scene.Described(),
        {Region(2, 960, 6, {8, 0, 24, 40}), Region(1, 320, 8, {0, 0, 8, 40}), Region(3, 320, 6, {32, 0, 8, 40})}));
    // Without a part at all, it is that of the largest zone, whatever that is.
    scene.coarse.setTo(-3);
    for (RegionInfo const & region : scene.Described())
    {
        EXPECT_EQ(region.group, -3);
    }
}

TEST(ComputeRegions, PassesOverPixelsThatAreNotAbove0)
{
    for (float const nothing : {0.0F, -5.0F, std::numeric_limits<float>::quiet_NaN()})
    {
        Scene scene;
        scene.Build({0, 0, 40, 10}, nothing, 2);
        // The pixels of a zone are counted all the same.
        scene.labels(cv::Rect(0, 0, 40, 10)).setTo(1);
        scene.coarse(cv::Rect(0, 0, 40, 10)).setTo(9);
        EXPECT_TRUE(EqualRegions(scene.Described(), {Whole(scene)})) << nothing;
        // A zone of nothing else has no mean.
        scene.labels(cv::Rect(0, 0, 40, 10)).setTo(2);
        scene.areaLimit = 500;
        EXPECT_TRUE(EqualRegions(scene.Described(), {Region(1, 1200, 1, {0, 10, 40, 30})})) << nothing;
    }
}

TEST(ComputeRegions, WhenOtherZonesHaveGone_DoesNotAskForTheArea)
{
    // What is left is number 1 alone: areas do not count any more.
    Scene scene;
    scene.areaLimit = 5000;
    scene.Build({0, 20, 40, 20}, 0.0F, 2);
    EXPECT_TRUE(EqualRegions(scene.Described(), {Region(1, 800, 1, {0, 0, 40, 20})}));
    scene.image.setTo(cv::Scalar(kGround));
    EXPECT_TRUE(EqualRegions(scene.Described(), {}));
}

TEST(ComputeRegions, OfRefusedArguments_IsFalseAndLeavesTheList)
{
    Regions const before{Region(7, 7)};
    auto const expectRefused = [&](Scene const & scene) {
        Regions regions = before;
        EXPECT_FALSE(scene.Describe(regions));
        EXPECT_TRUE(EqualRegions(regions, before));
    };
    for (double const pixelSize : {0.0, -1.0, std::numeric_limits<double>::quiet_NaN(), 1e-300})
    {
        Scene scene;
        scene.pixelSize = pixelSize;
        expectRefused(scene);
    }
    for (int const areaLimit : {0, -1, std::numeric_limits<int>::min()})
    {
        Scene scene;
        scene.areaLimit = areaLimit;
        expectRefused(scene);
    }
    for (int const type : {CV_8UC1, CV_64FC1, CV_32SC1, CV_32FC2})
    {
        Scene scene;
        scene.image = cv::Mat(40, 40, type, cv::Scalar::all(9));
        expectRefused(scene);
    }
    Scene unlabelled;
    unlabelled.labels.setTo(0);
    expectRefused(unlabelled);

    Scene const scene;
    cv::Mat const areas = scene.labels * 1600;
    std::array<cv::Mat const *, 4> const images{&scene.image, &areas, &scene.labels, &scene.coarse};
    for (std::size_t wrong = 0; wrong < images.size(); ++wrong)
    {
        cv::Mat bytes;
        images.at(wrong)->convertTo(bytes, CV_8U);
        for (cv::Mat const & other : {cv::Mat(), cv::Mat(images.at(wrong)->rowRange(0, 39)), bytes})
        {
            std::array<cv::Mat const *, 4> given = images;
            given.at(wrong) = &other;
            Regions regions = before;
            EXPECT_FALSE(ComputeRegions(*given[0], *given[1], *given[2], *given[3], 20, 1000.0, regions)) << wrong;
            EXPECT_TRUE(EqualRegions(regions, before));
        }
    }
}

TEST(ComputeRegions, LeavesItsImages)
{
    Scene const scene = GroundWithBlock(9000.0);
    cv::Mat const areas = connexity::LabelFlatZonesNoZeroWithArea(scene.labels, connexity::eConnexity8);
    std::array<tests::Snapshot, 4> const before{
        tests::Snapshot(scene.image), tests::Snapshot(areas), tests::Snapshot(scene.labels),
        tests::Snapshot(scene.coarse)};
    Regions regions;
    EXPECT_TRUE(ComputeRegions(scene.image, areas, scene.labels, scene.coarse, 500, 1000.0, regions));
    for (tests::Snapshot const & snapshot : before)
    {
        EXPECT_TRUE(snapshot.IsUntouched());
    }
}

TEST(ComputeRegions, IsWhatItsStepsSay)
{
    Random random(4304);
    int kept = 0;
    int dropped = 0;
    for (int trial = 0; trial < 400; ++trial)
    {
        cv::Size const size(1 + random.Below(70), 1 + random.Below(70));
        double const pixelSize =
            std::array{100.0, 1000.0, 4000.0, 0.01, 30000.0}.at(static_cast<std::size_t>(random.Below(5)));
        cv::Mat const image = tests::HeightField(random, size, pixelSize);
        cv::Mat const labels = tests::RandomZones(random, size, 1 + random.Below(20));
        // Any numbers will do as areas, and small ones meet those of labels.
        cv::Mat const areas = random.Chance(0.5)
                                  ? connexity::LabelFlatZonesNoZeroWithArea(labels, connexity::eConnexity8)
                                  : tests::RandomZones(random, size, 20);
        cv::Mat const coarse = tests::RandomZones(random, size, 4);
        int const areaLimit = 1 + random.Below(60);
        Regions expected;
        bool const answer = tests::OracleRegions(image, areas, labels, coarse, areaLimit, pixelSize, expected);
        tests::FramedImage imageView(image);
        tests::FramedImage areaView(areas);
        tests::FramedImage labelView(labels);
        tests::FramedImage coarseView(coarse);
        tests::ThreadCount const threads(1 + trial % 3);
        Regions regions;
        ASSERT_EQ(
            ComputeRegions(
                imageView.View(), areaView.View(), labelView.View(), coarseView.View(), areaLimit, pixelSize, regions),
            answer)
            << trial;
        ASSERT_TRUE(EqualRegions(regions, expected)) << trial;
        kept += std::ssize(regions) > 1 ? 1 : 0;
        dropped += answer && regions.empty() ? 1 : 0;
    }
    EXPECT_GT(kept, 100);
    EXPECT_GT(dropped, 10);
}

} // namespace

} // namespace morvane::quasi_flat_internals
