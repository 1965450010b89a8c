// The files of the data folders that nothing named.
#include <filesystem>
#include <set>

#include "assets/animation.h"
#include "assets/dialogue.h"
#include "assets/model.h"
#include "assets/registry.h"
#include "assets/sound.h"
#include "assets/texture.h"
#include "checks.h"
#include "core/diagnostics.h"

namespace {

struct asset_folder {
    const char* noun;
    const char* folder;
    uint8_t kind;
    int32_t (*load)(const char* name);
};

const asset_folder ASSET_FOLDERS[] = {
    {"texture", FOLDER_TEXTURES, ASSET_TEXTURE, find_or_load_texture},
    {"sound", FOLDER_SOUNDS, ASSET_SOUND, load_sound},
    {"model", FOLDER_MODELS, ASSET_MODEL, load_model},
    {"animation", FOLDER_ANIMATIONS, ASSET_ANIMATION, load_animation},
    {"dialogue", FOLDER_DIALOGUES, ASSET_DIALOGUE, load_dialogue},
};

} // namespace

void check_unnamed_files()
{
    for (const asset_folder& kind : ASSET_FOLDERS) {
        std::error_code error;
        std::set<std::string> names; // sorted, so that reports come in a stable order
        for (const auto& entry :
             std::filesystem::directory_iterator(std::string(DATA_ROOT) + "/" + kind.folder, error))
            if (entry.is_regular_file())
                names.insert(entry.path().filename().string());
        for (const std::string& name : names) {
            if (asset_name_find(kind.kind, name.c_str()) >= 0)
                continue;
            int32_t reported = diagnostics_reported;
            if (kind.load(name.c_str()) < 0)
                report_unloaded(reported, kind.noun, kind.folder, name.c_str(), nullptr, 0);
        }
    }
}
