/// @file
/// The shapes of the flat zones of an image.
#pragma once

#include "morvane/support/Table.h"

#include <morvane/connexity/GeodesicMeasures.h>

#include <opencv2/core.hpp>

#include <filesystem>

namespace program
{

/// An operator on the flat zones of an image.
using ZoneOperator = bool(cv::Mat const &, cv::Mat &);

/// A measure that gives all pixels of a zone the same number, and the name of its column.
struct ZoneMeasure
{
    char const * column;
    ZoneOperator * compute;
};

inline constexpr ZoneMeasure kDiameter{"diameter", morvane::connexity::LabelFlatZonesNoZeroWithGeodesicDiameter};
inline constexpr ZoneMeasure kElongation{"elongation", morvane::connexity::LabelFlatZonesNoZeroWithGeodesicElongation};
inline constexpr ZoneMeasure kTortuosity{"tortuosity", morvane::connexity::LabelFlatZonesNoZeroWithGeodesicTortuosity};
inline constexpr ZoneMeasure kStandardElongation{
    "standard_elongation", morvane::connexity::LabelFlatZonesNoZeroWithStandardElongation};

/// The flat zones of an image: equal pixels that are not 0 and touch by sides or corners.
struct FlatZones
{
    cv::Mat image;
    cv::Mat1i numbers; ///< from 1 in raster order, 0 where there is no zone
    cv::Mat areas;     ///< for each number
};

/// Finds the flat zones of an image.
///
/// @param file of the image
/// @param image one channel, without NaN
/// @throws ProgramError when there are more than the operators can measure
[[nodiscard]] FlatZones FlatZonesOf(std::filesystem::path const & file, cv::Mat const & image);

/// What an operator finds. @throws ProgramError when it refuses
[[nodiscard]] cv::Mat Computed(FlatZones const & zones, ZoneOperator * compute);

/// The table of the zones: value, area, box, all measures, and the two extremities, which are the same pixel where a zone
/// has one.
[[nodiscard]] Table TableOfShapes(FlatZones const & zones);

/// A measure in false colours from blue for the least to white for the greatest, black where there is none.
///
/// @param values `CV_64FC1`, above 0 where there is a measure
[[nodiscard]] cv::Mat PictureOfMeasure(cv::Mat const & values);

/// The zones in dark colours with a white dot on each extremity.
///
/// @param zones that are drawn
/// @param extremities `CV_8UC1`, not 0 there
[[nodiscard]] cv::Mat PictureOfExtremities(FlatZones const & zones, cv::Mat const & extremities);

} // namespace program
