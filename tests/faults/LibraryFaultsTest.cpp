#include <cerrno>
#include <cstring>
#include <filesystem>
#include <functional>

#include <gtest/gtest.h>

#include "CBoardDescr.h"
#include "CFanControl.h"
#include "CLedControl.h"
#include "CPowerStatus.h"
#include "CThermalSensor.h"
#include "CpuLoad.h"
#include "ImageInfo.h"
#include "InfoContainer.h"
#include "LedCtrl.h"
#include "ServiceButton.h"
#include "TYPPtr.h"
#include "faults/Faults.h"
#include "support/Descriptors.h"
#include "support/DriverFixtures.h"
#include "support/LogRecorder.h"
#include "support/ScriptedKernel.h"

using support::str;
using support::TempDir;

namespace {

/// The call that failed: its place among the calls, from 1, its name, and the error, 0 for a short
/// count. The name is empty if nothing failed.
struct Fault {
    unsigned place = 0;
    std::string name;
    int error = 0;
    bool is(const char* call) const { return name == call; }
    bool isShort() const { return !name.empty() && error == 0; }
};

std::vector<int> errorsOf(const std::string& name) {
    constexpr int SHORT = 0;
    if (name == "read")
        return {EIO, EINTR, SHORT};
    if (name == "write")
        return {EIO, EINTR, ENOSPC, SHORT};
    if (name == "open" || name == "fopen")
        return {EIO, EINTR, ENOENT};
    return {EIO, EINTR};
}

/// Runs `step` without a failure, then once for each way in which one of its calls can fail, each
/// time between `prepare` and `check`. `step` must leave no descriptor open, except `kept`.
void withEachFault(
    const std::function<void()>& prepare, const std::function<void()>& step,
    const std::function<void(const Fault&)>& check,
    const std::function<int(const Fault&)>& kept = [](const Fault&) { return 0; }) {
    const auto run = [&](const Fault& fault) {
        SCOPED_TRACE(std::to_string(fault.place) + " " + fault.name + ": " +
                     (fault.isShort() ? "short" : std::strerror(fault.error)));
        prepare();
        const auto before = support::openDescriptors();
        faults::begin({fault.place, fault.error});
        step();
        std::vector<std::string> calls = faults::end();
        EXPECT_EQ(support::openDescriptors() - before, kept(fault));
        check(fault);
        return calls;
    };
    const std::vector<std::string> calls = run({});
    ASSERT_FALSE(calls.empty()) << "the calls do not come by here";
    for (unsigned place = 1; place <= calls.size(); ++place) {
        const std::string name = calls[place - 1].substr(0, calls[place - 1].find(' '));
        for (const int error : errorsOf(name))
            run({place, name, error});
    }
}

/// A `Driver`, newly connected to the scripted kernel driver for each run.
template <class Driver>
class DriverFaults : public support::ScriptedKernel {
protected:
    DriverFaults() {
        answer(MAXIMUM, 255U);
        answer(BI_STATUS, true);
    }

    /// Runs `operation` on a connected driver whose device holds `content`.
    void eachFault(
        const std::string& content, const std::function<XCode(Driver&)>& operation,
        const std::function<void(Driver&, const Fault&, const XCode&)>& check,
        const std::function<void(Driver&)>& arrange = [](Driver&) {}) {
        TYPPtr<Driver> driver;
        XCode status;
        withEachFault(
            [&] {
                dir.write("device", content);
                driver = TYPPtr<Driver>::adopt(new Driver(nullptr, "driver", ENDPOINT));
                ASSERT_TRUE(driver->open(error).isSuccess());
                arrange(*driver);
            },
            [&] { status = operation(*driver); },
            [&](const Fault& fault) {
                EXPECT_EQ(str(status.getMessage()), "");
                check(*driver, fault, status);
            });
    }

    /// The same for an operation that reads: it returns `right`, or what `Value` says if the read
    /// fails or is short.
    template <class Value>
    void eachFaultOfReading(const std::string& content, XCode (Driver::*operation)(Value&),
                            Value right, Value unread, Value ofOneByte) {
        Value value{};
        eachFault(
            content,
            [&](Driver& driver) {
                value = static_cast<Value>(77);
                return (driver.*operation)(value);
            },
            [&](Driver&, const Fault& fault, const XCode& status) {
                EXPECT_EQ(status.getCode(), fault.is("open") ? -1 : 0);
                const bool isUnread = fault.is("open") || (fault.is("read") && !fault.isShort());
                EXPECT_EQ(value, isUnread ? unread : fault.isShort() ? ofOneByte : right);
            });
    }
};

using FanFaults = DriverFaults<CFanControl>;
using ThermalFaults = DriverFaults<CThermalSensor>;
using PowerFaults = DriverFaults<CPowerStatus>;
using LedFaults = DriverFaults<CLedControl>;

} // namespace

TEST_F(FanFaults, ADriverIsValidOnceItsDeviceFileCouldBeOpened) {
    TYPPtr<CFanControl> driver;
    XCode status;
    withEachFault(
        [&] { driver = TYPPtr<CFanControl>::adopt(new CFanControl(nullptr, "driver", ENDPOINT)); },
        [&] { status = driver->open(error); },
        [&](const Fault& fault) {
            EXPECT_EQ(status.getCode(), fault.is("open") ? -1 : 0);
            EXPECT_EQ(driver->isValid(), !fault.is("open"));
            String description;
            EXPECT_TRUE(driver->getDescription(description).isSuccess());
            EXPECT_EQ(str(description), "As the kernel says");
        });
}

TEST_F(FanFaults, AReadingIsOffWhereItFails) {
    eachFaultOfReading("200\n", &CFanControl::getActualFanSpeed, IFanControl::FAN_SPEED_HIGH,
                       IFanControl::FAN_SPEED_OFF, IFanControl::FAN_SPEED_OFF);
}

TEST_F(FanFaults, ARequestIsRememberedAndOnlyAnOpenThatFailsIsTold) {
    eachFault(
        "0", [](CFanControl& fan) { return fan.setFanSpeed(IFanControl::FAN_SPEED_HIGH); },
        [&](CFanControl& fan, const Fault& fault, const XCode& status) {
            EXPECT_EQ(status.getCode(), fault.is("open") ? -1 : 0);
            IFanControl::FanSpeed speed = IFanControl::FAN_SPEED_OFF;
            EXPECT_TRUE(fan.getFanSpeed(speed).isSuccess());
            EXPECT_EQ(speed, IFanControl::FAN_SPEED_HIGH);
            const bool isUntouched = fault.is("open") || (fault.is("write") && !fault.isShort());
            EXPECT_EQ(std::string(held().c_str()), isUntouched       ? "0"
                                                   : fault.isShort() ? "1"
                                                                     : "170");
        });
}

TEST_F(ThermalFaults, AReadingIsZeroWhereItFails) {
    eachFaultOfReading<float>("45500\n", &CThermalSensor::getTemperature, 45.5F, 0.0F, 0.004F);
}

TEST_F(PowerFaults, AReadingIsZeroWhereItFails) {
    eachFaultOfReading<unsigned>("12\n", &CPowerStatus::getPowerStatus, 12U, 0U, 1U);
}

TEST_F(LedFaults, AReadingIsZeroWhereItFails) {
    unsigned state = 0;
    eachFault(
        "2\n",
        [&](CLedControl& led) {
            state = 77;
            return led.getLedStatus(state);
        },
        [&](CLedControl&, const Fault& fault, const XCode& status) {
            const bool isUnread = fault.is("open") || (fault.is("read") && !fault.isShort());
            EXPECT_EQ(status.getCode(), fault.is("open") ? -1 : 0);
            EXPECT_EQ(state, isUnread ? 0U : 2U);
        });
}

TEST_F(LedFaults, AStateIsWrittenOrTheFailureToOpenTold) {
    eachFault(
        "0", [](CLedControl& led) { return led.setLedStatus(1); },
        [&](CLedControl&, const Fault& fault, const XCode& status) {
            EXPECT_EQ(status.getCode(), fault.is("open") ? -1 : 0);
            const bool isUntouched = fault.is("open") || (fault.is("write") && !fault.isShort());
            EXPECT_EQ(held()[0], isUntouched ? '0' : '1');
        });
}

TEST_F(LedFaults, AnOverlayIsOnWhateverFailsAndGivesBackOffWhereTheStateWasNotRead) {
    constexpr unsigned OPEN_FOR_READING = 1;
    eachFault(
        "1", [](CLedControl& led) { return led.setLedBiStatus(1); },
        [&](CLedControl& led, const Fault& fault, const XCode& status) {
            const bool isWriting = fault.place > 3; // after open, read, close
            EXPECT_EQ(status.getCode(), fault.is("open") && isWriting ? -1 : 0);
            EXPECT_TRUE(led.setLedBiStatus(0).isSuccess());
            const bool isUnread =
                fault.place == OPEN_FOR_READING || (fault.is("read") && !fault.isShort());
            EXPECT_EQ(held()[0], isUnread ? '0' : '1');
        });
}

TEST_F(LedFaults, ToggleModeIsOnAlsoWhereTheStateCanNotBeReadAndStaysOnUntilItIsGivenBack) {
    const auto enable = [](CLedControl& led) { EXPECT_TRUE(led.enableLedToggle().isSuccess()); };
    eachFault(
        "1", [](CLedControl& led) { return led.enableLedToggle(); },
        [&](CLedControl& led, const Fault& fault, const XCode& status) {
            EXPECT_EQ(status.getCode(), fault.is("open") ? -1 : 0);
            EXPECT_FALSE(led.enableLedToggle().isSuccess());
            EXPECT_TRUE(led.disableLedToggle().isSuccess());
        });
    eachFault(
        "0", [](CLedControl& led) { return led.setLedToggleStatus(1); },
        [&](CLedControl& led, const Fault& fault, const XCode& status) {
            EXPECT_EQ(status.getCode(), fault.is("open") ? -1 : 0);
            EXPECT_TRUE(led.setLedToggleStatus(1).isSuccess());
            EXPECT_EQ(held()[0], '2') << "the phase goes on";
        },
        enable);
    eachFault(
        "1", [](CLedControl& led) { return led.disableLedToggle(); },
        [&](CLedControl& led, const Fault& fault, const XCode& status) {
            EXPECT_EQ(status.getCode(), fault.is("open") ? -1 : 0);
            EXPECT_EQ(led.disableLedToggle().isSuccess(), fault.is("open"));
        },
        enable);
}

TEST_F(LedFaults, TheDumpHasItsRowsWhateverFails) {
    InfoContainer rows;
    eachFault(
        "1",
        [&](CLedControl& led) {
            rows = InfoContainer();
            led.getInfo(rows, 1, 0, 0, 0, String::EMPTY());
            return XCode();
        },
        [&](CLedControl&, const Fault& fault, const XCode&) {
            ASSERT_EQ(rows.getRows().size(), 3U);
            const bool isUnread = fault.is("open") || (fault.is("read") && !fault.isShort());
            EXPECT_EQ(str(rows.getRows().back().value), isUnread ? "off" : "on");
        });
}

TEST(DescriptorFaults, AListThatCanNotBeReadStaysAndTheTextSaysWhatFailed) {
    const TempDir dir;
    const std::string path = dir.path("eeprom");
    const TString<char> bytes = support::fromHex("00 2D 00 08 12 34 AB CD 00 00 00 04");
    dir.write("eeprom", std::string(bytes.data(), bytes.length()));
    std::unique_ptr<CBoardDescr> board;
    XCode status;
    String error;
    withEachFault(
        [&] {
            error = "untouched";
            board = std::make_unique<CBoardDescr>(path.c_str(), 5, 512);
            EXPECT_TRUE(board->addTag(9, support::fromHex("01")).isSuccess());
        },
        [&] { status = board->readBD(error); },
        [&](const Fault& fault) {
            const bool fails = fault.is("open") || (fault.is("read") && !fault.isShort());
            EXPECT_EQ(status.getCode(), fails ? -1 : 0);
            EXPECT_EQ(str(error), fails ? std::string("FAILED TO ") +
                                              (fault.is("open") ? "OPEN" : "READ") + " DEVICE '" +
                                              path + "'"
                                        : "untouched");
            EXPECT_EQ(support::tagsOf(*board),
                      fails ? std::vector<std::string>{"9/1:01"}
                            : (std::vector<std::string>{"45/4:12 34 AB CD", "0/0:"}));
        });
}

TEST(DescriptorFaults, AWriteThatFailsIsToldAndOneThatIsShortIsNot) {
    const TempDir dir;
    const std::string path = dir.path("eeprom");
    CBoardDescr board(path.c_str(), 128, 512);
    EXPECT_TRUE(board.addTag(9, support::fromHex("01 02")).isSuccess());
    XCode status;
    String error;
    withEachFault(
        [&] {
            error = "untouched";
            dir.write("eeprom", "\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF");
        },
        [&] { status = board.writeBD(error); },
        [&](const Fault& fault) {
            const bool fails = fault.is("open") || (fault.is("write") && !fault.isShort());
            EXPECT_EQ(status.getCode(), fails ? -1 : 0);
            EXPECT_EQ(str(error), fails ? std::string("FAILED TO ") +
                                              (fault.is("open") ? "OPEN" : "WRITE") + " DEVICE '" +
                                              path + "'"
                                        : "untouched");
            const std::string held = dir.read("eeprom");
            EXPECT_EQ(support::toHex(TString<char>(held.data(), 8)),
                      fails             ? "FF FF FF FF FF FF FF FF"
                      : fault.isShort() ? "00 FF FF FF FF FF FF FF"
                                        : "00 09 00 06 01 02 FF FF");
            EXPECT_EQ(support::tagsOf(board), std::vector<std::string>{"9/2:01 02"});
        });
}

namespace {

/// Calls the sequencer's steps one by one.
class SteppedLedCtrl : public LedCtrl {
public:
    SteppedLedCtrl(const CmdDef* commands, unsigned commandCount, const FileNameMap* files,
                   unsigned fileCount)
        : LedCtrl(commands, commandCount, files, fileCount, ACCESS_FILES, 100, 0, NotStarted()) {}
    void comeUp() {
        setupFifo();
        testFifo();
        openFiles();
        setupDefault();
    }
    using LedCtrl::readCmd;
    using LedCtrl::update;
};

} // namespace

TEST(LedCtrlFaults, EachFailureIsLoggedAndTheRestGoesOn) {
    const TempDir dir;
    const std::string files[] = {dir.path("first"), dir.path("second")};
    const LedCtrl::CmdDef COMMANDS[] = {{"all", "on", 0, 3, LedCtrl::ACTION_ON, 0, 0, true},
                                        {"all", "off", 0, 3, LedCtrl::ACTION_OFF, 0, 0, false}};
    const LedCtrl::FileNameMap FILES[] = {{1, files[0].c_str()}, {2, files[1].c_str()}};
    enum Place : unsigned {
        MAKE = 1,
        READER,
        WRITER,
        TEST_WRITE,
        TEST_READ,
        OPEN_1,
        OPEN_2,
        LED_1,
        LED_2
    };
    support::LogRecorder log;
    std::unique_ptr<SteppedLedCtrl> leds;
    const auto linesFor = [&](const Fault& fault) -> std::vector<std::string> {
        const std::string error = std::string("DB_FRAMEWORK 3: ");
        switch (fault.place) {
        case MAKE:
            return {error + "error mknod: " + std::strerror(fault.error)};
        case READER:
            return {error + "error open: " + std::strerror(fault.error),
                    error + "error open - test fifo: "};
        case WRITER:
            return {error + "error open - test fifo: "};
        case TEST_WRITE:
            return {error + (fault.isShort() ? "write size 1" : "write size ffffffff"),
                    error + "test fifo error"};
        case TEST_READ:
            return {error + "test fifo error"};
        case OPEN_1:
        case OPEN_2:
            return {error + "unable to open file " + files[fault.place - OPEN_1] + " "};
        default:
            return {};
        }
    };
    withEachFault(
        [&] {
            for (const std::string name : {"first", "second"})
                dir.write(name, "-");
            leds = std::make_unique<SteppedLedCtrl>(COMMANDS, 2, FILES, 2);
            static_cast<void>(log.take());
        },
        [&] {
            leds->comeUp();
            leds->update();
            leds->readCmd();
            leds->shutdown();
        },
        [&](const Fault& fault) {
            std::vector<std::string> errors;
            for (const std::string& line : log.take())
                if (line.find(" 3: ") != std::string::npos)
                    errors.push_back(line);
            EXPECT_EQ(errors, linesFor(fault));
            const auto isDark = [&](Place open, Place write) {
                return fault.place == open || (fault.place == write && !fault.isShort());
            };
            EXPECT_EQ(dir.read("first"), isDark(OPEN_1, LED_1) ? "-" : "1");
            EXPECT_EQ(dir.read("second"), isDark(OPEN_2, LED_2) ? "-" : "1");
        },
        [](const Fault& fault) { // the pipe keeps a writer for the life of the process
            return fault.place == READER || fault.place == WRITER ? 0 : 1;
        });
}

namespace {

/// Collects the reports. Removes the button's file at the second press, so that the next open
/// fails.
class Button : public ServiceButton::Observer, public RTD::Monitor {
public:
    explicit Button(const std::string& path) : m_path(path), m_former(MON_EVENT.exchange(this)) {}
    ~Button() override { MON_EVENT = m_former; }
    Button(const Button&) = delete;
    Button& operator=(const Button&) = delete;
    void onButtonPressed(const TYTime&) override {
        if (++presses == 2)
            std::filesystem::remove(m_path);
    }
    void onButtonReleased(const TYTime&) override {}
    void report(int, const String& text) override { reports.push_back(str(text)); }

    int presses = 0;
    std::vector<std::string> reports;

private:
    const std::string m_path;
    RTD::Monitor* const m_former;
};

} // namespace

TEST(ButtonFaults, WhatFailsIsReportedOnceAndInterruptedCallsAreMadeAgain) {
    const TempDir dir;
    const std::string path = dir.path("button");
    std::unique_ptr<Button> button;
    std::unique_ptr<ServiceButton> service;
    XCode status;
    withEachFault(
        [&] {
            dir.write("button", "pressed");
            button.reset(); // restores the monitor, which the next recorder replaces
            button = std::make_unique<Button>(path);
            service = std::make_unique<ServiceButton>(path.c_str(), button.get());
        },
        [&] { status = service->runThread(); },
        [&](const Fault& fault) {
            EXPECT_EQ(status.getCode(), -1);
            const bool isRepeated = fault.error == EINTR && !fault.is("close");
            std::vector<std::string> expected;
            if (fault.isShort())
                expected.emplace_back("INVALID SRV-BUTTON MESSAGE: p");
            if (fault.is("read") && !isRepeated && !fault.isShort())
                expected.push_back("FAILED TO READ FROM BUTTON FILE: " + path);
            else if (fault.is("close"))
                expected.push_back("FAILED TO CLOSE BUTTON FILE: " + path);
            else
                expected.push_back("FAILED TO OPEN BUTTON FILE: " + path);
            EXPECT_EQ(button->reports, expected);
            const bool isUnharmed = fault.name.empty() || isRepeated || fault.isShort();
            if (isUnharmed) {
                EXPECT_EQ(button->presses, 2);
            }
        });
}

TEST(CpuLoadFaults, WithoutItsLineItFailsAndLeavesTheOutputsAlone) {
    CpuLoad load;
    XCode setup, current, measured;
    unsigned long busy = 0, idle = 0;
    unsigned short last = 0, mid = 0, longest = 0;
    withEachFault(
        [&] {
            load = CpuLoad();
            busy = idle = 77;
            last = mid = longest = 777;
        },
        [&] {
            setup = load.setup();
            current = load.getCurrentLoad(busy, idle);
            measured = load.measure(last, mid, longest);
        },
        [&](const Fault& fault) {
            const auto expected = [&](unsigned first) { // of three calls
                return !fault.is("fclose") && fault.place >= first && fault.place < first + 3 ? -1
                                                                                              : 0;
            };
            EXPECT_EQ(setup.getCode(), expected(1));
            EXPECT_EQ(current.getCode(), expected(4));
            EXPECT_EQ(busy == 77 && idle == 77, expected(4) != 0);
            EXPECT_EQ(measured.getCode(), expected(7));
            if (expected(7) != 0) {
                EXPECT_EQ(last + mid + longest, 3 * 777);
            }
        });
}

TEST(ImageInfoFaults, WhatCanNotBeReadKeepsWhatItHeld) {
    const TempDir dir;
    const std::string path = dir.path("image-info");
    dir.write("image-info", "5.2\nBranch\n1234\n\n\nboard\ndev\nsimulated\n");
    std::unique_ptr<ImageInfo> info;
    XCode status;
    String error;
    withEachFault(
        [&] {
            info = std::make_unique<ImageInfo>(path.c_str());
            error = "untouched";
        },
        [&] { status = info->init(error); },
        [&](const Fault& fault) {
            EXPECT_EQ(status.getCode(), fault.is("fopen") ? -1 : 0);
            EXPECT_EQ(str(error), fault.is("fopen") ? "OPEN '" + path + "' FAILED" : "untouched");
            // The calls are an open, one per line, a close. If a line fails, the next one takes its
            // place.
            const bool isRead = !fault.is("fopen") && !fault.is("fgets");
            EXPECT_EQ(str(info->versionString) == "5.2-dev/1234", isRead || fault.place > 8)
                << str(info->versionString);
            EXPECT_EQ(str(info->line1).empty(), fault.place == 2 || fault.is("fopen"));
        });
}

TEST(ImageInfoFaults, AValueThatCanNotBeReadStays) {
    const TempDir dir;
    dir.write("value", "0x1F\n");
    XCode status;
    int value = 0;
    withEachFault([&] { value = 77; },
                  [&] { status = readValueFromFile(dir.path("value").c_str(), value); },
                  [&](const Fault& fault) {
                      const bool fails = fault.is("open") || (fault.is("read") && !fault.isShort());
                      EXPECT_EQ(status.getCode(), fails ? -1 : 0);
                      EXPECT_EQ(value, fails ? 77 : fault.isShort() ? 0 : 31);
                  });
}
