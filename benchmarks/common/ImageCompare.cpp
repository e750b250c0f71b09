// Images of 4 and 16 MiB. A form that reads k images and writes one moves k + 1 images; memcpy is timed on blocks of the
// same size and moves two. Bytes per second count all that is moved, so that the two compare.

#include "support/Images.h"
#include "support/Timing.h"

#include <morvane/common/ImageCompare.h>

#include <cstring>
#include <string>
#include <vector>

namespace
{

using morvane::common::ImageCompare;

/// A copy that may change what it has captured.
template <class Work>
Work Copy(Work const & work)
{
    return work;
}

/// A number in the middle of what the images hold.
double MiddleOf(int code)
{
    return code == CV_8UC1 ? 127.0 : code == CV_16UC1 ? 32767.0 : 0.5;
}

void RegisterType(std::string const & type, int code, int side)
{
    std::string const where = type + "/" + std::to_string(side);
    double const number = MiddleOf(code);
    auto const bytes = static_cast<std::int64_t>(side) * side * CV_ELEM_SIZE(code);
    auto const time = [=](std::string const & name, int images, auto const & work) {
        benchmarks::Time(
            name + where,
            [=] {
                cv::Mat const left = benchmarks::RandomValues(side, code);
                cv::Mat right;
                cv::flip(left, right, 0);
                return [left, right, output = cv::Mat(side, side, code), run = Copy(work)]() mutable {
                    return run(left, right, output);
                };
            },
            side, bytes * images);
    };
    time("ImageCompareNumberScalars/morvane/", 2, [number](cv::Mat const & left, cv::Mat const &, cv::Mat & output) {
        return ImageCompare(left, 1, number, cv::Scalar(3), cv::Scalar(7), output);
    });
    time("ImageCompareNumberScalars/memcpy/", 2, [](cv::Mat const & left, cv::Mat const &, cv::Mat & output) {
        std::memcpy(output.data, left.data, left.total() * left.elemSize());
        return output.rows;
    });
    time(
        "ImageCompareNumberScalars/opencv/", 2,
        [number, mask = cv::Mat()](cv::Mat const & left, cv::Mat const &, cv::Mat & output) mutable {
            cv::compare(left, number, mask, cv::CMP_GT);
            output.setTo(cv::Scalar(7));
            output.setTo(cv::Scalar(3), mask);
            return output.rows;
        });
    time("ImageCompareNumberImage/morvane/", 2, [number](cv::Mat const & left, cv::Mat const &, cv::Mat & output) {
        return ImageCompare(left, 1, number, left, cv::Scalar(0), output);
    });
    time("ImageCompareImageScalars/morvane/", 3, [](cv::Mat const & left, cv::Mat const & right, cv::Mat & output) {
        return ImageCompare(left, 1, right, cv::Scalar(3), cv::Scalar(7), output);
    });
    time("ImageCompareImageImages/morvane/", 3, [](cv::Mat const & left, cv::Mat const & right, cv::Mat & output) {
        return ImageCompare(left, 1, right, left, right, output);
    });
    time(
        "ImageCompareImageImages/opencv/", 3,
        [mask = cv::Mat()](cv::Mat const & left, cv::Mat const & right, cv::Mat & output) mutable {
            cv::compare(left, right, mask, cv::CMP_GT);
            right.copyTo(output);
            left.copyTo(output, mask);
            return output.rows;
        });
}

/// Depths that differ and three channels: the mask and the selection go one after the other.
void RegisterMixed(int code, int outputCode, std::string const & type, int side)
{
    std::string const where = type + "/" + std::to_string(side);
    double const number = MiddleOf(code);
    auto const time = [=](std::string const & name, auto const & work) {
        benchmarks::Time(
            name + where,
            [=] {
                cv::Mat const left = benchmarks::RandomValues(side, code);
                cv::Mat const pixels(side, side, outputCode, cv::Scalar::all(9));
                return [left, pixels, output = cv::Mat(side, side, outputCode), run = Copy(work)]() mutable {
                    return run(left, pixels, output);
                };
            },
            side);
    };
    time("ImageCompareMixed/morvane/", [number](cv::Mat const & left, cv::Mat const & pixels, cv::Mat & output) {
        return ImageCompare(left, 1, number, pixels, cv::Scalar::all(1), output);
    });
    time(
        "ImageCompareMixed/opencv/",
        [number, mask = cv::Mat()](cv::Mat const & left, cv::Mat const & pixels, cv::Mat & output) mutable {
            cv::compare(left, number, mask, cv::CMP_GT);
            output.setTo(cv::Scalar::all(1));
            pixels.copyTo(output, mask);
            return output.rows;
        });
}

[[maybe_unused]] bool const registered = [] {
    RegisterType("8U", CV_8UC1, 2048);
    RegisterType("8U", CV_8UC1, 4096);
    RegisterType("16U", CV_16UC1, 1448);
    RegisterType("16U", CV_16UC1, 2896);
    RegisterType("32F", CV_32FC1, 1024);
    RegisterType("32F", CV_32FC1, 2048);
    RegisterMixed(CV_32FC1, CV_8UC3, "32F-8UC3", 2048);
    RegisterMixed(CV_8UC1, CV_32FC1, "8U-32F", 2048);
    RegisterMixed(CV_16UC1, CV_16UC3, "16U-16UC3", 2048);
    RegisterMixed(CV_32FC1, CV_64FC4, "32F-64FC4", 1024);
    return true;
}();

} // namespace
