#include <morvane/connexity/Connexity.h>

#include "support/AllTypes.h"
#include "support/Oracles.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <set>
#include <type_traits>
#include <utility>
#include <vector>

namespace morvane::connexity
{

namespace
{

using Offsets = std::vector<cv::Point>;

Offsets List(Connexity const & connexity)
{
    return {connexity.begin(), connexity.end()};
}

/// Whether the first column has the last one for a neighbour.
bool Wraps(Connexity const & connexity)
{
    common::Neighbourhood const neighbourhood = NeighbourhoodOver(connexity, {9, 9});
    for (std::size_t index = 0; index < neighbourhood.Count(); ++index)
    {
        auto const neighbour = neighbourhood.Neighbour({0, 4}, index);
        if (neighbour && neighbour->x > 4) return true;
    }
    return false;
}

TEST(Connexity, Connexity4_StartsLeftAndEndsUp)
{
    Connexity const connexity(eConnexity4);
    ASSERT_EQ(connexity.size(), 4U);
    EXPECT_EQ(connexity[0], cv::Point(-1, 0));
    EXPECT_EQ(connexity[3], cv::Point(0, -1));
}

TEST(Connexity, NamesHaveTheirNumbers)
{
    std::vector<int> const named{
        eConnexity4,
        eConnexity4Wrapped,
        eConnexity8,
        eConnexity8AxesFirst,
        eConnexity8Wrapped,
        eConnexity12,
        eConnexity20,
        eConnexity12Interleaved,
        eConnexity12InterleavedWrapped,
        eConnexity20Interleaved,
        eConnexity20InterleavedWrapped,
        eConnexity24Interleaved,
        eConnexity24InterleavedWrapped};
    ASSERT_EQ(named.size(), static_cast<std::size_t>(tests::kConnexityCount));
    for (int number = 0; number < tests::kConnexityCount; ++number)
    {
        EXPECT_EQ(named[static_cast<std::size_t>(number)], number);
    }
    static_assert(std::is_same_v<std::underlying_type_t<eConnexityType>, int>);
}

TEST(Connexity, HasTheOffsetsOfItsShapeInOrder)
{
    Offsets const four{{-1, 0}, {1, 0}, {0, 1}, {0, -1}};
    Offsets const ring{{-1, -1}, {-1, 0}, {-1, 1}, {0, 1}, {1, 1}, {1, 0}, {1, -1}, {0, -1}};
    Offsets const axesFirst{{-1, 0}, {1, 0}, {0, 1}, {0, -1}, {-1, -1}, {-1, 1}, {1, 1}, {1, -1}};
    Offsets const twelve{{-1, -1}, {-1, 0}, {-1, 1}, {0, 1}, {1, 1}, {1, 0},
                         {1, -1},  {0, -1}, {-2, 0}, {0, 2}, {2, 0}, {0, -2}};
    Offsets const twenty{{-1, -1}, {-1, 0}, {-1, 1}, {0, 1}, {1, 1}, {1, 0}, {1, -1}, {0, -1}, {-2, -1}, {-2, 0},
                         {-2, 1},  {-1, 2}, {0, 2},  {1, 2}, {2, 1}, {2, 0}, {2, -1}, {1, -2}, {0, -2},  {-1, -2}};
    Offsets const twelveInterleaved{{-2, 0}, {0, 2}, {-1, -1}, {-1, 0}, {-1, 1}, {0, 1},
                                    {1, 1},  {1, 0}, {1, -1},  {0, -1}, {2, 0},  {0, -2}};
    Offsets const twentyInterleaved{{-2, -1}, {-2, 0}, {-2, 1}, {-1, 2}, {0, 2},  {1, 2},  {-1, -1},
                                    {-1, 0},  {-1, 1}, {0, 1},  {1, 1},  {1, 0},  {1, -1}, {0, -1},
                                    {2, 1},   {2, 0},  {2, -1}, {1, -2}, {0, -2}, {-1, -2}};
    Offsets const twentyFour{{-2, -2}, {-2, -1}, {-2, 0}, {-2, 1}, {-2, 2}, {-1, 2}, {0, 2},  {1, 2},
                             {-1, -1}, {-1, 0},  {-1, 1}, {0, 1},  {1, 1},  {1, 0},  {1, -1}, {0, -1},
                             {2, 2},   {2, 1},   {2, 0},  {2, -1}, {2, -2}, {1, -2}, {0, -2}, {-1, -2}};
    EXPECT_EQ(List(eConnexity4), four);
    EXPECT_EQ(List(eConnexity4Wrapped), four);
    EXPECT_EQ(List(eConnexity8), ring);
    EXPECT_EQ(List(eConnexity8AxesFirst), axesFirst);
    EXPECT_EQ(List(eConnexity8Wrapped), ring);
    EXPECT_EQ(List(eConnexity12), twelve);
    EXPECT_EQ(List(eConnexity20), twenty);
    EXPECT_EQ(List(eConnexity12Interleaved), twelveInterleaved);
    EXPECT_EQ(List(eConnexity12InterleavedWrapped), twelveInterleaved);
    EXPECT_EQ(List(eConnexity20Interleaved), twentyInterleaved);
    EXPECT_EQ(List(eConnexity20InterleavedWrapped), twentyInterleaved);
    EXPECT_EQ(List(eConnexity24Interleaved), twentyFour);
    EXPECT_EQ(List(eConnexity24InterleavedWrapped), twentyFour);
}

TEST(Connexity, AgreesWithTheTablesOfThePlainWalk)
{
    for (int number = 0; number < tests::kConnexityCount; ++number)
    {
        Connexity const connexity(tests::Shape(number));
        EXPECT_EQ(List(connexity), tests::OracleOffsets(number)) << number;
        EXPECT_EQ(Wraps(connexity), tests::OracleWraps(number)) << number;
    }
}

TEST(Connexity, HoldsNeverTheCentreAndNoOffsetTwice)
{
    for (int number = 0; number < tests::kConnexityCount; ++number)
    {
        std::set<std::pair<int, int>> distinct;
        Connexity const connexity(tests::Shape(number));
        for (cv::Point const & offset : connexity)
        {
            EXPECT_NE(offset, cv::Point(0, 0)) << number;
            distinct.insert({offset.x, offset.y});
            // Every shape is symmetric about its centre.
            EXPECT_NE(std::find(connexity.begin(), connexity.end(), -offset), connexity.end()) << number;
        }
        EXPECT_EQ(distinct.size(), connexity.size()) << number;
    }
    EXPECT_EQ(Connexity(eConnexity24Interleaved).size(), 24U);
    EXPECT_EQ(Connexity(eConnexity24InterleavedWrapped).size(), 24U);
}

TEST(Connexity, Shapes12And20_HoldTheSamePointsInBothOrders)
{
    auto const sameSetOtherOrder = [](Connexity const & left, Connexity const & right) {
        return List(left) != List(right) && std::is_permutation(left.begin(), left.end(), right.begin(), right.end());
    };
    EXPECT_TRUE(sameSetOtherOrder(eConnexity12, eConnexity12Interleaved));
    EXPECT_TRUE(sameSetOtherOrder(eConnexity20, eConnexity20Interleaved));
    EXPECT_TRUE(sameSetOtherOrder(eConnexity8, eConnexity8AxesFirst));
}

TEST(Connexity, WrapsExactlyInTheWrappedShapes)
{
    std::set<int> const wrapped{
        eConnexity4Wrapped, eConnexity8Wrapped, eConnexity12InterleavedWrapped, eConnexity20InterleavedWrapped,
        eConnexity24InterleavedWrapped};
    for (int number = 0; number < tests::kConnexityCount; ++number)
    {
        EXPECT_EQ(Wraps(tests::Shape(number)), wrapped.contains(number)) << number;
    }
}

TEST(Connexity, OutsideTheTableIsEmptyAndDoesNotWrap)
{
    for (int const number : tests::kStrangeConnexities)
    {
        Connexity connexity(tests::Shape(number));
        EXPECT_EQ(connexity.size(), 0U) << number;
        EXPECT_EQ(connexity.begin(), connexity.end()) << number;
        EXPECT_EQ(std::as_const(connexity).begin(), std::as_const(connexity).end()) << number;
        EXPECT_EQ(NeighbourhoodOver(connexity, {3, 3}).Count(), 0U) << number;

        // The flag can't be seen on an empty list: lend it offsets by way of a shape that doesn't wrap.
        Connexity wrapped(eConnexity8Wrapped);
        wrapped = connexity;
        EXPECT_EQ(wrapped.size(), 0U) << number;
    }
}

TEST(Connexity, CopyHasItsOwnListAndTheFlag)
{
    for (int number = 0; number < tests::kConnexityCount; ++number)
    {
        Connexity const original(tests::Shape(number));
        Connexity copy(original);
        EXPECT_EQ(List(copy), List(original)) << number;
        EXPECT_EQ(Wraps(copy), Wraps(original)) << number;
        copy[0] = {-2, 7};
        EXPECT_EQ(original[0], tests::OracleOffsets(number)[0]) << number;
        EXPECT_EQ(copy[0], cv::Point(-2, 7)) << number;
    }
}

TEST(Connexity, AssignmentReplacesListAndFlag)
{
    for (int from = 0; from < tests::kConnexityCount; ++from)
    {
        for (int to = 0; to < tests::kConnexityCount; ++to)
        {
            Connexity const source(tests::Shape(from));
            Connexity target(tests::Shape(to));
            Connexity & result = (target = source);
            EXPECT_EQ(&result, &target);
            EXPECT_EQ(List(target), List(source)) << from << " to " << to;
            EXPECT_EQ(Wraps(target), Wraps(source)) << from << " to " << to;
            target[1] = {5, 5};
            EXPECT_EQ(List(source), tests::OracleOffsets(from));
        }
    }
}

TEST(Connexity, SelfAssignmentKeepsListAndFlag)
{
    Connexity connexity(eConnexity20InterleavedWrapped);
    Connexity const & itself = connexity;
    connexity = itself;
    EXPECT_EQ(List(connexity), tests::OracleOffsets(eConnexity20InterleavedWrapped));
    EXPECT_TRUE(Wraps(connexity));
}

TEST(Connexity, GivesItsOffsetsForWritingAndReading)
{
    Connexity connexity(eConnexity4);
    connexity[2] = {3, -3};
    *connexity.begin() = {9, 9};
    Connexity const & constant = connexity;
    Offsets const expected{{9, 9}, {1, 0}, {3, -3}, {0, -1}};
    EXPECT_EQ(List(constant), expected);
    EXPECT_EQ(Offsets(connexity.begin(), connexity.end()), expected);
    EXPECT_EQ(constant[2], cv::Point(3, -3));
    static_assert(std::is_same_v<decltype(constant[0]), cv::Point_<int> const &>);
    static_assert(std::is_same_v<decltype(connexity[0]), cv::Point_<int> &>);
    static_assert(std::is_same_v<decltype(constant.size()), std::size_t>);
    static_assert(!std::is_polymorphic_v<Connexity>);
    EXPECT_EQ(NeighbourhoodOver(connexity, {20, 20}).Offset(0), cv::Point(9, 9)) << "a walk follows the changed list";
}

} // namespace

} // namespace morvane::connexity
