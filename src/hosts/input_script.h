// Timed input for every host, one event a line, "#" starting a comment:
//   T down KEY | T up KEY | T mouse DX DY | T wheel N | T cursor X Y | T time SECONDS | T quit
// Events of tick T are delivered just before update T (ticks count from 0). KEY is a name (W, A,
// SPACE, SHIFT, ALT, ESC, F1, 0, [, ADD, LBUTTON, ...) or a virtual-key code of two or more digits
// (or 0x and hex digits), since a single digit names the digit key.
// A recorded session adds the loop's clock: "T time SECONDS" says that a pass of the loop ran at
// that time (after T updates, and after the events written before it), so that a replay runs its
// updates and frames, and the mouse-look of each frame, exactly where the live game did; "T quit"
// says that the window closed before update T.
#pragma once

#include <stddef.h>
#include <stdint.h>

enum script_event_kind : uint8_t {
    SCRIPT_KEY_DOWN,
    SCRIPT_KEY_UP,
    SCRIPT_MOUSE,  // moved by (a, b) pixels: right and down are positive
    SCRIPT_WHEEL,  // a notches, away from the user positive
    SCRIPT_CURSOR, // moved to (a, b) in client coordinates
    SCRIPT_TIME,   // the loop ran a pass at `seconds` on its clock
    SCRIPT_QUIT,   // the window closed: the game ends before update `tick`
};

enum { SCRIPT_EVENT_KINDS = SCRIPT_QUIT + 1 };

// How each kind of event is written after its tick: the word, how many values follow it, and the
// whole line's form for messages. The reader and the recorder both go by it.
struct script_event_form {
    const char* word;
    int values;
    const char* usage;
};
extern const script_event_form script_event_forms[SCRIPT_EVENT_KINDS];

struct script_event {
    int32_t tick;
    script_event_kind kind;
    int32_t a; // the key code, or the first number
    int32_t b;
    double seconds; // of SCRIPT_TIME
};

struct input_script {
    script_event* events; // in tick order; events of one tick in the order written
    int32_t count;
    int32_t capacity;
};

// The virtual-key code for a key name of the script (upper or lower case); 0 when unknown.
int script_key_code(const char* name, uint32_t* code);

// The name a script writes for a virtual-key code: the key's name when it has one (W, F1, SPACE,
// LBUTTON, [, ...), else the code as a number of at least two digits. `name` holds at least 8 characters.
void script_key_name(uint32_t code, char* name, size_t capacity);

// Parses the whole text. 1 on success; else 0 with the 1-based line and a message naming the problem.
int parse_input_script(const char* text, size_t length, input_script* script, int32_t* error_line,
                       char* error, size_t error_capacity);
void input_script_free(input_script* script);

// Reads and parses the script file at `path`; on failure says why on stderr, as "PROGRAM: ...",
// with the line at fault, and returns 0.
int load_input_script(const char* path, const char* program, input_script* script);

// The highest tick with an event, or -1 for an empty script.
int32_t input_script_last_tick(const input_script* script);

// 1 when the script holds the loop's clock ("T time" lines): a recorded session.
int input_script_has_times(const input_script* script);
