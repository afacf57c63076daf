#pragma once

namespace FakeSdk {

/// What a library of bad quality gets wrong.
enum class Fault {
    none,
    /// The library's set-up fails with a text.
    global_init,
    /// The host's memory runs out when the library is given its allocation functions.
    out_of_memory,
    /// Creation of the interface reports failure, though there is an object.
    create_interface,
    /// Creation of the interface gives no object.
    create_nothing,
    interface_initialise,
    /// The host's memory runs out when the library is given a scene.
    scene_out_of_memory,
    /// Looks at nothing: each operation allocates one block of the host's memory and frees it again.
    only_allocates,
    tone_mapper_complains,
};

/// Each library is built with its own.
extern const Fault fault;

} // namespace FakeSdk
