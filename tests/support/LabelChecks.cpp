#include "support/LabelChecks.h"

#include "support/AllTypes.h"
#include "support/ImageLiterals.h"
#include "support/Labels.h"
#include "support/Snapshot.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <list>
#include <map>

namespace morvane::tests
{

using connexity::eConnexityType;

namespace
{

/// Runs the call on views and compares labels, images and all that surrounds them.
void ExpectZonesInViews(LabelCall const & call, Images const & images, cv::Mat const & expected)
{
    std::list<FramedImage> framed;
    Images views;
    views.reserve(images.size());
    for (cv::Mat const & image : images)
    {
        views.push_back(framed.emplace_back(image).View());
    }
    FramedImage labels(DirtyLabels(expected.size(), expected.type()));
    uchar const * const place = labels.View().data;
    EXPECT_TRUE(call(views, labels.View()));
    EXPECT_EQ(labels.View().data, place) << "the label image was reallocated";
    EXPECT_TRUE(EqualImages(labels.View(), expected));
    EXPECT_TRUE(labels.IsFrameUntouched());
    for (FramedImage const & image : framed)
    {
        EXPECT_TRUE(image.IsFrameUntouched());
    }
    for (std::size_t index = 0; index < images.size(); ++index)
    {
        EXPECT_TRUE(EqualImages(views[index], images[index])) << "image " << index << " was written to";
    }
}

} // namespace

cv::Mat Written(cv::Size size, int type, std::function<bool(cv::Mat & labels)> const & call)
{
    cv::Mat labels = DirtyLabels(size, type);
    uchar const * const place = labels.data;
    EXPECT_TRUE(call(labels));
    EXPECT_EQ(labels.data, place) << "the label image was reallocated";
    return labels;
}

void ExpectZones(Random & random, LabelCall const & call, Images const & images, OracleZoneList const & zones)
{
    cv::Size const size = images.front().size();
    for (int const labelDepth : kLabelDepths)
    {
        cv::Mat const labels = Written(size, labelDepth, [&](cv::Mat & out) { return call(images, out); });
        EXPECT_TRUE(EqualImages(labels, OracleLabels(zones, size, labelDepth)));
    }
    int const labelDepth = kLabelDepths[static_cast<std::size_t>(random.Below(4))];
    int const labelChannels = random.Chance(0.6) ? 1 : 2 + random.Below(3);
    ExpectZonesInViews(call, images, OracleLabels(zones, size, CV_MAKETYPE(labelDepth, labelChannels)));
}

std::vector<OperatorOfOne> OperatorsOfOne()
{
    using namespace connexity;
    return {
        {"LabelFlatZones", LabelFlatZones},
        {"LabelFlatZonesNoZero", LabelFlatZonesNoZero},
        {"LabelDeltaFlatZones",
         [](cv::Mat const & image, eConnexityType const & connexity, cv::Mat & labels) {
             return LabelDeltaFlatZones(image, connexity, 1.0, labels);
         }},
        {"LabelDeltaFlatZonesNoZero", [](cv::Mat const & image, eConnexityType const & connexity, cv::Mat & labels) {
             return LabelDeltaFlatZonesNoZero(image, connexity, 1.0, labels);
         }}};
}

std::vector<OperatorOfTwo> OperatorsOfTwo()
{
    using namespace connexity;
    return {
        {"LabelFlatZonesNoZero of two", LabelFlatZonesNoZero, false, false},
        {"LabelDeltaFlatZones of two",
         [](cv::Mat const & image, cv::Mat const & second, eConnexityType const & connexity, cv::Mat & labels) {
             return LabelDeltaFlatZones(image, second, connexity, 1.0, 1.0, labels);
         },
         true, false},
        {"LabelDeltaFlatZonesNoZero of two",
         [](cv::Mat const & image, cv::Mat const & second, eConnexityType const & connexity, cv::Mat & labels) {
             return LabelDeltaFlatZonesNoZero(image, second, connexity, 1.0, 1.0, labels);
         },
         true, true},
        {"LabelDeltaFlatZonesWithAreaCondition",
         [](cv::Mat const & image, cv::Mat const & second, eConnexityType const & connexity, cv::Mat & labels) {
             return LabelDeltaFlatZonesWithAreaCondition(image, second, connexity, 1.0, 1.0, 0, labels);
         },
         true, true},
        {"LabelDeltaFlatZonesNoZeroWithAreaCondition",
         [](cv::Mat const & image, cv::Mat const & second, eConnexityType const & connexity, cv::Mat & labels) {
             return LabelDeltaFlatZonesNoZeroWithAreaCondition(image, second, connexity, 1.0, 1.0, 0, labels);
         },
         true, true}};
}

cv::Mat RowOfZones(int zones, int type)
{
    cv::Mat row(1, zones, type);
    for (int x = 0; x < zones; ++x)
    {
        for (int channel = 0; channel < row.channels(); ++channel)
        {
            // Three values, so that shapes that reach two pixels far join nothing either.
            SetElement(row, 0, x, channel, 10 + 20 * (x % 3));
        }
    }
    return row;
}

bool Refines(cv::Mat const & fine, cv::Mat const & coarse)
{
    std::map<int, int> holders;
    for (int y = 0; y < fine.rows; ++y)
    {
        for (int x = 0; x < fine.cols; ++x)
        {
            int const holder = coarse.at<int>(y, x);
            if (holders.try_emplace(fine.at<int>(y, x), holder).first->second != holder) return false;
        }
    }
    return true;
}

cv::Mat Turned(cv::Mat const & image, int by)
{
    cv::Mat result;
    cv::hconcat(image.colRange(by, image.cols), image.colRange(0, by), result);
    return result;
}

} // namespace morvane::tests
