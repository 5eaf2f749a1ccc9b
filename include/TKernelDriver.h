#pragma once

#include "BOARD_API.h"
#include "CKernelDriver.h"
#include "KernelMessage.h"
#include "TDriver.h"

/// What this library's kernel-backed drivers have in common; `Interface` is the interface that a
/// driver adds to those of the framework. At connection it asks the kernel driver for the path of a
/// device file and a description. After that, every operation opens the file, reads or writes one
/// decimal number, and closes the file.
///
/// Only this library's drivers can derive from it: the definitions are inside the library, and a
/// driver's header declares its instance as extern. A driver of your own derives from `TDriver`
/// over `CKernelDriver`.
template <class Interface>
class BOARD_API TKernelDriver : public TDriver<CKernelDriver, Interface> {
public:
    /// For the driver's constructor, which passes its arguments on.
    TKernelDriver(IDriverRepository* repository, const String& driverName,
                  const String& endpointName);
    ~TKernelDriver() override;

    /// Whether the driver has ever been connected and its device file could be opened.
    bool isValid() override;
    /// The kernel driver's description of the device; "" before the driver is connected. Always
    /// succeeds.
    XCode getDescription(String& description) override;

protected:
    /// The same text for the driver itself.
    const String& description() const { return m_description; }

    /// The connect handshake: asks for the path and the description, then checks that the file can
    /// be opened. The first step that fails ends it with that step's status; earlier answers are
    /// kept.
    XCode handshake();
    /// The same with one more question before the file is checked.
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
