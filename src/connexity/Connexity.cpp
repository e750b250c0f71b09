#include <morvane/connexity/Connexity.h>

#include <initializer_list>
#include <span>

namespace morvane::connexity
{

namespace
{

struct Step
{
    int dx;
    int dy;
};

using Steps = std::span<Step const>;

constexpr int kTypeCount = 13;

/// Bit t is set for each type t that wraps in x.
constexpr unsigned kWrappedTypes = 0x1512U;

// clang-format off
constexpr Step kAxes[] = {{-1, 0}, {1, 0}, {0, 1}, {0, -1}};
constexpr Step kDiagonals[] = {{-1, -1}, {-1, 1}, {1, 1}, {1, -1}};

/// From the upper left down the left side, along the bottom, up the right side, to the top.
constexpr Step kRing8[] = {{-1, -1}, {-1, 0}, {-1, 1}, {0, 1}, {1, 1}, {1, 0}, {1, -1}, {0, -1}};

// The outer points, each in the two halves between which the interleaved shapes put the ring.
constexpr Step kOuter4First[] = {{-2, 0}, {0, 2}};
constexpr Step kOuter4Second[] = {{2, 0}, {0, -2}};
constexpr Step kOuter12First[] = {{-2, -1}, {-2, 0}, {-2, 1}, {-1, 2}, {0, 2}, {1, 2}};
constexpr Step kOuter12Second[] = {{2, 1}, {2, 0}, {2, -1}, {1, -2}, {0, -2}, {-1, -2}};
constexpr Step kOuter16First[] = {{-2, -2}, {-2, -1}, {-2, 0}, {-2, 1}, {-2, 2}, {-1, 2}, {0, 2}, {1, 2}};
constexpr Step kOuter16Second[] = {{2, 2}, {2, 1}, {2, 0}, {2, -1}, {2, -2}, {1, -2}, {0, -2}, {-1, -2}};
// clang-format on

std::vector<cv::Point_<int>> Concatenate(std::initializer_list<Steps> parts)
{
    std::vector<cv::Point_<int>> offsets;
    for (Steps const & part : parts)
    {
        for (Step const & step : part)
        {
            offsets.emplace_back(step.dx, step.dy);
        }
    }
    return offsets;
}

std::vector<cv::Point_<int>> OffsetsOf(eConnexityType type)
{
    switch (type)
    {
    case eConnexity4:
    case eConnexity4Wrapped:
        return Concatenate({kAxes});
    case eConnexity8:
    case eConnexity8Wrapped:
        return Concatenate({kRing8});
    case eConnexity8AxesFirst:
        return Concatenate({kAxes, kDiagonals});
    case eConnexity12:
        return Concatenate({kRing8, kOuter4First, kOuter4Second});
    case eConnexity20:
        return Concatenate({kRing8, kOuter12First, kOuter12Second});
    case eConnexity12Interleaved:
    case eConnexity12InterleavedWrapped:
        return Concatenate({kOuter4First, kRing8, kOuter4Second});
    case eConnexity20Interleaved:
    case eConnexity20InterleavedWrapped:
        return Concatenate({kOuter12First, kRing8, kOuter12Second});
    case eConnexity24Interleaved:
    case eConnexity24InterleavedWrapped:
        return Concatenate({kOuter16First, kRing8, kOuter16Second});
    }
    return {};
}

bool WrapsInX(eConnexityType type)
{
    return type >= 0 && type < kTypeCount && ((kWrappedTypes >> static_cast<int>(type)) & 1U) != 0;
}

} // namespace

Connexity::Connexity(eConnexityType type)
    : m_wrapped(WrapsInX(type))
    , m_offsets(OffsetsOf(type))
{}

Connexity::Connexity(Connexity const & other) = default;
Connexity::~Connexity() = default;
Connexity & Connexity::operator=(Connexity const & other) = default;

cv::Point_<int> & Connexity::operator[](std::size_t index)
{
    return m_offsets[index];
}

cv::Point_<int> const & Connexity::operator[](std::size_t index) const
{
    return m_offsets[index];
}

std::vector<cv::Point_<int>>::iterator Connexity::begin()
{
    return m_offsets.begin();
}

std::vector<cv::Point_<int>>::iterator Connexity::end()
{
    return m_offsets.end();
}

std::vector<cv::Point_<int>>::const_iterator Connexity::begin() const
{
    return m_offsets.begin();
}

std::vector<cv::Point_<int>>::const_iterator Connexity::end() const
{
    return m_offsets.end();
}

std::size_t Connexity::size() const
{
    return m_offsets.size();
}

common::Neighbourhood NeighbourhoodOver(Connexity const & connexity, cv::Size size)
{
    return {connexity.m_offsets, connexity.m_wrapped, size};
}

} // namespace morvane::connexity
