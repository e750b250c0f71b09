/// @file
/// The neighbourhood shapes: ordered offset lists, plain or closed on themselves in x.
#pragma once

#include <morvane/Export.h>
#include <morvane/common/Neighbourhood.h>

#include <opencv2/core.hpp>

#include <cstddef>
#include <vector>

namespace morvane::connexity
{

/// The neighbourhood shapes, named by their number of neighbours.
///
/// `Wrapped` shapes join the first and the last column, as in a full panorama. `Interleaved` shapes visit the ring of
/// eight between the two halves of the outer points; `8AxesFirst` visits the four axis neighbours before the diagonals.
/// A walk visits neighbours in the order of the list, and results that depend on the order follow it.
enum eConnexityType : int
{
    eConnexity4 = 0,                     ///< left, right, down, up
    eConnexity4Wrapped = 1,              ///< as eConnexity4, wraps in x
    eConnexity8 = 2,                     ///< the ring of eight, from the upper left down and round to the top
    eConnexity8AxesFirst = 3,            ///< left, right, down, up, then the diagonals
    eConnexity8Wrapped = 4,              ///< as eConnexity8, wraps in x
    eConnexity12 = 5,                    ///< the ring, then the four axis points at distance 2
    eConnexity20 = 6,                    ///< the ring, then the second ring without its corners
    eConnexity12Interleaved = 7,         ///< the points of eConnexity12, the ring between the outer halves
    eConnexity12InterleavedWrapped = 8,  ///< as eConnexity12Interleaved, wraps in x
    eConnexity20Interleaved = 9,         ///< the points of eConnexity20, the ring between the outer halves
    eConnexity20InterleavedWrapped = 10, ///< as eConnexity20Interleaved, wraps in x
    eConnexity24Interleaved = 11,        ///< both whole rings, the inner between the outer halves
    eConnexity24InterleavedWrapped = 12, ///< as eConnexity24Interleaved, wraps in x
};

/// A neighbourhood: the ordered offsets of a shape, and whether x wraps.
///
/// Offsets are (dx, dy), dx added to the column and dy to the row, which grows downwards; (0, 0) is never among them.
/// A value outside the table of eConnexityType gives an empty neighbourhood that does not wrap: with it, every zone has
/// one pixel.
///
/// @code
/// for (cv::Point const & offset : morvane::connexity::Connexity(morvane::connexity::eConnexity8)) { ... }
/// @endcode
class MORVANE_EXPORT Connexity
{
public:
    /// The neighbourhood of a shape. @throws std::bad_alloc
    Connexity(eConnexityType type);
    /// A copy. @throws std::bad_alloc
    Connexity(Connexity const & other);
    ~Connexity();
    /// Becomes a copy of @p other. @throws std::bad_alloc
    Connexity & operator=(Connexity const & other);

    /// The offset at @p index in visiting order; @p index must be below size(), which is not checked.
    cv::Point_<int> & operator[](std::size_t index);
    /// @copydoc operator[](std::size_t)
    cv::Point_<int> const & operator[](std::size_t index) const;

    /// The first offset in visiting order.
    std::vector<cv::Point_<int>>::iterator begin();
    /// Behind the last offset.
    std::vector<cv::Point_<int>>::iterator end();
    /// @copydoc begin()
    std::vector<cv::Point_<int>>::const_iterator begin() const;
    /// @copydoc end()
    std::vector<cv::Point_<int>>::const_iterator end() const;

    /// The number of offsets.
    [[nodiscard]] std::size_t size() const;

    /// The offsets laid over an image of @p size, ready to walk.
    friend MORVANE_EXPORT common::Neighbourhood NeighbourhoodOver(Connexity const & connexity, cv::Size size);

private:
    bool m_wrapped = false;
    std::vector<cv::Point_<int>> m_offsets;
};

/// The neighbourhood of @p connexity over an image of @p size.
[[nodiscard]] MORVANE_EXPORT common::Neighbourhood NeighbourhoodOver(Connexity const & connexity, cv::Size size);

} // namespace morvane::connexity
