// What no single loader can see, checked after the game's start-up has loaded the data directory
// through its own loaders (which report every problem of a file themselves).
#pragma once

#include <stddef.h>

#include <string>

struct font;

// When the scene loaded whole: rooms whose collision-tree node does not hold their box centre or
// whose space another room claims first, and doors that fill no opening. Always: locks no key opens (when
// the items loaded whole), and
// item names the system font cannot draw.
void check_world(bool scene_loaded);
// After items.xml failed to load: registers, as the placeholder item, the keys it declares that the
// load never reached, so that the scene is checked on its own merits rather than for pickups
// whose items the failed load left out.
void register_unloaded_item_keys();
// Every dialogue loaded, read as the game reads it: whether it can offer an answer at its top (it
// never opens otherwise), jumps that find no label, more answers at once than the box offers,
// statements that never do anything, text lines without their closing quote, text the dialogue
// font cannot draw, and state variables shown or tested that no dialogue sets.
void check_dialogues();
// Every file of the data folders that nothing named, loaded for its own sake by its own loader (the
// game never loads it, but a modder is likely about to name it).
void check_unnamed_files();

// The first problem with drawing text[0, length) in a font: bytes that are neither ASCII nor
// Cyrillic UTF-8 (the game maps them onto other letters), or a character the font has no glyph
// for (unless the font has none at all: it failed to load, which is reported already). Empty
// when there is none.
std::string text_problem(const font* face, const char* font_name, const char* text, size_t length);
