#pragma once

#include "DeviceFile.h"
#include "TKernelDriver.h"

template <class Interface>
TKernelDriver<Interface>::TKernelDriver(IDriverRepository* repository, const String& driverName,
                                        const String& endpointName)
    : TDriver<CKernelDriver, Interface>(repository, driverName, endpointName) {}

template <class Interface>
TKernelDriver<Interface>::~TKernelDriver() = default;

template <class Interface>
bool TKernelDriver<Interface>::isValid() {
    return m_valid;
}

template <class Interface>
XCode TKernelDriver<Interface>::getDescription(String& description) {
    description = m_description;
    return XCode();
}

template <class Interface>
XCode TKernelDriver<Interface>::askPathAndDescription() {
    XCode status = this->sendReceiveMessage(MSG_GET_FILE_PATH, m_path);
    return status.isSuccess() ? this->sendReceiveMessage(MSG_GET_DESCRIPTION, m_description)
                              : status;
}

template <class Interface>
XCode TKernelDriver<Interface>::tryDevice() {
    if (!devicefile::canOpen(m_path.c_str()))
        return XCode(XCode::FAILURE); // m_valid is not cleared: once valid, always valid
    m_valid = true;
    return XCode();
}

template <class Interface>
XCode TKernelDriver<Interface>::handshake() {
    XCode status = askPathAndDescription();
    return status.isSuccess() ? tryDevice() : status;
}

template <class Interface>
template <class Answer>
XCode TKernelDriver<Interface>::handshake(KernelMessage question, Answer& answer) {
    XCode status = askPathAndDescription();
    if (status.isSuccess())
        status = this->sendReceiveMessage(question, answer);
    return status.isSuccess() ? tryDevice() : status;
}

template <class Interface>
XCode TKernelDriver<Interface>::readDevice(unsigned width, int& number) const {
    return m_valid && devicefile::readDecimal(m_path.c_str(), width, number)
               ? XCode()
               : XCode(XCode::FAILURE);
}

template <class Interface>
XCode TKernelDriver<Interface>::writeDevice(unsigned width, unsigned number) const {
    return m_valid && devicefile::writeDecimal(m_path.c_str(), width, number)
               ? XCode()
               : XCode(XCode::FAILURE);
}
