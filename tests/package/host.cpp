#include <cstdio>
#include <string>
#include <velmarapi.h>
#include <velmarexceptions.h>

/// The installed headers are enough to catch what the library throws by its type.
int main() {
    VelmarMesh* const mesh = VelmarMesh_Create("Mesh");
    std::string message;
    try {
        VelmarMesh_WriteToFile(mesh, "no_such_folder/mesh.vmmesh");
    } catch (const Velmar::VelmarException& failure) {
        message.assign(failure.getMessage().data(), failure.getMessage().size());
    }
    VelmarMesh_Delete(mesh);
    std::puts(message.c_str());
    return message.empty() ? 1 : 0;
}
