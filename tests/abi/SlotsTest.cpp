#include <cstddef>
#include <cstring>
#include <initializer_list>
#include <string>

#include <gtest/gtest.h>

#include "CBoardDescrTamarin.h"
#include "CFanControl.h"
#include "CLedControl.h"
#include "CPowerStatus.h"
#include "CResourceVoip.h"
#include "CThermalSensor.h"
#include "LedCtrl.h"
#include "ServiceButton.h"

// Hosts and drivers are compiled separately and call each other by slot number, so these orders
// never change.

namespace {

/// The slot of a virtual operation, read from the pointer to it.
template <class Operation>
std::size_t slotOf(Operation operation) {
    std::ptrdiff_t words[2];
    static_assert(sizeof words == sizeof operation);
    std::memcpy(words, &operation, sizeof words);
#ifdef __arm__ // the lowest bit of a code address is used there, so the other word marks a slot
    const bool isVirtual = (words[1] & 1) != 0;
    const std::ptrdiff_t offset = words[0];
#else
    const bool isVirtual = (words[0] & 1) != 0;
    const std::ptrdiff_t offset = words[0] - 1;
#endif
    return isVirtual ? static_cast<std::size_t>(offset) / sizeof(void*) : SIZE_MAX;
}

template <class Class, class Signature>
using Member = Signature Class::*;

struct Operation {
    const char* name; ///< null for a destructor, which has no pointer
    std::size_t slot;
};

constexpr std::size_t DESTRUCTORS = 2; // one that destroys, one that also frees

void expectOrder(std::size_t first, std::initializer_list<Operation> operations) {
    for (const Operation& operation : operations) {
        if (!operation.name) {
            first += DESTRUCTORS;
            continue;
        }
        EXPECT_EQ(operation.slot, first) << operation.name << " is not in its slot";
        ++first;
    }
}

#define OPERATION(Class, name)                                                                     \
    Operation {                                                                                    \
#Class "::" #name, slotOf(&Class::name)                                                    \
    }
#define OVERLOAD(Class, name, Signature)                                                           \
    Operation {                                                                                    \
#Class "::" #name, slotOf(static_cast <Member <Class, Signature>>(&Class::name))           \
    }
#define UNKNOWN(Class)                                                                             \
    OPERATION(Class, queryInterface), OPERATION(Class, addRef), OPERATION(Class, release),         \
        OPERATION(Class, getLock), Operation {                                                     \
        nullptr, 0                                                                                 \
    }
#define DRIVER(Class)                                                                              \
    UNKNOWN(Class), OPERATION(Class, getDID), OPERATION(Class, getDriverName),                     \
        OPERATION(Class, getDriverRepository), OPERATION(Class, setDriverRepository)
#define TAGS(Class)                                                                                \
    OPERATION(Class, getNumberOfTag), OPERATION(Class, hasTag), OPERATION(Class, getTagUInt),      \
        OPERATION(Class, getTagUInt8), OPERATION(Class, getTagUInt16),                             \
        OPERATION(Class, getTagUInt32), OPERATION(Class, getTagString),                            \
        OPERATION(Class, setTagUInt), OPERATION(Class, setTagUInt8),                               \
        OPERATION(Class, setTagUInt16), OPERATION(Class, setTagUInt32),                            \
        OPERATION(Class, setTagString), OPERATION(Class, addTag), OPERATION(Class, insertTag),     \
        OVERLOAD(Class, getTag, XCode(BD::TagId, unsigned, TString<char>&, String&)),              \
        OPERATION(Class, setTag), OPERATION(Class, removeTag), OPERATION(Class, readBD),           \
        OPERATION(Class, writeBD), OPERATION(Class, getMacAddress),                                \
        OPERATION(Class, setMacAddress), OPERATION(Class, insertMacAddress),                       \
        OPERATION(Class, addMacAddress), OPERATION(Class, getPlatformID),                          \
        OPERATION(Class, getProductID)

} // namespace

TEST(Slots, OfTheFrameworksInterfaces) {
    expectOrder(0, {UNKNOWN(IUnknown)});
    expectOrder(0, {UNKNOWN(IInfo), OPERATION(IInfo, getInfo)});
    expectOrder(0, {DRIVER(IDriver)});
}

TEST(Slots, OfTheDriversInterfaces) {
    expectOrder(0,
                {UNKNOWN(IFanControl), OPERATION(IFanControl, isValid),
                 OPERATION(IFanControl, getDescription), OPERATION(IFanControl, getActualFanSpeed),
                 OPERATION(IFanControl, getFanSpeed), OPERATION(IFanControl, setFanSpeed)});
    expectOrder(0, {UNKNOWN(IThermalSensor), OPERATION(IThermalSensor, isValid),
                    OPERATION(IThermalSensor, getDescription),
                    OPERATION(IThermalSensor, getTemperature),
                    OPERATION(IThermalSensor, getMaxTemperature)});
    expectOrder(0,
                {UNKNOWN(IPowerStatus), OPERATION(IPowerStatus, isValid),
                 OPERATION(IPowerStatus, getDescription), OPERATION(IPowerStatus, getPowerStatus)});
    expectOrder(
        0, {UNKNOWN(ILedControl), OPERATION(ILedControl, getInfo), OPERATION(ILedControl, isValid),
            OPERATION(ILedControl, getDescription), OPERATION(ILedControl, getLedStatus),
            OPERATION(ILedControl, setLedStatus), OPERATION(ILedControl, setLedBiStatus),
            OPERATION(ILedControl, setLedToggleStatus), OPERATION(ILedControl, enableLedToggle),
            OPERATION(ILedControl, disableLedToggle)});
    expectOrder(0, {UNKNOWN(IBoardDescr), TAGS(IBoardDescr)});
    expectOrder(0, {UNKNOWN(IResourceVoip), OPERATION(IResourceVoip, getDspChannelCount),
                    OPERATION(IResourceVoip, getSipLegCount)});
}

TEST(Slots, OfTheExportedClasses) {
    expectOrder(0, {DRIVER(CFanControl)});
    expectOrder(0, {DRIVER(CThermalSensor)});
    expectOrder(0, {DRIVER(CPowerStatus)});
    expectOrder(0, {DRIVER(CLedControl)});
    expectOrder(0, {DRIVER(CBoardDescr), TAGS(CBoardDescr), OPERATION(CBoardDescr, getInfo),
                    OPERATION(CBoardDescr, getRawInfo), OPERATION(CBoardDescr, readRawBD),
                    OPERATION(CBoardDescr, writeRawBD)});
    struct Capacity : CResourceVoip {
        using CResourceVoip::getDefaultSipLegs;
    };
    expectOrder(0, {DRIVER(Capacity), OPERATION(Capacity, setup),
                    OPERATION(Capacity, getDspChannelCount), OPERATION(Capacity, getSipLegCount),
                    OPERATION(Capacity, getInfo), OPERATION(Capacity, getDefaultSipLegs)});
}

TEST(Slots, OfThreads) {
    expectOrder(0, {{nullptr, 0},
                    OPERATION(LedCtrl, runThread),
                    OPERATION(LedCtrl, isAlive),
                    OPERATION(LedCtrl, getId),
                    OPERATION(LedCtrl, getTid),
                    OPERATION(LedCtrl, start),
                    OPERATION(LedCtrl, stop),
                    OPERATION(LedCtrl, detach),
                    OVERLOAD(TYThread, join, XCode()),
                    OVERLOAD(TYThread, join, XCode(unsigned)),
                    OPERATION(LedCtrl, getBacktrace),
                    OPERATION(LedCtrl, getSchedulingPolicy),
                    OPERATION(LedCtrl, setSchedulingPolicy)});
    struct Button : ServiceButton {
        using ServiceButton::processButtonMessage;
    };
    expectOrder(0, {{nullptr, 0},
                    OPERATION(ServiceButton, runThread),
                    OPERATION(Button, processButtonMessage)});
    expectOrder(0, {OPERATION(ServiceButton::Observer, onButtonPressed),
                    OPERATION(ServiceButton::Observer, onButtonReleased)});
}
