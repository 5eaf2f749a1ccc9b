#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <string_view>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "LedCtrl.h"
#include "LedLog.h"
#include "RTD.h"

using RTD::VSYSLOG;
using namespace ledlog;

namespace {

constexpr char FIFO_PATH[] = "/tmp/evt.fifo";
constexpr char TEST_TEXT[] = "test";
constexpr std::size_t READ_SIZE = 80;

/// Reads once from `descriptor` and holds the result as a text, empty if nothing could be read.
class Input {
public:
    explicit Input(int descriptor) {
        const ssize_t count = ::read(descriptor, m_buffer, READ_SIZE);
        m_buffer[count > 0 ? count : 0] = '\0';
        m_isEmpty = count < 1;
    }
    bool isEmpty() const { return m_isEmpty; }
    char* text() { return m_buffer; }

private:
    char m_buffer[READ_SIZE + 1];
    bool m_isEmpty;
};

/// The next word of `line`; empty if there is none. Moves `line` past the word.
std::string_view nextWord(const char*& line) {
    constexpr char BLANKS[] = " \t\n\v\f\r";
    line += std::strspn(line, BLANKS);
    const std::size_t length = std::strcspn(line, BLANKS);
    const std::string_view word(line, length);
    line += length;
    return word;
}

/// The decimal number at the start of `text`, clamped to 32 bits; 0 if there is none.
std::int32_t numberIn(const char* text) {
    const long number = std::strtol(text, nullptr, 10);
    if (number > INT32_MAX)
        return INT32_MAX;
    return number < INT32_MIN ? INT32_MIN : static_cast<std::int32_t>(number);
}

/// Opens the pipe. Does not follow a link in its place, because another user may have put it there.
int openFifo(int flags) {
    return ::open(FIFO_PATH, flags | O_NONBLOCK | O_NOFOLLOW | O_CLOEXEC);
}

/// The pipe's writing end; -1 on failure. Fails if the path is not a pipe, so that no other file is
/// overwritten.
int openFifoToWrite() {
    const int writer = openFifo(O_WRONLY);
    struct stat status {};
    if (writer < 0 || (::fstat(writer, &status) == 0 && S_ISFIFO(status.st_mode)))
        return writer;
    ::close(writer);
    return -1;
}

/// Closes a descriptor that an earlier start of the service left open.
void closeFormer(std::int32_t& descriptor) {
    if (descriptor > 0)
        ::close(descriptor);
    descriptor = 0;
}

} // namespace

void LedCtrl::setupFifo() {
    closeFormer(m_fifoFd);
    if (::mknod(FIFO_PATH, S_IFIFO | 0666, 0) != 0 && errno != EEXIST)
        VSYSLOG(CATEGORY, ERROR, "error mknod: %s", std::strerror(errno));
    m_fifoFd = openFifo(O_RDONLY);
    if (m_fifoFd < 0)
        VSYSLOG(CATEGORY, ERROR, "error open: %s", std::strerror(errno));
}

void LedCtrl::testFifo() {
    // Left open on purpose: while this writer exists, a read of the empty pipe returns "no data",
    // not "end of file", after the last client has closed the pipe.
    const int writer = openFifoToWrite();
    if (writer < 0) {
        VSYSLOG(CATEGORY, ERROR, "error open - test fifo: ");
        return;
    }
    const ssize_t written = ::write(writer, TEST_TEXT, sizeof TEST_TEXT - 1);
    if (written != sizeof TEST_TEXT - 1)
        VSYSLOG(CATEGORY, ERROR, "write size %x", static_cast<unsigned>(written));
    if (std::strcmp(Input(m_fifoFd).text(), TEST_TEXT) != 0)
        VSYSLOG(CATEGORY, ERROR, "test fifo error");
}

void LedCtrl::openFiles() {
    for (auto& [mask, file] : m_files) {
        closeFormer(file.fd);
        // O_NONBLOCK has no effect on the kernel's LED files. If the file is a pipe, the flag keeps
        // it from blocking the service.
        file.fd = ::open(file.fileName, O_RDWR | O_NONBLOCK | O_CLOEXEC);
        if (file.fd < 0)
            VSYSLOG(CATEGORY, ERROR, "unable to open file %s ", file.fileName);
    }
}

void LedCtrl::readLines(const std::function<void(char* line)>& handle) {
    if (m_fifoFd <= 0)
        return;
    Input input(m_fifoFd);
    if (input.isEmpty())
        return;
    char* rest = nullptr;
    for (char* line = ::strtok_r(input.text(), "\n", &rest); line;
         line = ::strtok_r(nullptr, "\n", &rest))
        handle(line);
}

void LedCtrl::readCmd() {
    readLines([this](char* line) {
        VSYSLOG(CATEGORY, TRACE, "LED Command: %s", line);
        handleCmd(line);
    });
}

const LedCtrl::CmdDef* LedCtrl::find(const char* line) const {
    const std::string_view word1 = nextWord(line);
    const std::string_view word2 = nextWord(line);
    const std::int32_t number = numberIn(line);
    const CmdDef* const end = m_commands + m_commandCount;
    const CmdDef* const row = std::find_if(m_commands, end, [&](const CmdDef& each) {
        return each.number == number && word1 == each.word1 && word2 == each.word2;
    });
    return row != end ? row : nullptr;
}

int LedCtrl::handleCmd(char* line) {
    if (const CmdDef* const row = find(line)) {
        VSYSLOG(CATEGORY, TRACE, "Found LED command at index %d",
                static_cast<int>(row - m_commands));
        executeCmd(*row);
    }
    return 0;
}
