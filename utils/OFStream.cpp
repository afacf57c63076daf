#include "utils/OFStream.h"

#include "utils/FileUtils.h"

#include <locale>

namespace Velmar {

namespace {

constexpr std::streamsize buffer_size = 64 * 1024;

} // namespace

OFStream::OFStream(const String& path) : buffer(new char[buffer_size]) {
    // Both take effect only before opening.
    file.rdbuf()->pubsetbuf(buffer.get(), buffer_size);
    file.imbue(std::locale::classic());
    FileUtils::openOutputFile(file, path.view(), true);
}

void OFStream::writeString(const String& text) {
    if (text.empty() || !file.good()) return;
    const auto length = static_cast<std::streamsize>(text.size());
    if (file.rdbuf()->sputn(text.data(), length) != length) file.setstate(std::ios_base::badbit);
}

void OFStream::writeDouble(double value) {
    file << value;
}

void OFStream::flush() {
    file.flush();
}

} // namespace Velmar
