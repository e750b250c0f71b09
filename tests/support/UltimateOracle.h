/// @file
/// The ultimate attribute opening in two plain forms: along the path of components around each pixel, and by a descent
/// with three tables.
#pragma once

#include <morvane/common/Attributes.h>

#include "support/MaxTreeOracle.h"

#include <opencv2/core.hpp>

#include <optional>
#include <string>

namespace morvane::tests
{

/// One of the forms of the ultimate opening.
struct UltimateForm
{
    std::optional<int> delta;
    std::optional<int> maxAttribute; ///< there must be one with a delta
};

/// The two results of an ultimate opening.
struct Ultimate
{
    cv::Mat residues;
    cv::Mat attributes;
};

/// Calls the overload that the form asks for.
[[nodiscard]] bool CallUltimate(
    UltimateForm const & form, cv::Mat const & image, common::eAttributeType attribute, int connexity,
    cv::Mat & residues, cv::Mat & attributes);

/// The ultimate opening, looked up on the path of each pixel. @param depth of the attributes
[[nodiscard]] Ultimate OracleUltimate(
    cv::Mat const & image, OraclePaths const & paths, common::eAttributeType attribute, UltimateForm const & form,
    int depth);

/// The ultimate opening by a descent through a flooded tree with three tables. @param depth of the attributes
[[nodiscard]] Ultimate OracleUltimate(
    cv::Mat const & image, OracleTree const & tree, common::eAttributeType attribute, UltimateForm const & form,
    int depth);

/// A line for SCOPED_TRACE.
[[nodiscard]] std::string Describe(UltimateForm const & form);

} // namespace morvane::tests
