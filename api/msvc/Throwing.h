#pragma once

/// Failures of the exported functions as exceptions of Microsoft's compiler. A handler of this compiler takes what was
/// thrown, ends, and the failure is raised again in the form that hosts of that compiler catch by type.

#include <cstddef>
#include <type_traits>

namespace Velmar::Microsoft {

/// Which class is thrown; each has its description in ThrowInfo.S, in this order.
enum class Thrown : unsigned {
    velmar_exception,
    exception,
    scene_parser_excep,
    scene_loader_excep,
    file_utils_excep,
    platform_utils_excep,
    transform_path_excep,
    name_map_excep,
    bad_alloc,
    bad_array_new_length,
    bad_cast,
    length_error,
    out_of_range,
    logic_error,
    runtime_error,
    standard_exception,
};

/// What was thrown, with its text. Plain data: nothing has to be cleaned up when the exception begins.
struct Failure {
    Thrown thrown = Thrown::bad_alloc;
    /// Of the heap of the process, or for standard exceptions of the library for good.
    char* text = nullptr;
    std::size_t size = 0;
};

/// Describes the exception that is being handled. Where memory doesn't suffice for its text it becomes a bad_alloc.
Failure describeCurrentException() noexcept;

/// Throws the failure to the host.
[[noreturn]] void raise(const Failure& failure);

/// Calls `call` and returns its result. What it throws leaves in the form of Microsoft's compiler.
template <class Call>
auto throwing(const Call& call) -> decltype(call()) {
    Failure failure;
    try {
        return call();
    } catch (...) {
        failure = describeCurrentException();
    }
    raise(failure);
}

} // namespace Velmar::Microsoft
