#pragma once

#include "preview/RenderJob.h"

#include "renderer/ImageBuffers.h"
#include "renderer/LibraryObject.h"
#include "renderer/LibraryServices.h"
#include "scene/SceneNodeRoot.h"

#include <cstdint>
#include <memory>
#include <string_view>

namespace Preview {

/// The beginning of the objects that hosts get: slots, a count that hosts change, and how the object is destroyed. The
/// slots are virtual functions in their order; there is no virtual destructor, of which compilers make one slot or two.
class HostObject {
  public:
    HostObject() = default;
    HostObject(const HostObject&) = delete;
    HostObject& operator=(const HostObject&) = delete;

    virtual void slot0() {}

    std::int32_t refcount = 0;
    void (*destroy)(Velmar::LibraryObject* object) = nullptr;

  protected:
    ~HostObject() = default;
};

/// What the host drives: gets the scene and renders it. Calls come from one thread at a time.
class VelmarInterface final : public HostObject {
  public:
    virtual std::int32_t initialise(const Velmar::String* sdk_dir, const Velmar::String* appdata_dir);
    // No exported function of the host reaches those that only keep the places of others.
    virtual std::uint64_t slot2() { return 0; }
    virtual std::uint64_t slot3() { return 0; }
    virtual std::uint64_t slot4() { return 0; }
    virtual std::uint64_t slot5() { return 0; }
    virtual std::uint64_t slot6() { return 0; }
    virtual std::uint64_t slot7() { return 0; }
    virtual std::uint64_t slot8() { return 0; }
    virtual std::uint64_t initialiseScene(const Velmar::Reference<Velmar::SceneNodeRoot>* scene,
                                          Velmar::RenderBuffer* render_buffer,
                                          const Velmar::Vector<Velmar::String>* strings,
                                          const Velmar::Reference<Velmar::DataManager>* data_manager,
                                          const Velmar::Reference<Velmar::ToneMapper>* tone_mapper);
    virtual std::uint64_t slot10() { return 0; }
    // These return 0 when there was something to do and 1 otherwise. Further arguments of update are ignored.
    virtual std::uint64_t start();
    virtual std::uint64_t pause();
    virtual std::uint64_t resume();
    virtual std::uint64_t stop();
    virtual std::uint64_t update();

    /// Null before a scene was given.
    RenderJob* getJob() const { return job.get(); }

  private:
    std::unique_ptr<RenderJob> job;
};

/// Makes the object of a class, or null for a class that the library doesn't have and when memory is exhausted.
Velmar::LibraryObject* makeObject(std::string_view class_name) noexcept;

/// The job of a host's renderer, or null if it has none or another library's.
RenderJob* jobOf(void* renderer) noexcept;

} // namespace Preview
