// Files for the Windows game, through the Win32 file calls.
#include "platform/platform.h"

#include <windows.h>

platform_file platform_file_open(const char* path)
{
    HANDLE handle = CreateFileA(path, GENERIC_READ, FILE_SHARE_READ, NULL, OPEN_EXISTING,
                                FILE_ATTRIBUTE_NORMAL, NULL);
    if (handle == INVALID_HANDLE_VALUE)
        return nullptr;
    return reinterpret_cast<platform_file>(handle);
}

int platform_file_read(platform_file file, void* destination, uint32_t bytes, uint32_t* bytes_read)
{
    DWORD got = 0;
    if (!ReadFile(reinterpret_cast<HANDLE>(file), destination, bytes, &got, NULL))
        return 0;
    *bytes_read = got;
    return 1;
}

int platform_file_size(platform_file file, uint32_t* size)
{
    DWORD bytes = GetFileSize(reinterpret_cast<HANDLE>(file), NULL);
    if (bytes == INVALID_FILE_SIZE)
        return 0;
    *size = bytes;
    return 1;
}

void platform_file_close(platform_file file)
{
    if (file)
        CloseHandle(reinterpret_cast<HANDLE>(file));
}
