#include "CLedControl.h"

#include <filesystem>
#include <optional>

#include "InfoContainer.h"
#include "support/ScriptedKernel.h"

namespace {

using namespace support;

/// An LED, and a record of what a script of calls writes.
class CLedControlTest : public ScriptedKernel {
protected:
    void connect(bool biCapable) {
        answer(BI_STATUS, biCapable);
        ASSERT_TRUE(led->open(error).isSuccess());
    }

    /// Runs calls such as "set 1", "bi 1", "toggle 1", "enable", "disable", "real 2" and "shows 2"
    /// (which changes the device from outside). Returns for each call "!" if it failed, "-" if it
    /// wrote nothing, and otherwise what the device then holds. Returns nothing for "shows".
    std::string run(const std::string& script) {
        std::istringstream words(script);
        std::string trace;
        for (std::string call; words >> call;) {
            unsigned value = 0;
            if (call != "enable" && call != "disable")
                words >> value;
            if (call == "shows") {
                dir.write("device", std::to_string(value));
                continue;
            }
            // This text ends without a zero byte, so a zero byte at the end is the driver's.
            dir.write("device", held().substr(0, 1) + "\n");
            const bool done = perform(call, value).isSuccess();
            const bool wrote = held().back() == '\0';
            trace += !done ? '!' : wrote ? held()[0] : '-';
        }
        return trace;
    }

    XCode perform(const std::string& call, unsigned value) {
        return call == "set"       ? led->setLedStatus(value)
               : call == "bi"      ? led->setLedBiStatus(value)
               : call == "toggle"  ? led->setLedToggleStatus(value)
               : call == "enable"  ? led->enableLedToggle()
               : call == "disable" ? led->disableLedToggle()
                                   : led->realSetLedStatus(value);
    }

    std::optional<CLedControl> led{std::in_place, nullptr, "led", ENDPOINT};
};

} // namespace

TEST_F(CLedControlTest, OverlaysTakeTheLedOverAndRestoreIt) {
    const struct {
        bool biCapable;
        std::string script, trace;
    } CASES[] = {
        {true, "set 1 set 2 set 0", "120"},
        // The bi-status overlay.
        {true, "set 1 bi 1 bi 0", "121"},
        {true, "bi 1 set 1 bi 0", "2-1"},
        {true, "set 1 bi 1 bi 1 bi 0", "1222"}, // the second call remembers the overlay's own 2
        {true, "bi 1 real 1 set 0 bi 0", "21-0"},
        {false, "bi 1 set 1 bi 0", "!1!"},
        // The toggle.
        {true, "enable toggle 1 toggle 1 toggle 1 toggle 1 disable", "-12120"},
        // Only 1 alternates with 2.
        {true, "enable toggle 1 toggle 0 toggle 1 toggle 2 toggle 1 disable", "-102210"},
        {false, "enable toggle 1 toggle 1 toggle 2 toggle 1 disable", "-11210"},
        {true, "enable toggle 1 disable enable toggle 1 disable", "-10-20"}, // the phase is kept
        {true, "set 1 enable enable toggle 0 disable", "1-!01"},
        {true, "enable set 2 toggle 0 disable", "--02"},
        {true, "toggle 1 disable", "!!"},
        // Both: the overlay counts as on if the LED shows 2, even if it can never be turned off.
        {true, "shows 2 enable toggle 0 disable set 1", "-02-"},
        {false, "shows 2 enable disable set 1", "-2-"},
        {true, "set 1 enable bi 1 disable bi 0", "1--21"},
        // `disable` restores 2 only if `bi` is 1, but `set` is held back by any `bi` except 0.
        {true, "set 1 enable bi 7 disable set 2", "1--1-"},
        {true, "bi 1 enable toggle 1 bi 0 disable", "2-1-0"},
    };
    for (const auto& each : CASES) {
        dir.write("device", "0");
        led.emplace(nullptr, "led", ENDPOINT);
        connect(each.biCapable);
        EXPECT_EQ(run(each.script), each.trace)
            << (each.biCapable ? "capable: " : "not capable: ") << each.script;
    }
}

TEST_F(CLedControlTest, FailuresKeepTheChangesBeforeThem) {
    EXPECT_EQ(run("set 1 bi 1 real 1 enable enable"), "!!!!!") << "not valid";
    EXPECT_EQ(held()[0], '0');
    connect(true);
    EXPECT_EQ(run("enable"), "!") << "the toggle stayed on after the LED could not be read";
    const auto withoutDevice = [&](const char* call) {
        std::filesystem::rename(dir.path("device"), dir.path("away"));
        EXPECT_FALSE(perform(call, 1).isSuccess());
        std::filesystem::rename(dir.path("away"), dir.path("device"));
    };
    withoutDevice("toggle");
    EXPECT_EQ(run("toggle 1 disable disable"), "20!") << "the phase has advanced";
    EXPECT_EQ(run("set 1 bi 1 bi 0"), "121");
    withoutDevice("bi");
    EXPECT_EQ(run("bi 0"), "0") << "an LED that can't be read is restored to off";
}

TEST_F(CLedControlTest, RecordsAreFourBytesWide) {
    connect(true);
    dir.write("device", "");
    EXPECT_TRUE(led->realSetLedStatus(12345).isSuccess());
    EXPECT_EQ(held(), "1234");
    unsigned status = 0;
    dir.write("device", "12345");
    EXPECT_TRUE(led->getLedStatus(status).isSuccess());
    EXPECT_EQ(status, 1234U);
}

TEST_F(CLedControlTest, DumpShowsHeaderDescriptionAndStatusWithinTheLimits) {
    EXPECT_EQ(reportOf(*led, {1, 0, 0, 0}),
              (Rows{"0.0 > led=", "1.0 Description=", "1.0 Status=off"}))
        << "not valid";
    connect(true);
    run("set 2");
    EXPECT_EQ(reportOf(*led, {5, 2, 7, 7}),
              (Rows{"2.7 > led=", "3.7 Description=As the kernel says", "3.7 Status=on"}));
    EXPECT_EQ(reportOf(*led, {~0U, ~0U, 0, 0}), Rows{"4294967295.0 > led="});
    EXPECT_EQ(reportOf(*led, {1, 2, 0, 0}), Rows{});
    EXPECT_EQ(reportOf(*led, {5, 0, 0, 1}), Rows{});
    led.emplace(nullptr, String("led\0x", 5), ENDPOINT);
    EXPECT_EQ(reportOf(*led, {0, 0, 0, 0}), Rows{"0.0 > led="})
        << "not the row of the base, which prints the whole name";
    EXPECT_EQ(reportOf(static_cast<const ILedControl&>(*led), {1, 0, 0, 0}).size(), 3U);
}
