// Conversations: plain text files under gloamhold_data/dialogues whose structure is carried by
// indentation, like an outline. Loading keeps the whole text and indexes its entries; the dialogue
// runtime walks that index.
#pragma once

#include <stdint.h>

#include "assets/registry.h"

struct dialogue_entry {
    uint8_t indent;  // spaces and tabs in front, each counting 1 (plus the speaker's after a ":")
    uint32_t start;  // offset of the first character in the text
    uint32_t end;    // offset one past the last
};

struct dialogue {
    char* text;             // the file's bytes (heap block of exactly its size)
    uint64_t size;
    int32_t entry_count;
    int32_t cursor;         // the conversation's run-time position; 0 after loading
    dialogue_entry* entries; // heap block of entry_count entries (null when there are none)
};

enum { DIALOGUE_ENTRY_GROWTH = 128 };

extern registry dialogues;

// Indexes `size` bytes of `text` into the record (which takes over `text` on success):
// - a carriage return or line feed resets the indent to 0;
// - a "#" at the start of a line, or right after a ":", comments out the rest of the line, while
//   an indented "#" is ordinary text;
// - otherwise spaces and tabs add to the indent and an entry runs to the end of the line, or up to
//   and including a ":" after which the rest of the line is a further entry, the indent carried on.
// A zero byte ends the text. The entry list grows by 128 and is shrunk to its count at the end.
int dialogue_index(dialogue* record, char* text, uint64_t size);
// Reads the whole file and indexes it; 0 (nothing left allocated) when it cannot.
int dialogue_load_file(dialogue* record, const char* path);
// Releases the text and the entries and zeroes the record. Always 1.
int dialogue_free(dialogue* record);

// The index registered for the name, else the dialogue is loaded into a new slot; -1 on failure.
int32_t load_dialogue(const char* name);

// What an entry does when the conversation is walked, told from its text alone.
enum dialogue_entry_kind : uint8_t {
    DIALOGUE_CONDITION, // "if <condition>:" runs its block when the condition holds
    DIALOGUE_ELSE,      // "else:" runs its block when the last condition before it did not hold
    DIALOGUE_ANSWER,    // "> ...:" offers an answer (its text between the first pair of double quotes)
    DIALOGUE_LABEL,     // any other entry ending in ":", a speaker's name too; its block runs when jumped to
    DIALOGUE_TEXT,      // a line to show, in double quotes
    DIALOGUE_JUMP,      // "@<label>": walks the label's block, then goes on
    DIALOGUE_STATEMENT, // anything else: sets or tests a state variable
};

// The kind of an entry that the record holds.
dialogue_entry_kind dialogue_entry_kind_of(const dialogue* record, int32_t entry);
// The indent of the entries that make up the block under `parent`: that of the entry right after
// it (-1, the top, takes entry 0's); -1 when no entry follows, so the block is empty.
int32_t dialogue_block_level(const dialogue* record, int32_t parent);
// Where a jump goes: the first entry ending in ":" whose text begins with the jump's label,
// compared over the label's length only ("@end" also finds "ending:" when that comes first);
// -1 when there is none.
int32_t dialogue_jump_target(const dialogue* record, int32_t jump);
