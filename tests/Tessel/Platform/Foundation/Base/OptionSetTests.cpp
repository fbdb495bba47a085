#include "Tessel/Platform/Foundation/Base/OptionSet.h"

#include <gtest/gtest.h>

using namespace Tessel;

namespace {

struct Set : OptionSet<Set> {
    using OptionSet::OptionSet;
};

constexpr Set a {1};
constexpr Set b {2};
constexpr Set c {4};

} // namespace

TEST(OptionSet, KnowsTheAlgebraOfSets)
{
    const auto both = Set {a, b};
    const auto other = Set {b, c};
    EXPECT_TRUE(both.contains(Set()) && both.contains(b) && !both.contains(other));
    EXPECT_TRUE(both.isSubset(Set {a, b, c}) && !both.isSubset(other));
    EXPECT_TRUE(both.isSuperset(a) && !both.isSuperset(other));
    EXPECT_TRUE(both.isDisjoint(c) && !both.isDisjoint(other));
    EXPECT_EQ((both | other).rawValue(), 7);
    EXPECT_EQ(both & other, b);
    EXPECT_EQ((both ^ other).rawValue(), 5);
    EXPECT_EQ(both.subtracting(other), a);

    auto changing = both;
    changing.insert(other);
    changing.remove(a);
    changing.remove(a);
    EXPECT_EQ(changing, other);
    EXPECT_EQ(Set(8 | 32).rawValue(), 40) << "bits without a name stay";
}
