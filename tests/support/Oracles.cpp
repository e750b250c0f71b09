#include "support/Oracles.h"

#include "support/ImageLiterals.h"

#include <cmath>
#include <deque>

namespace morvane::tests
{

namespace
{

using Offsets = std::vector<cv::Point>;

Offsets Ring8()
{
    return {{-1, -1}, {-1, 0}, {-1, 1}, {0, 1}, {1, 1}, {1, 0}, {1, -1}, {0, -1}};
}

Offsets Joined(Offsets const & first, Offsets const & second, Offsets const & third)
{
    Offsets all = first;
    all.insert(all.end(), second.begin(), second.end());
    all.insert(all.end(), third.begin(), third.end());
    return all;
}

/// The number of a zone as an element of @p depth, reduced modulo the range of that type.
double LabelOf(std::size_t number, int depth)
{
    if (depth == CV_8U) return static_cast<double>(number % 256);
    if (depth == CV_32S) return static_cast<double>(number);
    auto const label = static_cast<double>(number % 65536);
    return depth == CV_16S && label > 32767 ? label - 65536 : label;
}

} // namespace

std::vector<cv::Point> OracleOffsets(int connexity)
{
    switch (connexity)
    {
    case 0:
    case 1:
        return {{-1, 0}, {1, 0}, {0, 1}, {0, -1}};
    case 2:
    case 4:
        return Ring8();
    case 3:
        return {{-1, 0}, {1, 0}, {0, 1}, {0, -1}, {-1, -1}, {-1, 1}, {1, 1}, {1, -1}};
    case 5:
        return Joined({}, Ring8(), {{-2, 0}, {0, 2}, {2, 0}, {0, -2}});
    case 6:
        return Joined(
            {}, Ring8(),
            {{-2, -1}, {-2, 0}, {-2, 1}, {-1, 2}, {0, 2}, {1, 2}, {2, 1}, {2, 0}, {2, -1}, {1, -2}, {0, -2}, {-1, -2}});
    case 7:
    case 8:
        return Joined({{-2, 0}, {0, 2}}, Ring8(), {{2, 0}, {0, -2}});
    case 9:
    case 10:
        return Joined(
            {{-2, -1}, {-2, 0}, {-2, 1}, {-1, 2}, {0, 2}, {1, 2}}, Ring8(),
            {{2, 1}, {2, 0}, {2, -1}, {1, -2}, {0, -2}, {-1, -2}});
    case 11:
    case 12:
        return Joined(
            {{-2, -2}, {-2, -1}, {-2, 0}, {-2, 1}, {-2, 2}, {-1, 2}, {0, 2}, {1, 2}}, Ring8(),
            {{2, 2}, {2, 1}, {2, 0}, {2, -1}, {2, -2}, {1, -2}, {0, -2}, {-1, -2}});
    default:
        return {};
    }
}

bool OracleWraps(int connexity)
{
    return connexity == 1 || connexity == 4 || connexity == 8 || connexity == 10 || connexity == 12;
}

cv::Mat1b OracleTakesPart(cv::Mat const & image)
{
    cv::Mat1b takesPart(image.rows, image.cols);
    for (int y = 0; y < image.rows; ++y)
    {
        for (int x = 0; x < image.cols; ++x)
        {
            bool takes = false;
            if (image.channels() > 1)
            {
                double sum = 0.0;
                for (int channel = 0; channel < image.channels(); ++channel)
                {
                    sum += ElementAt(image, y, x, channel) * ElementAt(image, y, x, channel);
                }
                takes = std::sqrt(sum) > 1e-10;
            }
            else if (image.depth() == CV_32F)
            {
                takes = std::fabs(image.at<float>(y, x)) > 1e-10F;
            }
            else if (image.depth() == CV_64F)
            {
                takes = std::fabs(image.at<double>(y, x)) > 1e-10;
            }
            else
            {
                takes = ElementAt(image, y, x) != 0.0;
            }
            takesPart(y, x) = takes ? 1 : 0;
        }
    }
    return takesPart;
}

std::vector<std::vector<cv::Point>>
OracleZones(cv::Mat1b const & takesPart, int connexity, OracleCondition const & condition)
{
    int const rows = takesPart.rows;
    int const cols = takesPart.cols;
    Offsets const offsets = OracleOffsets(connexity);
    bool const wraps = OracleWraps(connexity);
    std::vector<std::vector<cv::Point>> zones;
    cv::Mat1b visited(rows, cols, uchar{0});
    for (int y = 0; y < rows; ++y)
    {
        for (int x = 0; x < cols; ++x)
        {
            if (takesPart(y, x) == 0 || visited(y, x) == 1) continue;
            cv::Point const seed(x, y);
            std::vector<cv::Point> zone;
            condition.reset();
            visited(seed) = 1;
            std::deque<cv::Point> queue{seed};
            condition.add(seed);
            while (!queue.empty())
            {
                cv::Point const p = queue.front();
                queue.pop_front();
                zone.push_back(p);
                for (cv::Point const & offset : offsets)
                {
                    cv::Point q = p + offset;
                    if (q.y < 0 || q.y >= rows) continue;
                    if ((q.x < 0 || q.x >= cols) && !wraps) continue;
                    if (q.x < 0)
                    {
                        q.x += cols;
                    }
                    else if (q.x >= cols)
                    {
                        q.x -= cols;
                    }
                    if (q.x < 0 || q.x >= cols) continue; // narrower than the offset: one wrap was not enough
                    if (takesPart(q) == 0) continue;
                    if (!condition.isConnected(p, q, seed)) continue;
                    if (visited(q) == 1) continue;
                    condition.add(q);
                    queue.push_back(q);
                    visited(q) = 1;
                }
            }
            zones.push_back(zone);
        }
    }
    return zones;
}

cv::Mat OracleLabels(std::vector<std::vector<cv::Point>> const & zones, cv::Size size, int type)
{
    cv::Mat labels(size.height, size.width, type, cv::Scalar::all(0));
    for (std::size_t index = 0; index < zones.size(); ++index)
    {
        for (cv::Point const & p : zones[index])
        {
            // Column and channel of the element p.x of the row.
            SetElement(
                labels, p.y, p.x / labels.channels(), p.x % labels.channels(), LabelOf(index + 1, labels.depth()));
        }
    }
    return labels;
}

} // namespace morvane::tests
