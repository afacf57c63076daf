#include <stdio.h>
#include <string.h>
#include <velmarapi.h>

/* Writes an empty scene and reads the document's first line back. */
int main(void) {
    void* scene = VelmarScene_Create();
    char line[64] = "";
    FILE* file;
    VelmarScene_WriteToXML(scene, "host_scene.xml");
    VelmarScene_Delete(scene);
    file = fopen("host_scene.xml", "r");
    if (!file || !fgets(line, sizeof line, file)) {
        fprintf(stderr, "no document was written\n");
        return 1;
    }
    fclose(file);
    if (strncmp(line, "<?xml", 5) != 0) {
        fprintf(stderr, "the document begins with %s\n", line);
        return 1;
    }
    return 0;
}
