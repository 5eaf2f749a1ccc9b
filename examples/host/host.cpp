// board-host BOARD: hosts the board in that folder until SIGTERM, or until its service button comes
// up again.

#include <csignal>
#include <iostream>
#include <string>
#include <unistd.h>

#include "CBoardDescr.h"
#include "CFanControl.h"
#include "CResourceVoip.h"
#include "CThermalSensor.h"
#include "DRIVER.h"
#include "IDriverRepository.h"
#include "LedCtrl.h"
#include "ServiceButton.h"

static void check(const XCode& status, const char* what, const String& error = String::EMPTY()) {
    if (!status.isSuccess())
        throw std::string(what) + ": " + (error.isEmpty() ? status.getMessage() : error).c_str();
}

template <class Driver>
struct Connected { // a driver, and the kernel driver's end of its channel, which answers at
                   // connection
    Connected(const char* name, const std::string& path, unsigned maximum)
        : driver(TYPPtr<Driver>::adopt(new Driver(DRIVER::INSTANCE(), name, name))) {
        const auto answer = [path, maximum](const MxMsg& request, MxMsg& reply) {
            request.getCode() == MSG_GET_MAXIMUM     ? reply.set(maximum)
            : request.getCode() == MSG_GET_FILE_PATH ? reply.set(path.c_str())
                                                     : reply.set("of the board");
            return XCode();
        };
        String error = "can't be connected"; // unless the driver says more
        check(Mx::publish(name, answer), name);
        check(driver->open(error), name, error);
    }
    ~Connected() { static_cast<void>(Mx::withdraw(driver->getDriverName())); }
    const TYPPtr<Driver> driver;
};

struct Registered { // found by its name for as long as this object lives
    Registered(IDriver* driver) : name(driver->getDriverName()) {
        check(DRIVER::INSTANCE()->registerDriver(driver), name.c_str());
    }
    ~Registered() { static_cast<void>(DRIVER::INSTANCE()->unregisterDriver(name)); }
    const String name;
};

struct Capacity : CResourceVoip {
    Capacity() : CResourceVoip(false) {}
    unsigned getDefaultSipLegs() override { return 30; }
};

struct Button : ServiceButton::Observer { // called on the button's thread
    void onButtonPressed(const TYTime&) override { std::cout << "pressed" << std::endl; }
    void onButtonReleased(const TYTime&) override { ::kill(::getpid(), SIGTERM); }
};

constexpr LedCtrl::CmdDef COMMANDS[] = {
    {"system", "ready", 0, 0x1, LedCtrl::ACTION_ON, 1, 0, true},
    {"system", "alarm", 0, 0x1, LedCtrl::ACTION_BLINK, 1, 0, false}};

static void useFan() { // as any part of the program does, on any thread: by name and interface
    TYPPtr<IFanControl> fan;
    check(DRIVER::INSTANCE()->getInterface("fan", fan), "client");
    const TYLockHolder hold = fan.getLock(); // two calls that belong together
    IFanControl::FanSpeed speed = IFanControl::FAN_SPEED_OFF;
    check(fan->setFanSpeed(IFanControl::FAN_SPEED_HIGH), "fan");
    check(fan->getActualFanSpeed(speed), "fan");
    std::cout << "fan speed " << speed << "\n";
}

int main(int, char** words) try { // what is made last goes first: threads, names, drivers, the rest
    sigset_t ends{};              // blocked before the first thread starts, waited for below
    ::sigaddset(&ends, SIGTERM);
    ::pthread_sigmask(SIG_BLOCK, &ends, nullptr);
    const std::string board = words[1] ? words[1] : ".";
    const std::string eeprom = board + "/eeprom.bin",
                      lamp = board + "/dev/status"; // used by pointer
    const LedCtrl::FileNameMap files[] = {{0x1, lamp.c_str()}};
    const Connected<CFanControl> fan("fan", board + "/dev/fan", 255);
    const Connected<CThermalSensor> sensor("thermal", board + "/dev/temperature", 85);
    const auto descriptor = TYPPtr<CBoardDescr>::adopt(new CBoardDescr(eeprom.c_str(), 128, 512));
    const auto capacity = TYPPtr<Capacity>::adopt(new Capacity);
    const Registered names[] = {fan.driver.get(), sensor.driver.get(), descriptor.get(),
                                capacity.get()};
    String error;
    check(descriptor->readBD(error), "descriptor", error);
    check(capacity->setup(error), "capacity", error); // asks the descriptor by its name
    std::cout << capacity->getSipLegCount() << " SIP legs\n";
    useFan();
    LedCtrl leds(COMMANDS, 2, files, 1, LedCtrl::ACCESS_FILES, 100, 0x0F0F0F0F);
    Button observer;
    ServiceButton button((board + "/dev/button").c_str(), &observer);
    check(button.start(error), "button", error);
    std::cout << "ready" << std::endl;
    ::sigwaitinfo(&ends, nullptr);
    static_cast<void>(button.stop()); // the observer is called no more
    leds.shutdown();                  // and the pipe and the LED's file are closed
} catch (const std::string& fault) {
    std::cerr << "board-host: " << fault << "\n";
    return 1;
}
