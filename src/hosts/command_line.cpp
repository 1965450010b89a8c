#include "hosts/command_line.h"

#include <errno.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

#include "app/version.h"
#include "core/text.h"

command_line_result command_line_fail(char* error, size_t capacity, const char* what, const char* argument)
{
    string_printf(error, capacity, "%s: %s", argument, what);
    return COMMAND_LINE_BAD;
}

command_line_result command_line_stop_option(const char* option)
{
    if (strcmp(option, "--help") == 0 || strcmp(option, "-h") == 0)
        return COMMAND_LINE_HELP;
    if (strcmp(option, "--version") == 0)
        return COMMAND_LINE_VERSION;
    return COMMAND_LINE_OK;
}

int command_line_take_once(const char** slot, const char* value)
{
    if (*slot)
        return 0;
    *slot = value;
    return 1;
}

void command_line_print_version(const char* program)
{
    printf("%s %s\n", program, GAME_VERSION);
    fflush(stdout);
}

static int is_absolute(const char* path)
{
    if (path[0] == '/' || path[0] == '\\')
        return 1;
    return ((path[0] >= 'A' && path[0] <= 'Z') || (path[0] >= 'a' && path[0] <= 'z')) && path[1] == ':';
}

char* command_line_absolute_path(const char* path)
{
    if (!path)
        return nullptr;
    if (is_absolute(path))
        return strdup(path);
    char here[4096];
    if (!getcwd(here, sizeof here))
        return nullptr;
    size_t length = strlen(here) + 1 + strlen(path) + 1;
    char* joined = static_cast<char*>(malloc(length));
    if (joined)
        snprintf(joined, length, "%s/%s", here, path);
    return joined;
}

FILE* command_line_open_output(const char* program, const char* option, const char* path)
{
    FILE* file = fopen(path, "wb");
    if (!file)
        fprintf(stderr, "%s: %s %s: %s\n", program, option, path, strerror(errno));
    return file;
}
