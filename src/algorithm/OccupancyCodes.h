/// @file
/// Two images of occupancies in as few bytes as it takes to tell equal ones.
#pragma once

#include <opencv2/core.hpp>

#include <vector>

namespace morvane::algorithm
{

/// The number of elements that are equal in two rows.
template <class T>
[[nodiscard]] int CountEqual(T const * a, T const * b, int count);

extern template int CountEqual<uchar>(uchar const *, uchar const *, int);
extern template int CountEqual<ushort>(ushort const *, ushort const *, int);
extern template int CountEqual<int>(int const *, int const *, int);

/// A fixed image and one that is laid on it, coded for counting equal pixels above 2.
///
/// Each code is a value above 2 that both images could have, or stands, in either image in another way, for all others.
class OccupancyCodes
{
public:
    /// @param fixed elements of 32 bits, read as `int`
    /// @param moving of the same kind
    OccupancyCodes(cv::Mat const & fixed, cv::Mat const & moving);

    /// 16 for each pair of equal pixels above 2 where the moving image lies with its first pixel at (x, y).
    ///
    /// @param x column of the fixed image
    /// @param y row of the fixed image
    /// @return the score of the part that is in the fixed image; it wraps around
    [[nodiscard]] int ScoreAt(int x, int y) const;

private:
    /// The columns of a row that hold a value above 2, without the last.
    struct Span
    {
        int first;
        int last;
    };

    template <class T>
    void Encode(cv::Mat const & fixed, cv::Mat const & moving, int largest);

    template <class T>
    [[nodiscard]] int CountAt(int x, int y) const;

    cv::Mat m_fixed;
    cv::Mat m_moving;
    std::vector<Span> m_spans; ///< of the moving image
};

} // namespace morvane::algorithm
