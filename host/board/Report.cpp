#include "board/Report.h"

#include <functional>
#include <limits>
#include <unordered_map>
#include <utility>

#include <fcntl.h>

#include "DRIVER.h"
#include "IDriverRepository.h"
#include "base/Error.h"
#include "base/File.h"
#include "board/Host.h"

namespace board {

namespace {

constexpr unsigned EVERYTHING = std::numeric_limits<unsigned>::max();
constexpr unsigned UNKNOWN_CHANNELS = 0xFFFFFFFF;

DriverReport reportOf(const Host& host, const String& name) {
    DriverReport report{name.c_str(), {}, host.faultOf(name.c_str())};
    TYPPtr<IInfo> info;
    if (DRIVER::INSTANCE()->getInterface(name, info).isSuccess()) {
        const auto hold = info.getLock();
        info->getInfo(report.rows, EVERYTHING, 0, EVERYTHING, 0, String::EMPTY());
    }
    return report;
}

/// A report while it is being made.
class Draft {
public:
    void add(DriverReport driver) {
        m_places.emplace(driver.name, report.drivers.size());
        report.drivers.push_back(std::move(driver));
    }

    /// The driver with that name; null if there is none. Valid until the next one is added.
    DriverReport* find(const std::string& name) {
        const auto place = m_places.find(name);
        return place == m_places.end() ? nullptr : &report.drivers[place->second];
    }

    Report report;

private:
    std::unordered_map<std::string, std::size_t> m_places; ///< in `report.drivers`
};

/// Adds a reading. Its fault also becomes the driver's fault, unless the driver has one already.
template <class DeviceReading>
void add(Draft& draft, std::vector<DeviceReading>& readings, DeviceReading reading) {
    DriverReport* const driver = draft.find(reading.name);
    if (driver && !driver->fault)
        driver->fault = reading.fault();
    readings.push_back(std::move(reading));
}

/// Replaces the value of each row of driver `name`, except at level 0, with what `change` returns
/// for the row. An empty value removes the row.
void changeRows(Draft& draft, const std::string& name,
                const std::function<String(const InfoContainer::Row&)>& change) {
    DriverReport* const driver = draft.find(name);
    if (!driver)
        return;
    InfoContainer rows;
    for (const InfoContainer::Row& row : driver->rows.getRows()) {
        const String value = row.level == 0 ? row.value : change(row);
        if (row.level == 0 || !value.isEmpty())
            rows.add(row.level, row.index, row.key, value);
    }
    driver->rows = std::move(rows);
}

/// The driver reports "off" for an LED that it could not read, and an empty description before it
/// is connected. Both are replaced from the reading.
void addLed(Draft& draft, const LedReading& led) {
    add(draft, draft.report.leds, led);
    changeRows(draft, led.name, [&](const InfoContainer::Row& row) -> String {
        if (row.key == "Description")
            return led.description.c_str();
        if (row.key == "Status")
            return !led.value ? "" : *led.value != 0 ? "on" : "off";
        return row.value;
    });
}

void addReading(const Host& host, Draft& draft, const Device& device) {
    Report& report = draft.report;
    switch (device.kind) {
    case DeviceKind::FAN:
        return add(draft, report.fans, readFan(host, device.name));
    case DeviceKind::THERMAL:
        return add(draft, report.temperatures, readTemperature(host, device.name));
    case DeviceKind::POWER:
        return add(draft, report.powers, readPower(host, device.name));
    case DeviceKind::LED:
        return addLed(draft, readLed(host, device.name));
    case DeviceKind::DESCRIPTOR:
    case DeviceKind::VOIP:
    case DeviceKind::PREFERENCES:
        return; // these have no reading
    }
}

/// Adds the figures that are known, and removes the rows of the others, because the driver reports
/// the largest number for unknown channels, and zeros before the capacity has been determined.
void addCapacity(Draft& draft, const CResourceVoip& driver, bool isDetermined) {
    const std::optional<unsigned> channels = dspChannelsOf(driver);
    if (isDetermined)
        draft.report.capacity = CapacityReport{channels, driver.getSipLegCount()};
    changeRows(draft, CAPACITY_DRIVER, [&](const InfoContainer::Row& row) -> String {
        const bool isOfChannels = row.key == "DSP Channels" || row.key == "Transcoding";
        const bool isKnown =
            row.key == "Border Controller" || (isDetermined && (channels || !isOfChannels));
        return isKnown ? row.value : String::EMPTY();
    });
}

std::optional<std::string> faultIn(const Result<void>& result) {
    return result ? std::nullopt : std::optional(result.fault());
}

} // namespace

Result<void> loadDescriptor(const Host& host, const LockWait& wait) {
    CBoardDescr& descriptor = *host.descriptor();
    String error;
    FileDescriptor device; // locked while the driver reads
    host.awaitDescriptor(false);
    if (!host.faultOf(DESCRIPTOR_DRIVER)) {
        const std::string& path = host.find(DESCRIPTOR_DRIVER)->path;
        device = tryOpen(path, O_RDONLY | O_NONBLOCK); // the driver reports a failure
        try {
            if (device.isOpen())
                LockWaiter(path, wait).lock(device, LockKind::SHARED);
        } catch (const Error& failure) {
            host.awaitDescriptor(true);
            return Fault{failure.what() + std::string("; the board descriptor is not loaded")};
        }
    }
    const TYLockHolder hold(descriptor.getLock());
    if (descriptor.readBD(error).isSuccess())
        return {};
    // The driver reports what failed; the host may know why.
    const auto reason = host.faultOf(DESCRIPTOR_DRIVER);
    if (error.isEmpty())
        return Fault{reason.value_or("the board descriptor can't be read")};
    return Fault{reason ? error.c_str() + (" (" + *reason + ")") : error.c_str()};
}

Result<void> settleCapacity(const Host& host) {
    CResourceVoip& capacity = *host.capacity();
    String error;
    const TYLockHolder hold(capacity.getLock());
    if (capacity.setup(error).isSuccess())
        return {};
    return Fault{error.c_str()};
}

BoardIdentity identityOf(CBoardDescr& descriptor) {
    const TYLockHolder hold(descriptor.getLock());
    BoardIdentity identity;
    String error;
    unsigned identifier = 0;
    if (descriptor.getPlatformID(identifier, error).isSuccess())
        identity.platform = identifier;
    if (descriptor.getProductID(identifier, error).isSuccess())
        identity.product = identifier;
    return identity;
}

std::string identifierText(unsigned identifier) {
    return String::format("0x%04x", identifier).c_str();
}

std::optional<unsigned> dspChannelsOf(const CResourceVoip& capacity) {
    const unsigned channels = capacity.getDspChannelCount();
    return channels == UNKNOWN_CHANNELS ? std::nullopt : std::optional(channels);
}

Report makeReport(const Host& host, const LockWait& wait) {
    Draft draft;
    Report& report = draft.report;
    const auto descriptor = host.descriptor() ? loadDescriptor(host, wait) : Result<void>();
    const auto capacity = host.capacity() ? settleCapacity(host) : Result<void>();
    VELM_List<String> names;
    DRIVER::INSTANCE()->getDriverNames(names);
    for (const String& name : names) {
        DriverReport driver = reportOf(host, name);
        if (name == DESCRIPTOR_DRIVER)
            driver.fault = faultIn(descriptor);
        else if (name == CAPACITY_DRIVER)
            driver.fault = faultIn(capacity);
        draft.add(std::move(driver));
    }
    for (const Device& device : host.devices())
        addReading(host, draft, device);
    if (host.descriptor() && descriptor)
        report.identity = identityOf(*host.descriptor());
    if (host.capacity())
        addCapacity(draft, *host.capacity(), static_cast<bool>(capacity));
    return std::move(draft.report);
}

} // namespace board
