#pragma once

#include "mesh/Mesh.h"
#include "tools/OutputFile.h"

#include <cstdint>

/// Makes `output` a vmmesh file and puts it in its place. Returns its size. Throws `Failure` when it can't be written
/// or wasn't written whole.
std::uint64_t writeMesh(const Velmar::Mesh& mesh, OutputFile& output, bool compressed);
