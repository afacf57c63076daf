#pragma once

#include "reference.h"
#include "velmarstring.h"
#include "velmarthreadsaferefcounted.h"

#include "renderer/ImageBuffers.h"
#include "renderer/InterfaceRef.h"
#include "renderer/RenderBuffer.h"
#include "renderer/VelmarContext.h"

namespace Velmar {

/// Holds the library's tone mapper and the images between which it works.
class ToneMapper : public Destroyable<ToneMapper, ThreadSafeRefCounted> {
  public:
    /// Has the library make and initialise its tone mapper. What it complains of is kept and not raised: the render
    /// goes on. The context must be loaded and outlive the object.
    ToneMapper(const VelmarContext& context, const Reference<RenderBuffer>& render_buffer_,
               const Reference<UInt8Buffer>& uint8_buffer_, const Reference<FloatBuffer>& float_buffer_);

    const String& getErrorMessage() const { return error_msg; }

  private:
    friend struct ToneMapperLayout;

    InterfaceRef interface;
    Reference<RenderBuffer> render_buffer;
    Reference<UInt8Buffer> uint8_buffer;
    Reference<FloatBuffer> float_buffer;
    String error_msg;
};

static_assert(sizeof(ToneMapper) == 88);

} // namespace Velmar
