// Dialogues, read with the game's own index and the runtime's own reading of entries, statements
// and shown text: whether the top level can offer an answer at all (a dialogue that offers none
// never opens), jumps that find no label, walks that can offer more answers at once than the box
// does (the game never offers a ninth), statements that never do anything and conditions that
// never hold, text lines without their closing quote, answers with nothing to show, characters the
// dialogue font lacks, and state variables that are shown or tested but never set.
#include <set>
#include <vector>

#include "assets/dialogue.h"
#include "checks.h"
#include "core/diagnostics.h"
#include "game/dialogue.h"
#include "ui/font.h"

namespace {

// The line of every entry, counted in one pass over the text (entries come in the text's order):
// a dialogue may have tens of thousands, and each may be named.
std::vector<int32_t> entry_lines(const dialogue* record)
{
    std::vector<int32_t> lines(static_cast<size_t>(record->entry_count));
    int32_t line = 1;
    uint32_t at = 0;
    for (int32_t i = 0; i < record->entry_count; ++i) {
        uint32_t start = record->entries[i].start;
        if (start < at) { // out of order after all: count again from the top
            line = 1;
            at = 0;
        }
        for (; at < start; ++at)
            line += record->text[at] == '\n';
        lines[static_cast<size_t>(i)] = line;
    }
    return lines;
}

// Whether walking the block under `parent` can offer an answer in any state of the variables: every
// condition may hold or not, so both a condition's block and an "else" block may run. A jump is
// followed into its label's block once; a jump that finds no label ends the block, as in the game.
bool block_may_offer(const dialogue* record, int32_t parent, std::vector<bool>* jumped_to)
{
    int32_t level = dialogue_block_level(record, parent);
    for (int32_t i = parent + 1; level >= 0 && i < record->entry_count; ++i) {
        int32_t indent = record->entries[i].indent;
        if (indent > level)
            continue;
        if (indent < level)
            break;
        switch (dialogue_entry_kind_of(record, i)) {
        case DIALOGUE_ANSWER:
            return true;
        case DIALOGUE_CONDITION:
        case DIALOGUE_ELSE:
            if (block_may_offer(record, i, jumped_to))
                return true;
            break;
        case DIALOGUE_JUMP: {
            int32_t target = dialogue_jump_target(record, i);
            if (target < 0)
                return false;
            if (!(*jumped_to)[target]) {
                (*jumped_to)[target] = true;
                if (block_may_offer(record, target, jumped_to))
                    return true;
            }
            break;
        }
        default:
            break;
        }
    }
    return false;
}

// The answers a walk of the block under `parent` can offer at once, in about the order offered:
// every condition may hold or not, so of a condition's block and the "else" blocks after it the
// one that offers more is taken (an "else" with no condition before it always runs). A jump is a
// call into its label's block; one that finds no label ends the block, as in the game. A jump back
// into a block that is being walked adds nothing here, and is kept to be named.
class answer_walk {
public:
    explicit answer_walk(const dialogue* walked)
        : record(walked), state(static_cast<size_t>(walked->entry_count), UNWALKED),
          found(static_cast<size_t>(walked->entry_count))
    {
    }

    std::vector<int32_t> most_answers(int32_t parent)
    {
        if (parent >= 0 && state[parent] == WALKED)
            return found[parent];
        if (parent >= 0 && state[parent] == WALKING)
            return {};
        if (parent >= 0)
            state[parent] = WALKING;
        std::vector<int32_t> offered = walk(parent);
        if (parent >= 0) {
            state[parent] = WALKED;
            found[parent] = offered;
        }
        return offered;
    }

private:
    enum walk_state : uint8_t { UNWALKED, WALKING, WALKED };

    std::vector<int32_t> walk(int32_t parent)
    {
        std::vector<int32_t> offered, otherwise;
        bool after_condition = false;
        size_t condition_at = 0, condition_count = 0; // the last condition's answers in `offered`
        // The "else" blocks since the last condition run instead of its block: keep what offers more.
        auto settle = [&] {
            if (otherwise.size() > condition_count) {
                offered.erase(offered.begin() + static_cast<long>(condition_at),
                              offered.begin() + static_cast<long>(condition_at + condition_count));
                offered.insert(offered.begin() + static_cast<long>(condition_at), otherwise.begin(), otherwise.end());
            }
            otherwise.clear();
            condition_count = 0;
        };
        int32_t level = dialogue_block_level(record, parent);
        for (int32_t i = parent + 1; level >= 0 && i < record->entry_count; ++i) {
            int32_t indent = record->entries[i].indent;
            if (indent > level)
                continue;
            if (indent < level)
                break;
            switch (dialogue_entry_kind_of(record, i)) {
            case DIALOGUE_ANSWER:
                offered.push_back(i);
                break;
            case DIALOGUE_CONDITION: {
                settle();
                after_condition = true;
                std::vector<int32_t> inner = most_answers(i);
                condition_at = offered.size();
                condition_count = inner.size();
                offered.insert(offered.end(), inner.begin(), inner.end());
                break;
            }
            case DIALOGUE_ELSE: {
                std::vector<int32_t> inner = most_answers(i);
                std::vector<int32_t>* runs_with = after_condition ? &otherwise : &offered;
                runs_with->insert(runs_with->end(), inner.begin(), inner.end());
                break;
            }
            case DIALOGUE_JUMP: {
                int32_t target = dialogue_jump_target(record, i);
                if (target < 0) {
                    settle();
                    return offered;
                }
                if (state[target] == WALKING)
                    jumps_back.insert(i);
                std::vector<int32_t> inner = most_answers(target);
                offered.insert(offered.end(), inner.begin(), inner.end());
                break;
            }
            default:
                break;
            }
        }
        settle();
        return offered;
    }

    const dialogue* record;
    std::vector<walk_state> state;
    std::vector<std::vector<int32_t>> found;

public:
    // Jumps into a block that the same walk is still in: the game walks it again and again.
    std::set<int32_t> jumps_back;
};

// The placeholders "{...}" of a shown text (one left open runs to the end), and the text without them.
std::vector<std::string> placeholders_of(const char* shown, int32_t length, std::string* plain)
{
    std::vector<std::string> found;
    plain->clear();
    for (int32_t i = 0; i < length; ++i) {
        if (shown[i] != '{') {
            *plain += shown[i];
            continue;
        }
        int32_t close = placeholder_end(shown, i, length);
        found.push_back(std::string(shown + i + 1, shown + close));
        i = close;
    }
    return found;
}

void check_dialogue_quoted_text(const char* path, const dialogue* record, const std::vector<int32_t>& lines,
                                int32_t entry)
{
    int32_t length = 0;
    int closed = 0;
    const char* shown = dialogue_quoted_text(record, entry, &length, &closed);
    bool answer = dialogue_entry_kind_of(record, entry) == DIALOGUE_ANSWER;
    if (answer && !closed) {
        report(path, lines[static_cast<size_t>(entry)], "the answer has no text between double quotes to show");
        return;
    }
    if (!closed)
        report(path, lines[static_cast<size_t>(entry)], "the text line has no closing double quote: it shows to the end "
                                                "of the line");
    std::string plain;
    placeholders_of(shown, length, &plain);
    std::string drawing = text_problem(&font_dialogue, "dialogue font", plain.c_str(), plain.size());
    if (!drawing.empty())
        report(path, lines[static_cast<size_t>(entry)], "%s", drawing.c_str());
}

// A statement or a condition as the game splits it into its tokens.
struct statement_tokens {
    const char* token[3] = {};
    int32_t length[3] = {};
    int32_t count = 0;

    statement_tokens(const char* text, int32_t text_length) { count = split_statement(text, text_length, token, length); }
    std::string text(int32_t k) const { return std::string(token[k], token[k] + length[k]); }
};

// The text of a statement entry, or of a condition between "if " and the final ":".
statement_tokens tokens_of(const dialogue* record, int32_t entry)
{
    const dialogue_entry& e = record->entries[entry];
    const char* text = record->text + e.start;
    int32_t length = static_cast<int32_t>(e.end - e.start);
    if (dialogue_entry_kind_of(record, entry) == DIALOGUE_CONDITION)
        return statement_tokens(text + 3, length - 4);
    return statement_tokens(text, length);
}

// The variable that a statement or condition sets ("state.NAME = ..."), else "".
std::string variable_set_by(const statement_tokens& s)
{
    int32_t name_length = 0;
    const char* name = s.count == 3 ? state_variable_name(s.token[0], s.length[0], &name_length) : nullptr;
    if (!name || statement_operator_of(s.token[1], s.length[1]) != STATEMENT_OPERATOR_SET)
        return "";
    return std::string(name, name + name_length);
}

// The variable that a condition tests ("state.NAME", "!state.NAME", "state.NAME == ..."), else "".
std::string variable_tested_by(const statement_tokens& s)
{
    if (s.count == 0)
        return "";
    int negated = s.count == 1 && s.token[0][0] == '!';
    int32_t name_length = 0;
    const char* name = state_variable_name(s.token[0] + negated, s.length[0] - negated, &name_length);
    return name ? std::string(name, name + name_length) : "";
}

// Why a statement (or a condition) can never do anything, or "" when it can. A condition that
// only tests is fine; a statement that only tests does nothing on its own line.
std::string statement_problem(const statement_tokens& s, bool condition)
{
    if (s.count == 0)
        return "";
    if (s.count == 1) {
        if (variable_tested_by(s).empty())
            return "\"" + s.text(0) + "\" is neither state.<name> nor !state.<name>";
        return condition ? "" : "it only tests " + s.text(0);
    }
    int32_t name_length = 0;
    if (!state_variable_name(s.token[0], s.length[0], &name_length))
        return "\"" + s.text(0) + "\" is not a state variable (state.<name>)";
    if (s.count == 2)
        return "nothing follows \"" + s.text(1) + "\"";
    switch (statement_operator_of(s.token[1], s.length[1])) {
    case STATEMENT_OPERATOR_UNKNOWN:
        return "unknown operator \"" + s.text(1) + "\" (=, == and != are known)";
    case STATEMENT_OPERATOR_SET: {
        float a = 0.0f, b = 0.0f;
        if (is_function_call(s.token[2], s.length[2]) && !random_call_bounds(s.token[2], s.length[2], &a, &b))
            return "\"" + s.text(2) + "\" is not random(a, b) with two numbers: " + s.text(0) + " is only left empty";
        return "";
    }
    case STATEMENT_OPERATOR_EQUALS:
    case STATEMENT_OPERATOR_DIFFERS:
        return condition ? "" : "it only tests " + s.text(0);
    }
    return "";
}

void check_statement(const char* path, const dialogue* record, const std::vector<int32_t>& lines, int32_t entry)
{
    bool condition = dialogue_entry_kind_of(record, entry) == DIALOGUE_CONDITION;
    std::string problem = statement_problem(tokens_of(record, entry), condition);
    if (problem.empty())
        return;
    if (condition)
        report(path, lines[static_cast<size_t>(entry)], "the condition never holds: %s", problem.c_str());
    else
        report(path, lines[static_cast<size_t>(entry)], "the statement never does anything: %s", problem.c_str());
}

struct loaded_dialogue {
    std::string path;
    const dialogue* record;
};

std::vector<loaded_dialogue> every_loaded_dialogue()
{
    std::vector<loaded_dialogue> all;
    for (int32_t i = 0; i < asset_names.count; ++i) {
        const asset_name& entry = asset_names.entries[i];
        if (entry.kind == ASSET_DIALOGUE && registry_in_use(&dialogues, entry.index))         {
            char path[ASSET_PATH_CAPACITY];
            asset_path(path, FOLDER_DIALOGUES, entry.name);
            all.push_back({path, registry_at<dialogue>(&dialogues, entry.index)});
        }
    }
    return all;
}

// One dialogue's blocks, jumps, answers at once, statements and shown text.
void check_dialogue(const char* path, const dialogue* record)
{
    std::vector<int32_t> lines = entry_lines(record);
    std::vector<bool> jumped_to(static_cast<size_t>(record->entry_count), false);
    if (!block_may_offer(record, -1, &jumped_to))
        report(path, 0, "offers no answer at its top level, so it never opens");
    // A walk starts at the top or at a picked answer; the first answer past the most, once each.
    answer_walk walks(record);
    std::set<int32_t> crowded;
    for (int32_t start = -1; start < record->entry_count; ++start) {
        if (start >= 0 && dialogue_entry_kind_of(record, start) != DIALOGUE_ANSWER)
            continue;
        std::vector<int32_t> answers = walks.most_answers(start);
        if (answers.size() > DIALOGUE_MAX_CHOICES)
            crowded.insert(answers[DIALOGUE_MAX_CHOICES]);
    }
    for (int32_t entry : crowded)
        report(path, lines[static_cast<size_t>(entry)], "more than %d answers at once: the box offers at most %d",
               DIALOGUE_MAX_CHOICES, DIALOGUE_MAX_CHOICES);
    for (int32_t jump : walks.jumps_back)
        report(path, lines[static_cast<size_t>(jump)], "the jump calls a block it stands in: the game walks it again "
                                               "and again, %d blocks deep", DIALOGUE_MAX_DEPTH);
    for (int32_t i = 0; i < record->entry_count; ++i) {
        const dialogue_entry& e = record->entries[i];
        switch (dialogue_entry_kind_of(record, i)) {
        case DIALOGUE_JUMP:
            if (dialogue_jump_target(record, i) < 0)
                report(path, lines[static_cast<size_t>(i)], "the jump finds no label \"%.*s:\", so its block ends here",
                       static_cast<int>(e.end - e.start - 1), record->text + e.start + 1);
            break;
        case DIALOGUE_ANSWER:
        case DIALOGUE_TEXT:
            check_dialogue_quoted_text(path, record, lines, i);
            break;
        case DIALOGUE_CONDITION:
        case DIALOGUE_STATEMENT:
            check_statement(path, record, lines, i);
            break;
        case DIALOGUE_LABEL:
            // A ":" inside a text line ends the entry there: the game reads the start as a label.
            if (record->text[e.start] == '"')
                report(path, lines[static_cast<size_t>(i)], "the text line ends at its \":\": the game reads it as a "
                                                    "label and the rest of the line as a further entry");
            break;
        case DIALOGUE_ELSE:
            break;
        }
    }
}

// State variables that are shown or tested but that no dialogue sets (in a statement or in a
// condition, which sets as well).
void check_variables(const std::vector<loaded_dialogue>& all)
{
    std::set<std::string> set_somewhere;
    for (const loaded_dialogue& d : all)
        for (int32_t i = 0; i < d.record->entry_count; ++i) {
            dialogue_entry_kind kind = dialogue_entry_kind_of(d.record, i);
            if (kind == DIALOGUE_STATEMENT || kind == DIALOGUE_CONDITION)
                set_somewhere.insert(variable_set_by(tokens_of(d.record, i)));
        }
    set_somewhere.erase("");
    for (const loaded_dialogue& d : all) {
        std::vector<int32_t> lines = entry_lines(d.record);
        for (int32_t i = 0; i < d.record->entry_count; ++i) {
            int32_t line = lines[static_cast<size_t>(i)];
            switch (dialogue_entry_kind_of(d.record, i)) {
            case DIALOGUE_TEXT: {
                int32_t length = 0;
                int closed = 0;
                const char* shown = dialogue_quoted_text(d.record, i, &length, &closed);
                std::string plain;
                for (const std::string& placeholder : placeholders_of(shown, length, &plain)) {
                    int32_t name_length = 0;
                    const char* name = state_variable_name(placeholder.data(), static_cast<int32_t>(placeholder.size()),
                                                           &name_length);
                    if (!name)
                        report(d.path.c_str(), line, "placeholder {%s} is not {state.<name>}: it shows \"<?>\"",
                               placeholder.c_str());
                    else if (!set_somewhere.count(std::string(name, name + name_length)))
                        report(d.path.c_str(), line, "placeholder {%s} names a variable no dialogue sets: it shows "
                                                     "\"<?>\"", placeholder.c_str());
                }
                break;
            }
            case DIALOGUE_CONDITION: {
                std::string name = variable_tested_by(tokens_of(d.record, i));
                if (!name.empty() && !set_somewhere.count(name))
                    report(d.path.c_str(), line, "the condition tests state.%s, which no dialogue sets", name.c_str());
                break;
            }
            default:
                break;
            }
        }
    }
}

} // namespace

void check_dialogues()
{
    std::vector<loaded_dialogue> all = every_loaded_dialogue();
    for (const loaded_dialogue& d : all)
        check_dialogue(d.path.c_str(), d.record);
    check_variables(all);
}
