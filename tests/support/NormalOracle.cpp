#include "support/NormalOracle.h"

#include "support/CompareOracle.h"
#include "support/ImageLiterals.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace morvane::tests
{

namespace
{

cv::Vec3d PointAt(PointCloud const & cloud, int row, int column)
{
    return {ElementAt(cloud.x, row, column), ElementAt(cloud.y, row, column), ElementAt(cloud.z, row, column)};
}

bool IsPoint(PointCloud const & cloud, int row, int column)
{
    return ElementAt(cloud.depth, row, column) != 0.0;
}

/// The halved width of the window that an image has room for.
int CutHalfWidth(cv::Size size, int halfWidth)
{
    int const side = std::min(size.width, size.height);
    return 2 * halfWidth + 1 > side ? side / 2 - 1 : halfWidth;
}

bool AreClose(double one, double other)
{
    return std::abs(one - other) <= 1e-9 * std::max(std::abs(one), std::abs(other));
}

/// What a search knows of a pixel.
struct Search
{
    bool isOpen = false;
    bool isWritten = false;
    OraclePlane plane;

    void Write(OraclePlane const & written)
    {
        isWritten = true;
        plane = written;
    }
};

/// The first window that has a plane is the yardstick of those after it, and is not written.
Search SearchIntegral(PointCloud const & cloud, cv::Point pixel, NormalSettings const & settings)
{
    Search search;
    bool isFirst = true;
    double best = 0.0;
    for (int const radius : OracleRadii(cloud.depth.size(), settings))
    {
        WindowSums const sums = OracleCutSums(cloud, pixel, radius);
        if (sums.count <= settings.minPoints) continue;
        OraclePlane const plane = OracleFit(sums, sums.count);
        search.isOpen |= plane.answer == PlaneAnswer::Open;
        if (plane.answer != PlaneAnswer::Plane) continue;
        double const score = plane.rms * (1.0 / plane.count);
        search.isOpen |= !isFirst && AreClose(score, best);
        if (!isFirst && score < best) search.Write(plane);
        if (isFirst || score < best) best = score;
        isFirst = false;
    }
    return search;
}

/// The least score below the default distance wins; it is kept as an element of the type of the depths.
Search SearchMoving(PointCloud const & cloud, cv::Point pixel, NormalSettings const & settings)
{
    int const type = cloud.depth.depth();
    Search search;
    double best = OracleElement(settings.defaultRms, type);
    for (int const radius : OracleRadii(cloud.depth.size(), settings))
    {
        WindowSums const sums = OracleMovingSums(cloud, pixel, radius, settings.wrapColumns);
        if (sums.count <= settings.minPoints) continue;
        OraclePlane const plane = OracleFit(sums, sums.count);
        search.isOpen |= plane.answer == PlaneAnswer::Open;
        if (plane.answer != PlaneAnswer::Plane) continue;
        double const share = 1.0 / plane.count;
        double const score = plane.rms * (settings.method == 3 ? std::sqrt(share) : share);
        search.isOpen |= AreClose(score, best);
        if (!(best > score)) continue;
        search.Write(plane);
        best = OracleElement(score, type);
        double const least = OracleElement(score * (1.0 - 1e-12), type);
        double const most = OracleElement(score * (1.0 + 1e-12), type);
        search.isOpen |= type != CV_64F && least != most;
    }
    return search;
}

/// One window.
Search FitMoving(PointCloud const & cloud, cv::Point pixel, NormalSettings const & settings)
{
    Search search;
    for (int const radius : OracleRadii(cloud.depth.size(), settings))
    {
        WindowSums const sums = OracleMovingSums(cloud, pixel, radius, settings.wrapColumns);
        if (sums.count <= settings.minPoints) continue;
        OraclePlane const plane = OracleFit(sums, sums.count);
        search.isOpen = plane.answer == PlaneAnswer::Open;
        if (plane.answer == PlaneAnswer::Plane) search.Write(plane);
    }
    return search;
}

Search SearchPixel(PointCloud const & cloud, cv::Point pixel, NormalSettings const & settings)
{
    if (settings.method == 0) return FitMoving(cloud, pixel, settings);
    return settings.method == 1 ? SearchIntegral(cloud, pixel, settings) : SearchMoving(cloud, pixel, settings);
}

/// The greatest difference that rounding makes.
double Tolerance(int depth, double value)
{
    return (depth == CV_32F ? 1.5e-7 : 1e-6) * std::max(1.0, std::abs(value));
}

cv::Vec3d NormalAt(cv::Mat const & normals, int row, int column)
{
    return {ElementAt(normals, row, column, 0), ElementAt(normals, row, column, 1), ElementAt(normals, row, column, 2)};
}

bool AreNear(cv::Vec3d const & one, cv::Vec3d const & other, int depth)
{
    return std::abs(one[0] - other[0]) <= Tolerance(depth, other[0]) &&
           std::abs(one[1] - other[1]) <= Tolerance(depth, other[1]) &&
           std::abs(one[2] - other[2]) <= Tolerance(depth, other[2]);
}

/// The radius of the window of a pixel at a distance.
int FixedWidthRadius(FixedWidth const & settings, int halfWidth, float distance)
{
    float const t = settings.width / distance;
    float const a = t * 0.7853982F - ((std::abs(t) - 1) * t) * (std::abs(t) * 0.0663F + 0.2447F);
    auto const inverseStep = 1.0F / settings.angleStep;
    auto const radius = static_cast<int>(OracleCut(static_cast<double>(a * inverseStep + 0.5F)));
    return std::min(std::max(radius, 3), halfWidth);
}

} // namespace

PointCloud RoughCloud(Random & random, cv::Size size, int type, CloudMixture const & mixture)
{
    PointCloud cloud;
    for (cv::Mat * const image : {&cloud.x, &cloud.y, &cloud.z})
    {
        *image = cv::Mat(size, type, cv::Scalar(0.0));
    }
    cloud.depth = cv::Mat(size, mixture.depthType, cv::Scalar(0.0));
    auto const noise = [&](int most) {
        return (random.Below(2 * most + 1) - most) / 64.0;
    };
    int const tiltX = random.Below(9) - 4;
    int const tiltY = random.Below(9) - 4;
    std::uint64_t const patches = random.Next();
    cv::Point const middle(size.width / 2, size.height / 2);
    for (int row = 0; row < size.height; ++row)
    {
        for (int column = 0; column < size.width; ++column)
        {
            Random patch(patches + static_cast<std::uint64_t>(row / 6 * 1000 + column / 6));
            bool const isFlat = patch.Chance(mixture.flatShare);
            bool const isPoint = !random.Chance(mixture.emptyShare);
            if (isPoint) SetElement(cloud.depth, row, column, 0, 1 + random.Below(100));
            if (!isPoint && !random.Chance(mixture.strayShare)) continue;
            double const x = (column - middle.x) / 4.0;
            double const y = (row - middle.y) / 4.0;
            double const z = (x * tiltX + y * tiltY) / 4.0;
            SetElement(cloud.x, row, column, 0, mixture.centre[0] + x + (isFlat ? 0.0 : noise(4)));
            SetElement(cloud.y, row, column, 0, mixture.centre[1] + y + (isFlat ? 0.0 : noise(4)));
            SetElement(cloud.z, row, column, 0, mixture.centre[2] + z + (isFlat ? 0.0 : noise(12)));
        }
    }
    return cloud;
}

void WindowSums::Add(cv::Vec3d const & point)
{
    sum += point;
    products += point * point.t();
}

WindowSums OracleMovingSums(PointCloud const & cloud, cv::Point pixel, int radius, bool wrapColumns)
{
    WindowSums sums;
    int const cols = cloud.depth.cols;
    for (int y = pixel.y - radius; y <= pixel.y + radius; ++y)
    {
        int const row = std::abs(y);
        if (row >= cloud.depth.rows) continue;
        for (int x = pixel.x - radius; x <= pixel.x + radius; ++x)
        {
            bool const isInside = x >= 0 && x < cols;
            if (!isInside && !wrapColumns) continue;
            int const column = ((x % cols) + cols) % cols;
            if (IsPoint(cloud, row, column)) ++sums.count;
            sums.Add(PointAt(cloud, row, column));
        }
    }
    return sums;
}

WindowSums OracleCutSums(PointCloud const & cloud, cv::Point pixel, int radius)
{
    WindowSums sums;
    bool const isSingle = cloud.x.depth() == CV_32F;
    for (int row = std::max(pixel.y - radius, 0); row < std::min(pixel.y + 1 + radius, cloud.depth.rows); ++row)
    {
        for (int column = std::max(pixel.x - radius, 0); column < std::min(pixel.x + 1 + radius, cloud.depth.cols);
             ++column)
        {
            if (IsPoint(cloud, row, column)) ++sums.count;
            cv::Vec3d const point = PointAt(cloud, row, column);
            sums.sum += point;
            for (int i = 0; i < 9; ++i)
            {
                double const product = point[i / 3] * point[i % 3];
                bool const isRounded = isSingle && i / 3 != i % 3;
                sums.products.val[i] += isRounded ? static_cast<double>(static_cast<float>(product)) : product;
            }
        }
    }
    return sums;
}

OraclePlane OracleSolve(cv::Vec3d const & centroid, cv::Matx33d const & covariance)
{
    cv::Vec3d values;
    if (!cv::checkRange(covariance) || !cv::eigen(covariance, values)) return {};
    OraclePlane plane;
    plane.centroid = centroid;
    double const least = values[2];
    // A closed form is less exact where two eigenvalues are nearly one.
    bool const isDouble = values[1] - least <= 1e-5 * values[0];
    double const slack = 1e-13 + (isDouble ? 1e-7 : 1e-13) * values[0];
    if (0.0001 - slack > least) return plane;
    plane.answer = isDouble || 0.0001 + slack > least ? PlaneAnswer::Open : PlaneAnswer::Plane;
    cv::Matx33d const rest = covariance - least * cv::Matx33d::eye();
    cv::Vec3d const row0(rest(0, 0), rest(0, 1), rest(0, 2));
    cv::Vec3d const row1(rest(1, 0), rest(1, 1), rest(1, 2));
    cv::Vec3d const row2(rest(2, 0), rest(2, 1), rest(2, 2));
    cv::Vec3d const first = row0.cross(row1);
    cv::Vec3d const second = row1.cross(row2);
    cv::Vec3d const third = row2.cross(row0);
    cv::Vec3d longest = second;
    if (first.dot(first) > second.dot(second)) longest = first;
    if (third.dot(third) > longest.dot(longest)) longest = third;
    double const norm = std::sqrt(longest.dot(longest));
    plane.normal = norm == 0.0 ? longest : longest / norm;
    double const side = plane.normal.dot(centroid);
    plane.isSideOpen = std::abs(side) <= 1e-9 * cv::norm(centroid);
    if (side > 0.0) plane.normal = -plane.normal;
    plane.rms = std::sqrt(least);
    return plane;
}

OraclePlane OracleFit(WindowSums const & sums, int count)
{
    double const w = 1.0F / static_cast<float>(count);
    cv::Vec3d const centroid(w * sums.sum[0], w * sums.sum[1], w * sums.sum[2]);
    cv::Matx33d covariance;
    for (int i = 0; i < 9; ++i)
    {
        covariance.val[i] = (count * sums.products.val[i] - sums.sum[i / 3] * sums.sum[i % 3]) * w * w;
    }
    OraclePlane plane = OracleSolve(centroid, covariance);
    plane.count = count;
    plane.centroid = centroid;
    return plane;
}

std::vector<int> OracleRadii(cv::Size size, NormalSettings const & settings)
{
    int const halfWidth = CutHalfWidth(size, settings.halfWidth);
    if (settings.method == 0) return halfWidth < 0 ? std::vector<int>{} : std::vector<int>{halfWidth};
    std::vector<int> radii;
    int const first = 1 - static_cast<int>((std::sqrt(settings.minPoints) - 1.0) * -0.5);
    for (int radius = first; radius <= std::max(halfWidth, 2); ++radius)
    {
        radii.push_back(radius);
    }
    return radii;
}

OracleNormals OracleStrategy(PointCloud const & cloud, NormalSettings const & settings, cv::Mat const & normals)
{
    OracleNormals result{normals.clone(), cv::Mat(cloud.x.size(), cloud.x.type()), cv::Mat1b(cloud.x.size(), 0)};
    result.rms.setTo(settings.defaultRms);
    for (int row = 0; row < cloud.x.rows; ++row)
    {
        for (int column = 0; column < cloud.x.cols; ++column)
        {
            Search const search = SearchPixel(cloud, {column, row}, settings);
            if (search.isOpen) result.open(row, column) = 2;
            if (search.isOpen || !search.isWritten) continue;
            if (search.plane.isSideOpen) result.open(row, column) = 1;
            SetElement(result.rms, row, column, 0, search.plane.rms);
            for (int i = 0; i < 3; ++i)
            {
                SetElement(result.normals, row, column, i, search.plane.normal[i]);
            }
        }
    }
    return result;
}

::testing::AssertionResult Agree(cv::Mat const & normals, cv::Mat const & rms, OracleNormals const & expected)
{
    if (normals.type() != expected.normals.type() || rms.type() != expected.rms.type() ||
        normals.size() != expected.normals.size() || rms.size() != expected.rms.size())
    {
        return ::testing::AssertionFailure() << "other types or sizes than expected";
    }
    int const depth = rms.depth();
    for (int row = 0; row < rms.rows; ++row)
    {
        for (int column = 0; column < rms.cols; ++column)
        {
            int const open = expected.open(row, column);
            cv::Vec3d const is = NormalAt(normals, row, column);
            cv::Vec3d const wanted = NormalAt(expected.normals, row, column);
            double const distance = ElementAt(rms, row, column);
            double const wantedDistance = ElementAt(expected.rms, row, column);
            bool const isNormal = AreNear(is, wanted, depth) || (open == 1 && AreNear(-is, wanted, depth));
            bool const isDistance = std::abs(distance - wantedDistance) <= Tolerance(depth, wantedDistance);
            if (open == 2 || (isNormal && isDistance)) continue;
            return ::testing::AssertionFailure()
                   << "row " << row << ", column " << column << ": normal " << is << " instead of " << wanted
                   << ", distance " << distance << " instead of " << wantedDistance;
        }
    }
    return ::testing::AssertionSuccess();
}

int PlaneCount(OracleNormals const & expected, double defaultRms)
{
    cv::Mat const isPlane = (expected.rms != defaultRms) & (expected.open != 2);
    return cv::countNonZero(isPlane);
}

std::vector<FixedWidthResult>
OracleFixedWidth(PointCloud const & cloud, cv::Mat const & holeMask, FixedWidth const & settings)
{
    std::vector<FixedWidthResult> results;
    int const halfWidth = CutHalfWidth(cloud.depth.size(), settings.halfWidth);
    auto const resultAt = [&](int row, int column) {
        float const d = cloud.depth.at<float>(row, column);
        if (!(d > 0.0F)) return;
        int const radius = FixedWidthRadius(settings, halfWidth, d);
        int const stride = radius > 8 ? radius / 8 + 1 : 1;
        WindowSums sums;
        int holes = 0;
        for (int dy = -radius; dy <= radius; dy += stride)
        {
            for (int dx = -radius; dx <= radius; dx += stride)
            {
                cv::Point const at(column + dx, row + dy);
                float const z = cloud.depth.at<float>(at);
                bool const isHole =
                    z == 0.0F && holeMask.at<uchar>(at) != 0 && at.y < settings.rowLimit && at.x < settings.columnLimit;
                if (isHole) ++holes;
                if (isHole || !(settings.maxDepthDifference > d - z)) continue;
                sums.Add(PointAt(cloud, at.y, at.x));
                ++sums.count;
            }
        }
        if (sums.count <= settings.minPoints) return;
        int const limit = (2 * radius + 1) / stride;
        results.push_back({{column, row}, OracleFit(sums, sums.count + (holes > limit ? holes : 0))});
    };
    for (int row = halfWidth; halfWidth >= 1 && row < cloud.depth.rows - halfWidth; ++row)
    {
        for (int column = halfWidth; column < cloud.depth.cols - halfWidth; ++column)
        {
            resultAt(row, column);
        }
    }
    return results;
}

std::string NormalCase(PointCloud const & cloud, NormalSettings const & settings)
{
    return cv::typeToString(cloud.x.type()) + ", depth " + cv::typeToString(cloud.depth.type()) + ", rows " +
           std::to_string(cloud.x.rows) + ", columns " + std::to_string(cloud.x.cols) + ", method " +
           std::to_string(settings.method) + ", half width " + std::to_string(settings.halfWidth) +
           (settings.wrapColumns ? ", circular" : "");
}

} // namespace morvane::tests
