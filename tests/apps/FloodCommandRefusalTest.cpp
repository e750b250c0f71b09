// What `morvane flood` does not take.

#include "apps/ProgramFixture.h"

#include <gtest/gtest.h>
#include <opencv2/imgcodecs.hpp>

#include <set>
#include <string>
#include <vector>

namespace
{

using morvane::tests::Program;

class FloodCommandRefusal : public Program
{
protected:
    void SetUp() override
    {
        Program::SetUp();
        Draw("image.tif", cv::Mat(3, 9, CV_8UC1, cv::Scalar(7)));
        cv::Mat1b markers(3, 9, uchar{0});
        markers(1, 4) = 1;
        Draw("markers.tif", markers);
        Draw("colour.png", cv::Mat(3, 9, CV_8UC3, cv::Scalar::all(1)));
        Draw("bytes.tif", cv::Mat(3, 9, CV_8SC1, cv::Scalar(1)));
        Draw("small.png", cv::Mat(3, 8, CV_8UC1, cv::Scalar(1)));
        m_markers = {"--markers", In("markers.tif")};
    }

    void Draw(std::string const & name, cv::Mat const & image) const { ASSERT_TRUE(cv::imwrite(In(name), image)); }

    void Refuses(
        std::vector<std::string> const & arguments, std::vector<std::string> const & named,
        std::string const & image = "image.tif") const
    {
        std::vector<std::string> all{"flood", In(image), "-o", In("out.tif")};
        all.insert(all.end(), arguments.begin(), arguments.end());
        std::set<std::string> const before = Files();
        ExpectFailure(all, named);
        EXPECT_EQ(Files(), before);
    }

    /// The switch for the markers, and more.
    [[nodiscard]] std::vector<std::string> Marked(std::vector<std::string> more) const
    {
        more.insert(more.begin(), m_markers.begin(), m_markers.end());
        return more;
    }

private:
    std::vector<std::string> m_markers;
};

TEST_F(FloodCommandRefusal, MarkersComeFromOnePlace)
{
    ExpectFailure({"flood", "--dynamic", "1", "--connexity", "4"}, {"image"});
    Refuses({}, {"exactly one", "--markers", "--dynamic"});
    Refuses(Marked({"--dynamic", "1", "--connexity", "4"}), {"exactly one", "--markers", "--dynamic"});
}

TEST_F(FloodCommandRefusal, TheNeighbourhoodIsGivenWhereItIsUsed)
{
    Refuses({"--dynamic", "1"}, {"--connexity", "needed", "--dynamic"});
    Refuses(Marked({"--delta", "1"}), {"--connexity", "needed", "--delta"});
    Refuses(Marked({"--no-zero"}), {"--connexity", "needed", "--no-zero"});
    Refuses(Marked({"--connexity", "4"}), {"--connexity", "needs", "--dynamic", "--delta", "--no-zero"});
    Refuses(Marked({"--no-zero", "--connexity", "6"}), {"--connexity", "6", "4-wrapped"});
}

TEST_F(FloodCommandRefusal, NumbersThatAreNoneAreNamed)
{
    Refuses(Marked({"--connexity", "4", "--delta", "wide"}), {"--delta", "wide"});
    Refuses(
        Marked({"--connexity", "4", "--delta", "1", "--second", In("image.tif"), "--second-delta", "wide"}),
        {"--second-delta", "wide"});
    Refuses({"--connexity", "4", "--dynamic", "0.001"}, {"--dynamic", "0.001"});
    Refuses({"--connexity", "4", "--dynamic", "nan"}, {"--dynamic", "nan"});
}

TEST_F(FloodCommandRefusal, SecondImage_GoesWithADelta)
{
    Refuses(Marked({"--connexity", "4", "--no-zero", "--second", In("image.tif")}), {"--second", "--delta"});
    Refuses(Marked({"--connexity", "4", "--delta", "1", "--second-delta", "1"}), {"--second-delta", "--second"});
}

TEST_F(FloodCommandRefusal, NamesAnImageThatItCannotUse)
{
    Refuses(Marked({}), {"nowhere.tif", "no such file"}, "nowhere.tif");
    Refuses(Marked({}), {"colour.png", "3 channels"}, "colour.png");
    Refuses(Marked({}), {"bytes.tif", "8-bit signed"}, "bytes.tif");
}

TEST_F(FloodCommandRefusal, NamesASecondImageThatItCannotUse)
{
    auto const with = [this](std::string const & name) {
        return Marked({"--connexity", "4", "--delta", "1", "--second", In(name)});
    };
    Refuses(with("nowhere.tif"), {"nowhere.tif", "no such file"});
    Refuses(with("colour.png"), {"colour.png", "3 channels"});
    Refuses(with("small.png"), {"small.png", "8 x 3", "image.tif", "9 x 3"});
}

TEST_F(FloodCommandRefusal, NamesMarkersThatItCannotUse)
{
    Draw("floats.tif", cv::Mat(3, 9, CV_32FC1, cv::Scalar(1)));
    Draw("none.tif", cv::Mat(3, 9, CV_16SC1, cv::Scalar(-1)));
    auto const refuses = [this](std::string const & name, std::vector<std::string> const & named) {
        Refuses({"--markers", In(name)}, named);
    };
    refuses("nowhere.tif", {"nowhere.tif", "no such file"});
    refuses("colour.png", {"colour.png", "3 channels"});
    refuses("small.png", {"small.png", "8 x 3", "image.tif", "9 x 3"});
    refuses("floats.tif", {"floats.tif", "32-bit float", "integers"});
    refuses("none.tif", {"none.tif", "no marker"});
}

TEST_F(FloodCommandRefusal, MarkersOnTheBorderAloneCannotSpread)
{
    cv::Mat1b markers(3, 9, uchar{0});
    markers.row(0).setTo(3);
    Draw("border.tif", markers);
    Refuses({"--markers", In("border.tif")}, {"image.tif", "border"});
}

TEST_F(FloodCommandRefusal, NamesAnOutputThatItCannotWrite)
{
    Draw("second.tif", cv::Mat(3, 9, CV_8UC1, cv::Scalar(7)));
    std::set<std::string> const before = Files();
    auto const flood = [this](std::vector<std::string> const & more) {
        std::vector<std::string> arguments = Marked({"--connexity", "4", "--delta", "1", "--second", In("second.tif")});
        arguments.insert(arguments.begin(), {"flood", In("image.tif")});
        arguments.insert(arguments.end(), more.begin(), more.end());
        return arguments;
    };
    ExpectFailure(flood({"-o", In("out.png")}), {"out.png", ".tif"});
    for (std::string const input : {"image.tif", "markers.tif", "second.tif"})
    {
        ExpectFailure(flood({"-o", In(input)}), {input, "overwritten"});
        ExpectFailure(flood({"--picture", In(input)}), {input, "overwritten"});
    }
    ExpectFailure(flood({"--picture", In("out.what")}), {"out.what", "format"});
    EXPECT_EQ(Files(), before);
}

} // namespace
