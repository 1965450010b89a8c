// Checking a named asset: the reference first (can the name be registered, is the file there),
// then the game's loader, then the file read again; each file once.
#include <filesystem>
#include <map>

#include "assets/animation.h"
#include "assets/dialogue.h"
#include "assets/model.h"
#include "assets/registry.h"
#include "assets/sound.h"
#include "assets/texture.h"
#include "checks.h"

namespace {

struct checked_kind {
    const char* noun;   // "texture", ...
    const char* folder; // the game's folder for it
    int32_t (*load)(const char* name);
    bool (*inspect)(const std::string& name, const std::string& path);
    std::map<std::string, int32_t> checked; // name -> the game's index or -1
};

bool inspect_model_named(const std::string&, const std::string& path)
{
    return inspect_model(path);
}

bool inspect_animation_named(const std::string&, const std::string& path)
{
    return inspect_animation(path);
}

bool inspect_dialogue_named(const std::string& name, const std::string& path)
{
    return inspect_dialogue(path, asset_name_find(ASSET_DIALOGUE, name.c_str()));
}

checked_kind textures_kind = {"texture", FOLDER_TEXTURES, find_or_load_texture, inspect_texture, {}};
checked_kind sounds_kind = {"sound", FOLDER_SOUNDS, load_sound, inspect_sound, {}};
checked_kind models_kind = {"model", FOLDER_MODELS, load_model, inspect_model_named, {}};
checked_kind animations_kind = {"animation", FOLDER_ANIMATIONS, load_animation, inspect_animation_named, {}};
checked_kind dialogues_kind = {"dialogue", FOLDER_DIALOGUES, load_dialogue, inspect_dialogue_named, {}};

int32_t check_asset(checked_kind* kind, const std::string& name, const data_reference& from)
{
    std::string path = asset_file(kind->folder, name);
    if (name.size() >= ASSET_NAME_CAPACITY) {
        report_at_reference(from, path,
                            text_of("%s name \"%s\" is longer than 39 characters: the game cannot register it",
                                    kind->noun, name.c_str()));
        return -1;
    }
    if (!std::filesystem::is_regular_file(path)) {
        report_at_reference(from, path, text_of("%s \"%s\" is missing (no file %s)", kind->noun, name.c_str(),
                                                shown_path(path).c_str()));
        return -1;
    }
    auto known = kind->checked.find(name);
    if (known != kind->checked.end())
        return known->second;
    int32_t index = kind->load(name.c_str());
    bool clean = kind->inspect(name, path);
    if (index < 0 && clean)
        report_problem(path, 0, "the game cannot load this %s (the checker found no reason)", kind->noun);
    kind->checked[name] = index;
    return index;
}

} // namespace

std::string asset_file(const char* folder, const std::string& name)
{
    return std::string(DATA_ROOT) + "/" + folder + "/" + name;
}

int32_t check_texture(const std::string& name, const data_reference& from)
{
    return check_asset(&textures_kind, name, from);
}

int32_t check_sound(const std::string& name, const data_reference& from)
{
    return check_asset(&sounds_kind, name, from);
}

int32_t check_model(const std::string& name, const data_reference& from)
{
    return check_asset(&models_kind, name, from);
}

int32_t check_animation(const std::string& name, const data_reference& from)
{
    return check_asset(&animations_kind, name, from);
}

int32_t check_dialogue(const std::string& name, const data_reference& from)
{
    return check_asset(&dialogues_kind, name, from);
}

// Files nobody names are not loaded by the game, but a modder is likely about to name them.
void check_unnamed_files()
{
    checked_kind* kinds[] = {&textures_kind, &sounds_kind, &models_kind, &animations_kind, &dialogues_kind};
    for (checked_kind* kind : kinds) {
        std::string folder = std::string(DATA_ROOT) + "/" + kind->folder;
        std::error_code error;
        std::map<std::string, bool> names; // sorted, so that reports come in a stable order
        for (const auto& entry : std::filesystem::directory_iterator(folder, error))
            if (entry.is_regular_file())
                names[entry.path().filename().string()] = true;
        for (const auto& named : names)
            if (kind->checked.find(named.first) == kind->checked.end())
                check_asset(kind, named.first, {"", 0});
    }
}
