#pragma once

#include <functional>
#include <map>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "Mx.h"
#include "support/DriverFixtures.h"
#include "support/TempDir.h"

namespace support {

/// A kernel driver whose answers the test sets, with a device file "device" in a temporary folder.
/// The fixtures of the drivers derive from it.
class ScriptedKernel : public testing::Test {
protected:
    static constexpr char ENDPOINT[] = "kernel-under-test";
    static constexpr unsigned PATH = 7;
    static constexpr unsigned BI_STATUS = 8;
    static constexpr unsigned DESCRIPTION = 9;
    static constexpr unsigned MAXIMUM = 10;

    ScriptedKernel() {
        dir.write("device", "0");
        answer(PATH, String(dir.path("device").c_str()));
        answer(DESCRIPTION, String("As the kernel says"));
        const XCode status = Mx::publish(ENDPOINT, [this](const MxMsg& request, MxMsg& reply) {
            asked.push_back(request.getCode());
            return answers.at(request.getCode())(reply);
        });
        EXPECT_TRUE(status.isSuccess());
    }
    ~ScriptedKernel() override { static_cast<void>(Mx::withdraw(ENDPOINT)); }

    template <class Value>
    void answer(unsigned code, const Value& value) {
        answers[code] = [value](MxMsg& reply) {
            reply.set(value);
            return XCode();
        };
    }

    std::string held() const { return dir.read("device"); }

    TempDir dir;
    std::map<unsigned, std::function<XCode(MxMsg&)>> answers;
    std::vector<unsigned> asked;
    String error;
};

} // namespace support
