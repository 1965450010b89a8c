#include "hosts/command_line.h"

#include <stdio.h>
#include <string.h>

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
