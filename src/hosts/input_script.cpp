#include "hosts/input_script.h"

#include <errno.h>
#include <stdio.h>
#include <math.h>
#include <stdlib.h>
#include <string.h>

#include "core/heap.h"
#include "core/key_codes.h"
#include "core/text.h"
#include "platform/platform.h"

struct named_key {
    const char* name;
    uint32_t code;
};

static const named_key named_keys[] = {
    {"SPACE", KEYCODE_SPACE},     {"SHIFT", KEYCODE_SHIFT},         {"ALT", KEYCODE_ALT},
    {"CTRL", KEYCODE_CTRL},       {"ESC", KEYCODE_ESCAPE},          {"BACKSPACE", KEYCODE_BACKSPACE},
    {"ENTER", KEYCODE_ENTER},     {"TAB", KEYCODE_TAB},             {"UP", KEYCODE_UP},
    {"DOWN", KEYCODE_DOWN},       {"LEFT", KEYCODE_LEFT},           {"RIGHT", KEYCODE_RIGHT},
    {"LBUTTON", KEYCODE_LBUTTON}, {"RBUTTON", KEYCODE_RBUTTON},     {"MBUTTON", KEYCODE_MBUTTON},
    {"[", KEYCODE_LEFT_BRACKET},  {"]", KEYCODE_RIGHT_BRACKET},     {"ADD", KEYCODE_ADD},
};

// A whole integer in [low, high]: decimal with an optional "-", or 0x and hex digits.
static int parse_integer(const char* text, long long low, long long high, int32_t* out)
{
    if (text[0] == '\0' || text[0] == '+')
        return 0;
    char* end = nullptr;
    errno = 0;
    int hex = text[0] == '0' && (text[1] == 'x' || text[1] == 'X');
    long long value = strtoll(hex ? text + 2 : text, &end, hex ? 16 : 10);
    if (end == (hex ? text + 2 : text) || *end != '\0' || errno != 0 || value < low || value > high)
        return 0;
    *out = static_cast<int32_t>(value);
    return 1;
}

int script_key_code(const char* name, uint32_t* code)
{
    size_t length = strlen(name);
    if (length == 1) {
        char c = name[0];
        if (c >= 'a' && c <= 'z')
            c = static_cast<char>(c - 'a' + 'A');
        if ((c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9')) {
            *code = static_cast<uint32_t>(c);
            return 1;
        }
    }
    if ((name[0] == 'F' || name[0] == 'f') && length >= 2 && length <= 3) {
        int32_t number = 0;
        if (name[1] != '0' && parse_integer(name + 1, 1, 24, &number)) {
            *code = KEYCODE_F1 + static_cast<uint32_t>(number - 1);
            return 1;
        }
    }
    for (const named_key& key : named_keys) {
        if (text_equal_ignoring_case(name, key.name)) {
            *code = key.code;
            return 1;
        }
    }
    int32_t number = 0;
    if (length >= 2 && name[0] != '-' && parse_integer(name, 0, 255, &number)) {
        *code = static_cast<uint32_t>(number);
        return 1;
    }
    return 0;
}

void script_key_name(uint32_t code, char* name, size_t capacity)
{
    if ((code >= 'A' && code <= 'Z') || (code >= '0' && code <= '9')) {
        string_printf(name, capacity, "%c", static_cast<char>(code));
        return;
    }
    if (code >= KEYCODE_F1 && code < KEYCODE_F1 + 24) {
        string_printf(name, capacity, "F%d", static_cast<int>(code - KEYCODE_F1 + 1));
        return;
    }
    for (const named_key& key : named_keys) {
        if (key.code == code) {
            string_printf(name, capacity, "%s", key.name);
            return;
        }
    }
    string_printf(name, capacity, "%02u", code);
}

enum { MAX_WORDS = 5, WORD_CAPACITY = 64, COORDINATE_LIMIT = 1000000 };

// A time on the loop's clock: a finite decimal from 0, written with all its digits by the recorder
// so that it reads back as the same double.
static int parse_seconds(const char* text, double* out, char* error, size_t capacity)
{
    char* end = nullptr;
    errno = 0;
    double value = strtod(text, &end);
    if (end == text || *end != '\0' || errno != 0 || !(value >= 0.0) || !isfinite(value)) {
        string_printf(error, capacity, "'%s' is not a time in seconds (a decimal from 0)", text);
        return 0;
    }
    *out = value;
    return 1;
}

// Splits one line (comment removed) into blank-separated words; -1 when a word is too long or
// there are too many.
static int split_words(const char* line, size_t length, char words[MAX_WORDS][WORD_CAPACITY])
{
    int count = 0;
    size_t i = 0;
    while (i < length) {
        while (i < length && (line[i] == ' ' || line[i] == '\t' || line[i] == '\r'))
            ++i;
        if (i >= length)
            break;
        size_t start = i;
        while (i < length && line[i] != ' ' && line[i] != '\t' && line[i] != '\r')
            ++i;
        if (count == MAX_WORDS || i - start >= WORD_CAPACITY)
            return -1;
        memcpy(words[count], line + start, i - start);
        words[count][i - start] = '\0';
        ++count;
    }
    return count;
}

// Keeps the list in tick order: an event goes after every event of its tick or an earlier one.
static int insert_event(input_script* script, const script_event& event)
{
    if (!heap_grow(&script->events, &script->capacity, script->count + 1, script->capacity + 64))
        return 0;
    int32_t at = script->count;
    while (at > 0 && script->events[at - 1].tick > event.tick) {
        script->events[at] = script->events[at - 1];
        --at;
    }
    script->events[at] = event;
    script->count += 1;
    return 1;
}

const script_event_form script_event_forms[SCRIPT_EVENT_KINDS] = {
    {"down", 1, "T down KEY"},     {"up", 1, "T up KEY"},          {"mouse", 2, "T mouse DX DY"},
    {"wheel", 1, "T wheel N"},     {"cursor", 2, "T cursor X Y"}, {"time", 1, "T time SECONDS"},
    {"quit", 0, "T quit"},
};

// One line's event; 0 with a message when it is not one.
static int parse_event(char words[MAX_WORDS][WORD_CAPACITY], int count, script_event* event, char* error,
                       size_t capacity)
{
    if (!parse_integer(words[0], 0, INT32_MAX, &event->tick)) {
        string_printf(error, capacity, "'%s' is not a tick (a whole number from 0)", words[0]);
        return 0;
    }
    if (count < 2) {
        string_printf(error, capacity, "an event is missing after the tick");
        return 0;
    }
    const char* verb = words[1];
    int kind = 0;
    while (kind < SCRIPT_EVENT_KINDS && !text_equal_ignoring_case(verb, script_event_forms[kind].word))
        ++kind;
    if (kind == SCRIPT_EVENT_KINDS) {
        string_printf(error, capacity, "unknown event '%s' (down, up, mouse, wheel, cursor, time or quit)", verb);
        return 0;
    }
    event->kind = static_cast<script_event_kind>(kind);
    int wanted = script_event_forms[kind].values;
    if (count - 2 != wanted) {
        string_printf(error, capacity, "'%s' takes %d value%s: %s", verb, wanted, wanted == 1 ? "" : "s",
                      script_event_forms[kind].usage);
        return 0;
    }
    event->b = 0;
    if (event->kind == SCRIPT_QUIT)
        return 1;
    if (event->kind == SCRIPT_TIME)
        return parse_seconds(words[2], &event->seconds, error, capacity);
    if (event->kind == SCRIPT_KEY_DOWN || event->kind == SCRIPT_KEY_UP) {
        uint32_t code = 0;
        if (!script_key_code(words[2], &code)) {
            string_printf(error, capacity, "unknown key '%s'", words[2]);
            return 0;
        }
        event->a = static_cast<int32_t>(code);
        return 1;
    }
    for (int i = 0; i < wanted; ++i) {
        int32_t* slot = i == 0 ? &event->a : &event->b;
        if (!parse_integer(words[2 + i], -COORDINATE_LIMIT, COORDINATE_LIMIT, slot)) {
            string_printf(error, capacity, "'%s' is not a whole number from %d to %d", words[2 + i],
                          -COORDINATE_LIMIT, COORDINATE_LIMIT);
            return 0;
        }
    }
    return 1;
}

int parse_input_script(const char* text, size_t length, input_script* script, int32_t* error_line,
                       char* error, size_t error_capacity)
{
    memset(script, 0, sizeof *script);
    int32_t line_number = 0;
    size_t start = 0;
    while (start < length) {
        size_t end = start;
        while (end < length && text[end] != '\n')
            ++end;
        line_number += 1;
        size_t content = start;
        while (content < end && text[content] != '#')
            ++content;
        char words[MAX_WORDS][WORD_CAPACITY];
        int count = split_words(text + start, content - start, words);
        script_event event = {};
        int ok = 1;
        if (count < 0) {
            string_printf(error, error_capacity, "too many or too long words");
            ok = 0;
        } else if (count > 0) {
            ok = parse_event(words, count, &event, error, error_capacity);
            if (ok && !insert_event(script, event)) {
                string_printf(error, error_capacity, "out of memory");
                ok = 0;
            }
        }
        if (!ok) {
            *error_line = line_number;
            input_script_free(script);
            return 0;
        }
        start = end + 1;
    }
    return 1;
}

void input_script_free(input_script* script)
{
    platform_heap_free(script->events);
    memset(script, 0, sizeof *script);
}

int32_t input_script_last_tick(const input_script* script)
{
    return script->count ? script->events[script->count - 1].tick : -1;
}

int input_script_has_times(const input_script* script)
{
    for (int32_t i = 0; i < script->count; ++i)
        if (script->events[i].kind == SCRIPT_TIME)
            return 1;
    return 0;
}

int load_input_script(const char* path, const char* program, input_script* script)
{
    FILE* file = fopen(path, "rb");
    if (!file) {
        fprintf(stderr, "%s: --script %s: %s\n", program, path, strerror(errno));
        return 0;
    }
    char* text = nullptr;
    size_t length = 0;
    char chunk[4096];
    size_t got;
    while ((got = fread(chunk, 1, sizeof chunk, file)) > 0) {
        char* grown = static_cast<char*>(realloc(text, length + got));
        if (!grown)
            break;
        text = grown;
        memcpy(text + length, chunk, got);
        length += got;
    }
    int read_whole = !ferror(file) && feof(file);
    fclose(file);
    if (!read_whole) {
        free(text);
        fprintf(stderr, "%s: --script %s: could not be read\n", program, path);
        return 0;
    }
    char message[200];
    int32_t line = 0;
    int parsed = parse_input_script(text ? text : "", length, script, &line, message, sizeof message);
    free(text);
    if (!parsed)
        fprintf(stderr, "%s: %s:%d: %s\n", program, path, line, message);
    return parsed;
}
