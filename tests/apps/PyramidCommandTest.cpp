#include "apps/ProgramFixture.h"

#include "support/ImageLiterals.h"
#include "support/RandomImages.h"

#include <morvane/filters/Sampling.h>

#include <gtest/gtest.h>

#include <limits>
#include <set>
#include <string>
#include <vector>

namespace morvane::tests
{

namespace
{

class PyramidCommand : public Program
{
protected:
    void Save(std::string const & name, cv::Mat const & image) const { ASSERT_TRUE(cv::imwrite(In(name), image)); }

    /// Runs the command. @return what it printed
    [[nodiscard]] std::string Halve(
        std::string const & image, std::string const & by, std::string const & levels,
        std::vector<std::string> const & more = {}) const
    {
        std::vector<std::string> arguments{"pyramid",  In(image), "--by", by,
                                           "--levels", levels,    "-o",   In("coarse.tif")};
        arguments.insert(arguments.end(), more.begin(), more.end());
        process::Outcome const outcome = Run(arguments);
        EXPECT_EQ(outcome.status, 0) << outcome.errors;
        EXPECT_EQ(outcome.errors, "");
        return outcome.output;
    }

    void Refuses(std::vector<std::string> arguments, std::vector<std::string> const & named) const
    {
        arguments.insert(arguments.begin(), "pyramid");
        arguments.insert(arguments.end(), {"-o", In("coarse.tif")});
        ExpectFailure(arguments, named);
    }
};

/// Two blocks a row; the last column and the last row are in none.
cv::Mat1b Blocks()
{
    return (
        cv::Mat1b(5, 5) << 1, 2, 8, 8, 9, //
        3, 4, 8, 8, 9,                    //
        0, 0, 6, 1, 0,                    //
        0, 4, 1, 0, 9,                    //
        9, 9, 0, 9, 5);
}

TEST_F(PyramidCommand, By_ChoosesTheValueOfABlock)
{
    Save("blocks.png", Blocks());
    // Shares are of all 25 pixels; the 9 pixels of no block have details of 0.
    std::string printed = Halve("blocks.png", "mean", "1");
    ExpectDrawn(Read(In("coarse.tif")), {"38", "12"});
    // Halves round upwards. 1, 2, 4 differ from 3; none from 8; all of 0, 0, 0, 4 from 1; all of 6, 1, 1, 0 from 2.
    EXPECT_NE(printed.find("\nlevel 1  2 x 2, 44.0 % of its details are not 0\n"), std::string::npos) << printed;
    EXPECT_NE(printed.find("\nrestored  exactly, by details of CV_16SC1\n"), std::string::npos) << printed;

    printed = Halve("blocks.png", "or", "1");
    ExpectDrawn(Read(In("coarse.tif")), {"78", "47"});
    // 4 of the first block, none of the second, 3 and 4 of the others.
    EXPECT_NE(printed.find("level 1  2 x 2, 44.0 % of its details are not 0\n"), std::string::npos) << printed;
    EXPECT_EQ(printed.find("restored"), std::string::npos) << printed;

    printed = Halve("blocks.png", "max", "1");
    ExpectDrawn(Read(In("coarse.tif")), {"48", "46"});
    // 3 of each but the second.
    EXPECT_NE(printed.find("level 1  2 x 2, 36.0 % of its details are not 0\n"), std::string::npos) << printed;

    printed = Halve("blocks.png", "min", "1");
    // Here the last column and the last row belong to the last blocks.
    ExpectDrawn(Read(In("coarse.tif")), {"18", "00"});
    // 3 of the first, 2 of the second with its column, 3 of the third with its row, 6 of the last with both.
    EXPECT_NE(printed.find("level 1  2 x 2, 56.0 % of its details are not 0\n"), std::string::npos) << printed;
}

TEST_F(PyramidCommand, Levels_AreHalvedAgain)
{
    Save("blocks.png", Blocks());
    std::string const printed = Halve("blocks.png", "max", "2", {"--picture", In("all.png")});
    ExpectDrawn(Read(In("coarse.tif")), {"8"});
    EXPECT_NE(
        printed.find("\nlevel 1  2 x 2, 36.0 % of its details are not 0\n"
                     "level 2  1 x 1, 75.0 % of its details are not 0\n"),
        std::string::npos)
        << printed;
    // The image, to the right of it the levels below each other; 1 is 0 of 255, 9 is all of it.
    cv::Mat const picture = Read(In("all.png"));
    ASSERT_EQ(picture.type(), CV_8UC1);
    auto const grey = [](int value) {
        return value == 0 ? 0 : (value - 1) * 255 / 8;
    };
    cv::Mat1b values(5, 7, uchar{0});
    Blocks().copyTo(values(cv::Rect(0, 0, 5, 5)));
    values(0, 5) = 4;
    values(0, 6) = 8;
    values(1, 5) = 4;
    values(1, 6) = 6;
    values(2, 5) = 8;
    for (uchar & value : values)
    {
        value = static_cast<uchar>(grey(value));
    }
    ExpectEqualImages(picture, values);
}

TEST_F(PyramidCommand, Mean_IsRestoredFromEveryWholeType)
{
    Random random(11);
    for (int const type : {CV_8UC1, CV_16UC1, CV_16SC1, CV_32SC1})
    {
        SCOPED_TRACE(type);
        cv::Mat const image = RandomImage(random, {27, 21}, type, {0.1, 0.6, 200});
        Save("image.tif", image);
        std::string const printed = Halve("image.tif", "mean", "3");
        std::string const details = type == CV_8UC1 ? "CV_16SC1" : "CV_32SC1";
        EXPECT_NE(printed.find("\nrestored  exactly, by details of " + details + "\n"), std::string::npos) << printed;
        EXPECT_NE(printed.find("\nlevel 3  3 x 2, "), std::string::npos) << printed;

        cv::Mat expected = image;
        for (int level = 0; level < 3; ++level)
        {
            cv::Mat low;
            cv::Mat high(expected.size(), CV_32SC1);
            ASSERT_TRUE(filters::DownSampling(expected, low, high));
            expected = low;
        }
        ExpectEqualImages(Read(In("coarse.tif")), expected);
    }
}

TEST_F(PyramidCommand, Floats_AreHalvedWithoutAWordOfTheWayBack)
{
    float const nan = std::numeric_limits<float>::quiet_NaN();
    cv::Mat1f const image = (cv::Mat1f(2, 4) << 0.5F, 1.0F, nan, -2.0F, 1.5F, 3.0F, 1.0F, 4.0F);
    Save("image.tif", image);
    std::string const printed = Halve("image.tif", "mean", "1");
    ExpectEqualImages(Read(In("coarse.tif")), (cv::Mat1f(1, 2) << 1.5F, 0.75F));
    // One of the details is 0.
    EXPECT_NE(printed.find("\nlevel 1  2 x 1, 87.5 % of its details are not 0\n"), std::string::npos) << printed;
    EXPECT_EQ(printed.find("restored"), std::string::npos) << printed;
    EXPECT_EQ(Halve("image.tif", "min", "1").find("restored"), std::string::npos);
    ExpectEqualImages(Read(In("coarse.tif")), (cv::Mat1f(1, 2) << 0.5F, -2.0F));
}

TEST_F(PyramidCommand, NamesWhatItCannotUse)
{
    Save("floats.tif", cv::Mat1f(7, 9, 1.0F));
    Save("bytes.tif", cv::Mat1b(7, 9, uchar{1}));
    std::set<std::string> const before = Files();
    std::string const bytes = In("bytes.tif");
    Refuses({In("floats.tif"), "--by", "or", "--levels", "1"}, {"floats.tif", "CV_32FC1", "32-bit signed"});
    Refuses({bytes, "--by", "mean", "--levels", "3"}, {"bytes.tif", "9 x 7", "too small", "3 times"});
    Refuses({bytes, "--by", "mean", "--levels", "0"}, {"--levels", "0"});
    Refuses({bytes, "--by", "mode", "--levels", "1"}, {"--by", "mode", "mean, or, max, min"});
    Refuses({bytes, "--by", "mean", "--levels", "1", "--picture", bytes}, {"bytes.tif", "overwritten"});
    Refuses({bytes, "--by", "mean", "--levels", "1", "--picture", "/proc/all.png"}, {"/proc/all.png", "written"});
    EXPECT_EQ(Files(), before);
    EXPECT_NE(Halve("bytes.tif", "mean", "2").find("level 2  2 x 1, "), std::string::npos);
}

} // namespace

} // namespace morvane::tests
