/// @file
/// Surface normals of organised point clouds, by planes fitted to the points around each pixel.
///
/// Three images X, Y, Z hold the coordinates of the point that was seen at each pixel of a scan, a fourth says where
/// there is one. A plane is fitted to the points of a square window by principal components: its normal is the
/// eigenvector of the smallest eigenvalue of their covariance, and the square root of that eigenvalue is the root mean
/// square distance of the points from it. Four strategies choose the window: NormalComputationWithWindowMoving_T one
/// for all pixels, NormalComputationWithPyramid_T and NormalComputationWithPyramidWindowMoving_T the best of several
/// for each, NormalComputationWithMaxDepthWithFixedWidth one of constant width in space. features::ComputeMatNormal()
/// chooses among the first three.
///
/// | array            | shape       | depths               | channels | values |
/// |------------------|-------------|----------------------|----------|--------|
/// | `depth`          | rows x cols | any but `CV_8S` and `CV_16F` | 1 | not 0 where a point exists, NaN included |
/// | `x`, `y`, `z`    | rows x cols | `CV_32F` or `CV_64F`, that of the class | 1 | coordinates in any unit; 0 where no point exists |
///
/// A window has a plane when it holds more than `minPoints` points, when the smallest eigenvalue is not below 0.0001
/// (square units: points that fit a plane better than that have no normal, on purpose), and when it differs from the
/// middle one. The normal is turned towards the origin of the coordinates, where the scanner stands. Where there is no
/// plane, the output is not written.
///
/// With N points, the weight is 1 / N in single precision; the centroid is the weight times the sums of the
/// coordinates, and an entry of the covariance (N * sum of products - product of sums) * weight * weight, in double
/// precision.
///
/// An object lives for one Execute(). The images and the output are borrowed: they must outlive it. Where an image
/// has another type or size than stated, Execute() does nothing. It throws std::bad_alloc or cv::Exception when
/// memory runs out.
///
/// Source: H. Hoppe et al., "Surface reconstruction from unorganized points", SIGGRAPH 1992; S. Holzer et al.,
/// "Adaptive neighborhood selection for real-time surface normal estimation from organized point cloud data using
/// integral images", IROS 2012.
#pragma once

#include <morvane/Export.h>

#include <opencv2/core.hpp>

#include <cmath>

namespace morvane
{

/// The number itself.
template <class T>
struct MORVANE_EXPORT Nonefuntion
{
    /// @return @p value
    [[nodiscard]] T operator()(T value) const { return value; }
};

/// The square root of a number.
template <class T>
struct MORVANE_EXPORT Sqrtfuntion
{
    /// @return the square root of @p value
    [[nodiscard]] T operator()(T value) const { return std::sqrt(value); }
};

/// Where normals go.
template <class T>
class MORVANE_EXPORT NormalOutput_T
{
public:
    NormalOutput_T() = default;
    /// Copies.
    NormalOutput_T(NormalOutput_T const &) = default;
    /// Copies.
    NormalOutput_T & operator=(NormalOutput_T const &) = default;

    /// Takes a normal.
    ///
    /// @param row, column the pixel
    /// @param count points in its window
    /// @param centroid of these, three numbers
    /// @param normal of their plane, three numbers
    virtual void
    WriteNormal(int const * row, int const * column, int count, double const * centroid, double const * normal) = 0;

    /// Takes a normal and how well the plane fits.
    ///
    /// @param row, column, count, centroid, normal as for WriteNormal()
    /// @param rms root mean square distance of the points from the plane
    /// @param score by which windows are compared: the less the better
    /// @param radius of the window, which is 2 * radius + 1 pixels wide
    virtual void WriteNormalAndRms(
        int const * row, int const * column, int count, double const * centroid, double const * normal, double rms,
        double score, int radius) = 0;

protected:
    ~NormalOutput_T() = default;
};

/// Normals and distances as images.
///
/// @tparam T float or double
template <class T>
class MORVANE_EXPORT NormalAndRMSOutput_T final : public NormalOutput_T<T>
{
public:
    /// @param normalImage three channels of T; borrowed
    /// @param defaultRmsValue what stands for "no distance"; the image is not set to it here
    /// @param rmsImage one channel of T, same size; borrowed
    NormalAndRMSOutput_T(cv::Mat & normalImage, T defaultRmsValue, cv::Mat & rmsImage)
        : normals(&normalImage)
        , defaultRms(defaultRmsValue)
        , rms(&rmsImage)
    {}

    /// Stores the normal.
    void WriteNormal(
        int const * row, int const * column, int count, double const * centroid, double const * normal) override;

    /// Stores the normal and the distance. Score and radius are not looked at.
    void WriteNormalAndRms(
        int const * row, int const * column, int count, double const * centroid, double const * normal, double rmsValue,
        double score, int radius) override;

    cv::Mat * normals; ///< three channels of T
    T defaultRms;      ///< where there is no plane
    cv::Mat * rms;     ///< one channel of T
};

/// Where the results of NormalComputationWithMaxDepthWithFixedWidth go: callers derive their own.
template <class T>
class MORVANE_EXPORT RMSOutput_T
{
public:
    RMSOutput_T() = default;
    /// Copies.
    RMSOutput_T(RMSOutput_T const &) = default;
    /// Copies.
    RMSOutput_T & operator=(RMSOutput_T const &) = default;

    /// Takes the result of a pixel.
    ///
    /// @param row, column the pixel
    /// @param count what the moments were divided by
    /// @param centroid, normal three numbers each; the normal is 0 where there is no plane
    /// @param rms root mean square distance of the points from the plane, 0 without one
    /// @param score the same again
    /// @param flag 0
    virtual void WriteNormalAndRms(
        int const * row, int const * column, int count, double const * centroid, double const * normal, T rms, T score,
        int flag) = 0;

protected:
    ~RMSOutput_T() = default;
};

/// What the strategies share.
///
/// @tparam T float or double
/// @tparam Output NormalAndRMSOutput_T or RMSOutput_T
/// @tparam Func applied to the reciprocal number of points when windows are compared
template <class T, class Output, class Func>
class MORVANE_EXPORT NormalComputation_T
{
public:
    /// @param halfWidthOfWindow largest radius of a window, in pixels. Where 2 * radius + 1 exceeds the smaller side of
    ///        the image, it becomes side / 2 - 1, in whole numbers
    /// @param depthImage, xImage, yImage, zImage see the head of this file
    /// @param outputOfResults takes the results
    /// @param leastPoints a plane needs more points than this
    NormalComputation_T(
        int halfWidthOfWindow, cv::Mat const & depthImage, cv::Mat const & xImage, cv::Mat yImage, cv::Mat zImage,
        Output & outputOfResults, int leastPoints);
    virtual ~NormalComputation_T();
    NormalComputation_T(NormalComputation_T const &) = delete;
    NormalComputation_T & operator=(NormalComputation_T const &) = delete;

    /// Computes all normals and hands them to the output.
    virtual void Execute() = 0;

    bool wrapColumns = true; ///< the first column is a neighbour of the last: true until it is set
    int halfWidth;           ///< largest radius
    cv::Mat const * depth;   ///< a point exists where it is not 0
    cv::Mat const * x;       ///< X coordinates
    cv::Mat y;               ///< Y coordinates
    cv::Mat z;               ///< Z coordinates
    int firstRadius;         ///< smallest radius of the searches: for 6 points 1, for 9 points 2
    int windowWidth = 0;     ///< 2 * halfWidth + 1
    Output * output;         ///< not owned
    int minPoints;           ///< a plane needs more points than this
};

/// One window for all pixels, moved along rows and columns: O(1) time for a pixel, whatever the radius.
///
/// Above the first row, rows are mirrored; below the last, they are missing. Columns wrap around with `wrapColumns`,
/// else they are missing too. Points are counted where `depth` is not 0, but coordinates are added up everywhere. The
/// sums of products are those of the coordinates in double precision; running sums drift by rounding, which is
/// accepted. A NaN coordinate
/// stays in the sums to its right and below it. One thread. Memory: 10 * (2 * radius + 4) rows of doubles.
template <class T, class Output>
class MORVANE_EXPORT NormalComputationWithWindowMoving_T : public NormalComputation_T<T, Output, Nonefuntion<double>>
{
public:
    /// As NormalComputation_T.
    NormalComputationWithWindowMoving_T(
        int halfWidthOfWindow, cv::Mat const & depthImage, cv::Mat const & xImage, cv::Mat const & yImage,
        cv::Mat const & zImage, Output & outputOfResults, int leastPoints);
    ~NormalComputationWithWindowMoving_T() override;
    NormalComputationWithWindowMoving_T(NormalComputationWithWindowMoving_T const &) = delete;
    NormalComputationWithWindowMoving_T & operator=(NormalComputationWithWindowMoving_T const &) = delete;

    /// Hands the plane of each window to the output.
    void Execute() override;

    cv::Mat validity; ///< `CV_8UC1`: 1 where a point exists, else 0
};

/// The best of several windows for each pixel, measured by integral images.
///
/// Radii run from `firstRadius` to max(`halfWidth`, 2); windows are cut at all borders. The score of a window is RMS /
/// points. The first window that has a plane is a yardstick only: it is never written, those after it are where they
/// beat all before. On OpenCV's threads, which share rows. Memory: 10 images of doubles.
template <class T, class Output, class Func>
class MORVANE_EXPORT NormalComputationWithPyramid_T : public NormalComputation_T<T, Output, Func>
{
public:
    /// As NormalComputation_T.
    NormalComputationWithPyramid_T(
        int halfWidthOfWindow, cv::Mat const & depthImage, cv::Mat const & xImage, cv::Mat const & yImage,
        cv::Mat const & zImage, Output & outputOfResults, int leastPoints);
    ~NormalComputationWithPyramid_T() override;
    NormalComputationWithPyramid_T(NormalComputationWithPyramid_T const &) = delete;
    NormalComputationWithPyramid_T & operator=(NormalComputationWithPyramid_T const &) = delete;

    /// Hands each window that beats the smaller ones of its pixel to the output.
    void Execute() override;

    cv::Mat validity;   ///< `CV_8UC1`: 1 where a point exists, else 0
    cv::Mat count;      ///< integral of `validity`, `CV_32S`
    cv::Mat sumX;       ///< integral of X, `CV_64F`
    cv::Mat squareSumX; ///< integral of its squares
    cv::Mat sumY;       ///< integral of Y
    cv::Mat squareSumY; ///< integral of its squares
    cv::Mat sumZ;       ///< integral of Z
    cv::Mat squareSumZ; ///< integral of its squares
    cv::Mat sumXY;      ///< integral of X * Y, products in T
    cv::Mat sumYZ;      ///< integral of Y * Z, products in T
    cv::Mat sumXZ;      ///< integral of X * Z, products in T
};

/// The best of several moving windows for each pixel.
///
/// Radii as for NormalComputationWithPyramid_T, windows as for NormalComputationWithWindowMoving_T. The score of a
/// window is RMS * Func(1 / points); the least one stays, the smaller radius on a tie, if it is below the `defaultRms`
/// of the output. Scores are kept in an image of the type of `depth`: in integers they are cut towards zero. On
/// OpenCV's threads; the result does not depend on their number.
template <class T, class Output, class Func>
class MORVANE_EXPORT NormalComputationWithPyramidWindowMoving_T : public NormalComputation_T<T, Output, Func>
{
public:
    /// As NormalComputation_T.
    NormalComputationWithPyramidWindowMoving_T(
        int halfWidthOfWindow, cv::Mat const & depthImage, cv::Mat const & xImage, cv::Mat const & yImage,
        cv::Mat const & zImage, Output & outputOfResults, int leastPoints);
    ~NormalComputationWithPyramidWindowMoving_T() override;
    NormalComputationWithPyramidWindowMoving_T(NormalComputationWithPyramidWindowMoving_T const &) = delete;
    NormalComputationWithPyramidWindowMoving_T & operator=(NormalComputationWithPyramidWindowMoving_T const &) = delete;

    /// Hands each window that beats the best so far of its pixel to the output, radii in rising order.
    void Execute() override;

    cv::Mat validity; ///< `CV_8UC1`: 1 where a point exists, else 0
};

/// A window of nearly constant width in space: large for near points, small for far ones.
///
/// For a pixel of depth d > 0, not closer to a border than `halfWidth`, the radius is atan(`fixedWidth` / d) /
/// `angleStep`, rounded, at least 3 and at most `halfWidth`; the arc tangent is a polynomial that is good to 0.0015 rad
/// up to 1 and is not meant for more. Windows of a radius above 8 are sampled, every radius / 8 + 1 pixels. Of the
/// neighbours, those much nearer than the pixel (by `maxDepthDifference` or more) are left out, farther ones stay.
/// Those without depth count as holes where the mask says so; more holes than the window has samples in a row add to
/// what the moments are divided by. Every pixel with more than `minPoints` neighbours is handed to the output, also
/// without a plane. One thread.
///
/// Nothing is done for a `halfWidth` below 1, a `depth` that is not `CV_32FC1`, or a mask that is not `CV_8UC1` of its
/// size.
///
/// Source of the arc tangent: S. Rajan et al., "Efficient approximations for the arctangent function", IEEE Signal
/// Processing Magazine 23, 2006.
class MORVANE_EXPORT NormalComputationWithMaxDepthWithFixedWidth
    : public NormalComputation_T<float, RMSOutput_T<float>, Nonefuntion<double>>
{
public:
    /// @param halfWidthOfWindow, depthImage, xImage, yImage, zImage, outputOfResults, leastPoints as for
    ///        NormalComputation_T; all images `CV_32FC1`
    /// @param depthDifference neighbours nearer than the pixel by this or more are left out, in the unit of `depth`
    /// @param width of the window in space, in the unit of `depth`
    /// @param angleStep angle between neighbouring pixels in radians
    /// @param rowsWithHoles holes count above this row only
    /// @param columnsWithHoles holes count left of this column only
    /// @param mask `CV_8UC1`: holes count where it is not 0
    NormalComputationWithMaxDepthWithFixedWidth(
        int halfWidthOfWindow, cv::Mat const & depthImage, cv::Mat const & xImage, cv::Mat const & yImage,
        cv::Mat const & zImage, RMSOutput_T<float> & outputOfResults, float depthDifference, float width,
        float angleStep, int rowsWithHoles, int columnsWithHoles, cv::Mat mask, int leastPoints);
    ~NormalComputationWithMaxDepthWithFixedWidth() override;
    NormalComputationWithMaxDepthWithFixedWidth(NormalComputationWithMaxDepthWithFixedWidth const &) = delete;
    NormalComputationWithMaxDepthWithFixedWidth &
    operator=(NormalComputationWithMaxDepthWithFixedWidth const &) = delete;

    /// Hands the plane of each pixel's window to the output.
    void Execute() override;

    float maxDepthDifference; ///< neighbours nearer by this or more are left out
    float fixedWidth;         ///< of the window in space
    float inverseAngleStep;   ///< one over the angle between neighbouring pixels
    int rowLimit;             ///< holes count above this row
    int columnLimit;          ///< holes count left of this column
    cv::Mat holeMask;         ///< `CV_8UC1`: holes count where it is not 0
};

} // namespace morvane
