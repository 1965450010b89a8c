#include "fuzz_input_file.h"

#include <stdio.h>
#include <stdlib.h>
#include <unistd.h>

static char path[64];

static void remove_input_file()
{
    remove(path);
}

const char* fuzz_input_file(const uint8_t* data, size_t size)
{
    if (!path[0]) {
        snprintf(path, sizeof path, "/tmp/gloamhold_fuzz_%d", static_cast<int>(getpid()));
        atexit(remove_input_file);
    }
    FILE* file = fopen(path, "wb");
    if (file) {
        fwrite(data, 1, size, file);
        fclose(file);
    }
    return path;
}
