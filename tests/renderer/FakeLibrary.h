#pragma once

#include "reference.h"
#include "velmarstring.h"

#include "renderer/LibraryObject.h"
#include "renderer/VelmarContext.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <map>
#include <string>
#include <vector>

/// A renderer library inside the test program: the objects are plain tables of functions of the test.
namespace FakeLibrary {

constexpr std::size_t slot_count = 16;

/// An object as the library makes it. The words after the head are the library's own.
struct Object {
    const Velmar::LibraryObject::Operation* operations = nullptr;
    std::int32_t refcount = 0;
    Velmar::LibraryObject::Destroy destroy = nullptr;
    std::uint64_t word_24 = 0;

    Velmar::LibraryObject* asLibraryObject() { return reinterpret_cast<Velmar::LibraryObject*>(this); }
};

static_assert(offsetof(Object, word_24) == 24);

template <class Function>
Velmar::LibraryObject::Operation operation(Function* function) {
    return reinterpret_cast<Velmar::LibraryObject::Operation>(function);
}

/// What happened, in order. Cleared by each test.
inline std::vector<std::string> events;

inline void destroyObject(Velmar::LibraryObject*) {
    events.push_back("object destroyed");
}

/// The objects that the library makes, by class name.
inline std::map<std::string, Object*> objects;
inline std::int32_t create_result = 0;

inline std::int32_t createInstance(const Velmar::String* class_name, Velmar::LibraryObject** object) {
    events.push_back("create " + toStdString(*class_name));
    const auto found = objects.find(toStdString(*class_name));
    *object = found == objects.end() ? nullptr : found->second->asLibraryObject();
    return create_result;
}

/// A context that is bound to this library.
inline Velmar::Reference<Velmar::VelmarContext> makeContext() {
    events.clear();
    objects.clear();
    create_result = 0;
    const Velmar::Reference<Velmar::VelmarContext> context(new Velmar::VelmarContext);
    context->sdk_dir = "sdk";
    context->appdata_dir = "appdata";
    context->create_instance = createInstance;
    context->global_library_shutdown = [] { events.push_back("shutdown"); };
    return context;
}

/// The value of type T that is `offset` bytes into an object.
template <class T>
T at(const void* object, std::size_t offset) {
    T value;
    std::memcpy(&value, static_cast<const char*>(object) + offset, sizeof value);
    return value;
}

} // namespace FakeLibrary
