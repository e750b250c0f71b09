/// @file
/// Walks that write down what they are asked: conditions over positions laid on the library's condition classes, and
/// output objects that keep the zones.
#pragma once

#include <morvane/connexity/ConnectedZoneScan.h>

#include "support/Oracles.h"

#include <opencv2/core.hpp>

#include <cstring>
#include <ostream>
#include <type_traits>
#include <vector>

namespace morvane::tests
{

/// One call of a condition.
struct Event
{
    char kind;      ///< 'r' Reset, 'a' Add (the pixel in @p to), '?' IsConnected
    cv::Point from; ///< of IsConnected
    cv::Point to;   ///< of IsConnected and Add
    cv::Point seed; ///< of IsConnected

    bool operator==(Event const & other) const
    {
        return kind == other.kind && from == other.from && to == other.to && seed == other.seed;
    }

    friend std::ostream & operator<<(std::ostream & stream, Event const & event)
    {
        return stream << event.kind << event.from << "->" << event.to << " of " << event.seed;
    }
};

inline Event Resets()
{
    return {'r', {}, {}, {}};
}

inline Event Adds(cv::Point point)
{
    return {'a', {}, point, {}};
}

inline Event Asks(cv::Point from, cv::Point to, cv::Point seed)
{
    return {'?', from, to, seed};
}

/// A condition that answers as @p inner and writes every call to @p log, which must outlive it.
inline OracleCondition Logged(OracleCondition const & inner, std::vector<Event> & log)
{
    OracleCondition logged;
    logged.reset = [inner, &log] {
        log.push_back(Resets());
        inner.reset();
    };
    logged.isConnected = [inner, &log](cv::Point from, cv::Point to, cv::Point seed) {
        log.push_back(Asks(from, to, seed));
        return inner.isConnected(from, to, seed);
    };
    logged.add = [inner, &log](cv::Point point) {
        log.push_back(Adds(point));
        inner.add(point);
    };
    return logged;
}

/// The root of the conditions on pixels of type @p In.
template <class In>
struct RootCondition
{
    using Type = connexity::AlwaysConnected<In>;
    using Value = In;
};

template <class T, int N>
struct RootCondition<cv::Vec<T, N>>
{
    using Type = connexity::AlwaysConnected_MultiChannel<T, N>;
    using Value = cv::Vec<T, N> const &;
};

/// A condition over positions as a condition of the library. Counts the calls in which a value was not that of the
/// image at its position.
template <class In>
class PositionCondition : public RootCondition<In>::Type
{
public:
    using Value = typename RootCondition<In>::Value;

    PositionCondition(cv::Mat const & image, OracleCondition const & condition)
        : m_image(image)
        , m_condition(condition)
    {}

    void Reset() override { m_condition.reset(); }

    bool IsConnected(
        cv::Point const & from, Value fromValue, cv::Point const & to, Value toValue, cv::Point const & seed,
        Value seedValue) override
    {
        Check(from, fromValue);
        Check(to, toValue);
        Check(seed, seedValue);
        return m_condition.isConnected(from, to, seed);
    }

    void Add(cv::Point const & point, Value value) override
    {
        Check(point, value);
        m_condition.add(point);
    }

    [[nodiscard]] int WrongValues() const { return m_wrongValues; }

private:
    void Check(cv::Point const & point, In const & value)
    {
        // Byte by byte, as NaN equals nothing.
        if (std::memcmp(&value, m_image.ptr<In>(point.y) + point.x, sizeof(In)) != 0) ++m_wrongValues;
    }

    cv::Mat m_image;
    OracleCondition m_condition;
    int m_wrongValues = 0;
};

/// An output object that keeps every zone.
struct ZoneCollector
{
    std::vector<connexity::Zone> zones;

    void operator()(connexity::Zone const & zone) { zones.push_back(zone); }
};

/// The zones of a walk with calls through the virtual table.
template <class In, class Pixels>
std::vector<connexity::Zone>
ZonesOf(cv::Mat const & image, connexity::eConnexityType type, typename RootCondition<In>::Type & condition)
{
    ZoneCollector collector;
    connexity::Zone zone;
    connexity::ConnectedZoneScan<In, ZoneCollector, typename RootCondition<In>::Type, Pixels> scan(
        image, type, condition, collector, zone);
    scan.Run();
    return collector.zones;
}

} // namespace morvane::tests
