#include "assets/sound.h"
#include "fuzz_input_file.h"
#include "platform/platform.h"

// Sound bytes through the platform's decoder and the sound loader.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    sound record = {};
    sound_load_file(&record, fuzz_input_file(data, size));
    platform_heap_free(record.data);
    return 0;
}
