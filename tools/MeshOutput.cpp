#include "tools/MeshOutput.h"

#include "mesh/VmmeshWriter.h"
#include "tools/Failure.h"
#include "tools/MeshInput.h"

std::uint64_t writeMesh(const Velmar::Mesh& mesh, OutputFile& output, bool compressed) {
    try {
        Velmar::writeToFile(Velmar::String(output.getPartialPath()), mesh, compressed);
        // The writer doesn't see a failure of the last bytes, which the system may hold back until the file is closed.
        if (!holdsMesh(output.getPartialPath(), mesh.checksum()))
            throw Failure("wasn't written whole; is the disk full?");
    } catch (...) {
        throw output.makeFailure();
    }
    return output.commit();
}
