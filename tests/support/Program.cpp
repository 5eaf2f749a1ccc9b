#include "support/Program.h"

#include <csignal>
#include <system_error>

#include <fcntl.h>
#include <sched.h>
#include <spawn.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include "support/Asleep.h"

namespace support {

namespace {

std::string contentOf(int file) {
    std::string content(static_cast<std::size_t>(::lseek(file, 0, SEEK_END)), '\0');
    const ssize_t got = ::pread(file, content.data(), content.size(), 0);
    content.resize(got < 0 ? 0 : static_cast<std::size_t>(got));
    return content;
}

} // namespace

Program::Program(const std::vector<std::string>& words, const std::string& out)
    : m_out(out.empty() ? ::memfd_create("out", MFD_CLOEXEC)
                        : ::open(out.c_str(), O_RDWR | O_CLOEXEC)),
      m_err(::memfd_create("err", MFD_CLOEXEC)) {
    std::vector<char*> argv;
    for (const std::string& word : words)
        argv.push_back(const_cast<char*>(word.c_str()));
    argv.push_back(nullptr);

    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_adddup2(&actions, m_out, STDOUT_FILENO);
    posix_spawn_file_actions_adddup2(&actions, m_err, STDERR_FILENO);
    const int error = ::posix_spawn(&m_pid, argv[0], &actions, nullptr, argv.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    if (error != 0)
        throw std::system_error(error, std::generic_category(), words.front());
}

Program::~Program() {
    if (m_pid > 0) {
        ::kill(m_pid, SIGKILL);
        ::waitpid(m_pid, nullptr, 0);
    }
    ::close(m_out);
    ::close(m_err);
}

void Program::signal(int number) const {
    ::kill(m_pid, number);
}

bool Program::waitForOutput(const std::string& text) {
    for (;;) {
        // Checked before the output, so that the last output of an ending program is not missed.
        const bool ended = ::waitpid(m_pid, &m_status, WNOHANG) == m_pid;
        if (ended)
            m_pid = -1;
        if (contentOf(m_out).find(text) != std::string::npos)
            return true;
        if (ended)
            return false;
        ::sched_yield();
    }
}

void Program::signalInItsSleep(int number) const {
    waitUntilAsleep(m_pid);
    signal(number);
}

void Program::end(int number) {
    signal(number);
    finish();
}

Outcome Program::finish() {
    if (m_pid > 0)
        ::waitpid(m_pid, &m_status, 0);
    m_pid = -1;
    return {WIFEXITED(m_status) ? WEXITSTATUS(m_status) : -1, contentOf(m_out), contentOf(m_err)};
}

} // namespace support
