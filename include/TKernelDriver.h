#pragma once

#include "BOARD_API.h"
#include "CKernelDriver.h"
#include "KernelMessage.h"
#include "TDriver.h"

/// Implements what this library's kernel-backed drivers have in common. `Interface` is the
/// interface that a driver adds to those of the framework. When a driver connects, it asks the
/// kernel driver for the path of a device file and a description. After that, every access to the
/// device opens the file, reads or writes one decimal number, and closes the file.
///
/// Only this library's drivers can derive from this class, because its functions are defined and
/// instantiated inside the library. Derive your own drivers from `TDriver<CKernelDriver,
/// YourInterface>`.
template <class Interface>
class BOARD_API TKernelDriver : public TDriver<CKernelDriver, Interface> {
public:
    /// The arguments are those of the driver's own constructor.
    TKernelDriver(IDriverRepository* repository, const String& driverName,
                  const String& endpointName);
    ~TKernelDriver() override;

    /// True once the driver has connected and opened its device file. Stays true from then on, even
    /// if the file disappears.
    bool isValid() override;
    /// The kernel driver's description of the device; "" before the driver is connected. Always
    /// succeeds.
    XCode getDescription(String& description) override;

protected:
    /// The text that `getDescription` returns, for derived classes.
    const String& description() const { return m_description; }

    /// To be called by `onConnected`. Asks the kernel driver for the path and the description, then
    /// checks that the file can be opened. If a step fails, returns the status of that step and
    /// skips the remaining ones; answers already received are kept.
    XCode handshake();
    /// Does the same, but also sends `question` and stores the reply in `answer` before it checks
    /// the file.
    template <class Answer>
    XCode handshake(KernelMessage question, Answer& answer);

    /// Reads the number at the start of the device file, within its first `width` bytes. If there
    /// is no number, sets `number` to 0. Fails and leaves `number` unchanged if the driver is not
    /// valid or the file can't be opened.
    XCode readDevice(unsigned width, int& number) const;

    /// Writes `number` as a record of `width` bytes: digits, then zero bytes. Fails as `readDevice`
    /// does.
    XCode writeDevice(unsigned width, unsigned number) const;

private:
    XCode askPathAndDescription();
    XCode tryDevice();

    bool m_valid = false;
    String m_path;
    String m_description;
};
