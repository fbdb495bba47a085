#include "CaldavLibrary/Models/MRVAccountType.h"
#include "CaldavLibrary/Models/MRVAlarmAction.h"
#include "CaldavLibrary/Models/MRVCalendarComponents.h"
#include "CaldavLibrary/Models/MRVCalendarPrivileges.h"
#include "CaldavLibrary/Models/MRVCalendarSharingMode.h"
#include "CaldavLibrary/Models/MRVInviteStatus.h"
#include "CaldavLibrary/Models/MRVNotificationType.h"
#include "CaldavLibrary/Models/MRVSharedCalendarAccess.h"
#include "CaldavLibrary/Operation/MRVStatusCode.h"

#include <gtest/gtest.h>

#include <limits>
#include <set>

using namespace Tessel;

namespace {

/// The raw values that `fromRawValue` takes, among many that a host's store could hold.
template <class E> std::set<int> rawValuesOf()
{
    std::set<int> taken;
    const auto attempt = [&taken](int value) {
        const auto made = fromRawValue<E>(value);
        if (!made) return;
        EXPECT_EQ(rawValue(*made), value);
        taken.insert(value);
    };
    for (int value = -1000; value <= 1000; ++value)
        attempt(value);
    attempt(std::numeric_limits<int>::min());
    attempt(std::numeric_limits<int>::max());
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
    EXPECT_EQ(both.rawValue(), 6);
    EXPECT_EQ(Set().rawValue(), 0);
    EXPECT_TRUE(Set().isEmpty());
    EXPECT_EQ((Set {Set::none, Set::event, Set::todo, Set::journal}), Set::all);

    EXPECT_TRUE(both.contains(Set::todo));
    EXPECT_FALSE(both.contains(Set {Set::todo, Set::journal}));
    EXPECT_TRUE(both.contains(Set()));
    EXPECT_TRUE(both.isSubset(Set::all));
    EXPECT_FALSE(Set::all.isSubset(both));
    EXPECT_TRUE(Set::all.isSuperset(both));
    EXPECT_TRUE(both.isDisjoint(Set::journal));
    EXPECT_FALSE(both.isDisjoint(Set {Set::todo, Set::journal}));

    const auto other = Set {Set::todo, Set::journal};
    EXPECT_EQ((both | other).rawValue(), 14);
    EXPECT_EQ(both & other, Set::todo);
    EXPECT_EQ((both ^ other).rawValue(), 10);
    EXPECT_EQ(both.subtracting(other), Set::event);

    auto changing = both;
    changing.insert(Set::todo);
    changing.insert(Set::journal);
    changing.remove(Set::event);
    changing.remove(Set::event);
    EXPECT_EQ(changing, other);
}

TEST(OptionSet, KeepsBitsThatHaveNoName)
{
    EXPECT_EQ(MRVCalendarPrivileges(8 | 32).rawValue(), 40);
    EXPECT_TRUE(MRVCalendarPrivileges(1 | 2 | 4).contains(MRVCalendarPrivileges(2)));
    EXPECT_EQ(MRVCalendarSharingMode(-1).rawValue(), -1);
}
