#include "support/test_frame.h"

#include "core/settings.h"
#include "render/colour_tables.h"
#include "render/frame.h"

test_frame::test_frame(int32_t width, int32_t height, uint16_t background)
    : colour(static_cast<size_t>(width * height), background), depth(static_cast<size_t>(width * height), 0.0f),
      ranks(static_cast<size_t>(width * height), 0),
      width_(width), background_(background)
{
    saved_.keep_all(&color_buffer, &depth_buffer, &depth_ranks, &frame_width, &frame_height, &TEXTURE_INTERPOLATION,
                    &LIGHT_DITHERING);
    color_buffer = colour.data();
    depth_buffer = depth.data();
    depth_ranks = ranks.data();
    frame_width = width;
    frame_height = height;
    TEXTURE_INTERPOLATION = 0;
    LIGHT_DITHERING = 0;
    build_colour_tables();
}

uint16_t test_frame::pixel(int32_t x, int32_t y) const
{
    return colour[static_cast<size_t>(y * width_ + x)];
}

float test_frame::depth_at(int32_t x, int32_t y) const
{
    return depth[static_cast<size_t>(y * width_ + x)];
}

int32_t test_frame::drawn() const
{
    int32_t count = 0;
    for (uint16_t p : colour)
        count += p != background_;
    return count;
}

std::vector<bool> test_frame::mask() const
{
    std::vector<bool> drawn_pixels;
    for (uint16_t p : colour)
        drawn_pixels.push_back(p != background_);
    return drawn_pixels;
}

test_texture::test_texture(int32_t width, int32_t height, uint16_t fill)
    : texels(static_cast<size_t>(width * height) + 1, fill) // and the spare texel every texture has
{
    int32_t shift = 0;
    while ((1 << shift) < width)
        ++shift;
    record = {};
    record.width = width;
    record.height = height;
    record.texels = texels.data();
    record.width_f = static_cast<float>(width);
    record.height_f = static_cast<float>(height);
    record.width_mask = width - 1;
    record.height_mask = height - 1;
    record.row_shift = shift;
}

void test_texture::set(int32_t x, int32_t y, uint16_t texel)
{
    texels[static_cast<size_t>((y << record.row_shift) | x)] = texel;
}
