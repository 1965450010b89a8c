#include "hosts/screenshots.h"

#include <stdio.h>

#include "core/text.h"
#include "hosts/frame_png.h"

static const char* const SCREENSHOT_FOLDER = "screenshots";

enum { HIGHEST_SCREENSHOT = 9999 };

int next_screenshot_path(const char* folder, char* path, size_t capacity)
{
    for (int number = 1; number <= HIGHEST_SCREENSHOT; ++number) {
        if (string_printf(path, capacity, "%s/gloamhold-%04d.png", folder, number) != 0)
            return 0;
        FILE* taken = fopen(path, "rb");
        if (!taken)
            return 1;
        fclose(taken);
    }
    return 0;
}

int save_screenshot(const uint16_t* pixels, int32_t width, int32_t height, char* path, size_t capacity)
{
    if (!make_frame_folder(SCREENSHOT_FOLDER) || !next_screenshot_path(SCREENSHOT_FOLDER, path, capacity))
        return 0;
    return write_frame_png(path, pixels, width, height);
}
