#include "core/settings.h"
#include "fuzz_input_file.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    load_settings(fuzz_input_file(data, size));
    return 0;
}
