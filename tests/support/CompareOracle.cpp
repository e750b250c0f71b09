#include "support/CompareOracle.h"

#include "support/ImageLiterals.h"
#include "support/Snapshot.h"

#include <morvane/common/ImageCompare.h>

#include <cstring>
#include <limits>
#include <sstream>

namespace morvane::tests
{

namespace
{

bool Holds(double left, int code, double right)
{
    switch (code)
    {
    case 0:
        return left == right;
    case 1:
        return left > right;
    case 2:
        return left >= right;
    case 3:
        return left < right;
    case 4:
        return left <= right;
    case 5:
        return left != right;
    default:
        return false;
    }
}

double Operand(RightOperand const & right, int number)
{
    if (auto const * const value = std::get_if<double>(&right)) return *value;
    auto const & image = std::get<cv::Mat>(right);
    return ElementAt(image, number / image.cols, number % image.cols);
}

void Store(Selected const & selected, int number, cv::Mat & output)
{
    int const y = number / output.cols;
    int const x = number % output.cols;
    if (auto const * const image = std::get_if<cv::Mat>(&selected))
    {
        std::size_t const bytes = output.elemSize();
        std::memcpy(output.ptr(y) + static_cast<std::size_t>(x) * bytes, PixelNumber(*image, number), bytes);
        return;
    }
    for (int channel = 0; channel < output.channels(); ++channel)
    {
        SetElement(output, y, x, channel, OracleElement(std::get<cv::Scalar>(selected)[channel], output.depth()));
    }
}

std::string ShapeText(cv::Mat const & image)
{
    std::ostringstream text;
    text << cv::typeToString(image.type()) << ' ' << image.rows << 'x' << image.cols
         << (image.isContinuous() ? "" : " view");
    return text.str();
}

std::string OperandText(Selected const & selected)
{
    if (auto const * const image = std::get_if<cv::Mat>(&selected)) return ShapeText(*image);
    std::ostringstream text;
    text << std::get<cv::Scalar>(selected);
    return text.str();
}

} // namespace

bool CallImageCompare(Comparison const & comparison, cv::Mat & output)
{
    return std::visit(
        [&](auto const & right, auto const & whenTrue, auto const & whenFalse) {
            return common::ImageCompare(comparison.left, comparison.code, right, whenTrue, whenFalse, output);
        },
        comparison.right, comparison.whenTrue, comparison.whenFalse);
}

cv::Mat OracleCompare(Comparison const & comparison, cv::Mat const & output)
{
    cv::Mat expected = CopyOf(output);
    cv::Mat const & left = comparison.left;
    for (int number = 0; number < left.rows * left.cols; ++number)
    {
        double const value = ElementAt(left, number / left.cols, number % left.cols);
        bool const holds = Holds(value, comparison.code, Operand(comparison.right, number));
        Store(holds ? comparison.whenTrue : comparison.whenFalse, number, expected);
    }
    return expected;
}

std::int64_t OracleCut(double value)
{
    if (value > -2147483649.0 && value < 2147483648.0) return static_cast<std::int64_t>(value);
    return std::numeric_limits<int>::min();
}

double OracleLowBits(std::int64_t value, int depth)
{
    auto const bits = static_cast<std::uint64_t>(value);
    switch (depth)
    {
    case CV_8U:
        return static_cast<double>(bits % 256U);
    case CV_16U:
        return static_cast<double>(bits % 65536U);
    case CV_16S:
        return static_cast<double>((bits + 32768U) % 65536U) - 32768.0;
    default:
        return static_cast<double>((bits + 2147483648U) % 4294967296U) - 2147483648.0;
    }
}

double OracleElement(double value, int depth)
{
    if (depth == CV_32F) return static_cast<double>(static_cast<float>(value));
    if (depth == CV_64F) return value;
    return OracleLowBits(OracleCut(value), depth);
}

std::string Describe(Comparison const & comparison, cv::Mat const & output)
{
    std::ostringstream text;
    text << "left " << ShapeText(comparison.left) << ", code " << comparison.code << ", right ";
    if (auto const * const image = std::get_if<cv::Mat>(&comparison.right))
    {
        text << ShapeText(*image);
    }
    else
    {
        text << std::get<double>(comparison.right);
    }
    text << ", when true " << OperandText(comparison.whenTrue) << ", when false " << OperandText(comparison.whenFalse)
         << ", output " << ShapeText(output);
    return text.str();
}

} // namespace morvane::tests
