/// @file
/// Registers timed cases: one line for each in the benchmarks' sources.
#pragma once

#include "support/Images.h"

#include <benchmark/benchmark.h>

#include <cstdint>
#include <string>

namespace benchmarks
{

/// Times what @p prepare returns, a callable that is run again and again; preparing is not timed.
///
/// @param name `Operator/who/case/size`, `who` being `morvane` or a peer
/// @param prepare makes the inputs and returns the callable, whose result is looked at
/// @param side the image has side x side pixels, reported as pixels per second
/// @param bytes what is read and written, where that is reported as well
template <class Prepare>
void Time(std::string const & name, Prepare const & prepare, int side, std::int64_t bytes = 0)
{
    auto const run = [prepare, side, bytes](benchmark::State & state) {
        auto work = prepare();
        for (auto _ : state)
        {
            auto result = work();
            benchmark::DoNotOptimize(result);
            benchmark::ClobberMemory();
        }
        state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(side) * side);
        if (bytes != 0) state.SetBytesProcessed(state.iterations() * bytes);
    };
    benchmark::RegisterBenchmark(name.c_str(), run)->Unit(benchmark::kMillisecond);
}

/// Times an operator of an image that writes another: @p run takes both.
///
/// @param name `Operator/who/`, to which image and size are added; in the case before it, a dash leads to the image
template <class Operator>
void TimeOn(std::string const & name, NamedImage const & input, int side, Operator run)
{
    Time(
        name + input.name + "/" + std::to_string(side),
        [=] {
            return [=, image = input.make(side), out = cv::Mat()]() mutable {
                return run(image, out);
            };
        },
        side);
}

} // namespace benchmarks
