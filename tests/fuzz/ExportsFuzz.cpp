// Calls of the flat interface. Whatever the arguments, and whichever allocation fails, no call may crash or leak.

#include "tests/fuzz/support/ExportCalls.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace ExportCalls;
    [[maybe_unused]] static const bool prepared = (Faults::prepareRuntime(), true);

    Input input(data, size);
    VelmarScene* scene = nullptr;
    {
        Host host;
        scene = host.scene;
        for (int i = 0; i < max_steps && !input.empty(); ++i) {
            // What the byte holds beyond the step: no failure, the first allocation alone, it and all that follow, the
            // second alone ...
            const auto byte = input.take<std::uint8_t>();
            const std::size_t failure = byte / std::size(steps);
            failing_allocation = static_cast<std::int64_t>((failure + 1) / 2);
            lasting = failure % 2 == 1 ? Faults::Lasting::once : Faults::Lasting::for_ever;
            take(steps[byte % std::size(steps)], host, input);
        }
    }
    VelmarScene_Delete(scene);
    std::filesystem::remove_all(workFolder() + "/scene_meshes");
    return 0;
}
