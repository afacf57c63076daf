/* What an interpreter has besides CPython's own sources: the table of its modules, and its program. Everything is built
 * in: there is no DLL of Python, and extension modules aren't loaded. */
#include "frozen_modules/importlib._bootstrap.h"
#include "frozen_modules/importlib._bootstrap_external.h"
#include "frozen_modules/zipimport.h"

#include <Python.h>
#include <importdl.h>
#include <pycore_import.h>
#include <windows.h>

/* ---- modules in C ---- */

#define MODULES(X)                                                                                                     \
    X(_abc)                                                                                                            \
    X(_ast)                                                                                                            \
    X(_bisect)                                                                                                         \
    X(_codecs)                                                                                                         \
    X(_collections)                                                                                                    \
    X(_contextvars)                                                                                                    \
    X(_ctypes)                                                                                                         \
    X(_functools)                                                                                                      \
    X(_heapq)                                                                                                          \
    X(_imp)                                                                                                            \
    X(_io)                                                                                                             \
    X(_locale)                                                                                                         \
    X(_opcode)                                                                                                         \
    X(_operator)                                                                                                       \
    X(_overlapped)                                                                                                     \
    X(_random)                                                                                                         \
    X(_sha512)                                                                                                         \
    X(_signal)                                                                                                         \
    X(_socket)                                                                                                         \
    X(_sre)                                                                                                            \
    X(_stat)                                                                                                           \
    X(_string)                                                                                                         \
    X(_struct)                                                                                                         \
    X(_symtable)                                                                                                       \
    X(_thread)                                                                                                         \
    X(_tokenize)                                                                                                       \
    X(_tracemalloc)                                                                                                    \
    X(_typing)                                                                                                         \
    X(_weakref)                                                                                                        \
    X(_winapi)                                                                                                         \
    X(array)                                                                                                           \
    X(atexit)                                                                                                          \
    X(binascii)                                                                                                        \
    X(errno)                                                                                                           \
    X(faulthandler)                                                                                                    \
    X(gc)                                                                                                              \
    X(itertools)                                                                                                       \
    X(math)                                                                                                            \
    X(msvcrt)                                                                                                          \
    X(nt)                                                                                                              \
    X(pyexpat)                                                                                                         \
    X(select)                                                                                                          \
    X(time)                                                                                                            \
    X(winreg)

#define DECLARATION(name) PyObject* PyInit_##name(void);
MODULES(DECLARATION)
PyObject* PyMarshal_Init(void);
PyObject* _PyWarnings_Init(void);

#define ENTRY(name) {#name, PyInit_##name},
struct _inittab _PyImport_Inittab[] = {MODULES(ENTRY){"_warnings", _PyWarnings_Init},
                                       {"builtins", NULL},
                                       {"marshal", PyMarshal_Init},
                                       {"sys", NULL},
                                       {NULL}};

/* ---- modules as byte code ---- */

#define FROZEN(name, code)                                                                                             \
    { name, code, (int)sizeof(code) }
static const struct _frozen bootstrap[] = {FROZEN("_frozen_importlib", _Py_M__importlib__bootstrap),
                                           FROZEN("_frozen_importlib_external", _Py_M__importlib__bootstrap_external),
                                           FROZEN("zipimport", _Py_M__zipimport),
                                           {NULL}};
static const struct _frozen none[] = {{NULL}};
const struct _frozen* _PyImport_FrozenBootstrap = bootstrap;
const struct _frozen* _PyImport_FrozenStdlib = none;
const struct _frozen* _PyImport_FrozenTest = none;
const struct _frozen* PyImport_FrozenModules = NULL;

static const struct _module_alias aliases[] = {{"_frozen_importlib", "importlib._bootstrap"},
                                               {"_frozen_importlib_external", "importlib._bootstrap_external"},
                                               {NULL}};
const struct _module_alias* _PyImport_FrozenAliases = aliases;

/* There is no code of modules as objects laid out beforehand. */
int _Py_Deepfreeze_Init(void) {
    return 0;
}
void _Py_Deepfreeze_Fini(void) {}

/* ---- extension modules ---- */

const char* _PyImport_DynLoadFiletab[] = {NULL};

dl_funcptr _PyImport_FindSharedFuncptrWindows(const char* prefix, const char* name, PyObject* path, FILE* file) {
    PyErr_Format(PyExc_ImportError, "%U: this Python loads no extension modules", path);
    return NULL;
}

/* ---- the program ---- */

/* sys.dllhandle and sys.winver. */
void* PyWin_DLLhModule;
const char* PyWin_DLLVersionString = "3.11";

int wmain(int count, wchar_t** arguments) {
    PyWin_DLLhModule = GetModuleHandleW(NULL);
    return Py_Main(count, arguments);
}
