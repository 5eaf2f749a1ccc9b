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
/// instantiated inside the library. Derive a driver of your own from `TDriver<CKernelDriver,
/// YourInterface>`.
template <class Interface>
class BOARD_API TKernelDriver : public TDriver<CKernelDriver, Interface> {
public:
    /// Takes the arguments of the driver's constructor.
    TKernelDriver(IDriverRepository* repository, const String& driverName,
                  const String& endpointName);
    ~TKernelDriver() override;

    /// Whether the driver has ever connected and could then open its device file.
    bool isValid() override;
    /// The kernel driver's description of the device; "" before the driver is connected. Always
    /// succeeds.
    XCode getDescription(String& description) override;

protected:
    /// The text that `getDescription` returns, for derived classes.
    const String& description() const { return m_description; }

    /// Asks for the path and the description when the driver connects, then checks that the file
    /// can be opened. If a step fails, returns its status and skips the other steps; answers
    /// already received are kept.
    XCode handshake();
    /// The same, but also sends `question` and stores the reply in `answer` before the file is
    /// checked.
    template <class Answer>
    XCode handshake(KernelMessage question, Answer& answer);

    /// Reads the number at the start of the device file, within its first `width` bytes; 0 if there
    /// is none. Fails and leaves `number` alone if the driver is not valid or the file can't be
    /// opened.
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
