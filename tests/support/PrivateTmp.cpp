#include <string>

#include <sched.h>
#include <sys/mount.h>
#include <unistd.h>

#include <gtest/gtest.h>

// The LED service's pipe has one path on every machine. Linked into a test program, this gives the
// program and its children a /tmp of their own where the machine allows it; elsewhere tests that
// open the pipe take turns through ctest's lock of that name.

namespace {

class PrivateTmp : public testing::Environment {
public:
    void SetUp() override {
        char program[4096] = {};
        if (::readlink("/proc/self/exe", program, sizeof program - 1) > 0 &&
            std::string(program).rfind("/tmp/", 0) == 0)
            return; // in a new /tmp, what was built would be gone
        // Root can; others would need a new user namespace, which a program with threads can't
        // enter.
        if (::unshare(CLONE_NEWNS) == 0 &&
            ::mount("none", "/", "", MS_REC | MS_PRIVATE, nullptr) == 0 &&
            ::mount("tmp", "/tmp", "tmpfs", 0, nullptr) != 0)
            GTEST_LOG_(INFO) << "/tmp is shared with other programs";
    }
};

[[maybe_unused]] const auto* const environment = testing::AddGlobalTestEnvironment(new PrivateTmp);

} // namespace
