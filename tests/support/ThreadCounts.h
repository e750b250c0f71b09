/// @file
/// The thread counts that threaded operators are tested with.
#pragma once

#include <opencv2/core.hpp>

#include <array>

namespace morvane::tests
{

/// One, fewer and more threads than the machine has, and odd shares.
inline constexpr std::array kThreadCounts{1, 2, 3, 7, 16};

/// Sets the number of threads until the end of the scope.
class ThreadCount
{
public:
    explicit ThreadCount(int count)
        : m_before(cv::getNumThreads())
    {
        cv::setNumThreads(count);
    }
    ~ThreadCount() { cv::setNumThreads(m_before); }
    ThreadCount(ThreadCount const &) = delete;
    ThreadCount & operator=(ThreadCount const &) = delete;

private:
    int m_before;
};

} // namespace morvane::tests
