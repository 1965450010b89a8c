#include "hosts/frame_png.h"

#include <png.h>
#include <setjmp.h>
#include <stdio.h>
#include <stdlib.h>
#include <sys/stat.h>

#include "core/frame.h"

// libpng reports failures by jumping back here; everything it allocated is released by the caller.
static int encode(png_structp png, png_infop info, FILE* file, const uint16_t* pixels, int32_t width,
                  int32_t height, png_bytep row)
{
    if (setjmp(png_jmpbuf(png)))
        return 0;
    png_init_io(png, file);
    png_set_IHDR(png, info, static_cast<png_uint_32>(width), static_cast<png_uint_32>(height), 8,
                 PNG_COLOR_TYPE_RGB, PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    png_write_info(png, info);
    for (int32_t y = 0; y < height; ++y) {
        const uint16_t* source = pixels + static_cast<size_t>(y) * width;
        for (int32_t x = 0; x < width; ++x) {
            uint32_t rgb = frame_pixel_rgb888(source[x]);
            row[3 * x] = static_cast<png_byte>(rgb >> 16);
            row[3 * x + 1] = static_cast<png_byte>(rgb >> 8);
            row[3 * x + 2] = static_cast<png_byte>(rgb);
        }
        png_write_row(png, row);
    }
    png_write_end(png, info);
    return 1;
}

int write_frame_png(const char* path, const uint16_t* pixels, int32_t width, int32_t height)
{
    if (!pixels || width <= 0 || height <= 0)
        return 0;
    FILE* file = fopen(path, "wb");
    if (!file)
        return 0;
    png_bytep row = static_cast<png_bytep>(malloc(static_cast<size_t>(width) * 3));
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_infop info = png ? png_create_info_struct(png) : nullptr;
    int written = row && info && encode(png, info, file, pixels, width, height, row);
    png_destroy_write_struct(&png, info ? &info : nullptr);
    free(row);
    if (fclose(file) != 0)
        written = 0;
    return written;
}

int make_frame_folder(const char* path)
{
    struct stat found;
    if (stat(path, &found) == 0)
        return S_ISDIR(found.st_mode);
    return mkdir(path, 0777) == 0;
}
