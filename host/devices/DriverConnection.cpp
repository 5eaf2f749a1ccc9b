#include "devices/DriverConnection.h"

#include <utility>

#include <fcntl.h>

#include "base/Error.h"
#include "base/File.h"

namespace board {

String DriverConnection::endpointOf(const DeviceProfile& entry) {
    return String("kernel.").concat(String(entry.name.c_str()));
}

DriverConnection::DriverConnection(const DeviceProfile& entry, CKernelDriver* driver,
                                   std::vector<MxMsg> answers)
    : m_entry(&entry), m_driver(TYPPtr<CKernelDriver>::adopt(driver)),
      m_answers(std::move(answers)) {
    m_answers.push_back(answer(MSG_GET_DESCRIPTION, String(entry.description.c_str())));
}

DriverConnection::~DriverConnection() {
    if (m_driver)
        m_driver->close();
}

void DriverConnection::open(const std::string& path) {
    std::vector<MxMsg> answers = m_answers;
    answers.push_back(answer(MSG_GET_FILE_PATH, String(path.c_str())));
    m_endpoint.reset(); // only one endpoint can have the name
    m_endpoint = std::make_unique<KernelEndpoint>(endpointOf(*m_entry), std::move(answers));
    String message = "the kernel driver can't be connected";
    const auto hold = m_driver.getLock();
    if (m_driver->open(message).isSuccess())
        return;
    openFile(path, O_RDONLY | O_NONBLOCK); // throws the system's reason
    throw Error(message.c_str());
}

} // namespace board
