// PNG files read back as 8-bit RGB, for tests that look at the frames the game saved.
#pragma once

#include <stdint.h>

#include <string>
#include <vector>

struct rgb_image {
    uint32_t width = 0;
    uint32_t height = 0;
    std::vector<uint8_t> pixels; // rows from the top, three bytes a pixel

    // The red, green and blue bytes of one pixel.
    const uint8_t* pixel(uint32_t x, uint32_t y) const { return &pixels[(static_cast<size_t>(y) * width + x) * 3]; }
};

// Any PNG converted to 8-bit RGB by libpng's simplified API; width 0 and no pixels when libpng
// cannot read it.
rgb_image read_png(const std::string& path);
