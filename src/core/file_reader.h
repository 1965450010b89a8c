// The buffered reader through which every text and binary data file is read, and the line rules
// that all data formats share.
#pragma once

#include <stdint.h>

#include "platform/platform.h"

struct file_reader {
    platform_file handle; // opened and closed by the caller
    int32_t position;     // next unread byte in buffer; -1 before the first fill
    int32_t size;         // bytes the last fill delivered (the capacity before any fill)
    char* buffer;
    int32_t lines_ended; // line feeds that reader_read_line has consumed
    int32_t line;        // the line (from 1) that reader_read_line read last, for reports
};

// 1, or 0 when the buffer cannot be allocated.
int reader_open(file_reader* reader, platform_file handle, int32_t capacity);

// 1 when all element_size * element_count bytes were copied; 0 when the file ran out or failed first.
int reader_read(file_reader* reader, void* destination, int32_t element_size, int32_t element_count);

// Reads one line into `line` (always NUL-terminated) and returns the number of characters stored,
// counted before a trailing carriage return is dropped. A line feed ends the line and is not
// stored; a line longer than capacity - 1 is cut there and its rest comes as the next line.
// 0 means the end of the file, or an empty line ending in a bare line feed. The rest of a cut
// line keeps the cut line's number.
int32_t reader_read_line(file_reader* reader, char* line, int32_t capacity);

// Frees the buffer; the caller closes the handle.
void reader_close(file_reader* reader);

// The usual way in: opens the file for reading and a reader with a buffer of `capacity` bytes
// over it; 0, with nothing left open, when either fails.
int reader_open_file(file_reader* reader, const char* path, int32_t capacity);
// Frees the buffer and closes the file that reader_open_file opened.
void reader_close_file(file_reader* reader);

// The next line that is neither empty nor a "#" comment (only "#" in the first column counts);
// 0 at the end.
int read_content_line(file_reader* reader, char* line, int32_t capacity);

// The next content line must begin with `keyword` (case-sensitive) directly followed by an integer.
int read_count_line(file_reader* reader, char* line, int32_t capacity, const char* keyword, int32_t* count);
