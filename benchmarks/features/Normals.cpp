#include "support/Timing.h"

#include <morvane/features/Normals.h>

#include <opencv2/core/utility.hpp>
#include <opencv2/rgbd.hpp>

#include <cmath>
#include <cstdint>
#include <string>
#include <vector>

namespace
{

using namespace morvane::features;

constexpr float kFocalLength = 525.0F; ///< pixels

/// An organised cloud in millimetres: a wavy wall seen by a pinhole camera, with noise in depth and one point in twenty
/// missing.
struct Cloud
{
    explicit Cloud(cv::Size size)
    {
        for (cv::Mat * const image : {&x, &y, &z})
        {
            *image = cv::Mat::zeros(size, CV_32FC1);
        }
        cv::RNG random(static_cast<std::uint64_t>(size.area()));
        for (int row = 0; row < size.height; ++row)
        {
            for (int column = 0; column < size.width; ++column)
            {
                if (random.uniform(0, 20) == 0) continue;
                double const wave = 300.0 * std::sin(column * 0.02) + 200.0 * std::cos(row * 0.03);
                auto const depth = static_cast<float>(2000.0 + wave + random.gaussian(3.0));
                x.at<float>(row, column) =
                    (static_cast<float>(column) - 0.5F * static_cast<float>(size.width)) / kFocalLength * depth;
                y.at<float>(row, column) =
                    (static_cast<float>(row) - 0.5F * static_cast<float>(size.height)) / kFocalLength * depth;
                z.at<float>(row, column) = depth;
            }
        }
        cv::merge(std::vector<cv::Mat>{x, y, z}, points);
    }

    cv::Mat x;
    cv::Mat y;
    cv::Mat z;
    cv::Mat points;
};

cv::Size OfSide(int side)
{
    return {side * 4 / 3, side};
}

/// Times @p work on a cloud, on a number of OpenCV's threads.
template <class Work>
void TimeOnCloud(std::string const & name, int side, int threads, Work work)
{
    benchmarks::Time(
        name + "-" + std::to_string(threads) + "/" + std::to_string(side),
        [=] {
            return [=, cloud = Cloud(OfSide(side)), normals = cv::Mat(), rms = cv::Mat()]() mutable {
                int const before = cv::getNumThreads();
                cv::setNumThreads(threads);
                work(cloud, normals, rms);
                cv::setNumThreads(before);
                return normals.data;
            };
        },
        side);
}

void TimeMethod(std::string const & name, int side, int threads, eNormalComputationMethod method, int halfWidth)
{
    std::string const which = std::string("radius ") + std::to_string(halfWidth);
    TimeOnCloud(
        "Normals/" + name + "/" + which, side, threads, [=](Cloud const & cloud, cv::Mat & normals, cv::Mat & rms) {
            (void)ComputeMatNormal(cloud.z, cloud.x, cloud.y, cloud.z, normals, rms, method, halfWidth, false);
        });
}

/// The nearest operator of OpenCV: least squares in spherical coordinates, without a measure of how well a plane fits.
void TimePeer(int side)
{
    cv::Matx33f const camera(
        kFocalLength, 0.0F, static_cast<float>(OfSide(side).width) / 2.0F, 0.0F, kFocalLength,
        static_cast<float>(side) / 2.0F, 0.0F, 0.0F, 1.0F);
    cv::Ptr<cv::rgbd::RgbdNormals> const peer = cv::rgbd::RgbdNormals::create(
        side, OfSide(side).width, CV_32F, camera, 7, cv::rgbd::RgbdNormals::RGBD_NORMALS_METHOD_FALS);
    peer->initialize();
    TimeOnCloud(
        "Normals/OpenCV FALS/radius 3", side, 1,
        [peer](Cloud const & cloud, cv::Mat & normals, cv::Mat & /*rms*/) { (*peer)(cloud.points, normals); });
}

[[maybe_unused]] bool const registered = [] {
    for (int const side : {240, 480, 960})
    {
        TimeMethod("morvane", side, 1, WindowMoving, 3);
        TimeMethod("morvane", side, 1, WindowMoving, 15);
        TimeMethod("morvane pyramid", side, 2, Pyramid, 5);
        TimeMethod("morvane search", side, 2, PyramidWindowMoving, 5);
        TimePeer(side);
    }
    TimeOnCloud(
        "EstimateNormals/morvane/perspective", 1080, 1, [](Cloud const & cloud, cv::Mat & normals, cv::Mat & /*rms*/) {
            constexpr int kStep = 2;
            (void)EstimateNormals(cloud.z, normals, kFocalLength, {720, 540}, kStep, true);
        });
    return true;
}();

} // namespace
