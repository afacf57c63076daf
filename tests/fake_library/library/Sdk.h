#pragma once

// What a renderer library shares with its host, in the library's own words. Nothing here is included from the host's
// sources: the two sides meet in memory alone, so a slip of either side shows.
//
// With a Microsoft-ABI compiler these are natural C++ classes: virtual destructors, class values as results. Another
// compiler would lay those out otherwise, so for it the same operations are spelled out.

#include <stddef.h>
#include <stdint.h>

namespace FakeSdk {

/// The host's allocation functions, known from `setMemAllocFunctions` on.
struct HostMemory {
    void* (*malloc)(size_t size);
    void* (*alignedMalloc)(size_t size, size_t alignment);
    void (*free)(void* block);
    void (*alignedFree)(void* block);
};

extern HostMemory host_memory;

struct Placed {};

} // namespace FakeSdk

inline void* operator new(size_t, void* place, FakeSdk::Placed) noexcept {
    return place;
}

namespace FakeSdk {

inline void copyBytes(char* to, const char* from, uint64_t count) {
    for (uint64_t i = 0; i < count; ++i)
        to[i] = from[i];
}

class String {
  public:
    String() : e(inline_buffer), size(0), capacity(16) {}
    String(const char* text) : String() {
        uint64_t length = 0;
        while (text[length] != 0)
            ++length;
        assign(text, length);
    }
    String(const String& other) : String() { assign(other.e, other.size); }
    ~String() { release(); }
    String& operator=(const String& other) {
        if (this != &other) assign(other.e, other.size);
        return *this;
    }

    /// Texts of up to 16 bytes need no memory of the host.
    void assign(const char* text, uint64_t length) {
        if (length > capacity) {
            release();
            e = static_cast<char*>(host_memory.malloc(length));
            capacity = length;
        }
        copyBytes(e, text, length);
        size = length;
    }

    bool operator==(const String& other) const {
        if (size != other.size) return false;
        for (uint64_t i = 0; i < size; ++i)
            if (e[i] != other.e[i]) return false;
        return true;
    }

    char* e;
    char inline_buffer[16];
    uint64_t size;
    uint64_t capacity;

  private:
    void release() {
        if (capacity > 16) host_memory.free(e);
    }
};

template <class T>
class Vector {
  public:
    Vector() : e(nullptr), size(0), capacity(0) {}
    Vector(const Vector& other) : Vector() {
        for (uint64_t i = 0; i < other.size; ++i)
            append(other.e[i]);
    }
    ~Vector() { clear(); }
    Vector& operator=(const Vector&) = delete;

    void append(const T& value) {
        if (size == capacity) grow(capacity == 0 ? 1 : 2 * capacity);
        new (e + size, Placed()) T(value);
        ++size;
    }

    T& operator[](uint64_t i) { return e[i]; }
    const T& operator[](uint64_t i) const { return e[i]; }

    T* e;
    uint64_t size;
    uint64_t capacity;

  private:
    void grow(uint64_t wanted) {
        T* const grown = static_cast<T*>(host_memory.malloc(wanted * sizeof(T)));
        for (uint64_t i = 0; i < size; ++i) {
            new (grown + i, Placed()) T(e[i]);
            e[i].~T();
        }
        if (e != nullptr) host_memory.free(e);
        e = grown;
        capacity = wanted;
    }

    void clear() {
        for (uint64_t i = 0; i < size; ++i)
            e[i].~T();
        if (e != nullptr) host_memory.free(e);
    }
};

/// The hash of texts in the host's tables: FNV-1a over bytes taken as signed.
inline uint64_t hashOf(const String& text) {
    uint64_t hash = 0xCBF29CE484222325;
    for (uint64_t i = 0; i < text.size; ++i)
        hash =
            (hash ^ static_cast<uint64_t>(static_cast<int64_t>(static_cast<signed char>(text.e[i])))) * 0x100000001B3;
    return hash;
}

/// Four buckets, as the host makes them; more would do too.
template <class Entry>
struct HashTable {
    HashTable() : count(0), mask(3) {
        for (int i = 0; i < 4; ++i)
            buckets.append(Vector<Entry>());
    }

    void insert(uint64_t hash, const Entry& entry) {
        buckets[hash & mask].append(entry);
        ++count;
    }

    Vector<Vector<Entry>> buckets;
    uint64_t count;
    uint64_t mask;
};

class RefCounted {
  public:
    RefCounted() : refcount(0) {}

#ifdef _MSC_VER
    virtual ~RefCounted() {}
    void destroyThis() {
        delete this;
    }
    static void* operator new(size_t size) {
        return host_memory.malloc(size);
    }
    static void operator delete(void* block) {
        host_memory.free(block);
    }
#else
    virtual void* destroy(unsigned flags) = 0;
    void destroyThis() {
        destroy(1);
    }
    static void* operator new(size_t size) {
        return host_memory.malloc(size);
    }
    static void operator delete(void* block) {
        host_memory.free(block);
    }

  protected:
    ~RefCounted() = default;

  public:
#endif

    void increment() {
        __atomic_fetch_add(&refcount, 1, __ATOMIC_SEQ_CST);
    }
    void decrement() {
        if (__atomic_fetch_add(&refcount, -1, __ATOMIC_SEQ_CST) == 1) destroyThis();
    }

    int64_t refcount;
};

template <class T>
class Reference {
  public:
    Reference(T* object = nullptr) : ob(object) {
        if (ob != nullptr) ob->increment();
    }
    Reference(const Reference& other) : Reference(other.ob) {}
    ~Reference() {
        if (ob != nullptr) ob->decrement();
    }
    Reference& operator=(const Reference&) = delete;

    T* operator->() const { return ob; }

    T* ob;
};

using UID = uint32_t;

class OStream {
  public:
#ifdef _MSC_VER
    virtual ~OStream() {}
    static void operator delete(void* block) {
        host_memory.free(block);
    }
#else
    virtual void* destroy(unsigned flags) = 0;
#endif
    virtual void writeText(const String& text) = 0;
    virtual void writeNumber(double value) = 0;
};

struct XMLWriteOptions {
    String scene_path;
    String scene_dir;
    String meshes_dir;
    bool resolve_relative_paths;
    bool write_material_uids;
    uint32_t write_mode;
    void* progress_listener;
};

class SceneNode;

struct NodeEntry {
    UID uid;
    SceneNode* node;
};
struct NameEntry {
    String name;
    uint32_t ordinal;
};
struct PathEntry {
    String from;
    String to;
};
struct VisitedEntry {
    UID uid;
    bool visited;
};

enum TraversalKind : uint32_t {
    bind_references,
    get_dependencies,
    update_dependencies,
    load_meshes,
    get_bounds,
    offset_uids,
};

struct TraversalState {
    String scene_path;
    String scene_dir;
    String meshes_dir;
    uint32_t kind;
    Vector<String> dependencies;
    HashTable<VisitedEntry> visited_meshes;
    HashTable<PathEntry> path_map;
    bool mesh_dependencies_as_paths;
    float bounds_min[3];
    float bounds_max[3];
    uint32_t uid_offset;
    void* mesh_cache;
    int32_t depth;
};

class SceneNode : public RefCounted {
  public:
    // Slot 0 is the destructor.
    virtual void setName(const String& new_name) { name = new_name; }
    virtual const String& getName() const { return name; }
    virtual bool isSameNode(const SceneNode* other) const { return other == this; }
#ifdef _MSC_VER
    virtual Reference<SceneNode> clone() const = 0;
#else
    virtual Reference<SceneNode>* cloneInto(Reference<SceneNode>* result) const = 0;
    Reference<SceneNode> clone() const {
        alignas(Reference<SceneNode>) char place[sizeof(Reference<SceneNode>)];
        Reference<SceneNode>* const made = cloneInto(reinterpret_cast<Reference<SceneNode>*>(place));
        const Reference<SceneNode> copy(*made);
        made->~Reference();
        return copy;
    }
#endif
    virtual void updateNodeReferences(const HashTable<NodeEntry>& map) = 0;
    virtual void writeXML(OStream& stream, uint32_t depth, const XMLWriteOptions& options) const = 0;
    virtual void traverse(TraversalState& state) = 0;
    virtual TraversalState* createTraversalState(uint32_t, const String&, const String&) {
        return nullptr;
    }
    virtual void destroyTraversalState(TraversalState*) {}
    virtual uint32_t getMaxLayerIndex() const = 0;
    virtual void getMaterialMaskNames(HashTable<NameEntry>&) const {}
    virtual void getModelMaskNames(HashTable<NameEntry>&) const {}
    virtual bool refersToNode(const SceneNode* node) const = 0;
#ifdef _MSC_VER
    virtual Vector<UID> getDependencyUIDs() const = 0;
#else
    virtual Vector<UID>* getDependencyUIDsInto(Vector<UID>* result) const = 0;
    Vector<UID> getDependencyUIDs() const {
        alignas(Vector<UID>) char place[sizeof(Vector<UID>)];
        Vector<UID>* const made = getDependencyUIDsInto(reinterpret_cast<Vector<UID>*>(place));
        const Vector<UID> copy(*made);
        made->~Vector();
        return copy;
    }
#endif
    virtual bool isEqual(const SceneNode* other) const = 0;

    SceneNode* parent = nullptr;
    Reference<SceneNode>* children_begin = nullptr;
    Reference<SceneNode>* children_end = nullptr;
    String name;
    UID uid = 0xFFFFFFFF;
    uint32_t change_flags = 0;
    uint32_t type = 0;
#ifndef _MSC_VER
    // Other compilers would put the first fields of derived classes here.
    uint32_t tail_padding = 0;
#endif
};

class LayerSetting : public RefCounted {
  public:
    // Slot 0 is the destructor.
#ifdef _MSC_VER
    virtual Reference<LayerSetting> clone() const = 0;
#else
    virtual Reference<LayerSetting>* cloneInto(Reference<LayerSetting>* result) const = 0;
#endif

    String name;
    void* layer_scale = nullptr;
    bool enabled = false;
};

template <class T>
struct Optional {
    T value;
    bool has_value;
};

struct Vec3d {
    double x, y, z;
};

// The beginnings of the host's node classes, as far as the library reads them.

struct Camera : SceneNode {
    double aperture_radius;
    double focus_distance;
    double sensor_width;
    double lens_sensor_dist;
    double exposure_duration;
    double lens_shift_up_distance;
    double lens_shift_right_distance;
    bool autofocus;
    String obstacle_map;
    RefCounted* aperture_shape;
    Vector<char> keyframes;
    Vec3d up;
    Vec3d forwards;
    uint32_t camera_type;
};

struct RenderSettings : SceneNode {
    Optional<bool> bidirectional_to_sss_channel[47];
    Optional<bool> allow_high_quality_bvh;
    Optional<bool> save_subdivided_meshes;
    Optional<int32_t> max_depth;
    Optional<int32_t> gpu_max_depth;
    Optional<int32_t> max_num_consec_rejections;
    Optional<int32_t> num_threads;
    Optional<int32_t> width;
    Optional<int32_t> height;
    Optional<int32_t> super_sample_factor;
    Optional<int32_t> receiver_num_wavelength_buckets;
    Optional<double> halt_time;
    Optional<double> halt_samples_per_pixel;
};

struct Mesh : SceneNode {
    String path;
    RefCounted* mesh;
    int32_t max_num_subdivisions;
    int32_t num_smoothings;
    double subdivide_pixel_threshold;
    double subdivide_curvature_threshold;
    double displacement_error_threshold;
    bool view_dependent_subdivision;
    bool subdivision_smoothing;
    bool normal_smoothing;
    double scale;
};

struct Model : SceneNode {
    Vector<char> keyframes;
    RefCounted* rotation;
    double scale;
    bool invisible_to_camera;
    Vector<void*> ies_profiles;
    String mask_name;
    UID geometry_uid;
    SceneNode* geometry;
    Vector<SceneNode*> materials;
    Vector<UID> material_uids;
};

struct Material : SceneNode {
    RefCounted* material;
    Vector<UID> scatter_uids;
    Vector<SceneNode*> scatter_nodes;
};

struct BackgroundSettings : SceneNode {
    RefCounted* emission_scale;
    RefCounted* background_material;
};

struct Sphere : SceneNode {
    Vector<char> keyframes;
    double radius;
    SceneNode* material;
    UID material_uid;
};

struct Curve1D : SceneNode {
    Vector<float> knots;
    Vector<float> values;
};

struct Tonemapping : SceneNode {
    double scale;
    double pre_scale;
    double post_scale;
    double burn;
    String response_function_path;
    double film_iso;
    double ev_adjust;
    uint32_t tone_mapper_kind;
};

struct ChannelDescriptor {
    uint32_t type;
    String name;
    int32_t offset;
    int32_t components;
};

struct RenderBuffer : RefCounted {
    char* master_buffer;
};

struct ImageDescription {
    uint8_t* pixels;
    uint64_t words[4];
    uint64_t components;
};

struct UInt8Buffer : RefCounted {
    ImageDescription* image;
    void* image_lock;
};

struct FloatBuffer : RefCounted {
    void* image_lock;
    uint64_t words_before[2];
    float* pixels;
    uint64_t words_after[2];
};

struct ToneMapper : RefCounted {
    void* interface_object;
    Reference<RenderBuffer> render_buffer;
    Reference<UInt8Buffer> uint8_buffer;
    Reference<FloatBuffer> float_buffer;
    String error_msg;
};

struct DataManager : RefCounted {
    RefCounted* texture_manager;
    void* interface_object;
};

} // namespace FakeSdk
