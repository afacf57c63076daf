#include "utils/OutStream.h"

void OutStream::writeString(const std::string& s) {
    writeUInt32(static_cast<std::uint32_t>(s.size()));
    if (!s.empty()) writeData(s.data(), s.size());
}
