/// @file
/// Registration of two scan images: the rotation and translation of the moving image that lay it best on the reference.
///
/// The image is turned step by step, and for each angle the best translation is sought: by correlation, or by trying
/// every position near the expected one, or every position there is.
#pragma once

#include <morvane/Export.h>
#include <morvane/algorithm/TemplateMatchingData.h>

#include <opencv2/core.hpp>

#include <functional>
#include <queue>
#include <vector>

namespace morvane::algorithm
{

/// How the translation is sought for each angle. Any other value fails.
enum OpenCV_algos : int
{
    Correlation = 0,     ///< by `cv::matchTemplate`, with the ten highest peaks as candidates
    ExpectedPosition = 1 ///< by a score at each position around the expected one, without candidates
};

/// The candidates of each angle, in the order of the angles: the highest score on top, of equals the one that was
/// pushed first above.
using CandidateQueues = std::vector<
    std::priority_queue<TemplateMatchingInfo, std::vector<TemplateMatchingInfo>, std::less<TemplateMatchingInfo>>>;

/// @name Searches with parameters
///
/// Step i of n = max(1, round(2 range / step)) stands at the angle centre - range + step * i (i + 1) / 2: the steps
/// grow, and overrun the range for n above 2. Angles are as for utils::RotateImage(); the margin around the reference
/// is the ratio of the parameters' image infos times the diagonal of the moving image.
///
/// - `Correlation`: both images are cut to 8 bits, where values above 8 become 16, and 0 and 1 become 0. Of
/// `cv::matchTemplate` with `cv::TM_CCORR` ten peaks are pushed on the queue of the step: ten times the highest value,
/// after which all within 2 pixels of it count as the lowest, so that small windows give positions twice. They are
/// sought around the station on the reference within the range of the translation, or anywhere for a range of 0 or
/// less. The score is the peak over the pixels of the turned image, a square.
/// - `ExpectedPosition`: around the station of the reference plus the translation, within its range, each position
/// scores 16 for each pair of equal pixels above 2. Of equal scores the nearer to the expected position wins, then the
/// smaller column, then the smaller row. For images of 32 bits, `CV_32S`.
///
/// | array       | shape | depths                                             | channels | values |
/// |-------------|-------|----------------------------------------------------|----------|--------|
/// | `reference` | any   | any, see utils::RotateImage(); `CV_32S` for `ExpectedPosition` | 1 | occupancies, 0 where nothing was measured |
/// | `moving`    | any   | likewise, not the same for `Correlation`           | 1        | likewise |
///
/// `best` is in and out: a placement replaces it only with a higher score. `progress` is called with the share of the
/// work that is done, from 0 to 1; with false it ends the search after the present step, unless it answers the very
/// first or last report. A search that is ended gives true and the best so far.
///
/// All return true at the end. False, with what was found before in `best` and in the queues, for an `algo` outside its
/// table, a window of the correlation that misses all positions, several channels, elements of another size than 32
/// bits for `ExpectedPosition`, and a margin or a number of steps that no image or list can have. They throw
/// cv::Exception for what OpenCV refuses, as a turned image wider and lower than the padded reference, or narrower and
/// higher, in the correlation; std::bad_function_call for an empty `progress`; std::bad_alloc, std::length_error when
/// memory runs out; and what `progress` throws.
///
/// Cost: that of `cv::matchTemplate` for each step; or O(positions * pixels) for each step, in bytes. OpenCV's threads,
/// on whose number nothing depends.
/// @{

/// Searches as the parameters say.
///
/// @param reference stays where it is
/// @param moving is turned and shifted
/// @param parameters what is known
/// @param progress told the share of the work; true to go on
/// @param best the best placement
/// @param queues emptied, then one for each step
/// @param algo how the translation is sought
/// @return see above
/// @throws see above
///
/// @code
/// algorithm::TemplateMatchingInfo best;
/// algorithm::CandidateQueues queues;
/// algorithm::OpenCV_algos algo = algorithm::Correlation;
/// bool const done = algorithm::TemplateMatchingFullManual(
///     reference, moving, parameters, [](float) { return true; }, best, queues, algo);
/// @endcode
[[nodiscard]] MORVANE_EXPORT bool TemplateMatchingFullManual(
    cv::Mat const & reference, cv::Mat const & moving, matching::TM_Parameters const & parameters,
    std::function<bool(float)> progress, TemplateMatchingInfo & best, CandidateQueues & queues, OpenCV_algos & algo);

/// Searches with the centre 0, the range 180, the step 2 degrees, anywhere. For `Correlation`: without a range,
/// `ExpectedPosition` tries nothing.
///
/// @param reference as for TemplateMatchingFullManual()
/// @param moving as for TemplateMatchingFullManual()
/// @param parameters as for TemplateMatchingFullManual()
/// @param progress as for TemplateMatchingFullManual()
/// @param best as for TemplateMatchingFullManual()
/// @param queues as for TemplateMatchingFullManual()
/// @param algo as for TemplateMatchingFullManual()
/// @return see above
/// @throws see above
[[nodiscard]] MORVANE_EXPORT bool TemplateMatchingAutomatic(
    cv::Mat const & reference, cv::Mat const & moving, matching::TM_Parameters const & parameters,
    std::function<bool(float)> progress, TemplateMatchingInfo & best, CandidateQueues & queues, OpenCV_algos & algo);

/// Searches with the centre 0, the range 180, the step 1 degree, and a translation range of 1 pixel.
///
/// @param reference as for TemplateMatchingFullManual()
/// @param moving as for TemplateMatchingFullManual()
/// @param parameters as for TemplateMatchingFullManual()
/// @param progress as for TemplateMatchingFullManual()
/// @param best as for TemplateMatchingFullManual()
/// @param queues as for TemplateMatchingFullManual()
/// @param algo as for TemplateMatchingFullManual()
/// @return see above
/// @throws see above
[[nodiscard]] MORVANE_EXPORT bool TemplateMatchingOnlyRotation(
    cv::Mat const & reference, cv::Mat const & moving, matching::TM_Parameters const & parameters,
    std::function<bool(float)> progress, TemplateMatchingInfo & best, CandidateQueues & queues, OpenCV_algos & algo);

/// Searches at the centre of the orientation alone, anywhere. For `Correlation`, as TemplateMatchingAutomatic().
///
/// @param reference as for TemplateMatchingFullManual()
/// @param moving as for TemplateMatchingFullManual()
/// @param parameters as for TemplateMatchingFullManual()
/// @param progress as for TemplateMatchingFullManual()
/// @param best as for TemplateMatchingFullManual()
/// @param queues as for TemplateMatchingFullManual()
/// @param algo as for TemplateMatchingFullManual()
/// @return see above
/// @throws see above
[[nodiscard]] MORVANE_EXPORT bool TemplateMatchingOnlyTransation(
    cv::Mat const & reference, cv::Mat const & moving, matching::TM_Parameters const & parameters,
    std::function<bool(float)> progress, TemplateMatchingInfo & best, CandidateQueues & queues, OpenCV_algos & algo);

/// @}

/// Searches all angles from -180 to 180 degrees in steps of 3, and every translation, without parameters.
///
/// Each position scores 16 for each pair of equal pixels above 2; see matching_internals::TestAllPossibleTranslation().
///
/// @param reference rows x cols, `CV_32SC1`: occupancies, 0 where nothing was measured. Other elements of 32 bits are
///        read as `int`.
/// @param moving likewise
/// @param progress told the share of the work, 0 to 1; its answers are ignored
/// @param best in and out: replaced by a placement with a higher score. Its `ratio` times the diagonal of the moving
///        image is the margin around the reference.
/// @return true at the end; false for elements of another size, and a margin that no image can have
/// @throws std::bad_function_call for an empty `progress`; std::bad_alloc, cv::Exception when memory runs out; what
///         `progress` throws
///
/// Cost: O(121 * positions * pixels), in bytes. OpenCV's threads, on whose number nothing depends.
[[nodiscard]] MORVANE_EXPORT bool TemplateMatchingFullAuto(
    cv::Mat const & reference, cv::Mat const & moving, std::function<bool(float)> progress,
    TemplateMatchingInfo & best);

/// The steps of the searches.
namespace matching_internals
{

/// Scores every position of the turned image in the padded reference, but for the last column and the last row of them.
///
/// Positions are tried column by column, each from the top. One replaces the position kept with a higher score, or with
/// an equal one where the translation in x that was kept is above the column, as it stands. So of equal scores the
/// smallest column stays, then the smallest row, as long as the offset of translations is not negative.
///
/// @param padded the reference with a margin on all sides, elements of 32 bits, `CV_32SC1`
/// @param rotated the turned image, of the same kind
/// @param margin pixels
/// @param referenceRows of the reference without the margin
/// @param referenceCols of the reference without the margin
/// @param diagonal of the moving image, rounded
/// @param candidate replaced: the best position, or as if new where there is none
/// @return true; false, with `candidate` untouched, for elements that have not 32 bits
/// @throws std::bad_alloc, cv::Exception when memory runs out
///
/// Cost: O(positions * pixels), in bytes. OpenCV's threads.
[[nodiscard]] MORVANE_EXPORT bool TestAllPossibleTranslation(
    cv::Mat const & padded, cv::Mat const & rotated, int const & margin, int const & referenceRows,
    int const & referenceCols, int const & diagonal, TemplateMatchingInfo & candidate);

/// Scores the positions of the turned image around the expected one.
///
/// @param padded as for TestAllPossibleTranslation()
/// @param rotated as for TestAllPossibleTranslation()
/// @param margin as for TestAllPossibleTranslation()
/// @param referenceRows as for TestAllPossibleTranslation()
/// @param referenceCols as for TestAllPossibleTranslation()
/// @param diagonal as for TestAllPossibleTranslation()
/// @param parameters where it is expected, and how far around it is searched
/// @param station the station of the moving image, in the turned image
/// @param candidate replaced: the best position, or as if new where there is none
/// @return true; false, with `candidate` untouched, for elements that have not 32 bits
/// @throws std::bad_alloc, cv::Exception when memory runs out
[[nodiscard]] MORVANE_EXPORT bool TestTranslationsAroundExpectedPosition(
    cv::Mat const & padded, cv::Mat const & rotated, int const & margin, int const & referenceRows,
    int const & referenceCols, int const & diagonal, matching::TM_Parameters const & parameters,
    cv::Point_<double> const & station, TemplateMatchingInfo & candidate);

/// Sums 16 for each pair of equal elements above 2.
///
/// @param a elements of 32 bits, read as `int`
/// @param b of the same size and kind
/// @return the score; it wraps around
[[nodiscard]] MORVANE_EXPORT int EqualOccupancyScore(cv::Mat const & a, cv::Mat const & b);

/// The engine of the searches with parameters.
///
/// @param reference as for TemplateMatchingFullManual()
/// @param moving as for TemplateMatchingFullManual()
/// @param parameters as for TemplateMatchingFullManual()
/// @param progress as for TemplateMatchingFullManual()
/// @param best as for TemplateMatchingFullManual()
/// @param queues as for TemplateMatchingFullManual()
/// @param algo as for TemplateMatchingFullManual()
/// @param mode 1 for `algo`, 0 for TestAllPossibleTranslation(); any other fails
/// @return as TemplateMatchingFullManual()
/// @throws as TemplateMatchingFullManual()
[[nodiscard]] MORVANE_EXPORT bool SearchRotationsAndTranslations(
    cv::Mat const & reference, cv::Mat const & moving, matching::TM_Parameters const & parameters,
    std::function<bool(float)> const & progress, TemplateMatchingInfo & best, CandidateQueues & queues,
    OpenCV_algos algo, int mode);

/// The engine of TemplateMatchingFullAuto().
///
/// @param reference as for TemplateMatchingFullAuto()
/// @param moving as for TemplateMatchingFullAuto()
/// @param center degrees
/// @param range degrees; angles from `center` - `range` to `center` + `range` are tried
/// @param step degrees, above 0
/// @param mode 0; any other fails at the first angle
/// @param progress as for TemplateMatchingFullAuto()
/// @param best as for TemplateMatchingFullAuto()
/// @return as TemplateMatchingFullAuto(); false for a step that is not above 0 or too small to change the angle
/// @throws as TemplateMatchingFullAuto()
[[nodiscard]] MORVANE_EXPORT bool SearchFullAuto(
    cv::Mat const & reference, cv::Mat const & moving, double center, double range, double step, int mode,
    std::function<bool(float)> const & progress, TemplateMatchingInfo & best);

} // namespace matching_internals

/// Searches by `cv::matchTemplate` alone.
namespace OpenCV
{

/// Finds where a template fits best inside an image.
///
/// @param image one channel, any depth that can be made `CV_32F`
/// @param templ one channel, the depth of `image`, no larger
/// @param x column of the template's first pixel
/// @param y its row
/// @param score the extreme of `cv::matchTemplate`, negated for the squared differences
/// @param method one of `cv::TemplateMatchModes`
/// @return true when it was found; false, with all untouched, for empty images, several channels, different depths
/// @throws cv::Exception for what `cv::matchTemplate` refuses
///
/// Cost: that of `cv::matchTemplate`. OpenCV's threads.
[[nodiscard]] MORVANE_EXPORT bool
FindBestMatching(cv::Mat const & image, cv::Mat const & templ, int & x, int & y, double & score, int method);

/// Finds the translation at which two images fit best, with any overlap of a pixel and more.
///
/// The smaller image, by pixels, slides over the larger one; of equals, `templ` over `image`.
///
/// @param image as for FindBestMatching()
/// @param templ as for FindBestMatching(), of any size
/// @param x columns by which the middle of `templ` lies off that of `image`, rounded down, and one less: -1 where they
///        coincide; the negative of that with both exchanged where `image` is the smaller one
/// @param y rows, likewise
/// @param score the extreme over the pixels of the smaller image
/// @param method as for FindBestMatching()
/// @return as FindBestMatching()
/// @throws cv::Exception as FindBestMatching()
[[nodiscard]] MORVANE_EXPORT bool
FindBestTranslation(cv::Mat const & image, cv::Mat const & templ, int & x, int & y, double & score, int method);

/// Finds the rotation and translation of a template that fit best.
///
/// Of equal scores, the first angle wins.
///
/// @param image as for FindBestTranslation()
/// @param templ as for FindBestTranslation(); turned by utils::RotateImage()
/// @param x as for FindBestTranslation(); untouched where no angle has a score
/// @param y as for FindBestTranslation()
/// @param angle degrees
/// @param score the best; the lowest `double` where no angle has one
/// @param method as for FindBestMatching()
/// @param angleStart the first angle
/// @param angleEnd no angle reaches it
/// @param angleStep from angle to angle
/// @return true; false when the translation of an angle could not be found, with the best of the others
/// @throws std::length_error when `angleEnd` lies before `angleStart` or the number of angles is none that an `int`
///         holds; cv::Exception as FindBestMatching()
///
/// Cost: that of `cv::matchTemplate` for each angle. OpenCV's threads, on whose number nothing depends.
[[nodiscard]] MORVANE_EXPORT bool FindBestTransformation(
    cv::Mat const & image, cv::Mat const & templ, int & x, int & y, double & angle, double & score, int method,
    double angleStart, double angleEnd, double angleStep);

} // namespace OpenCV

} // namespace morvane::algorithm
