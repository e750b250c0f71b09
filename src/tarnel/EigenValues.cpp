#include "tarnel/EigenValues.h"

#include <Eigen/Eigenvalues>

namespace algo
{

bool GetEigenValues_3x3(tarnel::Mat3<double> const & matrix, double * values)
{
    using Matrix = Eigen::Matrix<double, 3, 3, Eigen::RowMajor>;
    Eigen::Matrix3d const symmetric = Eigen::Map<Matrix const>(matrix.values.data());
    if (!symmetric.allFinite()) return false;
    Eigen::SelfAdjointEigenSolver<Eigen::Matrix3d> solver;
    solver.computeDirect(symmetric, Eigen::EigenvaluesOnly);
    auto const & rising = solver.eigenvalues();
    values[0] = rising[2];
    values[1] = rising[1];
    values[2] = rising[0];
    return true;
}

} // namespace algo
