#pragma once

#include "velmarexceptions.h"

#include "mesh/Mesh.h"

#include <cstdlib>
#include <new>

extern "C" const char* __asan_default_options();
extern "C" const char* __asan_default_options() {
    // A size that a file only claims costs nothing, but a sanitizer marks every byte of it. Larger allocations fail, as
    // they do anywhere beyond the memory that is there.
    return "allocator_may_return_null=1:max_allocation_size_mb=512";
}

/// Runs `read(mesh)`, lets only documented exceptions pass, and then looks at every byte that the mesh shows.
template <class Read>
void readMesh(Read read) {
    Velmar::Mesh mesh;
    bool complete = false;
    try {
        read(mesh);
        complete = true;
    } catch (const Velmar::VelmarException&) {
    } catch (const Velmar::Exception&) {
    } catch (const std::bad_alloc&) {
    }
    const std::uint64_t first = mesh.checksum();
    // A mesh that was read whole is built: it can be built again and is the same.
    if (complete && (mesh.build() != mesh.num_materials_referenced || mesh.checksum() != first)) std::abort();
}
