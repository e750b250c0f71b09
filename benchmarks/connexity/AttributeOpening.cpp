#include "support/Images.h"
#include "support/Timing.h"
#include "support/UnionFindOpening.h"

#include <morvane/connexity/AttributeOpening.h>
#include <morvane/connexity/UltimateAttributeOpening.h>

#include <opencv2/imgproc.hpp>

#include <string>

namespace
{

using namespace morvane;
using namespace morvane::connexity;

constexpr int kArea = 100;

/// 32-bit, a million distinct values, each pixel independent of the others: the worst case for every builder.
cv::Mat Millions(int side)
{
    cv::Mat image(side, side, CV_32SC1);
    cv::RNG random(1);
    random.fill(image, cv::RNG::UNIFORM, 0, 1000000);
    return image;
}

/// 32-bit terrain in tenths of a millimetre.
cv::Mat FineTerrain(int side)
{
    cv::Mat image;
    benchmarks::Terrain(side, CV_32FC1).convertTo(image, CV_32S, 10000.0);
    return image;
}

benchmarks::NamedImage const kInputs[] = {
    {"8U-blobs",
     [](int side) {
         return cv::Mat(benchmarks::GreyBlobs(side) * 20);
     }},
    {"8U-terrain", benchmarks::GreyTerrain},
    {"8U-random",
     [](int side) {
         return benchmarks::RandomValues(side, CV_8UC1);
     }},
    {"16U-terrain",
     [](int side) {
         return benchmarks::Terrain(side, CV_16UC1);
     }},
    {"32S-terrain", FineTerrain},
    {"32S-million", Millions},
};

/// The definition, level by level: what is above the level in components that are large enough.
bool OpenLevels(cv::Mat const & image, cv::Mat & out)
{
    out = cv::Mat::zeros(image.size(), image.type());
    double most = 0.0;
    cv::minMaxLoc(image, nullptr, &most);
    cv::Mat labels;
    cv::Mat stats;
    cv::Mat centroids;
    for (int level = 1; level <= most; ++level)
    {
        int const components = cv::connectedComponentsWithStats(image >= level, labels, stats, centroids, 8, CV_32S);
        for (int label = 1; label < components; ++label)
        {
            if (stats.at<int>(label, cv::CC_STAT_AREA) < kArea) continue;
            cv::Rect const box(
                stats.at<int>(label, cv::CC_STAT_LEFT), stats.at<int>(label, cv::CC_STAT_TOP),
                stats.at<int>(label, cv::CC_STAT_WIDTH), stats.at<int>(label, cv::CC_STAT_HEIGHT));
            out(box).setTo(level, labels(box) == label);
        }
    }
    return true;
}

void Register(benchmarks::NamedImage const & input, int side)
{
    std::pair<std::string, common::eAttributeType> const attributes[] = {
        {"area", common::eAttributeArea},     {"sqrt-area", common::eAttributeSqrtArea},
        {"height", common::eAttributeHeight}, {"width", common::eAttributeWidth},
        {"strain", common::eAttributeStrain}, {"min-hw", common::eAttributeMinHW},
    };
    for (auto const & [name, attribute] : attributes)
    {
        benchmarks::TimeOn(
            "AttributeOpening/morvane/" + name + "-", input, side,
            [attribute = attribute](cv::Mat const & image, cv::Mat & out) {
                out.create(image.size(), image.type());
                return AttributeOpening(image, attribute, eConnexity8, kArea, out);
            });
    }
    benchmarks::TimeOn("AttributeOpening/union-find/area-", input, side, [](cv::Mat const & image, cv::Mat & out) {
        out = benchmarks::UnionFindAreaOpening(image, kArea);
        return true;
    });
    // The naive form takes seconds on larger ones.
    if (side <= 256 && input.name == "8U-terrain")
        benchmarks::TimeOn("AttributeOpening/levels/area-", input, side, OpenLevels);
    benchmarks::Time(
        "UltimateAttributeOpening/morvane/" + input.name + "/" + std::to_string(side),
        [=] {
            return [=, image = input.make(side), residues = cv::Mat(), sizes = cv::Mat()]() mutable {
                residues.create(image.size(), image.type());
                sizes.create(image.size(), CV_32SC1);
                return UltimateAttributeOpening(image, common::eAttributeHeight, eConnexity8, residues, sizes);
            };
        },
        side);
}

[[maybe_unused]] bool const registered = [] {
    for (int const side : {256, 1024, 2048, 4096, 8192})
    {
        for (benchmarks::NamedImage const & input : kInputs)
        {
            Register(input, side);
        }
    }
    return true;
}();

} // namespace
