// A library of the library's own compiler that throws each class in the form of Microsoft's, with a text of the host's.

#include "velmarexceptions.h"

#include "api/msvc/Throwing.h"

#include <stdexcept>

using namespace Velmar;

namespace {

/// Throws with nothing in between, as deep in the library.
void throwClass(int which, const char* text) {
    switch (which) {
    case 0:
        throw VelmarException(String(text));
    case 1:
        throw Exception(text);
    case 2:
        throw SceneParserExcep(String(text));
    case 3:
        throw SceneLoaderExcep(text);
    case 4:
        throw FileUtils::FileUtilsExcep(text);
    case 5:
        throw PlatformUtils::PlatformUtilsExcep(text);
    case 6:
        throw TransformPathExcep(text);
    case 7:
        throw NameMapExcep(text);
    case 8:
        throw std::bad_alloc();
    case 9:
        throw std::bad_array_new_length();
    case 10:
        throw std::bad_cast();
    case 11:
        throw std::length_error(text);
    case 12:
        throw std::out_of_range(text);
    case 13:
        throw std::invalid_argument(text);
    case 14:
        throw std::range_error(text);
    case 15:
        throw std::exception();
    case 16:
        std::string("short").append(std::string("short").max_size(), 'x');
        break;
    case 17:
        std::string("short").at(5) = 'x';
        break;
    case 18:
        throw which;
    default:
        break;
    }
}

} // namespace

extern "C" __declspec(dllexport) int throwEach(int which, const char* text) {
    return Microsoft::throwing([=] {
        throwClass(which, text);
        return which;
    });
}
