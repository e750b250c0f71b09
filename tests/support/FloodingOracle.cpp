#include "support/FloodingOracle.h"

#include "support/AllTypes.h"
#include "support/MapOracle.h"
#include "support/MeasureOracle.h"
#include "support/Oracles.h"
#include "support/Snapshot.h"
#include "support/StepOracle.h"

#include <morvane/connexity/Flooding.h>
#include <morvane/visual/ColorMaps.h>

#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <deque>
#include <limits>
#include <stdexcept>
#include <string>
#include <vector>

namespace morvane::tests
{

namespace
{

constexpr int kQueueCount = 512;
std::array<cv::Point, 4> const kSides{{{-1, 0}, {1, 0}, {0, -1}, {0, 1}}};

int MarkerOf(char drawn)
{
    if (drawn == '.') return 0;
    if (drawn == '#') return -1;
    if (drawn == '-') return -3;
    if (drawn >= '1' && drawn <= '9') return drawn - '0';
    throw std::invalid_argument(std::string("no marker is drawn as ") + drawn);
}

/// The state of a plain flood.
struct PlainFlood
{
    cv::Mat image;
    cv::Mat & markers;
    std::array<std::deque<cv::Point>, kQueueCount> queues;

    /// Of @p other seen from @p from.
    int Cost(cv::Point from, cv::Point other) const
    {
        int const a = image.at<uchar>(from);
        int const b = image.at<uchar>(other);
        return std::abs(a - b) + a;
    }

    int & Marker(cv::Point p) { return markers.at<int>(p); }

    void Push(int cost, cv::Point p)
    {
        queues.at(static_cast<std::size_t>(cost)).push_back(p);
        Marker(p) = -2;
    }

    int FirstFrom(int queue) const
    {
        while (queue < kQueueCount && queues.at(static_cast<std::size_t>(queue)).empty())
        {
            ++queue;
        }
        return queue;
    }

    void Start()
    {
        int const rows = markers.rows;
        int const cols = markers.cols;
        markers.row(0).setTo(-1);
        markers.row(rows - 1).setTo(-1);
        for (int y = 1; y <= rows - 2; ++y)
        {
            Marker({0, y}) = -1;
            Marker({cols - 1, y}) = -1;
            for (int x = 1; x <= cols - 2; ++x)
            {
                cv::Point const p(x, y);
                if (Marker(p) < 0) Marker(p) = 0;
                if (Marker(p) != 0) continue;
                int least = kQueueCount;
                for (cv::Point const & side : kSides)
                {
                    if (Marker(p + side) > 0) least = std::min(least, Cost(p, p + side));
                }
                if (least < kQueueCount) Push(least, p);
            }
        }
    }

    int Gather(cv::Point p)
    {
        int label = 0;
        for (cv::Point const & side : kSides)
        {
            int const other = Marker(p + side);
            if (other <= 0) continue;
            label = label == 0 || label == other ? other : -1;
        }
        return label;
    }
};

OracleCondition SpreadSteps(SpreadUnderTest const & spread, SpreadInput const & input, cv::Mat const & basins)
{
    OracleCondition const inBasins = EqualSteps(basins);
    if (spread.deltas == 0) return inBasins;
    OracleCondition const small = StepsOfBoth(DeltaSteps(input.image, input.delta1), inBasins);
    return spread.deltas == 1 ? small : StepsOfBoth(small, DeltaSteps(input.second, input.delta2));
}

} // namespace

cv::Mat DrawMarkers(Drawing const & rows)
{
    int const height = static_cast<int>(rows.size());
    int const width = height == 0 ? 0 : static_cast<int>(rows.begin()->size());
    cv::Mat markers(height, width, CV_32SC1);
    int y = 0;
    for (std::string_view const row : rows)
    {
        if (static_cast<int>(row.size()) != width) throw std::invalid_argument("rows of different lengths");
        std::transform(row.begin(), row.end(), markers.ptr<int>(y), MarkerOf);
        ++y;
    }
    return markers;
}

bool OracleFlooding(cv::Mat const & image, cv::Mat & markers)
{
    if (markers.empty()) return false;
    PlainFlood flood{image, markers, {}};
    flood.Start();
    int active = flood.FirstFrom(0);
    if (active == kQueueCount) return false;
    while (active < kQueueCount)
    {
        auto & queue = flood.queues.at(static_cast<std::size_t>(active));
        cv::Point const p = queue.front();
        queue.pop_front();
        int const label = flood.Gather(p);
        flood.Marker(p) = label;
        for (cv::Point const & side : kSides)
        {
            if (label == -1 || flood.Marker(p + side) != 0) continue;
            int const cost = flood.Cost(p, p + side);
            flood.Push(cost, p + side);
            active = std::min(active, cost);
        }
        active = flood.FirstFrom(active);
    }
    return true;
}

std::array<SpreadUnderTest, 5> const & AllSpreads()
{
    static std::array<SpreadUnderTest, 5> const all{{
        {"FloodingNoZero", true, 0,
         [](SpreadInput const & in, cv::Mat & markers) {
             return connexity::FloodingNoZero(in.image, Shape(in.connexity), markers);
         }},
        {"FloodingDelta", false, 1,
         [](SpreadInput const & in, cv::Mat & markers) {
             return connexity::FloodingDelta(in.image, Shape(in.connexity), in.delta1, markers);
         }},
        {"FloodingDelta of two", false, 2,
         [](SpreadInput const & in, cv::Mat & markers) {
             return connexity::FloodingDelta(in.image, in.second, Shape(in.connexity), in.delta1, in.delta2, markers);
         }},
        {"FloodingDeltaNoZero", true, 1,
         [](SpreadInput const & in, cv::Mat & markers) {
             return connexity::FloodingDeltaNoZero(in.image, Shape(in.connexity), in.delta1, markers);
         }},
        {"FloodingDeltaNoZero of two", true, 2,
         [](SpreadInput const & in, cv::Mat & markers) {
             return connexity::FloodingDeltaNoZero(
                 in.image, in.second, Shape(in.connexity), in.delta1, in.delta2, markers);
         }},
    }};
    return all;
}

cv::Mat1i OracleBasins(cv::Mat const & image, cv::Mat const & seeds)
{
    cv::Mat1i basins(image.rows, image.cols);
    for (int y = 0; y < image.rows; ++y)
    {
        for (int x = 0; x < image.cols; ++x)
        {
            // With seeds of several channels, the first columns' worth of elements of each row.
            basins(y, x) = static_cast<int>(ElementAt(seeds, y, x / seeds.channels(), x % seeds.channels()));
        }
    }
    constexpr double most = std::numeric_limits<double>::max();
    MapLimits const limits{-most, most, true};
    MapResult const map = OracleMap(kMaps[1], image, &limits);
    // Where the map of a NaN or of an endless range is nobody's business, it is that of the library.
    cv::Mat grey(image.rows, image.cols, CV_8UC1);
    if (!visual::GrayMapNoZero(image, grey, -most, most, true)) throw std::logic_error("the map refuses the image");
    map.image.copyTo(grey, map.open == 0);

    cv::Mat colour;
    cv::cvtColor(grey, colour, cv::COLOR_GRAY2BGR);
    cv::watershed(colour, basins);
    int const rows = basins.rows;
    int const cols = basins.cols;
    for (int y = 0; y < rows && cols > 1; ++y)
    {
        basins(y, 0) = basins(y, 1);
        basins(y, cols - 1) = basins(y, cols - 2);
    }
    for (int x = 0; x < cols && rows > 1; ++x)
    {
        basins(0, x) = basins(1, x);
        basins(rows - 1, x) = basins(rows - 2, x);
    }
    return basins;
}

bool OracleSpread(SpreadUnderTest const & spread, SpreadInput const & input, cv::Mat & markers)
{
    cv::Mat const seeds = CopyOf(markers);
    cv::Mat const basins = OracleBasins(input.image, seeds);
    cv::Mat1b const takesPart = spread.noZero ? OracleTakesPart(input.image) : EveryPixel(input.image.size());
    auto const zones = OracleZones(takesPart, input.connexity, SpreadSteps(spread, input, basins));
    markers = OracleLabels(zones, markers.size(), markers.type());
    if (markers.channels() > 1) return false;
    cv::Mat const table = OracleTable(Measure::Max, markers, seeds, seeds);
    if (table.empty() || table.type() != markers.type()) return false;
    for (int & label : cv::Mat1i(markers))
    {
        label = label != 0 && label < table.rows ? table.at<int>(label) : 0;
    }
    return true;
}

cv::Mat RandomMarkers(Random & random, cv::Size size, int type, double share, int largest)
{
    cv::Mat markers(size.height, size.width, type, cv::Scalar::all(0));
    bool const isSigned = markers.depth() == CV_16S || markers.depth() == CV_32S;
    for (int y = 0; y < size.height; ++y)
    {
        for (int element = 0; element < size.width * markers.channels(); ++element)
        {
            if (!random.Chance(share)) continue;
            bool const negative = isSigned && random.Chance(0.2);
            int const label = negative ? -1 - random.Below(3) : 1 + random.Below(largest);
            SetElement(markers, y, element / markers.channels(), element % markers.channels(), label);
        }
    }
    return markers;
}

} // namespace morvane::tests
