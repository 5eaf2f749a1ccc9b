#pragma once

#include "CKernelDriver.h"
#include "KernelMessage.h"
#include "Mx.h"
#include "Succeed.h"

/// A kernel driver that answers every question of the library's drivers, published as ENDPOINT.
class Kernel {
public:
    static constexpr char ENDPOINT[] = "kernel";
    static constexpr unsigned MAXIMUM = 255;

    explicit Kernel(const char* deviceFile) {
        succeed(Mx::publish(ENDPOINT, [deviceFile](const MxMsg& question, MxMsg& answer) {
            switch (question.getCode()) {
            case MSG_GET_FILE_PATH:
                answer.set(deviceFile);
                break;
            case MSG_GET_BI_STATUS:
                answer.set(true);
                break;
            case MSG_GET_DESCRIPTION:
                answer.set("As measured");
                break;
            case MSG_GET_MAXIMUM:
                answer.set(MAXIMUM);
                break;
            }
            return XCode();
        }));
    }
    ~Kernel() { static_cast<void>(Mx::withdraw(ENDPOINT)); }
    Kernel(const Kernel&) = delete;
    Kernel& operator=(const Kernel&) = delete;

    static void connect(CKernelDriver& driver) {
        String error;
        succeed(driver.open(error));
    }
};
