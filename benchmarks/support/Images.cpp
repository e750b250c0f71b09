#include "support/Images.h"

#include "scansim/Scan.h"

#include <morvane/connexity/Labelling.h>

#include <opencv2/imgproc.hpp>

#include <cstdint>

namespace benchmarks
{

namespace
{

/// SplitMix64: the same numbers with every compiler and library.
class Generator
{
public:
    /// Uniform in [0, 1).
    double Next()
    {
        std::uint64_t z = (m_state += 0x9E3779B97F4A7C15U);
        z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9U;
        z = (z ^ (z >> 27)) * 0x94D049BB133111EBU;
        return static_cast<double>((z ^ (z >> 31)) >> 11) * 0x1.0p-53;
    }

private:
    std::uint64_t m_state = 1;
};

/// Uniform in [0, 1).
cv::Mat Noise(int side)
{
    Generator generator;
    cv::Mat noise(side, side, CV_32FC1);
    for (int y = 0; y < side; ++y)
    {
        for (int x = 0; x < side; ++x)
        {
            noise.at<float>(y, x) = static_cast<float>(generator.Next());
        }
    }
    return noise;
}

} // namespace

cv::Mat RandomMask(int side, double density)
{
    return Noise(side) < density;
}

cv::Mat Blobs(int side)
{
    cv::Mat noise = Noise(side);
    cv::GaussianBlur(noise, noise, cv::Size(), 6.0, 6.0, cv::BORDER_REFLECT);
    return noise > cv::mean(noise)[0];
}

cv::Mat GreyBlobs(int side)
{
    cv::Mat noise = Noise(side);
    cv::GaussianBlur(noise, noise, cv::Size(), 6.0, 6.0, cv::BORDER_REFLECT);
    cv::Mat grey;
    cv::normalize(noise, noise, 0.0, 11.99, cv::NORM_MINMAX);
    // Rounding to the nearest would leave half a level at either end.
    noise -= 0.5;
    noise.convertTo(grey, CV_8U);
    return grey;
}

cv::Mat Terrain(int side, int type)
{
    cv::Mat metres = cv::Mat::zeros(side, side, CV_32FC1);
    double amplitude = 10.0;
    for (int cells = 4; cells <= side; cells *= 2)
    {
        cv::Mat octave;
        cv::resize(Noise(cells), octave, metres.size(), 0.0, 0.0, cv::INTER_CUBIC);
        metres += octave * amplitude;
        amplitude *= 0.5;
    }
    metres += 5.0;
    metres.setTo(0.0, Noise(side) < 0.1);
    if (type == CV_32FC1) return metres;
    cv::Mat millimetres;
    metres.convertTo(millimetres, type, 1000.0);
    return millimetres;
}

cv::Mat Spiral(int side)
{
    cv::Mat image = cv::Mat::zeros(side, side, CV_8UC1);
    cv::Point const directions[] = {{1, 0}, {0, 1}, {-1, 0}, {0, -1}};
    auto const isFree = [&image](cv::Point p) {
        return p.x < 0 || p.y < 0 || p.x >= image.cols || p.y >= image.rows || image.at<uchar>(p) == 0;
    };
    auto const isInside = [&image](cv::Point p) {
        return p.x >= 0 && p.y >= 0 && p.x < image.cols && p.y < image.rows;
    };
    cv::Point pixel(0, 0);
    int turn = 0;
    int blocked = 0;
    image.at<uchar>(pixel) = 255;
    while (blocked < 2)
    {
        cv::Point const step = directions[turn % 4];
        if (isInside(pixel + step) && isFree(pixel + step) && isFree(pixel + 2 * step))
        {
            pixel += step;
            image.at<uchar>(pixel) = 255;
            blocked = 0;
        }
        else
        {
            ++turn;
            ++blocked;
        }
    }
    return image;
}

cv::Mat GreyTerrain(int side)
{
    cv::Mat grey;
    cv::normalize(Terrain(side, CV_32FC1), grey, 0, 255, cv::NORM_MINMAX, CV_8U);
    return grey;
}

cv::Mat DepthPanorama(int side)
{
    scansim::ScanSettings settings;
    settings.size = {side, side / 2};
    cv::Mat const depth = scansim::Simulate(scansim::MakeYard(), scansim::YardStation(0), settings).depth;
    cv::Mat square;
    cv::vconcat(depth, depth, square);
    return square;
}

cv::Mat RandomValues(int side, int type)
{
    cv::Mat values;
    double const scale = type == CV_8UC1 ? 255.0 : type == CV_16UC1 ? 65535.0 : 1.0;
    Noise(side).convertTo(values, type, scale);
    return values;
}

cv::Mat ManyZones(int side)
{
    // Noise cut in the middle, smoothed until the zones have the wanted size.
    cv::Mat noise = Noise(side);
    cv::GaussianBlur(noise, noise, cv::Size(), 1.7, 1.7, cv::BORDER_REFLECT);
    cv::Scalar mean;
    cv::Scalar deviation;
    cv::meanStdDev(noise, mean, deviation);
    cv::Mat const mask = noise > mean[0] + 0.5 * deviation[0];
    cv::Mat labels(side, side, CV_32SC1);
    bool const done = morvane::connexity::Label(mask, morvane::connexity::eConnexity8, labels);
    CV_Assert(done);
    return labels;
}

} // namespace benchmarks
