// The interface of criteria, through criteria of the test's own, and the criteria made of attributes.
#include <morvane/common/Criterion.h>

#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <type_traits>
#include <vector>

namespace morvane::common
{

namespace
{

constexpr std::uint64_t kMost = 18446744073709551615U;

/// A criterion with the least that one must have.
class Fixed : public Criterion
{
public:
    explicit Fixed(std::uint64_t value)
        : m_value(value)
    {}

    void Merge(Criterion const & other) override { m_value += other.GetValue(); }
    [[nodiscard]] bool IsEmpty() const override { return m_value == 0; }
    [[nodiscard]] std::uint64_t GetValue() const override { return m_value; }

private:
    std::uint64_t m_value;
};

/// A criterion that overrides what has a body in the base, too, and counts its calls.
class Logging final : public Fixed
{
public:
    Logging(int & alive, std::vector<int> & log)
        : Fixed(1)
        , m_alive(alive)
        , m_log(log)
    {
        ++m_alive;
    }
    Logging(Logging const &) = delete;
    Logging & operator=(Logging const &) = delete;
    ~Logging() override { --m_alive; }

    void AddPixel(int x, int y, int z) override { m_log = {x, y, z}; }
    void SetLabel(std::uint64_t label) override { m_log = {static_cast<int>(label)}; }
    void SetLevel(int level) override { m_log = {level, level}; }
    bool operator<(std::uint64_t value) const override { return value == 7; }
    bool operator<=(std::uint64_t value) const override { return value == 8; }
    bool operator==(Criterion const & /*other*/) const override { return true; }
    std::uint64_t operator-(Criterion const & /*other*/) const override { return 9; }

private:
    int & m_alive;
    std::vector<int> & m_log;
};

TEST(Criterion, EmptyOperationsOfTheBaseChangeNothing)
{
    Fixed fixed(5);
    Criterion & criterion = fixed;
    criterion.AddPixel(1, 2, 3);
    criterion.SetLabel(4);
    criterion.SetLevel(6);
    EXPECT_EQ(criterion.GetValue(), 5U);
    EXPECT_FALSE(criterion.IsEmpty());
}

TEST(Criterion, ComparesItsValue)
{
    Fixed const fixed(5);
    Criterion const & criterion = fixed;
    EXPECT_FALSE(criterion < 4U);
    EXPECT_FALSE(criterion < 5U);
    EXPECT_TRUE(criterion < 6U);
    EXPECT_TRUE(criterion < kMost);
    EXPECT_FALSE(criterion <= 4U);
    EXPECT_TRUE(criterion <= 5U);
    EXPECT_TRUE(criterion <= 6U);
    EXPECT_FALSE(Fixed(0) < 0U);
    EXPECT_TRUE(criterion == Fixed(5));
    EXPECT_FALSE(criterion == Fixed(6));
    EXPECT_TRUE(criterion == AttributeCriterion<AreaAttribute>(AreaAttribute(5)));
}

TEST(Criterion, DifferenceIsNeverNegative)
{
    EXPECT_EQ(Fixed(3) - Fixed(5), 2U);
    EXPECT_EQ(Fixed(5) - Fixed(3), 2U);
    EXPECT_EQ(Fixed(5) - Fixed(5), 0U);
    EXPECT_EQ(Fixed(0) - Fixed(kMost), kMost);
    EXPECT_EQ(Fixed(kMost) - Fixed(0), kMost);
    AttributeCriterion<AreaAttribute> const three(AreaAttribute(3));
    AttributeCriterion<AreaAttribute> const five(AreaAttribute(5));
    EXPECT_EQ(three - five, 2U);
    EXPECT_EQ(five - three, 2U);
}

TEST(Criterion, EveryOperationCanBeOverridden)
{
    int alive = 0;
    std::vector<int> log;
    {
        std::unique_ptr<Criterion> const criterion = std::make_unique<Logging>(alive, log);
        EXPECT_EQ(alive, 1);
        criterion->AddPixel(1, 2, 3);
        EXPECT_EQ(log, (std::vector<int>{1, 2, 3}));
        criterion->SetLabel(4);
        EXPECT_EQ(log, (std::vector<int>{4}));
        criterion->SetLevel(-5);
        EXPECT_EQ(log, (std::vector<int>{-5, -5}));
        EXPECT_TRUE(*criterion < 7U);
        EXPECT_FALSE(*criterion < 8U);
        EXPECT_TRUE(*criterion <= 8U);
        EXPECT_FALSE(*criterion <= 7U);
        EXPECT_TRUE(*criterion == Fixed(100));
        EXPECT_EQ(*criterion - Fixed(100), 9U);
        criterion->Merge(Fixed(2));
        EXPECT_EQ(criterion->GetValue(), 3U);
    }
    EXPECT_EQ(alive, 0);
}

#if defined(__GNUG__) && defined(__x86_64__)
/// The slot of a virtual operation: what the ABI of this platform stores of a pointer to it.
template <class Member>
std::ptrdiff_t SlotOf(Member member)
{
    std::ptrdiff_t stored = 0;
    std::memcpy(&stored, &member, sizeof(stored));
    return (stored - 1) / static_cast<std::ptrdiff_t>(sizeof(void *));
}

TEST(Criterion, OperationsHaveTheirSlots)
{
    EXPECT_EQ(SlotOf(&Criterion::Merge), 0);
    EXPECT_EQ(SlotOf(&Criterion::AddPixel), 1);
    EXPECT_EQ(SlotOf(&Criterion::SetLabel), 2);
    EXPECT_EQ(SlotOf(&Criterion::SetLevel), 3);
    EXPECT_EQ(SlotOf(&Criterion::IsEmpty), 4);
    EXPECT_EQ(SlotOf(&Criterion::GetValue), 5);
    EXPECT_EQ(SlotOf(&Criterion::operator<), 6);
    EXPECT_EQ(SlotOf(&Criterion::operator<=), 7);
    EXPECT_EQ(SlotOf(&Criterion::operator==), 8);
    EXPECT_EQ(SlotOf(&Criterion::operator-), 9);
}
#endif

/// Calls @p test with each attribute class as a template argument.
template <class Test>
void ForEachAttribute(Test && test)
{
    test.template operator()<HeightAttribute>();
    test.template operator()<WidthAttribute>();
    test.template operator()<StrainAttribute>();
    test.template operator()<MinHWAttribute>();
    test.template operator()<AreaAttribute>();
    test.template operator()<SqrtAreaAttribute>();
}

/// A criterion that took five rows of three pixels from (@p x, @p y) on: every attribute has a value above 1.
template <class A>
AttributeCriterion<A> BlockAt(int x, int y)
{
    AttributeCriterion<A> block;
    Criterion & criterion = block;
    for (int pixel = 0; pixel < 15; ++pixel)
    {
        criterion.AddPixel(x + pixel % 3, y + pixel / 3, 0);
    }
    return block;
}

TEST(AttributeCriterion, IsACriterionAndThenAnAttributeWithoutDataOfItsOwn)
{
    ForEachAttribute([]<class A> {
        EXPECT_TRUE((std::is_base_of_v<A, AttributeCriterion<A>>));
        EXPECT_EQ(sizeof(AttributeCriterion<A>), sizeof(Criterion) + sizeof(A));
        AttributeCriterion<A> const both;
        auto const * const start = reinterpret_cast<char const *>(&both);
        EXPECT_EQ(reinterpret_cast<char const *>(static_cast<Criterion const *>(&both)), start);
        EXPECT_EQ(reinterpret_cast<char const *>(static_cast<A const *>(&both)), start + sizeof(Criterion));
    });
    EXPECT_EQ(sizeof(Criterion), sizeof(void *));
}

TEST(AttributeCriterion, ForwardsToItsAttribute)
{
    std::array<std::uint64_t, 6> const expected{5, 3, 5, 3, 15, 3};
    std::size_t number = 0;
    ForEachAttribute([&]<class A> {
        AttributeCriterion<A> empty;
        EXPECT_TRUE(static_cast<Criterion &>(empty).IsEmpty());
        EXPECT_TRUE(static_cast<A &>(empty).IsEmpty());
        EXPECT_EQ(empty.GetValue(), 0U);
        AttributeCriterion<A> const block = BlockAt<A>(4, 6);
        EXPECT_FALSE(static_cast<Criterion const &>(block).IsEmpty());
        EXPECT_FALSE(static_cast<A const &>(block).IsEmpty());
        EXPECT_EQ(static_cast<Criterion const &>(block).GetValue(), expected.at(number));
        EXPECT_EQ(static_cast<A const &>(block).GetValue(), expected.at(number));
        ++number;
    });
}

TEST(AttributeCriterion, IgnoresLabelAndLevel)
{
    ForEachAttribute([]<class A> {
        AttributeCriterion<A> block = BlockAt<A>(4, 6);
        std::uint64_t const before = block.GetValue();
        block.SetLabel(77);
        block.SetLevel(-77);
        EXPECT_EQ(block.GetValue(), before);
    });
}

TEST(AttributeCriterion, MergesItsOwnKindOnly)
{
    ForEachAttribute([]<class A> {
        ForEachAttribute([]<class B> {
            AttributeCriterion<A> one = BlockAt<A>(4, 6);
            AttributeCriterion<B> const other = BlockAt<B>(40, 60);
            A expected = one;
            if constexpr (std::is_same_v<A, B>)
            {
                expected.Merge(static_cast<A const &>(other));
                EXPECT_GT(expected.GetValue(), static_cast<A const &>(one).GetValue());
            }
            static_cast<Criterion &>(one).Merge(other);
            EXPECT_EQ(one.GetValue(), expected.GetValue());
            EXPECT_EQ(other.GetValue(), BlockAt<B>(0, 0).GetValue());
        });
    });
}

TEST(AttributeCriterion, MergingAreaWithWidthIsASilentNoOp)
{
    AttributeCriterion<AreaAttribute> area(AreaAttribute(12));
    AttributeCriterion<WidthAttribute> width(WidthAttribute(2, 5));
    area.Merge(width);
    width.Merge(area);
    EXPECT_EQ(area.GetValue(), 12U);
    EXPECT_EQ(width.GetValue(), 4U);
}

TEST(AttributeCriterion, DoesNotMergeAForeignCriterion)
{
    AttributeCriterion<AreaAttribute> area(AreaAttribute(12));
    area.Merge(Fixed(30));
    EXPECT_EQ(area.GetValue(), 12U);
}

/// A criterion of an attribute with something more, as the nodes of a tree are.
class Labelled final : public AttributeCriterion<AreaAttribute>
{
public:
    void SetLabel(std::uint64_t label) override { m_label = label; }
    [[nodiscard]] std::uint64_t Label() const { return m_label; }

private:
    std::uint64_t m_label = 0;
};

TEST(AttributeCriterion, MergesWhatIsDerivedFromItsOwnKind)
{
    Labelled labelled;
    labelled.AddPixel(0, 0, 0);
    static_cast<Criterion &>(labelled).SetLabel(5);
    AttributeCriterion<AreaAttribute> area(AreaAttribute(12));
    area.Merge(labelled);
    EXPECT_EQ(area.GetValue(), 13U);
    static_cast<Criterion &>(labelled).Merge(area);
    EXPECT_EQ(labelled.GetValue(), 14U);
    EXPECT_EQ(labelled.Label(), 5U);
}

TEST(AttributeCriterion, MergingItselfDoublesTheArea)
{
    AttributeCriterion<AreaAttribute> area(AreaAttribute(12));
    area.Merge(area);
    EXPECT_EQ(area.GetValue(), 24U);
}

TEST(AttributeCriterion, IsCopiedWithItsAttribute)
{
    ForEachAttribute([]<class A> {
        AttributeCriterion<A> const block = BlockAt<A>(4, 6);
        AttributeCriterion<A> copy(block);
        EXPECT_TRUE(copy == block);
        for (int more = 0; more < 1000; ++more)
        {
            copy.AddPixel(900, 900, 0);
        }
        EXPECT_FALSE(copy == block);
        copy = block;
        EXPECT_TRUE(copy == block);
    });
}

} // namespace

} // namespace morvane::common
