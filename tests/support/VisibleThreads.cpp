#include "support/VisibleThreads.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <thread>
#include <vector>

namespace support
{

namespace
{

thread_local int threadNumber = 0;

#ifdef __SANITIZE_THREAD__
[[maybe_unused]] bool const installed = [] {
    cv::parallel::setParallelForBackend(std::make_shared<VisibleThreads>());
    return true;
}();
#endif

} // namespace

void VisibleThreads::parallel_for(int tasks, FN_parallel_for_body_cb_t body, void * data)
{
    int const count = std::min(tasks, m_threads);
    auto const bound = [tasks, count](int part) {
        return static_cast<int>(std::int64_t{tasks} * part / count);
    };
    std::vector<std::jthread> threads;
    threads.reserve(static_cast<std::size_t>(count));
    for (int part = 0; part < count; ++part)
    {
        threads.emplace_back([body, data, part, begin = bound(part), end = bound(part + 1)] {
            threadNumber = part;
            body(begin, end, data);
        });
    }
}

int VisibleThreads::getThreadNum() const
{
    return threadNumber;
}

int VisibleThreads::setNumThreads(int threads)
{
    int const before = m_threads;
    // As OpenCV has it: 0 is no threads but the caller's, a negative number is the default.
    m_threads = threads < 0 ? VisibleThreads().m_threads : std::max(threads, 1);
    return before;
}

} // namespace support
