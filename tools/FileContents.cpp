#include "tools/FileContents.h"

#include "tools/Console.h"
#include "tools/MeshFile.h"
#include "utils/MappedFile.h"

#include <xxhash.h>

namespace {

MeshFacts describe(const Velmar::Mesh& mesh) {
    MeshFacts facts = {mesh.checksum(), mesh.verts.size(), mesh.triangles.size(), mesh.quads.size(), {}};
    if (!mesh.verts.empty()) facts.bounds = {mesh.aabb_min, mesh.aabb_max};
    return facts;
}

FileContent readContent(const std::string& place) {
    FileContent content;
    const MappedFile file(place);
    content.size = file.getSize();
    if (Velmar::isMeshFormat(Velmar::getMeshFormat(place))) {
        content.mesh = describe(*readMesh(place, 1.0F).mesh);
        content.digest = {content.mesh->checksum, content.mesh->vertices};
    } else {
        content.digest = Digest::of(file.getText());
    }
    content.is_read = true;
    return content;
}

} // namespace

Digest Digest::of(std::string_view bytes) {
    const XXH128_hash_t hash = XXH3_128bits(bytes.data(), bytes.size());
    return {hash.low64, hash.high64};
}

const FileContent& FileContents::get(std::string_view name) {
    const auto [known, is_new] = by_name.try_emplace(std::string(name));
    if (!is_new) return *known->second;
    const std::string place = files.find(known->first);
    // Files that aren't there are known by the names of their own.
    const auto [content, is_new_place] = shared.try_emplace(place.empty() ? '\n' + known->first : place);
    known->second = &content->second;
    if (is_new_place) {
        content->second.digest = Digest::of(Text::fileName(name));
        if (!place.empty()) {
            progress.show("reading " + Text::fileName(place));
            try {
                content->second = readContent(place);
            } catch (...) {
                // It is reported with the others that can't be read.
                content->second.is_read = false;
            }
        }
    }
    if (!content->second.is_read) unread.push_back(known->first);
    return *known->second;
}
