#include <morvane/features/Normals.h>

namespace morvane::features
{

namespace
{

/// A copy with pixels of its own.
cv::Mat CopyOf(cv::Mat const & image)
{
    cv::Mat copy = cv::Mat::zeros(image.size(), image.type());
    image.copyTo(copy);
    return copy;
}

} // namespace

StatisticsOutput::StatisticsOutput()
    : labels(cv::Mat::zeros(0, 0, CV_32S))
    , classes(cv::Mat::zeros(0, 0, CV_32S))
    , values(cv::Mat::zeros(0, 0, CV_32F))
{}

StatisticsOutput::StatisticsOutput(StatisticsOutput const & other)
{
    *this = other;
}

StatisticsOutput & StatisticsOutput::operator=(StatisticsOutput const & other)
{
    if (this == &other) return *this;
    labels = CopyOf(other.labels);
    classes = CopyOf(other.classes);
    values = CopyOf(other.values);
    index = other.index;
    mean = other.mean;
    deviation = other.deviation;
    least = other.least;
    greatest = other.greatest;
    median = other.median;
    zones = other.zones;
    accepted = other.accepted;
    rejected = other.rejected;
    pixels = other.pixels;
    sum = other.sum;
    squares = other.squares;
    products = other.products;
    state = other.state;
    total = other.total;
    return *this;
}

StatisticsOutput::~StatisticsOutput() = default;

void StatisticsOutput::Init(cv::Size const & size)
{
    if (index == -1)
    {
        labels = cv::Mat::zeros(size, CV_32S);
        classes = cv::Mat::zeros(size, CV_32S);
        values = cv::Mat::zeros(size, CV_32F);
    }
    else
    {
        classes.setTo(0);
        labels.setTo(0);
        values.setTo(-1.0);
    }
    index = 0;
    mean = 0.0F;
    deviation = 0.0F;
    least = 0.0F;
    greatest = 0.0F;
    zones = 0;
    accepted = 0;
    rejected = 0;
    pixels = 0;
    sum = 0;
    squares = 0;
    products = 0;
    state = 0;
    total = 0;
}

} // namespace morvane::features
