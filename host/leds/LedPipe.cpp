#include "leds/LedPipe.h"

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <stdexcept>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <sched.h>
#include <sys/ioctl.h>
#include <sys/stat.h>

#include "base/Error.h"
#include "base/File.h"
#include "base/Text.h"

namespace board {

namespace {

constexpr char NOT_A_PIPE[] = "is not a pipe (expected a pipe or no file: remove it)";
/// After so many looks, a claim is tried again on what was rejected: its mode may have changed.
constexpr unsigned LOOKS_PER_TRY = 16;

[[noreturn]] void fail(const std::string& what) {
    throw Error(std::string(LED_PIPE) + ": " + what);
}

[[noreturn]] void failWithReason(const std::string& what) {
    failWith(LED_PIPE, what, errno);
}

/// None of these waits: the pipe's other end may be missing.
FileDescriptor tryOpenPipe(int flags) {
    return tryOpen(LED_PIPE, flags | O_NONBLOCK);
}

[[noreturn]] void failAsInUse() {
    throw LedPipeInUse(std::string(LED_PIPE) +
                       ": the pipe is in use: another LED service reads it");
}

void checkWord(const std::string& word) {
    if (word.empty())
        throw std::invalid_argument("an empty word can't be sent");
    if (std::any_of(word.begin(), word.end(), [](char c) {
            const auto byte = static_cast<unsigned char>(c);
            return byte <= 0x20 || byte == 0x7F;
        }))
        throw std::invalid_argument(
            "the word '" + word +
            "' can't be sent (expected one without blanks and control characters)");
}

/// What the path's mode allows; nothing if it can't be examined.
mode_t permissionsOfPipe() {
    std::error_code error;
    const auto status = std::filesystem::status(LED_PIPE, error);
    return error ? 0 : static_cast<mode_t>(status.permissions());
}

std::string writersOf(mode_t permissions) {
    if ((permissions & S_IWOTH) != 0)
        return "everybody";
    return (permissions & S_IWGRP) != 0 ? "its owner and group" : "its owner alone";
}

/// The writing end of the pipe, for one line.
FileDescriptor openToSend() {
    const FileKind kind = kindOf(std::string(LED_PIPE));
    if (kind == FileKind::MISSING) {
        if (errno == ENOENT)
            fail("the pipe does not exist, so no LED service is running (`boardctl run` starts "
                 "one)");
        failWithReason("can't examine the pipe");
    }
    if (kind != FileKind::PIPE)
        fail(NOT_A_PIPE);
    FileDescriptor pipe = tryOpenPipe(O_WRONLY);
    if (!pipe.isOpen()) {
        if (errno == ENXIO)
            fail("nobody reads the pipe, so no LED service is running (`boardctl run` starts one)");
        if (errno == EACCES)
            fail("no permission to write: " + writersOf(permissionsOfPipe()) + " may");
        failWithReason("can't open the pipe");
    }
    if (kindOf(pipe) != FileKind::PIPE)
        fail(NOT_A_PIPE);
    return pipe;
}

/// True if this sender alone may look and write now. Its turn ends when it closes the pipe. The
/// lock is a record lock, because the reader keeps the pipe locked with flock.
bool tryTakeTurn(const FileDescriptor& pipe) {
    struct flock turn {};
    turn.l_type = F_WRLCK;
    turn.l_whence = SEEK_SET;
    if (::fcntl(pipe.number(), F_OFD_SETLK, &turn) == 0)
        return true;
    if (errno != EAGAIN)
        failWithReason("can't lock the pipe");
    return false;
}

/// Writes the bytes if it is this sender's turn and the pipe holds at most `mostWaiting` unread
/// bytes. Otherwise returns false. Opens the pipe for each try, because its reader may have ended
/// or replaced it.
bool trySend(const std::string& bytes, std::size_t mostWaiting) {
    const FileDescriptor pipe = openToSend();
    if (!tryTakeTurn(pipe))
        return false;
    int waiting = 0;
    if (::ioctl(pipe.number(), FIONREAD, &waiting) != 0)
        failWithReason("can't examine the pipe");
    if (static_cast<std::size_t>(waiting) > mostWaiting)
        return false;
    const ssize_t written = tryWrite(pipe, bytes.data(), bytes.size());
    if (written != static_cast<ssize_t>(bytes.size())) // writes up to PIPE_BUF are atomic
        failWithReason("can't write to the pipe");
    return true;
}

/// False if the kernel has no such setting.
bool isSwitchedOff(const std::string& setting) {
    return tryReadLine("/proc/sys/fs/" + setting) == "0";
}

} // namespace

std::string ledLine(const std::string& word1, const std::string& word2,
                    std::optional<std::int32_t> number) {
    checkWord(word1);
    checkWord(word2);
    std::string line = word1 + " " + word2 + (number ? " " + std::to_string(*number) : "");
    if (line.size() + 1 > MAX_LED_LINE)
        throw std::invalid_argument("the line has " + std::to_string(line.size()) +
                                    " bytes (expected at most " + std::to_string(MAX_LED_LINE - 1) +
                                    ")");
    return line;
}

void sendLedLine(const std::string& line) {
    constexpr int MOST_TRIES = 100; // a turn lasts some microseconds
    for (int tries = 0; tries < MOST_TRIES; ++tries) {
        if (trySend(line + "\n", MAX_LED_LINE - line.size() - 1))
            return;
        ::sched_yield();
    }
    fail("the pipe holds lines that its reader has not read yet, and '" + line + "' does not fit");
}

void sendLedLineInTurn(const std::string& line, const std::function<bool()>& pause) {
    for (unsigned pauses = 0; pauses < LED_TURN_TICKS * LED_PAUSES_PER_TICK; ++pauses) {
        if (trySend(line + "\n", 0))
            return;
        if (!pause())
            fail("'" + line + "' was not sent: interrupted before its turn came");
    }
    fail("'" + line + "' was not sent: its turn did not come in " + std::to_string(LED_TURN_TICKS) +
         " ticks (the pipe's reader can't keep up)");
}

LedPipeClaim::LedPipeClaim() {
    // Created here as the sequencer would create it, so that there is something to lock.
    if (!tryMakePipe(LED_PIPE, 0666) && errno != EEXIST)
        failWithReason("can't create the pipe");
    {
        const FileDescriptor writer = tryOpenPipe(O_WRONLY);
        if (writer.isOpen() && kindOf(writer) == FileKind::PIPE)
            failAsInUse();
    }
    m_reader = tryOpenPipe(O_RDONLY);
    if (!m_reader.isOpen())
        failWithReason("can't open the pipe");
    if (kindOf(m_reader) != FileKind::PIPE)
        fail(NOT_A_PIPE);
    if (!tryLock(m_reader))
        failAsInUse();
    m_writer = tryOpenPipe(O_WRONLY);
    m_identity = tryIdentify(m_reader);
    m_writers = writersOf(permissionsOf(m_reader));
}

std::optional<std::string> LedPipeClaim::loss() const {
    const std::optional<FileIdentity> found = tryIdentify(LED_PIPE);
    if (!found)
        return std::string(LED_PIPE) +
               (errno == ENOENT ? ": was removed" : ": can't be examined: " + reasonOf(errno));
    if (found == m_identity)
        return std::nullopt;
    return std::string(LED_PIPE) + ": was replaced";
}

LedPipeKeeper::LedPipeKeeper(EventQueue& events) : m_events(events) {
    try {
        m_claim.emplace();
    } catch (const LedPipeInUse& error) {
        m_fault = error.what();
        m_isLeftToOthers = true;
    } catch (const Error& error) {
        m_fault = error.what();
        m_rejected = tryIdentify(LED_PIPE);
    }
}

std::optional<std::string> LedPipeKeeper::writers() const {
    return m_fault ? std::nullopt : std::optional(m_claim->writers());
}

bool LedPipeKeeper::look() {
    if (m_isLeftToOthers)
        return false;
    std::optional<std::string> loss;
    if (m_claim && !(loss = m_claim->loss())) {
        if (m_fault) { // somebody has put the claimed pipe back
            m_fault.reset();
            m_events.push(event::LedPipeBack{m_claim->writers()});
        }
        return false;
    }
    if (m_fault && m_rejected == tryIdentify(LED_PIPE) && ++m_looks % LOOKS_PER_TRY != 0)
        return false;
    std::string fault;
    try {
        LedPipeClaim claim;
        if (!m_fault)
            m_events.push(event::LedPipeGone{loss.value()});
        m_claim = std::move(claim);
        m_fault.reset();
        m_events.push(event::LedPipeBack{m_claim->writers()});
        return true;
    } catch (const Error& error) {
        fault = error.what();
    }
    m_rejected = tryIdentify(LED_PIPE);
    if (m_fault != fault)
        m_events.push(event::LedPipeGone{fault});
    m_fault = fault;
    return false;
}

std::optional<std::string> ledPipeRisk() {
    std::vector<std::string> unprotected;
    for (const std::string setting : {"protected_symlinks", "protected_fifos"})
        if (isSwitchedOff(setting))
            unprotected.push_back("fs." + setting);
    if (unprotected.empty())
        return std::nullopt;
    return "another user could put a link or a pipe in the place of " + std::string(LED_PIPE) +
           " (expected 1 in " + join(unprotected) + ")";
}

} // namespace board
