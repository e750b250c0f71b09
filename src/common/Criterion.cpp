#include <morvane/common/Criterion.h>

namespace morvane::common
{

Criterion::~Criterion() = default;

void Criterion::AddPixel(int /*x*/, int /*y*/, int /*z*/) {}

void Criterion::SetLabel(std::uint64_t /*label*/) {}

void Criterion::SetLevel(int /*level*/) {}

bool Criterion::operator<(std::uint64_t value) const
{
    return GetValue() < value;
}

bool Criterion::operator<=(std::uint64_t value) const
{
    return GetValue() <= value;
}

bool Criterion::operator==(Criterion const & other) const
{
    return GetValue() == other.GetValue();
}

std::uint64_t Criterion::operator-(Criterion const & other) const
{
    std::uint64_t const one = GetValue();
    std::uint64_t const two = other.GetValue();
    return one < two ? two - one : one - two;
}

template class AttributeCriterion<AreaAttribute>;
template class AttributeCriterion<SqrtAreaAttribute>;
template class AttributeCriterion<HeightAttribute>;
template class AttributeCriterion<WidthAttribute>;
template class AttributeCriterion<StrainAttribute>;
template class AttributeCriterion<MinHWAttribute>;

} // namespace morvane::common
