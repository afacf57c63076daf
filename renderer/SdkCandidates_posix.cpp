#include "renderer/SdkCandidates.h"

namespace Velmar {

const std::array<std::string_view, 2> sdk_candidates{"velmar_sdk.so", "velmar_rt_sdk.so"};

} // namespace Velmar
