#include "assets/texture.h"
#include "core/settings.h"
#include "fuzz_input_file.h"

// Image bytes through the platform's decoder and the texture loader, with and without dithering.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    TEXTURE_DITHERING = static_cast<int32_t>(size & 1);
    texture record = {};
    if (texture_load_file(&record, fuzz_input_file(data, size)))
        texture_free(&record);
    return 0;
}
