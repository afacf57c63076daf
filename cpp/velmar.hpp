#pragma once

/// The interface of VelmarKit for C++20, in headers alone: link velmarkit and nothing else. Classes hold what they
/// refer to, arrays are spans, and a failure is an exception of a class derived from velmar::Error with the whole text.
/// For GCC, Clang and Microsoft's compiler; no C++ object crosses the border of the library, so the host may be of
/// another compiler than the library.
///
///     velmar::Scene scene;
///     scene.loadModel("bunny.obj");
///     scene.addSunSky();
///     velmar::Camera camera = scene.add(velmar::Camera());
///     camera.setPosition({0, -8, 2});
///     camera.lookAt({0, 0, 1});
///     scene.write("bunny.xml");
///
/// Text is UTF-8. Lengths are in metres. One thread at a time uses a scene and its nodes; different scenes are
/// independent.

#include "velmar/scene.hpp"

#include <functional>
#include <string_view>

namespace velmar {

/// The version of the library, as "1.0.0".
inline std::string version() {
    return detail::allocating([] { return std::string(VelmarKit_Version()); });
}

/// Receives a line that the library reports, as "Num materials: 2". It must not throw and must not call the library.
using LineHandler = std::function<void(bool is_error, std::string_view line)>;

/// Sets who receives the lines that are otherwise printed on the standard streams; an empty function restores that. For
/// the whole process, while no other thread uses the library.
inline void setLineHandler(LineHandler handler) {
    static LineHandler current;
    current = std::move(handler);
    const auto pass_on = [](void* user, std::int32_t is_error, const char* line) {
        (*static_cast<const LineHandler*>(user))(is_error != 0, line);
    };
    detail::check(current ? VelmarKit_SetLineCallback(pass_on, &current) : VelmarKit_SetLineCallback(nullptr, nullptr));
}

} // namespace velmar
