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
        throw Failure(Status::NoDriver, kNoBus);
    case Outcome::NotRunning:
        if (answerOfPort(kTouchDisplayDriverPortName) != PortAnswer::NotRunning) {
            throw Failure(Status::NoDriver, "the running driver takes no commands; see its documentation");
        }
        throw Failure(Status::NoDriver, kStartTheDriver);
    case Outcome::NotAnswering:
        break;
    }
    throw Failure(Status::NoDriver, hasSessionBus() ? kDriverDoesNotAnswer : kNoBus);
}

} // namespace kelvo::touchctl
