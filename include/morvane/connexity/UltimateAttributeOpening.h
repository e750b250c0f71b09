/// @file
/// The ultimate attribute opening: for each pixel, the size of opening at which the image drops most.
#pragma once

#include <morvane/Export.h>
#include <morvane/common/Attributes.h>
#include <morvane/connexity/Connexity.h>

#include <opencv2/core.hpp>

namespace morvane::connexity
{

/// Finds the largest residue of attribute openings of growing size, and the size at which it appears.
///
/// | array        | shape                           | depths                                | channels      | values |
/// |--------------|---------------------------------|---------------------------------------|---------------|--------|
/// | `image`      | rows x cols                     | `CV_8U`, `CV_16U`, `CV_16S`, `CV_32S` | 1             | not negative |
/// | `residues`   | rows x cols, made by the caller | that of `image`                       | 1             | the largest residue |
/// | `attributes` | rows x cols, made by the caller | `CV_8U`, `CV_16U`, `CV_16S`, `CV_32S` | any           | the attribute of the component that left, plus one; 0 without a residue |
///
/// The residue of a component is its level less that of its parent in the max-tree; components of equal attribute, one
/// inside the other, count as one, whose residues add up and whose attribute is that of the outermost. Of equal residues
/// on the way from the root the first one wins. The pixels of the root have neither residue nor attribute.
///
/// The attribute is cut to the element type of `attributes` before one is added, which may wrap: an area of 300 is 45 in
/// `CV_8U`. `CV_16S` holds the bits of `CV_16U`. In an `attributes` image of more channels the first `cols` elements of
/// each row are written.
///
/// @param image see the table; negative pixels as for AttributeOpening()
/// @param attribute what is measured
/// @param connexity the neighbourhood; a wrapped one is used without its wrap. With a value outside the enumeration all
///        pixels get 0.
/// @param residues overwritten whole, never reallocated
/// @param attributes overwritten, never reallocated
/// @return true when both images were written. False, with both untouched, when `image` has more than one channel,
///         `residues` differs from it in size, depth or channels, `attributes` in size, a depth or the attribute is
///         another, an image is empty, or one has more than two dimensions.
/// @throws std::bad_alloc when memory runs out
///
/// Cost: as for AttributeOpening(), and three tables of an entry for each node. One thread. `image` may be the same matrix
/// as `residues`; `residues` and `attributes` must not overlap.
///
/// Source: J. Fabrizio and B. Marcotegui, "Fast implementation of the ultimate opening", 2009.
[[nodiscard]] MORVANE_EXPORT bool UltimateAttributeOpening(
    cv::Mat const & image, common::eAttributeType attribute, eConnexityType const & connexity, cv::Mat & residues,
    cv::Mat & attributes);

/// The ultimate attribute opening up to a size: components that measure @p maxAttribute or more count for nothing, but
/// pass on what lies around them.
///
/// @param image, attribute, connexity, residues, attributes as for the plain form; a pixel of a component that was passed
///        over has attribute 0
/// @param maxAttribute the first attribute that is too large; a negative one is no limit
/// @return as the plain form
/// @throws std::bad_alloc as the plain form
///
/// Cost, threads and aliasing as for the plain form.
[[nodiscard]] MORVANE_EXPORT bool UltimateAttributeOpening(
    cv::Mat const & image, common::eAttributeType attribute, eConnexityType const & connexity, int maxAttribute,
    cv::Mat & residues, cv::Mat & attributes);

/// The ultimate attribute opening up to a size, with components of nearly equal attribute counted as one.
///
/// @param image, attribute, connexity, maxAttribute, residues, attributes as for the limited form
/// @param delta components whose attributes differ by less count as one, of the size of the first from which on the residue
///        grew: 1 asks for equal attributes, 0 for none at all,
///        a negative one joins every component to its parent
/// @return as the plain form
/// @throws std::bad_alloc as the plain form
///
/// Cost, threads and aliasing as for the plain form.
[[nodiscard]] MORVANE_EXPORT bool UltimateAttributeOpening(
    cv::Mat const & image, common::eAttributeType attribute, int delta, eConnexityType const & connexity,
    int maxAttribute, cv::Mat & residues, cv::Mat & attributes);

} // namespace morvane::connexity
