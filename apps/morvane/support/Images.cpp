#include "morvane/support/Images.h"

#include "morvane/support/ProgramError.h"
#include "morvane/support/QuietStderr.h"

#include <morvane/common/PixelTypes.h>

#include <opencv2/imgcodecs.hpp>

#include <algorithm>
#include <fstream>
#include <iomanip>
#include <iostream>
#include <sstream>
#include <system_error>

namespace program
{

namespace fs = std::filesystem;

namespace
{

std::string DescribeDepth(int depth)
{
    switch (depth)
    {
    case CV_8U:
        return "8-bit unsigned";
    case CV_8S:
        return "8-bit signed";
    case CV_16U:
        return "16-bit unsigned";
    case CV_16S:
        return "16-bit signed";
    case CV_32S:
        return "32-bit signed";
    case CV_32F:
        return "32-bit float";
    case CV_64F:
        return "64-bit float";
    default:
        return "16-bit float";
    }
}

std::string CountOfChannels(int channels)
{
    return std::to_string(channels) + (channels == 1 ? " channel" : " channels");
}

/// Says why a file cannot be opened, before a codec sees it.
void CheckReadable(fs::path const & file)
{
    std::error_code error;
    auto const status = fs::status(file, error);
    if (!fs::exists(status)) throw ProgramError(file, "no such file");
    if (fs::is_directory(status)) throw ProgramError(file, "is a directory");
    std::ifstream stream(file, std::ios::binary);
    if (!stream) throw ProgramError(file, "cannot be opened for reading");
}

cv::Mat Decode(fs::path const & file)
{
    QuietStderr const quiet;
    try
    {
        return cv::imread(file.string(), cv::IMREAD_UNCHANGED);
    }
    catch (cv::Exception const &)
    {
        // Broken data and images of absurd size alike.
        return {};
    }
}

template <class In>
std::size_t CountEmpty(cv::Mat const & image)
{
    std::size_t empty = 0;
    for (int y = 0; y < image.rows; ++y)
    {
        In const * const row = image.ptr<In>(y);
        for (int x = 0; x < image.cols; ++x)
        {
            empty += morvane::common::IsNonZeroPixel(row[x]) ? 0U : 1U;
        }
    }
    return empty;
}

template <class T>
std::size_t CountEmptyPixels(cv::Mat const & image)
{
    switch (image.channels())
    {
    case 1:
        return CountEmpty<T>(image);
    case 2:
        return CountEmpty<cv::Vec<T, 2>>(image);
    case 3:
        return CountEmpty<cv::Vec<T, 3>>(image);
    default:
        return CountEmpty<cv::Vec<T, 4>>(image);
    }
}

std::size_t CountEmptyPixels(cv::Mat const & image)
{
    switch (image.depth())
    {
    case CV_8U:
        return CountEmptyPixels<uchar>(image);
    case CV_16U:
        return CountEmptyPixels<ushort>(image);
    case CV_16S:
        return CountEmptyPixels<short>(image);
    case CV_32S:
        return CountEmptyPixels<int>(image);
    case CV_32F:
        return CountEmptyPixels<float>(image);
    default:
        return CountEmptyPixels<double>(image);
    }
}

} // namespace

cv::Mat ReadImage(fs::path const & file)
{
    CheckReadable(file);
    cv::Mat image = Decode(file);
    if (image.empty()) throw ProgramError(file, "is no image that can be read");
    if (image.depth() == CV_8S || image.depth() == CV_16F || image.channels() > morvane::common::kMaxChannels)
    {
        throw ProgramError(
            file, "has the type " + DescribeType(image.type()) +
                      "; accepted are 1 to 4 channels of 8-bit unsigned, 16- or 32-bit integers, float or double");
    }
    return image;
}

cv::Mat ReadImageLike(fs::path const & file, cv::Mat const & other, fs::path const & otherFile)
{
    cv::Mat image = ReadImage(file);
    CheckSize(file, image, other, otherFile);
    return image;
}

cv::Mat ReadScalars(fs::path const & file)
{
    cv::Mat const image = ReadImage(file);
    CheckChannels(file, image, {1});
    return WithoutNaN(image);
}

cv::Mat ReadScalarsLike(fs::path const & file, cv::Mat const & other, fs::path const & otherFile)
{
    cv::Mat image = ReadScalars(file);
    CheckSize(file, image, other, otherFile);
    return image;
}

cv::Mat ReadLabels(fs::path const & file)
{
    cv::Mat labels = ReadImage(file);
    CheckChannels(file, labels, {1});
    if (labels.depth() == CV_32F || labels.depth() == CV_64F)
    {
        throw ProgramError(file, "has the type " + DescribeType(labels.type()) + "; labels are integers");
    }
    labels.convertTo(labels, CV_32S);
    return labels;
}

void CheckDenseLabels(fs::path const & file, cv::Mat const & labels)
{
    double highest = 0.0;
    cv::minMaxIdx(labels, nullptr, &highest);
    if (highest <= static_cast<double>(labels.total())) return;
    throw ProgramError(file, "holds larger numbers than it has pixels; that is no image of labels");
}

void CheckSize(fs::path const & file, cv::Mat const & image, cv::Mat const & other, fs::path const & otherFile)
{
    if (image.size() == other.size()) return;
    throw ProgramError(
        file, "is " + DescribeSize(image) + ", but " + otherFile.string() + " is " + DescribeSize(other));
}

void CheckHalvings(fs::path const & file, cv::Mat const & image, int count)
{
    if (std::min(image.rows, image.cols) >> count > 0) return;
    throw ProgramError(
        file, "is " + DescribeSize(image) + ", too small to be halved " + std::to_string(count) + " times");
}

void CheckDepth(fs::path const & file, cv::Mat const & image, std::vector<int> const & accepted)
{
    if (std::find(accepted.begin(), accepted.end(), image.depth()) != accepted.end()) return;
    std::string names;
    for (int const one : accepted)
    {
        names += (names.empty() ? "" : ", ") + DescribeDepth(one);
    }
    throw ProgramError(file, "has the type " + DescribeType(image.type()) + "; accepted here are " + names);
}

std::vector<int> const & MorphologyDepths()
{
    static std::vector<int> const depths = {CV_8U, CV_16U, CV_16S, CV_32F, CV_64F};
    return depths;
}

std::vector<int> const & PriorityFloodDepths()
{
    static std::vector<int> const depths = {CV_8U, CV_32S, CV_32F};
    return depths;
}

cv::Mat WithoutNaN(cv::Mat const & image)
{
    if (image.depth() != CV_32F && image.depth() != CV_64F) return image;
    // Comparisons with NaN are false.
    cv::Mat const isFull = (image > 0.0) | (image < 0.0);
    cv::Mat numbers = cv::Mat::zeros(image.size(), image.type());
    image.copyTo(numbers, isFull);
    return numbers;
}

void CheckChannels(fs::path const & file, cv::Mat const & image, std::vector<int> const & accepted)
{
    if (std::find(accepted.begin(), accepted.end(), image.channels()) != accepted.end()) return;
    std::string numbers;
    for (int const one : accepted)
    {
        numbers += (numbers.empty() ? "" : " or ") + std::to_string(one);
    }
    throw ProgramError(file, "has " + CountOfChannels(image.channels()) + " where " + numbers + " must be");
}

std::string DescribeSize(cv::Mat const & image)
{
    return std::to_string(image.cols) + " x " + std::to_string(image.rows);
}

std::string DescribeType(int type)
{
    return cv::typeToString(type) + ", " + DescribeDepth(CV_MAT_DEPTH(type)) + ", " + CountOfChannels(CV_MAT_CN(type));
}

double EmptyShare(cv::Mat const & image)
{
    return static_cast<double>(CountEmptyPixels(image)) / static_cast<double>(image.total());
}

void PrintImage(fs::path const & file, cv::Mat const & image)
{
    std::ostringstream share;
    share << std::fixed << std::setprecision(1) << 100.0 * EmptyShare(image) << " %";
    std::cout << "image  " << file.string() << '\n'
              << "size   " << DescribeSize(image) << '\n'
              << "type   " << DescribeType(image.type()) << '\n'
              << "empty  " << share.str() << '\n';
}

} // namespace program
