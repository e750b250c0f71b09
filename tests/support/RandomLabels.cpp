#include "support/RandomLabels.h"

#include "support/ImageLiterals.h"

#include <algorithm>
#include <map>
#include <utility>

namespace morvane::tests
{

namespace
{

int RandomLabel(Random & random, LabelMixture const & mixture)
{
    if (random.Chance(mixture.zeroShare)) return 0;
    if (random.Chance(mixture.negativeShare)) return -1 - random.Below(32768);
    return random.Below(mixture.largest + 1);
}

} // namespace

cv::Mat RandomLabels(Random & random, cv::Size size, int depth, LabelPattern pattern, LabelMixture const & mixture)
{
    cv::Mat labels(size.height, size.width, depth);
    int const blockHeight = 1 + random.Below(9);
    int const blockWidth = 1 + random.Below(60);
    std::map<std::pair<int, int>, int> blocks;
    int const single = 1 + random.Below(mixture.largest);
    for (int y = 0; y < size.height; ++y)
    {
        int label = 0;
        int left = 0;
        for (int x = 0; x < size.width; ++x, --left)
        {
            if (pattern == LabelPattern::Scattered || (pattern == LabelPattern::Runs && left <= 0))
            {
                label = RandomLabel(random, mixture);
                left = random.Chance(0.5) ? 1 + random.Below(4) : 1 + random.Below(50);
            }
            else if (pattern == LabelPattern::Blocks)
            {
                std::pair<int, int> const block(y / blockHeight, x / blockWidth);
                if (!blocks.contains(block)) blocks[block] = RandomLabel(random, mixture);
                label = blocks[block];
            }
            else if (pattern == LabelPattern::OneZone)
            {
                label = single;
            }
            SetElement(labels, y, x, 0, label);
        }
    }
    return labels;
}

cv::Size RandomLabelSize(Random & random)
{
    constexpr std::array kWidths{31, 32, 33, 63, 64, 65, 100, 200};
    int const width = random.Chance(0.6) ? random.Below(21) : kWidths[static_cast<std::size_t>(random.Below(8))];
    return {width, random.Chance(0.1) ? random.Below(90) : random.Below(16)};
}

} // namespace morvane::tests
