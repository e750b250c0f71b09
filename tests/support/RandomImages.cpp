#include "support/RandomImages.h"

#include "support/ImageLiterals.h"

#include <cmath>
#include <limits>
#include <vector>

namespace morvane::tests
{

namespace
{

cv::Point const kFrameOrigin(3, 2);
cv::Size const kFrameGrowth(8, 5);
constexpr uchar kFrameByte = 0xA5;

/// Integers that are not 0; among them those whose low bytes are.
std::vector<double> FullIntegers(int depth)
{
    switch (depth)
    {
    case CV_8U:
        return {1, 2, 127, 128, 254, 255};
    case CV_16U:
        return {1, 2, 255, 256, 0x7FFF, 0x8000, 0xFF00, 0xFFFF};
    case CV_16S:
        return {1, -1, 2, 255, 256, -256, 0x7F00, 0x7FFF, -0x7FFF, -0x8000};
    default:
        return {1,          -1,         256,          65536,         -65536,       0x01000000,
                0x7FFFFF00, -0x1000000, 2147483647.0, -2147483647.0, -2147483648.0};
    }
}

/// The smallest number of the type above the limit of emptiness.
double JustFull(int depth)
{
    if (depth == CV_32F) return static_cast<double>(std::nextafter(1e-10F, 1.0F));
    return std::nextafter(1e-10, 1.0);
}

std::vector<double> FullNumbers(int depth)
{
    double const infinity = std::numeric_limits<double>::infinity();
    double const just = JustFull(depth);
    double const most =
        depth == CV_32F ? static_cast<double>(std::numeric_limits<float>::max()) : std::numeric_limits<double>::max();
    return {1.0, -1.0, 0.5, 2e-10, -2e-10, just, -just, 1e-5, 3e4, -3e4, most, -most, infinity, -infinity};
}

/// Numbers that hold nothing, also in a pixel with other such numbers; NaN and the limit itself are left to the caller.
std::vector<double> TinyNumbers(int depth)
{
    double const least = depth == CV_32F ? static_cast<double>(std::numeric_limits<float>::denorm_min())
                                         : std::numeric_limits<double>::denorm_min();
    double const normal =
        depth == CV_32F ? static_cast<double>(std::numeric_limits<float>::min()) : std::numeric_limits<double>::min();
    return {0.0, 0.0, -0.0, 1e-11, -1e-11, least, -least, normal, -normal, 1e-20};
}

bool IsFloating(int depth)
{
    return depth == CV_32F || depth == CV_64F;
}

double Pick(Random & random, std::vector<double> const & values)
{
    return values[static_cast<std::size_t>(random.Below(static_cast<int>(values.size())))];
}

std::vector<double> Specials(int depth)
{
    if (!IsFloating(depth))
    {
        std::vector<double> specials = FullIntegers(depth);
        specials.push_back(0.0);
        return specials;
    }
    std::vector<double> specials = FullNumbers(depth);
    std::vector<double> const tiny = TinyNumbers(depth);
    specials.insert(specials.end(), tiny.begin(), tiny.end());
    double const nan = std::numeric_limits<double>::quiet_NaN();
    specials.insert(specials.end(), {nan, -nan, nan, 1e-10, -1e-10});
    return specials;
}

void PaintFull(Random & random, cv::Mat & image, int y, int x)
{
    int const depth = image.depth();
    std::vector<double> const full = IsFloating(depth) ? FullNumbers(depth) : FullIntegers(depth);
    std::vector<double> const empty = IsFloating(depth) ? TinyNumbers(depth) : std::vector<double>{0.0};
    int const certain = random.Below(image.channels());
    for (int channel = 0; channel < image.channels(); ++channel)
    {
        bool const fill = channel == certain || random.Chance(0.4);
        SetElement(image, y, x, channel, Pick(random, fill ? full : empty));
    }
}

void PaintEmpty(Random & random, cv::Mat & image, int y, int x)
{
    int const depth = image.depth();
    if (!IsFloating(depth)) return;
    std::vector<double> const tiny = TinyNumbers(depth);
    for (int channel = 0; channel < image.channels(); ++channel)
    {
        SetElement(image, y, x, channel, Pick(random, tiny));
    }
    if (random.Chance(0.2))
    {
        // One NaN empties the pixel, whatever the other channels hold.
        PaintFull(random, image, y, x);
        double const nan = std::numeric_limits<double>::quiet_NaN();
        SetElement(image, y, x, random.Below(image.channels()), random.Chance(0.5) ? nan : -nan);
    }
    else if (image.channels() == 1 && random.Chance(0.2))
    {
        SetElement(image, y, x, 0, random.Chance(0.5) ? 1e-10 : -1e-10);
    }
}

} // namespace

std::uint64_t Random::Next()
{
    m_state += 0x9E3779B97F4A7C15U;
    std::uint64_t bits = m_state;
    bits = (bits ^ (bits >> 30U)) * 0xBF58476D1CE4E5B9U;
    bits = (bits ^ (bits >> 27U)) * 0x94D049BB133111EBU;
    return bits ^ (bits >> 31U);
}

int Random::Below(int bound)
{
    return static_cast<int>(Next() % static_cast<std::uint64_t>(bound));
}

double Random::Unit()
{
    return std::ldexp(static_cast<double>(Next() >> 11U), -53);
}

cv::Mat RandomImage(Random & random, cv::Size size, int type, Mixture const & mixture)
{
    cv::Mat image(size.height, size.width, type, cv::Scalar::all(0));
    std::vector<double> const specials = Specials(image.depth());
    for (int y = 0; y < size.height; ++y)
    {
        for (int x = 0; x < size.width; ++x)
        {
            if (random.Chance(mixture.emptyShare)) continue;
            bool const special = random.Chance(mixture.specialShare);
            for (int channel = 0; channel < image.channels(); ++channel)
            {
                SetElement(image, y, x, channel, special ? Pick(random, specials) : 1 + random.Below(mixture.alphabet));
            }
        }
    }
    return image;
}

cv::Mat1b RandomMask(Random & random, cv::Size size, double fullShare)
{
    cv::Mat1b mask(size.height, size.width);
    for (int y = 0; y < size.height; ++y)
    {
        for (int x = 0; x < size.width; ++x)
        {
            mask(y, x) = random.Chance(fullShare) ? 1 : 0;
        }
    }
    return mask;
}

cv::Mat PaintMask(Random & random, cv::Mat1b const & mask, int type)
{
    cv::Mat image(mask.rows, mask.cols, type, cv::Scalar::all(0));
    for (int y = 0; y < mask.rows; ++y)
    {
        for (int x = 0; x < mask.cols; ++x)
        {
            if (mask(y, x) != 0)
            {
                PaintFull(random, image, y, x);
            }
            else
            {
                PaintEmpty(random, image, y, x);
            }
        }
    }
    return image;
}

cv::Size RandomSize(Random & random, int largest)
{
    auto const side = [&] {
        return random.Chance(0.25) ? random.Below(4) : random.Below(largest + 1);
    };
    int const width = side();
    int const height = side();
    return {width, height};
}

FramedImage::FramedImage(cv::Mat const & content)
    : m_parent(content.rows + kFrameGrowth.height, content.cols + kFrameGrowth.width, content.type())
{
    FillBytes(m_parent, kFrameByte);
    if (content.empty())
    {
        // OpenCV makes every view without pixels 0 x 0; a size of 0 x 5 needs a matrix of its own.
        m_view.create(content.rows, content.cols, content.type());
        return;
    }
    m_view = m_parent(cv::Rect(kFrameOrigin, content.size()));
    content.copyTo(m_view);
}

::testing::AssertionResult FramedImage::IsFrameUntouched() const
{
    cv::Rect const inside(kFrameOrigin, m_view.size());
    std::size_t const pixelBytes = m_parent.elemSize();
    for (int y = 0; y < m_parent.rows; ++y)
    {
        for (int x = 0; x < m_parent.cols; ++x)
        {
            if (inside.contains({x, y})) continue;
            uchar const * const pixel = m_parent.ptr(y) + static_cast<std::size_t>(x) * pixelBytes;
            for (std::size_t byte = 0; byte < pixelBytes; ++byte)
            {
                if (pixel[byte] == kFrameByte) continue;
                return ::testing::AssertionFailure()
                       << "a byte outside the view changed, at row " << y - kFrameOrigin.y << ", column "
                       << x - kFrameOrigin.x << " of the view's coordinates";
            }
        }
    }
    return ::testing::AssertionSuccess();
}

} // namespace morvane::tests
