#pragma once

/**
 * The flat interface of VelmarAPI: a host describes a scene with it and writes the scene as an XML document with binary
 * mesh files beside it, or hands it to a renderer library. Plain C99; C++ hosts may include it too.
 *
 * Handles. A handle is the address of an object. Nothing checks it: only the delete functions accept null. A creator
 * returns an object that belongs to the host. Once it has been added to a scene, or given to another object, it belongs
 * to that holder and goes with it; it must then not be deleted, but setters may still be called while the holder lives.
 *
 * Text is UTF-8 and ends in a zero byte; it is copied before a function returns. Lengths are metres.
 *
 * Errors. Functions report failure by C++ exceptions of the classes in velmarexceptions.h, none of which derives from
 * std::exception. A host that wants to catch them by type is built with the same compiler family as the library; to
 * others they are foreign exceptions, and a host in C can't catch them.
 *
 * Threads. A scene is built, changed and written by one thread at a time; different scenes are independent.
 */

#include "velmarapi/background.h"
#include "velmarapi/camera.h"
#include "velmarapi/context.h"
#include "velmarapi/creators.h"
#include "velmarapi/material.h"
#include "velmarapi/mesh.h"
#include "velmarapi/model.h"
#include "velmarapi/renderer.h"
#include "velmarapi/rendersettings.h"
#include "velmarapi/scene.h"
#include "velmarapi/tonemapping.h"
#include "velmarapi/types.h"
