// Whole processes, measured from start to end and compared with a program that does nothing.

#include <cstdlib>
#include <initializer_list>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include "BoardImage.h"
#include "TemporaryFile.h"

namespace {

/// The path of a program in the folder of this program.
std::string programNamed(const std::string& name) {
    char path[4096] = {};
    if (::readlink("/proc/self/exe", path, sizeof path - 1) < 0)
        std::abort();
    const std::string own = path;
    return own.substr(0, own.rfind('/') + 1) + name;
}

/// Runs a program and discards its output. Aborts if the program fails.
void run(const std::string& program, std::initializer_list<std::string> words) {
    std::vector<char*> arguments{const_cast<char*>(program.c_str())};
    for (const std::string& word : words)
        arguments.push_back(const_cast<char*>(word.c_str()));
    arguments.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    ::posix_spawn_file_actions_init(&actions);
    ::posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    pid_t child = 0;
    int status = 0;
    if (::posix_spawn(&child, program.c_str(), &actions, nullptr, arguments.data(), environ) != 0 ||
        ::waitpid(child, &status, 0) != child || status != 0)
        std::abort();
    ::posix_spawn_file_actions_destroy(&actions);
}

void bringUp(benchmark::State& state) {
    const TemporaryFile image(makeBoardImage());
    const std::string program = programNamed("bringup");
    for (auto _ : state)
        run(program, {image.path()});
}
BENCHMARK(bringUp)->Name("bring-up")->UseRealTime();

void dump(benchmark::State& state) {
    const TemporaryFile image(makeBoardImage());
    const std::string program = programNamed("boardctl");
    for (auto _ : state)
        run(program, {"bd", "dump", image.path()});
}
BENCHMARK(dump)->Name("boardctl bd dump")->UseRealTime();

void empty(benchmark::State& state) {
    const std::string program = programNamed("empty");
    for (auto _ : state)
        run(program, {});
}
BENCHMARK(empty)->Name("bring-up/floor")->UseRealTime();
BENCHMARK(empty)->Name("boardctl bd dump/floor")->UseRealTime();

} // namespace
