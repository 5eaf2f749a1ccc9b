// board-host BOARD: hosts the board in the folder BOARD until it receives SIGINT or SIGTERM, or
// until its service button is released.

#include <csignal>
#include <cstdint>
#include <exception>
#include <iostream>
#include <iterator>
#include <memory>
#include <stdexcept>
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

namespace {

/// Throws if `status` is a failure. The message is `failure`, followed by the reason if `error` or
/// the status holds one.
void check(const XCode& status, const std::string& failure, const String& error = String::EMPTY()) {
    if (status.isSuccess())
        return;
    const String& reason = error.isEmpty() ? status.getMessage() : error;
    throw std::runtime_error(reason.isEmpty() ? failure : failure + ": " + reason.c_str());
}

/// Stands in for a kernel driver: answers the questions that the driver `name` asks when it
/// connects.
class KernelEndpoint {
public:
    KernelEndpoint(const char* name, const std::string& device, unsigned maximum) : m_name(name) {
        const auto answer = [device, maximum](const MxMsg& request, MxMsg& reply) {
            switch (request.getCode()) {
            case MSG_GET_FILE_PATH:
                reply.set(device.c_str());
                break;
            case MSG_GET_DESCRIPTION:
                reply.set("on-board device");
                break;
            case MSG_GET_MAXIMUM:
                reply.set(maximum);
                break;
            default: // an empty reply means that the code is unknown
                break;
            }
            return XCode();
        };
        check(Mx::publish(m_name, answer), "cannot publish an endpoint");
    }
    ~KernelEndpoint() { static_cast<void>(Mx::withdraw(m_name)); }
    KernelEndpoint(const KernelEndpoint&) = delete;
    KernelEndpoint& operator=(const KernelEndpoint&) = delete;

private:
    const String m_name;
};

/// Creates the driver `name` and connects it to the endpoint of the same name.
template <class Driver>
TYPPtr<Driver> connect(const char* name) {
    auto driver = TYPPtr<Driver>::adopt(new Driver(DRIVER::INSTANCE(), name, name));
    String error;
    check(driver->open(error), std::string("cannot connect the driver '") + name + "'", error);
    return driver;
}

/// Keeps a driver in the repository as long as this object exists. Clients find the driver by its
/// name.
class Registration {
public:
    explicit Registration(IDriver* driver) : m_name(driver->getDriverName()) {
        check(DRIVER::INSTANCE()->registerDriver(driver), "cannot register a driver");
    }
    ~Registration() { static_cast<void>(DRIVER::INSTANCE()->unregisterDriver(m_name)); }
    Registration(const Registration&) = delete;
    Registration& operator=(const Registration&) = delete;

private:
    const String m_name;
};

/// The VoIP capacity of this board, which has 30 SIP legs unless its descriptor states another
/// number.
class Capacity : public CResourceVoip {
public:
    Capacity() : CResourceVoip(false) {}
    unsigned getDefaultSipLegs() override { return 30; }
};

/// Reports a press, and ends the host on release. Called on the button's own thread.
class ButtonObserver : public ServiceButton::Observer {
public:
    void onButtonPressed(const TYTime&) override { std::cout << "pressed" << std::endl; }
    void onButtonReleased(const TYTime&) override { ::kill(::getpid(), SIGTERM); }
};

/// Shuts down the LED service and deletes it.
struct ReleaseLeds {
    void operator()(LedCtrl* leds) const { leds->release(); }
};

constexpr std::uint32_t STATUS_LED = 0x1;
constexpr std::int32_t STATUS_GROUP = 1;
constexpr unsigned TICK_MS = 100;
constexpr unsigned BLINK_PATTERN = 0x0F0F0F0F;

constexpr LedCtrl::CmdDef LED_COMMANDS[] = {
    {"system", "ready", 0, STATUS_LED, LedCtrl::ACTION_ON, STATUS_GROUP, 0, true},
    {"system", "alarm", 0, STATUS_LED, LedCtrl::ACTION_BLINK, STATUS_GROUP, 0, false},
};

/// A client: it knows the fan's name and interface, but not its class.
void useFan() {
    TYPPtr<IFanControl> fan;
    check(DRIVER::INSTANCE()->getInterface("fan", fan), "cannot find the fan");
    IFanControl::FanSpeed speed = IFanControl::FAN_SPEED_OFF;
    {
        const TYLockHolder hold = fan.getLock(); // no other thread sets the speed in between
        check(fan->setFanSpeed(IFanControl::FAN_SPEED_HIGH), "cannot set the fan speed");
        check(fan->getActualFanSpeed(speed), "cannot read the fan speed");
    }
    std::cout << "fan speed " << speed << "\n";
}

/// Hosts the board until one of `stopSignals` arrives. Even after an exception, objects are
/// destroyed in reverse order: first the threads, then the drivers, then the tables and texts that
/// threads and drivers use.
void host(const std::string& board, const sigset_t& stopSignals) {
    const std::string eeprom = board + "/eeprom.bin";
    const std::string statusLed = board + "/dev/status";
    const LedCtrl::FileNameMap ledFiles[] = {{STATUS_LED, statusLed.c_str()}};

    const KernelEndpoint fanEndpoint("fan", board + "/dev/fan", 255);
    const KernelEndpoint thermalEndpoint("thermal", board + "/dev/temperature", 85);

    const auto fan = connect<CFanControl>("fan");
    const auto thermal = connect<CThermalSensor>("thermal");
    const auto descriptor = TYPPtr<CBoardDescr>::adopt(new CBoardDescr(eeprom.c_str(), 128, 512));
    const auto capacity = TYPPtr<Capacity>::adopt(new Capacity);

    const Registration fanRegistration(fan.get());
    const Registration thermalRegistration(thermal.get());
    const Registration descriptorRegistration(descriptor.get());
    const Registration capacityRegistration(capacity.get());

    String error;
    check(descriptor->readBD(error), "cannot read the descriptor", error);
    check(capacity->setup(error), "cannot set up the capacity", error); // looks up the descriptor
    std::cout << capacity->getSipLegCount() << " SIP legs\n";

    useFan();

    const std::unique_ptr<LedCtrl, ReleaseLeds> leds(
        new LedCtrl(LED_COMMANDS, std::size(LED_COMMANDS), ledFiles, std::size(ledFiles),
                    LedCtrl::ACCESS_FILES, TICK_MS, BLINK_PATTERN));
    ButtonObserver observer;
    ServiceButton button((board + "/dev/button").c_str(), &observer);
    check(button.start(error), "cannot watch the button", error);

    std::cout << "ready" << std::endl;
    int received = 0;
    ::sigwait(&stopSignals, &received);
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::cerr << "usage: board-host BOARD\n";
        return 2;
    }
    // Before the first thread starts, so that all threads inherit the mask.
    sigset_t stopSignals;
    ::sigemptyset(&stopSignals);
    ::sigaddset(&stopSignals, SIGINT);
    ::sigaddset(&stopSignals, SIGTERM);
    ::pthread_sigmask(SIG_BLOCK, &stopSignals, nullptr);
    try {
        host(argv[1], stopSignals);
    } catch (const std::exception& fault) {
        std::cerr << "board-host: " << fault.what() << "\n";
        return 1;
    }
    return 0;
}
