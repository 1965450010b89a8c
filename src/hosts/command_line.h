// What the hosts' command lines share: the outcome of parsing, and how a mistake is put into words
// ("ARGUMENT: what is wrong"), so that every program reports its mistakes alike before it starts.
#pragma once

#include <stddef.h>
#include <stdio.h>

enum command_line_result {
    COMMAND_LINE_OK,
    COMMAND_LINE_HELP,    // --help or -h: print the usage and stop
    COMMAND_LINE_VERSION, // --version: print the version and stop
    COMMAND_LINE_BAD,     // the error text says which argument and why
};

// Writes "ARGUMENT: WHAT" into `error` and returns COMMAND_LINE_BAD.
command_line_result command_line_fail(char* error, size_t capacity, const char* what, const char* argument);

// The result of an option that stops the program at once (--help, -h, --version), else
// COMMAND_LINE_OK.
command_line_result command_line_stop_option(const char* option);

// Takes a value that may be given only once: 0 when `slot` already holds one.
int command_line_take_once(const char** slot, const char* value);

// Prints the version line, "PROGRAM VERSION", on standard output.
void command_line_print_version(const char* program);

// `path` joined to the working directory when it is relative, on the heap (the caller frees it),
// so that an output keeps meaning what it meant where the command was given whatever -C does;
// null for a null path or when the working directory cannot be read.
char* command_line_absolute_path(const char* path);

// Opens an output file for writing, or says on standard error why it cannot be, as
// "PROGRAM: OPTION PATH: reason", and returns null.
FILE* command_line_open_output(const char* program, const char* option, const char* path);
