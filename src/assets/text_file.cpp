#include "assets/text_file.h"

#include <stdarg.h>
#include <stdio.h>

int text_file_open(text_file* file, const char* path)
{
    file->handle = platform_file_open(path);
    if (!file->handle)
        return 0;
    if (!reader_open(&file->reader, file->handle, TEXT_FILE_BUFFER)) {
        platform_file_close(file->handle);
        return 0;
    }
    file->line[0] = 0;
    return 1;
}

void text_file_close(text_file* file)
{
    reader_close(&file->reader);
    platform_file_close(file->handle);
}

int text_file_count(text_file* file, const char* keyword, int32_t* count)
{
    // A negative count would size nothing sensible: it fails like a malformed one.
    return read_count_line(&file->reader, file->line, TEXT_FILE_LINE_CAPACITY, keyword, count) && *count >= 0;
}

// Converts the line just read (when there was one) with the caller's arguments.
#if defined(__GNUC__)
__attribute__((format(scanf, 4, 0)))
#endif
static int scan_line(int have_line, const char* line, int wanted, const char* format, va_list arguments)
{
    return have_line && vsscanf(line, format, arguments) == wanted;
}

int text_file_scan(text_file* file, int wanted, const char* format, ...)
{
    int have_line = read_content_line(&file->reader, file->line, TEXT_FILE_LINE_CAPACITY);
    va_list arguments;
    va_start(arguments, format);
    int ok = scan_line(have_line, file->line, wanted, format, arguments);
    va_end(arguments);
    return ok;
}

int text_file_scan_next(text_file* file, int wanted, const char* format, ...)
{
    int have_line = reader_read_line(&file->reader, file->line, TEXT_FILE_LINE_CAPACITY) != 0;
    va_list arguments;
    va_start(arguments, format);
    int ok = scan_line(have_line, file->line, wanted, format, arguments);
    va_end(arguments);
    return ok;
}
