// The floor of a host's memory: a C++ program with two extra threads, which wait until standard
// input ends.

#include <thread>

#include <unistd.h>

namespace {

void waitForEnd() {
    char ignored = 0;
    while (::read(STDIN_FILENO, &ignored, 1) > 0) {
    }
}

} // namespace

int main() {
    std::thread first(waitForEnd), second(waitForEnd);
    first.join();
    second.join();
}
