#include <cerrno>
#include <cstring>
#include <filesystem>
#include <functional>
#include <regex>

#include <gtest/gtest.h>

#include "CBoardDescrTamarin.h"
#include "CFanControl.h"
#include "CLedControl.h"
#include "CpuLoad.h"
#include "ImageInfo.h"
#include "LedCtrl.h"
#include "ServiceButton.h"
#include "TYPPtr.h"
#include "faults/Faults.h"
#include "support/Descriptors.h"
#include "support/DriverFixtures.h"
#include "support/LogRecorder.h"
#include "support/ScriptedKernel.h"

using support::fromHex;
using support::str;

namespace {

/// Runs a step while its calls are counted. Returns its code, or "thrown" if memory ran out.
using Attempt = std::function<std::string(const std::function<XCode()>&)>;

/// Prepares something, attempts a step and returns what came of it, as text.
using Operation = std::function<std::string(const Attempt&)>;

/// Pairs a pattern of faults, such as "read#2 EIO" for the second read, with a pattern of the text
/// that follows from them. The first match counts; "" matches every fault except one of memory.
using Expected = std::vector<std::pair<std::string, std::string>>;

/// Runs the operation without a failure, then once for each way in which one of the calls in its
/// step can fail. No descriptor and no memory may leak.
void sweep(const Operation& operation, const Expected& expected) {
    const auto run = [&](const std::string& fault, const faults::Plan& plan) {
        SCOPED_TRACE(fault);
        std::string text(4096, '\0'); // takes the result without more memory
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
    operation([](const auto& step) { return str(step().getMessage()); }); // fills caches
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

template <class Driver>
XCode open(Driver& driver) {
    String error;
    return driver.open(error);
}

class DriverFaults : public support::ScriptedKernel {
protected:
    DriverFaults() {
        answer(MAXIMUM, 255U);
        answer(BI_STATUS, true);
    }

    /// Sweeps over `step` with a driver, connected by `prepare`, whose device holds `content`. The
    /// text has the code, `value`, the code of `after`, and what the device holds then.
    template <class Driver>
    void sweepDriver(const char* content, const std::function<XCode(Driver&)>& step,
                     const std::function<XCode(Driver&)>& after, const Expected& expected,
                     const std::function<XCode(Driver&)>& prepare = open<Driver>) {
        sweep(
            [&](const Attempt& attempt) {
                dir.write("device", content);
                const auto driver = TYPPtr<Driver>::adopt(new Driver(nullptr, "driver", ENDPOINT));
                EXPECT_TRUE(prepare(*driver).isSuccess());
                value = 77;
                const std::string code = attempt([&] { return step(*driver); });
                const bool isWell = after(*driver).isSuccess();
                return code + " " + std::to_string(value) + (isWell ? " 0 " : " -1 ") +
                       held().c_str();
            },
            expected);
    }

    int value = 0;
};

} // namespace

TEST_F(DriverFaults, OnlyAnOpenThatFailsIsAnErrorAndWhatIsNotReadCountsAsZero) {
    sweepDriver<CFanControl>(
        "0", open<CFanControl>, [](auto& fan) { return XCode(fan.isValid() ? 0 : -1); },
        {{"open", "-1 77 -1 0"}, {"", "0 77 0 0"}}, [](auto&) { return XCode(); });
    sweepDriver<CFanControl>(
        "200",
        [&](auto& fan) {
            auto speed = IFanControl::FAN_SPEED_HIGH;
            const XCode status = fan.getActualFanSpeed(speed);
            value = speed;
            return status;
        },
        [](auto&) { return XCode(); },
        {{"open", "-1 3 0 200"}, {"read.* E|short", "0 3 0 200"}, {"", "0 1 0 200"}});
    sweepDriver<CFanControl>(
        "0", [](auto& fan) { return fan.setFanSpeed(IFanControl::FAN_SPEED_HIGH); },
        [](auto&) { return XCode(); },
        {{"open", "-1 77 0 0"},
         {"write.* E", "0 77 0 0"},
         {"short", "0 77 0 1"},
         {"", "0 77 0 170"}});
}

TEST_F(DriverFaults, AnOverlayOrToggleModeIsOnWhateverFailsUntilItIsGivenBack) {
    using Led = CLedControl;
    const auto enable = [](Led& led) { return led.enableLedToggle(); };
    const auto disable = [](Led& led) { return led.disableLedToggle(); };
    sweepDriver<Led>(
        "1", [](Led& led) { return led.setLedBiStatus(1); },
        [](Led& led) { return led.setLedBiStatus(0); }, // back to what was read
        {{"open#1|read.* E", "0 77 0 0"}, {"open#2", "-1 77 0 1"}, {"", "0 77 0 1"}});
    sweepDriver<Led>("1", enable, enable, {{"open", "-1 77 -1 ."}, {"", "0 77 -1 ."}});
    sweepDriver<Led>(
        "1", disable, disable, {{"open", "-1 77 0 ."}, {"", "0 77 -1 ."}},
        [&](Led& led) { return XCode(open(led).isSuccess() ? enable(led) : XCode(-1)); });
}

TEST(DescriptorFaults, KeepTheListOrChangeItAndLoseNothing) {
    const support::TempDir dir;
    const std::string LONG = "00 01 02 03 04 05 06 07 08 09 0A 0B 0C 0D 0E 0F 10 11"; // allocated
    const std::string DATA = "/18:" + LONG, MAC = "1/8:02 00 00 00 00 07 00 00,";
    const std::string START = "45/4:12 34 AB CD,", REST = "9/1:01,5" + DATA + ",";
    const std::string BEFORE = START + REST, TAG = "10" + DATA + ",", EMPTY = "10/0:,";
    const std::string LOADED = "10/2:01 02,11" + DATA + ",0/0:,";
    const std::string PART = "(10/2:01 02,)?(11" + DATA + ",)?";
    const std::string OPEN = "-1 FAILED TO OPEN DEVICE '.*eeprom' " + BEFORE;
    const std::string path = dir.path("eeprom");
    const auto data = fromHex(LONG);
    const auto image = fromHex("00 0A 00 06 01 02 00 0B 00 16 " + LONG + " 00 00 00 04");
    const std::string written = "00 2D 00 08 12 34 AB CD 00 09 00 06 01 00 00 05 00 16 " + LONG;
    const auto asText = [](const TString<char>& bytes) {
        return std::string(bytes.data(), bytes.length());
    };
    const struct {
        std::function<XCode(CBoardDescr&, String&)> step;
        Expected expected;
    } ROWS[] = {
        {[&](auto& board, auto&) { return board.addTag(10, data); },
         {{"new", "thrown  " + BEFORE + "|0  " + BEFORE + EMPTY}, {"", "0  " + BEFORE + TAG}}},
        {[&](auto& board, auto&) { return board.insertTag(1, 10, data); },
         {{"new", "thrown  " + BEFORE + "|0  " + START + EMPTY + REST},
          {"", "0  " + START + TAG + REST}}},
        {[&](auto& board, auto& error) { return board.setTag(5, 0, image, error); },
         {{"new", "-?[01].* " + START + "9/1:01,5/0:,"}, {"", "0  " + START + "9/1:01,5/32:.*"}}},
        {[&](auto& board, auto&) { return board.addMacAddress("02:00:00:00:00:07", 0); },
         {{"new", ".* " + BEFORE + "(1/0:,|" + MAC + ")?"}, {"", "0  " + BEFORE + MAC}}},
        {[&](auto& board, auto& error) {
             String text;
             TString<char> found;
             static_cast<void>(board.getTagString(5, 0, text, error));
             return board.getTag(5, 0, found, error);
         },
         {{"", "0  " + BEFORE}, {"new", ".* " + BEFORE}}},
        {[&](auto& board, auto& error) { return board.readBD(error); },
         {{"open", OPEN},
          {"read.* E", "-1 FAILED TO READ DEVICE '.*eeprom' " + BEFORE},
          {"new", "thrown  (" + BEFORE + "|" + PART + ")|0  " + LOADED},
          {"", "0  " + LOADED}}},
        {[&](auto& board, auto& error) { return board.writeBD(error); },
         {{"open", OPEN},
          {"write.* E", "-1 FAILED TO WRITE DEVICE '.*eeprom' " + BEFORE},
          {"short", "0  " + BEFORE},
          {"new", "thrown  " + BEFORE},
          {"", "0  " + BEFORE + written}}},
    };
    for (const auto& [step, expected] : ROWS)
        sweep(
            [&, step = step](const Attempt& attempt) {
                dir.write("eeprom", asText(image));
                CBoardDescr board(path.c_str(), 4, 512);
                for (const auto& [id, bytes] :
                     {std::pair(45, "12 34 AB CD"), {9, "01"}, {5, LONG.c_str()}})
                    EXPECT_TRUE(
                        board.addTag(static_cast<unsigned short>(id), fromHex(bytes)).isSuccess());
                String error;
                std::string text = attempt([&] { return step(board, error); });
                text += " " + str(error) + " ";
                for (const std::string& tag : support::tagsOf(board))
                    text += tag + ",";
                const std::string held = dir.read("eeprom");
                if (held != asText(image))
                    text += support::toHex(
                        TString<char>(held.data(), static_cast<unsigned>(held.size())));
                EXPECT_TRUE(board.addTag(7, fromHex("02")).isSuccess());
                EXPECT_EQ(support::tagsOf(board).back(), "7/1:02");
                return text;
            },
            expected);
    sweep(
        [](const Attempt& attempt) {
            return attempt([&] {
                CREATE_BD()->release();
                return XCode();
            });
        },
        {{"new", "thrown"}, {"", "0"}});
}

namespace {

/// Calls the sequencer's steps one by one.
class SteppedLedCtrl : public LedCtrl {
public:
    template <unsigned commandCount, unsigned fileCount>
    SteppedLedCtrl(const CmdDef (&commands)[commandCount], const FileNameMap (&files)[fileCount])
        : LedCtrl(commands, commandCount, files, fileCount, ACCESS_FILES, 100, 0, NotStarted()) {}
    XCode runOnce() {
        setupFifo();
        readCmd(); // empties the pipe of what a run that ran out of memory has left
        testFifo();
        openFiles();
        setupDefault();
        update();
        shutdown();
        return XCode();
    }
};

/// Collects the reports. Removes the button's file at the second press, so that the next open
/// fails.
struct Button : ServiceButton::Observer, RTD::Monitor {
    explicit Button(const std::string& file) : path(file) {}
    void onButtonPressed(const TYTime&) override {
        if (++presses == 2)
            std::filesystem::remove(path);
    }
    void onButtonReleased(const TYTime&) override {}
    void report(int, const String& text) override { reports += " " + str(text); }

    const std::string path;
    int presses = 0;
    std::string reports;
};

} // namespace

TEST(ServiceFaults, ALedThatFailsIsLoggedAndTheOthersGoOn) {
    const support::TempDir dir;
    const std::string files[] = {dir.path("first"), dir.path("second")};
    const LedCtrl::CmdDef COMMANDS[] = {{"all", "on", 0, 3, LedCtrl::ACTION_ON, 0, 0, true}};
    const LedCtrl::FileNameMap FILES[] = {{1, files[0].c_str()}, {2, files[1].c_str()}};
    const std::string kept = ", left open: 1"; // the pipe's writer, for the life of the process
    sweep(
        [&](const Attempt& attempt) {
            for (const char* const name : {"first", "second"})
                dir.write(name, "-");
            support::LogRecorder log;
            std::string text;
            SteppedLedCtrl leds(COMMANDS, FILES);
            attempt([&] { return leds.runOnce(); });
            for (const std::string& line : log.take())
                if (line.find(" 3: ") != std::string::npos)
                    text += line.substr(line.find(": ") + 2) + ",";
            return text + dir.read("first") + dir.read("second");
        },
        {{"mknod", "error mknod: .+,11" + kept},
         {"open#1", "error open: .+,error open - test fifo: ,11"},
         {"open#2", "error open - test fifo: ,11"},
         {"write#1 E", "write size ffffffff,test fifo error,11" + kept},
         {"write#1 short", "write size 1,test fifo error,11" + kept},
         {"read#2", "test fifo error,11" + kept},
         {"open#3", "unable to open file .*first ,-1" + kept},
         {"open#4", "unable to open file .*second ,1-" + kept},
         {"write#2 E", "-1" + kept},
         {"write#3 E", "1-" + kept},
         {"", "11" + kept}});
}

TEST(ServiceFaults, TheButtonReportsAFailureOnceAndRepeatsInterruptedCalls) {
    const support::TempDir dir;
    const std::string path = dir.path("button"), file = " BUTTON FILE: " + path;
    sweep(
        [&](const Attempt& attempt) {
            dir.write("button", "pressed");
            Button button(path);
            ServiceButton service(path.c_str(), &button);
            RTD::Monitor* const former = MON_EVENT.exchange(&button);
            const std::string code = attempt([&] { return service.runThread(); });
            MON_EVENT = former;
            return code + " " + std::to_string(button.presses) + button.reports;
        },
        {{"close", "-1 [012] FAILED TO CLOSE" + file},
         {"read.* E(IO|NO)", "-1 [01] FAILED TO READ FROM" + file},
         {"open.* E(IO|NO)", "-1 [012] FAILED TO OPEN" + file},
         {"short", "-1 2 INVALID SRV-BUTTON MESSAGE: p FAILED TO OPEN" + file},
         {"", "-1 2 FAILED TO OPEN" + file}});
}

TEST(SystemFaults, WhatCanNotBeReadKeepsItsValue) {
    const support::TempDir dir;
    dir.write("image-info", "5.2\nBranch\n1234\n\n\nboard\ndev\nsimulated\n");
    dir.write("value", "0x1F\n");
    sweep(
        [&](const Attempt& attempt) {
            int value = 77;
            const String path(dir.path("value").c_str());
            const std::string code = attempt([&] { return readValueFromFile(path, value); });
            return code + " " + std::to_string(value);
        },
        {{"open|read.* E", "-1 77"}, {"short", "0 0"}, {"", "0 31"}});
    sweep(
        [&](const Attempt& attempt) {
            ImageInfo info(dir.path("image-info").c_str());
            String error = "untouched";
            const std::string code = attempt([&] { return info.init(error); });
            return code + " " + str(error) + " " + str(info.line1) + " " + str(info.versionString);
        },
        {{"fopen", "-1 OPEN '.*image-info' FAILED  .*"},
         {"fgets#1 ", "0 untouched  .*"},
         {"fgets#3 ", "0 untouched 5.2 5.2-[^/]*/"},
         {"", "0 untouched 5.2 .*"}});
    sweep(
        [](const Attempt& attempt) {
            CpuLoad load;
            unsigned short last = 777, mid = 777, longest = 777;
            EXPECT_TRUE(load.setup().isSuccess());
            const std::string code = attempt([&] { return load.measure(last, mid, longest); });
            return code + (last + mid + longest == 3 * 777 ? " none" : " measured");
        },
        {{"fopen|fgets", "-1 none"}, {"", "0 .*"}});
}
