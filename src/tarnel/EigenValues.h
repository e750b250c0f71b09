/// @file
/// Eigenvalues of small symmetric matrices.
#pragma once

#include "tarnel/Mat3.h"

namespace algo
{

/// The eigenvalues of a symmetric matrix, without iteration.
///
/// @param matrix symmetric; the numbers on and below its diagonal count
/// @param values three numbers: become the eigenvalues in descending order
/// @return false when the matrix holds a number that is not finite, with nothing written
bool GetEigenValues_3x3(tarnel::Mat3<double> const & matrix, double * values);

} // namespace algo
