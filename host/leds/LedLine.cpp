#include "leds/LedLine.h"

#include <algorithm>
#include <cerrno>
#include <stdexcept>
#include <vector>

#include <fcntl.h>
#include <sched.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "base/Error.h"
#include "base/File.h"
#include "leds/LedPipe.h"

namespace board {

namespace {

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

/// True if this user is a member of the group.
bool isMember(gid_t group) {
    std::vector<gid_t> groups(static_cast<std::size_t>(std::max(0, ::getgroups(0, nullptr))));
    const int count = ::getgroups(static_cast<int>(groups.size()), groups.data());
    groups.resize(static_cast<std::size_t>(std::max(0, count)));
    return group == ::getegid() || std::find(groups.begin(), groups.end(), group) != groups.end();
}

/// Rejects a pipe that a stranger may have put there.
void expectKnownOwner(const FileStatus& pipe, const std::string& group) {
    if (pipe.owner == 0 || pipe.owner == ::geteuid())
        return;
    const bool isOfGroup =
        isMember(pipe.group) || (!group.empty() && tryFindGroup(group) == pipe.group);
    if (!isOfGroup || (pipe.mode & S_IWGRP) == 0)
        failAtLedPipe("belongs to user " + std::to_string(pipe.owner) +
                      ", who may be a stranger, so nothing is sent (expected a pipe of root or of "
                      "this user, or one that a group of this user or of the profile may write)");
}

/// The writing end of the pipe, for one line.
FileDescriptor openToSend(const std::string& group) {
    const std::optional<FileStatus> found = tryExamine(LED_PIPE);
    if (!found) {
        if (errno == ENOENT)
            failAtLedPipe("the pipe does not exist, so no LED service is running (`boardctl run` "
                          "starts one)");
        failWith(LED_PIPE, "can't examine the pipe", errno);
    }
    expectLedPipe(*found);
    FileDescriptor pipe = tryOpenLedPipe(O_WRONLY);
    if (!pipe.isOpen()) {
        if (errno == ENXIO)
            failAtLedPipe("nobody reads the pipe, so no LED service is running (`boardctl run` "
                          "starts one)");
        if (errno == EACCES)
            failAtLedPipe("no permission to write: " + ledWritersOf(found->mode) + " may");
        failWith(LED_PIPE, "can't open the pipe", errno);
    }
    const std::optional<FileStatus> opened = tryExamine(pipe);
    if (!opened)
        failWith(LED_PIPE, "can't examine the pipe", errno);
    expectLedPipe(*opened); // the path may lead to another file by now
    expectKnownOwner(*opened, group);
    return pipe;
}

/// True if only this sender may check the pipe and write to it now. The turn ends when the sender
/// closes the pipe. Uses a record lock, which does not conflict with the flock that a host without
/// its own lock file holds on the pipe.
bool tryTakeTurn(const FileDescriptor& pipe) {
    struct flock turn {};
    turn.l_type = F_WRLCK;
    turn.l_whence = SEEK_SET;
    if (::fcntl(pipe.number(), F_OFD_SETLK, &turn) == 0)
        return true;
    if (errno != EAGAIN)
        failWith(LED_PIPE, "can't lock the pipe", errno);
    return false;
}

enum class Turn { NEEDED, NOT_NEEDED };

/// Writes the bytes if the pipe holds at most `mostWaiting` unread bytes and this sender has its
/// turn or needs none. Otherwise returns false. Opens the pipe for each try, because its reader may
/// have ended or replaced it.
bool trySend(const std::string& bytes, std::size_t mostWaiting, const std::string& group,
             Turn turn = Turn::NEEDED) {
    const FileDescriptor pipe = openToSend(group);
    if (turn == Turn::NEEDED && !tryTakeTurn(pipe))
        return false;
    int waiting = 0;
    if (::ioctl(pipe.number(), FIONREAD, &waiting) != 0)
        failWith(LED_PIPE, "can't examine the pipe", errno);
    if (static_cast<std::size_t>(waiting) > mostWaiting)
        return false;
    const ssize_t written = tryWrite(pipe, bytes.data(), bytes.size());
    if (written != static_cast<ssize_t>(bytes.size())) // writes up to PIPE_BUF are atomic
        failWith(LED_PIPE, "can't write to the pipe", errno);
    return true;
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

void sendLedLine(const std::string& line, const std::string& group) {
    constexpr int MOST_TRIES = 100; // a turn lasts some microseconds
    for (int tries = 0; tries < MOST_TRIES; ++tries) {
        if (trySend(line + "\n", MAX_LED_LINE - line.size() - 1, group))
            return;
        ::sched_yield();
    }
    // Somebody who may write to the pipe could keep the turn for good, so write without a turn. The
    // line is written in one piece anyway.
    if (trySend(line + "\n", MAX_LED_LINE - line.size() - 1, group, Turn::NOT_NEEDED))
        return;
    failAtLedPipe("the pipe holds lines that its reader has not read yet, and '" + line +
                  "' does not fit");
}

void sendLedLineInTurn(const std::string& line, const std::function<bool()>& pause,
                       const std::string& group) {
    for (unsigned pauses = 0; pauses < LED_TURN_TICKS * LED_PAUSES_PER_TICK; ++pauses) {
        if (trySend(line + "\n", 0, group))
            return;
        if (!pause())
            failAtLedPipe("'" + line + "' was not sent: interrupted before its turn came");
    }
    failAtLedPipe("'" + line + "' was not sent: its turn did not come in " +
                  std::to_string(LED_TURN_TICKS) + " ticks (the pipe's reader can't keep up)");
}

} // namespace board
