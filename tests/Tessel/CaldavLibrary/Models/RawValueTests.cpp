#include "Tessel/CaldavLibrary/Models/MRVAccountType.h"
#include "Tessel/CaldavLibrary/Models/MRVAlarmAction.h"
#include "Tessel/CaldavLibrary/Models/MRVCalendarComponents.h"
#include "Tessel/CaldavLibrary/Models/MRVCalendarPrivileges.h"
#include "Tessel/CaldavLibrary/Models/MRVInviteStatus.h"
#include "Tessel/CaldavLibrary/Models/MRVNotificationType.h"
#include "Tessel/CaldavLibrary/Models/MRVSharedCalendarAccess.h"
#include "Tessel/CaldavLibrary/Operation/MRVStatusCode.h"

#include <gtest/gtest.h>

#include <limits>
#include <set>

using namespace Tessel;

namespace {

/// The raw values that `fromRawValue` takes, among many that a host's store could hold.
template <class E> std::set<int> rawValuesOf()
{
    std::set<int> taken;
    for (int value = -1000; value <= 1000; ++value) {
        if (const auto made = fromRawValue<E>(value)) taken.insert(rawValue(*made));
    }
    EXPECT_FALSE(fromRawValue<E>(std::numeric_limits<int>::min()));
    EXPECT_FALSE(fromRawValue<E>(std::numeric_limits<int>::max()));
    return taken;
}

} // namespace

TEST(RawValue, MakesNothingButTheCases)
{
    using Values = std::set<int>;
    EXPECT_EQ(rawValuesOf<MRVAccountType>(), (Values {0, 1, 2}));
    EXPECT_EQ(rawValuesOf<MRVAlarmAction>(), (Values {0, 1, 2}));
    EXPECT_EQ(rawValuesOf<MRVInviteStatus>(), (Values {0, 1, 2, 3}));
    EXPECT_EQ(rawValuesOf<MRVNotificationType>(), (Values {0, 1, 2}));
    EXPECT_EQ(rawValuesOf<MRVSharedCalendarAccess>(), (Values {0, 1}));
    EXPECT_EQ(rawValuesOf<MRVStatusCode>(), (Values {0, 200, 201, 204, 207, 401, 403, 404}));
}

TEST(OptionSet, KnowsTheAlgebraOfSets)
{
    using Set = MRVCalendarComponents;
    const auto both = Set {Set::event, Set::todo};
    const auto other = Set {Set::todo, Set::journal};
    EXPECT_EQ((Set {Set::none, Set::event, Set::todo, Set::journal}), Set::all);
    EXPECT_TRUE(both.contains(Set()) && both.contains(Set::todo) && !both.contains(other));
    EXPECT_TRUE(both.isSubset(Set::all) && !Set::all.isSubset(both));
    EXPECT_TRUE(Set::all.isSuperset(both) && !both.isSuperset(Set::all));
    EXPECT_TRUE(both.isDisjoint(Set::journal) && !both.isDisjoint(other));
    EXPECT_EQ((both | other).rawValue(), 14);
    EXPECT_EQ(both & other, Set::todo);
    EXPECT_EQ((both ^ other).rawValue(), 10);
    EXPECT_EQ(both.subtracting(other), Set::event);

    auto changing = both;
    changing.insert(other);
    changing.remove(Set::event);
    changing.remove(Set::event);
    EXPECT_EQ(changing, other);
    EXPECT_EQ(MRVCalendarPrivileges(8 | 32).rawValue(), 40) << "bits without a name stay";
}
