// Images through libpng: every PNG colour type and depth is expanded to 8-bit BGRA (palettes and
// transparency chunks expanded, grey made RGB, 16-bit channels cut to their high byte, interlaced
// passes combined), then packed into texels by the game's own 5551 packer.
#include <png.h>
#include <setjmp.h>
#include <stdio.h>

#include "core/texel_pack.h"
#include "platform/platform.h"

struct platform_image_handle {
    FILE* file;
    png_structp png;
    png_infop info;
    uint32_t width;
    uint32_t height;
    int dither;
};

// libpng reports errors by jumping back to the setjmp of the call in progress; nothing is printed.
static void on_png_error(png_structp png, png_const_charp)
{
    png_longjmp(png, 1);
}

static void on_png_warning(png_structp, png_const_charp) {}

static int read_header(platform_image_handle* image)
{
    png_structp png = image->png;
    png_infop info = image->info;
    if (setjmp(png_jmpbuf(png)))
        return 0;
    png_init_io(png, image->file);
    png_read_info(png, info);
    png_set_expand(png);
    png_set_strip_16(png);
    png_set_gray_to_rgb(png);
    png_set_bgr(png);
    png_set_filler(png, 0xFF, PNG_FILLER_AFTER);
    png_set_interlace_handling(png);
    png_read_update_info(png, info);
    image->width = png_get_image_width(png, info);
    image->height = png_get_image_height(png, info);
    return png_get_rowbytes(png, info) == static_cast<size_t>(image->width) * 4;
}

static int read_rows(platform_image_handle* image, png_bytep* rows)
{
    if (setjmp(png_jmpbuf(image->png)))
        return 0;
    png_read_image(image->png, rows);
    return 1;
}

platform_image platform_image_open(const char* path, int dither)
{
    platform_image image = static_cast<platform_image>(platform_heap_alloc(sizeof(platform_image_handle)));
    if (!image)
        return nullptr;
    *image = {};
    image->dither = dither;
    image->file = fopen(path, "rb");
    if (image->file) {
        image->png = png_create_read_struct(PNG_LIBPNG_VER_STRING, nullptr, on_png_error, on_png_warning);
        if (image->png)
            image->info = png_create_info_struct(image->png);
    }
    if (!image->info || !read_header(image)) {
        platform_image_close(image);
        return nullptr;
    }
    return image;
}

int platform_image_size(platform_image image, uint32_t* width, uint32_t* height)
{
    *width = image->width;
    *height = image->height;
    return 1;
}

int platform_image_copy(platform_image image, uint16_t* texels, uint32_t stride)
{
    size_t row_bytes = static_cast<size_t>(image->width) * 4;
    png_bytep pixels = static_cast<png_bytep>(platform_heap_alloc(row_bytes * image->height));
    png_bytep* rows = static_cast<png_bytep*>(platform_heap_alloc(sizeof(png_bytep) * image->height));
    int ok = pixels && rows;
    if (ok) {
        for (uint32_t y = 0; y < image->height; ++y)
            rows[y] = pixels + row_bytes * y;
        ok = read_rows(image, rows);
    }
    if (ok)
        pack_bgra_to_5551(pixels, static_cast<uint32_t>(row_bytes), texels, stride, image->width, image->height,
                          image->dither);
    platform_heap_free(rows);
    platform_heap_free(pixels);
    return ok;
}

void platform_image_close(platform_image image)
{
    if (!image)
        return;
    if (image->png)
        png_destroy_read_struct(&image->png, image->info ? &image->info : nullptr, nullptr);
    if (image->file)
        fclose(image->file);
    platform_heap_free(image);
}
