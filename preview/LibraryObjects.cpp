#include "preview/LibraryObjects.h"

#include "preview/SceneNodes.h"

#include <cstddef>
#include <cstring>
#include <new>

namespace Preview {

namespace {

class ToneMapperObject final : public HostObject {
  public:
    /// Tone mapping is part of the render, which reads the settings from the scene.
    virtual void initialise(const Velmar::String*, const Velmar::String*, Velmar::RenderBuffer*, void*, void*,
                            Velmar::String*) {}
};

class DataManagerObject final : public HostObject {
  public:
    virtual void initialise(const Velmar::String*) {}

  private:
    /// The host follows this word, directly after the head, and hands the sixth word to the texture manager.
    [[maybe_unused]] std::uint64_t* link = shared;
    std::uint64_t shared[6]{};
};

class TextureManagerObject final : public HostObject {
  public:
    virtual void initialise(const Velmar::String*) {}

  private:
    /// Written by the host.
    [[maybe_unused]] std::uint64_t link = 0;
};

static_assert(sizeof(HostObject) == sizeof(Velmar::LibraryObject));

template <class Object>
void destroyObject(Velmar::LibraryObject* object) {
    delete reinterpret_cast<Object*>(object);
}

template <class Object>
Velmar::LibraryObject* make() {
    auto* const object = new (std::nothrow) Object;
    if (object != nullptr) object->destroy = destroyObject<Object>;
    return reinterpret_cast<Velmar::LibraryObject*>(object);
}

/// A host's renderer and the bridge that it owns, as far as the interface object.
struct HostRenderer {
    void* operations;
    std::int64_t refcount;
    struct Bridge {
        void* operations;
        void* context;
        Velmar::LibraryObject* interface_object;
    } * bridge;
};

} // namespace

std::int32_t VelmarInterface::initialise(const Velmar::String*, const Velmar::String*) {
    return 0;
}

std::uint64_t VelmarInterface::initialiseScene(const Velmar::Reference<Velmar::SceneNodeRoot>* scene,
                                               Velmar::RenderBuffer* render_buffer,
                                               const Velmar::Vector<Velmar::String>*,
                                               const Velmar::Reference<Velmar::DataManager>*,
                                               const Velmar::Reference<Velmar::ToneMapper>*) {
    job.reset();
    const Velmar::SceneNodeRoot* const root = scene->getPointer();
    if (root == nullptr || render_buffer == nullptr) return 1;
    job.reset(new (std::nothrow) RenderJob(*root, *render_buffer));
    if (job != nullptr) return 0;
    report("out of memory; nothing is rendered");
    return 1;
}

std::uint64_t VelmarInterface::start() {
    return job != nullptr && job->start() ? 0 : 1;
}

std::uint64_t VelmarInterface::pause() {
    return job != nullptr && job->pause() ? 0 : 1;
}

std::uint64_t VelmarInterface::resume() {
    return job != nullptr && job->resume() ? 0 : 1;
}

std::uint64_t VelmarInterface::stop() {
    return job != nullptr && job->stop() ? 0 : 1;
}

std::uint64_t VelmarInterface::update() {
    return job != nullptr && job->update() ? 0 : 1;
}

Velmar::LibraryObject* makeObject(std::string_view class_name) noexcept {
    if (class_name == "VelmarInterface") return make<VelmarInterface>();
    if (class_name == "ToneMapperDLLAPI") return make<ToneMapperObject>();
    if (class_name == "DataManagerDLLAPI") return make<DataManagerObject>();
    if (class_name == "TextureManagerDLLAPI") return make<TextureManagerObject>();
    return nullptr;
}

RenderJob* jobOf(void* renderer) noexcept {
    if (renderer == nullptr) return nullptr;
    const HostRenderer::Bridge* const bridge = static_cast<HostRenderer*>(renderer)->bridge;
    if (bridge == nullptr || bridge->interface_object == nullptr) return nullptr;
    // The function is this library's only if the object is.
    if (bridge->interface_object->destroy != destroyObject<VelmarInterface>) return nullptr;
    return reinterpret_cast<VelmarInterface*>(bridge->interface_object)->getJob();
}

} // namespace Preview
