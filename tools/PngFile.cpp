#include "tools/PngFile.h"

#include "tools/OutputFile.h"
#include "utils/FileUtils.h"

#include <fstream>

#define STB_IMAGE_WRITE_IMPLEMENTATION
#define STB_IMAGE_WRITE_STATIC
#define STBI_WRITE_NO_STDIO
#include <stb_image_write.h>

std::uint64_t writePng(const GreyImage& image, const std::string& path) {
    OutputFile output(path);
    std::ofstream file;
    if (!FileUtils::openOutputFile(file, output.getPartialPath(), false)) throw Failure(path + ": can't be written");
    const auto append = [](void* context, void* data, int size) {
        static_cast<std::ofstream*>(context)->write(static_cast<const char*>(data), size);
    };
    if (stbi_write_png_to_func(append, &file, image.width, image.height, 1, image.pixels.data(), image.width) == 0)
        throw Failure(path + ": not enough memory for the picture");
    file.close();
    if (!file) throw Failure(path + ": wasn't written whole; is the disk full?");
    return output.commit();
}
