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
