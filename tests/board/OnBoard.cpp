#include "OnBoard.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <stdexcept>

#include <fcntl.h>
#include <poll.h>
#include <termios.h>
#include <unistd.h>

#include "profile/DeviceLocator.h"

namespace onboard {

namespace {

/// The console. The program at its other end answers requests.
class Console {
public:
    Console() : m_file(::open("/dev/console", O_RDWR | O_NOCTTY | O_CLOEXEC)) {
        termios settings{};
        if (::tcgetattr(m_file, &settings) != 0)
            throw std::runtime_error("no console");
        settings.c_lflag &=
            ~static_cast<tcflag_t>(ECHO); // otherwise answers mix with the output of the tests
        ::tcsetattr(m_file, TCSANOW, &settings);
    }
    ~Console() { ::close(m_file); }
    Console(const Console&) = delete;
    Console& operator=(const Console&) = delete;

    std::string ask(const std::string& request) const {
        std::fflush(stdout);
        const std::string line = "@" + request + "\n";
        if (::write(m_file, line.data(), line.size()) != static_cast<ssize_t>(line.size()))
            throw std::runtime_error("can't write to the console");
        pollfd input{m_file, POLLIN, 0};
        if (::poll(&input, 1, 30000) != 1)
            throw std::runtime_error("no answer to: " + request);
        char answer[4096]; // the longest line that a terminal delivers
        const ssize_t got = ::read(m_file, answer, sizeof answer);
        const std::string text(answer, got > 0 ? static_cast<std::size_t>(got) - 1 : 0);
        if (text.rfind("FAILED", 0) == 0)
            throw std::runtime_error(request + ": " + text);
        return text;
    }

private:
    const int m_file;
};

std::string ask(const std::string& request) {
    static const Console console;
    return console.ask(request);
}

std::string nameOfError(int error) {
    return ::strerrorname_np(error);
}

} // namespace

void set(const std::string& object, const std::string& property, const std::string& value) {
    ask("SET " + object + " " + property + " " + value);
}

std::string get(const std::string& object, const std::string& property) {
    return ask("GET " + object + " " + property);
}

std::string eepromOutside() {
    const std::string digits = ask("EEPROM");
    std::string bytes;
    for (std::size_t i = 0; i + 1 < digits.size(); i += 2)
        bytes += static_cast<char>(std::stoi(digits.substr(i, 2), nullptr, 16));
    return bytes;
}

std::string locate(const std::string& device) {
    return board::DeviceLocator().locate(device);
}

std::string read(const std::string& path) {
    const int file = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (file < 0)
        return nameOfError(errno);
    char text[64];
    const ssize_t got = ::read(file, text, sizeof text);
    const int error = errno;
    ::close(file);
    if (got < 0)
        return nameOfError(error);
    const std::string whole(text, static_cast<std::size_t>(got));
    return whole.substr(0, whole.find('\n'));
}

std::string write(const std::string& path, const std::string& bytes, long at) {
    const int file = ::open(path.c_str(), O_WRONLY | O_CLOEXEC);
    if (file < 0)
        return nameOfError(errno);
    const ssize_t taken = at == 0 ? ::write(file, bytes.data(), bytes.size())
                                  : ::pwrite(file, bytes.data(), bytes.size(), at);
    const int error = errno;
    ::close(file);
    return taken < 0 ? nameOfError(error) : std::to_string(taken);
}

Unbound::Unbound(const std::string& driver, const std::string& device)
    : m_driver("/sys/bus/" + driver), m_device(device) {
    EXPECT_EQ(write(m_driver + "/unbind", m_device), std::to_string(m_device.size())) << m_driver;
}

Unbound::~Unbound() {
    EXPECT_EQ(write(m_driver + "/bind", m_device), std::to_string(m_device.size())) << m_driver;
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
