#include "devices/KernelEndpoint.h"

#include <utility>

#include "Mx.h"
#include "base/Error.h"

namespace board {

KernelEndpoint::KernelEndpoint(const String& name, std::vector<MxMsg> answers) : m_name(name) {
    const XCode published =
        Mx::publish(name, [answers = std::move(answers)](const MxMsg& request, MxMsg& reply) {
            for (const MxMsg& answer : answers)
                if (answer.getCode() == request.getCode())
                    reply = answer;
            return XCode();
        });
    if (!published.isSuccess())
        throw Error(published.getMessage().c_str());
}

KernelEndpoint::~KernelEndpoint() {
    static_cast<void>(Mx::withdraw(m_name)); // this object published it, so it exists
}

} // namespace board
