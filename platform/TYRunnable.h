#pragma once

#include "XCode.h"

/// Code that a TYThread can run.
class TYRunnable {
public:
    virtual ~TYRunnable();

    /// Runs on the thread. Joining the thread returns its result.
    virtual XCode runThread() = 0;
};
