// The line-oriented data files (models, collision trees, animations) are all read the same way:
// an existing file opened for shared reading, through the buffered reader with a 4096-byte
// buffer, in lines of up to 200 characters.
#pragma once

#include "core/file_reader.h"

enum {
    TEXT_FILE_BUFFER = 4096,
    TEXT_FILE_LINE_CAPACITY = 200,
};

struct text_file {
    platform_file handle;
    file_reader reader;
    char line[TEXT_FILE_LINE_CAPACITY]; // the line last read
};

// 1 with the file open and its reader ready; 0 (nothing left open) when either fails.
int text_file_open(text_file* file, const char* path);
void text_file_close(text_file* file);

// The header line "<keyword><count>" as the next content line; the count must not be negative.
int text_file_count(text_file* file, const char* keyword, int32_t* count);
// The next content line, which must convert exactly `wanted` values with `format`.
int text_file_scan(text_file* file, int wanted, const char* format, ...)
#if defined(__GNUC__)
    __attribute__((format(scanf, 3, 4)))
#endif
    ;
// As text_file_scan, but the very next line, as it comes: an empty or "#" line fails.
int text_file_scan_next(text_file* file, int wanted, const char* format, ...)
#if defined(__GNUC__)
    __attribute__((format(scanf, 3, 4)))
#endif
    ;
