#include "tests/fuzz/support/ReadMesh.h"
#include "tests/support/ReaderPaths.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using TestSupport::PlainPly;
    try {
        const auto result = TestSupport::comparePlyPaths({reinterpret_cast<const char*>(data), size}, 0.7f);
        if (result == PlainPly::refused_too_late || result == PlainPly::different_from_rply) std::abort();
    } catch (const std::bad_alloc&) {
        // RPly reports out of memory like a bad file.
    }
    return 0;
}
