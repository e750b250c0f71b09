#include "apps/ShapeFixture.h"

#include <morvane/connexity/GeodesicMeasures.h>
#include <morvane/features/ShapeDescriptors.h>

#include <gtest/gtest.h>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>

#include <cmath>
#include <limits>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <vector>

namespace
{

using namespace morvane::connexity;
using namespace morvane::features;
using morvane::tests::Read;
using morvane::tests::ShapeProgram;
using morvane::tests::Texture;

using Rows = std::vector<std::vector<double>>;
using Operator = bool(cv::Mat const &, cv::Mat &);

std::string const kHead = "zone,value,area,x,y,width,height,diameter,elongation,tortuosity,standard_elongation,x1,y1,"
                          "x2,y2";
cv::Vec3b const kBlack(0, 0, 0);
cv::Vec3b const kWhite(255, 255, 255);

/// The numbers of a table whose head is as it must be.
Rows RowsOf(std::string const & csv, std::string const & head)
{
    std::istringstream table(csv);
    std::string line;
    EXPECT_TRUE(std::getline(table, line));
    EXPECT_EQ(line, head);
    Rows rows;
    while (std::getline(table, line))
    {
        std::istringstream numbers(line);
        rows.emplace_back();
        for (std::string number; std::getline(numbers, number, ',');)
        {
            rows.back().push_back(std::stod(number));
        }
    }
    return rows;
}

void ExpectNear(Rows const & actual, Rows const & expected)
{
    ASSERT_EQ(actual.size(), expected.size());
    for (std::size_t row = 0; row < expected.size(); ++row)
    {
        ASSERT_EQ(actual[row].size(), expected[row].size());
        for (std::size_t column = 0; column < expected[row].size(); ++column)
        {
            EXPECT_NEAR(actual[row][column], expected[row][column], 1e-12) << "row " << row << " column " << column;
        }
    }
}

void ExpectSame(cv::Mat const & actual, cv::Mat const & expected)
{
    ASSERT_EQ(actual.type(), expected.type());
    ASSERT_EQ(actual.size(), expected.size());
    EXPECT_EQ(cv::norm(actual, expected, cv::NORM_INF), 0.0);
}

cv::Mat Found(Operator * compute, cv::Mat const & image)
{
    cv::Mat found;
    EXPECT_TRUE(compute(image, found));
    return found;
}

/// A bar in the corner and a hook, both of the same value, a disc, a block and a speck.
cv::Mat1b Things()
{
    cv::Mat1b image(40, 60, uchar{0});
    cv::circle(image, {12, 16}, 8, cv::Scalar(50), cv::FILLED);
    image(cv::Rect(0, 0, 30, 5)) = 90;
    image(cv::Rect(4, 26, 30, 4)) = 90;
    image(cv::Rect(30, 14, 4, 16)) = 90;
    image(cv::Rect(45, 20, 9, 12)) = 200;
    image(3, 58) = 5;
    return image;
}

class ShapeCommand : public ShapeProgram
{
protected:
    void SetUp() override
    {
        ShapeProgram::SetUp();
        ASSERT_TRUE(cv::imwrite(In("things.png"), Things()));
    }
};

TEST_F(ShapeCommand, Table_HasARowForEachFlatZone)
{
    // Pixels of one value that do not touch are two zones; those that touch by a corner are one.
    cv::Mat1i labels(7, 12, 0);
    labels(cv::Rect(1, 0, 5, 1)) = 7;
    labels(3, 6) = 7;
    labels(5, 9) = 70000;
    labels(6, 10) = 70000;
    ASSERT_TRUE(cv::imwrite(In("labels.tif"), labels));
    double const pi = 3.141598;
    Rows rows = RowsOf(Output({In("labels.tif")}), kHead);
    ASSERT_EQ(rows.size(), 3U);
    // Of the ends of a diagonal, either may come first.
    if (rows[2].at(11) == 9.0)
    {
        std::swap(rows[2].at(11), rows[2].at(13));
        std::swap(rows[2].at(12), rows[2].at(14));
    }
    ExpectNear(
        rows, {{1, 7, 5, 1, 0, 5, 1, 5, 25.0 * pi / 20.0, 5.0 / 4.0, 0, 5, 0, 1, 0},
               {2, 7, 1, 6, 3, 1, 1, 1, pi / 4.0, 1, 0, 6, 3, 6, 3},
               {3, 70000, 2, 9, 5, 2, 2, 2, 4.0 * pi / 8.0, std::sqrt(2.0), 0, 10, 6, 9, 5}});
}

TEST_F(ShapeCommand, Table_HoldsWhatTheLibraryFinds)
{
    cv::Mat1b const image = Things();
    Rows const rows = RowsOf(Output({In("things.png")}), kHead);
    ASSERT_EQ(rows.size(), 5U);
    std::vector<Operator *> const measures{
        LabelFlatZonesNoZeroWithGeodesicDiameter, LabelFlatZonesNoZeroWithGeodesicElongation,
        LabelFlatZonesNoZeroWithGeodesicTortuosity, LabelFlatZonesNoZeroWithStandardElongation};
    cv::Mat1b const first = Found(GeodesicExtremityOnFlatZonesNoZero, image);
    cv::Mat1b const both = Found(GeodesicExtremitiesOnFlatZonesNoZero, image);
    int ends = 0;
    for (std::vector<double> const & row : rows)
    {
        ASSERT_EQ(row.size(), 15U);
        cv::Point const one(cv::Point2d(row[11], row[12]));
        cv::Point const other(cv::Point2d(row[13], row[14]));
        for (std::size_t measure = 0; measure < measures.size(); ++measure)
        {
            EXPECT_EQ(row[7 + measure], cv::Mat1d(Found(measures[measure], image))(one)) << measure;
        }
        EXPECT_EQ(image(one), row[1]);
        EXPECT_EQ(image(other), row[1]);
        EXPECT_EQ(first(one), 255);
        EXPECT_EQ(both(other), 255);
        EXPECT_EQ(first(other) == 255, one == other);
        ends += one == other ? 1 : 2;
    }
    EXPECT_EQ(ends, cv::countNonZero(both));
    // The outline of the bar is 29 by 4, and the one that starts where the image does.
    EXPECT_NEAR(rows[0].at(10), 29.0 * 29.0 / 16.0, 1e-9);
}

TEST_F(ShapeCommand, Table_TakesFloatsAndLeavesOutNaN)
{
    cv::Mat1f image(5, 6, 0.0F);
    image(cv::Rect(0, 1, 6, 1)) = -0.5F;
    image(1, 2) = std::numeric_limits<float>::quiet_NaN();
    ASSERT_TRUE(cv::imwrite(In("floats.tif"), image));
    Rows const rows = RowsOf(Output({In("floats.tif")}), kHead);
    ASSERT_EQ(rows.size(), 2U);
    EXPECT_EQ(rows[0].at(1), -0.5);
    EXPECT_EQ(rows[0].at(2), 2.0);
    EXPECT_EQ(rows[1].at(2), 3.0);
    EXPECT_EQ(rows[1].at(3), 3.0);
}

TEST_F(ShapeCommand, Table_GoesIntoAFile)
{
    EXPECT_EQ(Output({In("things.png"), "-o", In("table.csv")}), "");
    EXPECT_EQ(ReadText("table.csv"), Output({In("things.png")}));
}

TEST_F(ShapeCommand, NothingMeasured_GivesTheHeadAlone)
{
    ASSERT_TRUE(cv::imwrite(In("none.png"), cv::Mat1b(8, 9, uchar{0})));
    EXPECT_EQ(
        Output(
            {In("none.png"), "--picture", In("picture.png"), "--extremity-picture", In("ends.png"), "--boxes",
             In("boxes.png"), "--closed", In("closed.png")}),
        kHead + "\n");
    cv::Mat const black(8, 9, CV_8UC3, cv::Scalar::all(0));
    ExpectSame(Read(In("picture.png")), black);
    ExpectSame(Read(In("ends.png")), black);
    ExpectSame(Read(In("boxes.png")), black);
    ExpectSame(Read(In("closed.png")), cv::Mat(8, 9, CV_8UC1, cv::Scalar(0)));
}

TEST_F(ShapeCommand, Measures_AreWrittenAndShown)
{
    std::map<std::string, Operator *> const measures{
        {"", LabelFlatZonesNoZeroWithGeodesicDiameter},
        {"diameter", LabelFlatZonesNoZeroWithGeodesicDiameter},
        {"elongation", LabelFlatZonesNoZeroWithGeodesicElongation},
        {"tortuosity", LabelFlatZonesNoZeroWithGeodesicTortuosity},
        {"standard-elongation", LabelFlatZonesNoZeroWithStandardElongation}};
    for (auto const & [name, compute] : measures)
    {
        std::vector<std::string> arguments{
            In("things.png"), "--values", In("values.tif"), "--picture", In("picture.png")};
        if (!name.empty()) arguments.insert(arguments.end(), {"--measure", name});
        (void)Output(arguments);
        cv::Mat1d const expected = Found(compute, Things());
        ExpectSame(Read(In("values.tif")), expected);

        cv::Mat3b const picture = Read(In("picture.png"));
        ASSERT_EQ(picture.size(), expected.size());
        double greatest = 0.0;
        cv::minMaxIdx(expected, nullptr, &greatest);
        for (int y = 0; y < picture.rows; ++y)
        {
            for (int x = 0; x < picture.cols; ++x)
            {
                EXPECT_EQ(picture(y, x) == kBlack, expected(y, x) == 0.0) << name << cv::Point(x, y);
                EXPECT_EQ(picture(y, x) == kWhite, expected(y, x) == greatest) << name << cv::Point(x, y);
            }
        }
    }
}

TEST_F(ShapeCommand, Extremities_AreWrittenAndShown)
{
    (void)Output({In("things.png"), "--extremities", In("ends.png"), "--extremity-picture", In("picture.png")});
    cv::Mat1b const expected = Found(GeodesicExtremitiesOnFlatZonesNoZero, Things());
    ExpectSame(Read(In("ends.png")), expected);
    cv::Mat3b const picture = Read(In("picture.png"));
    ASSERT_EQ(picture.size(), expected.size());
    cv::Mat dots;
    cv::dilate(expected, dots, cv::Mat());
    cv::Mat1b const isDot = dots;
    cv::Mat1b const things = Things();
    for (int y = 0; y < picture.rows; ++y)
    {
        for (int x = 0; x < picture.cols; ++x)
        {
            EXPECT_EQ(picture(y, x) == kWhite, isDot(y, x) != 0);
            EXPECT_EQ(picture(y, x) == kBlack, isDot(y, x) == 0 && things(y, x) == 0);
        }
    }
    // Zones have colours of their own, also those of one value.
    EXPECT_NE(picture(2, 20), picture(28, 15));
}

TEST_F(ShapeCommand, Curves_AreThoseOfTheLibrary)
{
    cv::Mat numbers;
    Texture().convertTo(numbers, CV_32S);
    // Labels are integers of 32 bits, which OpenCV's morphology does not take.
    ASSERT_TRUE(cv::imwrite(In("numbers.tif"), numbers));
    for (int const shape : {cv::MORPH_RECT, cv::MORPH_CROSS})
    {
        for (char const * const file : {"texture.png", "numbers.tif"})
        {
            std::vector<std::string> arguments{In(file),          "--opening-curve", In("opening.csv"),
                                               "--closing-curve", In("closing.csv"), "--fractal-curve",
                                               In("fractal.csv")};
            if (shape == cv::MORPH_CROSS) arguments.insert(arguments.end(), {"--shape", "cross"});
            EXPECT_EQ(Output(arguments).rfind("image  ", 0), 0U);
            std::vector<double> opening;
            std::vector<double> closing;
            std::vector<double> fractal;
            ASSERT_TRUE(GranulometryByOpening(Texture(), opening, shape));
            ASSERT_TRUE(GranulometryByClosing(Texture(), closing, shape));
            ASSERT_TRUE(MorphologicalFractalDimension(Texture(), fractal, shape));
            auto const expected = [](std::vector<double> const & curve, int firstStep) {
                Rows rows;
                for (double const value : curve)
                {
                    double const step = firstStep + static_cast<double>(rows.size());
                    rows.push_back({step, 2.0 * step + 1.0, value});
                }
                return rows;
            };
            ASSERT_GT(fractal.size(), 2U);
            ExpectNear(RowsOf(ReadText("opening.csv"), "step,size,share"), expected(opening, 0));
            ExpectNear(RowsOf(ReadText("closing.csv"), "step,size,share"), expected(closing, 0));
            ExpectNear(RowsOf(ReadText("fractal.csv"), "step,size,area"), expected(fractal, 1));
        }
    }
}

TEST_F(ShapeCommand, ManyZones_AreRefusedButForTheWholeImage)
{
    // A pixel in four: 182 x 181 zones, more than the 32767 that have numbers; without a row of them fewer.
    cv::Mat1b image(2 * 182, 2 * 181, uchar{0});
    for (int y = 0; y < image.rows; y += 2)
    {
        for (int x = 0; x < image.cols; x += 2)
        {
            image(y, x) = 1;
        }
    }
    ASSERT_TRUE(cv::imwrite(In("dust.png"), image));
    ExpectFailure({"shape", In("dust.png")}, {"dust.png", "32942 flat zones", "32767"});
    EXPECT_EQ(Output({In("dust.png"), "--harris", In("harris.tif")}).rfind("image  ", 0), 0U);
    image.rowRange(0, 1) = 0;
    // One row less leaves 32761.
    ASSERT_TRUE(cv::imwrite(In("dust.png"), image));
    Rows const rows = RowsOf(Output({In("dust.png")}), kHead);
    ASSERT_EQ(rows.size(), 32761U);
    EXPECT_EQ(rows.back().at(7), 1.0);
}

TEST_F(ShapeCommand, NamesWhatItCannotUse)
{
    ASSERT_TRUE(cv::imwrite(In("colour.png"), cv::Mat(8, 9, CV_8UC3, cv::Scalar::all(1))));
    ASSERT_TRUE(cv::imwrite(In("flat.png"), cv::Mat(2, 9, CV_8UC1, cv::Scalar(1))));
    std::set<std::string> const before = Files();
    std::string const things = In("things.png");
    std::string const out = In("out.png");
    ExpectFailure({"shape"}, {"image"});
    ExpectFailure({"shape", In("nowhere.png")}, {"nowhere.png", "no such file"});
    ExpectFailure({"shape", In("colour.png"), "--boxes", out}, {"colour.png", "3 channels"});
    ExpectFailure(
        {"shape", things, "--measure", "best", "--picture", out},
        {"--measure", "best", "diameter, elongation, tortuosity, standard-elongation"});
    ExpectFailure({"shape", things, "--measure", "diameter"}, {"--measure", "--values", "--picture"});
    ExpectFailure({"shape", things, "--shape", "cross"}, {"--shape", "--opening-curve"});
    ExpectFailure({"shape", things, "--shape", "star", "--fractal-curve", In("f.csv")}, {"--shape", "star"});
    for (char const * const curve : {"--opening-curve", "--closing-curve", "--fractal-curve"})
    {
        ExpectFailure({"shape", In("flat.png"), curve, In("c.csv")}, {"flat.png", "9 x 2", "3 rows"});
        ExpectFailure({"shape", things, curve, things}, {"things.png", "overwritten"});
    }
    ExpectFailure({"shape", In("flat.png"), "--harris-picture", out}, {"flat.png", "9 x 2", "3 rows"});
    // The table that could have been written is not left behind.
    ExpectFailure({"shape", In("flat.png"), "-o", In("t.csv"), "--harris", In("h.tif")}, {"flat.png", "9 x 2"});
    for (char const * const option :
         {"--picture", "--extremities", "--extremity-picture", "--boxes", "--closed", "--harris-picture", "-o"})
    {
        ExpectFailure({"shape", things, option, things}, {"things.png", "overwritten"});
    }
    ExpectFailure({"shape", things, "--values", out}, {"out.png", ".tif"});
    ExpectFailure({"shape", things, "--harris", out}, {"out.png", ".tif"});
    ExpectFailure({"shape", things, "--boxes", out, "--closed", out}, {"out.png", "two outputs"});
    EXPECT_EQ(Files(), before);
}

} // namespace
