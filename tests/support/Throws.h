#pragma once

#include "velmarstring.h"

#include <string>

namespace TestSupport {

inline std::string asText(const std::string& text) {
    return text;
}
inline std::string asText(const Velmar::String& text) {
    return Velmar::toStdString(text);
}

/// The message of the `Exception` that `action` throws, or "(nothing thrown)". Other exceptions pass.
template <class Exception, class Action>
std::string messageOf(Action action) {
    try {
        action();
    } catch (const Exception& e) {
        return asText(e.getMessage());
    }
    return "(nothing thrown)";
}

} // namespace TestSupport
