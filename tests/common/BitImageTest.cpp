#include "common/BitImage.h"

#include "support/RandomImages.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <limits>
#include <numeric>
#include <vector>

namespace morvane::common
{

namespace
{

using tests::Random;
using Word = BitImage::Word;

constexpr Word kNone = 0;
constexpr Word kAll = ~kNone;

/// Around the borders of words, and a width of several of them.
std::vector<int> const kWidths{1, 2, 63, 64, 65, 127, 128, 129, 300};

bool BitOf(std::vector<Word> const & words, int x)
{
    return ((words[static_cast<std::size_t>(x / 64)] >> (x % 64)) & 1U) != 0;
}

std::vector<Word> RandomWords(Random & random, int count)
{
    std::vector<Word> words(static_cast<std::size_t>(count));
    std::generate(words.begin(), words.end(), [&random] { return random.Next(); });
    return words;
}

/// The words between two others that are read as neighbours or must stay as they are.
std::vector<Word> Between(Word before, std::vector<Word> const & words, Word after)
{
    std::vector<Word> framed{before};
    framed.insert(framed.end(), words.begin(), words.end());
    framed.push_back(after);
    return framed;
}

TEST(BitImage, WordsForHoldsEveryColumn)
{
    EXPECT_EQ(BitImage::WordsFor(0), 0);
    EXPECT_EQ(BitImage::WordsFor(1), 1);
    EXPECT_EQ(BitImage::WordsFor(63), 1);
    EXPECT_EQ(BitImage::WordsFor(64), 1);
    EXPECT_EQ(BitImage::WordsFor(65), 2);
    EXPECT_EQ(BitImage::WordsFor(128), 2);
    EXPECT_EQ(BitImage::WordsFor(129), 3);
    EXPECT_EQ(BitImage::WordsFor(std::numeric_limits<int>::max()), 33554432);
}

TEST(BitImage, BeginsWithoutASetBitAndWithZerosAroundEachRow)
{
    for (int const cols : kWidths)
    {
        BitImage const image(3, cols);
        EXPECT_EQ(image.Rows(), 3);
        EXPECT_EQ(image.Cols(), cols);
        ASSERT_EQ(image.WordsPerRow(), BitImage::WordsFor(cols));
        for (int y = 0; y < 3; ++y)
        {
            for (int index = -1; index <= image.WordsPerRow(); ++index)
            {
                ASSERT_EQ(image.Row(y)[index], kNone) << "row " << y << ", word " << index << " of " << cols;
            }
        }
    }
}

TEST(BitImage, RowsDoNotTouchEachOtherNorTheZerosAroundThem)
{
    for (int const cols : kWidths)
    {
        BitImage image(4, cols);
        int const words = image.WordsPerRow();
        for (int y = 0; y < 4; ++y)
        {
            std::fill_n(image.Row(y), words, static_cast<Word>(y + 1));
        }
        for (int y = 0; y < 4; ++y)
        {
            Word const * const row = image.Row(y);
            EXPECT_EQ(row[-1], kNone);
            EXPECT_EQ(std::count(row, row + words, static_cast<Word>(y + 1)), words);
            EXPECT_EQ(row[words], kNone);
        }
    }
}

TEST(BitImage, AtReadsTheBitOfAPixel)
{
    BitImage image(2, 130);
    for (int const x : {0, 1, 62, 63, 64, 65, 127, 128, 129})
    {
        image.Row(1)[x / 64] = Word{1} << (x % 64);
        for (int column = 0; column < 130; ++column)
        {
            ASSERT_EQ(image.At(column, 1), column == x) << x;
            ASSERT_FALSE(image.At(column, 0));
        }
        image.Row(1)[x / 64] = kNone;
    }
}

TEST(BitImage, MayBeEmpty)
{
    BitImage const noRows(0, 70);
    EXPECT_EQ(noRows.Rows(), 0);
    EXPECT_EQ(noRows.WordsPerRow(), 2);
    BitImage const noColumns(3, 0);
    EXPECT_EQ(noColumns.WordsPerRow(), 0);
    EXPECT_EQ(noColumns.Row(2)[-1], kNone);
    EXPECT_EQ(noColumns.Row(2)[0], kNone);
    BitImage const negative(-1, -64);
    EXPECT_EQ(negative.Rows(), 0);
    EXPECT_EQ(negative.Cols(), 0);
    EXPECT_EQ(negative.WordsPerRow(), 0);
}

TEST(PackFlags, PutsTheFirstFlagIntoTheLowestBit)
{
    uchar flags[64] = {};
    EXPECT_EQ(PackFlags(flags), kNone);
    for (int bit = 0; bit < 64; ++bit)
    {
        flags[bit] = 255;
        EXPECT_EQ(PackFlags(flags), Word{1} << bit);
        flags[bit] = 0;
    }
    std::fill(std::begin(flags), std::end(flags), uchar{255});
    EXPECT_EQ(PackFlags(flags), kAll);
}

TEST(PackFlags, ReadsFlagsAtAnyAddress)
{
    Random random(70);
    std::vector<uchar> flags(64 + 16);
    std::generate(flags.begin(), flags.end(), [&random] { return random.Chance(0.5) ? uchar{255} : uchar{0}; });
    for (int first = 0; first < 16; ++first)
    {
        uchar const * const start = flags.data() + first;
        Word const word = PackFlags(start);
        for (int bit = 0; bit < 64; ++bit)
        {
            ASSERT_EQ((word >> bit) & 1U, start[bit] == 255 ? 1U : 0U) << "flag " << bit << " from " << first;
        }
    }
}

TEST(FillBits, SetsABitWhereThePredicateHoldsAndClearsAllOthersOfTheRow)
{
    Random random(71);
    for (int const cols : kWidths)
    {
        for (double const share : {0.0, 0.5, 1.0})
        {
            std::vector<bool> holds(static_cast<std::size_t>(cols));
            std::generate(holds.begin(), holds.end(), [&] { return random.Chance(share); });
            int const words = BitImage::WordsFor(cols);
            auto row = Between(kAll, RandomWords(random, words), kAll);
            FillBits(cols, row.data() + 1, [&holds](int x) { return holds[static_cast<std::size_t>(x)]; });
            for (int x = 0; x < words * 64; ++x)
            {
                bool const expected = x < cols && holds[static_cast<std::size_t>(x)];
                ASSERT_EQ(BitOf(row, x + 64), expected) << "column " << x << " of " << cols;
            }
            EXPECT_EQ(row.front(), kAll) << "the word before is written";
            EXPECT_EQ(row.back(), kAll) << "the word behind is written";
        }
    }
}

TEST(FillBits, AsksAboutEachColumnOnceAndAboutNoOther)
{
    for (int const cols : kWidths)
    {
        std::vector<Word> row(static_cast<std::size_t>(BitImage::WordsFor(cols)));
        std::vector<int> asked;
        FillBits(cols, row.data(), [&asked](int x) {
            asked.push_back(x);
            return true;
        });
        std::sort(asked.begin(), asked.end());
        std::vector<int> expected(static_cast<std::size_t>(cols));
        std::iota(expected.begin(), expected.end(), 0);
        EXPECT_EQ(asked, expected);
    }
}

TEST(FillBits, WritesNothingInARowWithoutColumns)
{
    Word word = kAll;
    FillBits(0, &word, [](int) { return false; });
    EXPECT_EQ(word, kAll);
}

/// The words moved by @p offset columns, bit by bit: bit x is bit x + offset, 0 outside.
std::vector<Word> PlainMoved(std::vector<Word> const & words, int offset)
{
    std::vector<Word> moved(words.size());
    int const columns = static_cast<int>(words.size()) * 64;
    for (int x = 0; x < columns; ++x)
    {
        bool const isInside = x + offset >= 0 && x + offset < columns;
        if (isInside && BitOf(words, x + offset)) moved[static_cast<std::size_t>(x / 64)] |= Word{1} << (x % 64);
    }
    return moved;
}

TEST(MovedWord, IsTheRowSeenFromOffsetColumnsAway)
{
    Random random(72);
    for (int words = 1; words <= 3; ++words)
    {
        auto const content = RandomWords(random, words);
        auto const row = Between(kNone, content, kNone);
        for (int offset = -63; offset <= 63; ++offset)
        {
            auto const expected = PlainMoved(content, offset);
            for (int index = 0; index < words; ++index)
            {
                ASSERT_EQ(MovedWord(row.data() + 1, index, offset), expected[static_cast<std::size_t>(index)])
                    << "word " << index << " of " << words << " by " << offset;
            }
        }
    }
}

TEST(MovedWord, TakesWhatComesInFromTheWordsBeside)
{
    std::vector<Word> const row{kAll, kNone, kAll};
    EXPECT_EQ(MovedWord(row.data(), 1, 0), kNone);
    for (int columns = 1; columns <= 63; ++columns)
    {
        EXPECT_EQ(MovedWord(row.data(), 1, -columns), (Word{1} << columns) - 1);
        EXPECT_EQ(MovedWord(row.data(), 1, columns), ~(kAll >> columns));
    }
}

TEST(MoveRight, MovesTheBitsOfARowAcrossItsWordsAndLetsZerosIn)
{
    Random random(73);
    for (int words = 0; words <= 4; ++words)
    {
        for (int columns = 1; columns <= 63; ++columns)
        {
            auto const content = RandomWords(random, words);
            auto row = Between(kAll, content, kAll);
            MoveRight(row.data() + 1, words, columns);
            // What lies beside the row neither comes in nor is overwritten.
            ASSERT_EQ(row, Between(kAll, PlainMoved(content, -columns), kAll)) << words << " words by " << columns;
        }
    }
}

std::vector<int> BitsOf(Word word)
{
    std::vector<int> bits;
    ForEachBit(word, [&bits](int bit) { bits.push_back(bit); });
    return bits;
}

TEST(ForEachBit, VisitsTheSetBitsFromTheLowest)
{
    EXPECT_EQ(BitsOf(0), std::vector<int>());
    EXPECT_EQ(BitsOf(1), std::vector<int>({0}));
    EXPECT_EQ(BitsOf(Word{1} << 63), std::vector<int>({63}));
    EXPECT_EQ(BitsOf(0x8000000180000001), std::vector<int>({0, 31, 32, 63}));
    std::vector<int> everyBit(64);
    std::iota(everyBit.begin(), everyBit.end(), 0);
    EXPECT_EQ(BitsOf(kAll), everyBit);
}

TEST(ForEachBit, VisitsEachBitOfRandomWordsOnce)
{
    Random random(74);
    for (int round = 0; round < 200; ++round)
    {
        Word const word = random.Next() & random.Next();
        std::vector<int> expected;
        for (int bit = 0; bit < 64; ++bit)
        {
            if (BitOf({word}, bit)) expected.push_back(bit);
        }
        ASSERT_EQ(BitsOf(word), expected);
    }
}

TEST(CountUpTo, CountsTheBitItselfAndThoseBelow)
{
    Random random(75);
    std::vector<Word> words = RandomWords(random, 50);
    words.insert(words.end(), {kNone, kAll, Word{1}, Word{1} << 63});
    for (Word const word : words)
    {
        int expected = 0;
        for (int bit = 0; bit < 64; ++bit)
        {
            expected += BitOf({word}, bit) ? 1 : 0;
            ASSERT_EQ(CountUpTo(word, bit), expected) << "up to " << bit << " of " << word;
        }
    }
}

} // namespace

} // namespace morvane::common
