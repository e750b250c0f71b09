#include <benchmark/benchmark.h>

#include <opencv2/core.hpp>

int main(int argc, char ** argv)
{
    // One thread for everybody; operators that are parallel by contract set their own number.
    cv::setNumThreads(1);
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
