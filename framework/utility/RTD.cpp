#include "RTD.h"

#include <algorithm>
#include <cstdlib>
#include <string>

#include <unistd.h>

#include "TYThread.h"

namespace RTD {

LogSink::~LogSink() = default;
Monitor::~Monitor() = default;

namespace {

int highestLevel() {
    static const int highest = [] {
        const char* const set = std::getenv("BOARD_LOG_LEVEL");
        const bool isNumber = set && (set[0] == '-' || (set[0] >= '0' && set[0] <= '9'));
        return isNumber ? String(set).toInteger() : 3;
    }();
    return highest;
}

void writeToStandardError(const String& category, int level, const String& text) {
    // Writes each line with one call, so that lines of several threads and processes do not mix.
    std::string line = String::format("%s %d: %s", category.c_str(), level, text.c_str()).c_str();
    // A text may quote a file, and a terminal would obey control characters in the quotation.
    std::replace_if(
        line.begin(), line.end(), [](unsigned char c) { return c < ' ' || c == 0x7F; }, '?');
    line += '\n';
    if (::write(STDERR_FILENO, line.data(), line.size()) < 0)
        return; // there is nowhere to report the failure
}

std::atomic<LogSink*> currentSink{nullptr};

} // namespace

void VSYSLOG(const String& category, int level, const char* format, ...) {
    LogSink* const sink = currentSink.load(std::memory_order_acquire);
    if (!sink && level > highestLevel())
        return; // before formatting, so that suppressed traces cost almost nothing
    va_list arguments;
    va_start(arguments, format);
    const String text = String::vformat(format, arguments);
    va_end(arguments);
    // The thread must not be stopped in a sink, which is host code.
    const TYThread::Undisturbed undisturbed;
    if (sink)
        sink->write(category, level, text);
    else
        writeToStandardError(category, level, text);
}

LogSink* SET_LOG_SINK(LogSink* sink) {
    return currentSink.exchange(sink, std::memory_order_acq_rel);
}

} // namespace RTD

std::atomic<RTD::Monitor*> MON_EVENT{nullptr};
