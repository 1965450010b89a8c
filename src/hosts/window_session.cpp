#include "hosts/window_session.h"

#include <errno.h>
#include <string.h>

#include "app/game.h"
#include "core/frame.h"
#include "core/key_codes.h"
#include "core/loop_state.h"
#include "core/settings.h"
#include "hosts/command_line.h"
#include "hosts/input.h"
#include "hosts/input_record.h"
#include "hosts/screenshots.h"
#include "hosts/state_file.h"
#include "hosts/window_layout.h"

window_session session;

int window_session_open(const window_options* options)
{
    session = window_session{};
    scripted_input_start(&session.input,
                         window_client_size(SCREEN_RESOLUTION.width, SCREEN_RESOLUTION.height, SCREEN_SCALE));
    if (options->script_path && !load_input_script(options->script_path, "gloamhold", &session.script))
        return 0;
    if (options->state_path) {
        session.state_path = options->state_path;
        session.state = command_line_open_output("gloamhold", "--state", options->state_path);
        if (!session.state)
            return 0;
    }
    if (options->record_path) {
        FILE* record = command_line_open_output("gloamhold", "--record", options->record_path);
        if (!record)
            return 0;
        input_record_start(record);
    }
    return 1;
}

// The script's events of the coming update, delivered in the update itself so that they come
// just before it even when a stalled loop runs updates back to back.
static void deliver_script_events()
{
    while (session.next_event < session.script.count &&
           session.script.events[session.next_event].tick <= session.updates_run)
        scripted_input_deliver(&session.input, session.script.events[session.next_event++]);
}

void window_session_update()
{
    deliver_script_events();
    if (key_state[KEYCODE_F12] == KEY_PRESSED)
        session.screenshot_wanted = 1;
    game_update();
    session.updates_run += 1;
    input_record_update_ran();
}

void window_session_frame_drawn()
{
    session.frames_drawn += 1;
    if (!session.screenshot_wanted)
        return;
    session.screenshot_wanted = 0;
    char path[SCREENSHOT_PATH_CAPACITY];
    if (!save_screenshot(color_buffer, frame_width, frame_height, path, sizeof path))
        fprintf(stderr, "gloamhold: the screenshot could not be saved\n");
}

// Not recorded: a replay's own virtual cursor goes to the centre at the same moment.
void window_session_sync_capture()
{
    void (*listener)(const script_event&) = input_listener;
    input_listener = nullptr;
    scripted_input_sync_capture(&session.input);
    input_listener = listener;
}

void window_session_before_pass(double now)
{
    input_record_pass(now);
}

int window_session_closed()
{
    return session.input.window_closed;
}

int window_session_finish()
{
    int written = input_record_finish();
    if (!written)
        fprintf(stderr, "gloamhold: --record: could not be written\n");
    if (session.state) {
        int state_written = write_state_file(session.state, session.updates_run, session.frames_drawn, nullptr, nullptr);
        if (fclose(session.state) != 0 || !state_written) {
            fprintf(stderr, "gloamhold: --state %s: could not be written\n", session.state_path);
            written = 0;
        }
        session.state = nullptr;
    }
    input_script_free(&session.script);
    return written;
}
