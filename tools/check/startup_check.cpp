// The game's start-up, step by step in its own order, with its own loaders: the two fonts, the
// fallback texture, the six sky textures, the empty model and animation, the fixed sounds, the
// empty item, items.xml and scene.xml. The game stops at the first step that fails; the checker
// goes on, to find every problem, and says at the end where the game would stop.
#include "startup_check.h"

#include <filesystem>

#include "assets/animation.h"
#include "assets/item.h"
#include "assets/model.h"
#include "assets/scene.h"
#include "assets/texture.h"
#include "assets/world.h"
#include "checks.h"
#include "game/fixed_sounds.h"
#include "render/sky.h"
#include "ui/font.h"

namespace {

struct game_font {
    const char* path;
    font* record;
};
const game_font FONTS[] = {{"gloamhold_data/fonts/font_system.fnt", &font_system},
                           {"gloamhold_data/fonts/font_dialogue.fnt", &font_dialogue}};

std::string first_failure;    // the step at which the game would stop, empty while none failed
int32_t problems_before_step; // problems reported before the step now ending

// The end of one step of the start-up. The step where the game would stop always leaves a problem
// in the report (later steps fail too when they need what failed: the game never gets there).
void step_done(bool ok, const std::string& step)
{
    if (!ok && first_failure.empty()) {
        if (problem_count() == problems_before_step)
            report_problem(step, 0, "the game's start-up fails here (the checker found no reason)");
        first_failure = step;
    }
    problems_before_step = problem_count();
}

// A texture or sound that the game loads by itself, not because the data names it.
bool startup_asset(int32_t (*check)(const std::string&, const data_reference&), const char* folder,
                   const char* role, const std::string& name)
{
    std::string path = asset_file(folder, name);
    if (!std::filesystem::is_regular_file(path)) {
        report_problem(path, 0, "missing: the game loads this %s at start-up and cannot start without it", role);
        return false;
    }
    return check(name, {"", 0}) >= 0;
}

} // namespace

void check_startup()
{
    step_done(create_player() != 0, "the player object");
    for (const game_font& face : FONTS)
        step_done(check_font(face.path, face.record) != 0, face.path);
    step_done(make_fallback_texture() >= 0, "the fallback texture");
    for (const char* sky : sky_texture_names)
        step_done(startup_asset(check_texture, FOLDER_TEXTURES, "sky texture", sky), asset_file(FOLDER_TEXTURES, sky));
    step_done(registry_claim(&models) == 0 && registry_claim(&animations) == 0, "the empty model and animation");
    for (const fixed_sound& sound : fixed_sounds)
        step_done(startup_asset(check_sound, FOLDER_SOUNDS, "sound", sound.name),
                  asset_file(FOLDER_SOUNDS, sound.name));
    step_done(registry_claim(&items) == 0, "the empty item");
    const char* items_file = "gloamhold_data/items.xml";
    const char* scene_file = "gloamhold_data/scene.xml";
    int items_loaded = load_items(items_file);
    check_items(items_file, items_loaded);
    step_done(items_loaded != 0, items_file);
    int scene_loaded = load_scene(scene_file);
    check_scene(scene_file, scene_loaded);
    step_done(scene_loaded != 0, scene_file);
}

std::string startup_stop()
{
    return first_failure;
}
