#include "scansim/Scene.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

namespace scansim
{

namespace
{

using cv::Vec3d;

/// A candidate on one shape: range and outward normal.
struct Contact
{
    double range;
    Vec3d normal;
};

using Contacts = std::array<std::optional<Contact>, 2>;

/// Both places at which a ray crosses the surface of a box.
Contacts Meet(Box const & box, Vec3d const & origin, Vec3d const & direction)
{
    double enter = -std::numeric_limits<double>::infinity();
    double leave = std::numeric_limits<double>::infinity();
    Vec3d enterNormal;
    Vec3d leaveNormal;
    for (int axis = 0; axis < 3; ++axis)
    {
        if (direction[axis] == 0.0)
        {
            if (origin[axis] < box.low[axis] || origin[axis] > box.high[axis]) return {};
            continue;
        }
        double near = (box.low[axis] - origin[axis]) / direction[axis];
        double far = (box.high[axis] - origin[axis]) / direction[axis];
        if (near > far) std::swap(near, far);
        Vec3d normal;
        normal[axis] = direction[axis] > 0.0 ? 1.0 : -1.0;
        if (near > enter)
        {
            enter = near;
            enterNormal = -normal;
        }
        if (far < leave)
        {
            leave = far;
            leaveNormal = normal;
        }
    }
    if (enter > leave) return {};
    return {Contact{enter, enterNormal}, Contact{leave, leaveNormal}};
}

Contacts Meet(Ball const & ball, Vec3d const & origin, Vec3d const & direction)
{
    Vec3d const toCentre = ball.centre - origin;
    double const along = toCentre.dot(direction);
    double const aside = toCentre.dot(toCentre) - along * along;
    double const rest = ball.radius * ball.radius - aside;
    if (rest < 0.0) return {};
    Contacts contacts;
    for (int side = 0; side < 2; ++side)
    {
        double const range = along + (side == 0 ? -1.0 : 1.0) * std::sqrt(rest);
        contacts[static_cast<std::size_t>(side)] =
            Contact{range, (origin + range * direction - ball.centre) * (1.0 / ball.radius)};
    }
    return contacts;
}

Contacts Meet(Cylinder const & cylinder, Vec3d const & origin, Vec3d const & direction)
{
    // Seen from above it is a circle; its height then cuts the ray between two levels.
    Vec3d const offset = origin - cylinder.base;
    double const a = direction[0] * direction[0] + direction[1] * direction[1];
    if (a == 0.0) return {};
    double const b = offset[0] * direction[0] + offset[1] * direction[1];
    double const c = offset[0] * offset[0] + offset[1] * offset[1] - cylinder.radius * cylinder.radius;
    double const discriminant = b * b - a * c;
    if (discriminant < 0.0) return {};

    Contacts contacts;
    std::size_t found = 0;
    auto const add = [&](double range, Vec3d const & normal) {
        if (found < contacts.size()) contacts[found++] = Contact{range, normal};
    };
    for (double const sign : {-1.0, 1.0})
    {
        double const range = (-b + sign * std::sqrt(discriminant)) / a;
        Vec3d const point = offset + range * direction;
        if (point[2] < 0.0 || point[2] > cylinder.height) continue;
        add(range, Vec3d(point[0], point[1], 0.0) * (1.0 / cylinder.radius));
    }
    for (double const level : {0.0, cylinder.height})
    {
        if (direction[2] == 0.0) continue;
        double const range = (level - offset[2]) / direction[2];
        Vec3d const point = offset + range * direction;
        if (point[0] * point[0] + point[1] * point[1] > cylinder.radius * cylinder.radius) continue;
        add(range, Vec3d(0.0, 0.0, level == 0.0 ? -1.0 : 1.0));
    }
    return contacts;
}

Contacts Meet(Ground const & ground, Vec3d const & origin, Vec3d const & direction)
{
    if (direction[2] == 0.0) return {};
    return {Contact{(ground.height - origin[2]) / direction[2], Vec3d(0.0, 0.0, 1.0)}, std::nullopt};
}

} // namespace

std::optional<Hit> Scene::FirstHit(Vec3d const & origin, Vec3d const & direction, double beyond) const
{
    std::optional<Hit> first;
    for (Solid const & solid : solids)
    {
        Contacts const contacts =
            std::visit([&](auto const & shape) { return Meet(shape, origin, direction); }, solid.shape);
        for (auto const & contact : contacts)
        {
            if (!contact || contact->range <= beyond || (first && contact->range >= first->range)) continue;
            Vec3d const normal = contact->normal.dot(direction) > 0.0 ? -contact->normal : contact->normal;
            first = Hit{contact->range, normal, &solid.material};
        }
    }
    return first;
}

} // namespace scansim
