#include <string.h>

#include <string>
#include <vector>

#include "hosts/headless/headless_options.h"

// The headless host's command line: the input's zero bytes separate the arguments.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    std::string text(reinterpret_cast<const char*>(data), size);
    std::vector<const char*> argv = {"gloamhold-headless"};
    for (size_t start = 0; start <= text.size();) {
        size_t end = text.find('\0', start);
        if (end == std::string::npos)
            end = text.size();
        argv.push_back(text.c_str() + start);
        start = end + 1;
    }
    headless_options options = {};
    char error[300];
    if (parse_headless_arguments(static_cast<int>(argv.size()), argv.data(), &options, error, sizeof error) ==
        COMMAND_LINE_OK)
        headless_ticks_to_run(&options, static_cast<int32_t>(size) - 1);
    headless_options_free(&options);
    return 0;
}
