#pragma once

/// What the kernel drivers of this library are asked at connection, and the type of the answer.
enum KernelMessage : unsigned {
    MSG_GET_FILE_PATH = 7,   ///< String: the device file
    MSG_GET_BI_STATUS = 8,   ///< bool: whether a LED has two lit states
    MSG_GET_DESCRIPTION = 9, ///< String: what people call the device
    MSG_GET_MAXIMUM = 10,    ///< unsigned: the fan's full scale, or the highest temperature
};
