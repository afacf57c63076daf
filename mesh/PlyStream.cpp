#include "mesh/PlyStream.h"

#include <cstdio>
#include <mutex>

// What RPly calls in place of its own name and of the functions of the C library. The name and the `FILE*` are
// addresses of a `PlyStream`: RPly passes them on and looks at neither.
extern "C" {
p_ply velmar_ply_open(const char* name, p_ply_error_cb on_error, long user_number, void* user);
std::FILE* velmar_ply_fopen(const char* name, const char* mode);
std::size_t velmar_ply_fread(void* to, std::size_t size, std::size_t count, std::FILE* file);
int velmar_ply_fclose(std::FILE* file);

std::FILE* velmar_ply_fopen(const char* name, const char*) {
    return reinterpret_cast<std::FILE*>(const_cast<char*>(name));
}

std::size_t velmar_ply_fread(void* to, std::size_t size, std::size_t count, std::FILE* file) {
    // RPly always reads single bytes.
    return reinterpret_cast<Velmar::PlyStream*>(file)->read(static_cast<char*>(to), size * count);
}

int velmar_ply_fclose(std::FILE*) {
    return 0;
}
}

namespace Velmar {

PlyHandle openPly(PlyStream& stream, p_ply_error_cb on_error, void* user) {
    return PlyHandle(velmar_ply_open(reinterpret_cast<const char*>(&stream), on_error, 0, user));
}

bool readPlyHeader(p_ply ply) {
    static std::mutex one_at_a_time;
    const std::lock_guard lock(one_at_a_time);
    return ply_read_header(ply) != 0;
}

} // namespace Velmar
