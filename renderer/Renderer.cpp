#include "renderer/Renderer.h"

#include <cstddef>

namespace Velmar {

struct RendererLayout {
    // The export that updates a scene finds the implementation here.
    static_assert(offsetof(Renderer, impl) == 16);
};

Renderer::Renderer(const Reference<VelmarContext>& context) : impl(new RendererImpl(context)) {}

Renderer::~Renderer() {
    impl->destroy(1);
}

} // namespace Velmar
