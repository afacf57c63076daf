#include "kit/Lines.h"

#include "kit/Failures.h"

#include "utils/Lines.h"

#include <string>

namespace Velmar::Kit {

namespace {

struct Receiver {
    VelmarKitLineCallback callback = nullptr;
    void* user = nullptr;
};

Receiver receiver;

void receive(LineStream stream, std::string_view line) {
    if (line.substr(0, 9) == "Failed to") noteFailureLine();
    if (receiver.callback == nullptr) return printToStream(stream, {line});
    receiver.callback(receiver.user, stream == LineStream::error ? 1 : 0, std::string(line).c_str());
}

/// From the loading of the kit on.
[[maybe_unused]] const bool is_receiving = [] {
    setLineSink(receive);
    return true;
}();

} // namespace

void setLineCallback(VelmarKitLineCallback callback, void* user) {
    receiver = {callback, user};
}

} // namespace Velmar::Kit
