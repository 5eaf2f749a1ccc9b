#include "leds/LedPipe.h"

#include <cerrno>

#include <fcntl.h>
#include <grp.h>
#include <sys/stat.h>
#include <unistd.h>

#include "String.h"
#include "base/File.h"
#include "base/Text.h"
#include "devices/PipeReaders.h"

namespace board {

namespace {

constexpr mode_t PERMISSIONS = 0777, OTHERS = 0007, READ_BY_OTHERS = 0044;

[[noreturn]] void failWithReason(const std::string& what) {
    failWith(LED_PIPE, what, errno);
}

[[noreturn]] void failAsInUse(const std::string& reader = "another LED service reads it") {
    throw LedPipeInUse(std::string(LED_PIPE) + ": the pipe is in use: " + reader);
}

std::string octal(mode_t mode) {
    return String::format("%o", static_cast<unsigned>(mode & PERMISSIONS)).c_str();
}

/// Whoever may write to a folder may replace the files in it, unless the folder is sticky.
void expectSafeFolder() {
    const std::string folder = folderOf(LED_PIPE); // with the final slash, a link is followed
    const std::optional<FileStatus> found = tryExamine(folder);
    if (!found)
        failWith(folder, "can't examine the folder", errno);
    if ((found->mode & (S_IWGRP | S_IWOTH)) != 0 && (found->mode & S_ISVTX) == 0)
        failAtLedPipe("other users could replace the pipe, because its folder has the mode " +
                      octal(found->mode) + " (expected a sticky folder: `chmod +t " + folder +
                      "`)");
}

/// In a sticky folder, only root and the owners of the pipe and the folder can replace the pipe.
void expectOwned(const FileStatus& found) {
    expectLedPipe(found);
    if (found.owner != 0 && found.owner != ::geteuid())
        failAtLedPipe("belongs to user " + std::to_string(found.owner) +
                      " (expected a pipe of root or of this user: remove it)");
}

FileStatus examinePipe() {
    const std::optional<FileStatus> found = tryExamine(LED_PIPE);
    if (!found)
        failWithReason("can't examine the pipe");
    expectOwned(*found);
    return *found;
}

bool hasReader() {
    return tryOpenLedPipe(O_WRONLY).isOpen();
}

/// Removes the pipe if this user owns it, its mode let other users read it, and no process of this
/// user is reading it. Otherwise throws LedPipeInUse, because the reader is, or could be, another
/// LED service.
void removeFromStranger(const FileStatus& found) {
    const std::optional<FileIdentity> pipe = tryIdentify(LED_PIPE);
    if ((found.mode & READ_BY_OTHERS) == 0 || !pipe)
        failAsInUse();
    const std::optional<bool> isReadByOwn = isReadByThisUser(*pipe);
    if (isReadByOwn == true)
        failAsInUse();
    if (!isReadByOwn || found.owner != ::geteuid())
        failAsInUse("another program reads it, an LED service or a stranger (expected no other "
                    "reader: end that program or remove the pipe)");
    const std::string fault = discard(LED_PIPE);
    if (!fault.empty())
        failAtLedPipe("another user reads its commands" + fault);
}

gid_t numberOf(const std::string& group) {
    const std::optional<gid_t> number = tryFindGroup(group);
    if (!number)
        failAtLedPipe("this machine has no group '" + group + "', which the profile names");
    return *number;
}

/// Gives the pipe the mode and group that it should have. False if nothing had to change.
bool correct(const FileStatus& found, const std::string& group) {
    constexpr mode_t OF_GROUP = 0620;
    const mode_t mode = found.mode & PERMISSIONS;
    const gid_t number = group.empty() ? found.group : numberOf(group);
    const mode_t wanted = group.empty() ? mode & ~READ_BY_OTHERS : OF_GROUP;
    if (mode == wanted && found.group == number)
        return false;
    if (found.owner != ::geteuid()) {
        // Accepted: root has made the pipe for the group, whose members may read it.
        if (!group.empty() && found.group == number && (mode & OTHERS) == 0)
            return false;
        failAtLedPipe("belongs to root, and its group is " + std::to_string(found.group) +
                      " and its mode " + octal(mode) +
                      (group.empty() ? ", so others could read commands (expected a pipe that only "
                                       "its owner can read)"
                                     : " (expected the group '" + group +
                                           "' in the profile, and nothing for others)"));
    }
    if (found.group != number && !trySetGroup(LED_PIPE, number))
        failWithReason("can't give the pipe to the group '" + group + "'");
    if (!trySetMode(LED_PIPE, wanted))
        failWithReason("can't set the mode of the pipe");
    return true;
}

/// Creates the pipe if it is missing. Returns the pipe's status.
FileStatus makePipe(const std::string& group) {
    constexpr mode_t ANY_WRITER = 0622, OWNER = 0600;
    if (!tryMakePipe(LED_PIPE, group.empty() ? ANY_WRITER : OWNER) && errno != EEXIST)
        failWithReason("can't create the pipe");
    return examinePipe();
}

/// False also if the kernel has no such setting.
bool isSwitchedOff(const char* setting) {
    return tryReadLine(std::string("/proc/sys/fs/") + setting) == "0";
}

} // namespace

LedPipeClaim::LedPipeClaim(const std::string& group) {
    expectSafeFolder();
    const FileStatus found = makePipe(group);
    // A stranger may have opened the pipe before its mode was corrected.
    if (hasReader() || (correct(found, group) && hasReader())) {
        removeFromStranger(found);
        correct(makePipe(group), group);
    }
    if ((found.mode & READ_BY_OTHERS) != 0 && found.owner == ::geteuid())
        m_correction = std::string(LED_PIPE) + ": others could read commands (mode " +
                       octal(found.mode) + "); now only its owner can";
    m_reader = tryOpenLedPipe(O_RDONLY);
    if (!m_reader.isOpen())
        failWithReason("can't open the pipe");
    const std::optional<FileStatus> opened = tryExamine(m_reader);
    if (!opened)
        failWithReason("can't examine the pipe");
    expectOwned(*opened);
    // Not a lock on the pipe itself: everybody who may write to it could hold that lock.
    if (!m_lock.tryTake(m_reader))
        failAsInUse();
    m_writer = tryOpenLedPipe(O_WRONLY);
    m_identity = tryIdentify(m_reader);
    m_writers = ledWritersOf(opened->mode);
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

std::optional<std::string> ledPipeRisk() {
    const bool canLink = isSwitchedOff("protected_symlinks"),
               canPlant = isSwitchedOff("protected_fifos");
    if (!canLink && !canPlant)
        return std::nullopt;
    const std::string settings = std::string(canLink ? "fs.protected_symlinks" : "") +
                                 (canLink && canPlant ? ", " : "") +
                                 (canPlant ? "fs.protected_fifos" : "");
    return "while " + std::string(LED_PIPE) + " is missing, another user could put a " +
           (canLink && canPlant ? "link or a pipe"
            : canLink           ? "link"
                                : "pipe") +
           " in its place, and a shell would write lines there (expected 1 in " + settings + ")";
}

void failAtLedPipe(const std::string& what) {
    throw Error(std::string(LED_PIPE) + ": " + what);
}

void expectLedPipe(const FileStatus& found) {
    if (S_ISLNK(found.mode))
        failAtLedPipe("is a symbolic link (expected a pipe or no file: remove it)");
    if (kindOf(found.mode) != FileKind::PIPE)
        failAtLedPipe("is not a pipe (expected a pipe or no file: remove it)");
}

FileDescriptor tryOpenLedPipe(int flags) {
    return tryOpen(LED_PIPE, flags | O_NONBLOCK | O_NOFOLLOW);
}

std::string ledWritersOf(mode_t mode) {
    if ((mode & S_IWOTH) != 0)
        return "everybody";
    return (mode & S_IWGRP) != 0 ? "its owner and group" : "its owner alone";
}

std::optional<gid_t> tryFindGroup(const std::string& name) {
    const struct group* const found = ::getgrnam(name.c_str());
    return found ? std::optional(found->gr_gid) : std::nullopt;
}

} // namespace board
