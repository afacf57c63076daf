#pragma once

#include "velmarthreadsaferefcounted.h"

#include "renderer/RendererImpl.h"

namespace Velmar {

/// What hosts hold of a renderer: the owner of its `RendererImpl`.
class Renderer : public Destroyable<Renderer, ThreadSafeRefCounted> {
  public:
    explicit Renderer(const Reference<VelmarContext>& context);
    ~Renderer();

    RendererImpl& getImpl() const { return *impl; }

  private:
    friend struct RendererLayout;

    RendererImpl* impl;
};

static_assert(sizeof(Renderer) == 24);

} // namespace Velmar
