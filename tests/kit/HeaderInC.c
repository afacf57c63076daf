#include "velmarkit.h"

/* Uses the header as C. */
int32_t kitInC(void) {
    VelmarScene* scene = NULL;
    int32_t status = VelmarKit_Scene_Create(&scene);
    if (status == VELMARKIT_SUCCESS) status = VelmarKit_create_plane(scene);
    if (status == VELMARKIT_SUCCESS) status = VelmarKit_Scene_Delete(scene);
    return status;
}
