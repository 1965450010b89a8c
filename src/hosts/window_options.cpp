#include "hosts/window_options.h"

#include <errno.h>
#include <stdio.h>
#include <string.h>
#include <unistd.h>

const char* const WINDOW_USAGE = "usage: gloamhold [-C DIR] [--version]\n";

command_line_result parse_window_arguments(int argc, const char* const* argv, window_options* options, char* error,
                                           size_t error_capacity)
{
    memset(options, 0, sizeof *options);
    error[0] = '\0';
    for (int i = 1; i < argc; ++i) {
        const char* option = argv[i];
        command_line_result stop = command_line_stop_option(option);
        if (stop != COMMAND_LINE_OK)
            return stop;
        if (strcmp(option, "-C") != 0)
            return command_line_fail(error, error_capacity, option[0] == '-' ? "unknown option" : "unexpected argument",
                                     option);
        if (i + 1 >= argc || argv[i + 1][0] == '\0')
            return command_line_fail(error, error_capacity, "needs a value", option);
        if (!command_line_take_once(&options->directory, argv[++i]))
            return command_line_fail(error, error_capacity, "given twice", option);
    }
    return COMMAND_LINE_OK;
}

int window_command_line(int argc, const char* const* argv, window_options* options)
{
    char error[300];
    switch (parse_window_arguments(argc, argv, options, error, sizeof error)) {
    case COMMAND_LINE_HELP:
        fputs(WINDOW_USAGE, stdout);
        return 0;
    case COMMAND_LINE_VERSION:
        command_line_print_version("gloamhold");
        return 0;
    case COMMAND_LINE_BAD:
        fprintf(stderr, "gloamhold: %s\n%s", error, WINDOW_USAGE);
        return 2;
    case COMMAND_LINE_OK:
        break;
    }
    if (options->directory && chdir(options->directory) != 0) {
        fprintf(stderr, "gloamhold: -C %s: %s\n", options->directory, strerror(errno));
        return 2;
    }
    return WINDOW_GO_ON;
}
