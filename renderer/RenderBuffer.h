#pragma once

#include "reference.h"
#include "velmarthreadsaferefcounted.h"

#include "renderer/MasterBuffer.h"

namespace Velmar {

class SceneNodeRoot;

/// Owns the image store of one render.
class RenderBuffer : public Destroyable<RenderBuffer, ThreadSafeRefCounted> {
  public:
    /// Makes the image store that the scene's render settings ask for. Width, height and super sample factor are taken
    /// as they stand in the settings, set or not.
    /// Throws `VelmarException` when the scene has no render settings or the store can't be allocated.
    explicit RenderBuffer(const Reference<SceneNodeRoot>& scene);
    ~RenderBuffer();

    MasterBuffer* getMasterBuffer() const { return master_buffer; }

  private:
    friend struct RenderBufferLayout;

    MasterBuffer* master_buffer;
};

static_assert(sizeof(RenderBuffer) == 24);

} // namespace Velmar
