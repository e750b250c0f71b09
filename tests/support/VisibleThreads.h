/// @file
/// Threads that ThreadSanitizer can follow.
#pragma once

#include <opencv2/core/parallel/parallel_backend.hpp>

namespace support
{

/// Runs the loops of OpenCV on threads made and joined for each of them.
///
/// The distribution's pool is not instrumented: ThreadSanitizer does not see how it hands work over, and takes every
/// result of a loop for a race. Under ThreadSanitizer the tests use this instead.
class VisibleThreads final : public cv::parallel::ParallelForAPI
{
public:
    void parallel_for(int tasks, FN_parallel_for_body_cb_t body, void * data) override;
    [[nodiscard]] int getThreadNum() const override;
    [[nodiscard]] int getNumThreads() const override { return m_threads; }
    int setNumThreads(int threads) override;
    [[nodiscard]] char const * getName() const override { return "visible threads"; }

private:
    int m_threads = 4;
};

} // namespace support
