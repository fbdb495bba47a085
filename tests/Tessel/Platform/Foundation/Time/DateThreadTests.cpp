#include "Tessel/Platform/Foundation/Time/DateFormatter.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

#include <unicode/locid.h>

using namespace Tessel;

TEST(DateThreads, ZonesAndFormattersAreSharedSafely)
{
    std::atomic<int> wrong {0};
    std::atomic<bool> stop {false};
    std::thread host([&] {
        for (int i = 0; !stop; ++i) {
            UErrorCode status = U_ZERO_ERROR;
            icu::Locale::setDefault(icu::Locale(i % 2 ? "de_DE" : "en_US"), status);
        }
    });
    const auto work = [&] {
        const char* const names[] = {"Europe/Berlin", "America/New_York", "Asia/Kathmandu",
            "Australia/Lord_Howe", "Pacific/Apia", "Europe/Atlantis"};
        for (int i = 0; i < 3000; ++i) {
            const auto zone = TimeZone::withIdentifier(names[i % 6]).value_or(TimeZone::local());
            const auto date
                = DateFormatter::date("20240702T243000", "YYYYMMdd'T'kkmmss", zone).value();
            if (DateFormatter::string(date, "YYYYMMdd'T'kkmmss", zone) != "20240702T243000")
                ++wrong;
        }
    };
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i)
        threads.emplace_back(work);
    for (auto& thread : threads)
        thread.join();
    stop = true;
    host.join();
    EXPECT_EQ(wrong, 0);
}
