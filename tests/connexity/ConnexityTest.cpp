#include <morvane/connexity/Connexity.h>

#include <gtest/gtest.h>

TEST(Connexity, Connexity4_StartsLeftAndEndsUp)
{
    morvane::connexity::Connexity const connexity(morvane::connexity::eConnexity4);
    ASSERT_EQ(connexity.size(), 4U);
    EXPECT_EQ(connexity[0], cv::Point(-1, 0));
    EXPECT_EQ(connexity[3], cv::Point(0, -1));
}
