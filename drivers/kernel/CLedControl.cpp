#include "CLedControl.h"

#include <atomic>

#include "InfoContainer.h"
#include "TKernelDriverImpl.h"

template class TKernelDriver<ILedControl>;

VELM_DEFINE_UUID(CLedControl::DID(), "84EFC5A4-39D5-4D54-B965-5F39705C91F5", "DID_LedControl")
VELM_DEFINE_UUID(CLedControl::CID(), "19FA2FC5-81EB-43F0-BFD1-42DC6A2E2254", "CID_LedControl")
VELM_DEFINE_UUID(ILedControl::IID(), "E2F21A46-A527-4AF7-893C-0754034020A4", "ILedControl")

namespace {

constexpr unsigned RECORD_WIDTH = 4;
constexpr unsigned FIRST_LIT_STATE = 1;
constexpr unsigned SECOND_LIT_STATE = 2;

/// Counts the information dumps in progress for all LEDs, so that a debugger can show the number.
class DumpInProgress {
public:
    DumpInProgress() { s_count.fetch_add(1, std::memory_order_relaxed); }
    ~DumpInProgress() { s_count.fetch_sub(1, std::memory_order_relaxed); }
    DumpInProgress(const DumpInProgress&) = delete;
    DumpInProgress& operator=(const DumpInProgress&) = delete;

private:
    static std::atomic<unsigned> s_count;
};

std::atomic<unsigned> DumpInProgress::s_count{0};

} // namespace

CLedControl::CLedControl(IDriverRepository* repository, const String& driverName,
                         const String& endpointName)
    : TKernelDriver(repository, driverName, endpointName) {}

const VELM_UUID& CLedControl::getDID() const {
    return DID();
}

XCode CLedControl::onConnected(String&) {
    return handshake(MSG_GET_BI_STATUS, m_biCapable);
}

XCode CLedControl::realSetLedStatus(unsigned int status) {
    return writeDevice(RECORD_WIDTH, status);
}

XCode CLedControl::getLedStatus(unsigned int& status) const {
    status = 0;
    int number = 0;
    XCode result = readDevice(RECORD_WIDTH, number);
    status = static_cast<unsigned>(number);
    return result;
}

XCode CLedControl::setLedStatus(unsigned int status) {
    if (!m_toggleEnabled && m_biStatus == 0)
        return realSetLedStatus(status);
    m_savedStatus = status;
    return XCode();
}

XCode CLedControl::setLedBiStatus(unsigned int on) {
    if (!m_biCapable)
        return XCode(XCode::FAILURE);
    m_biStatus = on;
    if (m_toggleEnabled)
        return XCode();
    if (on == 0)
        return realSetLedStatus(m_savedStatus);
    static_cast<void>(getLedStatus(m_savedStatus)); // 0 if it can't be read
    return realSetLedStatus(SECOND_LIT_STATE);
}

XCode CLedControl::setLedToggleStatus(unsigned int status) {
    if (!m_toggleEnabled)
        return XCode(XCode::FAILURE);
    if (m_biCapable && status == FIRST_LIT_STATE) {
        if (m_togglePhase)
            status = SECOND_LIT_STATE;
        m_togglePhase = !m_togglePhase;
    }
    return realSetLedStatus(status);
}

XCode CLedControl::enableLedToggle() {
    if (m_toggleEnabled)
        return XCode(XCode::FAILURE);
    m_toggleEnabled = true; // stays true even if the read below fails
    unsigned shown = 0;
    XCode status = getLedStatus(shown);
    if (!status.isSuccess())
        return status;
    if (shown == SECOND_LIT_STATE)
        m_biStatus = 1;
    else
        m_savedStatus = shown;
    return status;
}

XCode CLedControl::disableLedToggle() {
    if (!m_toggleEnabled)
        return XCode(XCode::FAILURE);
    // The bi-status overlay is restored only if it was switched on with the value 1. With any other
    // value, the LED gets the remembered state.
    XCode status = realSetLedStatus(m_biStatus == 1 ? SECOND_LIT_STATE : m_savedStatus);
    if (status.isSuccess())
        m_toggleEnabled = false;
    return status;
}

InfoContainer& CLedControl::getInfo(InfoContainer& container, unsigned maxLevel, unsigned level,
                                    unsigned maxIndex, unsigned index, const String& prefix) const {
    unsigned status = 0;
    static_cast<void>(getLedStatus(status));
    const DumpInProgress counted;
    if (level <= maxLevel && index <= maxIndex)
        container.add(level, index, String(prefix).concat(getDriverName().c_str()),
                      String::EMPTY());
    if (level < maxLevel && index <= maxIndex) {
        container.add(level + 1, index, "Description", description().c_str());
        container.add(level + 1, index, "Status", status != 0 ? "on" : "off");
    }
    return container;
}
