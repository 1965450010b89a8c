#include "hosts/window_options.h"

#include <errno.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

const char* const WINDOW_USAGE =
    "usage: gloamhold [-C DIR] [--script FILE] [--record FILE] [--state FILE] [--version]\n";

// The option's slot, or null for an option the windowed games do not take.
static const char** value_slot(window_options* options, const char* option)
{
    if (strcmp(option, "-C") == 0)
        return &options->directory;
    if (strcmp(option, "--script") == 0)
        return &options->script_path;
    if (strcmp(option, "--record") == 0)
        return &options->record_path;
    if (strcmp(option, "--state") == 0)
        return &options->state_path;
    return nullptr;
}

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
        const char** slot = value_slot(options, option);
        if (!slot)
            return command_line_fail(error, error_capacity, option[0] == '-' ? "unknown option" : "unexpected argument",
                                     option);
        if (i + 1 >= argc || argv[i + 1][0] == '\0')
            return command_line_fail(error, error_capacity, "needs a value", option);
        if (!command_line_take_once(slot, argv[++i]))
            return command_line_fail(error, error_capacity, "given twice", option);
    }
    return COMMAND_LINE_OK;
}

void window_options_free(window_options* options)
{
    for (char*& owned : options->resolved) {
        free(owned);
        owned = nullptr;
    }
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
    const char** paths[3] = {&options->script_path, &options->record_path, &options->state_path};
    for (int i = 0; i < 3; ++i) {
        if (!*paths[i])
            continue;
        options->resolved[i] = command_line_absolute_path(*paths[i]);
        if (!options->resolved[i]) {
            fprintf(stderr, "gloamhold: %s: cannot be made absolute\n", *paths[i]);
            return 2;
        }
        *paths[i] = options->resolved[i];
    }
    if (options->directory && chdir(options->directory) != 0) {
        fprintf(stderr, "gloamhold: -C %s: %s\n", options->directory, strerror(errno));
        return 2;
    }
    return WINDOW_GO_ON;
}
