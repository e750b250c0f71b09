/// @file
/// What a caller tells about two scan images that are to be registered, and what comes back.
///
/// Both images are top views, each of a scan from a station. The reference stays where it is; the moving image is
/// turned and shifted until its content falls on the reference.
#pragma once

#include <morvane/Export.h>

#include <opencv2/core.hpp>

#include <limits>
#include <tuple>

namespace morvane::algorithm
{

/// A placement of the moving image, and how good it is. All lengths in pixels.
struct MORVANE_EXPORT TemplateMatchingInfo
{
    static constexpr double kNone = std::numeric_limits<double>::lowest(); ///< what is in a field that was not set

    double score = kNone;        ///< higher is better
    double angle = kNone;        ///< degrees by which the moving image is turned
    double translationX = kNone; ///< column of the placement, from that at which the middles of both images coincide
    double translationY = kNone; ///< its row, likewise
    double positionX = kNone;    ///< column of the turned image's first pixel in the padded reference
    double positionY = kNone;    ///< its row
    double ratio = 1.0;       ///< of TemplateMatchingFullAuto(): the margin, as a share of the moving image's diagonal
    double reserved1 = kNone; ///< never written by a search
    double reserved2 = kNone; ///< never written by a search
    double peakX = kNone;     ///< column of the peak in the window of the correlation that was searched
    double peakY = kNone;     ///< its row
    cv::Mat image;            ///< carried along, its data shared; never filled by a search

    /// Tells whether the first nine numbers are equal; the peak and the image do not count.
    [[nodiscard]] bool operator==(TemplateMatchingInfo const & other) const;

    /// Compares the scores, and nothing else.
    [[nodiscard]] bool operator<(TemplateMatchingInfo const & other) const;
};

/// How far a placement is from where it was expected, in pixels.
struct Distance
{
    double value = std::numeric_limits<double>::max(); ///< pixels
};

namespace matching
{

/// What a pixel measures.
class MORVANE_EXPORT ImageInfos
{
public:
    /// @param xy world units per pixel
    /// @param z world units per step of elevation
    /// @param ratio margin around the reference, as a share of the moving image's diagonal
    /// @throws char const *, the literal " Potential division by zero ", when xy or z is 0 or negative; NaN passes
    ImageInfos(double const & xy, double const & z, double const & ratio);

    /// World units per pixel.
    [[nodiscard]] double Get_XY_Resolution() const { return m_xy; }
    /// Not checked.
    void Set_XY_Resolution(double const & xy) { m_xy = xy; }
    /// World units per step of elevation; checked above, and not read further.
    [[nodiscard]] double Get_Z_Resolution() const { return m_z; }
    /// Not checked.
    void Set_Z_Resolution(double const & z) { m_z = z; }
    /// The margin around the reference, as a share of the moving image's diagonal.
    [[nodiscard]] double Get_Ratio() const { return m_ratio; }
    /// Not checked.
    void Set_Ratio(double const & ratio) { m_ratio = ratio; }

private:
    double m_xy;
    double m_z;
    double m_ratio;
};

/// What is known of the relative pose beforehand: angles in degrees, lengths in world units.
class MORVANE_EXPORT RelativePositionningInfos
{
public:
    /// Three numbers that belong together.
    using Triple = std::tuple<double, double, double>;

    /// @param orientationCenter the angle around which is searched
    /// @param orientationRange half the width of the search
    /// @param orientationStep from angle to angle
    /// @param xDisplacement expected displacement in x
    /// @param yDisplacement expected displacement in y
    /// @param spaceDisplacement radius of the search around it; -1.0 for none
    RelativePositionningInfos(
        double const & orientationCenter, double const & orientationRange, double const & orientationStep,
        double const & xDisplacement, double const & yDisplacement, double const & spaceDisplacement);

    /// Degrees.
    [[nodiscard]] double Get_Orientation_Center() const { return m_center; }
    /// Degrees.
    void Set_Orientation_Center(double const & center) { m_center = center; }
    /// Degrees, half the width of the search.
    [[nodiscard]] double Get_Orientation_Range() const { return m_range; }
    /// Degrees, half the width of the search.
    void Set_Orientation_Range(double const & range) { m_range = range; }
    /// Degrees.
    [[nodiscard]] double Get_Orientaton_Step() const { return m_step; }
    /// Degrees.
    void Set_Orientation_Step(double const & step) { m_step = step; }
    /// World units.
    [[nodiscard]] double Get_X_Displacement() const { return m_x; }
    /// World units.
    void Set_X_Relative_Translation(double const & x) { m_x = x; }
    /// World units.
    [[nodiscard]] double Get_Y_Displacement() const { return m_y; }
    /// World units.
    void Set_Y_Relative_Translation(double const & y) { m_y = y; }
    /// World units; -1.0 for no radius.
    [[nodiscard]] double Get_Space_Displacement() const { return m_space; }
    /// World units; -1.0 for no radius.
    void Set_SearchSpace_Translation(double const & space) { m_space = space; }

    /// Centre, range and step of the orientation.
    [[nodiscard]] Triple Get_Orientation() const { return {m_center, m_range, m_step}; }
    /// Centre, range and step of the orientation.
    void Set_Orientation(Triple const & orientation) { std::tie(m_center, m_range, m_step) = orientation; }
    /// Centre, range and step of the orientation.
    void Set_Orientation(double const & center, double const & range, double const & step);
    /// Displacement in x and y, and the radius.
    [[nodiscard]] Triple Get_Diplacement() const { return {m_x, m_y, m_space}; }
    /// Displacement in x and y, and the radius.
    void Set_Relative_Displacement(Triple const & displacement) { std::tie(m_x, m_y, m_space) = displacement; }
    /// Displacement in x and y, and the radius.
    void Set_Relative_Displacement(double const & x, double const & y, double const & space);

private:
    double m_center;
    double m_range;
    double m_step;
    double m_x;
    double m_y;
    double m_space;
};

/// Everything a search takes: what is known in world units, where the stations are, and the ranges of the search in
/// pixels.
///
/// The numbers in pixels are worked out once, by the constructor: later changes of what they came from do not reach
/// them.
class MORVANE_EXPORT TM_Parameters
{
public:
    using Triple = RelativePositionningInfos::Triple; ///< three numbers that belong together

    /// @param imageInfos what a pixel measures
    /// @param refOnRef station of the reference, in pixels of the reference
    /// @param movOnMov station of the moving image, in its pixels
    /// @param movOnRef where this station is expected, in pixels of the reference
    /// @param relativePositionning what is known of the pose. Its displacements are divided by the XY resolution; a
    ///        radius of exactly -1.0 stays -1.0
    /// @throws char const *, the literal " Potential division by zero ", when the XY resolution is 0 or negative
    TM_Parameters(
        ImageInfos const & imageInfos, cv::Point_<double> const & refOnRef, cv::Point_<double> const & movOnMov,
        cv::Point_<double> const & movOnRef, RelativePositionningInfos const & relativePositionning);

    /// What a pixel measures.
    [[nodiscard]] ImageInfos const & GetImageInfos() const { return m_imageInfos; }
    /// Changes nothing else.
    void SetImageInfos(ImageInfos const & imageInfos) { m_imageInfos = imageInfos; }
    /// What is known of the pose, in world units.
    [[nodiscard]] RelativePositionningInfos const & GetRelativePositionning() const { return m_relativePositionning; }
    /// Changes nothing else.
    void SetRelativePositionning(RelativePositionningInfos const & infos) { m_relativePositionning = infos; }

    /// Station of the reference, in its pixels.
    [[nodiscard]] cv::Point_<double> GetRefStationPositionOnRef() const { return m_refOnRef; }
    /// Station of the reference, in its pixels.
    void SetRefStationPositionOnRef(cv::Point_<double> const & station) { m_refOnRef = station; }
    /// Station of the moving image, in its pixels.
    [[nodiscard]] cv::Point_<double> GetMovStationPositionOnMov() const { return m_movOnMov; }
    /// Station of the moving image, in its pixels.
    void SetMovStationPositionOnMov(cv::Point_<double> const & station) { m_movOnMov = station; }
    /// Where the station of the moving image is expected, in pixels of the reference: as given to the constructor.
    [[nodiscard]] cv::Point_<double> GetMovStationPositionOnRef() const { return m_movOnRef; }
    /// The same as SetMovStationPositionOnMov(), on purpose: it sets the station on the moving image.
    void SetMovStationPositionOnRef(cv::Point_<double> const & station) { SetMovStationPositionOnMov(station); }

    /// Pixels.
    [[nodiscard]] double Get_Translation_XDisp() const { return m_translationX; }
    /// Pixels.
    void Set_Translation_X(double const & x) { m_translationX = x; }
    /// Pixels.
    [[nodiscard]] double Get_Translation_YDisp() const { return m_translationY; }
    /// Pixels.
    void Set_Translation_Y(double const & y) { m_translationY = y; }
    /// Pixels; no limit where it is not above 0.
    [[nodiscard]] double Get_Translation_RangeDisp() const { return m_translationRange; }
    /// Pixels; no limit where it is not above 0.
    void Set_Translation_Range(double const & range) { m_translationRange = range; }
    /// Degrees.
    [[nodiscard]] double Get_Orientation_Center() const { return m_orientationCenter; }
    /// Degrees.
    void Set_Orientation_Center(double const & center) { m_orientationCenter = center; }
    /// Degrees, half the width of the search.
    [[nodiscard]] double Get_Orientation_Range() const { return m_orientationRange; }
    /// Degrees, half the width of the search.
    void Set_Orientation_Range(double const & range) { m_orientationRange = range; }
    /// Degrees.
    [[nodiscard]] double Get_Orientation_Step() const { return m_orientationStep; }
    /// Degrees.
    void Set_Orientation_Step(double const & step) { m_orientationStep = step; }

    /// Translation in x and y, and its range.
    [[nodiscard]] Triple Get_Translation_Infos() const;
    /// Translation in x and y, and its range.
    void Set_Translation_Infos(Triple const & translation);
    /// Centre, range and step of the orientation.
    [[nodiscard]] Triple Get_Orientation_Infos() const;
    /// Centre, range and step of the orientation.
    void Set_Orientation_Infos(Triple const & orientation);

private:
    ImageInfos m_imageInfos;
    RelativePositionningInfos m_relativePositionning;
    cv::Point_<double> m_refOnRef;
    cv::Point_<double> m_movOnMov;
    cv::Point_<double> m_movOnRef;
    double m_translationX = 0.0;
    double m_translationY = 0.0;
    double m_translationRange = 0.0;
    double m_orientationCenter = 0.0;
    double m_orientationRange = 0.0;
    double m_orientationStep = 0.0;
};

} // namespace matching

} // namespace morvane::algorithm
