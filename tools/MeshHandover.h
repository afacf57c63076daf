#pragma once

#include "velmarapi.h"

#include "mesh/Mesh.h"

#include <string>

/// Drops what a host can't hand over: the exported functions take no normals and no UV layout.
void keepWhatHostsCanGive(Velmar::Mesh& mesh);

/// Whether the names of materials are distinct zero-terminated texts. Otherwise handing them over would shift indices:
/// the exported functions pass over a name that is there.
bool hasDistinctNames(const Velmar::Mesh& mesh);

/// Makes a mesh node of the same content by the exported functions alone. The node is the caller's.
/// Throws `Failure` when there is more of something than one call takes and it can't be given in parts.
VelmarMesh* handOverMesh(const Velmar::Mesh& mesh, const std::string& name, bool smooth_normals);
