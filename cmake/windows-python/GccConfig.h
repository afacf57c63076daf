/* Read before each source of CPython, whose PC/pyconfig.h and Modules/posixmodule.c make these definitions for the
 * Microsoft compiler alone. */
#ifndef VELMAR_GCC_CONFIG_H
#define VELMAR_GCC_CONFIG_H

#include <limits.h> /* PY_SSIZE_T_MAX */
#include <stdint.h> /* intptr_t */

/* The system that is compiled for: Windows 8, as pyconfig.h has it for its own compiler. */
#define MS_WIN64
#define Py_WINVER 0x0602
#define WINVER Py_WINVER
#define _WIN32_WINNT Py_WINVER
#define PYD_PLATFORM_TAG "win_amd64"
#define PY_SUPPORT_TIER 0

#define HAVE_INTPTR_T 1
#define HAVE_UINTPTR_T 1
#define HAVE_WCSFTIME 1

/* Modules/posixmodule.c: what the C runtime has. */
#define HAVE_CWAIT 1
#define HAVE_EXECV 1
#define HAVE_FSYNC 1
#define HAVE_GETLOGIN 1
#define HAVE_GETPPID 1
#define HAVE_PIPE 1
#define HAVE_SPAWNV 1
#define HAVE_SYSTEM 1
#define HAVE_WEXECV 1
#define HAVE_WSPAWNV 1
#define fsync _commit

#endif
