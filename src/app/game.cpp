#include "app/game.h"

#include <math.h>

#include "app/start_up.h"
#include "assets/model.h"
#include "assets/texture.h"
#include "assets/world.h"
#include "audio/mixer.h"
#include "core/debug_flags.h"
#include "core/key_codes.h"
#include "core/loop_state.h"
#include "core/numbers.h"
#include "core/settings.h"
#include "game/dialogue.h"
#include "game/interaction.h"
#include "game/light_styles.h"
#include "game/player.h"
#include "render/bands.h"
#include "render/colour_tables.h"
#include "render/debug_draw.h"
#include "render/frame.h"
#include "render/occlusion.h"
#include "render/raster.h"
#include "render/sky.h"
#include "render/visibility.h"
#include "render/world_pass.h"
#include "ui/debug_overlay.h"
#include "ui/dialogue_box.h"
#include "ui/font.h"
#include "ui/hud.h"
#include "ui/item_views.h"

float fov_target;
float fov_current;
char death_text[] = "You Are Dead!";
void (*frame_pass_ended)(frame_pass pass);

// ---- Start-up ---------------------------------------------------------------------------------

int game_init()
{
    if (!audio_open(AUDIO_DEFAULT_DEVICE, GAME_AUDIO_RATE, GAME_AUDIO_CHANNELS, GAME_AUDIO_BITS,
                    GAME_AUDIO_BLOCK_BYTES))
        return 0;
    if (!depth_buffer_create() || !occlusion_buffers_create())
        return 0;
    build_colour_tables();
    render_threads = render_thread_count(RENDER_THREADS);
    game_time = 0.0f;
    fov_current = FOV * DEGREES_TO_RADIANS;
    clear_player_motion();
    clear_interaction();
    return run_start_up_steps();
}

// ---- One update -------------------------------------------------------------------------------

static void flip(int32_t* flag)
{
    *flag = *flag == 0 ? 1 : 0;
}

struct debug_key {
    uint8_t code;
    int32_t* flag;
};

// F9 to F11 flip the rendering settings themselves.
static const debug_key debug_keys[] = {
    {KEYCODE_F1 + 0, &debug_info},
    {KEYCODE_F1 + 1, &debug_wireframe},
    {KEYCODE_F1 + 2, &debug_show_colliders},
    {KEYCODE_F1 + 3, &debug_show_areas},
    {KEYCODE_F1 + 4, &debug_lighting},
    {KEYCODE_F1 + 5, &debug_show_occlusion},
    {KEYCODE_F1 + 6, &debug_show_lookup_tables},
    {KEYCODE_F1 + 7, &debug_portal_culling},
    {KEYCODE_F1 + 8, &LIGHT_DITHERING},
    {KEYCODE_F1 + 9, &TEXTURE_INTERPOLATION},
    {KEYCODE_F1 + 10, &TEXTURE_DITHERING},
};

// Only a key that went down since the last update flips its switch, once. Texture dithering is
// applied when textures are converted, so flipping it converts every texture again at once.
static void toggle_debug_flags()
{
    for (const debug_key& key : debug_keys) {
        if (key_state[key.code] != KEY_PRESSED)
            continue;
        flip(key.flag);
        if (key.code == KEYCODE_F11) {
            reload_textures();
            show_message(texture_reload_message);
        }
    }
}

// Mouse capture, time scaling and zoom.
static void apply_control_keys()
{
    if (key_state[KEYCODE_LBUTTON] != KEY_UP && mouse_captured == 0) {
        mouse_captured = 1;
        key_state[KEYCODE_LBUTTON] = KEY_UP; // the click that captures the mouse is not seen by gameplay
    }
    if (key_state[KEYCODE_ESCAPE] != KEY_UP)
        mouse_captured = 0;
    if (key_state[KEYCODE_BACKSPACE] != KEY_UP)
        tick_dt *= 0.25f;
    if (key_state[KEYCODE_ADD] != KEY_UP)
        tick_dt *= 10.0f;
    if (key_state[KEYCODE_MBUTTON] != KEY_UP || key_state[KEYCODE_Z] != KEY_UP)
        fov_target = static_cast<float>(FOV / 1.5 * static_cast<double>(DEGREES_TO_RADIANS));
    else
        fov_target = FOV * DEGREES_TO_RADIANS;
}

// Every object slot, in use or not, remembers where it was for the frames drawn until the next update.
static void remember_previous_placements()
{
    for (int32_t i = 0; i < objects.count; ++i) {
        object* o = registry_at<object>(&objects, i);
        o->previous_position = o->position;
        o->previous_yaw = o->yaw;
        o->previous_pitch = o->pitch;
    }
}

// Objects taken out of the world during the update (picked up) give their slots back.
static void release_removed_objects()
{
    for (int32_t i = 0; i < objects.count; ++i)
        if (registry_in_use(&objects, i) && registry_at<object>(&objects, i)->removed != 0)
            registry_free(&objects, i);
}

void game_update()
{
    toggle_debug_flags();
    // While a dialogue is open the mouse and the keys belong to it: only the view widens back.
    if (dialogue_state.active)
        fov_target = FOV * DEGREES_TO_RADIANS;
    else
        apply_control_keys();
    // Eases toward the target with the update's own (possibly scaled) length.
    fov_current += (1.0f - expf(-16.0f * tick_dt)) * (fov_target - fov_current);
    remember_previous_placements();
    update_light_styles();
    if (dialogue_state.active) {
        update_dialogue(); // the world waits while the player talks
    } else {
        // Only a living player uses things; doors swing and the player moves (or, dead, sinks) either way.
        object* player = registry_at<object>(&objects, PLAYER_OBJECT);
        if (player->health > 0) {
            update_interaction(view_forward(player));
            update_inventory();
        }
        update_doors();
        update_player(player);
    }
    release_removed_objects();
}

// ---- One frame --------------------------------------------------------------------------------

enum : uint16_t { DEATH_TEXT_COLOUR = 0xFFFF };
constexpr float EYE_HEIGHT = 1.75f;
constexpr float PITCH_LIMIT = 1.5707964f;

// Mouse-look turns the player once per frame, not per update, and is not interpolated.
static void apply_mouse_look(object* player)
{
    if (!mouse_captured)
        return;
    player->yaw -= mouse_delta_x * 0.001f * MOUSE_SENSITIVITY_X;
    float pitch = player->pitch - mouse_delta_y * 0.001f * MOUSE_SENSITIVITY_Y;
    player->pitch = pitch < -PITCH_LIMIT ? -PITCH_LIMIT : (pitch > PITCH_LIMIT ? PITCH_LIMIT : pitch);
}

static float interpolate(float previous, float current)
{
    return previous + (current - previous) * render_alpha;
}

// The eye at the player's interpolated feet, raised by the eye height and the head bob.
static void set_up_camera(const object* player)
{
    view_mapping_update();
    camera_position[0] = interpolate(player->previous_position.x, player->position.x);
    camera_position[1] = interpolate(player->previous_position.y, player->position.y) - EYE_HEIGHT -
                         player_motion.bob_offset;
    camera_position[2] = interpolate(player->previous_position.z, player->position.z);
    camera_yaw_sin = sinf(player->yaw);
    camera_yaw_cos = cosf(player->yaw);
    camera_pitch_sin = sinf(player->pitch);
    camera_pitch_cos = cosf(player->pitch);
    camera_fov = fov_current;
    projection_scale = 1.0f / tanf(fov_current * 0.5f);
    float width = static_cast<float>(frame_width), height = static_cast<float>(frame_height);
    float aspect_x = width / height > 1.0f ? width / height : 1.0f;
    float aspect_y = height / width > 1.0f ? height / width : 1.0f;
    build_frustum(aspect_x, aspect_y, projection_scale);
}

// Textures that failed to load pulse between shade 0.25 and 0.75.
static void pulse_fallback_texture()
{
    registry_at<texture>(&textures, fallback_texture)->e_level =
        static_cast<float>(sin(real_time * 10.0) * 0.25 + 0.5);
}

static void end_pass(frame_pass pass)
{
    if (frame_pass_ended)
        frame_pass_ended(pass);
}

static const model* object_model(int32_t object_index)
{
    return registry_at<model>(&models, registry_at<object>(&objects, object_index)->model);
}

// The objects of the draw list that the occlusion buffer leaves visible, nearest first: what a
// near surface hides then fails the depth test before it costs anything. Drawing_rank and the
// deferred list's regrouping make the frame come out as drawing the list in its order makes it.
// The debug views that draw lines while objects are drawn keep the list's order.
static void draw_visible_objects()
{
    const int32_t* order = nullptr;
    if (!debug_wireframe && !debug_show_colliders && draw_list_count <= UINT16_MAX)
        order = draw_list_nearest_first();
    if (order && !begin_deferring_by_place(draw_list_count))
        order = nullptr;
    for (int32_t k = 0; k < draw_list_count; ++k) {
        int32_t place = order ? order[k] : k;
        const draw_record* record = &draw_list[place];
        if (box_occluded(&record->box))
            continue;
        if (order) {
            drawing_rank = static_cast<uint16_t>(place + 1);
            defer_for_place(place);
        }
        draw_scene_object(record->object, &record->place, record->area);
    }
    drawing_rank = 0;
    if (order)
        regroup_deferred_triangles();
}

// Visibility, the sky into every open block, the objects that are not hidden, then the
// translucent triangles farthest first. With more than one thread, the sky and the objects are
// recorded, and drawn in bands by the other threads as they are recorded.
static void draw_world()
{
    if (debug_portal_culling)
        cull_portals();
    build_draw_list();
    end_pass(FRAME_PASS_VISIBILITY);
    for (int32_t i = 0; i < draw_list_count; ++i) {
        const draw_record* record = &draw_list[i];
        rasterize_occluders(object_model(record->object), &record->place);
    }
    reduce_occlusion_buffer();
    end_pass(FRAME_PASS_OCCLUSION);
    begin_band_recording();
    draw_sky();
    end_pass(FRAME_PASS_SKY);
    draw_visible_objects();
    end_pass(FRAME_PASS_OPAQUE);
    sort_deferred_triangles();
    draw_deferred_triangles();
    end_pass(FRAME_PASS_TRANSLUCENT);
    draw_recorded_bands();
    end_pass(FRAME_PASS_BANDS);
}

// A red picture (each pixel's blue moves into red, all else is dropped, by one shift of the
// pixel) and, one second in two, the death text in the middle.
static void draw_death_screen()
{
    int32_t pixels = frame_width * frame_height;
    for (int32_t i = 0; i < pixels; ++i)
        color_buffer[i] = static_cast<uint16_t>(color_buffer[i] << 10);
    if (fmodf(game_time - player_motion.death_time, 2.0f) > 1.0f) {
        int32_t x = (frame_width - text_width(death_text, -1, &font_dialogue)) / 2;
        int32_t y = (frame_height - static_cast<int32_t>(font_dialogue.line_height)) / 2;
        draw_text(x, y, death_text, -1, &font_dialogue, DEATH_TEXT_COLOUR);
    }
}

// What is drawn over the picture during play: the inventory's item views, then the prompt for
// what E does, the message line and the health line.
static void draw_play_overlay()
{
    draw_item_views();
    draw_interaction_prompt();
    draw_message();
    draw_health();
}

void game_render()
{
    object* player = registry_at<object>(&objects, PLAYER_OBJECT);
    apply_mouse_look(player);
    set_up_camera(player);
    depth_buffer_clear();
    reset_deferred_triangles();
    pulse_fallback_texture();
    end_pass(FRAME_PASS_SETUP);
    draw_world();
    if (dialogue_state.active)
        draw_dialogue();
    else if (player_motion.dead_flag)
        draw_death_screen();
    else
        draw_play_overlay();
    if (debug_show_occlusion)
        draw_occlusion_view();
    if (debug_show_areas)
        draw_areas_and_portals();
    if (debug_show_colliders)
        draw_contact_panel();
    if (debug_info)
        draw_player_panel();
    if (debug_show_lookup_tables)
        draw_lookup_table_view();
    end_pass(FRAME_PASS_OVERLAYS);
}
