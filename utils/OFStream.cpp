#include "utils/OFStream.h"

#include "utils/FileUtils.h"

#include <cstring>
#include <locale>

namespace Velmar {

OFStream::OFStream(const String& path) : buffer(new char[capacity]) {
    // Both take effect only before opening. The file needs no buffer besides ours.
    file.rdbuf()->pubsetbuf(nullptr, 0);
    file.imbue(std::locale::classic());
    FileUtils::openOutputFile(file, path.view(), true);
}

OFStream::~OFStream() {
    writeBuffer();
}

void OFStream::writeString(const String& text) {
    const std::size_t size = text.size();
    if (size > capacity - used) [[unlikely]] {
        writeBuffer();
        if (size > capacity) {
            writeToFile(text.data(), size);
            return;
        }
    }
    // An empty text may have no address.
    if (size != 0) std::memcpy(buffer.get() + used, text.data(), size);
    used += size;
}

void OFStream::writeDouble(double value) {
    writeBuffer();
    file << value;
}

void OFStream::flush() {
    writeBuffer();
    file.flush();
}

void OFStream::writeBuffer() {
    writeToFile(buffer.get(), used);
    used = 0;
}

void OFStream::writeToFile(const char* bytes, std::size_t size) {
    if (size == 0 || !file.good()) return;
    const auto length = static_cast<std::streamsize>(size);
    if (file.rdbuf()->sputn(bytes, length) != length) file.setstate(std::ios_base::badbit);
}

} // namespace Velmar
