#pragma once

#include "reference.h"
#include "velmarmemory.h"
#include "velmarstring.h"
#include "velmarthreadsaferefcounted.h"
#include "velmarvector.h"

#include "renderer/ImageBuffers.h"
#include "renderer/LibraryObject.h"
#include "renderer/LibraryServices.h"
#include "renderer/VelmarContext.h"
#include "scene/SceneNodeRoot.h"

#include <cstddef>
#include <cstdint>

namespace Velmar {

/// The bridge to the library's "VelmarInterface" object. Its operations are called by position, as those of a class
/// with a virtual table. The table is written out by hand, because most of its operations hand their arguments on to
/// the library whatever they are, which no C++ function can do.
class RendererImpl final : public SdkAllocated {
  public:
    using Operation = void (*)();

    /// The slots of the table.
    enum Slot : std::size_t {
        destroy_slot = 0,
        initialise_slot = 1,
        start_slot = 4,
        pause_slot = 5,
        resume_slot = 6,
        stop_slot = 7,
        slot_count = 11,
    };

    /// Has the library make and initialise its object. A failure of either is printed on the standard output, and the
    /// object is used nonetheless. The context must be loaded.
    explicit RendererImpl(const Reference<VelmarContext>& context_);
    RendererImpl(const RendererImpl&) = delete;
    RendererImpl& operator=(const RendererImpl&) = delete;

    /// Slot 0. Runs the destructor and, with bit 0 of `flags` set, frees the memory. The library's objects go first and
    /// the context, which may unload the library, is released last.
    void* destroy(unsigned flags);

    /// The library's object.
    LibraryObject* getLibraryObject() const { return interface.getPointer(); }

    /// Slot 1. Holds all four and hands them to the library. Returns the library's result. What the library throws
    /// passes through, and what was held before is held again.
    std::uint64_t initialise(const Reference<SceneNodeRoot>& new_scene,
                             const Reference<RenderBuffer>& new_render_buffer, const Vector<String>& strings,
                             const Reference<DataManager>& new_data_manager,
                             const Reference<ToneMapper>& new_tone_mapper);

    /// Slots 4 to 7, without further arguments. Each returns the library's result.
    std::uint64_t start() { return callOperation(start_slot); }
    std::uint64_t pause() { return callOperation(pause_slot); }
    std::uint64_t resume() { return callOperation(resume_slot); }
    std::uint64_t stop() { return callOperation(stop_slot); }

  private:
    struct Layout;

    static const Operation operation_table[slot_count];

    ~RendererImpl();

    std::uint64_t callOperation(Slot slot);

    const Operation* operations = operation_table;
    Reference<VelmarContext> context;
    InterfaceRef interface;
    Reference<RenderBuffer> render_buffer;
    Reference<DataManager> data_manager;
    Reference<SceneNodeRoot> scene;
    Reference<ToneMapper> tone_mapper;
};

/// The calls in assembly find the library's object by its offset.
struct RendererImpl::Layout {
    static_assert(offsetof(RendererImpl, operations) == 0);
    static_assert(offsetof(RendererImpl, context) == 8);
    static_assert(offsetof(RendererImpl, interface) == 16);
    static_assert(offsetof(RendererImpl, render_buffer) == 24);
    static_assert(offsetof(RendererImpl, data_manager) == 32);
    static_assert(offsetof(RendererImpl, scene) == 40);
    static_assert(offsetof(RendererImpl, tone_mapper) == 48);
};

static_assert(sizeof(RendererImpl) == 56);

/// What hosts hold of a renderer: the owner of its `RendererImpl`.
class Renderer : public Destroyable<Renderer, ThreadSafeRefCounted> {
  public:
    explicit Renderer(const Reference<VelmarContext>& context);
    ~Renderer();

    RendererImpl& getImpl() const { return *impl; }

  private:
    struct Layout;

    RendererImpl* impl;
};

/// The update of a scene, in assembly, finds the implementation by its offset.
struct Renderer::Layout {
    static_assert(offsetof(Renderer, impl) == 16);
};

static_assert(sizeof(Renderer) == 24);

} // namespace Velmar
