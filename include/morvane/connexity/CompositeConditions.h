/// @file
/// Composite conditions: conditions on two or three images, asked at once. Part of Conditions.h.
#pragma once

#include <morvane/common/PixelTypes.h>

#include <opencv2/core.hpp>

namespace morvane::connexity
{

namespace conditions_internals
{

/// A condition on the walked image and one on a second image: both must allow the step.
template <class In1, class In2, class C1, class C2>
class Both
{
public:
    Both(cv::Mat const & second, C1 & firstCondition, C2 & secondCondition)
        : m_second(&second)
        , m_firstCondition(&firstCondition)
        , m_secondCondition(&secondCondition)
    {}

    virtual ~Both() = default;

    /// Resets the first condition, then the second.
    void Reset()
    {
        m_firstCondition->Reset();
        m_secondCondition->Reset();
    }

    /// Asks the first condition, and, where it allows the step, the second at the same three points of its image.
    [[nodiscard]] bool IsConnected(
        cv::Point const & from, In1 const & fromValue, cv::Point const & to, In1 const & toValue,
        cv::Point const & seed, In1 const & seedValue)
    {
        return m_firstCondition->IsConnected(from, fromValue, to, toValue, seed, seedValue) &&
               m_secondCondition->IsConnected(from, At(from), to, At(to), seed, At(seed));
    }

    /// Does nothing: what enters a zone is not told to the parts.
    virtual void Add(cv::Point const &, In1 const &) {}

private:
    [[nodiscard]] In2 const & At(cv::Point const & point) const { return m_second->ptr<In2>(point.y)[point.x]; }

    cv::Mat const * m_second;
    C1 * m_firstCondition;
    C2 * m_secondCondition;
};

} // namespace conditions_internals

/// A composite condition: a condition on the walked image and one on a second image of the same size.
///
/// The second image is read only where the first condition allows the step. Nothing is owned; image and conditions must
/// outlive the composite.
///
/// @tparam T1 element type of the walked image
/// @tparam T2 element type of the second image
/// @tparam C1 condition on the walked image, over @p T1
/// @tparam C2 condition on the second image, over @p T2
template <common::Element T1, common::Element T2, class C1, class C2>
class ImageConnected : public conditions_internals::Both<T1, T2, C1, C2>
{
public:
    using conditions_internals::Both<T1, T2, C1, C2>::Both;
};

/// As ImageConnected, for two images of the same number of channels.
///
/// @tparam T1 element type of the walked image
/// @tparam T2 element type of the second image
/// @tparam C1 vector condition on the walked image
/// @tparam C2 vector condition on the second image
/// @tparam N channel count of both, 2, 3 or 4
template <common::Element T1, common::Element T2, class C1, class C2, int N>
requires(N >= 2 && N <= common::kMaxChannels) class ImageConnected_MultiChannel
    : public conditions_internals::Both<cv::Vec<T1, N>, cv::Vec<T2, N>, C1, C2>
{
public:
    using conditions_internals::Both<cv::Vec<T1, N>, cv::Vec<T2, N>, C1, C2>::Both;
};

/// A composite of three conditions: on the walked image, on an integer zone image, on a second image; asked in this
/// order.
///
/// An image is read only where the conditions before it allow the step. Nothing is owned; images and conditions must
/// outlive the composite.
///
/// @tparam T1 element type of the walked image
/// @tparam Z element type of the zone image, `int`
/// @tparam T2 element type of the second image
/// @tparam C1 condition on the walked image
/// @tparam C2 condition on the zone image
/// @tparam C3 condition on the second image
template <common::Element T1, common::Element Z, common::Element T2, class C1, class C2, class C3>
class TwoImageConnected
{
public:
    /// @param zones the zone image, of the walked image's size
    /// @param second the second image, of the walked image's size
    /// @param firstCondition asked first, on the walked image
    /// @param zoneCondition asked next, on @p zones
    /// @param thirdCondition asked last, on @p second
    TwoImageConnected(
        cv::Mat const & zones, cv::Mat const & second, C1 & firstCondition, C2 & zoneCondition, C3 & thirdCondition)
        : m_zones(zones, firstCondition, zoneCondition)
        , m_second(&second)
        , m_thirdCondition(&thirdCondition)
    {}

    virtual ~TwoImageConnected() = default;

    /// Resets the conditions, in their order.
    void Reset()
    {
        m_zones.Reset();
        m_thirdCondition->Reset();
    }

    /// Asks the conditions in their order until one refuses.
    [[nodiscard]] bool IsConnected(
        cv::Point const & from, T1 fromValue, cv::Point const & to, T1 toValue, cv::Point const & seed, T1 seedValue)
    {
        return m_zones.IsConnected(from, fromValue, to, toValue, seed, seedValue) &&
               m_thirdCondition->IsConnected(from, At(from), to, At(to), seed, At(seed));
    }

    /// Does nothing: what enters a zone is not told to the parts.
    virtual void Add(cv::Point const &, T1) {}

private:
    [[nodiscard]] T2 At(cv::Point const & point) const { return m_second->ptr<T2>(point.y)[point.x]; }

    conditions_internals::Both<T1, Z, C1, C2> m_zones;
    cv::Mat const * m_second;
    C3 * m_thirdCondition;
};

} // namespace morvane::connexity
