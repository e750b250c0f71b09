/// @file
/// Random images with fixed seeds: the same on every machine.
#pragma once

#include <gtest/gtest.h>
#include <opencv2/core.hpp>

#include <cstdint>

namespace morvane::tests
{

/// A small generator of our own (splitmix64), because those of the standard library differ between vendors.
class Random
{
public:
    explicit Random(std::uint64_t seed)
        : m_state(seed)
    {}

    /// 64 random bits.
    std::uint64_t Next();
    /// A number from 0 to @p bound - 1.
    int Below(int bound);
    /// A number from 0 to just below 1.
    double Unit();
    /// True with probability @p share.
    bool Chance(double share) { return Unit() < share; }

private:
    std::uint64_t m_state;
};

/// How a random image is mixed.
struct Mixture
{
    double emptyShare = 0.4;   ///< pixels that hold nothing
    double specialShare = 0.1; ///< pixels of extremes, NaN, infinities and numbers near the limit of emptiness
    int alphabet = 3;          ///< other elements are 1 to this: few, so that equal neighbours form zones
};

/// A random image.
[[nodiscard]] cv::Mat RandomImage(Random & random, cv::Size size, int type, Mixture const & mixture = {});

/// A mask of 0 and 1.
[[nodiscard]] cv::Mat1b RandomMask(Random & random, cv::Size size, double fullShare);

/// An image in which exactly the pixels of the mask that are not 0 hold something: full pixels take all kinds of
/// values, and empty ones all that counts as nothing (zero, negative zero, tiny numbers, NaN).
[[nodiscard]] cv::Mat PaintMask(Random & random, cv::Mat1b const & mask, int type);

/// A random size, each side from 0 to @p largest; sides of 0 to 3 are frequent.
[[nodiscard]] cv::Size RandomSize(Random & random, int largest = 40);

/// An image with a gap between its rows: a view into a larger matrix whose other bytes are watched.
class FramedImage
{
public:
    /// A view with the size, type and pixels of @p content.
    explicit FramedImage(cv::Mat const & content);

    /// The view.
    [[nodiscard]] cv::Mat & View() { return m_view; }

    /// Tells whether all bytes around the view have the value they had at first.
    [[nodiscard]] ::testing::AssertionResult IsFrameUntouched() const;

private:
    cv::Mat m_parent;
    cv::Mat m_view;
};

} // namespace morvane::tests
