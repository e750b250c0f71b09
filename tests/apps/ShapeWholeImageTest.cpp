#include "apps/ShapeFixture.h"

#include <morvane/features/ShapeDescriptors.h>

#include <gtest/gtest.h>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>

#include <set>
#include <string>
#include <vector>

namespace
{

using namespace morvane::features;
using morvane::tests::Read;
using morvane::tests::ShapeProgram;
using morvane::tests::Texture;

void ExpectSame(cv::Mat const & actual, cv::Mat const & expected)
{
    ASSERT_EQ(actual.type(), expected.type());
    ASSERT_EQ(actual.size(), expected.size());
    EXPECT_EQ(cv::norm(actual, expected, cv::NORM_INF), 0.0);
}

class ShapeOfWholeImage : public ShapeProgram
{};

TEST_F(ShapeOfWholeImage, Boxes_AreDrawnRoundTheParts)
{
    // The two zones that touch are one part.
    cv::Mat1b image(12, 20, uchar{0});
    image(cv::Rect(2, 3, 5, 4)) = 10;
    image(cv::Rect(7, 5, 2, 4)) = 250;
    image(cv::Rect(12, 1, 4, 9)) = 120;
    ASSERT_TRUE(cv::imwrite(In("parts.png"), image));
    std::string const output = Output({In("parts.png"), "--boxes", In("boxes.png"), "--closed", In("closed.png")});
    // Nothing was asked of zones.
    EXPECT_EQ(output.rfind("image  ", 0), 0U) << output;
    EXPECT_NE(output.find("\nsize   20 x 12\n"), std::string::npos) << output;
    cv::Mat3b const picture = Read(In("boxes.png"));
    cv::Mat1b isFrame(image.size(), uchar{0});
    cv::rectangle(isFrame, cv::Rect(2, 3, 7, 6), cv::Scalar(1));
    cv::rectangle(isFrame, cv::Rect(12, 1, 4, 9), cv::Scalar(2));
    std::set<std::vector<int>> colours;
    for (int y = 0; y < image.rows; ++y)
    {
        for (int x = 0; x < image.cols; ++x)
        {
            cv::Vec3b const & colour = picture(y, x);
            if (isFrame(y, x) != 0)
            {
                colours.insert({isFrame(y, x), colour[0], colour[1], colour[2]});
                continue;
            }
            EXPECT_EQ(colour[0], colour[1]);
            EXPECT_EQ(colour[0], colour[2]);
            EXPECT_EQ(colour[0] == 0, image(y, x) == 0);
        }
    }
    EXPECT_EQ(colours.size(), 2U);
    cv::Mat closed;
    ASSERT_TRUE(BoundingConvexHulls(image != 0, closed));
    ExpectSame(Read(In("closed.png")), closed);
}

TEST_F(ShapeOfWholeImage, Corners_AreThoseOfTheLibrary)
{
    std::string const output =
        Output({In("texture.png"), "--harris", In("harris.tif"), "--harris-picture", In("harris.png")});
    EXPECT_EQ(output.rfind("image  ", 0), 0U) << output;
    cv::Mat response;
    ASSERT_TRUE(ExtractHarrisCorners(Texture(), response));
    ExpectSame(Read(In("harris.tif")), response);
    cv::Mat picture;
    response.convertTo(picture, CV_8U);
    ExpectSame(Read(In("harris.png")), picture);
}

} // namespace
