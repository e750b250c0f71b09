#include "scansim/TopView.h"

#include <cmath>

namespace scansim
{

TopViewArea AreaAround(Station const & station, double reach, double cell)
{
    return {{station.position[0] - reach, station.position[1] - reach}, {2.0 * reach, 2.0 * reach}, cell};
}

TopView SeeFromAbove(Scan const & scan, TopViewArea const & area, double ceiling)
{
    cv::Size const size(
        static_cast<int>(std::ceil(area.extent.width / area.cell)),
        static_cast<int>(std::ceil(area.extent.height / area.cell)));
    TopView view{cv::Mat::zeros(size, CV_32FC1), cv::Mat::zeros(size, CV_16UC1)};
    for (int row = 0; row < scan.z.rows; ++row)
    {
        for (int column = 0; column < scan.z.cols; ++column)
        {
            float const z = scan.z.at<float>(row, column);
            if (z == 0.0F || z >= ceiling) continue;
            double const x = std::floor((scan.x.at<float>(row, column) - area.corner.x) / area.cell);
            double const y = std::floor((scan.y.at<float>(row, column) - area.corner.y) / area.cell);
            if (x < 0.0 || y < 0.0 || x >= size.width || y >= size.height) continue;
            cv::Point const cell(static_cast<int>(x), size.height - 1 - static_cast<int>(y));
            auto & highest = view.elevation.at<float>(cell);
            if (z <= highest) continue;
            highest = z;
            view.intensity.at<ushort>(cell) = scan.intensity.at<ushort>(row, column);
        }
    }
    return view;
}

} // namespace scansim
