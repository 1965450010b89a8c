#include "support/shipped_level.h"

#include <filesystem>
#include <system_error>

#include "assets/start_up.h"
#include "assets/texture.h"
#include "assets/world.h"

int load_shipped_level()
{
    std::error_code failed;
    std::filesystem::current_path(GLOAMHOLD_SOURCE_DIR, failed);
    if (failed)
        return 0;
    return create_player() && make_fallback_texture() >= 0 && reserve_empty_model_and_animation() &&
           reserve_empty_item() && load_items_and_scene();
}
