#include "Tessel/CaldavLibrary/Parsers/MRVNotificationInfoParser.h"
#include "Tessel/CaldavLibrary/Parsers/MRVNotificationParser.h"
#include "fuzz/FuzzTarget.h"

namespace Tessel::Fuzz {

namespace {

/// No listing and no notification stops the process.
const Target notifications("notifications", [](std::string_view input) {
    const Data answer {std::string(input)};
    const auto account = std::make_shared<MRVAccount>();
    endsOrStopsFor({}, [&] {
        const auto infos = MRVNotificationInfoParser(answer, account).parseInfo();
        require(!infos || !infos->empty(), "an empty list is none");

        const auto note = MRVNotificationParser(answer, account).parseNote();
        if (!note) return;
        require(note->account == account, "a notification of nobody's account");
        require(note->isReply || note->status == MRVInviteStatus::noResponse
                || note->status == MRVInviteStatus::deleted,
            "an invitation is answered already");
    });
});

} // namespace

} // namespace Tessel::Fuzz
