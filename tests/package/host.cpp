#include <cstdio>
#include <velmarapi.h>
#include <velmarexceptions.h>

/// The installed headers are enough to catch what the library throws by its type.
int main() {
    VelmarScene* const scene = VelmarScene_Create();
    int status = 0;
    try {
        VelmarScene_WriteToXML(scene, "host_scene.xml");
    } catch (const Velmar::VelmarException& failure) {
        std::fwrite(failure.getMessage().data(), 1, failure.getMessage().size(), stderr);
        status = 1;
    }
    VelmarScene_Delete(scene);
    return status;
}
