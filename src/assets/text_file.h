// The line-oriented data files (models, collision trees, animations) are all read the same way:
// an existing file opened for shared reading, through the buffered reader with a 4096-byte
// buffer, in lines of up to 200 characters. Every failure is reported (core/diagnostics.h) at the
// line where the file breaks.
#pragma once

#include <stdint.h>

#include "core/file_reader.h"

enum {
    TEXT_FILE_BUFFER = 4096,
    TEXT_FILE_LINE_CAPACITY = 200,
};

struct text_file {
    file_reader reader;
    const char* path;                   // as opened, for reports
    char line[TEXT_FILE_LINE_CAPACITY]; // the line last read
    int have_line;                      // the last read gave a line (else the reader stopped)
    uint32_t size;                      // the file's size in bytes, which bounds every count in it
};

// 1 with the file open and its reader ready; 0 (nothing left open, nothing reported: whoever
// named the file says it is missing) when either fails.
int text_file_open(text_file* file, const char* path);
void text_file_close(text_file* file);

// The header line "<keyword><count>" as the next content line; the count must not be negative, nor
// more than the file can hold (text_file_holds). A failure is reported.
int text_file_count(text_file* file, const char* keyword, int32_t* count);
// 1 when the file is large enough for `things` entries that take at least a line each (a character
// and a line feed, the last perhaps without it), so that a count is checked before anything is
// sized by it; else the line last read is reported as holding too many `what`.
int text_file_holds(text_file* file, int64_t things, const char* what);
// The next content line, which must convert exactly `wanted` values with `format`. Not reported:
// the caller says what it expected with text_file_expected.
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

// After a scan failed: reports "expected <what>, found <the line>" at the line, or where the file
// stopped before it. Returns 0, for the caller to return.
int text_file_expected(text_file* file, const char* what_format, ...)
#if defined(__GNUC__)
    __attribute__((format(printf, 2, 3)))
#endif
    ;
// Reports a problem of the line last read. Returns 0.
int text_file_report(text_file* file, const char* format, ...)
#if defined(__GNUC__)
    __attribute__((format(printf, 2, 3)))
#endif
    ;
