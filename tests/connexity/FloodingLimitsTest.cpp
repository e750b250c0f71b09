// Flooding where offsets outgrow 32 bits.
#include <morvane/connexity/Flooding.h>

#include "support/FloodingOracle.h"
#include "support/ImageLiterals.h"
#include "support/RandomImages.h"
#include "support/Snapshot.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <limits>

#ifdef __linux__
#include <sys/mman.h>
#endif

namespace morvane::connexity
{

namespace
{

using tests::EqualImages;
using tests::Random;

cv::Mat AnyGrey(Random & random, cv::Size size)
{
    cv::Mat image(size, CV_8UC1);
    for (uchar & value : cv::Mat1b(image))
    {
        value = static_cast<uchar>(random.Below(256));
    }
    return image;
}

#ifdef __linux__

/// An image whose rows lie so far apart that most of its memory is never touched, and so never given.
class SparseImage
{
public:
    SparseImage(cv::Size size, int type, std::size_t step)
        : m_bytes(static_cast<std::size_t>(size.height) * step)
        , m_memory(::mmap(nullptr, m_bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0))
    {
        if (m_memory != MAP_FAILED) m_view = cv::Mat(size.height, size.width, type, m_memory, step);
    }

    SparseImage(SparseImage const &) = delete;
    SparseImage & operator=(SparseImage const &) = delete;

    ~SparseImage()
    {
        if (m_memory != MAP_FAILED) ::munmap(m_memory, m_bytes);
    }

    [[nodiscard]] cv::Mat & View() { return m_view; }

private:
    std::size_t m_bytes;
    void * m_memory;
    cv::Mat m_view;
};

TEST(FloodingLimits, RowsFarApart_AreFloodedOnBothSidesOf32BitOffsets)
{
    Random random(720);
    constexpr std::size_t stride = std::size_t{1} << 26U;
    // Offsets beyond 31 bits, up to the last that fit 32, and beyond.
    for (int const rows : {40, 63, 64, 70})
    {
        SCOPED_TRACE(rows);
        cv::Size const size(9, rows);
        EXPECT_EQ(static_cast<std::size_t>(rows) * stride > std::numeric_limits<std::uint32_t>::max(), rows >= 64);
        SparseImage image(size, CV_8UC1, stride);
        SparseImage markers(size, CV_32SC1, stride * sizeof(int));
        if (image.View().empty() || markers.View().empty()) GTEST_SKIP() << "no address space for rows so far apart";
        ASSERT_EQ(image.View().step1(), markers.View().step1());

        cv::Mat const grey = AnyGrey(random, size);
        cv::Mat expected = tests::RandomMarkers(random, size, CV_32SC1, 0.02, 4);
        expected.at<int>(rows - 2, 4) = 5;
        grey.copyTo(image.View());
        expected.copyTo(markers.View());
        ASSERT_TRUE(tests::OracleFlooding(grey, expected));
        EXPECT_TRUE(Flooding(image.View(), markers.View()));
        EXPECT_TRUE(EqualImages(markers.View(), expected));
    }
}

#endif

TEST(SlowFloodingLimits, MarkersBeyondTwoGigabytes_AreFloodedToTheLastPixel)
{
    // Labels everywhere but in the last rows, which flood as the same rows do alone.
    constexpr int side = 23200;
    constexpr int tail = 300;
    Random random(721);
    cv::Mat image(side, side, CV_8UC1, cv::Scalar(9));
    AnyGrey(random, {side, tail}).copyTo(image.rowRange(side - tail, side));
    cv::Mat markers(side, side, CV_32SC1, cv::Scalar(1));
    ASSERT_GT(markers.total() * markers.elemSize(), std::size_t{1} << 31U);
    tests::RandomMarkers(random, {side, tail - 2}, CV_32SC1, 0.001, 5).copyTo(markers.rowRange(side - tail + 2, side));

    cv::Mat lastImage = image.rowRange(side - tail, side).clone();
    cv::Mat last = markers.rowRange(side - tail, side).clone();
    ASSERT_TRUE(Flooding(lastImage, last));
    ASSERT_TRUE(Flooding(image, markers));
    // The first of the last rows is a border where they are alone.
    EXPECT_TRUE(EqualImages(markers.rowRange(side - tail + 1, side), last.rowRange(1, tail)));
    EXPECT_EQ(cv::countNonZero(markers.row(0) != -1), 0);
    EXPECT_EQ(cv::countNonZero(markers.col(0) != -1), 0);
    EXPECT_EQ(cv::countNonZero(markers.col(side - 1) != -1), 0);
    for (int y = 1; y <= side - tail; ++y)
    {
        ASSERT_EQ(cv::countNonZero(markers.row(y) == 1), side - 2) << "row " << y;
    }
}

} // namespace

} // namespace morvane::connexity
