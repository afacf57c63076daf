#include "velmarexceptions.h"

#include "mesh/MeshReaders.h"
#include "tests/fuzz/support/FuzzFile.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const FuzzFile file("mtl");
    const std::string path = file.fill(data, size);
    Velmar::MTLLibrary library;
    try {
        Velmar::loadMTL(path, library);
    } catch (const Velmar::Exception&) {
    }
    return 0;
}
