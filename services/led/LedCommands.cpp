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

/// What one read has brought, as a text; empty where it has brought nothing.
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

/// The next word of `line`, which is moved behind it; empty at the end.
std::string_view nextWord(const char*& line) {
    constexpr char BLANKS[] = " \t\n\v\f\r";
    line += std::strspn(line, BLANKS);
    const std::size_t length = std::strcspn(line, BLANKS);
    const std::string_view word(line, length);
    line += length;
    return word;
}

/// The decimal number at the start of `text`, clamped to 32 bits; 0 where there is none.
std::int32_t numberIn(const char* text) {
    const long number = std::strtol(text, nullptr, 10);
    if (number > INT32_MAX)
        return INT32_MAX;
    return number < INT32_MIN ? INT32_MIN : static_cast<std::int32_t>(number);
}

} // namespace

void LedCtrl::setupFifo() {
    if (::mknod(FIFO_PATH, S_IFIFO | 0666, 0) != 0 && errno != EEXIST)
        VSYSLOG(CATEGORY, ERROR, "error mknod: %s", std::strerror(errno));
    m_fifoFd = ::open(FIFO_PATH, O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (m_fifoFd < 0)
        VSYSLOG(CATEGORY, ERROR, "error open: %s", std::strerror(errno));
}

void LedCtrl::testFifo() {
    // Left open on purpose: a pipe that always has a writer gives "no data", not "end of file",
    // when the last client goes.
    const int writer = ::open(FIFO_PATH, O_WRONLY | O_NONBLOCK | O_CLOEXEC);
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
        // Non-blocking means nothing to a LED's file; a pipe in its place must not hold up the
        // service.
        file.fd = ::open(file.fileName, O_RDWR | O_NONBLOCK | O_CLOEXEC);
        if (file.fd < 0)
            VSYSLOG(CATEGORY, ERROR, "unable to open file %s ", file.fileName);
    }
}

void LedCtrl::readCmd() {
    if (m_fifoFd <= 0)
        return;
    Input input(m_fifoFd);
    if (input.isEmpty())
        return;
    char* rest = nullptr;
    for (char* line = ::strtok_r(input.text(), "\n", &rest); line;
         line = ::strtok_r(nullptr, "\n", &rest)) {
        VSYSLOG(CATEGORY, TRACE, "LED Command: %s", line);
        handleCmd(line);
    }
}

int LedCtrl::handleCmd(char* line) {
    const char* rest = line;
    const std::string_view word1 = nextWord(rest);
    const std::string_view word2 = nextWord(rest);
    const std::int32_t number = numberIn(rest);
    for (unsigned i = 0; i < m_commandCount; ++i) {
        const CmdDef& row = m_commands[i];
        if (row.number != number || word1 != row.word1 || word2 != row.word2)
            continue;
        VSYSLOG(CATEGORY, TRACE, "Found LED command at index %d", static_cast<int>(i));
        executeCmd(row);
        break;
    }
    return 0;
}
