#include <cstdlib>
#include <string>

#include <fcntl.h>
#include <sched.h>
#include <sys/file.h>
#include <sys/mount.h>
#include <unistd.h>

#include <gtest/gtest.h>

// The LED service's pipe has the same path on every machine, so tests of two checkouts would read
// each other's lines. Linked into a test program, this gives the program and its children a private
// /tmp if the machine allows it. Otherwise test programs take turns: each holds a lock on /tmp. The
// status sockets of hosts are in that /tmp too and not in /run, where other tests would find them.

namespace {

class PrivateTmp : public testing::Environment {
public:
    void SetUp() override {
        ::setenv("XDG_RUNTIME_DIR", "/tmp", 1);
        if (!isBelowTmp() && makePrivate())
            return;
        const int folder = ::open("/tmp", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
        if (::flock(folder, LOCK_EX | LOCK_NB) != 0) {
            GTEST_LOG_(INFO) << "waiting for other tests that use the LED pipe";
            ASSERT_EQ(::flock(folder, LOCK_EX), 0) << "can't lock /tmp: another checkout's tests "
                                                      "may disturb these through the LED pipe";
        }
        // The descriptor stays open: the lock ends with the program.
    }

private:
    // A private /tmp would hide the build tree of a program below /tmp.
    static bool isBelowTmp() {
        char program[4096] = {};
        return ::readlink("/proc/self/exe", program, sizeof program - 1) > 0 &&
               std::string(program).rfind("/tmp/", 0) == 0;
    }

    // Only root can do this. Other users would first have to enter a new user namespace, which a
    // program with threads can't do.
    static bool makePrivate() {
        return ::unshare(CLONE_NEWNS) == 0 &&
               ::mount("none", "/", "", MS_REC | MS_PRIVATE, nullptr) == 0 &&
               ::mount("tmpfs", "/tmp", "tmpfs", 0, nullptr) == 0;
    }
};

[[maybe_unused]] const auto* const environment = testing::AddGlobalTestEnvironment(new PrivateTmp);

} // namespace
