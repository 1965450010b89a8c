#include "hosts/input_script.h"

// The headless host's script text, parsed whole as the host parses the file it read.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    input_script script = {};
    int32_t line = 0;
    char message[200];
    if (parse_input_script(reinterpret_cast<const char*>(data), size, &script, &line, message, sizeof message))
        input_script_last_tick(&script);
    input_script_free(&script);
    return 0;
}
