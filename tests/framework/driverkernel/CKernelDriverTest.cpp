#include "CKernelDriver.h"

#include <gtest/gtest.h>

namespace {

/// Replies to codes 1 to 4 with the four types and to 5 with a failure, and ignores other codes.
XCode replyByType(const MxMsg& request, MxMsg& reply) {
    const unsigned code = request.getCode();
    if (code == 1)
        reply.set("text");
    if (code == 2)
        reply.set(true);
    if (code == 3)
        reply.set(-3);
    if (code == 4)
        reply.set(4U);
    return code == 5 ? XCode(-5, "NO KERNEL") : XCode();
}

class Driver : public CKernelDriver {
public:
    Driver() : CKernelDriver(nullptr, "driver", "end") {}
    ~Driver() override { static_cast<void>(Mx::withdraw("end")); }
    const VELM_UUID& getDID() const override { return IDriver::IID(); }
    XCode onConnected(String&) override {
        ++connected;
        return verdict;
    }
    void onDisconnected() override { ++disconnected; }

    /// The reply to `code` and "OK"; on failure, `value` and the failure's message.
    template <class Value>
    std::pair<Value, String> ask(unsigned code, Value value) {
        const XCode status = sendReceiveMessage(code, value);
        return {value, status.isSuccess() ? String("OK") : status.getMessage()};
    }

    int connected = 0;
    int disconnected = 0;
    XCode verdict;
};

} // namespace

TEST(KernelDriver, ReadsEachTypeAndFailsWithATextLeavingTheReplyAlone) {
    Driver driver;
    String error;
    using Text = std::pair<String, String>;
    EXPECT_EQ(driver.ask(1, String("kept")), Text("kept", "CHANNEL NOT CONNECTED"));
    ASSERT_TRUE(Mx::publish("end", replyByType).isSuccess());
    ASSERT_TRUE(driver.open(error).isSuccess());
    EXPECT_EQ(driver.ask(1, String("kept")), Text("text", "OK"));
    EXPECT_EQ(driver.ask(2, false), std::pair(true, String("OK")));
    EXPECT_EQ(driver.ask(3, 7), std::pair(-3, String("OK")));
    EXPECT_EQ(driver.ask(4, 7U), std::pair(4U, String("OK")));
    EXPECT_EQ(driver.ask(2, String("kept")), Text("kept", "MESSAGE 2 CARRIES BOOL, EXPECTED TEXT"));
    EXPECT_EQ(driver.ask(4, 7), std::pair(7, String("MESSAGE 4 CARRIES UNSIGNED, EXPECTED INT")));
    EXPECT_EQ(driver.ask(5, 7U), std::pair(7U, String("NO KERNEL")));
    EXPECT_EQ(driver.ask(6, 7U), std::pair(7U, String("ENDPOINT 'end' DOES NOT ANSWER CODE 6")));
    ASSERT_TRUE(Mx::withdraw("end").isSuccess());
    EXPECT_EQ(driver.ask(1, String("kept")), Text("kept", "ENDPOINT 'end' WITHDRAWN"));
}

TEST(KernelDriver, OpensAndClosesWithItsHandshake) {
    Driver driver;
    String error;
    EXPECT_FALSE(driver.open(error).isSuccess());
    EXPECT_EQ(error, String("ENDPOINT 'end' NOT FOUND"));
    ASSERT_TRUE(Mx::publish("end", replyByType).isSuccess());
    driver.verdict = XCode(-7, "REFUSED");
    EXPECT_EQ(driver.open(error).getCode(), -7);
    EXPECT_EQ(error, String("REFUSED"));
    driver.verdict = XCode(-8);
    EXPECT_EQ(driver.open(error).getCode(), -8);
    EXPECT_EQ(error, String("REFUSED")) << "a failure without a text leaves the text alone";
    driver.close();
    EXPECT_EQ(driver.disconnected, 0) << "it was never open";
    driver.verdict = XCode();
    EXPECT_TRUE(driver.open(error).isSuccess());
    EXPECT_TRUE(driver.open(error).isSuccess()) << "opens anew";
    EXPECT_EQ(driver.connected, 4);
    EXPECT_EQ(driver.disconnected, 1);
    driver.close();
    driver.close();
    EXPECT_EQ(driver.disconnected, 2);
}
