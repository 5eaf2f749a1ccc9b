#include "Log.h"

#include <iostream>

#include <unistd.h>

#include "base/Notification.h"
#include "base/Text.h"

namespace boardweb {

void logLine(const std::string& text, bool isError) {
    const char* const start = isError && board::isJournal(STDERR_FILENO) ? "<3>" : "";
    // Written in one call, so that messages of several programs do not mix.
    std::cerr << start + ("boardweb: " + board::printable(text)) + "\n" << std::flush;
}

} // namespace boardweb
