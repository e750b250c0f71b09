/// @file
/// Which pixels of an image are linked to their neighbours, a row of bits at a time.
#pragma once

#include <morvane/common/PixelTypes.h>

#include "common/BitImage.h"

#include <algorithm>
#include <cstdlib>
#include <utility>
#include <vector>

namespace morvane::connexity::labelling_internals
{

/// A connection condition that is symmetric and remembers nothing, seen as bits: whether a step between two pixels is
/// allowed depends on these two alone, so that zones are connected components whatever the walk.
class ZoneLinks
{
public:
    virtual ~ZoneLinks() = default;

    /// Sets bit x of @p bits where pixel (x, @p y) is linked to (x, @p y) + @p offset, clears it where not.
    ///
    /// Only the columns count at which both lie inside the image; the row of the other pixel does.
    virtual void Row(int y, cv::Point offset, common::BitImage::Word * bits) const = 0;

    /// Tells whether two pixels are linked, neighbours or not.
    [[nodiscard]] virtual bool AreLinked(cv::Point one, cv::Point other) const = 0;
};

/// Every step is allowed.
class EveryLink final : public ZoneLinks
{
public:
    explicit EveryLink(cv::Size size)
        : m_words(common::BitImage::WordsFor(size.width))
    {}

    void Row(int, cv::Point, common::BitImage::Word * bits) const override
    {
        std::fill_n(bits, m_words, ~common::BitImage::Word{0});
    }

    [[nodiscard]] bool AreLinked(cv::Point, cv::Point) const override { return true; }

private:
    int m_words;
};

/// A step is allowed where the condition on the values of one image allows it.
///
/// @tparam In pixel of the image
/// @tparam Condition has `bool AreLinked(In, In)`, symmetric and const
template <class In, class Condition>
class ImageLinks final : public ZoneLinks
{
public:
    ImageLinks(cv::Mat const & image, Condition condition)
        : m_image(image)
        , m_condition(std::move(condition))
    {}

    void Row(int y, cv::Point offset, common::BitImage::Word * bits) const override
    {
        int const width = m_image.cols - std::abs(offset.x);
        std::fill_n(bits, common::BitImage::WordsFor(m_image.cols), common::BitImage::Word{0});
        if (width <= 0) return;
        In const * const row = m_image.ptr<In>(y) + std::max(-offset.x, 0);
        In const * const other = m_image.ptr<In>(y + offset.y) + std::max(offset.x, 0);
        common::FillBits(width, bits, [row, other, condition = m_condition](int x) {
            return condition.AreLinked(row[x], other[x]);
        });
        if (offset.x < 0) common::MoveRight(bits, common::BitImage::WordsFor(m_image.cols), -offset.x);
    }

    [[nodiscard]] bool AreLinked(cv::Point one, cv::Point other) const override
    {
        return m_condition.AreLinked(m_image.ptr<In>(one.y)[one.x], m_image.ptr<In>(other.y)[other.x]);
    }

private:
    cv::Mat const & m_image;
    Condition m_condition;
};

/// A step is allowed where two others allow it.
class BothLinks final : public ZoneLinks
{
public:
    BothLinks(ZoneLinks const & first, ZoneLinks const & second, cv::Size size)
        : m_first(first)
        , m_second(second)
        , m_scratch(static_cast<std::size_t>(common::BitImage::WordsFor(size.width)))
    {}

    void Row(int y, cv::Point offset, common::BitImage::Word * bits) const override
    {
        m_first.Row(y, offset, bits);
        m_second.Row(y, offset, m_scratch.data());
        for (std::size_t index = 0; index < m_scratch.size(); ++index)
        {
            bits[index] &= m_scratch[index];
        }
    }

    [[nodiscard]] bool AreLinked(cv::Point one, cv::Point other) const override
    {
        return m_first.AreLinked(one, other) && m_second.AreLinked(one, other);
    }

private:
    ZoneLinks const & m_first;
    ZoneLinks const & m_second;
    mutable std::vector<common::BitImage::Word> m_scratch;
};

} // namespace morvane::connexity::labelling_internals
