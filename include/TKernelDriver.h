#pragma once

#include "BOARD_API.h"
#include "CKernelDriver.h"
#include "KernelMessage.h"
#include "TDriver.h"

/// The shape that all drivers in front of a kernel driver share: `Interface` is the one they add to
/// the framework's. At connection the kernel driver is asked for the path of a device file and a
/// description; afterwards every operation opens that file, reads or writes one decimal number, and
/// closes it.
///
/// The definitions are in the library; a driver's header declares its instance as extern.
template <class Interface>
class BOARD_API TKernelDriver : public TDriver<CKernelDriver, Interface> {
public:
    /// For the driver's constructor, whose arguments these are.
    TKernelDriver(IDriverRepository* repository, const String& driverName,
                  const String& endpointName);
    ~TKernelDriver() override;

    /// Whether the driver has ever been connected and its device file could be opened.
    bool isValid() override;
    /// What the kernel driver calls the device; "" before the driver is connected. Always succeeds.
    XCode getDescription(String& description) override;

protected:
    /// The same text for the driver itself.
    const String& description() const { return m_description; }

    /// The connect handshake: path, description, proof that the file can be opened. The first step
    /// that fails ends it with that step's status; answers received before are kept.
    XCode handshake();
    /// The same with one question more, before the file is tried.
    template <class Answer>
    XCode handshake(KernelMessage question, Answer& answer);

    /// Reads the number at the start of the device file, of which `width` bytes at most count; 0
    /// where there is none. `number` is left as it was on failure: not valid, or the file can't be
    /// opened.
    XCode readDevice(unsigned width, int& number) const;

    /// Writes `number` as a record of `width` bytes: digits, then zero bytes. Fails as reading
    /// does.
    XCode writeDevice(unsigned width, unsigned number) const;

private:
    XCode askPathAndDescription();
    XCode tryDevice();

    bool m_valid = false;
    String m_path;
    String m_description;
};
