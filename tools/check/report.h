// What the checker finds, one line per problem: "<path>[:<line>]: <message>", printed as found.
// Paths are the game's own ("gloamhold_data/..."), shown under the name the user gave the
// data directory, so that an editor can jump to them.
#pragma once

#include <stdint.h>

#include <string>

// The data directory as the user named it, shown in place of the game's "gloamhold_data".
void report_show_data_root_as(const std::string& shown_root);
std::string shown_path(const std::string& game_path);

// Prints one problem; `line` 0 when it has none.
void report_problem(const std::string& game_path, int32_t line, const char* format, ...)
#if defined(__GNUC__)
    __attribute__((format(printf, 3, 4)))
#endif
    ;

int32_t problem_count();

// printf into a string, for messages put together in steps.
std::string text_of(const char* format, ...)
#if defined(__GNUC__)
    __attribute__((format(printf, 1, 2)))
#endif
    ;

// Where the data names something: the file and line of the reference (line 0: none; an empty
// path: nothing names it).
struct data_reference {
    std::string path;
    int32_t line;
};

// A problem of a reference: shown at the reference, or at `path` itself when nothing names it.
void report_at_reference(const data_reference& from, const std::string& path, const std::string& message);
