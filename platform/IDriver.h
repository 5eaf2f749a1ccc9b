#pragma once

#include "IUnknown.h"

class IDriverRepository;
class String;

/// A driver object that a repository can hold.
class IDriver : public IUnknown {
public:
    static const VELM_UUID& IID();

    /// Identifies the kind of driver. The same for all objects of one class.
    virtual const VELM_UUID& getDID() const = 0;

    /// The name under which a repository keeps this object.
    virtual const String& getDriverName() const = 0;

    ///@{
    /// The repository that this driver belongs to, or null. It is not owned.
    virtual IDriverRepository* getDriverRepository() = 0;
    virtual void setDriverRepository(IDriverRepository* repository) = 0;
    ///@}
};
