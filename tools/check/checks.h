// The checks of one data directory. Every asset goes through the game's own loader first; then,
// whatever the loader said (it reports nothing by design), the checker reads the file again to
// report each problem with its line. An asset is read once, however often it is named; a name that
// cannot be registered or a file that is missing is reported at every place that names it.
#pragma once

#include <stdint.h>

#include <string>

#include "report.h"

// "gloamhold_data/<folder>/<name>", as the game builds it.
std::string asset_file(const char* folder, const std::string& name);

// Each returns the index the game's loader gave, or -1 when the game cannot load the asset.
// `from` names the reference; an empty path means the asset is checked for its own sake.
int32_t check_texture(const std::string& name, const data_reference& from);
int32_t check_sound(const std::string& name, const data_reference& from);
int32_t check_model(const std::string& name, const data_reference& from);
int32_t check_animation(const std::string& name, const data_reference& from);
int32_t check_dialogue(const std::string& name, const data_reference& from);

struct font;

// A font file, loaded into `record` as the game loads it: 1 when it loads.
int check_font(const std::string& path, font* record);
// The first problem with drawing text[0, length) in a font: bytes that are neither ASCII nor
// Cyrillic UTF-8 (the game maps them onto other letters), or a character the font has no glyph
// for (unless the font has none at all: it failed to load, which is reported already). Empty
// when there is none.
std::string text_problem(const font* face, const char* font_name, const char* text, size_t length);

// How each kind of file is read again for its problems: true when the game's rules let it load
// (problems that the game lets pass, such as an unknown material, are reported all the same).
bool inspect_texture(const std::string& name, const std::string& path);
bool inspect_sound(const std::string& name, const std::string& path);
bool inspect_model(const std::string& path);
bool inspect_animation(const std::string& path);
bool inspect_dialogue(const std::string& path, int32_t index); // the game's record, -1 when it failed
bool inspect_collision_tree(const std::string& path);

// The two XML files, after the game has loaded them (`loaded` is what its loader said).
void check_items(const std::string& path, int loaded);
void check_scene(const std::string& path, int loaded);
// The item keys that items.xml declares, whether or not the game got as far as registering them,
// and whether one of its keys opens a lock.
bool item_key_declared(const std::string& key);
bool some_key_opens(int32_t lock);

// Every file of the data folders that nothing named (the game does not load those).
void check_unnamed_files();
// Across all dialogues loaded: state variables that are shown or tested but that no dialogue sets.
void check_dialogue_variables();
