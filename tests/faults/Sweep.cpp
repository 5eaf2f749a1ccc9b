#include "faults/Sweep.h"

#include <cerrno>
#include <cstring>
#include <map>
#include <new>
#include <regex>

#include <gtest/gtest.h>

#include "faults/Faults.h"
#include "support/Descriptors.h"
#include "support/DriverFixtures.h"

namespace faults {

void sweep(const Operation& operation, const Expected& expected) {
    const auto run = [&](const std::string& fault, const faults::Plan& plan) {
        SCOPED_TRACE(fault);
        std::string text(4096, '\0'); // so long that the result needs no new memory
        const auto open = support::openDescriptors();
        const long held = faults::blocksHeld;
        const auto attempt = [&](const std::function<XCode()>& step) {
            const char* code = "thrown";
            faults::begin(plan);
            try {
                code = step().isSuccess() ? "0" : "-1";
            } catch (const std::bad_alloc&) {
            }
            faults::end();
            return code;
        };
        text.assign(operation(attempt).c_str());
        EXPECT_EQ(faults::blocksHeld, held) << "memory is lost";
        if (support::openDescriptors() != open)
            text += ", left open: " + std::to_string(support::openDescriptors() - open);
        for (const auto& [faults, texts] : expected)
            if ((faults.empty() && fault.find("new") != 0) ||
                (!faults.empty() && std::regex_search(fault, std::regex(faults)))) {
                EXPECT_TRUE(std::regex_match(text, std::regex(texts)))
                    << "  " << text << "\nis not\n  " << texts;
                return;
            }
    };
    operation([](const auto& step) { return support::str(step().getMessage()); }); // fills caches
    run("undisturbed", {"", 0, 0});
    const std::vector<std::string> calls = faults::trace();
    const bool hasMemory = faults::blocksHeld > 0; // not under the thread sanitizer
    ASSERT_FALSE(calls.empty() && hasMemory) << "the calls do not pass the shim";
    std::map<std::string, unsigned> counts;
    for (const std::string& call : calls) {
        const std::string name = call.substr(0, call.find(' '));
        const unsigned number = ++counts[name];
        const std::string numbered = name + "#" + std::to_string(number) + " ";
        for (const int error : {EIO, EINTR, ENOENT})
            run(numbered + ::strerrorname_np(error), {name.c_str(), number, error});
        if (name == "read" || name == "write")
            run(numbered + "short", {name.c_str(), number, 0});
    }
}

} // namespace faults
