#include "game/dialogue.h"

#include <math.h>
#include <string.h>

#include "core/heap.h"
#include "core/key_codes.h"
#include "core/loop_state.h"
#include "core/numbers.h"
#include "core/text.h"
#include "platform/platform.h"

dialogue_var_list dialogue_vars;
dialogue_runtime dialogue_state = {0, 0, DIALOGUE_PHASE_CLOSING, 0.0f, 0.0f, {}, 0, {}, 0, -1, 0};

static int32_t walk_depth;
static int32_t walk_steps; // entries looked at by the walk in progress

static const dialogue* open_dialogue()
{
    return registry_at<dialogue>(&dialogues, dialogue_state.current);
}

static int is_blank(char c)
{
    return c == ' ' || c == '\t';
}

static int begins_with(const char* text, int32_t length, const char* prefix)
{
    int32_t n = static_cast<int32_t>(strlen(prefix));
    return length >= n && memcmp(text, prefix, static_cast<size_t>(n)) == 0;
}

// ---- The text to show --------------------------------------------------------------------------

static int text_full; // the text was cut at the buffer: nothing more is added to it

// Appends what fits of `length` bytes. What does not fit is cut at the last whole character inside
// the buffer (a UTF-8 continuation byte never starts the cut-off part), and the text is then full.
static void append_text(const char* bytes, int32_t length)
{
    if (text_full)
        return;
    int32_t room = DIALOGUE_TEXT_CAPACITY - 1 - dialogue_state.text_length;
    int32_t taken = length;
    if (taken > room) {
        taken = room;
        while (taken > 0 && (static_cast<uint8_t>(bytes[taken]) & 0xC0) == 0x80)
            --taken;
        text_full = 1;
    }
    memcpy(dialogue_state.text + dialogue_state.text_length, bytes, static_cast<size_t>(taken));
    dialogue_state.text_length += taken;
    dialogue_state.text[dialogue_state.text_length] = 0;
}

// ---- State variables ---------------------------------------------------------------------------

dialogue_var* find_var(const char* name, int32_t length)
{
    if (length >= DIALOGUE_VAR_NAME_CAPACITY)
        return nullptr;
    for (int32_t i = 0; i < dialogue_vars.count; ++i) {
        dialogue_var* var = &dialogue_vars.records[i];
        if (static_cast<int32_t>(strlen(var->name)) == length && memcmp(var->name, name, static_cast<size_t>(length)) == 0)
            return var;
    }
    return nullptr;
}

dialogue_var* get_or_add_var(const char* name, int32_t length)
{
    if (length >= DIALOGUE_VAR_NAME_CAPACITY)
        return nullptr;
    dialogue_var* found = find_var(name, length);
    if (found)
        return found;
    size_t bytes = static_cast<size_t>(dialogue_vars.count + 1) * sizeof(dialogue_var);
    dialogue_var* grown = static_cast<dialogue_var*>(heap_resize(dialogue_vars.records, bytes));
    if (!grown)
        return nullptr;
    dialogue_vars.records = grown;
    dialogue_var* var = &grown[dialogue_vars.count++];
    memset(var, 0, sizeof *var);
    memcpy(var->name, name, static_cast<size_t>(length));
    return var;
}

int var_equals(const char* name, int32_t name_length, const char* value, int32_t value_length)
{
    const dialogue_var* var = find_var(name, name_length);
    return var && static_cast<int32_t>(strlen(var->value)) == value_length &&
           memcmp(var->value, value, static_cast<size_t>(value_length)) == 0;
}

// ---- Statements --------------------------------------------------------------------------------

const char* state_variable_name(const char* token, int32_t length, int32_t* name_length)
{
    static const char PREFIX[] = "state.";
    const int32_t prefix_length = static_cast<int32_t>(sizeof PREFIX - 1);
    if (!begins_with(token, length, PREFIX) || length == prefix_length)
        return nullptr;
    *name_length = length - prefix_length;
    return token + prefix_length;
}

// One number of the call, after any spaces, "(" and ","; it runs to the next "," or ")".
static int read_call_number(const char* call, int32_t length, int32_t* position, float* out)
{
    int32_t i = *position;
    while (i < length && (call[i] == ' ' || call[i] == '(' || call[i] == ','))
        ++i;
    int32_t start = i;
    while (i < length && call[i] != ',' && call[i] != ')')
        ++i;
    if (i >= length || i == start)
        return 0;
    *position = i;
    return parse_float(call + start, i - start, out);
}

int random_call_bounds(const char* call, int32_t length, float* a, float* b)
{
    if (!begins_with(call, length, "random("))
        return 0;
    int32_t position = 6; // at the "("
    return read_call_number(call, length, &position, a) && read_call_number(call, length, &position, b);
}

int dialogue_random(dialogue_var* var, const char* call, int32_t length)
{
    float a = 0.0f, b = 0.0f;
    if (!random_call_bounds(call, length, &a, &b))
        return 0;
    // The game clock is deliberately the only source of chance.
    float fraction = fmodf(game_time, 1.0f);
    int32_t value = truncate_to_int32(fraction * (b - a) + a);
    string_printf(var->value, sizeof var->value, "%d", value);
    return 1;
}

int32_t split_statement(const char* text, int32_t length, const char* token[3], int32_t token_length[3])
{
    int32_t i = 0, count = 0;
    while (count < 3) {
        while (i < length && is_blank(text[i]))
            ++i;
        if (i >= length)
            break;
        int32_t start = i;
        if (count < 2)
            while (i < length && !is_blank(text[i]))
                ++i;
        else
            i = length;
        token[count] = text + start;
        token_length[count] = i - start;
        ++count;
    }
    return count;
}

static int assign(const char* name, int32_t name_length, const char* value, int32_t value_length)
{
    dialogue_var* var = get_or_add_var(name, name_length);
    if (!var)
        return 0;
    int fits = value_length < DIALOGUE_VAR_VALUE_CAPACITY;
    int32_t kept = fits ? value_length : DIALOGUE_VAR_VALUE_CAPACITY - 1;
    memcpy(var->value, value, static_cast<size_t>(kept));
    var->value[kept] = 0;
    return fits;
}

int is_function_call(const char* value, int32_t length)
{
    return length > 0 && value[length - 1] == ')' && memchr(value, '(', static_cast<size_t>(length)) != nullptr;
}

statement_operator statement_operator_of(const char* op, int32_t length)
{
    if (length == 1 && op[0] == '=')
        return STATEMENT_OPERATOR_SET;
    if (length == 2 && op[0] == '=' && op[1] == '=')
        return STATEMENT_OPERATOR_EQUALS;
    if (length == 2 && op[0] == '!' && op[1] == '=')
        return STATEMENT_OPERATOR_DIFFERS;
    return STATEMENT_OPERATOR_UNKNOWN;
}

int eval_statement(const char* text, int32_t length)
{
    const char* token[3] = {};
    int32_t token_length[3] = {};
    int32_t count = split_statement(text, length, token, token_length);
    int32_t name_length = 0;
    if (count == 1) {
        int negated = token[0][0] == '!';
        const char* name = state_variable_name(token[0] + negated, token_length[0] - negated, &name_length);
        if (!name)
            return 0;
        return (find_var(name, name_length) != nullptr) != negated;
    }
    if (count != 3)
        return 0;
    const char* name = state_variable_name(token[0], token_length[0], &name_length);
    if (!name)
        return 0;
    switch (statement_operator_of(token[1], token_length[1])) {
    case STATEMENT_OPERATOR_SET: {
        if (!is_function_call(token[2], token_length[2]))
            return assign(name, name_length, token[2], token_length[2]);
        dialogue_var* var = get_or_add_var(name, name_length);
        return var && dialogue_random(var, token[2], token_length[2]);
    }
    case STATEMENT_OPERATOR_EQUALS:
        return var_equals(name, name_length, token[2], token_length[2]);
    case STATEMENT_OPERATOR_DIFFERS:
        return !var_equals(name, name_length, token[2], token_length[2]);
    case STATEMENT_OPERATOR_UNKNOWN:
        break;
    }
    return 0;
}

// ---- Walking the script ------------------------------------------------------------------------

const char* dialogue_quoted_text(const dialogue* record, int32_t entry, int32_t* length, int* closed)
{
    const dialogue_entry& e = record->entries[entry];
    const char* end = record->text + e.end;
    const char* open = static_cast<const char*>(memchr(record->text + e.start, '"', e.end - e.start));
    *length = 0;
    *closed = 0;
    if (!open)
        return nullptr;
    const char* close = static_cast<const char*>(memchr(open + 1, '"', static_cast<size_t>(end - open - 1)));
    *closed = close != nullptr;
    *length = static_cast<int32_t>((close ? close : end) - open - 1);
    return open + 1;
}

int32_t placeholder_end(const char* text, int32_t open, int32_t end)
{
    int32_t close = open + 1;
    while (close < end && text[close] != '}')
        ++close;
    return close;
}

void expand_text(int32_t entry)
{
    int32_t end = 0;
    int closed = 0;
    const char* text = dialogue_quoted_text(open_dialogue(), entry, &end, &closed);
    if (!text)
        return;
    int32_t i = 0;
    while (i < end) {
        if (text[i] != '{') {
            int32_t run = i;
            while (run < end && text[run] != '{')
                ++run;
            append_text(text + i, run - i);
            i = run;
            continue;
        }
        int32_t close = placeholder_end(text, i, end);
        int32_t name_length = 0;
        const char* name = state_variable_name(text + i + 1, close - i - 1, &name_length);
        const dialogue_var* var = name ? find_var(name, name_length) : nullptr;
        if (var)
            append_text(var->value, static_cast<int32_t>(strlen(var->value)));
        else
            append_text("<?>", 3);
        i = close + 1; // past the "}" (or the closing quote)
    }
}

void walk_block(int32_t parent)
{
    const dialogue* record = open_dialogue();
    int32_t level = dialogue_block_level(record, parent);
    if (level < 0 || walk_depth >= DIALOGUE_MAX_DEPTH)
        return;
    ++walk_depth;
    int last_condition = 0;
    for (int32_t i = parent + 1; i < record->entry_count; ++i) {
        if (++walk_steps > DIALOGUE_WALK_STEP_LIMIT)
            break;
        const dialogue_entry& e = record->entries[i];
        if (e.indent > level)
            continue; // part of a nested block
        if (e.indent < level)
            break;
        const char* text = record->text + e.start;
        int32_t length = static_cast<int32_t>(e.end - e.start);
        switch (dialogue_entry_kind_of(record, i)) {
        case DIALOGUE_CONDITION:
            last_condition = eval_statement(text + 3, length - 4); // between "if " and the ":"
            if (last_condition)
                walk_block(i);
            break;
        case DIALOGUE_ELSE:
            if (!last_condition)
                walk_block(i);
            break;
        case DIALOGUE_ANSWER:
            if (dialogue_state.choice_count < DIALOGUE_MAX_CHOICES)
                dialogue_state.choices[dialogue_state.choice_count++] = i;
            break;
        case DIALOGUE_LABEL:
            break;
        case DIALOGUE_TEXT:
            if (dialogue_state.text_length > 0)
                append_text("\n", 1);
            expand_text(i);
            break;
        case DIALOGUE_JUMP: {
            int32_t target = dialogue_jump_target(record, i);
            walk_steps += target < 0 ? record->entry_count : target + 1;
            if (target < 0) {
                --walk_depth;
                return; // a jump to a missing label ends the block
            }
            walk_block(target);
            break;
        }
        case DIALOGUE_STATEMENT:
            eval_statement(text, length);
            break;
        }
    }
    --walk_depth;
}

int run_dialogue(int32_t start)
{
    dialogue_state.text_length = 0;
    dialogue_state.text[0] = 0;
    dialogue_state.choice_count = 0;
    text_full = 0;
    walk_depth = 0;
    walk_steps = 0;
    walk_block(start);
    dialogue_state.highlighted = -1;
    return dialogue_state.choice_count != 0;
}

const char* dialogue_answer_text(int32_t entry, int32_t* length)
{
    const dialogue* record = open_dialogue();
    int closed = 0;
    const char* text = dialogue_quoted_text(record, entry, length, &closed);
    return text ? text : record->text + record->entries[entry].start;
}

// ---- Opening, picking and the keys ------------------------------------------------------------

int start_dialogue(int32_t index)
{
    if (index < 0 || index >= dialogues.count || !registry_in_use(&dialogues, index))
        return 0;
    dialogue_state.current = index;
    dialogue_state.phase_start = game_time;
    dialogue_state.phase = DIALOGUE_PHASE_OPENING;
    dialogue_state.fade = 0.0f;
    if (!run_dialogue(-1))
        return 0; // a dialogue that offers nothing at its top never opens
    dialogue_state.active = 1;
    mouse_captured = 0; // the player clicks answers
    return 1;
}

void pick_choice(int32_t k)
{
    if (k < 0 || k >= dialogue_state.choice_count)
        return;
    int offered = run_dialogue(dialogue_state.choices[k]);
    dialogue_state.phase_start = game_time;
    dialogue_state.fade = 0.0f;
    if (offered) {
        dialogue_state.phase = DIALOGUE_PHASE_SHOWN;
    } else {
        mouse_captured = 1;
        dialogue_state.phase = DIALOGUE_PHASE_CLOSING;
    }
}

enum : uint8_t {
    KEY_HIGHLIGHT_PREVIOUS = 'W',
    KEY_HIGHLIGHT_NEXT = 'S',
    KEY_PICK = 'E',
};

static int pressed(int32_t code)
{
    return key_state[code] == KEY_PRESSED;
}

void update_dialogue()
{
    dialogue_runtime& d = dialogue_state;
    if (d.phase == DIALOGUE_PHASE_CLOSING && d.fade >= 1.0f) {
        d.active = 0;
        return;
    }
    if (d.phase == DIALOGUE_PHASE_OPENING && d.fade >= 1.0f) {
        d.phase_start = game_time;
        d.fade = 0.0f;
        d.phase = DIALOGUE_PHASE_SHOWN;
    }
    if (d.fade < 1.0f)
        return; // the text is still typing out
    for (int32_t n = 1; n <= DIALOGUE_MAX_CHOICES; ++n)
        if (pressed(KEYCODE_0 + n) && d.choice_count >= n)
            pick_choice(n - 1);
    if (pressed(KEY_HIGHLIGHT_PREVIOUS) || pressed(KEYCODE_UP)) {
        d.highlighted -= 1;
        if (d.highlighted < 0)
            d.highlighted = d.choice_count - 1;
        d.mouse_hover = 0;
    }
    if ((pressed(KEY_HIGHLIGHT_NEXT) || pressed(KEYCODE_DOWN)) && d.choice_count > 0) {
        d.mouse_hover = 0;
        d.highlighted = (d.highlighted + 1) % d.choice_count;
    }
    if (pressed(KEY_PICK) || pressed(KEYCODE_ENTER))
        pick_choice(d.highlighted);
    if (key_state[KEYCODE_LBUTTON] != KEY_UP && d.mouse_hover)
        pick_choice(d.highlighted);
}

void reset_dialogue_runtime()
{
    platform_heap_free(dialogue_vars.records);
    dialogue_vars = dialogue_var_list{};
    memset(&dialogue_state, 0, sizeof dialogue_state);
    dialogue_state.highlighted = -1;
}
