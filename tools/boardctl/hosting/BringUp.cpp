#include "hosting/BringUp.h"

#include <algorithm>
#include <string>

#include "board/Report.h"
#include "output/Messages.h"
#include "output/Readings.h"
#include "output/ReportRows.h"
#include "output/Rows.h"

namespace boardctl {

void BringUp::showDevices() const {
    for (const board::Device& device : m_board.host().devices())
        if (device.kind != board::DeviceKind::DESCRIPTOR) // the report has the details
            showDevice(device);
}

void BringUp::showDevice(const board::Device& device) const {
    const std::string kind = board::kindName(device.kind);
    const std::string title =
        device.kind == board::DeviceKind::PREFERENCES ? kind : kind + " '" + device.name + "'";
    if (device.fault && !m_watch.watches(device.name))
        m_lines.fault(title + ": " + *device.fault,
                      {{"kind", kind}, {"name", device.name}, {"error", *device.fault}});
    else if (!device.fault && !device.endpoint.empty())
        m_lines.print("connected",
                      title + ": connected to '" + device.endpoint + "', " +
                          (device.description.empty() ? "" : device.description + ", ") +
                          "device file " + device.path,
                      {{"kind", kind},
                       {"name", device.name},
                       {"endpoint", device.endpoint},
                       {"device", device.path},
                       {"description", device.description}});
}

void BringUp::showReport() const {
    const board::Report report =
        board::makeReport(m_board.host(), {board::DESCRIPTOR_WAIT, complain});
    for (const board::DriverReport& driver : report.drivers)
        if (driver.fault && !m_watch.isGone(driver.name))
            m_lines.fault("driver '" + driver.name + "': " + *driver.fault,
                          {{"name", driver.name}, {"error", *driver.fault}});
    const auto isUnread = [](const board::DriverReport& driver) {
        return driver.name == board::DESCRIPTOR_DRIVER && driver.fault;
    };
    if (m_board.host().descriptor() &&
        std::none_of(report.drivers.begin(), report.drivers.end(), isUnread)) {
        CBoardDescr& descriptor = *m_board.host().descriptor();
        const unsigned tags =
            descriptor.getTags().size() - descriptor.getNumberOfTag(0); // terminators
        m_lines.print("descriptor", "descriptor: " + std::to_string(tags) + " tags",
                      {{"tags", tags}});
    }
    const InfoContainer dump = dumpOf(report);
    for (const auto& row : dump.getRows())
        m_lines.print("row",
                      std::string(2 * (std::size_t{row.level} + 1), ' ') + toStdString(row.key) +
                          (row.value.isEmpty() ? "" : ": " + toStdString(row.value)),
                      {{"level", row.level},
                       {"key", toStdString(row.key)},
                       {"value", toStdString(row.value)}});
}

void BringUp::showFirmware(const board::Result<board::FirmwareInfo>& firmware) const {
    if (firmware)
        m_lines.print("firmware", "firmware: " + firmware->version, toJson(firmware));
    else
        m_lines.fault("firmware: " + firmware.fault(),
                      {{"kind", "firmware"}, {"error", firmware.fault()}});
}

void BringUp::showServices(const board::Services& services) const {
    for (const board::Services::Failure& failure : services.failures()) {
        const std::string kind =
            failure.service == board::Services::Kind::BUTTON ? "button" : "leds";
        m_lines.fault(kind + ": " + failure.text, {{"kind", kind}, {"error", failure.text}});
    }
    if (services.leds() && services.leds()->writers()) {
        const std::string writers = *services.leds()->writers();
        m_lines.print("leds",
                      "leds: commands are read from " + std::string(board::LED_PIPE) + ", which " +
                          writers + " may write",
                      {{"pipe", board::LED_PIPE}, {"writers", writers}});
        if (const auto risk = board::ledPipeRisk())
            m_lines.fault("leds: " + *risk, {{"kind", "leds"}, {"error", *risk}});
    }
    if (services.watchesButton())
        m_lines.print("button", "button: watching " + m_board.profile().button->path,
                      {{"device", m_board.profile().button->path}});
}

} // namespace boardctl
