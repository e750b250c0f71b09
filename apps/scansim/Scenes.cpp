// The scenes that come with the simulator.

#include "scansim/Scene.h"

namespace scansim
{

namespace
{

using cv::Vec3b;
using cv::Vec3d;

Material const kPlaster{Vec3b(214, 226, 232), 0.75};
Material const kConcrete{Vec3b(150, 156, 160), 0.45};
Material const kWood{Vec3b(70, 120, 176), 0.55};
Material const kFloor{Vec3b(96, 116, 140), 0.35};
Material const kGlass{Vec3b(180, 170, 140), 0.10, true};
Material const kSteel{Vec3b(140, 120, 96), 0.30};
Material const kRed{Vec3b(52, 60, 200), 0.50};
Material const kYellow{Vec3b(70, 200, 230), 0.65};
Material const kGreen{Vec3b(80, 150, 70), 0.40};
Material const kBark{Vec3b(50, 76, 104), 0.25};
Material const kGrass{Vec3b(76, 132, 104), 0.38};
Material const kSand{Vec3b(130, 180, 206), 0.60};
Material const kBrick{Vec3b(72, 88, 168), 0.40};

Box BoxAt(double x, double y, double z, double width, double depth, double height)
{
    return {Vec3d(x, y, z), Vec3d(x + width, y + depth, z + height)};
}

/// A block standing at a place, given by its middle.
Box Block(double x, double y, double z, double width, double depth, double height)
{
    return BoxAt(x - width / 2.0, y - depth / 2.0, z, width, depth, height);
}

/// A mound: the top of a large ball that lies mostly below the ground.
Ball Mound(double x, double y, double height, double width)
{
    double const radius = (width * width / 4.0 + height * height) / (2.0 * height);
    return {Vec3d(x, y, kDatum + height - radius), radius};
}

void AddTree(Scene & scene, double x, double y, double height)
{
    scene.solids.push_back({Cylinder{Vec3d(x, y, kDatum), 0.18, height * 0.6}, kBark});
    scene.solids.push_back({Ball{Vec3d(x, y, kDatum + height * 0.75), height * 0.25}, kGreen});
}

void AddTable(Scene & scene, double x, double y)
{
    for (double const dx : {-0.7, 0.7})
    {
        for (double const dy : {-0.35, 0.35})
        {
            scene.solids.push_back({Block(x + dx, y + dy, kDatum, 0.06, 0.06, 0.72), kSteel});
        }
    }
    scene.solids.push_back({Block(x, y, kDatum + 0.72, 1.6, 0.9, 0.04), kWood});
    scene.solids.push_back({Ball{Vec3d(x - 0.4, y, kDatum + 0.91), 0.15}, kRed});
    scene.solids.push_back({Cylinder{Vec3d(x + 0.3, y + 0.1, kDatum + 0.76), 0.08, 0.25}, kYellow});
    scene.solids.push_back({Block(x + 0.1, y - 0.25, kDatum + 0.76, 0.3, 0.2, 0.06), kGreen});
}

/// The outer walls, cut where the window and the door are.
void AddWalls(Scene & scene)
{
    auto const wall = [&scene](Box const & box) {
        scene.solids.push_back({box, kPlaster});
    };
    wall(BoxAt(-4.2, -3.2, kDatum, 0.2, 6.4, 3.0));
    wall(BoxAt(-4.0, 3.0, kDatum, 8.0, 0.2, 3.0));
    // The window takes the middle of the eastern wall.
    wall(BoxAt(4.0, -3.2, kDatum, 0.2, 1.9, 3.0));
    wall(BoxAt(4.0, 1.3, kDatum, 0.2, 1.9, 3.0));
    wall(BoxAt(4.0, -1.3, kDatum, 0.2, 2.6, 0.9));
    wall(BoxAt(4.0, -1.3, kDatum + 2.4, 0.2, 2.6, 0.6));
    scene.solids.push_back({BoxAt(4.09, -1.3, kDatum + 0.9, 0.02, 2.6, 1.5), kGlass});
    // The door stands open in the southern wall.
    wall(BoxAt(-4.0, -3.2, kDatum, 1.2, 0.2, 3.0));
    wall(BoxAt(-1.8, -3.2, kDatum, 5.8, 0.2, 3.0));
    wall(BoxAt(-2.8, -3.2, kDatum + 2.1, 1.0, 0.2, 0.9));
}

} // namespace

Scene MakeRoom()
{
    Scene scene;
    scene.solids.push_back({BoxAt(-4.2, -3.2, kDatum - 0.2, 8.4, 6.4, 0.2), kFloor});
    scene.solids.push_back({BoxAt(-4.2, -3.2, kDatum + 3.0, 8.4, 6.4, 0.2), kPlaster});
    AddWalls(scene);
    AddTable(scene, 1.6, 0.8);
    scene.solids.push_back({Cylinder{Vec3d(-1.9, 1.4, kDatum), 0.25, 3.0}, kConcrete});
    scene.solids.push_back({BoxAt(-4.0, -1.2, kDatum, 0.4, 1.8, 1.9), kWood});
    scene.solids.push_back({Ball{Vec3d(1.6, 0.8, kDatum + 2.3), 0.2}, kYellow});
    scene.solids.push_back({Cylinder{Vec3d(1.6, 0.8, kDatum + 2.45), 0.015, 0.55}, kSteel});
    scene.solids.push_back({Block(2.9, -2.4, kDatum, 0.8, 0.8, 0.8), kRed});
    scene.solids.push_back({Block(2.9, -2.4, kDatum + 0.8, 0.5, 0.5, 0.5), kSand});
    return scene;
}

Scene MakeYard()
{
    Scene scene;
    auto const add = [&scene](auto const & shape, Material const & material) {
        scene.solids.push_back({shape, material});
    };
    add(Ground{kDatum}, kGrass);
    add(Mound(-9.0, 11.0, 1.4, 14.0), kSand);
    add(Mound(12.0, -13.0, 0.9, 16.0), kGrass);
    add(Mound(3.0, 19.0, 1.1, 12.0), kGrass);

    add(Block(6.0, 2.0, kDatum, 2.4, 1.2, 1.2), kConcrete);
    add(Block(6.3, 2.0, kDatum + 1.2, 1.2, 1.2, 1.2), kConcrete);
    add(Block(8.5, 5.5, kDatum, 1.2, 2.4, 1.2), kConcrete);
    add(Block(3.5, 6.5, kDatum, 1.2, 1.2, 1.2), kYellow);
    add(Block(-4.0, -5.0, kDatum, 1.6, 1.6, 0.8), kRed);
    add(Block(-6.5, -3.0, kDatum, 1.0, 1.0, 2.0), kWood);
    add(Block(-3.0, 4.5, kDatum, 0.8, 2.0, 0.6), kSteel);

    add(BoxAt(-16.0, -18.0, kDatum, 24.0, 0.4, 2.4), kBrick);
    add(BoxAt(14.0, 2.0, kDatum, 6.0, 8.0, 3.2), kPlaster);
    add(BoxAt(13.7, 1.7, kDatum + 3.2, 6.6, 8.6, 0.25), kSteel);

    for (double const x : {-12.0, -6.0, 0.0, 6.0})
    {
        add(Cylinder{Vec3d(x, -15.0, kDatum), 0.08, 4.5}, kSteel);
    }
    add(Cylinder{Vec3d(-14.0, 2.0, kDatum), 1.2, 3.0}, kSand);
    AddTree(scene, -10.0, -8.0, 6.0);
    AddTree(scene, 1.0, 12.5, 5.0);
    AddTree(scene, 9.0, 14.0, 7.0);
    AddTree(scene, -17.0, 9.0, 6.5);
    return scene;
}

} // namespace scansim
