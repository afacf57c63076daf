#pragma once

/// A handle of the flat interface is the plain address of an object, seen by hosts as an opaque type.

#include "velmarapi.h"

#include "api/HandleClasses.h"

#include <span>

namespace Velmar {

template <class Handle>
typename ObjectOf<Handle>::type* fromHandle(Handle* handle) {
    return reinterpret_cast<typename ObjectOf<Handle>::type*>(handle);
}

template <class Handle>
Handle* toHandle(typename ObjectOf<Handle>::type* object) {
    return reinterpret_cast<Handle*>(object);
}

/// Counts an object that the host passed in, for the length of a call. The host's objects often have count 0, and a
/// `Reference` to such an object destroys it when it is released, which happens when the call fails too. This count is
/// taken back without destroying anything: what no holder took is still the host's, and alive. Null is ignored.
class HeldForCall {
  public:
    explicit HeldForCall(const ThreadSafeRefCounted* object_) : object(object_) {
        if (object != nullptr) object->increment();
    }
    ~HeldForCall() {
        if (object != nullptr) object->decrement();
    }
    HeldForCall(const HeldForCall&) = delete;
    HeldForCall& operator=(const HeldForCall&) = delete;

  private:
    const ThreadSafeRefCounted* const object;
};

/// The same for an array of handles. The array must not change during the call.
template <class Handle>
class AllHeldForCall {
  public:
    explicit AllHeldForCall(std::span<Handle* const> handles_) : handles(handles_) {
        for (Handle* const handle : handles)
            if (handle != nullptr) fromHandle(handle)->increment();
    }
    ~AllHeldForCall() {
        for (Handle* const handle : handles)
            if (handle != nullptr) fromHandle(handle)->decrement();
    }
    AllHeldForCall(const AllHeldForCall&) = delete;
    AllHeldForCall& operator=(const AllHeldForCall&) = delete;

  private:
    const std::span<Handle* const> handles;
};

} // namespace Velmar
