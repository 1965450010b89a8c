#include "hosts/input_record.h"

#include "app/version.h"
#include "core/key_codes.h"
#include "core/settings.h"
#include "core/text.h"
#include "hosts/input.h"

input_recording recording;

void input_record_line(char* line, size_t capacity, int32_t tick, const script_event& event)
{
    const script_event_form& form = script_event_forms[event.kind];
    char values[48];
    if (event.kind == SCRIPT_KEY_DOWN || event.kind == SCRIPT_KEY_UP)
        script_key_name(static_cast<uint32_t>(event.a), values, sizeof values);
    else if (event.kind == SCRIPT_TIME) // 17 digits read back as the same double: the replay's clock is the live one
        string_printf(values, sizeof values, "%.17g", event.seconds);
    else if (form.values == 2)
        string_printf(values, sizeof values, "%d %d", event.a, event.b);
    else
        string_printf(values, sizeof values, "%d", event.a);
    if (form.values == 0)
        string_printf(line, capacity, "%d %s\n", tick, form.word);
    else
        string_printf(line, capacity, "%d %s %s\n", tick, form.word, values);
}

// Each line reaches the file at once, so that a crash leaves everything up to it.
static void write_line(const script_event& event)
{
    if (!recording.file)
        return;
    char line[96];
    input_record_line(line, sizeof line, recording.tick, event);
    if (fputs(line, recording.file) < 0 || fflush(recording.file) != 0)
        recording.failed = 1;
}

void input_record_start(FILE* file)
{
    recording = input_recording{file, 0, 0, {}};
    fprintf(file,
            "# gloamhold %s: recorded play, replayed by gloamhold-headless --script with the same settings\n"
            "# FPS=%d UPS=%d SCREEN_RESOLUTION=%dx%d SCREEN_SCALE=%g MOUSE_SENSITIVITY_X=%g "
            "MOUSE_SENSITIVITY_Y=%g\n",
            GAME_VERSION, FPS, UPS, SCREEN_RESOLUTION.width, SCREEN_RESOLUTION.height,
            static_cast<double>(SCREEN_SCALE), static_cast<double>(MOUSE_SENSITIVITY_X),
            static_cast<double>(MOUSE_SENSITIVITY_Y));
    if (fflush(file) != 0)
        recording.failed = 1;
    input_listener = input_record_event;
}

static int is_mouse_button(int32_t code)
{
    return code == KEYCODE_LBUTTON || code == KEYCODE_RBUTTON || code == KEYCODE_MBUTTON;
}

// A replay tells a repeat from a new press by its virtual keyboard. A key whose release the window
// never saw (it went up in another window) is still down there, and its next press would be taken
// for a repeat and ignored; so the press is written after an "up", which leaves the key pressed as
// the live game has it.
static void keep_presses_new(const script_event& event)
{
    uint32_t code = static_cast<uint32_t>(event.a) & 0xFF;
    if (event.kind == SCRIPT_KEY_UP) {
        recording.held[code] = 0;
        return;
    }
    if (event.kind != SCRIPT_KEY_DOWN || is_mouse_button(event.a))
        return;
    int repeat = recording.held[code];
    recording.held[code] = 1;
    int system = input_key_is_system(code, recording.held[KEYCODE_ALT], recording.held[KEYCODE_CTRL]);
    if (repeat && !system) // system keys are pressed again by every repeat anyway
        write_line(script_event{recording.tick, SCRIPT_KEY_UP, event.a, 0, 0.0});
}

void input_record_event(const script_event& event)
{
    keep_presses_new(event);
    write_line(event);
}

void input_record_update_ran()
{
    recording.tick += 1;
}

void input_record_pass(double now)
{
    script_event pass = {recording.tick, SCRIPT_TIME, 0, 0, now};
    write_line(pass);
}

int input_record_finish()
{
    if (!recording.file)
        return 1;
    write_line(script_event{recording.tick, SCRIPT_QUIT, 0, 0, 0.0});
    input_listener = nullptr;
    if (fclose(recording.file) != 0)
        recording.failed = 1;
    recording.file = nullptr;
    return !recording.failed;
}
