#include "Tessel/CaldavLibrary/Parsers/MRVAccountDetailsParser.h"
#include "Tessel/CaldavLibrary/Parsers/MRVEventDescriptorsParser.h"
#include "Tessel/CaldavLibrary/Parsers/MRVNotificationInfoParser.h"
#include "Tessel/CaldavLibrary/Parsers/MRVNotificationParser.h"
#include "Tessel/CaldavLibrary/Parsers/MRVPropertyParser.h"
#include "Tessel/Platform/Plinth/Logger.h"

#include <cstddef>
#include <cstdint>
#include <string>

namespace {

struct Silence final : Plinth::Logger {
    bool isEnabled(Plinth::Level) const override { return false; }
    void write(Plinth::Level, std::string_view, const Tessel::CallSite&) override { }
};

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    Plinth::setLogger(std::make_shared<Silence>());
    return 0;
}

/// Hands any bytes to the parsers of answers that stop the process for none.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const Tessel::Data answer(std::string(reinterpret_cast<const char*>(data), size));
    Tessel::MRVAccountDetailsParser(answer, nullptr).parseAccountDetails();
    Tessel::MRVEventDescriptorsParser(answer, nullptr).parseEventsDescription();
    Tessel::MRVPropertyParser(answer, nullptr).parseProperties();
    Tessel::MRVNotificationInfoParser(answer, nullptr).parseInfo();
    Tessel::MRVNotificationParser(answer, nullptr).parseNote();
    return 0;
}
