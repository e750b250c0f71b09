/// @file
/// Copies and raster numbers of images, and the check that a refused call left its output alone.
#pragma once

#include "support/ImageLiterals.h"

#include <gtest/gtest.h>
#include <opencv2/core.hpp>

#include <cstddef>
#include <cstring>

namespace morvane::tests
{

/// A copy with gaps between no rows. Unlike that of cv::Mat::clone(), the copy of an empty image keeps its size.
[[nodiscard]] inline cv::Mat CopyOf(cv::Mat const & image)
{
    cv::Mat copy(image.rows, image.cols, image.type());
    std::size_t const bytes = static_cast<std::size_t>(image.cols) * image.elemSize();
    for (int y = 0; bytes > 0 && y < image.rows; ++y)
    {
        std::memcpy(copy.ptr(y), image.ptr(y), bytes);
    }
    return copy;
}

/// The pixel number y * cols + x of an image.
[[nodiscard]] inline uchar const * PixelNumber(cv::Mat const & image, int number)
{
    return image.ptr(number / image.cols) + static_cast<std::size_t>(number % image.cols) * image.elemSize();
}

/// Remembers an image, to tell later whether it still is the same matrix with the same bytes.
class Snapshot
{
public:
    /// @param image must outlive the snapshot
    explicit Snapshot(cv::Mat const & image)
        : m_image(image)
        , m_data(image.data)
        , m_copy(CopyOf(image))
    {}

    [[nodiscard]] ::testing::AssertionResult IsUntouched() const
    {
        if (m_image.data != m_data) return ::testing::AssertionFailure() << "the matrix was allocated anew";
        return EqualImages(m_image, m_copy);
    }

private:
    cv::Mat const & m_image;
    uchar const * m_data;
    cv::Mat m_copy;
};

} // namespace morvane::tests
