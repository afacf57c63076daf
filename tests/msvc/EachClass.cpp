// Each class that the library throws, caught by a program of Microsoft's form: by reference, by value, by a base, and
// not by the others.

#include "Check.h"

extern "C" __declspec(dllimport) int throwEach(int which, const char* text);

namespace {

constexpr int standard = 8;

template <class Class>
void catchesMessage(int which, const char* text) {
    int destroyed = 0;
    bool caught = false;
    try {
        const Witness witness(destroyed);
        throwEach(which, text);
    } catch (const Class& exception) {
        caught = true;
        CHECK(isText(exception.getMessage(), text), text);
        const Class copy(exception);
        CHECK(isText(copy.getMessage(), text), text);
    } catch (...) {
        CHECK(!"caught as its own class", text);
    }
    CHECK(caught && destroyed == 1, text);

    // A copy that the library makes and this program destroys.
    try {
        throwEach(which, text);
    } catch (Class exception) {
        CHECK(isText(exception.getMessage(), text), text);
    }
    // No class has a base.
    try {
        throwEach(which, text);
    } catch (const std::exception&) {
        CHECK(!"not a standard exception", text);
    } catch (...) {
    }
    // Thrown on from a handler.
    try {
        try {
            throwEach(which, text);
        } catch (...) {
            throw;
        }
    } catch (const Class& exception) {
        CHECK(isText(exception.getMessage(), text), text);
    }
}

template <class Class, class Base = std::exception>
void catchesStandard(int which, const char* text, const char* given = "") {
    int destroyed = 0;
    bool caught = false;
    try {
        const Witness witness(destroyed);
        throwEach(which, given);
    } catch (const Class& exception) {
        caught = true;
        CHECK(strcmp(exception.what(), text) == 0, exception.what());
    } catch (...) {
        CHECK(!"caught as its own class", text);
    }
    CHECK(caught && destroyed == 1, text);
    try {
        throwEach(which, given);
    } catch (Class exception) {
        CHECK(strcmp(exception.what(), text) == 0, exception.what());
    }
    caught = false;
    try {
        throwEach(which, given);
    } catch (const Base& exception) {
        caught = true;
        CHECK(strcmp(exception.what(), text) == 0, exception.what());
    }
    CHECK(caught, text);
    caught = false;
    try {
        throwEach(which, given);
    } catch (const std::exception& exception) {
        caught = true;
        CHECK(strcmp(exception.what(), text) == 0, exception.what());
    }
    CHECK(caught, text);
}

char long_text[70000];

/// A text of `size` bytes.
const char* textOf(size_t size) {
    memset(long_text, 'x', size);
    long_text[size] = 0;
    return long_text;
}

void catchesEachMessage(const char* text) {
    catchesMessage<Velmar::VelmarException>(0, text);
    catchesMessage<Velmar::Exception>(1, text);
    catchesMessage<Velmar::SceneParserExcep>(2, text);
    catchesMessage<Velmar::SceneLoaderExcep>(3, text);
    catchesMessage<FileUtils::FileUtilsExcep>(4, text);
    catchesMessage<PlatformUtils::PlatformUtilsExcep>(5, text);
    catchesMessage<TransformPathExcep>(6, text);
    catchesMessage<NameMapExcep>(7, text);
}

} // namespace

void run() {
    CHECK(throwEach(100, "") == 100);
    catchesEachMessage("");
    catchesEachMessage("a text");
    // Around what fits into the strings themselves, and where blocks of std::string get another form.
    constexpr size_t sizes[] = {14, 15, 16, 17, 18, 100, 4094, 4095, 4096, 4097, 69999};
    for (const size_t size : sizes)
        catchesEachMessage(textOf(size));

    catchesStandard<std::bad_alloc>(standard, "bad allocation");
    catchesStandard<std::bad_array_new_length, std::bad_alloc>(9, "bad array new length");
    catchesStandard<std::bad_cast>(10, "bad cast");
    catchesStandard<std::length_error, std::logic_error>(11, "vector<T> too long", "vector<T> too long");
    catchesStandard<std::out_of_range, std::logic_error>(12, "an index", "an index");
    catchesStandard<std::logic_error>(13, "an argument", "an argument");
    catchesStandard<std::runtime_error>(14, "a range", "a range");
    catchesStandard<std::exception>(15, "Unknown exception");
    catchesStandard<std::length_error, std::logic_error>(16, "string too long");
    catchesStandard<std::out_of_range, std::logic_error>(17, "invalid string position");
    catchesStandard<std::exception>(18, "Unknown exception");
    if (failures == 0) puts("each class is caught");
}
