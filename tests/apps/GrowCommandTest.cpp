#include "apps/ProgramFixture.h"
#include "support/AllTypes.h"
#include "support/ImageLiterals.h"
#include "support/RandomImages.h"

#include <morvane/algorithm/RegionGrowing.h>

#include <gtest/gtest.h>
#include <opencv2/imgcodecs.hpp>

#include <set>
#include <string>
#include <vector>

namespace morvane::tests
{

namespace
{

class GrowCommand : public Program
{
protected:
    void Save(std::string const & name, cv::Mat const & image) const { ASSERT_TRUE(cv::imwrite(In(name), image)); }

    /// The labels that are written, after a run that reports so many zones.
    [[nodiscard]] cv::Mat Grown(std::vector<std::string> arguments, int zones) const
    {
        arguments.insert(arguments.begin(), "grow");
        arguments.insert(arguments.end(), {"-o", In("out.tif")});
        process::Outcome const outcome = Run(arguments);
        EXPECT_EQ(outcome.status, 0) << outcome.errors;
        EXPECT_EQ(outcome.errors, "");
        std::string const counted = "\nzones  " + std::to_string(zones) + "\n";
        EXPECT_NE(outcome.output.find(counted), std::string::npos) << outcome.output << " has no " << zones;
        return Read(In("out.tif"));
    }

    /// The arguments for image.tif and second.tif.
    [[nodiscard]] std::vector<std::string> Both(std::vector<std::string> const & more) const
    {
        std::vector<std::string> arguments{In("image.tif"), "--second", In("second.tif")};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return arguments;
    }

    static void Refuses(std::vector<std::string> arguments, std::vector<std::string> const & named)
    {
        arguments.insert(arguments.begin(), "grow");
        ExpectFailure(arguments, named);
    }
};

TEST_F(GrowCommand, ZonesStayNearTheirFirstPixelInBothImages)
{
    Save("image.tif", Draw<ushort>({"123459"}));
    Save("second.tif", Draw<uchar>({"111111"}));
    ExpectDrawn(Grown(Both({"--connexity", "4", "--delta", "2"}), 3), {"111223"});
    Save("second.tif", Draw<uchar>({"151111"}));
    ExpectDrawn(Grown(Both({"--connexity", "4", "--delta", "2"}), 4), {"123334"});
    ExpectDrawn(Grown(Both({"--connexity", "4", "--delta", "2", "--second-delta", "4"}), 3), {"111223"});
    // From the left, the last pixel is reached over the seam.
    Save("image.tif", Draw<ushort>({"199991"}));
    ExpectDrawn(Grown(Both({"--connexity", "4-wrapped", "--delta", "2", "--second-delta", "4"}), 2), {"122221"});
}

TEST_F(GrowCommand, EmptyPixelsAreValuesLikeOthers)
{
    Save("image.tif", Draw<uchar>({"1..9"}));
    Save("second.tif", Draw<uchar>({"...."}));
    ExpectDrawn(Grown(Both({"--connexity", "4", "--delta", "1"}), 2), {"1112"});
}

TEST_F(GrowCommand, SmallZonesMayBeLeftOut)
{
    Save("image.tif", Draw<uchar>({"115999"}));
    Save("second.tif", Draw<uchar>({"111111"}));
    ExpectDrawn(Grown(Both({"--connexity", "4", "--delta", "0", "--min-area", "2"}), 2), {"11.222"});
    ExpectDrawn(Grown(Both({"--connexity", "4", "--delta", "0", "--min-area", "3"}), 1), {"...111"});
    ExpectDrawn(Grown(Both({"--connexity", "4", "--delta", "0", "--min-area", "1"}), 3), {"112333"});
}

TEST_F(GrowCommand, GivesTheZonesOfTheLibrary)
{
    Random random(960);
    for (int const depth : {CV_8U, CV_16U, CV_16S, CV_32S, CV_32F, CV_64F})
    {
        cv::Size const size(30, 20);
        cv::Mat const image = RandomImage(random, size, depth, {0.2, 0.02, 9});
        cv::Mat const second = RandomImage(random, size, CV_32FC1, {0.1, 0.02, 4});
        Save("image.tif", image);
        Save("second.tif", second);
        cv::Mat labels(size, CV_32SC1);
        ASSERT_TRUE(
            algorithm::GrowRegion(image, second, connexity::eConnexity20InterleavedWrapped, 2.5F, 1.5F, labels));
        double zones = 0;
        cv::minMaxIdx(labels, nullptr, &zones);
        cv::Mat const grown = Grown(
            Both({"--connexity", "20-interleaved-wrapped", "--delta", "2.5", "--second-delta", "1.5"}),
            static_cast<int>(zones));
        EXPECT_TRUE(EqualImages(grown, labels)) << depth;
    }
}

TEST_F(GrowCommand, Picture_HasAColourForEachZone)
{
    Save("image.tif", Draw<uchar>({"115999"}));
    Save("second.tif", Draw<uchar>({"111111"}));
    std::vector<std::string> arguments =
        Both({"--connexity", "4", "--delta", "0", "--min-area", "2", "--picture", In("picture.png")});
    arguments.insert(arguments.begin(), "grow");
    process::Outcome const outcome = Run(arguments);
    ASSERT_EQ(outcome.status, 0) << outcome.errors;
    EXPECT_NE(outcome.output.find("size   6 x 1\n"), std::string::npos) << outcome.output;
    cv::Mat3b const picture = Read(In("picture.png"));
    ASSERT_EQ(picture.size(), cv::Size(6, 1));
    EXPECT_EQ(picture(0, 0), picture(0, 1));
    EXPECT_EQ(picture(0, 2), cv::Vec3b(0, 0, 0));
    EXPECT_EQ(picture(0, 3), picture(0, 5));
    EXPECT_NE(picture(0, 0), picture(0, 3));
    EXPECT_NE(picture(0, 0), picture(0, 2));
    EXPECT_EQ(Files(), (std::set<std::string>{"image.tif", "second.tif", "picture.png"}));
}

TEST_F(GrowCommand, NamesWhatItCannotUse)
{
    Save("image.tif", Draw<uchar>({"123"}));
    Save("second.tif", Draw<uchar>({"123"}));
    Save("colour.png", Draw<cv::Vec3b>({"123"}));
    Save("small.png", Draw<uchar>({"12"}));
    std::set<std::string> const before = Files();
    std::vector<std::string> const rules{"--connexity", "4", "--delta", "1"};
    auto const refuses = [&](std::vector<std::string> arguments, std::vector<std::string> const & named) {
        arguments.insert(arguments.end(), rules.begin(), rules.end());
        Refuses(arguments, named);
    };
    refuses({}, {"image"});
    refuses({In("image.tif")}, {"--second"});
    Refuses(Both({"--delta", "1"}), {"--connexity"});
    Refuses(Both({"--connexity", "4"}), {"--delta"});
    Refuses(Both({"--connexity", "4", "--delta", "much"}), {"--delta", "much"});
    refuses({In("image.tif"), "--second", In("none.tif")}, {"none.tif", "no such file"});
    refuses({In("none.tif"), "--second", In("image.tif")}, {"none.tif", "no such file"});
    refuses({In("image.tif"), "--second", In("small.png")}, {"small.png", "2 x 1", "image.tif", "3 x 1"});
    refuses({In("image.tif"), "--second", In("colour.png")}, {"colour.png", "3 channels"});
    refuses({In("colour.png"), "--second", In("image.tif")}, {"colour.png", "3 channels"});
    refuses(Both({"--min-area", "0"}), {"--min-area"});
    refuses(Both({"-o", In("out.png")}), {"out.png", ".tif"});
    refuses(Both({"-o", In("image.tif")}), {"image.tif", "overwritten"});
    refuses(Both({"-o", In("second.tif")}), {"second.tif", "overwritten"});
    refuses(Both({"--picture", In("second.tif")}), {"second.tif", "overwritten"});
    refuses(Both({"--picture", In("out.what")}), {"out.what", "format"});
    EXPECT_EQ(Files(), before);
}

} // namespace

} // namespace morvane::tests
