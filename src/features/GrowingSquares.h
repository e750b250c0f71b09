/// @file
/// Morphology with squares that grow by a pixel to each side from step to step, at a cost that does not grow with them.
#pragma once

#include <opencv2/core.hpp>

namespace morvane::features
{

/// Filters an image by squares of 3, 5, 7, ... pixels, one size for each call; beyond the image nothing counts.
///
/// A square is the sum of small ones: each erosion, or dilation, goes on from the last. The second half of an opening
/// or closing takes three comparisons for each pixel and direction.
///
/// Source of the second half: M. van Herk, "A fast algorithm for local minimum and maximum filters on rectangular and
/// octagonal kernels", 1992.
class GrowingSquares
{
public:
    /// @param image one channel
    explicit GrowingSquares(cv::Mat const & image);

    /// Tells whether the results are those of one filter of the whole size, to the bit: they are for integers. Of 0.0
    /// and -0.0, or of NaN and a number, the order of comparisons would decide.
    [[nodiscard]] bool AreExact() const;

    /// Goes on to the erosion and the dilation by the next square.
    void ErodeAndDilate();

    /// What ErodeAndDilate() has led to, until the next call.
    [[nodiscard]] cv::Mat const & Eroded() const { return m_eroded; }
    [[nodiscard]] cv::Mat const & Dilated() const { return m_dilated; }

    /// The opening or the closing by the next square.
    ///
    /// @param operation `cv::MORPH_OPEN` or `cv::MORPH_CLOSE`
    void Open(int operation, cv::Mat & dst);

private:
    template <class Select>
    void SelectInSquares(cv::Mat const & src, cv::Mat & dst, Select select);

    cv::Mat m_eroded;
    cv::Mat m_dilated;
    int m_radius = 0;
    // Memory, kept from step to step: to get it anew takes as long as the filters.
    cv::Mat m_memory;
    cv::Mat m_fromStart;
    cv::Mat m_toEnd;
};

} // namespace morvane::features
