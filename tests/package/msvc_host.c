#include <velmarapi.h>

/* A program without a C library, entered by the system itself, so that no compiler's runtime is needed to link it. */
int start(void) {
    VelmarScene* scene = VelmarScene_Create();
    VelmarScene_AddCamera(scene, VelmarCamera_Create());
    VelmarScene_WriteToXML(scene, "host_scene.xml");
    VelmarScene_Delete(scene);
    return 0;
}
