#pragma once

#include "XCode.h"

/// A body that a TYThread can run.
class TYRunnable {
public:
    virtual ~TYRunnable();

    /// Runs on the thread; what it returns is what joining the thread returns.
    virtual XCode runThread() = 0;
};
