#include "support/shipped_level.h"

#include <filesystem>
#include <system_error>

#include "assets/animation.h"
#include "assets/item.h"
#include "assets/model.h"
#include "assets/scene.h"
#include "assets/texture.h"
#include "assets/world.h"

int load_shipped_level()
{
    std::error_code failed;
    std::filesystem::current_path(GLOAMHOLD_SOURCE_DIR, failed);
    if (failed)
        return 0;
    return create_player() && make_fallback_texture() >= 0 && registry_claim(&models) == 0 &&
           registry_claim(&animations) == 0 && registry_claim(&items) == 0 &&
           load_items("gloamhold_data/items.xml") && load_scene("gloamhold_data/scene.xml");
}
