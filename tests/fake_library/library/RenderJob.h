#pragma once

#include "Sdk.h"

namespace FakeSdk {

/// A render on a thread of the library's own: it takes the locks of the image store and fills its buffers.
class RenderJob {
  public:
    void start(const Reference<RenderBuffer>& buffer, const Reference<SceneNode>& scene);
    /// Takes the lock as the thread does, and sees what it has done so far.
    uint64_t look() const;
    /// Waits for the thread and records what it left in the image store.
    void stop();

  private:
    static void run(void* job);

    void* thread = nullptr;
    RenderBuffer* render_buffer = nullptr;
    SceneNode* scene = nullptr;
};

/// Records sizes and channels of the image store.
void recordImageStore(const RenderBuffer& buffer);

} // namespace FakeSdk
