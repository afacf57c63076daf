#pragma once

#include "velmarvec.h"

#include <string>
#include <string_view>
#include <vector>

namespace Velmar {

/// A material of a Wavefront material library, with the values of its lines.
struct MTLMaterial {
    std::string name;
    Vec3f Kd = {0.5f, 0.5f, 0.5f};
    Vec3f Ks = {0.33333f, 0.33333f, 0.33333f};
    Vec3f Tf = {1.0f, 1.0f, 1.0f};
    float Ns = 500.0f;
    float Ni = 1.5f;
    float d = 1.0f;
    std::string map_Kd;
    /// Two colours that no line sets.
    Vec3f unset_black = {0.0f, 0.0f, 0.0f};
    Vec3f unset_white = {1.0f, 1.0f, 1.0f};
};

struct MTLLibrary {
    /// The file it came from.
    std::string path;
    /// In the order of the file.
    std::vector<MTLMaterial> materials;
};

/// Reads the material library `path` (UTF-8) in place of what `library` holds. Unknown lines are passed over.
/// Throws `Velmar::Exception` when the file can't be mapped, and with the line's number when a number is missing or a
/// value comes before the first material.
void loadMTL(std::string_view path, MTLLibrary& library);

} // namespace Velmar
