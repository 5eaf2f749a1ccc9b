#include "client/UtcText.h"

#include <cstdio>
#include <ctime>

namespace board {

std::string utcText(const TYTime& time) {
    const auto seconds = static_cast<std::time_t>(time.seconds);
    std::tm parts{};
    ::gmtime_r(&seconds, &parts);
    char date[32], milliseconds[16];
    std::strftime(date, sizeof date, "%Y-%m-%dT%H:%M:%S", &parts);
    std::snprintf(milliseconds, sizeof milliseconds, ".%03uZ",
                  static_cast<unsigned>(time.nanoseconds / 1000000));
    return std::string(date) + milliseconds;
}

} // namespace board
