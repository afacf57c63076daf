#pragma once

/// A handle of the flat interface is the address of an object, as an opaque type.

#include "velmarapi.h"

#include "api/HandleClasses.h"

#include <memory>
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

struct DestroyObject {
    void operator()(ThreadSafeRefCounted* object) const { object->destroy(1); }
};

/// A new object with count 0, to be returned to the host. It is destroyed if an exception is thrown before.
template <class T>
using NewObject = std::unique_ptr<T, DestroyObject>;

/// Counts an object that the host passed, for the duration of a call. The host's objects often have count 0, and a
/// `Reference` to such an object would destroy it if the call fails. This count is taken back without destroying
/// anything: an object that got no owner is still the host's. Null is ignored.
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

/// The same for an array of handles, which must not change during the call.
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
