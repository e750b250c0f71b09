#include "common/Dispatch.h"

#include "support/AllTypes.h"

#include <gtest/gtest.h>

#include <array>
#include <typeinfo>

namespace morvane::common
{

namespace
{

TEST(SameSize, ComparesRowsAndColumnsExactly)
{
    cv::Mat const image(3, 4, CV_8UC1);
    EXPECT_TRUE(SameSize(image, cv::Mat(3, 4, CV_64FC4)));
    EXPECT_FALSE(SameSize(image, cv::Mat(4, 3, CV_8UC1)));
    EXPECT_FALSE(SameSize(image, cv::Mat(3, 5, CV_8UC1)));
    EXPECT_FALSE(SameSize(image, cv::Mat(2, 4, CV_8UC1)));
    EXPECT_FALSE(SameSize(image, cv::Mat()));
}

TEST(SameSize, LooksAtEveryImage)
{
    cv::Mat const image(3, 4, CV_8UC1);
    cv::Mat const other(3, 3, CV_8UC1);
    EXPECT_TRUE(SameSize(image, image, image));
    EXPECT_FALSE(SameSize(image, other, image));
    EXPECT_FALSE(SameSize(image, image, other));
}

TEST(SameSize, TellsEmptyImagesApart)
{
    EXPECT_TRUE(SameSize(cv::Mat(), cv::Mat()));
    EXPECT_TRUE(SameSize(cv::Mat(), cv::Mat(0, 0, CV_32SC1)));
    EXPECT_TRUE(SameSize(cv::Mat(0, 5, CV_8UC1), cv::Mat(0, 5, CV_32SC1)));
    EXPECT_FALSE(SameSize(cv::Mat(0, 5, CV_8UC1), cv::Mat(5, 0, CV_32SC1)));
    EXPECT_FALSE(SameSize(cv::Mat(0, 5, CV_8UC1), cv::Mat(0, 0, CV_32SC1)));
}

TEST(SameSize, RefusesMoreThanTwoDimensions)
{
    std::array const sides{2, 3, 4};
    cv::Mat const volume(3, sides.data(), CV_8UC1);
    EXPECT_FALSE(SameSize(volume, volume));
    EXPECT_FALSE(SameSize(cv::Mat(2, 3, CV_8UC1), volume));
    EXPECT_FALSE(SameSize(volume, cv::Mat(2, 3, CV_8UC1)));
}

std::type_info const * VisitedElement(int type)
{
    return VisitElement(cv::Mat(1, 1, type), []<class T> { return &typeid(T); });
}

TEST(VisitElement, GivesTheTypeOfTheDepth)
{
    for (int const channels : {1, 2, 3, 4, 5, 200})
    {
        ASSERT_NE(VisitedElement(CV_8UC(channels)), nullptr);
        EXPECT_EQ(*VisitedElement(CV_8UC(channels)), typeid(uchar));
        EXPECT_EQ(*VisitedElement(CV_16UC(channels)), typeid(ushort));
        EXPECT_EQ(*VisitedElement(CV_16SC(channels)), typeid(short));
        EXPECT_EQ(*VisitedElement(CV_32SC(channels)), typeid(int));
        EXPECT_EQ(*VisitedElement(CV_32FC(channels)), typeid(float));
        EXPECT_EQ(*VisitedElement(CV_64FC(channels)), typeid(double));
    }
}

TEST(VisitElement, RefusesOtherDepthsWithTheValueInitialisedResult)
{
    for (int const depth : tests::kRefusedDepths)
    {
        for (int const channels : {1, 3, 5})
        {
            cv::Mat const image(1, 1, CV_MAKETYPE(depth, channels));
            EXPECT_EQ(VisitedElement(image.type()), nullptr);
            EXPECT_FALSE(VisitElement(image, []<class T> { return true; }));
            EXPECT_EQ(VisitElement(image, []<class T> { return 7; }), 0);
            EXPECT_TRUE(VisitElement(image, []<class T> { return cv::Mat(2, 2, CV_8UC1); }).empty());
        }
    }
}

TEST(VisitLabel, GivesOneTypeForBothSixteenBitDepths)
{
    auto const visited = [](int type) {
        return VisitLabel(cv::Mat(1, 1, type), []<class Label> { return &typeid(Label); });
    };
    ASSERT_NE(visited(CV_8UC1), nullptr);
    EXPECT_EQ(*visited(CV_8UC1), typeid(uchar));
    EXPECT_EQ(*visited(CV_16UC1), typeid(ushort));
    EXPECT_EQ(*visited(CV_16SC1), typeid(ushort));
    EXPECT_EQ(*visited(CV_32SC1), typeid(int));
    EXPECT_EQ(*visited(CV_32SC3), typeid(int)) << "the channels of a label image are not looked at";
    for (int const depth : tests::kRefusedLabelDepths)
    {
        EXPECT_EQ(visited(depth), nullptr) << cv::typeToString(depth);
    }
}

TEST(VisitChannels, GivesOneToFourAndRefusesMore)
{
    for (int const depth : {CV_8U, CV_8S, CV_64F})
    {
        for (int channels = 1; channels <= CV_CN_MAX; ++channels)
        {
            int const visited = VisitChannels(cv::Mat(1, 1, CV_MAKETYPE(depth, channels)), []<int N> { return N; });
            ASSERT_EQ(visited, channels <= 4 ? channels : 0);
        }
    }
}

TEST(Visitors, ReadTheHeaderAndNotThePixels)
{
    cv::Mat const empty(0, 0, CV_16SC3);
    EXPECT_TRUE(VisitElement(empty, []<class T> { return std::is_same_v<T, short>; }));
    EXPECT_EQ(VisitChannels(empty, []<int N> { return N; }), 3);
}

TEST(Visitors, CallTheLeafOnceOrNever)
{
    int calls = 0;
    cv::Mat const image(1, 1, CV_32FC2);
    EXPECT_TRUE(VisitElement(image, [&]<class T> {
        return VisitChannels(image, [&]<int N> {
            ++calls;
            return N == 2 && std::is_same_v<T, float>;
        });
    }));
    EXPECT_EQ(calls, 1);
    EXPECT_FALSE(VisitElement(cv::Mat(1, 1, CV_8SC2), [&]<class T> {
        ++calls;
        return true;
    }));
    EXPECT_EQ(calls, 1);
}

} // namespace

} // namespace morvane::common
