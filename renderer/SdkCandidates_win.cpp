#include "renderer/SdkCandidates.h"

namespace Velmar {

const std::array<std::string_view, 2> sdk_candidates{"velmar_sdk.dll", "velmar_rt_sdk.dll"};

} // namespace Velmar
