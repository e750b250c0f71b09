/// @file
/// The road from the number of an attribute to its class.
#pragma once

#include <morvane/common/Attributes.h>

namespace morvane::connexity::max_tree_internals
{

/// Tells whether there is such an attribute.
[[nodiscard]] inline bool IsAttribute(common::eAttributeType attribute)
{
    return attribute >= common::eAttributeHeight && attribute <= common::eAttributeSqrtArea;
}

/// Calls @p leaf with the class of an attribute that there is.
template <class Leaf>
auto VisitAttribute(common::eAttributeType attribute, Leaf && leaf)
{
    switch (attribute)
    {
    case common::eAttributeHeight:
        return leaf.template operator()<common::HeightAttribute>();
    case common::eAttributeWidth:
        return leaf.template operator()<common::WidthAttribute>();
    case common::eAttributeStrain:
        return leaf.template operator()<common::StrainAttribute>();
    case common::eAttributeMinHW:
        return leaf.template operator()<common::MinHWAttribute>();
    case common::eAttributeArea:
        return leaf.template operator()<common::AreaAttribute>();
    default:
        return leaf.template operator()<common::SqrtAreaAttribute>();
    }
}

} // namespace morvane::connexity::max_tree_internals
