#include "support/VisibleThreads.h"

#include <opencv2/core.hpp>
#include <opencv2/core/utils/tls.hpp>

#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>
#include <thread>
#include <vector>

namespace
{

struct Sum
{
    int value = 0;
};

struct Visits
{
    std::vector<int> count;
    std::vector<std::thread::id> threads;
};

Visits VisitAll(support::VisibleThreads & pool, int tasks)
{
    Visits visits{
        std::vector<int>(static_cast<std::size_t>(tasks)),
        std::vector<std::thread::id>(static_cast<std::size_t>(tasks))};
    pool.parallel_for(
        tasks,
        [](int begin, int end, void * data) {
            auto & all = *static_cast<Visits *>(data);
            for (auto task = static_cast<std::size_t>(begin); task < static_cast<std::size_t>(end); ++task)
            {
                ++all.count[task];
                all.threads[task] = std::this_thread::get_id();
            }
        },
        &visits);
    return visits;
}

} // namespace

TEST(VisibleThreads, VisitsEachTaskOnceWhateverTheNumberOfThreads)
{
    for (int const threads : {0, 1, 2, 3, 7, 16})
    {
        support::VisibleThreads pool;
        pool.setNumThreads(threads);
        for (int const tasks : {0, 1, 2, 15, 16, 17, 1001})
        {
            Visits const visits = VisitAll(pool, tasks);
            EXPECT_EQ(std::ranges::count(visits.count, 1), tasks) << threads << " threads";
        }
    }
}

TEST(VisibleThreads, WorksOutsideTheCallersThread)
{
    support::VisibleThreads pool;
    pool.setNumThreads(7);
    Visits const visits = VisitAll(pool, 100);
    EXPECT_EQ(std::ranges::count(visits.threads, std::this_thread::get_id()), 0);
}

// Under ThreadSanitizer, a report here means that the loops of OpenCV run on its own pool after all.
TEST(VisibleThreads, LoopsOfOpenCVHandTheirResultsOver)
{
    int const previous = cv::getNumThreads();
    cv::setNumThreads(3);
    std::vector<int> values(1000, 1);
    cv::TLSDataAccumulator<Sum> sums;
    cv::parallel_for_(cv::Range(0, static_cast<int>(values.size())), [&](cv::Range const & range) {
        for (int index = range.start; index < range.end; ++index)
        {
            int & value = values[static_cast<std::size_t>(index)];
            value += index;
            sums.getRef().value += value;
        }
    });
    cv::setNumThreads(previous);
    std::vector<Sum *> parts;
    sums.gather(parts);
    int const total =
        std::accumulate(parts.begin(), parts.end(), 0, [](int sum, Sum const * part) { return sum + part->value; });
    EXPECT_EQ(total, 1000 + 999 * 1000 / 2);
    EXPECT_EQ(std::accumulate(values.begin(), values.end(), 0), total);
}
