#include "assets/dialogue.h"
#include "fuzz_input_file.h"

enum { JUMPS_FOLLOWED = 64 }; // each search is linear: a few are enough to cover it

// Every entry of an indexed script is classified and its block found; some jumps find their label.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    dialogue record;
    if (!dialogue_load_file(&record, fuzz_input_file(data, size)))
        return 0;
    int32_t jumps = 0;
    for (int32_t i = 0; i < record.entry_count; ++i) {
        dialogue_block_level(&record, i);
        if (dialogue_entry_kind_of(&record, i) == DIALOGUE_JUMP && jumps++ < JUMPS_FOLLOWED)
            dialogue_jump_target(&record, i);
    }
    dialogue_block_level(&record, -1);
    dialogue_free(&record);
    return 0;
}
