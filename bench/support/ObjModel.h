#pragma once

#include <cstdint>
#include <string>

namespace BenchSupport {

enum class ObjCorners { positions_only, positions_uvs_normals };

/// The text of an OBJ file: a wavy square of `cells` by `cells` quads, each divided into two triangles, with numbers of
/// six decimals as exporters write them. With `positions_uvs_normals` each position has a UV and a normal of its own.
std::string makeObjText(std::uint32_t cells, ObjCorners corners);

/// A temporary file that is removed with the object.
class ScratchFile {
  public:
    ScratchFile(const std::string& name, const std::string& bytes);
    ~ScratchFile();
    ScratchFile(const ScratchFile&) = delete;
    ScratchFile& operator=(const ScratchFile&) = delete;

    const std::string& path() const { return full_path; }

  private:
    std::string full_path;
};

} // namespace BenchSupport
