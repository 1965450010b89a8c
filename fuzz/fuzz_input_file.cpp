#include "fuzz_input_file.h"

#include <stdio.h>
#include <unistd.h>

const char* fuzz_input_file(const uint8_t* data, size_t size)
{
    static char path[64];
    if (!path[0])
        snprintf(path, sizeof path, "/tmp/gloamhold_fuzz_%d", static_cast<int>(getpid()));
    FILE* file = fopen(path, "wb");
    if (file) {
        fwrite(data, 1, size, file);
        fclose(file);
    }
    return path;
}
