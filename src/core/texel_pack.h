// Packing of decoded 32-bit BGRA pixels into the renderer's 16-bit texels (BGRA 5551: alpha in
// bit 15, red 10-14, green 5-9, blue 0-4). Every image decoder of every host ends here, so the
// same picture gives the same texels whichever decoder read it.
#pragma once

#include <stdint.h>

// Rules, per pixel at column x, row y of the image:
// - alpha: the texel is opaque (bit 15) unless the pixel's alpha is 0 (an alpha threshold of 0);
// - colour without dithering: each 8-bit channel keeps its top five bits (c >> 3);
// - colour with ordered 4x4 dithering: the Bayer threshold b(x & 3, y & 3) in 0..15 is added in
//   sixteenths of a 5-bit step before truncating, min(31, (2c + b) >> 4), so a channel that is an
//   exact 5-bit level stays flat and one halfway between two levels takes each on half the pixels.
uint16_t pack_texel(uint8_t blue, uint8_t green, uint8_t red, uint8_t alpha, uint32_t x, uint32_t y, int dither);

// Packs `height` rows of `width` pixels (B, G, R, A bytes); strides are in bytes (texel_stride even).
void pack_bgra_to_5551(const uint8_t* pixels, uint32_t pixel_stride, uint16_t* texels, uint32_t texel_stride,
                       uint32_t width, uint32_t height, int dither);
