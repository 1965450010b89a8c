// The dialogue runtime: talking to a character opens that character's dialogue, a small indented
// script (see assets/dialogue.h for how entries are told apart). Walking a block collects the text
// to show and the answers to offer; the player picks one with the number keys, the arrows and
// E/Enter, or the mouse, and its block is walked in turn. State variables live for the whole game
// and are shared by every dialogue, so one conversation can change what another says.
//
// Two limits of the script are settled here:
// - The text to show holds at most 4095 bytes (the buffer keeps its terminator). Text that does
//   not fit is cut at the last whole character inside the buffer, so a two-byte letter is never
//   split, and nothing more is added to that text.
// - At most 8 answers are offered at once: an answer met when 8 are already offered is passed
//   over, as if it were not there.
// A walk also stops descending after 64 nested blocks (a label that jumps to itself would
// otherwise never end); the shipped scripts nest a handful deep. It ends altogether once it has
// looked at 2^18 entries, those that jumps search for their label counted too: a block that jumps
// twice to its own label would otherwise double its work 64 times over.
#pragma once

#include <stdint.h>

#include "assets/dialogue.h"

enum {
    DIALOGUE_TEXT_CAPACITY = 4096,
    DIALOGUE_MAX_CHOICES = 8,
    DIALOGUE_VAR_NAME_CAPACITY = 32,  // 31 characters and the terminator
    DIALOGUE_VAR_VALUE_CAPACITY = 96, // 95 characters and the terminator
    DIALOGUE_MAX_DEPTH = 64,
    DIALOGUE_WALK_STEP_LIMIT = 1 << 18,
};

enum dialogue_phase : int32_t {
    DIALOGUE_PHASE_CLOSING = 0,
    DIALOGUE_PHASE_OPENING = 1,
    DIALOGUE_PHASE_SHOWN = 2,
};

struct dialogue_var {
    char name[DIALOGUE_VAR_NAME_CAPACITY];
    char value[DIALOGUE_VAR_VALUE_CAPACITY]; // text, numbers too
};

// In order of creation; grows by exactly one record per new variable and is never cleared.
struct dialogue_var_list {
    dialogue_var* records;
    int32_t count;
};

extern dialogue_var_list dialogue_vars;

struct dialogue_runtime {
    int32_t active;       // a dialogue is open: the update runs only the dialogue, the frame draws its box
    int32_t current;      // index of the open dialogue
    int32_t phase;        // dialogue_phase
    float phase_start;    // game_time when the phase began
    float fade;           // the phase's progress 0 ... 1, written by the dialogue box every frame
    char text[DIALOGUE_TEXT_CAPACITY]; // what is said, lines separated by a line feed
    int32_t text_length;  // bytes in text
    int32_t choices[DIALOGUE_MAX_CHOICES]; // entry of each offered answer, in script order
    int32_t choice_count;
    int32_t highlighted;  // the highlighted answer, -1 for none
    int32_t mouse_hover;  // the highlight was set by the mouse
};

extern dialogue_runtime dialogue_state;

// Opens the dialogue with this index: 0 when the index is out of range or its top offers no
// answer; else the box opens and the mouse is freed so that answers can be clicked.
int start_dialogue(int32_t dialogue);
// Once a tick while a dialogue is open: the phases and the keys and mouse that pick answers.
void update_dialogue();
// Walks the block under `start` (-1: the top) afresh into text and choices; no answer
// highlighted. 1 when at least one answer is offered.
int run_dialogue(int32_t start);
// Runs the block under `parent` of the open dialogue: conditions, else, answers, text lines,
// jumps (calls: the block goes on afterwards) and statements; deeper entries are passed over.
void walk_block(int32_t parent);
// Appends the text line `entry` of the open dialogue (between its first two double quotes) to the
// text, each "{state.NAME}" replaced by the variable's value and any other placeholder by "<?>".
void expand_text(int32_t entry);
// Runs or tests one statement of `length` bytes: "state.NAME = value", "state.NAME = random(a, b)",
// "state.NAME == value", "state.NAME != value", "state.NAME", "!state.NAME". 1 when it holds.
int eval_statement(const char* text, int32_t length);
// Sets `var` to truncate(frac(game_time) * (b - a) + a) for the call "random(a, b)" of `length`
// bytes; 0 (the variable untouched) for any other function or a missing or unparsable number.
int dialogue_random(dialogue_var* var, const char* call, int32_t length);
// The variable with exactly this name (names of 32 characters or more never match), or null.
dialogue_var* find_var(const char* name, int32_t length);
// The variable, created with an empty value when missing; null for a name of 32 characters or
// more, or when memory runs out.
dialogue_var* get_or_add_var(const char* name, int32_t length);
// 1 when the variable is defined and its value is exactly `value`.
int var_equals(const char* name, int32_t name_length, const char* value, int32_t value_length);
// Picks offered answer k (ignored out of range): its block is walked; when it offers nothing more
// the box closes over 0.2 s and the mouse goes back to the game.
void pick_choice(int32_t k);

// The display text of the open dialogue's answer `entry`: what stands between the first pair of
// double quotes (to the entry's end when the second is missing; empty without quotes). Not
// terminated: *length bytes.
const char* dialogue_answer_text(int32_t entry, int32_t* length);

// ---- Reading the script, shared by the runtime and the data checker ---------------------------

// Splits a statement into at most three tokens: blanks (spaces and tabs) are skipped, the first two
// tokens end at the next blank and the third is the whole rest of the text, blanks included.
// Returns the number of tokens.
int32_t split_statement(const char* text, int32_t length, const char* token[3], int32_t token_length[3]);
// The variable name after "state." (at least one character), or null when the token is not a state
// variable.
const char* state_variable_name(const char* token, int32_t length, int32_t* name_length);

enum statement_operator {
    STATEMENT_OPERATOR_UNKNOWN, // the statement is false and does nothing
    STATEMENT_OPERATOR_SET,     // "="
    STATEMENT_OPERATOR_EQUALS,  // "=="
    STATEMENT_OPERATOR_DIFFERS, // "!="
};

statement_operator statement_operator_of(const char* op, int32_t length);
// Whether the value of an assignment is a function call: it ends with ")" and holds "(".
int is_function_call(const char* value, int32_t length);
// The two numbers of the call "random(a, b)"; 0 for any other function or a missing or
// unparsable number.
int random_call_bounds(const char* call, int32_t length, float* a, float* b);
// What entry `entry` shows: the text after its first double quote up to the next one, or to the
// entry's end when there is no second (*closed = 0). Null when the entry has no double quote.
const char* dialogue_quoted_text(const dialogue* record, int32_t entry, int32_t* length, int* closed);
// Where the placeholder opened by the "{" at text[open] ends: at the next "}" before `end`, else at
// `end` (a placeholder left open runs to the closing quote).
int32_t placeholder_end(const char* text, int32_t open, int32_t end);

// Forgets every variable and closes any dialogue, for tests that need a fresh game.
void reset_dialogue_runtime();
