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

static int is_absolute(const char* path)
{
    if (path[0] == '/' || path[0] == '\\')
        return 1;
    return ((path[0] >= 'A' && path[0] <= 'Z') || (path[0] >= 'a' && path[0] <= 'z')) && path[1] == ':';
}

// `*path` joined to the working directory; 0 when that cannot be done.
static int make_absolute(const char** path, char** owned)
{
    if (!*path || is_absolute(*path))
        return 1;
    char here[4096];
    if (!getcwd(here, sizeof here))
        return 0;
    size_t length = strlen(here) + 1 + strlen(*path) + 1;
    *owned = static_cast<char*>(malloc(length));
    if (!*owned)
        return 0;
    snprintf(*owned, length, "%s/%s", here, *path);
    *path = *owned;
    return 1;
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
        if (!make_absolute(paths[i], &options->resolved[i])) {
            fprintf(stderr, "gloamhold: %s: cannot be made absolute\n", *paths[i]);
            return 2;
        }
    }
    if (options->directory && chdir(options->directory) != 0) {
        fprintf(stderr, "gloamhold: -C %s: %s\n", options->directory, strerror(errno));
        return 2;
    }
    return WINDOW_GO_ON;
}
