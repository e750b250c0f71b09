// What the images of zone measures accept and refuse.
#include <morvane/connexity/ZoneMeasures.h>

#include "support/AllTypes.h"
#include "support/ImageLiterals.h"
#include "support/MeasureOracle.h"
#include "support/Rows.h"

#include <gtest/gtest.h>

namespace morvane::tests
{

namespace
{

using namespace connexity;

cv::Mat Ones(cv::Size size, int type)
{
    cv::Mat image(size, type);
    FillBytes(image, 1);
    return image;
}

void ExpectExtremesRefused(cv::Mat const & image, cv::Mat const & values)
{
    SCOPED_TRACE(cv::typeToString(image.type()) + ", values " + cv::typeToString(values.type()));
    EXPECT_TRUE(LabelFlatZonesNoZeroWithMax(image, values, eConnexity4).empty());
    EXPECT_TRUE(LabelFlatZonesNoZeroWithMin(image, values, eConnexity4).empty());
}

void ExpectAccumulationRefused(cv::Mat const & image, cv::Mat const & values)
{
    SCOPED_TRACE(cv::typeToString(image.type()) + ", values " + cv::typeToString(values.type()));
    EXPECT_TRUE(LabelFlatZonesNoZeroWithAccumulation(image, values, eConnexity4).empty());
}

TEST(FlatZoneMeasureImages, RefuseImagesOfDepthsThatTheLibraryDoesNotKnow)
{
    for (int const depth : kRefusedDepths)
    {
        cv::Mat const image = Ones({3, 2}, depth);
        EXPECT_TRUE(LabelFlatZonesNoZeroWithArea(image, eConnexity4).empty());
        ExpectAccumulationRefused(image, Ones({3, 2}, CV_8U));
        ExpectExtremesRefused(image, Ones({3, 2}, CV_8U));
    }
}

TEST(FlatZoneMeasureImages, RefuseImagesOfSeveralChannelsWhereOneIsAskedFor)
{
    for (int const depth : kDepths)
    {
        for (int const channels : {2, 3, 4, 5})
        {
            cv::Mat const image = Ones({3, 2}, CV_MAKETYPE(depth, channels));
            EXPECT_TRUE(LabelFlatZonesNoZeroWithArea(image, eConnexity4).empty());
            ExpectAccumulationRefused(image, Ones({3, 2}, CV_8U));
        }
        ExpectExtremesRefused(Ones({3, 2}, CV_MAKETYPE(depth, 5)), Ones({3, 2}, CV_8U));
    }
}

TEST(FlatZoneMeasureImages, RefuseValuesOfOtherTypes)
{
    cv::Mat const image = Ones({3, 2}, CV_8U);
    for (int depth = CV_8U; depth <= CV_16F; ++depth)
    {
        bool const known = depth != CV_8S && depth != CV_16F;
        for (int const channels : {1, 2, 3, 4, 5})
        {
            cv::Mat const values = Ones({3, 2}, CV_MAKETYPE(depth, channels));
            if (!known || channels != 1) ExpectAccumulationRefused(image, values);
            if (!known || (channels != 1 && channels != 3)) ExpectExtremesRefused(image, values);
        }
    }
}

TEST(FlatZoneMeasureImages, WithAccumulationRefusesValuesOfAnotherSize)
{
    for (cv::Size const size : {cv::Size(2, 3), cv::Size(3, 3), cv::Size(4, 2), cv::Size(6, 1), cv::Size()})
    {
        ExpectAccumulationRefused(Ones({3, 2}, CV_8U), Ones(size, CV_8U));
    }
}

TEST(FlatZoneMeasureImages, WithMaxAndMinReadLargerValuesByRasterNumber)
{
    cv::Mat const image = Draw<uchar>({"112", "112"});
    cv::Mat const values = Draw<uchar>({"98", "76", "54", "32"});
    ExpectDrawn(LabelFlatZonesNoZeroWithMax(image, values, eConnexity4), {"997", "997"});
    ExpectDrawn(LabelFlatZonesNoZeroWithMin(image, values, eConnexity4), {"554", "554"});
}

TEST(FlatZoneMeasureImages, WithMaxAndMinStayInBoundsWithSmallerValues)
{
    cv::Mat const image = Draw<uchar>({"112", "112"});
    for (cv::Size const size : {cv::Size(3, 1), cv::Size(1, 1), cv::Size(2, 2), cv::Size(0, 0)})
    {
        EXPECT_EQ(LabelFlatZonesNoZeroWithMax(image, Ones(size, CV_64FC3), eConnexity4).size(), image.size());
        EXPECT_EQ(LabelFlatZonesNoZeroWithMin(image, Ones(size, CV_16SC1), eConnexity4).size(), image.size());
    }
}

TEST(FlatZoneMeasureImages, AreZeroForImagesWithoutAZone)
{
    cv::Mat const image = Draw<double>({"...", "..."});
    for (int const depth : kDepths)
    {
        cv::Mat const values = Draw({"123", "456"}, depth);
        cv::Mat const zeros = cv::Mat::zeros(2, 3, OracleTableType(depth));
        ExpectEqualImages(LabelFlatZonesNoZeroWithAccumulation(image, values, eConnexity8), zeros);
        ExpectEqualImages(LabelFlatZonesNoZeroWithMax(image, values, eConnexity8), zeros);
        ExpectEqualImages(LabelFlatZonesNoZeroWithMin(image, values, eConnexity8), zeros);
    }
    ExpectEqualImages(LabelFlatZonesNoZeroWithArea(image, eConnexity8), cv::Mat::zeros(2, 3, CV_32SC1));
}

TEST(FlatZoneMeasureImages, AreEmptyForEmptyImages)
{
    for (cv::Size const size : {cv::Size(0, 0), cv::Size(0, 3), cv::Size(4, 0)})
    {
        cv::Mat const image(size, CV_32F);
        EXPECT_TRUE(LabelFlatZonesNoZeroWithArea(image, eConnexity8).empty());
        EXPECT_TRUE(LabelFlatZonesNoZeroWithAccumulation(image, image, eConnexity8).empty());
        EXPECT_TRUE(LabelFlatZonesNoZeroWithMax(image, image, eConnexity8).empty());
        EXPECT_TRUE(LabelFlatZonesNoZeroWithMin(image, image, eConnexity8).empty());
    }
}

TEST(FlatZoneMeasureImages, HoldSinglePixelsUnderShapesOutsideTheTable)
{
    cv::Mat const image = Draw<uchar>({"11.1"});
    for (int const connexity : kStrangeConnexities)
    {
        ExpectDrawn(LabelFlatZonesNoZeroWithArea(image, Shape(connexity)), {"11.1"});
        ExpectDrawn(LabelFlatZonesNoZeroWithAccumulation(image, Draw<uchar>({"3456"}), Shape(connexity)), {"34.6"});
        ExpectDrawn(LabelFlatZonesNoZeroWithMax(image, Draw<uchar>({"3456"}), Shape(connexity)), {"34.6"});
    }
}

} // namespace

} // namespace morvane::tests
