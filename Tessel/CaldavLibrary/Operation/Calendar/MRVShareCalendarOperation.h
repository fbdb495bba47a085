#pragma once

#include "Tessel/CaldavLibrary/Models/MRVCalendar.h"
#include "Tessel/CaldavLibrary/Operation/MRVWriteOperation.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace Tessel {

/// Invites people to a calendar, changes their access or withdraws the share, with one POST to the
/// calendar (the "calendarserver.org" sharing extension). What happens to a sharee depends on its
/// `status`: `noResponse` is invited with its `access`, `deleted` is removed, `accepted` and
/// `declined` are left alone. The request is sent even when nobody is left to name.
class MRVShareCalendarOperation final : public MRVWriteOperation {
public:
    std::shared_ptr<MRVCalendar> calendar;
    std::vector<std::shared_ptr<MRVSharee>> users;
    /// Called once, without an error, when the server answers 200. Not called for every other
    /// answer, 204 included, after a transport error, or without the client's auth delegate.
    std::function<void(std::optional<Error>)> completion;

    void main() override;

protected:
    void read(const Data& data, const std::optional<Error>& error,
        std::optional<int> statusCode) override;

private:
    std::string body() const;
};

} // namespace Tessel
