// Files for the native and headless hosts, over POSIX descriptors.
#include "platform/platform.h"

#include <errno.h>
#include <fcntl.h>
#include <stdint.h>
#include <sys/stat.h>
#include <unistd.h>

// The handle is the descriptor plus one, so that descriptor 0 is not the null handle.
static platform_file handle_from_descriptor(int descriptor)
{
    return reinterpret_cast<platform_file>(static_cast<intptr_t>(descriptor) + 1);
}

static int descriptor_of(platform_file file)
{
    return static_cast<int>(reinterpret_cast<intptr_t>(file) - 1);
}

platform_file platform_file_open(const char* path)
{
    int descriptor = open(path, O_RDONLY | O_CLOEXEC);
    if (descriptor < 0)
        return nullptr;
    // Windows refuses to open a directory as a file; do the same here.
    struct stat info;
    if (fstat(descriptor, &info) != 0 || S_ISDIR(info.st_mode)) {
        close(descriptor);
        return nullptr;
    }
    return handle_from_descriptor(descriptor);
}

int platform_file_read(platform_file file, void* destination, uint32_t bytes, uint32_t* bytes_read)
{
    ssize_t got;
    do {
        got = read(descriptor_of(file), destination, bytes);
    } while (got < 0 && errno == EINTR);
    if (got < 0)
        return 0;
    *bytes_read = static_cast<uint32_t>(got);
    return 1;
}

int platform_file_size(platform_file file, uint32_t* size)
{
    struct stat info;
    if (fstat(descriptor_of(file), &info) != 0 || info.st_size > INT64_C(0xFFFFFFFE))
        return 0;
    *size = static_cast<uint32_t>(info.st_size);
    return 1;
}

void platform_file_close(platform_file file)
{
    if (file)
        close(descriptor_of(file));
}
