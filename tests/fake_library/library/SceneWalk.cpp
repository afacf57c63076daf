#include "SceneWalk.h"

#include "Record.h"
#include "System.h"
#include "TextStream.h"

namespace FakeSdk {

namespace {

constexpr uint32_t offset = 1000;

enum Type : uint32_t {
    camera = 1,
    render_settings = 2,
    material = 3,
    mesh = 4,
    model = 5,
    sphere = 6,
    tone_mapping = 8,
    background_settings = 10,
    curve = 16,
};

uint64_t countChildren(const SceneNode& root) {
    return static_cast<uint64_t>(root.children_end - root.children_begin);
}

SceneNode& child(const SceneNode& root, uint64_t i) {
    return *root.children_begin[i].ob;
}

void recordSettings(const RenderSettings& node) {
    Record() << "    width " << node.width.value << (node.width.has_value ? "" : " unset") << ", height "
             << node.height.value << ", super sample factor " << node.super_sample_factor.value << ", halt time "
             << node.halt_time.value << ", samples " << node.halt_samples_per_pixel.value;
}

void recordFields(const SceneNode& node) {
    switch (node.type) {
    case camera: {
        const Camera& it = static_cast<const Camera&>(node);
        Record() << "    aperture " << it.aperture_radius << ", focus " << it.focus_distance << ", autofocus "
                 << it.autofocus << ", key frames " << it.keyframes.size << ", forwards " << it.forwards.x << " "
                 << it.forwards.y << " " << it.forwards.z << ", type " << it.camera_type;
        break;
    }
    case render_settings:
        recordSettings(static_cast<const RenderSettings&>(node));
        break;
    case mesh: {
        const Mesh& it = static_cast<const Mesh&>(node);
        Record() << "    mesh held " << it.mesh->refcount << " times, smoothings " << it.num_smoothings
                 << ", pixel threshold " << it.subdivide_pixel_threshold << ", smooth normals " << it.normal_smoothing
                 << ", scale " << it.scale;
        break;
    }
    case material: {
        const Material& it = static_cast<const Material&>(node);
        Record() << "    material held " << it.material->refcount << " times, scatter nodes " << it.scatter_uids.size
                 << " and " << it.scatter_nodes.size;
        break;
    }
    case sphere: {
        const Sphere& it = static_cast<const Sphere&>(node);
        Record() << "    radius " << it.radius << ", key frames " << it.keyframes.size << ", bound "
                 << (it.material != nullptr) << ", material UID " << it.material_uid;
        break;
    }
    case background_settings: {
        const BackgroundSettings& it = static_cast<const BackgroundSettings&>(node);
        Record() << "    emission scaled " << (it.emission_scale != nullptr) << ", material held "
                 << it.background_material->refcount << " times";
        break;
    }
    case curve: {
        const Curve1D& it = static_cast<const Curve1D&>(node);
        Record() << "    knots " << it.knots.size << ", last at " << static_cast<double>(it.knots[it.knots.size - 1])
                 << " of value " << static_cast<double>(it.values[it.values.size - 1]);
        break;
    }
    case model: {
        const Model& it = static_cast<const Model&>(node);
        Record() << "    geometry " << it.geometry->name << " with UID " << it.geometry_uid << ", materials "
                 << it.materials.size << ", key frames " << it.keyframes.size << ", scale " << it.scale << ", rotated "
                 << (it.rotation != nullptr);
        break;
    }
    case tone_mapping: {
        const Tonemapping& it = static_cast<const Tonemapping&>(node);
        Record() << "    kind " << it.tone_mapper_kind << ", scale " << it.scale << ", ISO " << it.film_iso
                 << ", response " << it.response_function_path;
        break;
    }
    default:
        break;
    }
}

void useClone(const SceneNode& node) {
    const Reference<SceneNode> copy = node.clone();
    if (copy.ob == nullptr) {
        Record() << "    no clone";
        return;
    }
    Record() << "    clone of type " << copy->type << ", UID " << copy->uid << ", named " << copy->getName()
             << ", in a scene " << (copy->parent != nullptr) << ", held " << copy->refcount << " times, equal "
             << node.isEqual(copy.ob);
}

void useEachOperation(SceneNode& root, SceneNode& node, const HashTable<NodeEntry>& nodes) {
    Record() << "  node " << node.uid << " of type " << node.type << " named " << node.getName() << ", in the scene "
             << (node.parent == &root);
    recordFields(node);

    const String name = node.getName();
    node.setName("A name of the library's choice");
    Record() << "    renamed to " << node.getName();
    node.setName(name);

    Record() << "    same as itself " << node.isSameNode(&node) << ", as the scene " << node.isSameNode(&root);
    useClone(node);
    node.updateNodeReferences(nodes);

    HashTable<NameEntry> material_masks;
    HashTable<NameEntry> object_masks;
    node.getMaterialMaskNames(material_masks);
    node.getModelMaskNames(object_masks);
    Record() << "    layers to " << node.getMaxLayerIndex() << ", material masks " << material_masks.count
             << ", object masks " << object_masks.count;

    Record dependencies;
    dependencies << "    refers to the scene " << node.refersToNode(&root) << ", equal to itself "
                 << node.isEqual(&node) << ", depends on UIDs";
    const Vector<UID> uids = node.getDependencyUIDs();
    for (uint64_t i = 0; i < uids.size; ++i)
        dependencies << " " << uids[i];
}

/// One pass as the library runs it: a state from the scene, one call for each child, the state given back. Returns the
/// paths that the pass has gathered.
Vector<String> runPass(SceneNode& root, TraversalKind kind, uint32_t uid_offset, const Vector<String>& known_paths) {
    TraversalState* const state = root.createTraversalState(kind, "scene.xml", "scenes");
    Record pass;
    pass << "  pass " << state->kind << " over " << state->scene_path << " in " << state->scene_dir << ", buckets "
         << state->visited_meshes.buckets.size << " and " << state->path_map.buckets.size << ", as paths "
         << state->mesh_dependencies_as_paths;
    state->uid_offset = uid_offset;
    for (uint64_t i = 0; i < known_paths.size; ++i)
        state->path_map.insert(hashOf(known_paths[i]), PathEntry{known_paths[i], known_paths[i]});
    traverseChildren(root, *state);
    pass << ": depth " << state->depth << ", dependencies " << state->dependencies.size << ", bounds";
    for (const float bound : state->bounds_min)
        pass << " " << static_cast<double>(bound);
    pass << " to";
    for (const float bound : state->bounds_max)
        pass << " " << static_cast<double>(bound);
    const Vector<String> gathered(state->dependencies);
    root.destroyTraversalState(state);
    return gathered;
}

void recordUIDs(const SceneNode& root) {
    Record uids;
    uids << "  UIDs";
    for (uint64_t i = 0; i < countChildren(root); ++i)
        uids << " " << child(root, i).uid;
}

/// Writes the scene as a whole and child by child.
void writeScene(const SceneNode& root) {
    XMLWriteOptions options{"scene.xml", "", "", true, true, 0, nullptr};
    TextStream whole;
    root.writeXML(whole, 0, options);
    TextStream in_parts;
    in_parts.writeText("<scene>\n");
    for (uint64_t i = 0; i < countChildren(root); ++i) {
        if (i > 0) in_parts.writeText("\n");
        child(root, i).writeXML(in_parts, 1, options);
    }
    in_parts.writeText("</scene>\n");
    Record() << "  the same child by child and as a whole " << (whole == in_parts);
    writeFile("walked.xml", whole.bytes.e, whole.bytes.size);
}

} // namespace

void walkScene(SceneNode& root) {
    Record() << "  scene " << root.getName() << " with UID " << root.uid << " has " << countChildren(root)
             << " children, is its own parent " << (root.parent == &root);
    useClone(root);

    HashTable<NodeEntry> nodes;
    for (uint64_t i = 0; i < countChildren(root); ++i)
        nodes.insert(child(root, i).uid, NodeEntry{child(root, i).uid, &child(root, i)});
    root.updateNodeReferences(nodes);
    for (uint64_t i = 0; i < countChildren(root); ++i)
        useEachOperation(root, child(root, i), nodes);

    runPass(root, bind_references, 0, {});
    const Vector<String> paths = runPass(root, get_dependencies, 0, {});
    runPass(root, update_dependencies, 0, paths);
    runPass(root, load_meshes, 0, {});
    runPass(root, get_bounds, 0, {});
    runPass(root, offset_uids, offset, {});
    recordUIDs(root);
    runPass(root, offset_uids, uint32_t{0} - offset, {});
    recordUIDs(root);
    writeScene(root);
}

void traverseChildren(SceneNode& root, TraversalState& state) {
    for (uint64_t i = 0; i < countChildren(root); ++i)
        child(root, i).traverse(state);
}

} // namespace FakeSdk
