#include "apps/ProgramFixture.h"
#include "support/AllTypes.h"
#include "support/GraphOracle.h"
#include "support/ImageLiterals.h"
#include "support/RandomImages.h"

#include <morvane/connexity/Labelling.h>

#include <gtest/gtest.h>
#include <opencv2/imgcodecs.hpp>

#include <limits>
#include <set>
#include <sstream>
#include <string>
#include <vector>

namespace morvane::tests
{

namespace
{

class GraphCommand : public Program
{
protected:
    void Save(std::string const & name, cv::Mat const & image) const { ASSERT_TRUE(cv::imwrite(In(name), image)); }

    /// What is printed, without a word of error.
    [[nodiscard]] static std::string Printed(std::vector<std::string> arguments)
    {
        arguments.insert(arguments.begin(), "graph");
        process::Outcome const outcome = Run(arguments);
        EXPECT_EQ(outcome.status, 0) << outcome.errors;
        EXPECT_EQ(outcome.errors, "");
        return outcome.output;
    }

    static void Refuses(std::vector<std::string> arguments, std::vector<std::string> const & named)
    {
        arguments.insert(arguments.begin(), "graph");
        ExpectFailure(arguments, named);
    }
};

/// The lines of a text that hold an edge.
std::string EdgesIn(std::string const & dot)
{
    std::istringstream lines(dot);
    std::string edges;
    for (std::string line; std::getline(lines, line);)
    {
        if (line.find("--") != std::string::npos) edges += line + '\n';
    }
    return edges;
}

/// The same lines for a graph.
std::string EdgesOf(connexity::Graph const & graph)
{
    std::string edges;
    for (auto const & [source, target] : JointsOf(graph))
    {
        edges += "  " + std::to_string(source) + " -- " + std::to_string(target) + ";\n";
    }
    return edges;
}

/// Is this a dot or a line? Zones are half as light, and lines are not all white, as their edges are smooth.
bool IsLight(cv::Vec3b const & pixel)
{
    return pixel[0] > 128 && pixel[1] > 128 && pixel[2] > 128;
}

TEST_F(GraphCommand, PrintsTheZonesAndWhichOfThemTouch)
{
    Save("labels.tif", DrawLabels({"11.", "134", "..4"}));
    EXPECT_EQ(
        Printed({In("labels.tif"), "--connexity", "4"}), "graph zones {\n"
                                                         "  1;\n"
                                                         "  3;\n"
                                                         "  4;\n"
                                                         "  1 -- 3;\n"
                                                         "  3 -- 4;\n"
                                                         "}\n");
    EXPECT_EQ(EdgesIn(Printed({In("labels.tif"), "--connexity", "8"})), "  1 -- 3;\n  1 -- 4;\n  3 -- 4;\n");
}

TEST_F(GraphCommand, WhatIsNoZone_IsNoVertex)
{
    Save("labels.tif", (cv::Mat1i(1, 4) << -1, 2, -7, 0));
    EXPECT_EQ(Printed({In("labels.tif"), "--connexity", "8"}), "graph zones {\n  2;\n}\n");
    Save("none.png", cv::Mat(2, 3, CV_8UC1, cv::Scalar(0)));
    EXPECT_EQ(Printed({In("none.png"), "--connexity", "8"}), "graph zones {\n}\n");
}

TEST_F(GraphCommand, Positions_AreThePixelOfTheZoneThatIsNearestToItsMiddle)
{
    // The middle of the 1 is empty.
    Save("labels.tif", DrawLabels({"111", "1.2", "111"}));
    EXPECT_EQ(
        Printed({In("labels.tif"), "--connexity", "4", "--positions"}), "graph zones {\n"
                                                                        "  1 [pos=\"0,1\"];\n"
                                                                        "  2 [pos=\"2,1\"];\n"
                                                                        "  1 -- 2;\n"
                                                                        "}\n");
    // Rows grow upwards.
    Save("labels.tif", DrawLabels({".5", "..", "..", ".."}));
    EXPECT_EQ(Printed({In("labels.tif"), "--connexity", "4", "--positions"}), "graph zones {\n  5 [pos=\"1,3\"];\n}\n");
}

TEST_F(GraphCommand, Output_IsAFile_AndTheCountsArePrinted)
{
    Save("labels.tif", DrawLabels({"11.", "134", "..4"}));
    std::string const dot = Printed({In("labels.tif"), "--connexity", "8"});
    std::string const summary = Printed({In("labels.tif"), "--connexity", "8", "-o", In("zones.dot")});
    EXPECT_EQ(ReadText("zones.dot"), dot);
    EXPECT_NE(summary.find("\nzones  3\nedges  3\n"), std::string::npos) << summary;
    EXPECT_NE(summary.find("size   3 x 3\n"), std::string::npos) << summary;
    EXPECT_EQ(Files(), (std::set<std::string>{"labels.tif", "zones.dot"}));
}

TEST_F(GraphCommand, WrappedShape_JoinsTheBorders)
{
    Save("labels.tif", DrawLabels({"1.2"}));
    EXPECT_EQ(EdgesIn(Printed({In("labels.tif"), "--connexity", "4"})), "");
    EXPECT_EQ(EdgesIn(Printed({In("labels.tif"), "--connexity", "4-wrapped"})), "  1 -- 2;\n");
}

TEST_F(GraphCommand, DeltaAndMinDelta_AskAnImage)
{
    Save("labels.tif", DrawLabels({"123"}));
    Save("image.tif", (cv::Mat1f(1, 3) << 1.0F, 1.5F, 4.0F));
    auto const edges = [&](std::string const & option, std::string const & delta) {
        return EdgesIn(Printed({In("labels.tif"), "--connexity", "4", "--image", In("image.tif"), option, delta}));
    };
    EXPECT_EQ(edges("--delta", "0.5"), "  1 -- 2;\n");
    EXPECT_EQ(edges("--delta", "0.4"), "");
    EXPECT_EQ(edges("--min-delta", "0.5"), "  2 -- 3;\n");
    EXPECT_EQ(edges("--min-delta", "-1"), "  1 -- 2;\n  2 -- 3;\n");
}

TEST_F(GraphCommand, Flat_LabelsTheImageFirst)
{
    Save("image.png", (cv::Mat1b(2, 3) << 7, 7, 0, 9, 9, 5));
    EXPECT_EQ(
        Printed({In("image.png"), "--connexity", "4", "--flat"}), "graph zones {\n  1;\n  2;\n  3;\n  4;\n"
                                                                  "  1 -- 3;\n  1 -- 2;\n  2 -- 4;\n  3 -- 4;\n}\n");
    EXPECT_EQ(
        Printed({In("image.png"), "--connexity", "4", "--flat", "--no-zero"}),
        "graph zones {\n  1;\n  2;\n  3;\n  1 -- 2;\n  2 -- 3;\n}\n");
    // The values that were labelled are those that are asked.
    EXPECT_EQ(
        EdgesIn(Printed({In("image.png"), "--connexity", "4", "--flat", "--no-zero", "--min-delta", "3"})),
        "  2 -- 3;\n");
}

TEST_F(GraphCommand, ZoneDelta_LabelsTheImageFirst)
{
    Save("image.png", (cv::Mat1b(1, 6) << 7, 8, 0, 3, 4, 9));
    auto const edges = [&](std::vector<std::string> more) {
        more.insert(more.begin(), {In("image.png"), "--connexity", "4", "--zone-delta", "1"});
        return EdgesIn(Printed(more));
    };
    EXPECT_EQ(edges({}), "  1 -- 2;\n  2 -- 3;\n  3 -- 4;\n");
    EXPECT_EQ(edges({"--no-zero"}), "  2 -- 3;\n");
    EXPECT_EQ(edges({"--delta", "4"}), "  2 -- 3;\n");
    // Another image may be asked.
    Save("other.png", (cv::Mat1b(1, 6) << 1, 2, 2, 9, 9, 9));
    EXPECT_EQ(edges({"--image", In("other.png"), "--delta", "4"}), "  1 -- 2;\n  3 -- 4;\n");
}

TEST_F(GraphCommand, GivesTheGraphsOfTheLibrary)
{
    Random random(950);
    cv::Size const size(30, 20);
    std::vector<std::string> const names{"4", "8-wrapped", "20", "24-interleaved-wrapped"};
    std::vector<int> const numbers{0, 4, 6, 12};
    for (std::size_t index = 0; index < names.size(); ++index)
    {
        int const number = numbers[index];
        SCOPED_TRACE(names[index]);
        cv::Mat image = RandomImage(random, size, CV_32FC1, {0.3, 0.0, 5});
        image.at<float>(3, 4) = std::numeric_limits<float>::quiet_NaN();
        cv::Mat labels(size, CV_32SC1);
        ASSERT_TRUE(connexity::LabelDeltaFlatZonesNoZero(image, Shape(number), 1.0, labels));
        Save("image.tif", image);
        Save("labels.tif", labels);
        std::vector<std::string> const here{In("image.tif"), "--zone-delta", "1", "--no-zero"};
        std::vector<std::string> const there{In("labels.tif"), "--image", In("image.tif")};
        auto const edges = [&](std::vector<std::string> arguments, std::vector<std::string> const & more) {
            arguments.insert(arguments.end(), {"--connexity", names[index]});
            arguments.insert(arguments.end(), more.begin(), more.end());
            return EdgesIn(Printed(arguments));
        };
        EXPECT_EQ(edges(here, {}), EdgesOf(Extracted(labels, number)));
        for (auto const & zones : {here, there})
        {
            EXPECT_EQ(edges(zones, {"--delta", "2"}), EdgesOf(Extracted(Border::Within, image, labels, number, 2.0)));
            EXPECT_EQ(
                edges(zones, {"--min-delta", "2"}), EdgesOf(Extracted(Border::Beyond, image, labels, number, 2.0)));
        }
    }
}

TEST_F(GraphCommand, Picture_ShowsDotsAndLinesOverTheZones)
{
    cv::Mat labels(21, 40, CV_32SC1, cv::Scalar(1));
    labels.colRange(20, 40).setTo(2);
    labels.rowRange(15, 21).setTo(0);
    Save("labels.tif", labels);
    static_cast<void>(Printed({In("labels.tif"), "--connexity", "4", "--picture", In("picture.png")}));
    cv::Mat3b const picture = Read(In("picture.png"));
    ASSERT_EQ(picture.size(), labels.size());
    // The places are (9, 7) and (29, 7).
    EXPECT_EQ(picture(7, 9), cv::Vec3b(255, 255, 255));
    EXPECT_EQ(picture(7, 29), cv::Vec3b(255, 255, 255));
    EXPECT_TRUE(IsLight(picture(7, 19))) << "no line between them";
    EXPECT_FALSE(IsLight(picture(9, 19)));
    EXPECT_EQ(picture(10, 9), cv::Vec3b(0, 0, 0)) << "no rim round the dot";
    EXPECT_EQ(picture(18, 3), cv::Vec3b(0, 0, 0));
    EXPECT_NE(picture(2, 3), picture(2, 33)) << "the zones have one colour";
    EXPECT_NE(picture(2, 3), cv::Vec3b(0, 0, 0));
    EXPECT_EQ(picture(2, 3), picture(13, 15));
    // Nothing is drawn beyond the dots.
    EXPECT_EQ(picture(7, 3), picture(2, 3));
    EXPECT_EQ(picture(7, 36), picture(2, 33));
}

TEST_F(GraphCommand, Picture_DrawsAnEdgeRoundTheSeamWhereThatIsShorter)
{
    cv::Mat labels(11, 60, CV_32SC1, cv::Scalar(0));
    labels.colRange(0, 11).setTo(1);
    labels.colRange(49, 60).setTo(2);
    Save("labels.tif", labels);
    static_cast<void>(Printed({In("labels.tif"), "--connexity", "4-wrapped", "--picture", In("picture.png")}));
    cv::Mat3b const picture = Read(In("picture.png"));
    // The places are (5, 5) and (54, 5).
    for (int const x : {0, 1, 5, 54, 58, 59})
    {
        EXPECT_TRUE(IsLight(picture(5, x))) << x;
    }
    for (int const x : {9, 10, 30, 49, 50})
    {
        EXPECT_FALSE(IsLight(picture(5, x))) << x;
    }
}

TEST_F(GraphCommand, NamesSwitchesThatDoNotGoTogether)
{
    Save("labels.tif", DrawLabels({"12"}));
    std::set<std::string> const before = Files();
    Refuses({In("labels.tif")}, {"--connexity"});
    Refuses({In("labels.tif"), "--connexity", "5"}, {"--connexity", "5", "4-wrapped"});
    std::string const file = In("labels.tif");
    auto const refuses = [&](std::vector<std::string> arguments, std::vector<std::string> const & named) {
        arguments.insert(arguments.begin(), {file, "--connexity", "4"});
        Refuses(arguments, named);
    };
    refuses({"--no-zero"}, {"--no-zero", "--flat", "--zone-delta"});
    refuses({"--flat", "--zone-delta", "1"}, {"--flat", "--zone-delta"});
    refuses({"--delta", "1"}, {"--image"});
    refuses({"--min-delta", "1"}, {"--image"});
    refuses({"--delta", "1", "--min-delta", "1", "--image", file}, {"--delta", "--min-delta"});
    refuses({"--image", file}, {"--image", "--delta", "--min-delta"});
    refuses({"--flat", "--image", file}, {"--image", "--delta", "--min-delta"});
    EXPECT_EQ(Files(), before);
}

TEST_F(GraphCommand, NamesAFileThatItCannotUse)
{
    Save("labels.tif", DrawLabels({"12"}));
    Save("float.tif", cv::Mat(1, 2, CV_32FC1, cv::Scalar(1)));
    Save("colour.png", cv::Mat(1, 2, CV_8UC3, cv::Scalar::all(1)));
    Save("small.png", cv::Mat(1, 1, CV_8UC1, cv::Scalar(1)));
    Save("huge.tif", cv::Mat(1, 2, CV_32SC1, cv::Scalar(std::numeric_limits<int>::max())));
    std::set<std::string> const before = Files();
    Refuses({"--connexity", "4"}, {"zones"});
    Refuses({In("none.tif"), "--connexity", "4"}, {"none.tif", "no such file"});
    Refuses({In("float.tif"), "--connexity", "4"}, {"float.tif", "CV_32FC1", "integers"});
    Refuses({In("colour.png"), "--connexity", "4"}, {"colour.png", "3 channels"});
    Refuses({In("huge.tif"), "--connexity", "4"}, {"huge.tif", "larger"});
    auto const refusesImage = [&](std::string const & image, std::vector<std::string> const & named) {
        Refuses({In("labels.tif"), "--connexity", "4", "--delta", "1", "--image", In(image)}, named);
    };
    refusesImage("none.tif", {"none.tif", "no such file"});
    refusesImage("small.png", {"small.png", "1 x 1", "labels.tif", "2 x 1"});
    refusesImage("colour.png", {"colour.png", "3 channels"});
    // Zones may be those of a colour image, but edges have no delta there.
    EXPECT_EQ(EdgesIn(Printed({In("colour.png"), "--connexity", "4", "--flat"})), "");
    Refuses({In("colour.png"), "--connexity", "4", "--flat", "--delta", "1"}, {"colour.png", "3 channels"});
    EXPECT_EQ(Files(), before);
}

TEST_F(GraphCommand, NamesAnOutputThatItCannotWrite)
{
    Save("labels.tif", DrawLabels({"12"}));
    Save("image.tif", DrawLabels({"12"}));
    std::set<std::string> const before = Files();
    auto const refuses = [&](std::vector<std::string> arguments, std::vector<std::string> const & named) {
        arguments.insert(
            arguments.begin(), {In("labels.tif"), "--connexity", "4", "--delta", "1", "--image", In("image.tif")});
        Refuses(arguments, named);
    };
    refuses({"-o", In("none/zones.dot")}, {"none/zones.dot", "folder"});
    refuses({"-o", In("labels.tif")}, {"labels.tif", "overwritten"});
    refuses({"-o", In("image.tif")}, {"image.tif", "overwritten"});
    refuses({"--picture", In("labels.tif")}, {"labels.tif", "overwritten"});
    refuses({"--picture", In("image.tif")}, {"image.tif", "overwritten"});
    refuses({"--picture", In("out.what")}, {"out.what", "format"});
    refuses({"-o", In("both.png"), "--picture", In("both.png")}, {"both.png", "two outputs"});
    EXPECT_EQ(Files(), before);
}

} // namespace

} // namespace morvane::tests
