// The game's line-oriented data files (models, collision trees, animations) read the way the game
// reads them, through its own buffered reader, while counting physical lines, so that a problem
// names the line where the file breaks. Also reported here: lines the game would cut, and a blank
// line with a bare line feed, after which the game reads nothing more.
#pragma once

#include <stdint.h>

#include <string>

#include "assets/text_file.h"
#include "core/file_reader.h"

struct data_lines {
    std::string path;     // as the game opens it
    file_reader reader;
    char line[TEXT_FILE_LINE_CAPACITY];
    int32_t number;       // the physical line that `line` comes from
    bool continues;       // the last line was cut at the capacity: the next one is its rest
    bool stopped;         // reading has ended, at the end of the file or at a blank line
    bool stopped_early;   // that blank line had more of the file after it
};

// 0 when the file cannot be opened.
int data_lines_open(data_lines* file, const std::string& path);
void data_lines_close(data_lines* file);

// Opens the file and hands it to `read`, which says whether the game's rules let it load; false,
// reported, when it cannot be opened.
bool read_data_file(const std::string& path, bool (*read)(data_lines* file));

// The next line as the game's line reader gives it; 0 when the game would stop reading.
int data_lines_next(data_lines* file);
// The next line that is neither empty nor a "#" comment; 0 at the end.
int data_lines_next_content(data_lines* file);

// "the file ends before <what>", unless a blank line already explained the early end.
void report_ended_before(const data_lines* file, const std::string& what);

// The next content line as the header "<keyword><count>"; 0, reported, when it is not one.
int read_header(data_lines* file, const char* keyword, int32_t* count);

// The next content line (or, with `strict`, the very next line) converted with `format`, which must
// convert `wanted` values; 0, reported as a problem with `what`, when it does not.
int scan_data_line(data_lines* file, bool strict, const std::string& what, int wanted, const char* format, ...)
#if defined(__GNUC__)
    __attribute__((format(scanf, 5, 6)))
#endif
    ;
