#include "api/msvc/Throwing.h"

#include "velmarexceptions.h"

#include "renderer/MicrosoftException.h"
#include "renderer/VelmarContext.h"

#include <windows.h>
// After windows.h, which it needs.
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <new>
#include <set>
#include <stdexcept>
#include <string>
#include <string_view>
#include <typeinfo>

namespace Velmar::Microsoft {

namespace {

/// Texts of exceptions lie in the heap of the process, as everything that hosts of Microsoft's present runtime
/// allocate: a host that catches by value destroys its copy by code of its own.
void* allocate(std::size_t size) {
    return HeapAlloc(GetProcessHeap(), 0, size == 0 ? 1 : size);
}

void release(void* block) {
    if (block != nullptr) HeapFree(GetProcessHeap(), 0, block);
}

/// The library's own string as a message, of the layout that hosts have of it.
struct StringMessage {
    char* data;
    char inside[String::BUFSIZE];
    std::uint64_t size;
    std::uint64_t capacity;

    /// False when memory is exhausted.
    bool set(const char* text, std::size_t length) {
        const bool fits = length <= sizeof inside;
        data = fits ? inside : static_cast<char*>(allocate(length));
        if (data == nullptr) return false;
        if (length != 0) std::memcpy(data, text, length);
        size = length;
        capacity = fits ? sizeof inside : length;
        return true;
    }
    void destroy() const {
        if (capacity > sizeof inside) release(data);
    }
};

static_assert(sizeof(StringMessage) == sizeof(String));

/// `std::string` as a message. Its large blocks begin at multiples of 32 bytes, with their address before them.
struct StdStringMessage {
    static constexpr std::size_t large_block = 4096;
    static constexpr std::uintptr_t alignment = 32;

    StdString string;

    bool set(const char* text, std::size_t length) {
        const bool fits = length < sizeof string.inside;
        char* const to = fits ? string.inside : allocateText(length + 1);
        if (to == nullptr) return false;
        if (length != 0) std::memcpy(to, text, length);
        to[length] = '\0';
        if (!fits) string.outside = to;
        string.size = length;
        string.capacity = fits ? sizeof string.inside - 1 : length;
        return true;
    }
    void destroy() const {
        if (string.capacity < sizeof string.inside) return;
        const bool is_large = string.capacity + 1 >= large_block;
        release(is_large ? reinterpret_cast<void**>(string.outside)[-1] : string.outside);
    }

  private:
    static char* allocateText(std::size_t size) {
        if (size < large_block) return static_cast<char*>(allocate(size));
        void* const block = allocate(size + sizeof(void*) + alignment - 1);
        if (block == nullptr) return nullptr;
        const std::uintptr_t after_object = reinterpret_cast<std::uintptr_t>(block) + sizeof(void*) + alignment - 1;
        auto* const text = reinterpret_cast<char*>(after_object / alignment * alignment);
        reinterpret_cast<void**>(text)[-1] = block;
        return text;
    }
};

const void* destroyStandard(void* object, unsigned) {
    return object;
}

const char* whatOfStandard(const StdException* object) {
    return object->text;
}

/// What a standard exception can be asked: to end, and its text.
const void* const standard_operations[] = {reinterpret_cast<const void*>(destroyStandard),
                                           reinterpret_cast<const void*>(whatOfStandard)};

/// A text for good: of a standard exception a host's copy may have no text of its own, and there are few such texts.
const char* keptText(const char* text) noexcept {
    static std::mutex lock;
    static auto* const texts = new (std::nothrow) std::set<std::string>;
    if (texts == nullptr) return "";
    try {
        const std::lock_guard<std::mutex> guard(lock);
        return texts->insert(text).first->c_str();
    } catch (const std::exception&) {
        return "";
    }
}

Failure standard(Thrown thrown, const char* text) {
    return {thrown, const_cast<char*>(text), std::strlen(text)};
}

Failure withText(Thrown thrown, std::string_view text) {
    auto* const copy = static_cast<char*>(allocate(text.size()));
    if (copy == nullptr) return standard(Thrown::bad_alloc, "bad allocation");
    if (!text.empty()) std::memcpy(copy, text.data(), text.size());
    return {thrown, copy, text.size()};
}

/// The texts of standard exceptions are those of the host's runtime, as far as both have them.
Failure describeStandard(const std::exception& exception) {
    const char* const text = exception.what();
    const bool of_string = text != nullptr && std::strncmp(text, "basic_string", std::strlen("basic_string")) == 0;
    if (dynamic_cast<const std::bad_array_new_length*>(&exception) != nullptr)
        return standard(Thrown::bad_array_new_length, "bad array new length");
    if (dynamic_cast<const std::bad_alloc*>(&exception) != nullptr)
        return standard(Thrown::bad_alloc, "bad allocation");
    if (dynamic_cast<const std::bad_cast*>(&exception) != nullptr) return standard(Thrown::bad_cast, "bad cast");
    if (dynamic_cast<const std::length_error*>(&exception) != nullptr)
        return standard(Thrown::length_error, of_string ? "string too long" : keptText(text));
    if (dynamic_cast<const std::out_of_range*>(&exception) != nullptr)
        return standard(Thrown::out_of_range, of_string ? "invalid string position" : keptText(text));
    if (dynamic_cast<const std::logic_error*>(&exception) != nullptr)
        return standard(Thrown::logic_error, keptText(text));
    if (dynamic_cast<const std::runtime_error*>(&exception) != nullptr)
        return standard(Thrown::runtime_error, keptText(text));
    const bool has_text = text != nullptr && typeid(exception) != typeid(std::exception);
    return standard(Thrown::standard_exception, has_text ? keptText(text) : "Unknown exception");
}

bool hasStringMessage(Thrown thrown) {
    return thrown == Thrown::velmar_exception || thrown == Thrown::scene_parser_excep;
}

bool isStandard(Thrown thrown) {
    return thrown >= Thrown::bad_alloc;
}

/// The object that is thrown: what the host catches.
union Object {
    StringMessage string;
    StdStringMessage std_string;
    StdException exception;
};

/// A renderer library of the same form as the host hears of exhausted memory in that form too.
void* throwingMalloc(std::size_t size) {
    return throwing([size] { return sdkMalloc(size); });
}

void* throwingAlignedMalloc(std::size_t size, std::size_t alignment) {
    return throwing([=] { return sdkAlignedMalloc(size, alignment); });
}

[[maybe_unused]] const bool memory_is_replaced = [] {
    mem_alloc_functions.malloc = throwingMalloc;
    mem_alloc_functions.aligned_malloc = throwingAlignedMalloc;
    return true;
}();

} // namespace

Failure describeCurrentException() noexcept {
    try {
        throw;
    } catch (const VelmarException& exception) {
        return withText(Thrown::velmar_exception, exception.getMessage().view());
    } catch (const Exception& exception) {
        return withText(Thrown::exception, exception.getMessage());
    } catch (const SceneParserExcep& exception) {
        return withText(Thrown::scene_parser_excep, exception.getMessage().view());
    } catch (const SceneLoaderExcep& exception) {
        return withText(Thrown::scene_loader_excep, exception.getMessage());
    } catch (const FileUtils::FileUtilsExcep& exception) {
        return withText(Thrown::file_utils_excep, exception.getMessage());
    } catch (const PlatformUtils::PlatformUtilsExcep& exception) {
        return withText(Thrown::platform_utils_excep, exception.getMessage());
    } catch (const TransformPathExcep& exception) {
        return withText(Thrown::transform_path_excep, exception.getMessage());
    } catch (const NameMapExcep& exception) {
        return withText(Thrown::name_map_excep, exception.getMessage());
    } catch (const std::exception& exception) {
        return describeStandard(exception);
    } catch (...) {
        // Of a renderer library that this library's compiler built.
        return standard(Thrown::standard_exception, "Unknown exception");
    }
}

// Called by the host's runtime, by their addresses in ThrowInfo.S.
extern "C" {

StringMessage* velmarCopyStringMessage(StringMessage* to, const StringMessage* from) {
    if (!to->set(from->data, from->size)) to->set("", 0);
    return to;
}

void velmarDestroyStringMessage(const StringMessage* message) {
    message->destroy();
}

StdStringMessage* velmarCopyStdStringMessage(StdStringMessage* to, const StdStringMessage* from) {
    const StdString& string = from->string;
    const char* const text = string.capacity < sizeof string.inside ? string.inside : string.outside;
    if (!to->set(text, string.size)) to->set("", 0);
    return to;
}

void velmarDestroyStdStringMessage(const StdStringMessage* message) {
    message->destroy();
}

StdException* velmarCopyStandardException(StdException* to, const StdException* from) {
    *to = *from;
    return to;
}

extern const ThrowInfo* const velmarThrowInfos[];
extern const char __ImageBase;
}

void raise(const Failure& failure) {
    // In this frame, which lasts until a handler of the host has done with it.
    Object object;
    Thrown thrown = failure.thrown;
    if (!isStandard(thrown)) {
        const bool done = hasStringMessage(thrown) ? object.string.set(failure.text, failure.size)
                                                   : object.std_string.set(failure.text, failure.size);
        release(failure.text);
        if (!done) thrown = Thrown::bad_alloc;
    }
    if (isStandard(thrown))
        object.exception = {standard_operations, isStandard(failure.thrown) ? failure.text : "bad allocation", false};
    const ULONG_PTR words[] = {first_magic, reinterpret_cast<ULONG_PTR>(&object),
                               reinterpret_cast<ULONG_PTR>(velmarThrowInfos[static_cast<unsigned>(thrown)]),
                               reinterpret_cast<ULONG_PTR>(&__ImageBase)};
    RaiseException(cpp_exception, EXCEPTION_NONCONTINUABLE, 4, words);
    std::abort();
}

} // namespace Velmar::Microsoft
