/// @file
/// The searches by OpenCV alone, step by step.
#pragma once

#include <opencv2/core.hpp>

#include <iosfwd>

namespace morvane::tests
{

/// The answer of the searches by OpenCV alone.
struct Fit
{
    bool answer = false;
    int x = -77;
    int y = -78;
    double angle = -79.0;
    double score = -80.0;

    [[nodiscard]] bool operator==(Fit const & other) const = default;
};

/// For messages.
void PrintTo(Fit const & fit, std::ostream * stream);

[[nodiscard]] Fit OracleMatching(cv::Mat const & image, cv::Mat const & templ, int method);
[[nodiscard]] Fit OracleTranslation(cv::Mat const & image, cv::Mat const & templ, int method);

/// The angles of a search by OpenCV.
struct Angles
{
    double start;
    double end;
    double step;
};
[[nodiscard]] Fit OracleTransformation(cv::Mat const & image, cv::Mat const & templ, int method, Angles const & angles);

/// The same by the library.
[[nodiscard]] Fit FitOf(cv::Mat const & image, cv::Mat const & templ, int method);
[[nodiscard]] Fit TranslationOf(cv::Mat const & image, cv::Mat const & templ, int method);
[[nodiscard]] Fit TransformationOf(cv::Mat const & image, cv::Mat const & templ, int method, Angles const & angles);

} // namespace morvane::tests
