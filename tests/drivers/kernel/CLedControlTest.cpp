#include "CLedControl.h"

#include <filesystem>
#include <optional>
#include <thread>

#include "InfoContainer.h"
#include "support/ScriptedKernel.h"

namespace {

using namespace support;

/// A LED, and a record of what a script of calls writes.
class CLedControlTest : public ScriptedKernel {
protected:
    void connect(bool biCapable) {
        answer(BI_STATUS, biCapable);
        ASSERT_TRUE(led->open(error).isSuccess());
        asked.clear();
    }

    /// Runs calls such as "set 1", "bi 1", "toggle 1", "enable", "disable", "real 2" and "shows 2"
    /// (which changes the device from outside). For each call it returns what the device holds
    /// afterwards, "!" if the call failed, "-" if it wrote nothing.
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
            dir.write("device",
                      held().substr(0, 1) + "\n"); // only the driver's records end in zero bytes
            const bool done = perform(call, value);
            const bool wrote = held().back() == '\0';
            trace += !done ? '!' : wrote ? held()[0] : '-';
        }
        return trace;
    }

    bool perform(const std::string& call, unsigned value) {
        if (call == "set")
            return led->setLedStatus(value).isSuccess();
        if (call == "bi")
            return led->setLedBiStatus(value).isSuccess();
        if (call == "toggle")
            return led->setLedToggleStatus(value).isSuccess();
        if (call == "enable")
            return led->enableLedToggle().isSuccess();
        if (call == "disable")
            return led->disableLedToggle().isSuccess();
        EXPECT_EQ(call, "real");
        return led->realSetLedStatus(value).isSuccess();
    }

    std::vector<std::string> rows(unsigned maxLevel, unsigned level, unsigned maxIndex,
                                  unsigned index) const {
        InfoContainer container;
        std::vector<std::string> shown;
        for (const auto& row :
             led->getInfo(container, maxLevel, level, maxIndex, index, "> ").getRows())
            shown.push_back(std::to_string(row.level) + " " + str(row.key) + "=" + str(row.value));
        return shown;
    }

    std::optional<CLedControl> led{std::in_place, nullptr, "led", ENDPOINT};
};

} // namespace

TEST_F(CLedControlTest, OverlaysTakeTheLedOverAndRestoreIt) {
    const struct {
        bool biCapable;
        std::string script;
        std::string trace;
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
        {true, "enable toggle 1 toggle 0 toggle 1 toggle 2 toggle 1 disable",
         "-102210"}, // only 1 alternates with 2
        {false, "enable toggle 1 toggle 1 toggle 2 toggle 1 disable", "-11210"},
        {true, "enable toggle 1 disable enable toggle 1 disable", "-10-20"}, // the phase is kept
        {true, "set 1 enable enable toggle 0 disable", "1-!01"},
        {true, "enable set 2 toggle 0 disable", "--02"},
        {true, "toggle 1 disable", "!!"},
        // Both.
        {true, "shows 2 enable toggle 0 disable set 1",
         "-02-"}, // the overlay counts as on if the LED shows 2
        {false, "shows 2 enable disable set 1", "-2-"}, // and can never be turned off on this LED
        {true, "set 1 enable bi 1 disable bi 0", "1--21"},
        {true, "set 1 enable bi 7 disable set 2",
         "1--1-"}, // 2 is restored only for exactly 1, but any value except 0 holds
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
    std::filesystem::rename(dir.path("device"), dir.path("away"));
    EXPECT_FALSE(led->disableLedToggle().isSuccess());
    EXPECT_FALSE(led->setLedToggleStatus(1).isSuccess());
    std::filesystem::rename(dir.path("away"), dir.path("device"));
    EXPECT_EQ(run("toggle 1 disable disable"), "20!")
        << "the phase has advanced and the toggle is still on";
}

TEST_F(CLedControlTest, RecordsAreFourBytesWide) {
    connect(true);
    for (const auto& [state, record] :
         std::vector<std::pair<unsigned, std::string>>{{2, std::string("2\0\0\0", 4)},
                                                       {12345, "1234"},
                                                       {4294967295, std::string("-1\0\0", 4)}}) {
        dir.write("device", "");
        EXPECT_TRUE(led->realSetLedStatus(state).isSuccess());
        EXPECT_EQ(held(), record);
    }
    dir.write("device", "12345");
    unsigned status = 0;
    EXPECT_TRUE(led->getLedStatus(status).isSuccess());
    EXPECT_EQ(status, 1234U);
}

TEST_F(CLedControlTest, DumpShowsHeaderDescriptionAndStatusWithinTheLimits) {
    using Rows = std::vector<std::string>;
    EXPECT_EQ(rows(1, 0, 0, 0), (Rows{"0 > led=", "1 Description=", "1 Status=off"}))
        << "not valid";
    connect(true);
    run("set 2");
    EXPECT_EQ(rows(5, 2, 7, 7),
              (Rows{"2 > led=", "3 Description=As the kernel says", "3 Status=on"}));
    EXPECT_EQ(rows(2, 2, 0, 0), Rows{"2 > led="});
    EXPECT_EQ(rows(~0U, ~0U, 0, 0), Rows{"4294967295 > led="});
    EXPECT_EQ(rows(1, 2, 0, 0), Rows{});
    EXPECT_EQ(rows(5, 0, 0, 1), Rows{});
    led.emplace(nullptr, String("led\0x", 5), ENDPOINT);
    EXPECT_EQ(rows(0, 0, 0, 0), Rows{"0 > led="})
        << "not the row of the base, which prints the whole name";
    IInfo* const info = static_cast<ILedControl*>(&*led);
    InfoContainer container;
    EXPECT_EQ(info->getInfo(container, 1, 0, 0, 0, "").getRows().size(), 3U)
        << "through the LED's own interface";
}

TEST_F(CLedControlTest, SeveralThreadsMayDumpAtOnce) {
    connect(true);
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i)
        threads.emplace_back([&] {
            for (int round = 0; round < 100; ++round)
                EXPECT_EQ(rows(1, 0, 0, 0).size(), 3U);
        });
    for (std::thread& thread : threads)
        thread.join();
}

TEST_F(CLedControlTest, HasItsPublishedIdentityAndInterfaces) {
    ILedControl* const own = &*led;
    expectFaces(*led, *own, {{ILedControl::IID(), own}, {CLedControl::CID(), nullptr}});
    EXPECT_EQ(published(led->getDID()),
              "DID_LedControl A4 C5 EF 84 D5 39 54 4D B9 65 5F 39 70 5C 91 F5");
    EXPECT_EQ(published(led->CID()),
              "CID_LedControl C5 2F FA 19 EB 81 F0 43 BF D1 42 DC 6A 2E 22 54");
    EXPECT_EQ(published(ILedControl::IID()),
              "ILedControl 46 1A F2 E2 27 A5 F7 4A 89 3C 07 54 03 40 20 A4");
}
