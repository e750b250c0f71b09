#include "features/PlaneBatch.h"

#include <cmath>

namespace morvane::normal_internals
{

namespace
{

using Row = PlaneBatch::Row;

/// The entries of symmetric matrices on and above their diagonals.
struct Matrices
{
    Row xx;
    Row yy;
    Row zz;
    Row xy;
    Row xz;
    Row yz;
};

/// The two smaller eigenvalues.
struct Eigenvalues
{
    Row middle;
    Row least;
};

/// 2 cos(4/3 acos(u)) for u from the square root of 1/2 to 1, by a polynomial that interpolates it in Chebyshev's
/// points; good to the last bit but one.
inline double RootFromHalfAngle(double u)
{
    constexpr double kCentre = 0.8535533905932737;
    constexpr double kScale = 6.82842712474619;
    constexpr double kCoefficients[] = {-6.887420634799763e-12,  1.0703469738521452e-10, -1.7182222916431975e-09,
                                        2.8846367431951142e-08,  -5.171725842647094e-07, 1.0307584012513945e-05,
                                        -0.00025104068631963676, 0.010580905910489501,   0.5002515595840447,
                                        1.4894087575516395};
    double const x = (u - kCentre) * kScale;
    double value = 4.5430347953391985e-13;
    for (double const coefficient : kCoefficients)
    {
        value = value * x + coefficient;
    }
    return value;
}

/// Closed form: with the mean of the eigenvalues taken out and their spread scaled to 1, they are the roots of t^3 - 3
/// t - 2 r. The smallest is -2 cos(acos(-r) / 3), and the sum and the product of the others follow from it.
Eigenvalues EigenvaluesOf(Matrices const & m)
{
    Eigenvalues values{};
    for (std::size_t i = 0; i < PlaneBatch::kSize; ++i)
    {
        double const mean = (m.xx[i] + m.yy[i] + m.zz[i]) * (1.0 / 3.0);
        double const a = m.xx[i] - mean;
        double const b = m.yy[i] - mean;
        double const c = m.zz[i] - mean;
        double const off = m.xy[i] * m.xy[i] + m.xz[i] * m.xz[i] + m.yz[i] * m.yz[i];
        double const spread = std::sqrt((a * a + b * b + c * c + 2.0 * off) * (1.0 / 6.0));
        double const determinant = a * (b * c - m.yz[i] * m.yz[i]) - m.xy[i] * (m.xy[i] * c - m.yz[i] * m.xz[i]) +
                                   m.xz[i] * (m.xy[i] * m.yz[i] - b * m.xz[i]);
        double const r = determinant / (2.0 * spread * spread * spread);
        // Rounding may lead out of the range of a cosine.
        double const cosine = r > 1.0 ? -1.0 : (r < -1.0 ? 1.0 : -r);
        double const half = std::sqrt((1.0 + cosine) * 0.5);
        double const root = -RootFromHalfAngle(std::sqrt((1.0 + half) * 0.5));
        double const smallest = root > -1.0 ? -1.0 : root;
        double const discriminant = 12.0 - 3.0 * smallest * smallest;
        double const difference = std::sqrt(discriminant > 0.0 ? discriminant : 0.0);
        values.least[i] = mean + spread * smallest;
        values.middle[i] = mean + spread * ((-smallest - difference) * 0.5);
    }
    return values;
}

struct Vector
{
    double x;
    double y;
    double z;

    [[nodiscard]] double SquaredNorm() const { return x * x + y * y + z * z; }
};

inline Vector Longer(Vector const & one, Vector const & other, bool isOne)
{
    return {isOne ? one.x : other.x, isOne ? one.y : other.y, isOne ? one.z : other.z};
}

/// The longest cross product of two rows of a matrix less its eigenvalue. On a tie the second stays against the first,
/// and what won of these against the third.
inline Vector AcrossRows(Matrices const & m, std::size_t i, double eigenvalue)
{
    double const a = m.xx[i] - eigenvalue;
    double const b = m.yy[i] - eigenvalue;
    double const c = m.zz[i] - eigenvalue;
    double const xy = m.xy[i];
    double const xz = m.xz[i];
    double const yz = m.yz[i];
    Vector const first{xy * yz - xz * b, xz * xy - a * yz, a * b - xy * xy};
    Vector const second{b * c - yz * yz, yz * xz - xy * c, xy * yz - b * xz};
    Vector const third{yz * xz - c * xy, c * a - xz * xz, xz * xy - yz * a};
    Vector const longer = Longer(first, second, first.SquaredNorm() > second.SquaredNorm());
    return Longer(third, longer, third.SquaredNorm() > longer.SquaredNorm());
}

} // namespace

void PlaneBatch::Solve()
{
    Matrices m{};
    for (std::size_t i = 0; i < kSize; ++i)
    {
        double const weight = 1.0F / static_cast<float>(m_counts[i]);
        double const points = m_counts[i];
        double const x = m_sums[0][i];
        double const y = m_sums[1][i];
        double const z = m_sums[2][i];
        m_centroids[0][i] = weight * x;
        m_centroids[1][i] = weight * y;
        m_centroids[2][i] = weight * z;
        m.xx[i] = (points * m_sums[3][i] - x * x) * weight * weight;
        m.yy[i] = (points * m_sums[4][i] - y * y) * weight * weight;
        m.zz[i] = (points * m_sums[5][i] - z * z) * weight * weight;
        m.xy[i] = (points * m_sums[6][i] - x * y) * weight * weight;
        m.yz[i] = (points * m_sums[7][i] - y * z) * weight * weight;
        m.xz[i] = (points * m_sums[8][i] - x * z) * weight * weight;
    }
    Eigenvalues const values = EigenvaluesOf(m);
    for (std::size_t i = 0; i < kSize; ++i)
    {
        double const least = values.least[i];
        m_isPlane[i] = values.middle[i] != least && least >= kLeastEigenvalue ? 1.0 : 0.0;
        m_rms[i] = std::sqrt(least > 0.0 ? least : 0.0);
        Vector const across = AcrossRows(m, i, least);
        double const length = std::sqrt(across.SquaredNorm());
        double const towards =
            across.x * m_centroids[0][i] + across.y * m_centroids[1][i] + across.z * m_centroids[2][i];
        double const scale = (towards > 0.0 ? -1.0 : 1.0) / (length == 0.0 ? 1.0 : length);
        m_normals[0][i] = across.x * scale;
        m_normals[1][i] = across.y * scale;
        m_normals[2][i] = across.z * scale;
    }
}

} // namespace morvane::normal_internals
