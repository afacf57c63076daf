#include "Objects.h"

#include "Fault.h"
#include "OwnNode.h"
#include "Record.h"
#include "RenderJob.h"
#include "SceneWalk.h"

namespace FakeSdk {

void LibraryObject::destroyObject(LibraryObject* object) {
#ifdef _MSC_VER
    delete object;
#else
    object->end();
#endif
}

namespace {

/// The first argument of an update that makes the host throw: its meshes look for paths that the pass doesn't know.
constexpr int32_t update_with_unknown_paths = 404;

#ifdef _MSC_VER
#define ENDS_AS(Class, text)                                                                                           \
    ~Class() override {                                                                                                \
        Record() << text;                                                                                              \
    }
#else
#define ENDS_AS(Class, text)                                                                                           \
    void end() override {                                                                                              \
        Record() << text;                                                                                              \
        this->~Class();                                                                                                \
        host_memory.free(this);                                                                                        \
    }
#endif

/// Returns whether the library does no more than that.
bool onlyAllocates() {
    if (fault != Fault::only_allocates) return false;
    host_memory.free(host_memory.malloc(100));
    return true;
}

class VelmarInterface final : public LibraryObject {
  public:
    ENDS_AS(VelmarInterface, "interface ended"; endUnfinishedPass())

    virtual int32_t initialise(const String* sdk_dir, const String* appdata_dir) {
        Record() << "interface initialised in " << *sdk_dir << ", application data known " << (appdata_dir->size > 0);
        return fault == Fault::interface_initialise ? 6 : 0;
    }
    virtual uint64_t slot2() { return 2; }
    virtual uint64_t slot3() { return 3; }
    virtual uint64_t slot4() { return 4; }
    virtual uint64_t slot5() { return 5; }
    virtual uint64_t slot6() { return 6; }
    virtual uint64_t slot7() { return 7; }
    virtual uint64_t slot8() { return 8; }
    virtual uint64_t initialiseScene(const Reference<SceneNode>& new_scene, RenderBuffer* new_render_buffer,
                                     const Vector<String>& strings, const Reference<DataManager>& data_manager,
                                     const Reference<ToneMapper>* tone_mapper) {
        if (onlyAllocates()) return 90;
        scene = &new_scene;
        render_buffer = new_render_buffer;
        Record() << "interface given a scene held " << new_scene->refcount << " times, strings " << strings.size
                 << ", data manager held " << data_manager->refcount << " times, tone mapper held "
                 << (*tone_mapper)->refcount << " times";
        Record() << "  one image store " << ((*tone_mapper)->render_buffer.ob == new_render_buffer)
                 << ", tone mapper complains '" << (*tone_mapper)->error_msg << "'";
        recordImageStore(*new_render_buffer);
        if (fault == Fault::scene_out_of_memory) host_memory.malloc(SIZE_MAX / 2);
        walkScene(*new_scene.ob);
        return 90;
    }
    virtual uint64_t slot10() { return 100; }
    virtual uint64_t start() {
        Record() << "interface started";
        if (onlyAllocates()) return 110;
        render.start(Reference<RenderBuffer>(render_buffer), *scene);
        return 110;
    }
    virtual uint64_t pause() {
        if (onlyAllocates()) return 120;
        // The render's thread counts the same node at this moment.
        const Reference<SceneNode> held(*scene);
        render.look();
        Record() << "interface paused";
        return 0xF0000000000000FF;
    }
    virtual uint64_t resume() {
        Record() << "interface resumed";
        onlyAllocates();
        return 130;
    }
    virtual uint64_t stop() {
        Record() << "interface stopped";
        if (onlyAllocates()) return 140;
        render.stop();
        return 140;
    }
    virtual uint64_t update(int32_t a, double b, const char* c, float d, uint64_t e, double f, int64_t g,
                            const uint8_t* h) {
        Record() << "interface updated by " << a << ", " << b << ", " << c << ", " << static_cast<double>(d) << ", "
                 << e << ", " << f << ", " << g << ", " << uint32_t{*h};
        onlyAllocates();
        if (a == update_with_unknown_paths) {
            unfinished = (*scene)->createTraversalState(update_dependencies, "scene.xml", "scenes");
            traverseChildren(*scene->ob, *unfinished);
        }
        return 0x123456789ABCDEF0;
    }

  private:
    void endUnfinishedPass() {
        if (unfinished != nullptr) (*scene)->destroyTraversalState(unfinished);
    }

    const Reference<SceneNode>* scene = nullptr;
    RenderBuffer* render_buffer = nullptr;
    RenderJob render;
    /// The state of a pass that the host left by an exception. This library runs no destructors on the way.
    TraversalState* unfinished = nullptr;
};

class ToneMapperObject final : public LibraryObject {
  public:
    ENDS_AS(ToneMapperObject, "tone mapper ended")

    virtual void initialise(const String* sdk_dir, const String* appdata_dir, RenderBuffer* render_buffer,
                            UInt8Buffer* uint8_buffer, FloatBuffer* float_buffer, String* error) {
        Record() << "tone mapper initialised in " << *sdk_dir << ", application data known " << (appdata_dir->size > 0)
                 << ", image store held " << render_buffer->refcount << " times, components "
                 << uint8_buffer->image->components;
        // What the library leaves in the images, their destructors release.
        uint8_buffer->image->pixels = static_cast<uint8_t*>(host_memory.alignedMalloc(300, 16));
        float_buffer->pixels = static_cast<float*>(host_memory.malloc(400));
        if (fault == Fault::tone_mapper_complains) *error = String("the tone mapper has no curve");
    }
};

class DataManagerObject final : public LibraryObject {
  public:
    ENDS_AS(DataManagerObject, "data manager ended")

    virtual void initialise(const String* sdk_dir) { Record() << "data manager initialised in " << *sdk_dir; }

  private:
    // Right after the head, where hosts look for it.
    [[maybe_unused]] uint64_t* link = shared;
    /// The last one is what texture managers are given.
    uint64_t shared[6]{0, 1, 2, 3, 4, 555};
};

class TextureManagerObject final : public LibraryObject {
  public:
#ifdef _MSC_VER
    ~TextureManagerObject() override {
        Record() << "texture manager linked to " << link << " ended";
    }
#else
    void end() override {
        Record() << "texture manager linked to " << link << " ended";
        this->~TextureManagerObject();
        host_memory.free(this);
    }
#endif

    virtual void initialise(const String* sdk_dir) {
        Record() << "texture manager initialised in " << *sdk_dir;
    }

  private:
    uint64_t link = 0;
};

} // namespace

LibraryObject* makeObject(const String& class_name) {
    if (class_name == String("VelmarInterface")) return new VelmarInterface;
    if (class_name == String("ToneMapperDLLAPI")) return new ToneMapperObject;
    if (class_name == String("DataManagerDLLAPI")) return new DataManagerObject;
    if (class_name == String("TextureManagerDLLAPI")) return new TextureManagerObject;
    return nullptr;
}

} // namespace FakeSdk
