#pragma once

/// What programs of Microsoft's compiler have of their runtime, declared by hand, so that they are built here without
/// its headers: the layouts are those of its release runtime.

#include <stddef.h>
#include <stdint.h>

extern "C" {
__declspec(dllimport) void* malloc(size_t size);
__declspec(dllimport) void free(void* block);
[[noreturn]] __declspec(dllimport) void exit(int status);
__declspec(dllimport) int puts(const char* text);
__declspec(dllimport) int strcmp(const char* first, const char* second);
__declspec(dllimport) size_t strlen(const char* text);
__declspec(dllimport) char* strcpy(char* to, const char* from);
__declspec(dllimport) void* memcpy(void* to, const void* from, size_t size);
__declspec(dllimport) void* memset(void* to, int value, size_t size);
__declspec(dllimport) int memcmp(const void* first, const void* second, size_t size);
}

inline void* operator new(size_t, void* place) noexcept {
    return place;
}

namespace std {

class exception {
  public:
    exception() : text(nullptr), owns_text(false) {}
    explicit exception(const char* text_) : text(nullptr), owns_text(true) { keep(text_); }
    exception(const exception& other) : text(other.text), owns_text(other.owns_text) {
        if (owns_text) keep(other.text);
    }
    exception& operator=(const exception&) = delete;
    virtual ~exception() {
        if (owns_text) free(const_cast<char*>(text));
    }
    virtual const char* what() const { return text != nullptr ? text : "Unknown exception"; }

  private:
    void keep(const char* from) { text = strcpy(static_cast<char*>(malloc(strlen(from) + 1)), from); }

    const char* text;
    bool owns_text;
};

class bad_alloc : public exception {
  public:
    bad_alloc() : exception("bad allocation") {}
};
class bad_array_new_length : public bad_alloc {};
class bad_cast : public exception {
    using exception::exception;
};
class logic_error : public exception {
    using exception::exception;
};
class length_error : public logic_error {
    using logic_error::logic_error;
};
class out_of_range : public logic_error {
    using logic_error::logic_error;
};
class runtime_error : public exception {
    using exception::exception;
};

/// Texts of 16 bytes and more lie outside; blocks of 4096 bytes and more begin at multiples of 32, with the address of
/// what was allocated before them.
class string {
  public:
    explicit string(const char* text) : size_(strlen(text)), capacity_(size_ < 16 ? 15 : size_) {
        char* to = inside;
        if (size_ >= 16) {
            const size_t needed = size_ + 1;
            to = outside = static_cast<char*>(needed < large ? malloc(needed) : allocateLarge(needed));
        }
        memcpy(to, text, size_ + 1);
    }
    string(const string& other) : string(other.c_str()) {}
    string& operator=(const string&) = delete;
    ~string() {
        if (capacity_ < 16) return;
        free(capacity_ + 1 < large ? outside : reinterpret_cast<void**>(outside)[-1]);
    }
    const char* c_str() const { return capacity_ < 16 ? inside : outside; }
    size_t size() const { return size_; }

  private:
    static constexpr size_t large = 4096;

    static void* allocateLarge(size_t size) {
        char* const block = static_cast<char*>(malloc(size + 39));
        char* const text = reinterpret_cast<char*>((reinterpret_cast<uintptr_t>(block) + 39) & ~uintptr_t{31});
        reinterpret_cast<void**>(text)[-1] = block;
        return text;
    }

    union {
        char inside[16];
        char* outside;
    };
    size_t size_;
    size_t capacity_;
};

} // namespace std

namespace Velmar {

class String {
  public:
    explicit String(const char* text) : size_(strlen(text)), capacity_(size_ > 16 ? size_ : 16) {
        data_ = size_ > 16 ? static_cast<char*>(malloc(size_)) : inside_;
        memcpy(data_, text, size_);
    }
    String(const String& other) : size_(other.size_), capacity_(size_ > 16 ? size_ : 16) {
        data_ = size_ > 16 ? static_cast<char*>(malloc(size_)) : inside_;
        memcpy(data_, other.data_, size_);
    }
    String& operator=(const String&) = delete;
    ~String() {
        if (capacity_ > 16) free(data_);
    }
    const char* data() const { return data_; }
    size_t size() const { return size_; }

  private:
    char* data_;
    char inside_[16];
    uint64_t size_;
    uint64_t capacity_;
};

} // namespace Velmar

// Each declares its own member, as the library's classes do; none has a base.
#define EXCEPTION_CLASS(Class, Text)                                                                                   \
    class Class {                                                                                                      \
      public:                                                                                                          \
        explicit Class(const char* text) : message(text) {}                                                            \
        const Text& getMessage() const { return message; }                                                             \
                                                                                                                       \
      private:                                                                                                         \
        Text message;                                                                                                  \
    };

namespace Velmar {
EXCEPTION_CLASS(VelmarException, String)
EXCEPTION_CLASS(Exception, std::string)
EXCEPTION_CLASS(SceneParserExcep, String)
EXCEPTION_CLASS(SceneLoaderExcep, std::string)
} // namespace Velmar
namespace FileUtils {
EXCEPTION_CLASS(FileUtilsExcep, std::string)
}
namespace PlatformUtils {
EXCEPTION_CLASS(PlatformUtilsExcep, std::string)
}
EXCEPTION_CLASS(TransformPathExcep, std::string)
EXCEPTION_CLASS(NameMapExcep, std::string)

#undef EXCEPTION_CLASS
