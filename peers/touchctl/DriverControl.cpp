#include "peers/touchctl/DriverControl.h"

#include "TDNames.h"
#include "peers/DriverCommand.h"
#include "peers/touchctl/Services.h"

namespace kelvo::touchctl {

void performAtDriver(const Words& words) {
    using Outcome = DriverAnswer::Outcome;
    const DriverAnswer answer = performAndWait(platform::CFRunLoop::getCurrent(), words);
    switch (answer.outcome) {
    case Outcome::Done:
        return;
    case Outcome::Refused:
        throw Failure(Status::Failure, answer.text);
    case Outcome::NoBus:
        throw Failure(Status::NoDriver, "there is no session bus; run this in the session of the display's user, or "
                                        "set DBUS_SESSION_BUS_ADDRESS to that session's");
    case Outcome::NotRunning:
        if (answerOfPort(kTouchDisplayDriverPortName) != PortAnswer::NotRunning) {
            throw Failure(Status::NoDriver, "the driver that runs takes no commands; see its own documentation");
        }
        throw Failure(Status::NoDriver, "no driver runs; start the driver of the display, then try again");
    case Outcome::NotAnswering:
        break;
    }
    throw Failure(Status::NoDriver, "the driver does not answer; end it, start it again, then try again");
}

} // namespace kelvo::touchctl
