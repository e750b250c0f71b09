#include "Preview.h"

#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <cmath>
#include <vector>

namespace gallery
{

namespace
{

cv::Vec3b const kEmptyTone(38, 32, 30);

cv::Mat ToColours(cv::Mat const & grey, Look look)
{
    cv::Mat colours;
    if (look == Look::Grey)
    {
        cv::cvtColor(grey, colours, cv::COLOR_GRAY2BGR);
    }
    else
    {
        cv::applyColorMap(grey, colours, cv::COLORMAP_VIRIDIS);
    }
    return colours;
}

cv::Mat PreviewOfScalars(cv::Mat const & image, Look look)
{
    Stretch const stretch = StretchOf(image);
    double const scale = 255.0 / std::max(stretch.high - stretch.low, 1e-12);
    cv::Mat grey;
    image.convertTo(grey, CV_8U, scale, -stretch.low * scale);
    cv::Mat picture = ToColours(grey, look);
    picture.setTo(kEmptyTone, image == 0);
    return picture;
}

} // namespace

Stretch StretchOf(cv::Mat const & image)
{
    cv::Mat numbers;
    image.convertTo(numbers, CV_64F);
    std::vector<double> values;
    for (int y = 0; y < numbers.rows; ++y)
    {
        for (int x = 0; x < numbers.cols; ++x)
        {
            double const value = numbers.at<double>(y, x);
            if (value != 0.0 && std::isfinite(value)) values.push_back(value);
        }
    }
    if (values.empty()) return {};
    auto const percentile = [&values](double share) {
        auto const place = values.begin() + static_cast<std::ptrdiff_t>(share * static_cast<double>(values.size() - 1));
        std::nth_element(values.begin(), place, values.end());
        return *place;
    };
    return {percentile(0.01), percentile(0.99)};
}

cv::Mat Preview(cv::Mat const & image, Look look)
{
    if (image.channels() == 1) return PreviewOfScalars(image, look);
    cv::Mat bytes = image;
    if (image.depth() != CV_8U)
    {
        cv::normalize(image, bytes, 0.0, 255.0, cv::NORM_MINMAX);
        bytes.convertTo(bytes, CV_8U);
    }
    if (bytes.channels() == 4) cv::cvtColor(bytes, bytes, cv::COLOR_BGRA2BGR);
    if (bytes.channels() == 2)
    {
        // Two channels have no look of their own: blue and green.
        cv::Mat const nothing = cv::Mat::zeros(bytes.size(), CV_8UC1);
        cv::Mat first;
        cv::Mat second;
        cv::extractChannel(bytes, first, 0);
        cv::extractChannel(bytes, second, 1);
        cv::merge(std::vector<cv::Mat>{first, second, nothing}, bytes);
    }
    return bytes;
}

} // namespace gallery
