#pragma once

#include <cstdint>
#include <string>
#include <vector>

/// An image in shades of grey: a byte for each pixel, as screens take it, row after row from the top.
struct GreyImage {
    std::int32_t width = 0;
    std::int32_t height = 0;
    std::vector<std::uint8_t> pixels;
};

/// Writes a PNG file and returns its size. Throws `Failure`.
std::uint64_t writePng(const GreyImage& image, const std::string& path);
