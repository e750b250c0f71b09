/// @file
/// Region growing: magic wands, which grow zones of similar pixels from seeds, and a partition into such zones.
///
/// The flood wands stand on OpenCV's flood fill and give the mask of one region. The seeded wands and GrowRegion() walk
/// over the neighbourhoods of this library and give an image of labels.
#pragma once

#include <morvane/Export.h>
#include <morvane/connexity/Connexity.h>

#include <opencv2/core.hpp>

#include <vector>

namespace morvane::algorithm
{

/// The region of one seed, grown over small steps from neighbour to neighbour, in a mask with a frame.
///
/// A pixel belongs to it when a chain of 8-connected steps leads there, each of which differs by at most @p delta in
/// every channel (`cv::floodFill` with a floating range).
///
/// | array   | shape                   | depths                     | channels | values |
/// |---------|-------------------------|----------------------------|----------|--------|
/// | `image` | rows x cols             | `CV_8U`, `CV_32S`, `CV_32F` | 1 or 3  | any    |
/// | `out`   | (rows + 2) x (cols + 2) | `CV_8U`                    | 1        | 255 in the region, 0 elsewhere and in the frame |
///
/// The pixel (x, y) of the image stands at (x + 1, y + 1) of the mask.
///
/// @param image see the table; stays as it is, unless it shares memory with `out`
/// @param delta bound of a step, inclusive, for each channel, both up and down
/// @param seed a pixel of the image
/// @param out becomes the mask; memory that it shares with other matrices may be painted over on the way
/// @throws cv::Exception whatever `cv::floodFill` refuses: other types, a seed outside the image, a negative delta.
///         `out` may then hold a copy of the image.
///
/// Cost: O(pixels). One thread.
///
/// @code
/// cv::Mat roof;
/// morvane::algorithm::MagicWand(heights, cv::Scalar(0.05), cv::Point(120, 80), roof);
/// @endcode
MORVANE_EXPORT void MagicWand(cv::Mat const & image, cv::Scalar delta, cv::Point seed, cv::Mat & out);

/// The region that one seed reaches in a second image without leaving what it reaches in the first, in a mask with a
/// frame.
///
/// Both regions are grown as by the wand over one image.
///
/// | array    | shape                   | depths                     | channels | values |
/// |----------|-------------------------|----------------------------|----------|--------|
/// | `image1` | rows x cols             | `CV_8U`, `CV_32S`, `CV_32F` | 1 or 3  | any    |
/// | `image2` | rows x cols             | `CV_8U`, `CV_32S`, `CV_32F` | 1 or 3  | any    |
/// | `out`    | in: rows x cols, any type; out: (rows + 2) x (cols + 2) | out: `CV_8U` | 1 | 255 in the region, 0 elsewhere and in the frame |
///
/// @param image1 see the table
/// @param image2 see the table
/// @param delta1 bound of a step in `image1`, inclusive, for each channel
/// @param delta2 bound of a step in `image2`
/// @param seed a pixel of the images
/// @param out must have the size of `image1` when it is handed in; becomes the mask
/// @throws cv::Exception whatever `cv::floodFill` refuses, among it an `out` or an `image2` of another size than
///         `image1`. `out` may then hold a copy of `image2`.
///
/// Cost: O(pixels). One thread. The arguments must not overlap.
MORVANE_EXPORT void MagicWand(
    cv::Mat const & image1, cv::Mat const & image2, cv::Scalar delta1, cv::Scalar delta2, cv::Point seed,
    cv::Mat & out);

/// Labels the zones of a list of seeds, each grown over small steps from neighbour to neighbour.
///
/// A pixel belongs to the zone of a seed when a chain of steps leads there, each of which differs by at most @p delta
/// (see DeltaConnected). Zones are numbered from 1 in the order of the seeds; the first seed that reaches a pixel owns
/// it, and a seed inside the zone of an earlier one adds nothing.
///
/// | array   | shape       | depths                                          | channels | values |
/// |---------|-------------|-------------------------------------------------|----------|--------|
/// | `image` | rows x cols | `CV_8U`, `CV_16U`, `CV_16S`, `CV_32S`, `CV_32F`, `CV_64F` | 1 | any; empty pixels are pixels like others |
/// | `out`   | rows x cols, made by the caller | `CV_8U`, `CV_16U`, `CV_16S`, `CV_32S` | 1; of several, the first `cols` elements of each row take the labels and the others 0 | 0 outside the zones; labels wrap silently at the limit of the depth (16 bits wrap after 65535, `CV_16S` takes the bits), so that the 256th zone in `CV_8U` is 0 |
///
/// @param image see the table
/// @param connexity the neighbourhood; a value outside the table of eConnexityType gives zones of one pixel
/// @param seeds at least one; those outside the image are passed over
/// @param delta bound of a step, inclusive. For integer depths cut to an `int` of which the low bits of the depth are
///        kept: on `CV_8U`, 300 is 44; what no `int` can hold, NaN included, counts as the smallest.
/// @param out overwritten whole, never reallocated
/// @return true when `out` was written. False, with `out` untouched, when the image has more than one channel, the rows
///         or the columns differ, a depth is refused, or there are no seeds, looked at in this order; also for matrices
///         of more than two dimensions.
/// @throws std::bad_alloc, std::length_error when memory runs out
///
/// Cost: O(pixels) to prepare, O(pixels and neighbours) of the zones to grow. One value and 4 to 8 bytes for each
/// pixel. One thread. The arguments must not overlap.
///
/// @code
/// cv::Mat zones(depth.size(), CV_32SC1);
/// bool const done = morvane::algorithm::MagicWand(depth, connexity::eConnexity8, {{10, 20}, {300, 40}}, 0.02F, zones);
/// @endcode
[[nodiscard]] MORVANE_EXPORT bool MagicWand(
    cv::Mat const & image, connexity::eConnexityType const & connexity, std::vector<cv::Point> const & seeds,
    float delta, cv::Mat & out);

/// As MagicWand() over one image and seeds, with steps that must be small in two images.
///
/// The second image is read at the coordinates of the first. Its width is not compared: a wider one is read as far as
/// the first reaches, and beyond the end of a narrower one its pixels count as 0.
///
/// @param image1 as `image` of the wand over one image
/// @param image2 one channel, the rows of `image1`, any of the six depths
/// @param connexity as for the wand over one image
/// @param seeds as for the wand over one image
/// @param delta1 bound of a step in `image1`, converted by its depth
/// @param delta2 bound of a step in `image2`, converted by its depth
/// @param out as for the wand over one image, of the size of `image1`
/// @return true when `out` was written. False, with `out` untouched, when an image has more than one channel, the rows
///         of an image differ from those of `out`, the columns of `image1` differ, a depth is refused, or there are no
///         seeds, looked at in this order; also for matrices of more than two dimensions.
/// @throws std::bad_alloc, std::length_error when memory runs out
///
/// Cost, threads, aliasing: as for the wand over one image; a value of each image for each pixel.
[[nodiscard]] MORVANE_EXPORT bool MagicWand(
    cv::Mat const & image1, cv::Mat const & image2, connexity::eConnexityType const & connexity,
    std::vector<cv::Point> const & seeds, float delta1, float delta2, cv::Mat & out);

/// Labels the zones of a list of seeds, each grown breadth first while its values sum to less than a budget.
///
/// A neighbour joins when its value plus the sum so far is below the budget (see AccumulatorConnected); the value of
/// the seed is summed without a question, so that a seed has at least its own pixel. The sum is spent on the pixels
/// that are nearest in steps. What is refused stays free for other pixels of the zone to ask again, and for later
/// seeds.
///
/// @param image as for the seeded MagicWand() over one image
/// @param connexity as for MagicWand()
/// @param seeds as for MagicWand()
/// @param delta the budget, exclusive; for integer depths cut to an `int`, of which nothing is dropped. What no `int`
///        can hold counts as the smallest.
/// @param out as for MagicWand()
/// @return as the seeded MagicWand() over one image
/// @throws std::bad_alloc, std::length_error when memory runs out
///
/// Cost, threads, aliasing: as for MagicWand().
[[nodiscard]] MORVANE_EXPORT bool MagicWandBasedOnAccumulator(
    cv::Mat const & image, connexity::eConnexityType const & connexity, std::vector<cv::Point> const & seeds,
    float delta, cv::Mat & out);

/// As MagicWandBasedOnAccumulator(), grown from the lowest pixel to the next: the sum is spent in the valleys of the
/// image.
///
/// Pixels of one value leave the heap in the order of `std::push_heap` and `std::pop_heap`, keyed on the value alone
/// and pushed in the order of the offsets.
///
/// @param image as for MagicWand()
/// @param connexity as for MagicWand()
/// @param seeds as for MagicWand()
/// @param delta as for MagicWandBasedOnAccumulator()
/// @param out as for MagicWand()
/// @return as the seeded MagicWand() over one image
/// @throws std::bad_alloc, std::length_error when memory runs out
///
/// Cost: O(pixels) to prepare, O(pixels log pixels) of the zones to grow. Threads, aliasing: as for MagicWand().
[[nodiscard]] MORVANE_EXPORT bool MagicWandBasedOnPriorityAccumulator(
    cv::Mat const & image, connexity::eConnexityType const & connexity, std::vector<cv::Point> const & seeds,
    float delta, cv::Mat & out);

/// Splits two images into common zones around seeds that it finds itself: a partition of all pixels.
///
/// Each pixel that no zone has taken, in raster order, opens one. A pixel belongs to it when connected steps lead there
/// over free pixels that all differ from the opening pixel by at most @p delta1 in the first image and @p delta2 in the
/// second (see DeltaConnectedSeed): a zone never spans more, however slow the ramp. Zones are numbered from 1.
///
/// Arrays as for the seeded MagicWand() over two images.
///
/// @param image1 as for MagicWand()
/// @param image2 as for MagicWand(), with the same rule for its width
/// @param connexity as for MagicWand()
/// @param delta1 bound of the difference from the opening pixel in `image1`, inclusive, converted by its depth
/// @param delta2 bound in `image2`
/// @param out as for MagicWand(), of the size of `image1`
/// @return true when `out` was written. False, with `out` untouched, when an image has more than one channel, the rows
///         of an image differ from those of `out`, the columns of `image1` differ, or a depth is refused, looked at in
///         this order; also for matrices of more than two dimensions.
/// @throws std::bad_alloc, std::length_error when memory runs out
///
/// Cost: O(pixels and neighbours); where zones are small, their neighbours are asked by each of them. A value of each
/// image and 4 to 8 bytes for each pixel. One thread. The arguments must not overlap.
///
/// @code
/// cv::Mat zones(depth.size(), CV_32SC1);
/// bool const done = morvane::algorithm::GrowRegion(depth, intensity, connexity::eConnexity8, 0.1F, 20.0F, zones);
/// @endcode
///
/// Source: R. Adams and L. Bischof, "Seeded region growing", 1994, with fixed seed values in place of running means.
[[nodiscard]] MORVANE_EXPORT bool GrowRegion(
    cv::Mat const & image1, cv::Mat const & image2, connexity::eConnexityType const & connexity, float delta1,
    float delta2, cv::Mat & out);

} // namespace morvane::algorithm
