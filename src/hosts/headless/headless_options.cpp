#include "hosts/headless/headless_options.h"

#include <errno.h>
#include <math.h>
#include <stdlib.h>
#include <string.h>

#include "app/game.h"
#include "core/numbers.h"
#include "core/text.h"
#include "platform/platform.h"

const char* const HEADLESS_USAGE =
    "usage: gloamhold-headless [-C DIR] [--ticks N] [--script FILE] [--place X,Y,Z,YAW,PITCH]\n"
    "                          [--shot TICK:FILE.png]... [--state FILE.json] [--audio FILE.wav] [--version]\n";

// A whole decimal number from 0 to INT32_MAX, and nothing after it.
static int parse_count(const char* text, int32_t* out)
{
    if (*text < '0' || *text > '9')
        return 0;
    char* end = nullptr;
    errno = 0;
    long long value = strtoll(text, &end, 10);
    if (*end != '\0' || errno != 0 || value > INT32_MAX)
        return 0;
    *out = static_cast<int32_t>(value);
    return 1;
}

// Five finite decimal numbers separated by commas.
static int parse_place(const char* text, float place[5])
{
    const char* at = text;
    for (int i = 0; i < 5; ++i) {
        char* end = nullptr;
        errno = 0;
        float value = strtof(at, &end);
        if (end == at || errno != 0 || !isfinite(value))
            return 0;
        place[i] = value;
        if (i < 4) {
            if (*end != ',')
                return 0;
            at = end + 1;
        } else if (*end != '\0') {
            return 0;
        }
    }
    place[3] *= DEGREES_TO_RADIANS;
    place[4] *= DEGREES_TO_RADIANS;
    return 1;
}

static int parse_shot(const char* text, shot_request* shot)
{
    const char* colon = strchr(text, ':');
    if (!colon || colon[1] == '\0')
        return 0;
    char tick[16];
    size_t length = static_cast<size_t>(colon - text);
    if (length == 0 || length >= sizeof tick)
        return 0;
    memcpy(tick, text, length);
    tick[length] = '\0';
    if (!parse_count(tick, &shot->tick))
        return 0;
    shot->path = colon + 1;
    return 1;
}

command_line_result parse_headless_arguments(int argc, const char* const* argv, headless_options* options,
                                               char* error, size_t error_capacity)
{
    memset(options, 0, sizeof *options);
    error[0] = '\0';
    options->shots = static_cast<shot_request*>(platform_heap_alloc(sizeof(shot_request) * (argc > 0 ? argc : 1)));
    if (!options->shots)
        return command_line_fail(error, error_capacity, "out of memory", "arguments");
    for (int i = 1; i < argc; ++i) {
        const char* option = argv[i];
        command_line_result stop = command_line_stop_option(option);
        if (stop != COMMAND_LINE_OK)
            return stop;
        int takes_value = strcmp(option, "-C") == 0 || strcmp(option, "--ticks") == 0 ||
                          strcmp(option, "--script") == 0 || strcmp(option, "--place") == 0 ||
                          strcmp(option, "--shot") == 0 || strcmp(option, "--state") == 0 ||
                          strcmp(option, "--audio") == 0;
        if (!takes_value)
            return command_line_fail(error, error_capacity, option[0] == '-' ? "unknown option" : "unexpected argument", option);
        if (i + 1 >= argc)
            return command_line_fail(error, error_capacity, "needs a value", option);
        const char* value = argv[++i];
        if (value[0] == '\0')
            return command_line_fail(error, error_capacity, "needs a value", option);
        if (strcmp(option, "--ticks") == 0) {
            if (options->ticks_given)
                return command_line_fail(error, error_capacity, "given twice", option);
            if (!parse_count(value, &options->ticks))
                return command_line_fail(error, error_capacity, "expects a whole number of updates from 0", option);
            options->ticks_given = 1;
        } else if (strcmp(option, "--place") == 0) {
            if (options->place_given)
                return command_line_fail(error, error_capacity, "given twice", option);
            if (!parse_place(value, options->place))
                return command_line_fail(error, error_capacity, "expects X,Y,Z,YAW,PITCH (five numbers, angles in degrees)",
                            option);
            options->place_given = 1;
        } else if (strcmp(option, "--shot") == 0) {
            if (!parse_shot(value, &options->shots[options->shot_count]))
                return command_line_fail(error, error_capacity, "expects TICK:FILE.png", option);
            options->shot_count += 1;
        } else {
            const char** slot = strcmp(option, "-C") == 0          ? &options->directory
                                : strcmp(option, "--script") == 0 ? &options->script_path
                                : strcmp(option, "--state") == 0  ? &options->state_path
                                                                  : &options->audio_path;
            if (!command_line_take_once(slot, value))
                return command_line_fail(error, error_capacity, "given twice", option);
        }
    }
    for (int32_t i = 0; options->ticks_given && i < options->shot_count; ++i) {
        if (options->shots[i].tick < options->ticks)
            continue;
        if (options->ticks == 0)
            string_printf(error, error_capacity, "--shot: tick %d is never reached: --ticks 0 runs no update",
                          options->shots[i].tick);
        else
            string_printf(error, error_capacity, "--shot: tick %d is never reached: --ticks %d runs updates 0 to %d",
                          options->shots[i].tick, options->ticks, options->ticks - 1);
        return COMMAND_LINE_BAD;
    }
    return COMMAND_LINE_OK;
}

void headless_options_free(headless_options* options)
{
    platform_heap_free(options->shots);
    options->shots = nullptr;
    options->shot_count = 0;
}

int32_t headless_ticks_to_run(const headless_options* options, int32_t last_script_tick)
{
    if (options->ticks_given)
        return options->ticks;
    int64_t ticks = static_cast<int64_t>(last_script_tick) + 1;
    for (int32_t i = 0; i < options->shot_count; ++i)
        if (options->shots[i].tick + static_cast<int64_t>(1) > ticks)
            ticks = options->shots[i].tick + static_cast<int64_t>(1);
    return ticks > INT32_MAX ? INT32_MAX : static_cast<int32_t>(ticks);
}
