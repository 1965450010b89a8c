// A small colour and depth buffer installed as the renderer's surfaces for the length of a test,
// with the colour tables built and the pixel pipeline's switches off; and textures made by hand.
#pragma once

#include <stddef.h>
#include <stdint.h>

#include <vector>

#include "assets/texture.h"
#include "support/saved_globals.h"

struct test_frame {
    std::vector<uint16_t> colour;
    std::vector<float> depth;
    std::vector<uint16_t> ranks; // depth_ranks

    test_frame(int32_t width, int32_t height, uint16_t background = 0);
    // The surfaces and switches go back to what they were when the frame goes.
    test_frame(const test_frame&) = delete;
    test_frame& operator=(const test_frame&) = delete;

    uint16_t pixel(int32_t x, int32_t y) const;
    float depth_at(int32_t x, int32_t y) const;
    // How many pixels differ from the background.
    int32_t drawn() const;
    // Which pixels differ from the background, row by row.
    std::vector<bool> mask() const;

private:
    int32_t width_;
    uint16_t background_;
    saved_globals saved_;
};

struct test_texture {
    std::vector<uint16_t> texels;
    texture record;

    test_texture(int32_t width, int32_t height, uint16_t fill);
    test_texture(const test_texture&) = delete;
    test_texture& operator=(const test_texture&) = delete;

    void set(int32_t x, int32_t y, uint16_t texel);
};
