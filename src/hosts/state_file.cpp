#include "hosts/state_file.h"

#include <math.h>
#include <stdlib.h>
#include <string.h>

#include "assets/item.h"
#include "assets/registry.h"
#include "assets/world.h"
#include "game/dialogue.h"
#include "game/interaction.h"
#include "core/loop_state.h"
#include "core/settings.h"
#include "game/player.h"
#include "hosts/run_watch.h"
#include "render/visibility.h"

void json_float(char* buffer, size_t capacity, float value)
{
    if (!isfinite(value)) {
        snprintf(buffer, capacity, "null");
        return;
    }
    // Plain decimals where they read well, the exponent form for very large or small magnitudes;
    // either way the fewest digits that give the same float back.
    float magnitude = fabsf(value);
    int plain = magnitude == 0.0f || (magnitude >= 1e-4f && magnitude < 1e15f);
    for (int digits = 1; digits <= 17; ++digits) {
        snprintf(buffer, capacity, plain ? "%.*f" : "%.*g", digits, static_cast<double>(value));
        if (strtof(buffer, nullptr) == value)
            break;
    }
    if (!strpbrk(buffer, ".e"))
        strncat(buffer, ".0", capacity - strlen(buffer) - 1);
}

static void json_string(FILE* file, const char* text)
{
    fputc('"', file);
    for (const unsigned char* c = reinterpret_cast<const unsigned char*>(text); *c; ++c) {
        if (*c == '"' || *c == '\\')
            fprintf(file, "\\%c", *c);
        else if (*c < 0x20)
            fprintf(file, "\\u%04x", *c);
        else
            fputc(*c, file);
    }
    fputc('"', file);
}

static void write_float_field(FILE* file, const char* name, float value, const char* after)
{
    char number[48];
    json_float(number, sizeof number, value);
    fprintf(file, "\"%s\": %s%s", name, number, after);
}

static void write_settings(FILE* file)
{
    fprintf(file, " \"settings\": {\"FPS\": %d, \"UPS\": %d, \"SCREEN_RESOLUTION\": [%d, %d], ", FPS, UPS,
            SCREEN_RESOLUTION.width, SCREEN_RESOLUTION.height);
    write_float_field(file, "SCREEN_SCALE", SCREEN_SCALE, ",\n              ");
    write_float_field(file, "MOUSE_SENSITIVITY_X", MOUSE_SENSITIVITY_X, ", ");
    write_float_field(file, "MOUSE_SENSITIVITY_Y", MOUSE_SENSITIVITY_Y, ", ");
    write_float_field(file, "AUDIO_VOLUME", AUDIO_VOLUME, ",\n              ");
    write_float_field(file, "FOV", FOV, ", ");
    fprintf(file,
            "\"TEXTURE_INTERPOLATION\": %d, \"TEXTURE_DITHERING\": %d,\n              "
            "\"LIGHT_DITHERING\": %d, \"ENABLE_HEAD_BOBBING\": %d},\n",
            TEXTURE_INTERPOLATION, TEXTURE_DITHERING, LIGHT_DITHERING, ENABLE_HEAD_BOBBING);
}

static void write_sounds(FILE* file, const sound_start_log* sounds)
{
    fprintf(file, ",\n \"sounds\": [");
    for (int32_t i = 0; i < sounds->count; ++i) {
        const sound_start& start = sounds->entries[i];
        fprintf(file, "%s{\"tick\": %d, \"sound\": %d, \"name\": ", i ? ",\n            " : "", start.tick,
                start.sound);
        const char* name = asset_name_of(ASSET_SOUND, start.sound);
        if (name)
            json_string(file, name);
        else
            fprintf(file, "null");
        fputc('}', file);
    }
    fprintf(file, "]");
}

static void write_vec3_field(FILE* file, const char* name, vec3 value, const char* after)
{
    char x[48], y[48], z[48];
    json_float(x, sizeof x, value.x);
    json_float(y, sizeof y, value.y);
    json_float(z, sizeof z, value.z);
    fprintf(file, "\"%s\": [%s, %s, %s]%s", name, x, y, z, after);
}

// The player's object and movement state, once start-up has made the player.
static void write_player(FILE* file)
{
    if (!registry_in_use(&objects, PLAYER_OBJECT))
        return;
    const object* player = registry_at<object>(&objects, PLAYER_OBJECT);
    fprintf(file, " \"player\": {");
    write_vec3_field(file, "position", player->position, ", ");
    write_float_field(file, "yaw", player->yaw, ", ");
    write_float_field(file, "pitch", player->pitch, ", ");
    fprintf(file, "\"health\": %d,\n            \"health_max\": %d, \"on_ground\": %d, ", player->health,
            player->health_max, player_motion.on_ground);
    write_float_field(file, "ground_level", player_motion.ground_level, ", ");
    fprintf(file, "\"ground_material\": %d,\n            ", player_motion.ground_material);
    write_float_field(file, "vertical_velocity", player_motion.vertical_velocity, ", ");
    write_float_field(file, "air_time", player_motion.air_time, ", ");
    fprintf(file, "\"climbing\": %d, \"dead\": %d},\n", player_motion.climbing, player_motion.dead_flag);
    fprintf(file, " \"camera_area\": %d,\n", camera_area);
}

// What the player uses and carries: the focus, the message line, the inventory, every door and the
// objects taken out of the world. Written once start-up has made the player, like the player.
static void write_interaction(FILE* file)
{
    if (!registry_in_use(&objects, PLAYER_OBJECT))
        return;
    fprintf(file, " \"focus_object\": %d,\n \"message\": {\"text\": ", focus_object);
    json_string(file, message_text);
    fprintf(file, ", \"visible\": %d},\n", game_time <= message_visible_until ? 1 : 0);

    fprintf(file, " \"inventory\": {\"slots\": [");
    for (int32_t slot = 0; slot < inventory.slot_count; ++slot) {
        const inventory_slot& held = inventory.slots[slot];
        fprintf(file, "%s{\"item\": %d, \"name\": ", slot ? ", " : "", held.item);
        json_string(file, registry_at<item>(&items, held.item)->name);
        fprintf(file, ", \"count\": %d}", held.count);
    }
    fprintf(file, "], \"selected\": %d,\n               \"open\": %d, \"armed_slot\": %d},\n", current_slot(),
            inventory.display_open, inventory.armed_slot);

    fprintf(file, " \"doors\": [");
    for (int32_t i = 0, written = 0; i < doors.count; ++i) {
        if (!registry_in_use(&doors, i))
            continue;
        const door* d = registry_at<door>(&doors, i);
        fprintf(file, "%s{\"door\": %d, \"object\": %d, \"open\": %d, \"locked\": %d, \"lock\": %d, ",
                written++ ? ",\n           " : "", i, d->object, d->open, d->locked, d->lock);
        write_float_field(file, "yaw", registry_at<object>(&objects, d->object)->yaw, "}");
    }
    fprintf(file, "],\n \"removed_objects\": [");
    for (int32_t i = 0; i < removed_objects.count; ++i)
        fprintf(file, "%s%d", i ? ", " : "", removed_objects.indices[i]);
    fprintf(file, "],\n");
}

// The open dialogue (what it shows and offers) and every dialogue variable; both from the start.
static void write_dialogue(FILE* file)
{
    fprintf(file, " \"dialogue\": {\"active\": %d, \"phase\": %d, \"text\": ", dialogue_state.active,
            dialogue_state.phase);
    json_string(file, dialogue_state.text);
    fprintf(file, ", \"choices\": [");
    for (int32_t i = 0; i < dialogue_state.choice_count; ++i) {
        int32_t length = 0;
        const char* text = dialogue_answer_text(dialogue_state.choices[i], &length);
        char shown[DIALOGUE_TEXT_CAPACITY] = {};
        memcpy(shown, text, static_cast<size_t>(length < DIALOGUE_TEXT_CAPACITY ? length : DIALOGUE_TEXT_CAPACITY - 1));
        fprintf(file, "%s", i ? ", " : "");
        json_string(file, shown);
    }
    fprintf(file, "], \"highlighted\": %d},\n \"variables\": {", dialogue_state.highlighted);
    for (int32_t i = 0; i < dialogue_vars.count; ++i) {
        fprintf(file, "%s", i ? ", " : "");
        json_string(file, dialogue_vars.records[i].name);
        fprintf(file, ": ");
        json_string(file, dialogue_vars.records[i].value);
    }
    fprintf(file, "},\n");
}

// What a long run watched after every update (run_watch.h).
static void write_watch(FILE* file, const run_watch* watched)
{
    fprintf(file,
            ",\n \"watch\": {\"updates\": %d, \"position_not_finite\": %d, \"first_position_not_finite\": %d,\n"
            "           \"door_beyond_swing\": %d, ",
            watched->updates_watched, watched->player_not_finite, watched->first_player_not_finite,
            watched->door_beyond_swing);
    write_float_field(file, "widest_door_swing_degrees", watched->widest_door_swing_degrees, "}");
}

int write_state_file(FILE* file, int32_t tick, int64_t frames, const sound_start_log* sounds,
                     const run_watch* watched)
{
    fprintf(file, "{\"tick\": %d, ", tick);
    write_float_field(file, "game_time", game_time, ", ");
    fprintf(file, "\"frames\": %lld,\n", static_cast<long long>(frames));
    write_settings(file);
    write_player(file);
    write_interaction(file);
    write_dialogue(file);
    fprintf(file, " \"mouse_captured\": %d", mouse_captured);
    if (watched)
        write_watch(file, watched);
    if (sounds)
        write_sounds(file, sounds);
    fprintf(file, "}\n");
    return fflush(file) == 0 && !ferror(file);
}
