/// @file
/// The images that operators are timed on, square, the same in every run.
#pragma once

#include <opencv2/core.hpp>

#include <string>

namespace benchmarks
{

/// A kind of image with its name.
struct NamedImage
{
    std::string name;
    cv::Mat (*make)(int side);
};

/// `CV_8UC1`, 0 or 255: each pixel is set with the given probability, independent of the others.
cv::Mat RandomMask(int side, double density);

/// `CV_8UC1`, 0 or 255: smooth noise cut at its middle, half of the pixels set, in shapes some 20 pixels across.
cv::Mat Blobs(int side);

/// `CV_8UC1`, 0 or 255: one line of one pixel winding inwards with gaps of one pixel, the worst case for merging.
cv::Mat Spiral(int side);

/// `CV_8UC1`: smooth noise cut into 12 grey levels, 0 among them, in zones some 20 pixels across.
cv::Mat GreyBlobs(int side);

/// Fractal terrain, a sum of octaves of noise, with one empty pixel in ten: `CV_16UC1` in millimetres above the datum,
/// or `CV_32FC1` in metres.
cv::Mat Terrain(int side, int type);

/// `CV_8UC1`: fractal terrain over all grey levels.
cv::Mat GreyTerrain(int side);

/// `CV_32FC1`, metres: the simulated panorama of a yard, twice as wide as high, 0 where nothing came back; laid into a
/// square of the given side, the lower half of which repeats the upper.
cv::Mat DepthPanorama(int side);

/// `CV_8UC1` of random bytes, `CV_16UC1` of random numbers, or `CV_32FC1` from 0 to 1.
cv::Mat RandomValues(int side, int type);

/// `CV_32SC1`: the labels of some 20,000 zones on 2048 x 2048 pixels, a zone for each 200 pixels.
cv::Mat ManyZones(int side);

} // namespace benchmarks
