#include "apps/ProgramFixture.h"
#include "support/AllTypes.h"
#include "support/ImageLiterals.h"
#include "support/RandomImages.h"

#include <morvane/algorithm/Filling.h>

#include <gtest/gtest.h>
#include <opencv2/imgcodecs.hpp>

#include <cmath>
#include <functional>
#include <limits>
#include <set>
#include <string>
#include <vector>

namespace morvane::tests
{

namespace
{

using connexity::eConnexityType;

class FillCommand : public Program
{
protected:
    void Save(std::string const & name, cv::Mat const & image) const { ASSERT_TRUE(cv::imwrite(In(name), image)); }

    /// What is written for image.tif; the count that is printed must be that of the pixels that changed.
    [[nodiscard]] cv::Mat Filled(std::vector<std::string> arguments) const
    {
        arguments.insert(arguments.begin(), {"fill", In("image.tif"), "-o", In("out.tif"), "--method"});
        process::Outcome const outcome = Run(arguments);
        EXPECT_EQ(outcome.status, 0) << outcome.errors;
        EXPECT_EQ(outcome.errors, "");
        cv::Mat const image = Read(In("image.tif"));
        cv::Mat filled = Read(In("out.tif"));
        EXPECT_EQ(filled.type(), image.type());
        int changed = 0;
        for (int y = 0; y < image.rows; ++y)
        {
            for (int x = 0; x < image.cols; ++x)
            {
                // NaN counts as 0, also here.
                double const before = ElementAt(image, y, x);
                changed += ElementAt(filled, y, x) != (std::isnan(before) ? 0.0 : before) ? 1 : 0;
            }
        }
        std::string const counted = "\nfilled  " + std::to_string(changed) + "\n";
        EXPECT_NE(outcome.output.find(counted), std::string::npos) << outcome.output << " is not" << counted;
        return filled;
    }

    void Refuses(std::vector<std::string> arguments, std::vector<std::string> const & named) const
    {
        arguments.insert(arguments.begin(), {"fill", In("image.tif"), "-o", In("out.tif")});
        ExpectFailure(arguments, named);
    }
};

TEST_F(FillCommand, Closing_FillsWhatTheSquareDoesNotFitInto)
{
    Save("image.tif", Draw<ushort>({"555555", "5.5555", "555...", "555...", "555..."}));
    ExpectDrawn(Filled({"closing"}), {"555555", "555555", "555...", "555...", "555..."});
    ExpectDrawn(Filled({"dilation"}), {"555555", "555555", "555555", "5555..", "5555.."});
}

TEST_F(FillCommand, MeanAndMedian_LookAtANeighbourhood)
{
    Save("image.tif", Draw<uchar>({"129", "3.4", "158"}));
    // (2 + 3 + 4 + 5) / 4, and the largest of these four.
    ExpectDrawn(Filled({"mean", "--connexity", "4"}), {"129", "334", "158"});
    ExpectDrawn(Filled({"median", "--connexity", "4"}), {"129", "354", "158"});
    // 1 1 2 3 4 5 8 9: number 5 from 0.
    ExpectDrawn(Filled({"median", "--connexity", "8"}), {"129", "354", "158"});
    ExpectDrawn(Filled({"mean", "--connexity", "8"}), {"129", "344", "158"});
}

TEST_F(FillCommand, Mask_SaysWhatIsFilled)
{
    Save("image.tif", Draw<ushort>({"246", "8.9"}));
    Save("mask.png", Draw<uchar>({"1.1", "111"}));
    // The 0 holds here: (2 + 6 + 0) / 3. Above lies no row, but the pixel itself, which does not hold.
    ExpectDrawn(Filled({"mean", "--connexity", "4", "--mask", In("mask.png")}), {"226", "8.9"});
    // Of any type; NaN counts as 0.
    Save("mask.tif", (cv::Mat1f(2, 3) << 0.25F, std::numeric_limits<float>::quiet_NaN(), -1, 1e-30F, 1, 1));
    ExpectDrawn(Filled({"mean", "--connexity", "4", "--mask", In("mask.tif")}), {"226", "8.9"});
}

TEST_F(FillCommand, ErosionAndOpening_FillWhatHoldsTheMaximum)
{
    Save("image.tif", Draw<uchar>({"1111", "1911", "1111", "1119"}));
    ExpectDrawn(Filled({"erosion"}), {"1111", "1111", "1111", "1111"});
    ExpectDrawn(Filled({"opening"}), {"1111", "1111", "1111", "1111"});
}

TEST_F(FillCommand, Holes_AreFilledWhateverTheirSize)
{
    cv::Rect const hole(5, 5, 10, 10);
    for (int const depth : {CV_8U, CV_16U, CV_16S, CV_32F, CV_64F})
    {
        SCOPED_TRACE(depth);
        cv::Mat image(20, 20, depth, cv::Scalar(4));
        image.colRange(10, 20).setTo(7);
        image(hole).setTo(0);
        Save("image.tif", image);
        EXPECT_EQ(cv::countNonZero(Filled({"holes-max", "--size", "5"})(hole) == 7), 100);
        EXPECT_EQ(cv::countNonZero(Filled({"holes-min", "--size", "5"})(hole) == 4), 100);
    }
    EXPECT_EQ(cv::countNonZero(Filled({"closing", "--size", "5"})), 300);
    EXPECT_EQ(cv::countNonZero(Filled({"closing", "--size", "11"})), 400);
}

TEST_F(FillCommand, NaN_CountsAsZero)
{
    cv::Mat1f image(3, 3, 5.0F);
    image(1, 1) = std::numeric_limits<float>::quiet_NaN();
    Save("image.tif", image);
    for (char const * const method : {"closing", "dilation", "holes-max", "holes-min"})
    {
        EXPECT_TRUE(EqualImages(Filled({method}), cv::Mat1f(3, 3, 5.0F))) << method;
    }
    for (char const * const method : {"mean", "median", "median-no-zero"})
    {
        EXPECT_TRUE(EqualImages(Filled({method, "--connexity", "8"}), cv::Mat1f(3, 3, 5.0F))) << method;
    }
}

/// A fill of the library under the switches of the command.
struct FillCase
{
    std::vector<std::string> arguments;
    bool isMorphology;
    std::function<bool(cv::Mat const & image, cv::Mat & out)> call;
};

/// A fill that the library has for floats alone.
template <class Fill>
auto OverFloats(Fill const & fill)
{
    return [=](cv::Mat const & image, cv::Mat & out, int size) {
        cv::Mat numbers;
        image.convertTo(numbers, CV_32F);
        cv::Mat filled;
        bool const done = fill(numbers, filled, size);
        filled.convertTo(out, image.depth());
        return done;
    };
}

std::vector<FillCase> AllFills()
{
    using namespace algorithm;
    auto const ofSquare = [](char const * name, auto const & fill, int size) {
        std::vector<std::string> arguments{name};
        if (size != 3) arguments.insert(arguments.end(), {"--size", std::to_string(size)});
        return FillCase{arguments, true, [=](cv::Mat const & image, cv::Mat & out) {
                            return fill(image, out, size);
                        }};
    };
    auto const ofNeighbours = [](char const * name, auto const & fill) {
        return FillCase{
            {name, "--connexity", "20-interleaved-wrapped"}, false, [=](cv::Mat const & image, cv::Mat & out) {
                return fill(image, out, connexity::eConnexity20InterleavedWrapped);
            }};
    };
    std::vector<FillCase> fills{
        ofNeighbours("median", FillImageWithMedian), ofNeighbours("median-no-zero", FillImageWithMedianNoZero),
        ofNeighbours("mean", [](cv::Mat const & image, cv::Mat & out, eConnexityType connexity) {
            return FillImageWithMean(image, image, out, connexity);
        })};
    for (int const size : {3, 6})
    {
        fills.push_back(ofSquare("closing", FillImageWithClosing, size));
        fills.push_back(ofSquare("dilation", FillImageWithDilation, size));
        fills.push_back(ofSquare("erosion", FillImageWithErosion, size));
        fills.push_back(ofSquare("opening", FillImageWithOpening, size));
    }
    for (int const size : {3, 5})
    {
        fills.push_back(ofSquare("holes-max", OverFloats(FillHolesInterpolationWithMax), size));
        fills.push_back(ofSquare("holes-min", OverFloats(FillHolesInterpolationWithMin), size));
    }
    return fills;
}

TEST_F(FillCommand, GivesTheFillsOfTheLibrary)
{
    Random random(980);
    for (int const depth : {CV_16S, CV_32S, CV_32F})
    {
        cv::Mat image = RandomImage(random, {30, 20}, depth, {0.4, 0.0, 200});
        // A hole, and some pixels that stand for nothing where the largest value does.
        image(cv::Rect(4, 4, 12, 9)).setTo(0);
        image(cv::Rect(20, 3, 3, 2)).setTo(250);
        Save("image.tif", image);
        for (FillCase const & fill : AllFills())
        {
            if (fill.isMorphology && depth == CV_32S) continue;
            SCOPED_TRACE(fill.arguments.front() + " of " + cv::typeToString(depth));
            cv::Mat expected(image.size(), image.type());
            ASSERT_TRUE(fill.call(image, expected));
            ASSERT_GT(cv::countNonZero(expected != image), 0) << "shows nothing";
            EXPECT_TRUE(EqualImages(Filled(fill.arguments), expected));
        }
    }
}

TEST_F(FillCommand, Picture_SpreadsTheRangeOfTheMeasuredPixels)
{
    Save("image.tif", Draw<ushort>({"5555", "5.55", "5559"}));
    process::Outcome const outcome = Run({"fill", In("image.tif"), "--method", "closing", "--picture", In("out.png")});
    ASSERT_EQ(outcome.status, 0) << outcome.errors;
    EXPECT_NE(outcome.output.find("size   4 x 3\n"), std::string::npos) << outcome.output;
    cv::Mat1b const picture = Read(In("out.png"));
    ASSERT_EQ(picture.size(), cv::Size(4, 3));
    EXPECT_EQ(picture(1, 1), picture(0, 0));
    EXPECT_EQ(picture(2, 3), 255);
    EXPECT_EQ(Files(), (std::set<std::string>{"image.tif", "out.png"}));
}

TEST_F(FillCommand, NamesSwitchesThatItCannotUse)
{
    Save("image.tif", Draw<uchar>({"123"}));
    std::set<std::string> const before = Files();
    Refuses({}, {"--method"});
    Refuses({"--method", "best"}, {"--method", "best", "closing, dilation", "holes-min"});
    for (char const * const method : {"mean", "median", "median-no-zero"})
    {
        Refuses({"--method", method}, {"--connexity", "median-no-zero"});
        Refuses({"--method", method, "--connexity", "4", "--size", "3"}, {"--size"});
    }
    for (char const * const method : {"closing", "dilation", "erosion", "opening", "holes-max", "holes-min"})
    {
        Refuses({"--method", method, "--connexity", "4"}, {"--connexity", "mean, median and median-no-zero"});
        Refuses({"--method", method, "--size", "2"}, {"--size", "2"});
        Refuses({"--method", method, "--mask", In("image.tif")}, {"--mask", "mean"});
    }
    Refuses({"--method", "median", "--connexity", "4", "--mask", In("image.tif")}, {"--mask", "mean"});
    for (char const * const size : {"4", "7"})
    {
        Refuses({"--method", "holes-max", "--size", size}, {"--size", "3 or 5"});
        Refuses({"--method", "holes-min", "--size", size}, {"--size", "3 or 5"});
    }
    EXPECT_EQ(Files(), before);
}

TEST_F(FillCommand, NamesAFileThatItCannotUse)
{
    Save("image.tif", Draw<uchar>({"123"}));
    Save("mask.tif", Draw<uchar>({"1.1"}));
    Save("whole.tif", Draw<int>({"123"}));
    Save("colour.png", Draw<cv::Vec3b>({"123"}));
    Save("small.png", Draw<uchar>({"12"}));
    std::set<std::string> const before = Files();
    auto const refuses = [&](std::string const & image, std::vector<std::string> const & named) {
        ExpectFailure({"fill", In(image), "--method", "closing"}, named);
    };
    refuses("none.tif", {"none.tif", "no such file"});
    refuses("colour.png", {"colour.png", "3 channels"});
    refuses("whole.tif", {"whole.tif", "32-bit signed", "accepted"});
    auto const refusesMask = [&](std::string const & mask, std::vector<std::string> const & named) {
        Refuses({"--method", "mean", "--connexity", "4", "--mask", In(mask)}, named);
    };
    refusesMask("none.tif", {"none.tif", "no such file"});
    refusesMask("colour.png", {"colour.png", "3 channels"});
    refusesMask("small.png", {"small.png", "2 x 1", "image.tif", "3 x 1"});
    auto const refusesOutput = [&](std::vector<std::string> arguments, std::vector<std::string> const & named) {
        arguments.insert(
            arguments.begin(),
            {"fill", In("image.tif"), "--method", "mean", "--connexity", "4", "--mask", In("mask.tif")});
        ExpectFailure(arguments, named);
    };
    refusesOutput({"-o", In("out.png")}, {"out.png", ".tif"});
    refusesOutput({"-o", In("image.tif")}, {"image.tif", "overwritten"});
    refusesOutput({"-o", In("mask.tif")}, {"mask.tif", "overwritten"});
    refusesOutput({"--picture", In("image.tif")}, {"image.tif", "overwritten"});
    refusesOutput({"--picture", In("mask.tif")}, {"mask.tif", "overwritten"});
    refusesOutput({"--picture", In("out.what")}, {"out.what", "format"});
    EXPECT_EQ(Files(), before);
}

} // namespace

} // namespace morvane::tests
