/// @file
/// Scenes of simple solids, and where a ray meets them.
#pragma once

#include <opencv2/core.hpp>

#include <optional>
#include <variant>
#include <vector>

namespace scansim
{

/// What a solid is made of.
struct Material
{
    cv::Vec3b colour;         ///< blue, green, red, never all 0
    double reflectance = 0.5; ///< share of the laser light that comes back from a surface met head on, 0 to 1
    bool isGlass = false;     ///< most rays pass through
};

/// A box with faces parallel to the axes, metres.
struct Box
{
    cv::Vec3d low;
    cv::Vec3d high;
};

/// A ball, metres.
struct Ball
{
    cv::Vec3d centre;
    double radius = 1.0;
};

/// An upright cylinder with closed ends, metres.
struct Cylinder
{
    cv::Vec3d base; ///< centre of the lower end
    double radius = 1.0;
    double height = 1.0;
};

/// The ground: a level plane at a height, without end.
struct Ground
{
    double height = 0.0;
};

/// A shape and its material.
struct Solid
{
    std::variant<Box, Ball, Cylinder, Ground> shape;
    Material material;
};

/// Where a ray meets a solid.
struct Hit
{
    double range = 0.0; ///< metres along the ray
    cv::Vec3d normal;   ///< of length 1, on the side of the ray's origin
    Material const * material = nullptr;
};

/// Solids in a frame with z upwards, metres.
struct Scene
{
    std::vector<Solid> solids;

    /// The first hit of a ray beyond a range.
    ///
    /// @param origin of the ray
    /// @param direction of length 1
    /// @param beyond hits at this range or nearer do not count
    [[nodiscard]] std::optional<Hit>
    FirstHit(cv::Vec3d const & origin, cv::Vec3d const & direction, double beyond) const;
};

/// Heights in the scenes start from here, so that no measured height is 0: the datum, metres.
inline constexpr double kDatum = 100.0;

/// A room of 8 by 6 by 3 metres with a window, a door, a column, a table and things on it.
[[nodiscard]] Scene MakeRoom();

/// A yard some 50 metres across: mounds, stacked blocks, a wall, a shed, poles and trees under an open sky.
[[nodiscard]] Scene MakeYard();

} // namespace scansim
