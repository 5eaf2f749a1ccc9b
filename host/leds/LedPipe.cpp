#include "leds/LedPipe.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <stdexcept>
#include <utility>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include "base/Error.h"

namespace board {

namespace {

[[noreturn]] void fail(const std::string& what) {
    throw Error(std::string(LED_PIPE) + ": " + what);
}

[[noreturn]] void failWithReason(const std::string& what) {
    fail(what + ": " + std::strerror(errno));
}

/// A descriptor that is closed with the object.
class Descriptor {
public:
    explicit Descriptor(int flags) : m_number(::open(LED_PIPE, flags | O_NONBLOCK | O_CLOEXEC)) {}
    ~Descriptor() {
        if (m_number >= 0)
            ::close(m_number);
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    int number() const { return m_number; }
    int release() { return std::exchange(m_number, -1); }
    bool isPipe() const {
        struct stat status {};
        return ::fstat(m_number, &status) == 0 && S_ISFIFO(status.st_mode);
    }

private:
    int m_number;
};

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

std::string writersOf(const struct stat& status) {
    if ((status.st_mode & S_IWOTH) != 0)
        return "everybody";
    return (status.st_mode & S_IWGRP) != 0 ? "its owner and group" : "its owner alone";
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
    const Descriptor pipe(O_WRONLY);
    if (pipe.number() < 0) {
        if (errno == ENOENT)
            fail("there is no such pipe: no LED service has run here (`boardctl run` starts one)");
        if (errno == ENXIO)
            fail("nobody reads the pipe: no LED service runs (`boardctl run` starts one)");
        failWithReason("can't open the pipe");
    }
    if (!pipe.isPipe())
        fail("is no pipe");
    const std::string bytes = line + "\n";
    const ssize_t written = ::write(pipe.number(), bytes.data(), bytes.size());
    if (written < 0 && errno == EAGAIN)
        fail("the pipe is full: its reader does not keep up");
    if (written != static_cast<ssize_t>(bytes.size())) // so few bytes go at once or not at all
        failWithReason("can't write to the pipe");
}

LedPipeClaim::LedPipeClaim() {
    // As the sequencer makes it, and before it, so that there is something to lock.
    if (::mknod(LED_PIPE, S_IFIFO | 0666, 0) != 0 && errno != EEXIST)
        failWithReason("can't make the pipe");
    {
        const Descriptor writer(O_WRONLY);
        if (writer.number() >= 0 && writer.isPipe())
            fail("the pipe is in use: another LED service reads it");
    }
    Descriptor reader(O_RDONLY);
    if (reader.number() < 0)
        failWithReason("can't open the pipe");
    struct stat status {};
    if (::fstat(reader.number(), &status) != 0 || !S_ISFIFO(status.st_mode))
        fail("is no pipe (expected one, or nothing)");
    if (::flock(reader.number(), LOCK_EX | LOCK_NB) != 0)
        fail("the pipe is in use: another LED service reads it");
    m_writers = writersOf(status);
    m_descriptor = reader.release();
}

LedPipeClaim::~LedPipeClaim() {
    ::close(m_descriptor);
}

std::string ledPipeRisk() {
    std::string unprotected;
    for (const std::string name : {"protected_symlinks", "protected_fifos"}) {
        int value = 0;
        std::ifstream file("/proc/sys/fs/" + name);
        if (file >> value && value == 0)
            unprotected += (unprotected.empty() ? "" : ", ") + ("fs." + name);
    }
    return unprotected.empty() ? unprotected
                               : "another user could put a link or a pipe in the place of " +
                                     std::string(LED_PIPE) + " (expected 1 in " + unprotected + ")";
}

} // namespace board
