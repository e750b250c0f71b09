#include "morvane/support/ZoneShapes.h"

#include "morvane/support/Pictures.h"
#include "morvane/support/ProgramError.h"

#include <morvane/connexity/Labelling.h>
#include <morvane/connexity/ZoneMeasures.h>

#include <opencv2/imgproc.hpp>

#include <limits>
#include <string>
#include <vector>

namespace program
{

namespace fs = std::filesystem;
using namespace morvane::connexity;

namespace
{

/// The operators number zones in 16 bits.
constexpr int kMostZones = std::numeric_limits<short>::max();

/// What an image holds in each zone, where it holds one number.
cv::Mat1d ByZone(FlatZones const & zones, cv::Mat const & image)
{
    cv::Mat1d values;
    image.convertTo(values, CV_64F);
    cv::Mat1d table(zones.areas.rows, 1, 0.0);
    for (int y = 0; y < values.rows; ++y)
    {
        for (int x = 0; x < values.cols; ++x)
        {
            table(zones.numbers(y, x)) = values(y, x);
        }
    }
    return table;
}

/// Columns for the place of the marked pixel of each zone; what no pixel is marked for stays as it is.
void FindPlaces(FlatZones const & zones, cv::Mat1b const & marks, cv::Mat1d & columns, cv::Mat1d & rows)
{
    std::vector<cv::Point> places;
    cv::findNonZero(marks, places);
    for (cv::Point const & place : places)
    {
        int const zone = zones.numbers(place);
        columns(zone) = place.x;
        rows(zone) = place.y;
    }
}

/// The two extremities, which are the same pixel where a zone has one.
void AddExtremities(FlatZones const & zones, Table & table)
{
    cv::Mat const first = Computed(zones, GeodesicExtremityOnFlatZonesNoZero);
    cv::Mat const second = Computed(zones, GeodesicExtremitiesOnFlatZonesNoZero) & ~first;
    cv::Mat1d columns(zones.areas.size(), 0.0);
    cv::Mat1d rows(zones.areas.size(), 0.0);
    FindPlaces(zones, first, columns, rows);
    table.Add("x1", columns);
    table.Add("y1", rows);
    FindPlaces(zones, second, columns, rows);
    table.Add("x2", columns);
    table.Add("y2", rows);
}

} // namespace

FlatZones FlatZonesOf(fs::path const & file, cv::Mat const & image)
{
    FlatZones zones{image, cv::Mat1i(image.size()), {}};
    if (!LabelFlatZonesNoZero(image, eConnexity8, zones.numbers)) throw ProgramError(file, "was refused");
    zones.areas = ComputeArea(zones.numbers);
    int const count = zones.areas.rows - 1;
    if (count > kMostZones)
    {
        throw ProgramError(
            file,
            "has " + std::to_string(count) + " flat zones; at most " + std::to_string(kMostZones) + " can be measured");
    }
    return zones;
}

cv::Mat Computed(FlatZones const & zones, ZoneOperator * compute)
{
    cv::Mat values;
    if (!compute(zones.image, values)) throw ProgramError("the zones cannot be measured");
    return values;
}

Table TableOfShapes(FlatZones const & zones)
{
    cv::Mat const isPresent = zones.areas > 0;
    Table table("zone", isPresent);
    table.Add("value", ByZone(zones, zones.image));
    table.Add("area", zones.areas);
    cv::Mat const left = ComputeColMin(zones.numbers);
    cv::Mat const top = ComputeRowMin(zones.numbers);
    table.Add("x", left);
    table.Add("y", top);
    table.Add("width", ComputeColMax(zones.numbers) - left + 1);
    table.Add("height", ComputeRowMax(zones.numbers) - top + 1);
    for (ZoneMeasure const & measure : {kDiameter, kElongation, kTortuosity, kStandardElongation})
    {
        table.Add(measure.column, ByZone(zones, Computed(zones, measure.compute)));
    }
    AddExtremities(zones, table);
    return table;
}

cv::Mat PictureOfMeasure(cv::Mat const & values)
{
    cv::Mat const isMeasured = values > 0.0;
    double least = 0.0;
    double greatest = 0.0;
    cv::minMaxIdx(values, &least, &greatest, nullptr, nullptr, isMeasured);
    // The first fifth of the scale, black to blue, stays unused: its foot is a row of its own.
    constexpr double kFoot = 1.0;
    double const lift = kFoot + (greatest > least ? (greatest - least) / 4.0 : 1.0) - least;
    cv::Mat numbers = values + lift;
    numbers.setTo(0.0, ~isMeasured);
    numbers.push_back(cv::Mat(1, values.cols, CV_64FC1, cv::Scalar(kFoot)));
    return FalseColourPicture(numbers, {.isOfMeasured = true}).rowRange(0, values.rows);
}

cv::Mat PictureOfExtremities(FlatZones const & zones, cv::Mat const & extremities)
{
    constexpr double kDim = 0.6;
    cv::Mat picture;
    PictureOfZones(zones.numbers).convertTo(picture, CV_8U, kDim);
    cv::Mat dots;
    cv::dilate(extremities, dots, cv::Mat());
    picture.setTo(cv::Scalar::all(255.0), dots);
    return picture;
}

} // namespace program
