#pragma once

#include <cstdint>
#include <initializer_list>

namespace Tessel {

/// A set of independent flags held in one integer, with the usual set algebra. A concrete set
/// derives from it, inherits its constructors and names its members as static constants.
template <class Set, class Raw = std::int64_t> class OptionSet {
public:
    using RawValue = Raw;

    constexpr OptionSet() = default;
    constexpr explicit OptionSet(Raw rawValue)
        : rawValue_(rawValue)
    {
    }
    constexpr OptionSet(std::initializer_list<Set> members)
    {
        for (const auto& member : members)
            rawValue_ |= member.rawValue();
    }

    constexpr Raw rawValue() const { return rawValue_; }
    constexpr bool isEmpty() const { return rawValue_ == 0; }

    constexpr bool contains(const Set& other) const { return other.isSubset(self()); }
    constexpr bool isSubset(const Set& of) const { return (rawValue_ & ~of.rawValue()) == 0; }
    constexpr bool isSuperset(const Set& of) const { return of.isSubset(self()); }
    constexpr bool isDisjoint(const Set& with) const { return (rawValue_ & with.rawValue()) == 0; }

    constexpr Set unioned(const Set& other) const { return Set(rawValue_ | other.rawValue()); }
    constexpr Set intersection(const Set& other) const { return Set(rawValue_ & other.rawValue()); }
    constexpr Set symmetricDifference(const Set& other) const
    {
        return Set(rawValue_ ^ other.rawValue());
    }
    constexpr Set subtracting(const Set& other) const { return Set(rawValue_ & ~other.rawValue()); }

    constexpr void insert(const Set& member) { rawValue_ |= member.rawValue(); }
    constexpr void remove(const Set& member) { rawValue_ &= ~member.rawValue(); }

    friend constexpr bool operator==(const Set& a, const Set& b)
    {
        return a.rawValue() == b.rawValue();
    }
    friend constexpr Set operator|(const Set& a, const Set& b) { return a.unioned(b); }
    friend constexpr Set operator&(const Set& a, const Set& b) { return a.intersection(b); }
    friend constexpr Set operator^(const Set& a, const Set& b) { return a.symmetricDifference(b); }

private:
    constexpr Set self() const { return Set(rawValue_); }

    Raw rawValue_ = 0;
};

} // namespace Tessel
