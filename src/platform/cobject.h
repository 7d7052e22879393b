// CObject: the root of the framework's polymorphic classes.
//
// The library's tables derive from it because the host application treats them as
// framework objects: it may destroy them through a CObject pointer and call the two
// diagnostic virtuals below. Neither does anything here; a class that has invariants
// worth checking overrides AssertValid.
#pragma once

class CObject {
  public:
    virtual ~CObject() = default;

    CObject(const CObject&) = delete;
    CObject& operator=(const CObject&) = delete;

    // Checks the object's invariants (debug builds of a host may call it).
    virtual void AssertValid() const {}
    // Describes the object for diagnostics.
    virtual void Dump() const {}

  protected:
    CObject() = default;
};
