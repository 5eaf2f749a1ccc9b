#include "TYTime.h"

#include <cerrno>
#include <cstring>
#include <ctime>

#include "String.h"

XCode TYTime::getSystemClock(unsigned source) {
    if (source != SYSTEM_CLOCK && source != MONOTONIC_CLOCK)
        return XCode(XCode::FAILURE, String::format("NO CLOCK SOURCE %u", source));
    timespec now{};
    if (clock_gettime(source == SYSTEM_CLOCK ? CLOCK_REALTIME : CLOCK_MONOTONIC, &now) != 0)
        return XCode(XCode::FAILURE,
                     String::format("FAILED TO READ CLOCK: %s", std::strerror(errno)));
    seconds = static_cast<std::uint32_t>(now.tv_sec);
    nanoseconds = static_cast<std::uint32_t>(now.tv_nsec);
    return XCode();
}

TYTime operator-(const TYTime& later, const TYTime& earlier) {
    constexpr std::uint32_t SECOND = 1000000000;
    const bool borrow = later.nanoseconds < earlier.nanoseconds;
    return TYTime(later.seconds - earlier.seconds - (borrow ? 1U : 0U),
                  later.nanoseconds - earlier.nanoseconds + (borrow ? SECOND : 0U));
}
