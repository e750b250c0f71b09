#include <morvane/algorithm/TemplateMatchingData.h>

namespace morvane::algorithm
{

bool TemplateMatchingInfo::operator==(TemplateMatchingInfo const & other) const
{
    auto const compared = [](TemplateMatchingInfo const & info) {
        return std::tie(
            info.score, info.angle, info.translationX, info.translationY, info.positionX, info.positionY, info.ratio,
            info.reserved1, info.reserved2);
    };
    return compared(*this) == compared(other);
}

bool TemplateMatchingInfo::operator<(TemplateMatchingInfo const & other) const
{
    return score < other.score;
}

namespace matching
{

namespace
{

/// Throws what callers expect for resolutions that cannot be divided by. NaN passes.
void CheckDivisor(double value)
{
    if (value <= 0.0) throw " Potential division by zero ";
}

} // namespace

ImageInfos::ImageInfos(double const & xy, double const & z, double const & ratio)
    : m_xy(xy)
    , m_z(z)
    , m_ratio(ratio)
{
    CheckDivisor(xy);
    CheckDivisor(z);
}

RelativePositionningInfos::RelativePositionningInfos(
    double const & orientationCenter, double const & orientationRange, double const & orientationStep,
    double const & xDisplacement, double const & yDisplacement, double const & spaceDisplacement)
    : m_center(orientationCenter)
    , m_range(orientationRange)
    , m_step(orientationStep)
    , m_x(xDisplacement)
    , m_y(yDisplacement)
    , m_space(spaceDisplacement)
{}

void RelativePositionningInfos::Set_Orientation(double const & center, double const & range, double const & step)
{
    Set_Orientation(Triple(center, range, step));
}

void RelativePositionningInfos::Set_Relative_Displacement(double const & x, double const & y, double const & space)
{
    Set_Relative_Displacement(Triple(x, y, space));
}

TM_Parameters::TM_Parameters(
    ImageInfos const & imageInfos, cv::Point_<double> const & refOnRef, cv::Point_<double> const & movOnMov,
    cv::Point_<double> const & movOnRef, RelativePositionningInfos const & relativePositionning)
    : m_imageInfos(imageInfos)
    , m_relativePositionning(relativePositionning)
    , m_refOnRef(refOnRef)
    , m_movOnMov(movOnMov)
    , m_movOnRef(movOnRef)
{
    Set_Orientation_Infos(relativePositionning.Get_Orientation());
    double const resolution = imageInfos.Get_XY_Resolution();
    CheckDivisor(resolution);
    m_translationX = relativePositionning.Get_X_Displacement() / resolution;
    m_translationY = relativePositionning.Get_Y_Displacement() / resolution;
    double const space = relativePositionning.Get_Space_Displacement();
    m_translationRange = space == -1.0 ? space : space / resolution;
}

TM_Parameters::Triple TM_Parameters::Get_Translation_Infos() const
{
    return {m_translationX, m_translationY, m_translationRange};
}

void TM_Parameters::Set_Translation_Infos(Triple const & translation)
{
    std::tie(m_translationX, m_translationY, m_translationRange) = translation;
}

TM_Parameters::Triple TM_Parameters::Get_Orientation_Infos() const
{
    return {m_orientationCenter, m_orientationRange, m_orientationStep};
}

void TM_Parameters::Set_Orientation_Infos(Triple const & orientation)
{
    std::tie(m_orientationCenter, m_orientationRange, m_orientationStep) = orientation;
}

} // namespace matching

} // namespace morvane::algorithm
