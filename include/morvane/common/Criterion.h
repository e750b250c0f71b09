/// @file
/// The interface through which attribute filters speak to attributes.
#pragma once

#include <morvane/Export.h>
#include <morvane/common/Attributes.h>

#include <cstdint>
#include <utility>

namespace morvane::common
{

/// What a filter asks of a component. Derive from it, or use AttributeCriterion.
class MORVANE_EXPORT Criterion
{
public:
    Criterion() = default;
    /// Copies.
    Criterion(Criterion const &) = default;
    /// Moves.
    Criterion(Criterion &&) = default;
    /// Copies.
    Criterion & operator=(Criterion const &) = default;
    /// Moves.
    Criterion & operator=(Criterion &&) = default;

    /// Takes the pixels of another component. What is of another kind changes nothing.
    virtual void Merge(Criterion const & other) = 0;

    /// Takes a pixel in column @p x and row @p y, of level @p z. The base does nothing.
    virtual void AddPixel(int x, int y, int z);

    /// Tells the label of the component. The base does nothing.
    virtual void SetLabel(std::uint64_t label);

    /// Tells the level of the component. The base does nothing.
    virtual void SetLevel(int level);

    /// Has it taken no pixel?
    [[nodiscard]] virtual bool IsEmpty() const = 0;

    /// The number that is compared.
    [[nodiscard]] virtual std::uint64_t GetValue() const = 0;

    /// Is the value below @p value?
    [[nodiscard]] virtual bool operator<(std::uint64_t value) const;

    /// Is the value @p value or below?
    [[nodiscard]] virtual bool operator<=(std::uint64_t value) const;

    /// Are both values equal?
    [[nodiscard]] virtual bool operator==(Criterion const & other) const;

    /// By how much the values differ, whichever is the larger.
    [[nodiscard]] virtual std::uint64_t operator-(Criterion const & other) const;

    virtual ~Criterion();
};

/// A criterion made of an attribute.
///
/// @tparam A one of the six attribute classes
template <class A>
class MORVANE_EXPORT AttributeCriterion : public Criterion, public A
{
public:
    /// An empty one.
    AttributeCriterion() = default;

    /// One that begins with @p attribute.
    explicit AttributeCriterion(A attribute)
        : A(std::move(attribute))
    {}

    /// Merges the attribute of another criterion of the same kind.
    void Merge(Criterion const & other) override
    {
        if (auto const * const same = dynamic_cast<AttributeCriterion const *>(&other)) A::Merge(*same);
    }

    void AddPixel(int x, int y, int z) override { A::AddPixel(x, y, z); }

    [[nodiscard]] bool IsEmpty() const override { return A::IsEmpty(); }

    [[nodiscard]] std::uint64_t GetValue() const override { return A::GetValue(); }
};

extern template class AttributeCriterion<AreaAttribute>;
extern template class AttributeCriterion<SqrtAreaAttribute>;
extern template class AttributeCriterion<HeightAttribute>;
extern template class AttributeCriterion<WidthAttribute>;
extern template class AttributeCriterion<StrainAttribute>;
extern template class AttributeCriterion<MinHWAttribute>;

} // namespace morvane::common
