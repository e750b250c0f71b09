// What a caller tells about a registration: what the records keep, and what they refuse.
#include <morvane/algorithm/TemplateMatchingData.h>

#include <gtest/gtest.h>
#include <opencv2/core.hpp>

#include <cmath>
#include <limits>
#include <string>
#include <tuple>

namespace morvane::algorithm
{

namespace
{

using matching::ImageInfos;
using matching::RelativePositionningInfos;
using matching::TM_Parameters;

using Triple = std::tuple<double, double, double>;
using Station = cv::Point_<double>;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

/// What is thrown: the text of a `char const *`, or a note that something else, or nothing, was.
template <class Call>
std::string Thrown(Call const & call)
{
    try
    {
        call();
    }
    catch (char const * text)
    {
        return text;
    }
    catch (...)
    {
        return "something else";
    }
    return "nothing";
}

std::string const kDivision = " Potential division by zero ";

/// Six numbers that are all different.
RelativePositionningInfos SixNumbers()
{
    return {10, 20, 30, 40, 50, 60};
}

/// Stations (1, 2), (3, 4) and (5, 6), a resolution of 0.5.
TM_Parameters Parameters(RelativePositionningInfos const & infos = SixNumbers())
{
    return {ImageInfos(0.5, 0.25, 0.1), Station(1, 2), Station(3, 4), Station(5, 6), infos};
}

TEST(ImageInfos, KeepsWhatItIsGiven)
{
    ImageInfos infos(1, 2, 3);
    EXPECT_EQ(infos.Get_XY_Resolution(), 1);
    EXPECT_EQ(infos.Get_Z_Resolution(), 2);
    EXPECT_EQ(infos.Get_Ratio(), 3);
    infos.Set_XY_Resolution(4);
    infos.Set_Z_Resolution(5);
    infos.Set_Ratio(6);
    EXPECT_EQ(infos.Get_XY_Resolution(), 4);
    EXPECT_EQ(infos.Get_Z_Resolution(), 5);
    EXPECT_EQ(infos.Get_Ratio(), 6);
}

TEST(ImageInfos, ThrowsForResolutionsOf0AndLess)
{
    for (double const bad : {0.0, -0.0, -1.0, -1e-300, -HUGE_VAL})
    {
        EXPECT_EQ(Thrown([&] { ImageInfos(bad, 1, 1); }), kDivision) << bad;
        EXPECT_EQ(Thrown([&] { ImageInfos(1, bad, 1); }), kDivision) << bad;
        EXPECT_EQ(Thrown([&] { ImageInfos(bad, kNaN, 1); }), kDivision) << bad;
        EXPECT_EQ(Thrown([&] { ImageInfos(kNaN, bad, 1); }), kDivision) << bad;
        EXPECT_EQ(Thrown([&] { ImageInfos(1, 1, bad); }), "nothing") << bad;
    }
    for (double const good : {1e-300, 1.0, HUGE_VAL, kNaN})
    {
        EXPECT_EQ(Thrown([&] { ImageInfos(good, good, good); }), "nothing") << good;
    }
}

TEST(ImageInfos, IsNotCheckedAgain)
{
    ImageInfos infos(1, 1, 1);
    infos.Set_XY_Resolution(0);
    infos.Set_Z_Resolution(-1);
    infos.Set_Ratio(-2);
    ImageInfos const copy = infos;
    EXPECT_EQ(copy.Get_XY_Resolution(), 0);
    EXPECT_EQ(copy.Get_Z_Resolution(), -1);
    EXPECT_EQ(copy.Get_Ratio(), -2);
}

TEST(RelativePositionningInfos, KeepsWhatItIsGiven)
{
    RelativePositionningInfos infos = SixNumbers();
    EXPECT_EQ(infos.Get_Orientation_Center(), 10);
    EXPECT_EQ(infos.Get_Orientation_Range(), 20);
    EXPECT_EQ(infos.Get_Orientaton_Step(), 30);
    EXPECT_EQ(infos.Get_X_Displacement(), 40);
    EXPECT_EQ(infos.Get_Y_Displacement(), 50);
    EXPECT_EQ(infos.Get_Space_Displacement(), 60);
    infos.Set_Orientation_Center(1);
    infos.Set_Orientation_Range(2);
    infos.Set_Orientation_Step(3);
    infos.Set_X_Relative_Translation(4);
    infos.Set_Y_Relative_Translation(5);
    infos.Set_SearchSpace_Translation(6);
    EXPECT_EQ(infos.Get_Orientation(), Triple(1, 2, 3));
    EXPECT_EQ(infos.Get_Diplacement(), Triple(4, 5, 6));
}

TEST(RelativePositionningInfos, KeepsGroups)
{
    RelativePositionningInfos infos = SixNumbers();
    infos.Set_Orientation(Triple(1, 2, 3));
    EXPECT_EQ(infos.Get_Orientation(), Triple(1, 2, 3));
    EXPECT_EQ(infos.Get_Diplacement(), Triple(40, 50, 60));
    infos.Set_Relative_Displacement(Triple(4, 5, 6));
    EXPECT_EQ(infos.Get_Orientation(), Triple(1, 2, 3));
    EXPECT_EQ(infos.Get_Diplacement(), Triple(4, 5, 6));
    infos.Set_Orientation(7, 8, 9);
    EXPECT_EQ(infos.Get_Orientation_Center(), 7);
    EXPECT_EQ(infos.Get_Orientation_Range(), 8);
    EXPECT_EQ(infos.Get_Orientaton_Step(), 9);
    infos.Set_Relative_Displacement(-1, -2, -3);
    EXPECT_EQ(infos.Get_X_Displacement(), -1);
    EXPECT_EQ(infos.Get_Y_Displacement(), -2);
    EXPECT_EQ(infos.Get_Space_Displacement(), -3);
    EXPECT_EQ(infos.Get_Orientation(), Triple(7, 8, 9));
}

TEST(TMParameters, TurnsDisplacementsIntoPixels)
{
    TM_Parameters const parameters = Parameters();
    EXPECT_EQ(parameters.Get_Translation_XDisp(), 80);
    EXPECT_EQ(parameters.Get_Translation_YDisp(), 100);
    EXPECT_EQ(parameters.Get_Translation_RangeDisp(), 120);
    EXPECT_EQ(parameters.Get_Translation_Infos(), Triple(80, 100, 120));
    EXPECT_EQ(parameters.Get_Orientation_Center(), 10);
    EXPECT_EQ(parameters.Get_Orientation_Range(), 20);
    EXPECT_EQ(parameters.Get_Orientation_Step(), 30);
    EXPECT_EQ(parameters.Get_Orientation_Infos(), Triple(10, 20, 30));
    EXPECT_EQ(parameters.GetRefStationPositionOnRef(), Station(1, 2));
    EXPECT_EQ(parameters.GetMovStationPositionOnMov(), Station(3, 4));
    EXPECT_EQ(parameters.GetMovStationPositionOnRef(), Station(5, 6));
    EXPECT_EQ(parameters.GetImageInfos().Get_XY_Resolution(), 0.5);
    EXPECT_EQ(parameters.GetImageInfos().Get_Z_Resolution(), 0.25);
    EXPECT_EQ(parameters.GetImageInfos().Get_Ratio(), 0.1);
    // In world units.
    EXPECT_EQ(parameters.GetRelativePositionning().Get_Orientation(), Triple(10, 20, 30));
    EXPECT_EQ(parameters.GetRelativePositionning().Get_Diplacement(), Triple(40, 50, 60));
    // Divided, not multiplied by a reciprocal.
    TM_Parameters const tenths(
        ImageInfos(0.1, 1, 1), Station(), Station(), Station(), RelativePositionningInfos(0, 0, 0, 0.3, 0.7, 4.9));
    EXPECT_EQ(tenths.Get_Translation_Infos(), Triple(0.3 / 0.1, 0.7 / 0.1, 4.9 / 0.1));
}

TEST(TMParameters, ARadiusOfExactlyMinus1_StaysOne)
{
    auto const rangeOf = [](double space, double resolution) {
        return TM_Parameters(
                   ImageInfos(resolution, 1, 1), Station(), Station(), Station(),
                   RelativePositionningInfos(0, 0, 0, -1.0, -1.0, space))
            .Get_Translation_RangeDisp();
    };
    for (double const resolution : {0.5, 1.0, 3.0})
    {
        EXPECT_EQ(rangeOf(-1.0, resolution), -1.0);
        EXPECT_EQ(rangeOf(-2.0, resolution), -2.0 / resolution);
        EXPECT_EQ(rangeOf(0.0, resolution), 0.0);
    }
    EXPECT_EQ(rangeOf(-2.0, 0.5), -4.0);
    EXPECT_NE(rangeOf(std::nextafter(-1.0, 0.0), 0.5), -1.0);
    EXPECT_TRUE(std::isnan(rangeOf(kNaN, 0.5)));
    // Only of the radius.
    EXPECT_EQ(
        TM_Parameters(
            ImageInfos(0.5, 1, 1), Station(), Station(), Station(), RelativePositionningInfos(0, 0, 0, -1, -1, -1))
            .Get_Translation_Infos(),
        Triple(-2, -2, -1));
}

TEST(TMParameters, ThrowsForAResolutionOf0AndLess)
{
    auto const construct = [](double xy, double z) {
        ImageInfos infos(1, 1, 1);
        infos.Set_XY_Resolution(xy);
        infos.Set_Z_Resolution(z);
        TM_Parameters const parameters(infos, Station(), Station(), Station(), SixNumbers());
    };
    for (double const bad : {0.0, -0.0, -1.0, -HUGE_VAL})
    {
        EXPECT_EQ(Thrown([&] { construct(bad, 1); }), kDivision) << bad;
        EXPECT_EQ(Thrown([&] { construct(1, bad); }), "nothing") << bad;
    }
    EXPECT_EQ(Thrown([&] { construct(kNaN, 1); }), "nothing");
}

TEST(TMParameters, ItsNumbersInPixelsAreASnapshot)
{
    TM_Parameters parameters = Parameters();
    parameters.SetImageInfos(ImageInfos(8, 9, 10));
    parameters.SetRelativePositionning(RelativePositionningInfos(1, 2, 3, 4, 5, 6));
    EXPECT_EQ(parameters.GetImageInfos().Get_XY_Resolution(), 8);
    EXPECT_EQ(parameters.GetImageInfos().Get_Z_Resolution(), 9);
    EXPECT_EQ(parameters.GetImageInfos().Get_Ratio(), 10);
    EXPECT_EQ(parameters.GetRelativePositionning().Get_Orientation(), Triple(1, 2, 3));
    EXPECT_EQ(parameters.GetRelativePositionning().Get_Diplacement(), Triple(4, 5, 6));
    EXPECT_EQ(parameters.Get_Translation_Infos(), Triple(80, 100, 120));
    EXPECT_EQ(parameters.Get_Orientation_Infos(), Triple(10, 20, 30));
}

TEST(TMParameters, SettersTakeTheirValuesAsTheyAre)
{
    TM_Parameters parameters = Parameters();
    parameters.Set_Translation_X(-1);
    parameters.Set_Translation_Y(-2);
    parameters.Set_Translation_Range(-3);
    parameters.Set_Orientation_Center(-4);
    parameters.Set_Orientation_Range(-5);
    parameters.Set_Orientation_Step(-6);
    EXPECT_EQ(parameters.Get_Translation_Infos(), Triple(-1, -2, -3));
    EXPECT_EQ(parameters.Get_Orientation_Infos(), Triple(-4, -5, -6));
    parameters.Set_Translation_Infos(Triple(7, 8, 9));
    parameters.Set_Orientation_Infos(Triple(10, 11, 12));
    EXPECT_EQ(parameters.Get_Translation_XDisp(), 7);
    EXPECT_EQ(parameters.Get_Translation_YDisp(), 8);
    EXPECT_EQ(parameters.Get_Translation_RangeDisp(), 9);
    EXPECT_EQ(parameters.Get_Orientation_Center(), 10);
    EXPECT_EQ(parameters.Get_Orientation_Range(), 11);
    EXPECT_EQ(parameters.Get_Orientation_Step(), 12);
    // What is in world units does not follow.
    EXPECT_EQ(parameters.GetRelativePositionning().Get_Orientation(), Triple(10, 20, 30));
    EXPECT_EQ(parameters.GetRelativePositionning().Get_Diplacement(), Triple(40, 50, 60));
}

TEST(TMParameters, SetMovStationPositionOnRef_SetsTheStationOnTheMovingImage)
{
    TM_Parameters parameters = Parameters();
    parameters.SetMovStationPositionOnRef(Station(7, 8));
    EXPECT_EQ(parameters.GetMovStationPositionOnMov(), Station(7, 8));
    EXPECT_EQ(parameters.GetMovStationPositionOnRef(), Station(5, 6));
    EXPECT_EQ(parameters.GetRefStationPositionOnRef(), Station(1, 2));
    parameters.SetMovStationPositionOnMov(Station(9, 10));
    EXPECT_EQ(parameters.GetMovStationPositionOnMov(), Station(9, 10));
    EXPECT_EQ(parameters.GetMovStationPositionOnRef(), Station(5, 6));
    parameters.SetRefStationPositionOnRef(Station(11, 12));
    EXPECT_EQ(parameters.GetRefStationPositionOnRef(), Station(11, 12));
    EXPECT_EQ(parameters.GetMovStationPositionOnMov(), Station(9, 10));
    EXPECT_EQ(parameters.GetMovStationPositionOnRef(), Station(5, 6));
}

TEST(TMParameters, CopiesHaveAllFields)
{
    TM_Parameters parameters = Parameters();
    parameters.Set_Translation_Infos(Triple(7, 8, 9));
    parameters.Set_Orientation_Infos(Triple(10, 11, 12));
    TM_Parameters const constructed = parameters;
    TM_Parameters assigned(ImageInfos(1, 1, 1), Station(), Station(), Station(), {0, 0, 0, 0, 0, 0});
    assigned = parameters;
    for (TM_Parameters const * copy : {&constructed, static_cast<TM_Parameters const *>(&assigned)})
    {
        EXPECT_EQ(copy->Get_Translation_Infos(), Triple(7, 8, 9));
        EXPECT_EQ(copy->Get_Orientation_Infos(), Triple(10, 11, 12));
        EXPECT_EQ(copy->GetRefStationPositionOnRef(), Station(1, 2));
        EXPECT_EQ(copy->GetMovStationPositionOnMov(), Station(3, 4));
        EXPECT_EQ(copy->GetMovStationPositionOnRef(), Station(5, 6));
        EXPECT_EQ(copy->GetImageInfos().Get_XY_Resolution(), 0.5);
        EXPECT_EQ(copy->GetImageInfos().Get_Z_Resolution(), 0.25);
        EXPECT_EQ(copy->GetImageInfos().Get_Ratio(), 0.1);
        EXPECT_EQ(copy->GetRelativePositionning().Get_Orientation(), Triple(10, 20, 30));
        EXPECT_EQ(copy->GetRelativePositionning().Get_Diplacement(), Triple(40, 50, 60));
    }
}

} // namespace

} // namespace morvane::algorithm
