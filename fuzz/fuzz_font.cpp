#include "fuzz_input_file.h"
#include "platform/platform.h"
#include "render/frame.h"
#include "ui/font.h"

// Whatever a font file claims, loading it and drawing with it must stay inside the buffers.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static uint16_t pixels[64 * 32];
    font face;
    if (!font_load(&face, fuzz_input_file(data, size)))
        return 0;
    color_buffer = pixels;
    frame_width = 64;
    frame_height = 32;
    draw_text_wrapped(-3, -2, 40, "Hello, \xD0\x9F\xD1\x80\xD0\xB8\xD0\xB2\xD0\xB5\xD1\x82 world\n\xD1\x91\t!", -1, &face,
                      static_cast<int32_t>(face.line_height), 0xFFFF);
    platform_heap_free(face.bitmaps);
    return 0;
}
