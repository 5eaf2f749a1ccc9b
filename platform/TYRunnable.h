#pragma once

#include "XCode.h"

/// Code that a TYThread can run.
class TYRunnable {
public:
    virtual ~TYRunnable();

    /// Runs on the thread. Joining the thread returns the result of this function.
    virtual XCode runThread() = 0;
};
