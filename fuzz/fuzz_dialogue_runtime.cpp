#include <string.h>

#include "assets/dialogue.h"
#include "core/loop_state.h"
#include "fuzz_data_folder.h"
#include "game/dialogue.h"

// The input is statements, one a line, that set and test variables, then a zero byte and the
// script. The script is opened as a character's dialogue is, its answers picked in an order the
// input's first bytes choose, so that walks, statements and placeholders meet fuzzed variables.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    fuzz_fresh_world();
    reset_dialogue_runtime();
    const uint8_t* split = static_cast<const uint8_t*>(memchr(data, 0, size));
    size_t statements_size = split ? static_cast<size_t>(split - data) : 0;
    const char* statements = reinterpret_cast<const char*>(data);
    for (size_t start = 0; start < statements_size;) {
        const char* end = static_cast<const char*>(memchr(statements + start, '\n', statements_size - start));
        size_t length = end ? static_cast<size_t>(end - statements) - start : statements_size - start;
        eval_statement(statements + start, static_cast<int32_t>(length));
        start += length + 1;
    }
    size_t script_start = split ? statements_size + 1 : 0;
    fuzz_write_data("dialogues/fuzz.dlg", data + script_start, size - script_start);
    game_time = static_cast<float>(size % 97) / 13.0f;
    int32_t index = load_dialogue("fuzz.dlg");
    if (index >= 0 && start_dialogue(index)) {
        for (size_t pick = 0; pick < 6 && dialogue_state.choice_count > 0; ++pick) {
            for (int32_t i = 0; i < dialogue_state.choice_count; ++i) {
                int32_t length = 0;
                dialogue_answer_text(dialogue_state.choices[i], &length);
            }
            uint8_t choice = pick < size ? data[pick] : 0;
            pick_choice(choice % (DIALOGUE_MAX_CHOICES + 1));
        }
    }
    reset_dialogue_runtime();
    return 0;
}
