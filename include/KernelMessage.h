#pragma once

/// The messages that this library's drivers send to a kernel driver when they connect, and the type
/// of each reply.
enum KernelMessage : unsigned {
    MSG_GET_FILE_PATH = 7,   ///< String: path of the device file
    MSG_GET_BI_STATUS = 8,   ///< bool: whether an LED has two lit states
    MSG_GET_DESCRIPTION = 9, ///< String: description of the device for people
    MSG_GET_MAXIMUM = 10,    ///< unsigned: number for full fan speed, or highest temperature
};
