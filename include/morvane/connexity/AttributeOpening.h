/// @file
/// Attribute openings: bright connected components leave the image by what they measure, not by whether a shape fits.
#pragma once

#include <morvane/Export.h>
#include <morvane/common/Attributes.h>
#include <morvane/connexity/Connexity.h>

#include <opencv2/core.hpp>

namespace morvane::connexity
{

/// Removes the bright connected components whose attribute is below a threshold.
///
/// | array   | shape                           | depths                                | channels | values |
/// |---------|---------------------------------|---------------------------------------|----------|--------|
/// | `image` | rows x cols                     | `CV_8U`, `CV_16U`, `CV_16S`, `CV_32S` | 1        | not negative |
/// | `out`   | rows x cols, made by the caller | that of `image`                       | 1        | the filtered image |
///
/// Works on the max-tree by the direct rule: a node whose attribute is below the threshold takes the level of its parent;
/// a deeper node that reaches the threshold keeps its own level, even inside one that failed. What the root inherits is 0:
/// where the whole image measures less than the threshold, its darkest parts become 0 and not its smallest value.
///
/// A negative `CV_16S` pixel is treated as the bits of a `CV_16U` one; a negative `CV_32S` pixel as the low level that it
/// is.
///
/// @param image see the table
/// @param attribute what is measured
/// @param connexity the neighbourhood; a wrapped one is used without its wrap. With a value outside the enumeration nothing
///        but the first of the darkest pixels is reached, and all others become 0.
/// @param threshold least value that stays; 0 and 1 change nothing
/// @param out overwritten whole, never reallocated
/// @return true when the image was filtered. False, with `out` untouched, when `image` has more than one channel, `out`
///         differs in size, depth or channels, the depth or the attribute is another, an image is empty, or one has more
///         than two dimensions.
/// @throws std::bad_alloc when memory runs out
///
/// Cost: O(pixels) time, for `CV_32S` O(pixels log pixels); about 10 bytes for each pixel and 40 for each node of the tree,
/// of which there are at most as many as pixels. One thread. `image` and `out` may be the same matrix.
///
/// Source: E. J. Breen and R. Jones, "Attribute openings, thinnings, and granulometries", 1996; P. Salembier, A. Oliveras
/// and L. Garrido, 1998.
///
/// @code
/// cv::Mat filtered(image.size(), image.type());
/// bool const done = morvane::connexity::AttributeOpening(
///     image, morvane::common::eAttributeArea, morvane::connexity::eConnexity8, 100, filtered);
/// @endcode
[[nodiscard]] MORVANE_EXPORT bool AttributeOpening(
    cv::Mat const & image, common::eAttributeType attribute, eConnexityType const & connexity, unsigned int threshold,
    cv::Mat & out);

} // namespace morvane::connexity
