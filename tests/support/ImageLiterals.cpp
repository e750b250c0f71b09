#include "support/ImageLiterals.h"

#include <algorithm>
#include <cstring>
#include <iomanip>
#include <map>
#include <sstream>
#include <stdexcept>
#include <string>

namespace morvane::tests
{

namespace
{

int ValueOf(char drawn)
{
    if (drawn == '.') return 0;
    if (drawn >= '0' && drawn <= '9') return drawn - '0';
    if (drawn >= 'a' && drawn <= 'z') return drawn - 'a' + 10;
    if (drawn >= 'A' && drawn <= 'Z') return drawn - 'A' + 36;
    throw std::invalid_argument(std::string("no pixel is drawn as ") + drawn);
}

std::string PixelText(cv::Mat const & image, int y, int x)
{
    std::ostringstream text;
    text << std::setprecision(17);
    for (int channel = 0; channel < image.channels(); ++channel)
    {
        double const value = ElementAt(image, y, x, channel);
        if (channel > 0) text << ',';
        if (value == 0.0 && image.channels() == 1)
        {
            text << '.';
        }
        else
        {
            text << value;
        }
    }
    return text.str();
}

std::string WindowText(cv::Mat const & image, cv::Rect const & window)
{
    std::size_t width = 1;
    for (int y = window.y; y < window.br().y; ++y)
    {
        for (int x = window.x; x < window.br().x; ++x)
        {
            width = std::max(width, PixelText(image, y, x).size());
        }
    }
    std::ostringstream text;
    for (int y = window.y; y < window.br().y; ++y)
    {
        text << "    ";
        for (int x = window.x; x < window.br().x; ++x)
        {
            text << std::setw(static_cast<int>(width) + (width > 1 ? 1 : 0)) << PixelText(image, y, x);
        }
        text << '\n';
    }
    return text.str();
}

/// A piece of the image that fits a terminal and holds @p centre.
cv::Rect WindowAround(cv::Point centre, cv::Size size)
{
    cv::Size const largest(36, 20);
    cv::Rect window(centre.x - largest.width / 2, centre.y - largest.height / 2, largest.width, largest.height);
    window.x = std::clamp(window.x, 0, std::max(0, size.width - largest.width));
    window.y = std::clamp(window.y, 0, std::max(0, size.height - largest.height));
    return window & cv::Rect(cv::Point(), size);
}

bool SamePixel(cv::Mat const & left, cv::Mat const & right, int y, int x)
{
    std::size_t const bytes = left.elemSize();
    return std::memcmp(
               left.ptr(y) + static_cast<std::size_t>(x) * bytes, right.ptr(y) + static_cast<std::size_t>(x) * bytes,
               bytes) == 0;
}

} // namespace

cv::Mat Draw(Drawing const & rows, int type)
{
    int const height = static_cast<int>(rows.size());
    int const width = height == 0 ? 0 : static_cast<int>(rows.begin()->size());
    cv::Mat image(height, width, type);
    int y = 0;
    for (std::string_view const row : rows)
    {
        if (static_cast<int>(row.size()) != width) throw std::invalid_argument("rows of different lengths");
        for (int x = 0; x < width; ++x)
        {
            int const value = ValueOf(row[static_cast<std::size_t>(x)]);
            for (int channel = 0; channel < image.channels(); ++channel)
            {
                SetElement(image, y, x, channel, value);
            }
        }
        ++y;
    }
    return image;
}

cv::Mat DrawLabels(Drawing const & rows)
{
    return Draw(rows, CV_32SC1);
}

::testing::AssertionResult EqualImages(cv::Mat const & actual, cv::Mat const & expected)
{
    if (actual.dims > 2 || actual.rows != expected.rows || actual.cols != expected.cols)
    {
        return ::testing::AssertionFailure() << "actual size " << actual.rows << " x " << actual.cols << ", expected "
                                             << expected.rows << " x " << expected.cols;
    }
    if (actual.type() != expected.type())
    {
        return ::testing::AssertionFailure() << "actual type " << cv::typeToString(actual.type()) << ", expected "
                                             << cv::typeToString(expected.type());
    }
    for (int y = 0; y < actual.rows; ++y)
    {
        for (int x = 0; x < actual.cols; ++x)
        {
            if (SamePixel(actual, expected, y, x)) continue;
            cv::Rect const window = WindowAround({x, y}, actual.size());
            return ::testing::AssertionFailure()
                   << "first difference at row " << y << ", column " << x << " of " << actual.rows << " x "
                   << actual.cols << ": actual " << PixelText(actual, y, x) << ", expected "
                   << PixelText(expected, y, x) << "\n  rows from " << window.y << ", columns from " << window.x
                   << "\n  actual:\n"
                   << WindowText(actual, window) << "  expected:\n"
                   << WindowText(expected, window);
        }
    }
    return ::testing::AssertionSuccess();
}

void ExpectEqualImages(cv::Mat const & actual, cv::Mat const & expected)
{
    EXPECT_TRUE(EqualImages(actual, expected));
}

void ExpectDrawn(cv::Mat const & actual, Drawing const & expected)
{
    EXPECT_TRUE(EqualImages(actual, Draw(expected, actual.depth())));
}

::testing::AssertionResult SamePartition(cv::Mat const & actual, cv::Mat const & expected)
{
    if (actual.size() != expected.size()) return ::testing::AssertionFailure() << "sizes differ";
    std::map<double, double> toExpected;
    std::map<double, double> toActual;
    for (int y = 0; y < actual.rows; ++y)
    {
        for (int x = 0; x < actual.cols; ++x)
        {
            double const left = ElementAt(actual, y, x);
            double const right = ElementAt(expected, y, x);
            bool const bothEmpty = (left == 0.0) == (right == 0.0);
            bool const bijective = toExpected.try_emplace(left, right).first->second == right &&
                                   toActual.try_emplace(right, left).first->second == left;
            if (bothEmpty && bijective) continue;
            cv::Rect const window = WindowAround({x, y}, actual.size());
            return ::testing::AssertionFailure()
                   << "the zones differ at row " << y << ", column " << x << "\n  actual:\n"
                   << WindowText(actual, window) << "  expected, up to renaming:\n"
                   << WindowText(expected, window);
        }
    }
    return ::testing::AssertionSuccess();
}

double ElementAt(cv::Mat const & image, int y, int x, int channel)
{
    int const index = x * image.channels() + channel;
    switch (image.depth())
    {
    case CV_8U:
        return image.ptr<uchar>(y)[index];
    case CV_8S:
        return image.ptr<schar>(y)[index];
    case CV_16U:
    case CV_16F:
        return image.ptr<ushort>(y)[index];
    case CV_16S:
        return image.ptr<short>(y)[index];
    case CV_32S:
        return image.ptr<int>(y)[index];
    case CV_32F:
        return static_cast<double>(image.ptr<float>(y)[index]);
    case CV_64F:
        return image.ptr<double>(y)[index];
    default:
        throw std::invalid_argument("no such element type");
    }
}

void FillBytes(cv::Mat & image, uchar byte)
{
    for (int y = 0; y < image.rows && image.cols > 0; ++y)
    {
        std::memset(image.ptr(y), byte, static_cast<std::size_t>(image.cols) * image.elemSize());
    }
}

void SetElement(cv::Mat & image, int y, int x, int channel, double value)
{
    int const index = x * image.channels() + channel;
    switch (image.depth())
    {
    case CV_8U:
        image.ptr<uchar>(y)[index] = static_cast<uchar>(value);
        return;
    case CV_8S:
        image.ptr<schar>(y)[index] = static_cast<schar>(value);
        return;
    case CV_16U:
        image.ptr<ushort>(y)[index] = static_cast<ushort>(value);
        return;
    case CV_16S:
        image.ptr<short>(y)[index] = static_cast<short>(value);
        return;
    case CV_32S:
        image.ptr<int>(y)[index] = static_cast<int>(value);
        return;
    case CV_32F:
        image.ptr<float>(y)[index] = static_cast<float>(value);
        return;
    case CV_64F:
        image.ptr<double>(y)[index] = value;
        return;
    default:
        throw std::invalid_argument("no such element type");
    }
}

} // namespace morvane::tests
