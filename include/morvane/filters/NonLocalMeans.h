/// @file
/// Denoising by non-local means: every pixel becomes a weighted mean of the pixels around it, by the likeness of
/// patches.
///
/// For each pixel, each candidate in a square around it is weighted by how much the patch around the candidate differs
/// from the patch around the pixel: w = exp(-d / `h`), d being the mean absolute difference of both patches in grey
/// levels. From d = 8 `h` on a candidate is dropped. The exponent is rounded down to steps of 1/1024, and the weights
/// come from a table. The pixel itself counts with c = (1 - b) * (the largest weight of its candidates) + b, where the
/// centre blend b is 0 unless stated. The mean is cut towards zero, not rounded. Pixels without a full square of full
/// patches around them, that is closer to a border than half the search square plus half the patch, keep their values.
///
/// | array | shape       | depths                                | channels | values |
/// |-------|-------------|---------------------------------------|----------|--------|
/// | `src` | rows x cols | `CV_8U`, `CV_16U`, `CV_16S`, `CV_32S` | 1        | any; zeros are values as any other |
/// | `dst` | see each operator | that of `src`                   | 1        | filtered |
///
/// The arguments of all operators:
/// - `patchSize`: width of the patches in pixels, from 0 on. An even one is raised by 1
/// - `searchSize`: width of the square of candidates in pixels, from 0 on, raised likewise. With 1 there is no
///   candidate
/// - `h`: strength, in grey levels of mean absolute difference. With 0 or NaN no candidate counts; with a negative one
///   only candidates whose patch hardly differs do
///
/// Without candidates nothing changes while the centre blend is 0. With another one a pixel is multiplied and divided
/// by its own weight, which can round, and cut, to the number below it.
///
/// All operators return true when they have filtered, also where the image is too small to hold a pixel that is. They
/// return false, with `dst` untouched, for other depths, several channels, more than two dimensions or a negative size.
/// They throw std::bad_alloc or cv::Exception when memory runs out.
///
/// Arithmetic is in single precision, in the order of the rows and columns of the search square, and of the patch where
/// a sum rounds; the result does not depend on the number of threads. Differences of `CV_32S` are exact. A mean above
/// the largest number of `CV_32S`, which is possible by rounding, becomes that number.
///
/// Cost of one pass: O(pixels * `searchSize`^2) time where a sum of patch differences is exact in single precision,
/// that is where (max - min) * `patchSize`^2 is up to 2^24; otherwise O(pixels * `searchSize`^2 * `patchSize`^2). 8
/// bytes for each pixel. `src` may be `dst`.
///
/// Source: A. Buades, B. Coll and J.-M. Morel, "A non-local algorithm for image denoising", CVPR 2005, with the
/// absolute in place of the squared difference.
#pragma once

#include <morvane/Export.h>

#include <opencv2/core.hpp>

namespace morvane::filters
{

/// One pass, on one thread.
///
/// @param src, patchSize, searchSize, h see the head of this file
/// @return see the head of this file
/// @param dst becomes the filtered image
///
/// @code
/// filters::NLMeans(intensity, 5, 21, 10.0F, smooth); // patches of 5 by 5, candidates in 21 by 21, noise of about 10 levels
/// @endcode
[[nodiscard]] MORVANE_EXPORT bool NLMeans(cv::Mat const & src, int patchSize, int searchSize, float h, cv::Mat & dst);

/// One pass as NLMeans(), with the same result, on OpenCV's threads.
[[nodiscard]] MORVANE_EXPORT bool
NLMeansParallel(cv::Mat const & src, int patchSize, int searchSize, float h, cv::Mat & dst);

/// Several passes, each on the result of the one before, with a centre that counts more and more.
///
/// The centre blend of pass i, from 1 on, is i / `iterations`; the last pass counts the pixel itself with weight 1. On
/// OpenCV's threads.
///
/// @param src, patchSize, searchSize, h see the head of this file
/// @return see the head of this file
/// @param iterations number of passes; with 0 or less the answer is true, and `dst` stays untouched
/// @param dst becomes the filtered image
[[nodiscard]] MORVANE_EXPORT bool
NLMeansIterative(cv::Mat const & src, int patchSize, int searchSize, float h, int iterations, cv::Mat & dst);

/// The multi-scale form: a strong first pass, further ones over the levels of a pyramid, and some of the detail back.
///
/// All levels are `CV_16S`, whatever the depth of `src`: what 16 bits cannot hold wraps around. A first pass of
/// strength 1.5 `h` gives a base, and what it took away, the residual. The base is split by DownSampling() `levels`
/// times; from the coarsest level down, level i, from 0 on, is filtered with strength `h` / 2^(i + 1) and centre blend
/// 1 and joined with its detail by UpSampling(). In the end each residual r comes back, with t being `h` cut to 16 bits
/// (towards zero, low bits; 0 for what no 32-bit integer holds): where r > t, r - t is added, and where r < -t, r + t.
/// Negative values become 0 in `CV_8U` and `CV_16U`, those above 255 become 255 in `CV_8U`.
///
/// The pass over level 0 runs on OpenCV's threads, all others on one.
///
/// @param src, patchSize, searchSize, h see the head of this file
/// @param levels number of times the image is halved, from 1 on
/// @param dst must be there, with the size and type of `src`; overwritten
/// @return as stated at the head of this file; false as well, with `dst` untouched, when `levels` is below 1 or `dst`
///         has another size or type
///
/// Source: the pyramid is that of Sampling.h; the residual is thresholded as in D. L. Donoho, "De-noising by
/// soft-thresholding", IEEE Transactions on Information Theory 41, 1995.
[[nodiscard]] MORVANE_EXPORT bool
MSD_NLMeans(cv::Mat const & src, int patchSize, int searchSize, float h, int levels, cv::Mat & dst);

/// The multi-scale form with all passes on OpenCV's threads, a first pass of strength `h`, and no residual.
///
/// Its result is not that of MSD_NLMeans(): the first pass is weaker, and what it takes away is not given back.
/// Everything else as there.
[[nodiscard]] MORVANE_EXPORT bool
MSD_NLMeansParallel(cv::Mat const & src, int patchSize, int searchSize, float h, int levels, cv::Mat & dst);

} // namespace morvane::filters
