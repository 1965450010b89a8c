#include "support/png_image.h"

#include <png.h>

rgb_image read_png(const std::string& path)
{
    png_image image = {};
    image.version = PNG_IMAGE_VERSION;
    rgb_image result;
    if (!png_image_begin_read_from_file(&image, path.c_str()))
        return result;
    image.format = PNG_FORMAT_RGB;
    result.width = image.width;
    result.height = image.height;
    result.pixels.resize(PNG_IMAGE_SIZE(image));
    if (!png_image_finish_read(&image, nullptr, result.pixels.data(), 0, nullptr))
        return rgb_image();
    return result;
}
