#pragma once

#include <memory>
#include <string>
#include <vector>

#include "CKernelDriver.h"
#include "MxMsg.h"
#include "TYPPtr.h"
#include "devices/KernelEndpoint.h"
#include "profile/Profile.h"

namespace board {

/// A kernel-backed driver and the endpoint that answers its messages. The destructor closes the
/// driver.
class DriverConnection {
public:
    /// Takes over the reference to `driver`, which must be closed and use `endpointOf(entry)`. The
    /// endpoint will answer with three things: `answers`, the description in `entry`, and the path
    /// that the caller passes to `open`. `entry` must outlive the object.
    DriverConnection(const DeviceProfile& entry, CKernelDriver* driver, std::vector<MxMsg> answers);
    ~DriverConnection();
    DriverConnection(DriverConnection&&) = default;
    DriverConnection& operator=(DriverConnection&&) = delete;

    /// Connects the driver to the device file `path`, even if it is connected to another file.
    /// Holds the driver's lock meanwhile. Throws Error with the system's reason if the connection
    /// fails.
    void open(const std::string& path);

    const DeviceProfile& entry() const { return *m_entry; }

    /// The name of the endpoint.
    static String endpointOf(const DeviceProfile& entry);

private:
    const DeviceProfile* m_entry;
    TYPPtr<CKernelDriver> m_driver;
    std::vector<MxMsg> m_answers; ///< without the path
    std::unique_ptr<KernelEndpoint> m_endpoint;
};

} // namespace board
