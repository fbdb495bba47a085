#pragma once

#include <cstdint>
#include <initializer_list>

namespace Tessel {

/// A set of independent flags held in one integer, with the usual set algebra. A concrete set
/// derives from it, inherits its constructors and names its members as static constants.
template <class Set, class Raw = std::int64_t> class OptionSet {
public:
    using RawValue = Raw; ///< the integer that holds the flags

    constexpr OptionSet() = default; ///< the empty set
    /// From the flags as an integer; unknown ones are kept.
    constexpr explicit OptionSet(Raw rawValue)
        : rawValue_(rawValue)
    {
    }
    /// The union of the members.
    constexpr OptionSet(std::initializer_list<Set> members)
    {
        for (const auto& member : members)
            rawValue_ |= member.rawValue();
    }

    constexpr Raw rawValue() const { return rawValue_; } ///< the flags as an integer
    constexpr bool isEmpty() const { return rawValue_ == 0; } ///< no flag is set

    /// Whether it has all flags of `other`.
    constexpr bool contains(const Set& other) const { return other.isSubset(self()); }
    /// Whether `of` has all its flags.
    constexpr bool isSubset(const Set& of) const { return (rawValue_ & ~of.rawValue()) == 0; }
    /// The same as `contains`.
    constexpr bool isSuperset(const Set& of) const { return of.isSubset(self()); }
    /// Whether they share no flag.
    constexpr bool isDisjoint(const Set& with) const { return (rawValue_ & with.rawValue()) == 0; }

    /// The flags of either.
    constexpr Set unioned(const Set& other) const { return Set(rawValue_ | other.rawValue()); }
    /// The flags of both.
    constexpr Set intersection(const Set& other) const { return Set(rawValue_ & other.rawValue()); }
    /// The flags of one alone.
    constexpr Set symmetricDifference(const Set& other) const
    {
        return Set(rawValue_ ^ other.rawValue());
    }
    /// Its flags without those of `other`.
    constexpr Set subtracting(const Set& other) const { return Set(rawValue_ & ~other.rawValue()); }

    /// Sets all flags of `member`.
    constexpr void insert(const Set& member) { rawValue_ |= member.rawValue(); }
    /// Takes them away.
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
