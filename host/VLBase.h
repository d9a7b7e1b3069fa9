#pragma once

// The host's common base class. It carries no state; classes that the host
// hands around by value (properties, files) derive from it.
class CVLBase {
public:
    CVLBase() = default;
    CVLBase(const CVLBase&) = default;
    CVLBase& operator=(const CVLBase&) = default;
    virtual ~CVLBase() = default;
};
