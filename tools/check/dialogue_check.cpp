// Dialogues, as the game indexed them: whether the top level can offer an answer at all (a
// dialogue that offers none never opens), jumps that find no label, blocks with more answers than
// the box can offer, and answers with nothing to show.
#include <set>
#include <vector>

#include "assets/dialogue.h"
#include "checks.h"

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

bool has_quoted_text(const dialogue* record, int32_t entry)
{
    const dialogue_entry& e = record->entries[entry];
    int quotes = 0;
    for (uint32_t i = e.start; i < e.end; ++i)
        quotes += record->text[i] == '"';
    return quotes >= 2;
}

} // namespace

bool inspect_dialogue(const std::string& path, int32_t index)
{
    if (index < 0) {
        report_problem(path, 0, "cannot be read whole");
        return false;
    }
    const dialogue* record = registry_at<dialogue>(&dialogues, index);
    std::vector<bool> jumped_to(static_cast<size_t>(record->entry_count), false);
    if (!block_may_offer(record, -1, &jumped_to))
        report_problem(path, 0, "offers no answer at its top level, so it never opens");
    std::set<int32_t> crowded; // the first answer past the most, once each
    for (int32_t parent = -1; parent < record->entry_count; ++parent) {
        if (parent >= 0 && !opens_a_block(dialogue_entry_kind_of(record, parent)))
            continue;
        std::vector<int32_t> answers = answers_of_block(record, parent);
        if (answers.size() > DIALOGUE_MOST_ANSWERS)
            crowded.insert(answers[DIALOGUE_MOST_ANSWERS]);
    }
    for (int32_t entry : crowded)
        report_problem(path, entry_line(record, entry), "more than %d answers at once: the box offers at most %d",
                       DIALOGUE_MOST_ANSWERS, DIALOGUE_MOST_ANSWERS);
    for (int32_t i = 0; i < record->entry_count; ++i) {
        dialogue_entry_kind kind = dialogue_entry_kind_of(record, i);
        if (kind == DIALOGUE_JUMP && dialogue_jump_target(record, i) < 0)
            report_problem(path, entry_line(record, i), "the jump finds no label \"%.*s:\", so its block ends here",
                           static_cast<int>(record->entries[i].end - record->entries[i].start - 1),
                           record->text + record->entries[i].start + 1);
        if (kind == DIALOGUE_ANSWER && !has_quoted_text(record, i))
            report_problem(path, entry_line(record, i), "the answer has no text between double quotes to show");
    }
    return true;
}
