// Dialogues, as the game indexed them: whether the top level can offer an answer at all (a
// dialogue that offers none never opens), jumps that find no label, blocks with more answers than
// the box can offer, answers with nothing to show, characters the dialogue font lacks, and state
// variables that are shown or tested but never set.
#include <set>
#include <vector>

#include "assets/dialogue.h"
#include "checks.h"
#include "core/diagnostics.h"
#include "ui/font.h"

namespace {

enum { DIALOGUE_MOST_ANSWERS = 8 };

int32_t entry_line(const dialogue* record, int32_t entry)
{
    int32_t line = 1;
    for (uint32_t i = 0; i < record->entries[entry].start; ++i)
        line += record->text[i] == '\n';
    return line;
}

bool opens_a_block(dialogue_entry_kind kind)
{
    return kind == DIALOGUE_CONDITION || kind == DIALOGUE_ELSE || kind == DIALOGUE_ANSWER || kind == DIALOGUE_LABEL;
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

// The answers that stand directly in the block under `parent` (-1: the top).
std::vector<int32_t> answers_of_block(const dialogue* record, int32_t parent)
{
    std::vector<int32_t> answers;
    int32_t level = dialogue_block_level(record, parent);
    for (int32_t i = parent + 1; level >= 0 && i < record->entry_count; ++i) {
        int32_t indent = record->entries[i].indent;
        if (indent < level)
            break;
        if (indent == level && dialogue_entry_kind_of(record, i) == DIALOGUE_ANSWER)
            answers.push_back(i);
    }
    return answers;
}

std::string entry_text(const dialogue* record, int32_t entry)
{
    const dialogue_entry& e = record->entries[entry];
    return std::string(record->text + e.start, record->text + e.end);
}

// What a text line or an answer shows: the text between its first two double quotes, which must be there.
bool quoted_part(const std::string& text, std::string* shown)
{
    size_t open = text.find('"');
    size_t close = open == std::string::npos ? open : text.find('"', open + 1);
    if (close == std::string::npos)
        return false;
    *shown = text.substr(open + 1, close - open - 1);
    return true;
}

// The placeholders "{...}" of a shown text (one left open runs to the end), and the text without them.
std::vector<std::string> placeholders_of(const std::string& shown, std::string* plain)
{
    std::vector<std::string> found;
    plain->clear();
    for (size_t i = 0; i < shown.size(); ++i) {
        if (shown[i] != '{') {
            *plain += shown[i];
            continue;
        }
        size_t close = shown.find('}', i);
        size_t end = close == std::string::npos ? shown.size() : close;
        found.push_back(shown.substr(i + 1, end - i - 1));
        i = end;
    }
    return found;
}

void check_shown_text(const char* path, const dialogue* record, int32_t entry)
{
    std::string shown, plain;
    if (!quoted_part(entry_text(record, entry), &shown)) {
        if (dialogue_entry_kind_of(record, entry) == DIALOGUE_ANSWER)
            report(path, entry_line(record, entry), "the answer has no text between double quotes to show");
        return;
    }
    placeholders_of(shown, &plain);
    std::string drawing = text_problem(&font_dialogue, "dialogue font", plain.c_str(), plain.size());
    if (!drawing.empty())
        report(path, entry_line(record, entry), "%s", drawing.c_str());
}

// A statement or condition split as the game splits it: up to three tokens, blanks between the
// first two, the third the whole rest.
std::vector<std::string> statement_tokens(const std::string& text)
{
    std::vector<std::string> tokens;
    size_t i = 0;
    while (i < text.size() && tokens.size() < 3) {
        while (i < text.size() && (text[i] == ' ' || text[i] == '\t'))
            ++i;
        if (i >= text.size())
            break;
        size_t end = tokens.size() == 2 ? text.size() : text.find_first_of(" \t", i);
        if (end == std::string::npos)
            end = text.size();
        tokens.push_back(text.substr(i, end - i));
        i = end;
    }
    return tokens;
}

const char* const STATE_PREFIX = "state.";

// The variable a token names ("state.<name>", or "!state.<name>" when `negation_allowed`), else "".
std::string variable_of(const std::string& token, bool negation_allowed)
{
    size_t from = negation_allowed && !token.empty() && token[0] == '!' ? 1 : 0;
    if (token.compare(from, 6, STATE_PREFIX) != 0)
        return "";
    return token.substr(from + 6);
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

// One dialogue's blocks, jumps and shown text.
void check_dialogue(const char* path, const dialogue* record)
{
    std::vector<bool> jumped_to(static_cast<size_t>(record->entry_count), false);
    if (!block_may_offer(record, -1, &jumped_to))
        report(path, 0, "offers no answer at its top level, so it never opens");
    std::set<int32_t> crowded; // the first answer past the most, once each
    for (int32_t parent = -1; parent < record->entry_count; ++parent) {
        if (parent >= 0 && !opens_a_block(dialogue_entry_kind_of(record, parent)))
            continue;
        std::vector<int32_t> answers = answers_of_block(record, parent);
        if (answers.size() > DIALOGUE_MOST_ANSWERS)
            crowded.insert(answers[DIALOGUE_MOST_ANSWERS]);
    }
    for (int32_t entry : crowded)
        report(path, entry_line(record, entry), "more than %d answers at once: the box offers at most %d",
               DIALOGUE_MOST_ANSWERS, DIALOGUE_MOST_ANSWERS);
    for (int32_t i = 0; i < record->entry_count; ++i) {
        dialogue_entry_kind kind = dialogue_entry_kind_of(record, i);
        if (kind == DIALOGUE_JUMP && dialogue_jump_target(record, i) < 0)
            report(path, entry_line(record, i), "the jump finds no label \"%.*s:\", so its block ends here",
                   static_cast<int>(record->entries[i].end - record->entries[i].start - 1),
                   record->text + record->entries[i].start + 1);
        if (kind == DIALOGUE_ANSWER || kind == DIALOGUE_TEXT)
            check_shown_text(path, record, i);
    }
}

// State variables that are shown or tested but that no dialogue sets.
void check_variables(const std::vector<loaded_dialogue>& all)
{
    std::set<std::string> set_somewhere;
    for (const loaded_dialogue& d : all)
        for (int32_t i = 0; i < d.record->entry_count; ++i) {
            if (dialogue_entry_kind_of(d.record, i) != DIALOGUE_STATEMENT)
                continue;
            std::vector<std::string> tokens = statement_tokens(entry_text(d.record, i));
            if (tokens.size() == 3 && tokens[1] == "=" && !variable_of(tokens[0], false).empty())
                set_somewhere.insert(variable_of(tokens[0], false));
        }
    for (const loaded_dialogue& d : all)
        for (int32_t i = 0; i < d.record->entry_count; ++i) {
            std::string text = entry_text(d.record, i);
            int32_t line = entry_line(d.record, i);
            switch (dialogue_entry_kind_of(d.record, i)) {
            case DIALOGUE_TEXT: {
                std::string shown, plain;
                if (!quoted_part(text, &shown))
                    break;
                for (const std::string& placeholder : placeholders_of(shown, &plain)) {
                    std::string name = variable_of(placeholder, false);
                    if (name.empty())
                        report(d.path.c_str(), line, "placeholder {%s} is not {state.<name>}: it shows \"<?>\"",
                                       placeholder.c_str());
                    else if (!set_somewhere.count(name))
                        report(d.path.c_str(), line, "placeholder {%s} names a variable no dialogue sets: it shows "
                                       "\"<?>\"", placeholder.c_str());
                }
                break;
            }
            case DIALOGUE_CONDITION: {
                // The condition stands between "if " and the final ":".
                std::vector<std::string> tokens = statement_tokens(text.substr(3, text.size() - 4));
                std::string name = tokens.empty() ? "" : variable_of(tokens[0], tokens.size() == 1);
                if (!name.empty() && !set_somewhere.count(name))
                    report(d.path.c_str(), line, "the condition tests state.%s, which no dialogue sets", name.c_str());
                break;
            }
            default:
                break;
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
