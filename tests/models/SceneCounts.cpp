#include <algorithm>
#include <assimp/Importer.hpp>
#include <assimp/postprocess.h>
#include <assimp/scene.h>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <set>
#include <string>
#include <vector>

namespace {

struct Counts {
    /// Meshes that nodes place.
    std::uint64_t models = 0;
    /// Of all models; a polygon of n corners counts as n - 2.
    std::uint64_t triangles = 0;
    /// That a model has.
    std::set<unsigned> materials;
};

Counts countAll(const aiScene& scene) {
    Counts counts;
    std::vector<const aiNode*> pending = {scene.mRootNode};
    while (!pending.empty()) {
        const aiNode& node = *pending.back();
        pending.pop_back();
        pending.insert(pending.end(), node.mChildren, node.mChildren + node.mNumChildren);
        for (unsigned i = 0; i < node.mNumMeshes; ++i) {
            const aiMesh& mesh = *scene.mMeshes[node.mMeshes[i]];
            ++counts.models;
            for (unsigned face = 0; face < mesh.mNumFaces; ++face)
                counts.triangles += std::max(mesh.mFaces[face].mNumIndices, 2U) - 2;
            counts.materials.insert(mesh.mMaterialIndex);
        }
    }
    return counts;
}

} // namespace

/// Prints a line for each file of the command line: what assimp reads from it as "models / triangles / materials", or
/// its message.
int main(int argc, char** argv) {
    for (int i = 1; i < argc; ++i) {
        Assimp::Importer importer;
        const aiScene* const scene = importer.ReadFile(argv[i], aiProcess_ValidateDataStructure);
        if (scene == nullptr || scene->mRootNode == nullptr) {
            std::string message = importer.GetErrorString();
            std::replace(message.begin(), message.end(), '\n', ' ');
            if (const std::size_t at = message.find(argv[i]); at != std::string::npos)
                message.erase(at, std::strlen(argv[i]));
            std::puts(message.c_str());
            continue;
        }
        const Counts counts = countAll(*scene);
        std::printf("%llu / %llu / %zu\n", static_cast<unsigned long long>(counts.models),
                    static_cast<unsigned long long>(counts.triangles), counts.materials.size());
    }
    return 0;
}
