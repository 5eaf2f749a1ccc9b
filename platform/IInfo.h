#pragma once

#include "IUnknown.h"

class InfoContainer;
class String;

/// An object that can report on itself in an information dump.
class IInfo : public IUnknown {
public:
    static const VELM_UUID& IID();

    /// Adds this object's rows to `container` and returns it. The header row is at (`level`,
    /// `index`), with `prefix` before its title; details are on deeper levels and have no prefix.
    /// Adds nothing deeper than `maxLevel`, and nothing at all if `index` exceeds `maxIndex`.
    /// Cannot fail.
    virtual InfoContainer& getInfo(InfoContainer& container, unsigned maxLevel, unsigned level,
                                   unsigned maxIndex, unsigned index,
                                   const String& prefix) const = 0;
};
