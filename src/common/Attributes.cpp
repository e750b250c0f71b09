#include <morvane/common/Attributes.h>

namespace morvane::common
{

bool AreaAttribute::IsEmpty() const
{
    return m_area == 0;
}

bool SqrtAreaAttribute::IsEmpty() const
{
    return m_area == 0;
}

bool HeightAttribute::IsEmpty() const
{
    return m_y.IsInverted();
}

bool WidthAttribute::IsEmpty() const
{
    return m_x.IsInverted();
}

bool StrainAttribute::IsEmpty() const
{
    return IsInverted();
}

bool MinHWAttribute::IsEmpty() const
{
    return IsInverted();
}

} // namespace morvane::common
