#pragma once

#include <cstddef>

namespace TestSupport {

/// Calls the virtual operation at a position of an object's table, as a library built by another compiler does. The
/// arguments must have the very types of the operation's parameters.
template <class Result, class... Arguments>
Result callSlot(void* object, std::size_t slot, Arguments... arguments) {
    using Operation = Result (*)(void*, Arguments...);
    const Operation* const table = *static_cast<Operation**>(object);
    return table[slot](object, arguments...);
}

} // namespace TestSupport
