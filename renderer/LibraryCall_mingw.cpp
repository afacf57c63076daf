#include "velmarexceptions.h"

#include "renderer/LibraryCall.h"
#include "renderer/MicrosoftException.h"

#include <windows.h>
// After windows.h, which it needs.
#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string_view>

// The library is one of Microsoft's compiler. Its exceptions pass through this compiler's frames, but no handler sees
// them and no destructor runs.

namespace Velmar {

using namespace Microsoft;

namespace {

enum class Kind { other, standard, velmar };

template <class T>
const T* at(std::uintptr_t base, Rva rva) {
    return reinterpret_cast<const T*>(base + static_cast<std::uint32_t>(rva));
}

using Copy = void* (*)(void* to, const void* from, int most_derived);
using Destroy = void (*)(void* object);

/// An exception as its `RaiseException` described it.
struct Raised {
    std::uint64_t magic;
    void* object;
    const ThrowInfo* info;
    std::uintptr_t base;

    const CatchableTypes& types() const { return *at<CatchableTypes>(base, info->catchable_types); }
    const CatchableType& type(std::int32_t index) const { return *at<CatchableType>(base, types().types[index]); }
    const char* typeName(std::int32_t index) const { return at<TypeDescriptor>(base, type(index).type)->name; }

    /// Which of the types has the name, or -1.
    std::int32_t find(std::string_view name) const {
        for (std::int32_t i = 0; i < types().count; ++i)
            if (typeName(i) == name) return i;
        return -1;
    }

    /// The object's part of one of its types.
    const char* part(std::int32_t index) const {
        const CatchableType& wanted = type(index);
        const auto* const whole = static_cast<const char*>(object);
        const char* const member = whole + wanted.member_offset;
        if (wanted.virtual_table_offset < 0) return member;
        // A virtual base: the object's table says where it lies.
        const char* const table = *reinterpret_cast<const char* const*>(whole + wanted.virtual_table_offset);
        return member + wanted.virtual_table_offset +
               *reinterpret_cast<const std::int32_t*>(table + wanted.virtual_table_index);
    }

    void copyTo(void* to) const {
        const CatchableType& own = type(0);
        if (own.copy == 0)
            std::memcpy(to, object, static_cast<std::size_t>(own.size));
        else
            reinterpret_cast<Copy>(base + static_cast<std::uint32_t>(own.copy))(to, object, 1);
    }

    void destroy() const {
        if (info->destroy != 0) reinterpret_cast<Destroy>(base + static_cast<std::uint32_t>(info->destroy))(object);
    }
};

std::string_view textOf(const StdString& text) {
    return {text.capacity < sizeof text.inside ? text.inside : text.outside, text.size};
}

/// Classes of ours by their names there, and whether their text is a `std::string`.
struct NamedClass {
    const char* name;
    bool has_std_string;
};

constexpr NamedClass classes[] = {
    {".?AVVelmarException@Velmar@@", false},  {".?AVException@Velmar@@", true},
    {".?AVSceneParserExcep@Velmar@@", false}, {".?AVSceneLoaderExcep@Velmar@@", true},
    {".?AVFileUtilsExcep@FileUtils@@", true}, {".?AVPlatformUtilsExcep@PlatformUtils@@", true},
    {".?AVTransformPathExcep@@", true},       {".?AVNameMapExcep@@", true},
};

/// A debug runtime's strings begin with a pointer of its own.
constexpr std::int32_t debug_string_size = sizeof(StdString) + sizeof(void*);

std::string_view messageOf(const Raised& raised, std::int32_t index, bool has_std_string) {
    const char* const part = raised.part(index);
    if (!has_std_string) return reinterpret_cast<const String*>(part)->view();
    const bool of_debug_runtime = raised.type(index).size == debug_string_size;
    return textOf(*reinterpret_cast<const StdString*>(part + (of_debug_runtime ? sizeof(void*) : 0)));
}

/// What `what()` of the object says, which is operation 1 of every standard exception.
const char* standardText(const void* object) {
    using What = const char* (*)(const void*);
    const char* const text = reinterpret_cast<What>((*static_cast<const void* const* const*>(object))[1])(object);
    return text == nullptr ? "Unknown exception" : text;
}

} // namespace

class alignas(16) LibraryException::Carried {
  public:
    /// Null when memory is exhausted.
    static Carried* make(const Raised& raised) {
        const auto size = static_cast<std::size_t>(raised.type(0).size);
        auto* const carried = static_cast<Carried*>(std::malloc(sizeof(Carried) + size));
        if (carried == nullptr) return nullptr;
        new (carried) Carried(raised);
        // May throw, and then its exception is carried in place of this one.
        raised.copyTo(carried->object());
        carried->copy.object = carried->object();
        carried->describe();
        carried->keepModule();
        return carried;
    }

    void increment() { ++count; }
    void decrement() {
        if (--count != 0) return;
        copy.destroy();
        std::free(text_);
        if (module != nullptr) FreeLibrary(module);
        std::free(this);
    }

    /// The host has a copy of the exception from now on.
    void keepModuleForever() { module = nullptr; }

    Kind kind() const { return kind_; }
    const char* text() const { return text_ == nullptr ? "" : text_; }
    const Raised& exception() const { return copy; }

  private:
    explicit Carried(const Raised& raised) : copy(raised) {}

    void* object() { return this + 1; }

    void describe() {
        const std::int32_t standard = copy.find(".?AVexception@std@@");
        if (standard >= 0) {
            kind_ = Kind::standard;
            return keepText(standardText(copy.part(standard)));
        }
        for (const NamedClass& named : classes) {
            const std::int32_t index = copy.find(named.name);
            if (index < 0) continue;
            if (named.name == std::string_view(".?AVException@Velmar@@")) kind_ = Kind::velmar;
            return keepText(messageOf(copy, index, named.has_std_string));
        }
        keepText(copy.typeName(0));
    }

    void keepText(std::string_view text) {
        text_ = static_cast<char*>(std::malloc(text.size() + 1));
        if (text_ == nullptr) return;
        if (!text.empty()) std::memcpy(text_, text.data(), text.size());
        text_[text.size()] = '\0';
    }

    /// What describes the exception lies in the module that threw it, which our clean-up may be about to unload.
    void keepModule() {
        GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS, reinterpret_cast<LPCWSTR>(copy.info), &module);
    }

    Raised copy;
    HMODULE module = nullptr;
    std::atomic<int> count{1};
    Kind kind_ = Kind::other;
    char* text_ = nullptr;
};

namespace {

class LibraryStandardException final : public LibraryException, public std::exception {
  public:
    using LibraryException::LibraryException;
    const char* what() const noexcept override { return text(); }
};

class LibraryVelmarException final : public LibraryException, public Exception {
  public:
    explicit LibraryVelmarException(Carried* held) : LibraryException(held), Exception(text()) {}
};

/// What the filter leaves for the guard.
struct Caught {
    LibraryException::Carried* carried = nullptr;
};

/// The four words of an exception of C++; false for any other, and for the rethrowing of one without an object.
bool describe(const EXCEPTION_RECORD& record, Raised& raised) {
    if (record.ExceptionCode != cpp_exception || record.NumberParameters < 4) return false;
    const ULONG_PTR* const words = record.ExceptionInformation;
    raised = {words[0], reinterpret_cast<void*>(words[1]), reinterpret_cast<const ThrowInfo*>(words[2]), words[3]};
    return raised.magic >= first_magic && raised.magic <= last_magic && raised.object != nullptr &&
           raised.info != nullptr && raised.types().count > 0;
}

} // namespace

/// Called with the thrower's frames still there: the exception's object lies in one of them.
extern "C" long velmarFilterException(EXCEPTION_POINTERS* pointers, char* frame) {
    constexpr std::size_t caught_in_frame = 40;
    Raised raised = {};
    if (!describe(*pointers->ExceptionRecord, raised)) return EXCEPTION_CONTINUE_SEARCH;
    auto& caught = **reinterpret_cast<Caught**>(frame + caught_in_frame);
    caught.carried = LibraryException::Carried::make(raised);
    raised.destroy();
    return EXCEPTION_EXECUTE_HANDLER;
}

extern "C" int velmarCallGuarded(void (*function)(void*), void* argument, void* caught);

namespace {

/// What the library threw on a thread while something of ours was destroyed. A slot of the system's, because the
/// compiler's thread_local allocates and ends the process when memory is exhausted.
class PendingSlot {
  public:
    PendingSlot() : slot(TlsAlloc()) {}
    ~PendingSlot() { TlsFree(slot); }
    PendingSlot(const PendingSlot&) = delete;
    PendingSlot& operator=(const PendingSlot&) = delete;

    LibraryException::Carried* get() const { return static_cast<LibraryException::Carried*>(TlsGetValue(slot)); }
    void set(LibraryException::Carried* carried) const { TlsSetValue(slot, carried); }

  private:
    DWORD slot;
};

const PendingSlot pending;

} // namespace

LibraryException::LibraryException(const LibraryException& other) : carried(other.carried) {
    if (carried != nullptr) carried->increment();
}

LibraryException::~LibraryException() {
    if (carried != nullptr) carried->decrement();
}

const char* LibraryException::text() const {
    return carried->text();
}

LibraryException::Carried* LibraryException::release() {
    Carried* const released = carried;
    carried = nullptr;
    return released;
}

void callGuarded(void (*function)(void* argument), void* argument) {
    Caught caught;
    if (velmarCallGuarded(function, argument, &caught) == 0) return;
    if (caught.carried == nullptr) throw BadAlloc();
    switch (caught.carried->kind()) {
    case Kind::standard:
        throw LibraryStandardException(caught.carried);
    case Kind::velmar:
        throw LibraryVelmarException(caught.carried);
    case Kind::other:
        throw LibraryException(caught.carried);
    }
}

void callGuardedInDestructor(void (*function)(void* argument), void* argument) noexcept {
    Caught caught;
    if (velmarCallGuarded(function, argument, &caught) == 0 || caught.carried == nullptr) return;
    if (pending.get() == nullptr)
        pending.set(caught.carried);
    else
        caught.carried->decrement();
}

LibraryException::Carried* takePending() {
    LibraryException::Carried* const taken = pending.get();
    if (taken != nullptr) pending.set(nullptr);
    return taken;
}

void throwOriginal(LibraryException::Carried* carried) {
    Raised raised = carried->exception();
    // Where objects in flight lie: in the frame that throws, which lasts until a handler has done with them.
    void* const object = __builtin_alloca_with_align(static_cast<std::size_t>(raised.type(0).size), 128);
    raised.copyTo(object);
    raised.object = object;
    // Nothing says when the host has done with the exception: what describes it stays loaded.
    carried->keepModuleForever();
    carried->decrement();
    const ULONG_PTR words[] = {raised.magic, reinterpret_cast<ULONG_PTR>(raised.object),
                               reinterpret_cast<ULONG_PTR>(raised.info), raised.base};
    RaiseException(cpp_exception, EXCEPTION_NONCONTINUABLE, 4, words);
    std::abort();
}

} // namespace Velmar
