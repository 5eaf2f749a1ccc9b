#include "OnBoard.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <stdexcept>

#include <fcntl.h>
#include <poll.h>
#include <termios.h>
#include <unistd.h>

#include "base/File.h"
#include "sysfs/DeviceLocator.h"

namespace onboard {

namespace {

/// Sends a request over the console. Returns the answer of the program at the other end.
std::string ask(const std::string& request) {
    static const board::FileDescriptor console = [] {
        board::FileDescriptor file = board::openFile("/dev/console", O_RDWR | O_NOCTTY);
        termios settings{};
        ::tcgetattr(file.number(), &settings);
        // An echo of the answers would mix with the output of the tests.
        settings.c_lflag &= ~static_cast<tcflag_t>(ECHO);
        ::tcsetattr(file.number(), TCSANOW, &settings);
        return file;
    }();
    std::fflush(stdout);
    pollfd input{console.number(), POLLIN, 0};
    if (!board::tryWriteAll(console, "@" + request + "\n") || ::poll(&input, 1, 30000) != 1)
        throw std::runtime_error("no answer to: " + request);
    char answer[4096]; // the longest line that a terminal delivers
    const ssize_t got = board::tryRead(console, answer, sizeof answer);
    const std::string text(answer, got > 0 ? static_cast<std::size_t>(got) - 1 : 0);
    if (text.rfind("FAILED", 0) == 0)
        throw std::runtime_error(request + ": " + text);
    return text;
}

std::string nameOfError() {
    return ::strerrorname_np(errno);
}

} // namespace

void set(const std::string& property, const std::string& value) {
    ask("SET " + property + " " + value);
}

std::string get(const std::string& property) {
    return ask("GET " + property);
}

bool isLit(const std::string& line) {
    return get("/machine/soc/gpio gpio" + line) == "true";
}

std::string eepromOutside() {
    return ask("EEPROM");
}

std::string locate(const std::string& device) {
    return board::DeviceLocator().locate(device);
}

std::string read(const std::string& device) {
    const board::FileDescriptor file = board::tryOpen(locate(device), O_RDONLY);
    char text[128];
    const ssize_t got = file.isOpen() ? board::tryRead(file, text, sizeof text) : -1;
    if (got < 0)
        return nameOfError();
    const std::string whole(text, static_cast<std::size_t>(got));
    return whole.substr(0, whole.find('\n'));
}

std::string write(const std::string& device, const std::string& bytes) {
    const board::FileDescriptor file = board::tryOpen(locate(device), O_WRONLY);
    const ssize_t taken = file.isOpen() ? board::tryWrite(file, bytes.data(), bytes.size()) : -1;
    return taken < 0 ? nameOfError() : std::to_string(taken);
}

std::vector<std::string> boardctl(std::vector<std::string> words) {
    words.insert(words.begin(), {"/bin/boardctl", "--board", "/etc/board.toml"});
    return words;
}

void expectOutput(const support::Outcome& outcome, const std::string& out) {
    EXPECT_EQ(outcome.out, out) << outcome.err;
    EXPECT_EQ(outcome.status, 0) << outcome.err;
}

void expectFault(const support::Outcome& outcome, const std::string& reason) {
    EXPECT_NE(outcome.err.find(reason), std::string::npos) << outcome.err << "lacks: " << reason;
    EXPECT_EQ(outcome.status, 1) << outcome.err;
}

} // namespace onboard

int main(int argc, char** argv) {
    if (!std::filesystem::exists("/proc/device-tree/boarddrivers,emulated")) {
        std::fputs(
            "these tests overwrite devices: they run on the emulated board only (./dev board)\n",
            stderr);
        return 2;
    }
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
