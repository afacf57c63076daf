#include <stdio.h>
#include <windows.h>

/* Prints what Windows shows of a file's version: the number in its fixed part and three of its texts. */
int main(int argc, char** argv) {
    static char block[65536];
    static const char* const texts[] = {"ProductName", "ProductVersion", "OriginalFilename"};
    VS_FIXEDFILEINFO* fixed;
    UINT size, i;
    if (argc != 2 || !GetFileVersionInfoA(argv[1], 0, sizeof block, block) ||
        !VerQueryValueA(block, "\\", (void**)&fixed, &size)) {
        printf("no version\n");
        return 1;
    }
    printf("%u.%u.%u.%u", (unsigned)HIWORD(fixed->dwProductVersionMS), (unsigned)LOWORD(fixed->dwProductVersionMS),
           (unsigned)HIWORD(fixed->dwProductVersionLS), (unsigned)LOWORD(fixed->dwProductVersionLS));
    for (i = 0; i < sizeof texts / sizeof *texts; ++i) {
        char name[64], *text;
        snprintf(name, sizeof name, "\\StringFileInfo\\040904b0\\%s", texts[i]);
        if (!VerQueryValueA(block, name, (void**)&text, &size)) return 1;
        printf(" %s", text);
    }
    printf("\n");
    return 0;
}
