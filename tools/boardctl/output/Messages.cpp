#include "output/Messages.h"

#include <cerrno>
#include <cstdio>
#include <iostream>
#include <utility>

#include <unistd.h>

#include "base/File.h"
#include "base/Notification.h"
#include "base/Text.h"
#include "program/StopSignals.h"

namespace boardctl {

namespace {

int outputError = 0; ///< the `errno` of the first write that failed

template <class Write>
auto watched(Write write, decltype(write()) failure) -> decltype(write()) {
    errno = 0;
    const auto result = write();
    // A line-buffered stream may keep what it could not write and report success.
    if ((result == failure || std::ferror(stdout) != 0) && outputError == 0)
        outputError = errno;
    return result;
}

} // namespace

OutputWatch::OutputWatch() : m_output(std::cout.rdbuf(this)) {}

OutputWatch::~OutputWatch() {
    std::cout.rdbuf(m_output);
}

OutputWatch::int_type OutputWatch::overflow(int_type character) {
    return watched([&] { return m_output->sputc(traits_type::to_char_type(character)); },
                   traits_type::eof());
}

std::streamsize OutputWatch::xsputn(const char* text, std::streamsize size) {
    const auto isWhole = [&] { return m_output->sputn(text, size) == size; };
    return watched(isWhole, false) ? size : 0;
}

int OutputWatch::sync() {
    return watched([&] { return m_output->pubsync(); }, -1);
}

void complain(const std::string& what) {
    if (!StopSignals::waitWritable(STDERR_FILENO))
        return;
    static const bool isJournal = board::isJournal(STDERR_FILENO);
    // Written in one call, so that messages of several programs do not mix.
    std::cerr << (isJournal ? "<3>boardctl: " : "boardctl: ") + board::printable(what) + "\n";
}

bool flushOutput() {
    if (std::cout.flush() && std::ferror(stdout) == 0)
        return true;
    static bool isTold = false;
    if (!std::exchange(isTold, true) &&
        !StopSignals::isAsked()) // a write that a stop signal interrupted is not an error
        complain(std::string("can't write to standard output") +
                 (outputError != 0 ? ": " + board::reasonOf(outputError) : ""));
    return false;
}

} // namespace boardctl
