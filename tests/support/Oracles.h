/// @file
/// Plain forms of what the library does in clever ways: slow, obvious, and with tables of their own.
#pragma once

#include <opencv2/core.hpp>

#include <functional>
#include <vector>

namespace morvane::tests
{

/// The neighbour offsets of a shape, empty outside the table.
[[nodiscard]] std::vector<cv::Point> OracleOffsets(int connexity);

/// Whether a shape joins the first and the last column.
[[nodiscard]] bool OracleWraps(int connexity);

/// Marks with 1 the pixels of an image (one to four channels) that hold something.
[[nodiscard]] cv::Mat1b OracleTakesPart(cv::Mat const & image);

/// A connection condition over positions; by default every step is allowed.
struct OracleCondition
{
    std::function<void()> reset = [] {
    };
    std::function<bool(cv::Point from, cv::Point to, cv::Point seed)> isConnected = [](cv::Point, cv::Point,
                                                                                       cv::Point) {
        return true;
    };
    std::function<void(cv::Point)> add = [](cv::Point) {
    };
};

/// The zones of an image in the raster order of their seeds, the pixels of each in breadth-first order.
///
/// @param takesPart not 0 where a pixel may be in a zone
[[nodiscard]] std::vector<std::vector<cv::Point>>
OracleZones(cv::Mat1b const & takesPart, int connexity, OracleCondition const & condition = {});

/// The label image of zones: the number of each zone from 1, modulo the range of the type.
///
/// @param type with more than one channel, labels lie in the first columns' worth of elements of each row
[[nodiscard]] cv::Mat OracleLabels(std::vector<std::vector<cv::Point>> const & zones, cv::Size size, int type);

} // namespace morvane::tests
