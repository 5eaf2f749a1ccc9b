#include <filesystem>

#include <gtest/gtest.h>

#include "LedCtrl.h"
#include "ServiceButton.h"
#include "faults/Sweep.h"
#include "support/DriverFixtures.h"
#include "support/LogRecorder.h"
#include "support/TempDir.h"

using faults::Attempt;
using faults::sweep;
using support::str;

namespace {

/// Calls the sequencer's steps one by one.
class SteppedLedCtrl : public LedCtrl {
public:
    template <unsigned commandCount, unsigned fileCount>
    SteppedLedCtrl(const CmdDef (&commands)[commandCount], const FileNameMap (&files)[fileCount])
        : LedCtrl(commands, commandCount, files, fileCount, ACCESS_FILES, 100, 0, NotStarted()) {}
    XCode runOnce() {
        setupFifo();
        readCmd(); // empties the pipe, in which a run without memory may have left lines
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
    const std::string kept = ", left open: 1"; // the pipe's writer, which is never closed
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
         {"open#2|fstat", "error open - test fifo: ,11"},
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
