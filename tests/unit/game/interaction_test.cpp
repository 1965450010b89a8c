#include <gtest/gtest.h>

#include <math.h>
#include <string.h>

#include <string>
#include <vector>

#include "app/game.h"
#include "assets/item.h"
#include "assets/texture.h"
#include "assets/world.h"
#include "core/key_codes.h"
#include "core/loop_state.h"
#include "core/settings.h"
#include "game/collision.h"
#include "game/fixed_sounds.h"
#include "game/interaction.h"
#include "game/player.h"
#include "render/visibility.h"
#include "support/asset_state.h"
#include "support/collision_scene.h"
#include "support/render_world.h"
#include "support/test_audio.h"

namespace {

constexpr float DT = 0.03125f; // 32 updates a second: every time in these tests is exact
constexpr float PI = 3.14159265f;
constexpr float OPEN_ANGLE = 80.0f * 0.017453292f;
constexpr float LEAF_WIDTH = 1.4f;

enum : int32_t {
    OPENING_SOUND = 501,
    CLOSING_SOUND = 502,
    LOCKED_SOUND = 503,
    UNLOCK_SOUND = 504,
    KEY_SOUND = 601,
    COIN_SOUND = 602,
};

enum : uint8_t {
    KEY_E = 'E',
    KEY_Q = 'Q',
};

// Gameplay in a world built in code: the player at the origin facing north (+z), doors, pickups,
// characters and walls placed around him, items and sounds with known indices.
class interaction_test : public testing::Test {
protected:
    int32_t saved_sounds[4] = {};
    int32_t iron_key = 0, rusty_key = 0, coin = 0, pebble = 0;

    void SetUp() override
    {
        reset_assets();
        start_collision_world();
        clear_player_motion();
        clear_interaction();
        memset(key_state, 0, sizeof key_state);
        mouse_wheel = 0.0f;
        game_time = 8.0f;
        tick_dt = DT;
        health_visible_until = 0.0f;
        int32_t* sounds[4] = {&sound_door_opening, &sound_door_closing, &sound_door_locked, &sound_door_unlock};
        int32_t ours[4] = {OPENING_SOUND, CLOSING_SOUND, LOCKED_SOUND, UNLOCK_SOUND};
        for (int i = 0; i < 4; ++i) {
            saved_sounds[i] = *sounds[i];
            *sounds[i] = ours[i];
        }
        ASSERT_EQ(registry_claim(&items), 0); // the placeholder, as at start-up
        iron_key = add_item("Iron key", ITEM_TYPE_KEY, 1, KEY_SOUND);
        rusty_key = add_item("Rusty key", ITEM_TYPE_KEY, 7, KEY_SOUND);
        coin = add_item("Silver coin", 0, 0, COIN_SOUND);
        pebble = add_item("Pebble", 0, 0, 0);
    }

    void TearDown() override
    {
        int32_t* sounds[4] = {&sound_door_opening, &sound_door_closing, &sound_door_locked, &sound_door_unlock};
        for (int i = 0; i < 4; ++i)
            *sounds[i] = saved_sounds[i];
        memset(key_state, 0, sizeof key_state);
        mouse_wheel = 0.0f;
        clear_interaction();
        reset_assets();
    }

    static int32_t add_item(const char* name, int32_t type, int32_t lock, int32_t pickup_sound)
    {
        int32_t index = registry_claim(&items);
        item* record = registry_at<item>(&items, index);
        strncpy(record->name, name, ITEM_NAME_CAPACITY - 1);
        record->type = type;
        record->lock = lock;
        record->pickup_sound = pickup_sound;
        return index;
    }

    static object* at(int32_t object_index) { return registry_at<object>(&objects, object_index); }
    static object* player() { return at(PLAYER_OBJECT); }
    static door* door_record(int32_t index) { return registry_at<door>(&doors, index); }

    // A door leaf hinged at `hinge`, reaching LEAF_WIDTH along its local +x and 2.5 up, shut at
    // closed_yaw; locked when lock is 1 or more, as the scene loader makes it.
    static int32_t add_door(vec3 hinge, float closed_yaw, int32_t lock = 0)
    {
        collision_mesh mesh;
        mesh_collider(&mesh, MATERIAL_WOOD);
        mesh_quad(&mesh, {0, 0, 0}, {LEAF_WIDTH, 0, 0}, {LEAF_WIDTH, -2.5f, 0}, {0, -2.5f, 0}, {0, 0, 1});
        int32_t leaf = place_object(register_collision_model(mesh), hinge, closed_yaw);
        int32_t index = registry_claim(&doors);
        object* o = at(leaf);
        o->type = OBJECT_DOOR;
        o->body = BODY_DOOR;
        o->ref = index;
        door* d = door_record(index);
        d->object = leaf;
        d->locked = lock >= 1;
        d->lock = lock;
        d->closed_yaw = d->from_yaw = d->to_yaw = closed_yaw;
        return index;
    }

    // A solid cube of side 0.3 centred on `centre`.
    static int32_t add_thing(vec3 centre, uint8_t type)
    {
        collision_mesh mesh;
        mesh_collider(&mesh, MATERIAL_STONE);
        mesh_box(&mesh, {-0.15f, -0.15f, -0.15f}, {0.15f, 0.15f, 0.15f});
        int32_t index = place_object(register_collision_model(mesh), centre);
        at(index)->type = type;
        return index;
    }

    static int32_t add_pickup(vec3 centre, int32_t item_index)
    {
        int32_t index = add_thing(centre, OBJECT_PICKUP);
        at(index)->item = item_index;
        return index;
    }

    static int32_t add_character(vec3 centre)
    {
        int32_t index = add_thing(centre, OBJECT_ACTOR);
        int32_t record = registry_claim(&actors);
        registry_at<actor>(&actors, record)->object = index;
        at(index)->ref = record;
        return index;
    }

    static int32_t add_wall(vec3 lo, vec3 hi)
    {
        collision_mesh mesh;
        mesh_collider(&mesh, MATERIAL_STONE);
        mesh_box(&mesh, lo, hi);
        return place_object(register_collision_model(mesh), {0, 0, 0});
    }

    // Turns the player so that the view ray from the eye passes through `target`.
    static void look_at(vec3 target)
    {
        vec3 eye = {player()->position.x, player()->position.y - 1.75f, player()->position.z};
        vec3 d = vec3_sub(target, eye);
        player()->yaw = atan2f(d.x, d.z);
        player()->pitch = asinf(d.y / sqrtf(vec3_dot(d, d)));
    }

    static void stand_at(vec3 feet, float yaw_degrees)
    {
        player()->position = feet;
        player()->yaw = yaw_degrees * 0.017453292f;
        player()->pitch = 0.0f;
    }

    // One update's gameplay steps in the tick driver's order, then the clock and the input move on.
    static void tick()
    {
        update_interaction(view_forward(player()));
        update_inventory();
        update_doors();
        game_time += tick_dt;
        promote_pressed_keys();
        mouse_wheel = 0.0f;
    }

    static void ticks(int count)
    {
        for (int i = 0; i < count; ++i)
            tick();
    }

    static void press(uint8_t code) { key_state[code] = KEY_PRESSED; }

    // Presses a key for one update and lets it go.
    static void tap(uint8_t code)
    {
        press(code);
        tick();
        key_state[code] = KEY_UP;
    }

    static void wheel(float notches)
    {
        mouse_wheel = notches;
        tick();
    }

    static int heard(int32_t sound)
    {
        int count = 0;
        for (int32_t started : test_audio::started())
            count += started == sound;
        return count;
    }

    static std::string message() { return message_text; }
    static int message_showing() { return game_time <= message_visible_until; }

    // Fills the inventory with `kinds` different items (all without sounds or models).
    void fill_inventory(int32_t kinds)
    {
        for (int32_t k = 0; k < kinds; ++k) {
            int32_t kind = add_item("Trinket", 0, 0, 0);
            ASSERT_EQ(take_pickup(add_pickup({0, -50, 0}, kind)), 1);
        }
    }

    // Takes the key and arms it: the bar opens on its slot and a left click arms it and closes it.
    void take_and_arm(int32_t key)
    {
        int32_t slot_before = inventory.slot_count;
        ASSERT_EQ(take_pickup(add_pickup({0, -50, 0}, key)), 1);
        ASSERT_EQ(current_slot(), slot_before);
        tap(KEYCODE_LBUTTON);
        ASSERT_EQ(inventory.armed_slot, slot_before);
        ASSERT_EQ(inventory.display_open, 0);
    }

    // The world position of the leaf's free edge (its local +x end) at the eye's height.
    static vec3 leaf_tip(int32_t door_index)
    {
        const object* leaf = at(door_record(door_index)->object);
        return {leaf->position.x + cosf(leaf->yaw) * LEAF_WIDTH, -1.75f,
                leaf->position.z + sinf(leaf->yaw) * LEAF_WIDTH};
    }
};

} // namespace

// ---- The focus ----

TEST_F(interaction_test, the_focus_is_the_object_under_the_view_ray_and_remembers_when_it_changed)
{
    int32_t coin_object = add_pickup({0, -1.75f, 2}, coin);
    tick();
    EXPECT_EQ(focus_object, coin_object);
    EXPECT_FLOAT_EQ(focus_time, 8.0f);
    tick();
    EXPECT_FLOAT_EQ(focus_time, 8.0f) << "an unchanged focus keeps its time";
    stand_at({0, 0, 0}, 180);
    tick();
    EXPECT_EQ(focus_object, -1);
    EXPECT_FLOAT_EQ(focus_time, 8.0f + 2 * DT);
}

TEST_F(interaction_test, nothing_beyond_3_5_from_the_eye_is_in_focus)
{
    add_pickup({0, -1.75f, 3.7f}, coin); // its near face at 3.55
    tick();
    EXPECT_EQ(focus_object, -1);
    player()->position.z = 0.1f; // the near face now at 3.45
    tick();
    EXPECT_NE(focus_object, -1);
}

TEST_F(interaction_test, a_static_object_in_view_gives_no_focus)
{
    add_wall({-1, -3, 1}, {1, 0, 1.5f});
    tick();
    EXPECT_EQ(focus_object, -1);
}

TEST_F(interaction_test, the_ray_leaves_from_the_eye_1_75_above_the_feet_along_the_view)
{
    int32_t low = add_pickup({0, -0.2f, 1.5f}, coin);
    tick();
    EXPECT_EQ(focus_object, -1) << "straight ahead passes above it";
    look_at({0, -0.2f, 1.5f});
    tick();
    EXPECT_EQ(focus_object, low) << "looking down at it";
}

TEST_F(interaction_test, e_on_a_door_behind_a_wall_does_nothing)
{
    int32_t d = add_door({-0.7f, 0, 3}, 0.0f);
    add_wall({-2, -3, 1.5f}, {2, 0, 2});
    tap(KEY_E);
    EXPECT_EQ(focus_object, -1) << "the wall hides the door";
    EXPECT_EQ(door_record(d)->open, 0);
    EXPECT_EQ(heard(OPENING_SOUND), 0);
}

TEST_F(interaction_test, a_character_in_view_is_in_focus_and_e_on_it_changes_no_door_or_inventory)
{
    int32_t character = add_character({0, -1.75f, 2});
    tap(KEY_E);
    EXPECT_EQ(focus_object, character);
    EXPECT_EQ(inventory.slot_count, 0);
    EXPECT_EQ(at(character)->removed, 0);
    EXPECT_TRUE(test_audio::started().empty());
}

// ---- Doors ----

TEST_F(interaction_test, e_on_a_shut_door_opens_it_with_the_opening_sound)
{
    int32_t d = add_door({-0.7f, 0, 2}, 0.0f);
    tap(KEY_E);
    EXPECT_EQ(door_record(d)->open, 1);
    EXPECT_EQ(heard(OPENING_SOUND), 1);
    EXPECT_FLOAT_EQ(door_record(d)->swing_start, 8.0f);
    EXPECT_FLOAT_EQ(door_record(d)->from_yaw, 0.0f);
    EXPECT_FLOAT_EQ(door_record(d)->to_yaw, OPEN_ANGLE);
}

TEST_F(interaction_test, a_door_opened_from_either_side_swings_away_from_the_player)
{
    int32_t d = add_door({-0.7f, 0, 2}, 0.0f);
    tap(KEY_E);
    ticks(12);
    EXPECT_GT(leaf_tip(d).z, 2.5f) << "from the south it swings north, away";
    EXPECT_EQ(toggle_door(d), 1); // the open leaf no longer stands in the view
    ticks(12);
    EXPECT_FLOAT_EQ(at(door_record(d)->object)->yaw, 0.0f) << "shut again";

    stand_at({0, 0, 4}, 180);
    tap(KEY_E);
    ticks(12);
    EXPECT_LT(leaf_tip(d).z, 1.5f) << "from the north it swings south, away";
}

TEST_F(interaction_test, opening_a_door_from_its_other_side_swings_it_the_other_way)
{
    int32_t front = add_door({-0.7f, 0, 2}, 0.0f);
    EXPECT_EQ(open_door(front), 1);
    float from_the_south = door_record(front)->to_yaw;
    door_record(front)->open = 0;
    stand_at({0, 0, 4}, 180);
    EXPECT_EQ(open_door(front), 1);
    EXPECT_FLOAT_EQ(from_the_south, OPEN_ANGLE);
    EXPECT_FLOAT_EQ(door_record(front)->to_yaw, -OPEN_ANGLE);
}

TEST_F(interaction_test, a_turned_door_swings_away_by_its_closed_yaw)
{
    // A door in a wall along z, like the hall's side door: shut at 90 degrees, its leaf along +z.
    float quarter = 90.0f * 0.017453292f;
    int32_t d = add_door({2, 0, -0.7f}, quarter);
    stand_at({0, 0, 0}, 90);
    tap(KEY_E);
    EXPECT_FLOAT_EQ(door_record(d)->to_yaw, quarter - OPEN_ANGLE);
    ticks(12);
    EXPECT_GT(leaf_tip(d).x, 2.5f) << "the player stands west of it: it swings east";
}

TEST_F(interaction_test, the_swing_takes_a_quarter_second_with_a_smooth_start_and_end)
{
    int32_t d = add_door({-0.7f, 0, 2}, 0.0f);
    float* yaw = &at(door_record(d)->object)->yaw;
    tap(KEY_E); // opened at 8.0; the door step of that update already ran at t = 0
    EXPECT_FLOAT_EQ(*yaw, 0.0f);
    tick(); // t = 0.125
    EXPECT_FLOAT_EQ(*yaw, OPEN_ANGLE * 0.04296875f);
    ticks(3); // t = 0.5
    EXPECT_FLOAT_EQ(*yaw, OPEN_ANGLE * 0.5f);
    ticks(3); // t = 0.875
    EXPECT_FLOAT_EQ(*yaw, OPEN_ANGLE * 0.95703125f);
    tick(); // t = 1: the end
    EXPECT_EQ(*yaw, OPEN_ANGLE);
    ticks(20);
    EXPECT_FLOAT_EQ(*yaw, OPEN_ANGLE) << "at rest it stays";
}

TEST_F(interaction_test, the_collision_turns_with_the_leaf_at_once)
{
    int32_t d = add_door({-0.7f, 0, 2}, 0.0f);
    int32_t leaf = door_record(d)->object;
    collision_hit through_the_doorway = cast_ray({0, -1.75f, 0}, {0, 0, 1}, 10.0f);
    ASSERT_EQ(through_the_doorway.hit, 1);
    EXPECT_EQ(through_the_doorway.object, leaf);
    tap(KEY_E);
    ticks(10);
    EXPECT_EQ(cast_ray({0, -1.75f, 0}, {0, 0, 1}, 10.0f).hit, 0) << "the doorway is free";
    vec3 tip = leaf_tip(d);
    collision_hit across_the_leaf = cast_ray({tip.x - 0.5f, -1.75f, 2.3f}, {1, 0, 0}, 2.0f);
    ASSERT_EQ(across_the_leaf.hit, 1);
    EXPECT_EQ(across_the_leaf.object, leaf) << "the leaf stands where it turned to";
}

TEST_F(interaction_test, a_leaf_whose_yaw_is_nan_counts_as_unequal_and_is_driven_along_the_swing)
{
    int32_t d = add_door({-0.7f, 0, 2}, 0.0f);
    float* yaw = &at(door_record(d)->object)->yaw;
    *yaw = NAN;
    door_record(d)->swing_start = game_time - 1.0f;
    update_doors();
    EXPECT_FLOAT_EQ(*yaw, 0.0f);

    door_record(d)->to_yaw = NAN;
    *yaw = 0.0f;
    update_doors();
    EXPECT_TRUE(isnan(*yaw)) << "a NaN end is never reached, so the swing keeps running";
}

TEST_F(interaction_test, e_on_an_open_door_swings_it_shut_from_where_it_stands_with_the_closing_sound)
{
    int32_t d = add_door({-0.7f, 0, 2}, 0.0f);
    tap(KEY_E);
    ticks(3); // part of the way open
    float part_open = at(door_record(d)->object)->yaw;
    ASSERT_GT(part_open, 0.0f);
    ASSERT_LT(part_open, OPEN_ANGLE);
    tap(KEY_E);
    EXPECT_EQ(door_record(d)->open, 0);
    EXPECT_FLOAT_EQ(door_record(d)->from_yaw, part_open);
    EXPECT_FLOAT_EQ(door_record(d)->to_yaw, 0.0f);
    EXPECT_EQ(heard(CLOSING_SOUND), 1);
    ticks(12);
    EXPECT_FLOAT_EQ(at(door_record(d)->object)->yaw, 0.0f);
}

TEST_F(interaction_test, opening_a_door_that_is_already_open_changes_nothing)
{
    int32_t d = add_door({-0.7f, 0, 2}, 0.0f);
    ASSERT_EQ(open_door(d), 1);
    door before = *door_record(d);
    stand_at({0, 0, 4}, 180);
    game_time += 1.0f;
    EXPECT_EQ(open_door(d), 1);
    EXPECT_EQ(memcmp(&before, door_record(d), sizeof before), 0);
    EXPECT_EQ(heard(OPENING_SOUND), 1);
}

TEST_F(interaction_test, e_on_a_locked_door_plays_the_locked_sound_and_shows_this_door_is_locked)
{
    int32_t d = add_door({-0.7f, 0, 2}, 0.0f, 1);
    tap(KEY_E);
    EXPECT_EQ(door_record(d)->open, 0);
    EXPECT_EQ(door_record(d)->locked, 1);
    EXPECT_EQ(heard(LOCKED_SOUND), 1);
    EXPECT_EQ(heard(OPENING_SOUND), 0);
    EXPECT_EQ(message(), "This door is locked.");
    EXPECT_FLOAT_EQ(message_visible_until, 8.0f + 3.0f);
}

TEST_F(interaction_test, the_armed_wrong_key_shows_the_key_does_not_fit_and_stays_armed)
{
    int32_t d = add_door({-0.7f, 0, 2}, 0.0f, 1);
    take_and_arm(rusty_key);
    tap(KEYCODE_LBUTTON);
    EXPECT_EQ(message(), "The key doesn't fit this door.");
    EXPECT_EQ(heard(LOCKED_SOUND), 1);
    EXPECT_EQ(door_record(d)->locked, 1);
    EXPECT_EQ(inventory.armed_slot, 0);
}

TEST_F(interaction_test, the_armed_matching_key_unlocks_and_opens_the_door_and_is_put_away)
{
    int32_t d = add_door({-0.7f, 0, 2}, 0.0f, 1);
    take_and_arm(iron_key);
    tap(KEYCODE_LBUTTON);
    EXPECT_EQ(door_record(d)->locked, 0);
    EXPECT_EQ(door_record(d)->open, 1);
    EXPECT_EQ(heard(UNLOCK_SOUND), 1);
    EXPECT_EQ(heard(OPENING_SOUND), 1);
    EXPECT_EQ(inventory.armed_slot, -1);
    ASSERT_EQ(inventory.slot_count, 1) << "the key stays in the inventory";
    EXPECT_EQ(inventory.slots[0].item, iron_key);
    ticks(12);
    EXPECT_GT(leaf_tip(d).z, 2.5f);
}

TEST_F(interaction_test, e_with_the_matching_key_armed_opens_the_locked_door_in_the_same_update)
{
    // The interaction step sees E first and reports the lock; the inventory step then unlocks.
    int32_t d = add_door({-0.7f, 0, 2}, 0.0f, 1);
    take_and_arm(iron_key);
    tap(KEY_E);
    EXPECT_EQ(door_record(d)->locked, 0);
    EXPECT_EQ(door_record(d)->open, 1);
    EXPECT_EQ(heard(LOCKED_SOUND), 1);
    EXPECT_EQ(heard(UNLOCK_SOUND), 1);
    EXPECT_EQ(inventory.armed_slot, -1);
}

TEST_F(interaction_test, using_a_key_on_an_unlocked_door_does_nothing_and_keeps_the_key_armed)
{
    int32_t d = add_door({-0.7f, 0, 2}, 0.0f, 0);
    take_and_arm(iron_key);
    EXPECT_EQ(use_key_on_door(d, iron_key), 0);
    tap(KEYCODE_LBUTTON);
    EXPECT_EQ(door_record(d)->open, 0);
    EXPECT_EQ(inventory.armed_slot, 0);
    EXPECT_TRUE(message().empty());
    EXPECT_EQ(heard(LOCKED_SOUND) + heard(UNLOCK_SOUND) + heard(OPENING_SOUND), 0);
}

TEST_F(interaction_test, something_other_than_a_key_on_a_locked_door_only_makes_the_locked_sound)
{
    int32_t d = add_door({-0.7f, 0, 2}, 0.0f, 1);
    EXPECT_EQ(use_key_on_door(d, coin), 0);
    EXPECT_EQ(heard(LOCKED_SOUND), 1);
    EXPECT_TRUE(message().empty());
    EXPECT_EQ(door_record(d)->locked, 1);
}

TEST_F(interaction_test, an_armed_key_used_on_something_other_than_a_door_stays_armed)
{
    add_pickup({0, -1.75f, 2}, coin);
    take_and_arm(iron_key);
    tap(KEYCODE_LBUTTON);
    EXPECT_EQ(inventory.armed_slot, 0);
    EXPECT_EQ(test_audio::started().size(), 1u) << "only the key's own pickup sound";
}

TEST_F(interaction_test, the_left_click_that_arms_a_key_does_not_also_use_it)
{
    int32_t d = add_door({-0.7f, 0, 2}, 0.0f, 1);
    take_and_arm(iron_key);
    EXPECT_EQ(door_record(d)->locked, 1);
    EXPECT_EQ(heard(UNLOCK_SOUND), 0);
}

TEST_F(interaction_test, a_right_click_or_q_disarms_the_key)
{
    take_and_arm(iron_key);
    tap(KEYCODE_RBUTTON);
    EXPECT_EQ(inventory.armed_slot, -1);
    wheel(1);          // opens the bar
    tap(KEYCODE_LBUTTON); // arms again and closes it
    ASSERT_EQ(inventory.armed_slot, 0);
    ticks(2);
    tap(KEY_Q);
    EXPECT_EQ(inventory.armed_slot, -1);
}

TEST_F(interaction_test, a_right_click_with_the_bar_open_only_closes_the_bar)
{
    take_and_arm(iron_key);
    ticks(2);
    wheel(1);
    EXPECT_EQ(inventory.display_open, 1);
    EXPECT_EQ(inventory.armed_slot, -1) << "browsing puts the key away";
    take_and_arm(rusty_key);
    ticks(2);
    wheel(0); // nothing
    EXPECT_EQ(inventory.display_open, 0);
    ASSERT_EQ(inventory.armed_slot, 1);
    // Open the bar by taking something, then right-click: the bar closes, the key stays armed.
    ASSERT_EQ(take_pickup(add_pickup({0, -50, 0}, coin)), 1);
    tap(KEYCODE_RBUTTON);
    EXPECT_EQ(inventory.display_open, 0);
    EXPECT_EQ(inventory.armed_slot, 1);
}

// ---- Pickups ----

TEST_F(interaction_test, e_on_a_pickup_takes_it_opens_the_bar_on_its_slot_and_plays_its_sound)
{
    int32_t coin_object = add_pickup({0, -1.75f, 2}, coin);
    tap(KEY_E);
    ASSERT_EQ(inventory.slot_count, 1);
    EXPECT_EQ(inventory.slots[0].item, coin);
    EXPECT_EQ(inventory.slots[0].count, 1);
    EXPECT_EQ(current_slot(), 0);
    EXPECT_EQ(inventory.display_open, 1);
    EXPECT_FLOAT_EQ(inventory.last_input_time, 8.0f);
    EXPECT_EQ(heard(COIN_SOUND), 1);
    EXPECT_EQ(at(coin_object)->removed, 1);
    ASSERT_EQ(removed_objects.count, 1);
    EXPECT_EQ(removed_objects.indices[0], coin_object);
}

TEST_F(interaction_test, a_further_copy_of_a_held_item_counts_up_in_its_slot)
{
    take_pickup(add_pickup({0, -50, 0}, coin));
    take_pickup(add_pickup({0, -50, 0}, iron_key));
    take_pickup(add_pickup({0, -50, 0}, coin));
    ASSERT_EQ(inventory.slot_count, 2);
    EXPECT_EQ(inventory.slots[0].count, 2);
    EXPECT_EQ(current_slot(), 0) << "the bar shows the slot it went into";
}

TEST_F(interaction_test, a_thirteenth_kind_of_item_is_refused_with_inventory_is_full)
{
    fill_inventory(INVENTORY_SLOTS);
    test_audio::reset();
    int32_t thirteenth = add_pickup({0, -1.75f, 2}, coin);
    tap(KEY_E);
    EXPECT_EQ(inventory.slot_count, INVENTORY_SLOTS);
    EXPECT_EQ(message(), "Inventory is full.");
    EXPECT_EQ(at(thirteenth)->removed, 0) << "it stays in the world";
    EXPECT_EQ(focus_object, thirteenth);
    EXPECT_TRUE(test_audio::started().empty());
    EXPECT_EQ(removed_objects.count, INVENTORY_SLOTS);
}

TEST_F(interaction_test, with_a_full_inventory_a_further_copy_of_a_held_item_is_still_taken)
{
    ASSERT_EQ(take_pickup(add_pickup({0, -50, 0}, coin)), 1);
    fill_inventory(INVENTORY_SLOTS - 1);
    int32_t another = add_pickup({0, -1.75f, 2}, coin);
    tap(KEY_E);
    EXPECT_EQ(inventory.slots[0].count, 2);
    EXPECT_EQ(at(another)->removed, 1);
    EXPECT_TRUE(message().empty());
}

TEST_F(interaction_test, taking_a_pickup_whose_item_has_no_pickup_sound_still_removes_it)
{
    int32_t pebble_object = add_pickup({0, -1.75f, 2}, pebble);
    tap(KEY_E);
    EXPECT_EQ(at(pebble_object)->removed, 1);
    EXPECT_EQ(inventory.slots[0].item, pebble);
    EXPECT_TRUE(test_audio::started().empty());
}

TEST_F(interaction_test, only_a_pickup_can_be_taken)
{
    int32_t wall = add_wall({-1, -3, 1}, {1, 0, 1.5f});
    EXPECT_EQ(take_pickup(wall), 0);
    EXPECT_EQ(at(wall)->removed, 0);
    EXPECT_EQ(inventory.slot_count, 0);
}

TEST_F(interaction_test, removed_objects_are_listed_in_the_order_taken)
{
    int32_t first = add_pickup({0, -1.75f, 2}, coin);
    int32_t second = add_pickup({0, -1.75f, 3}, coin);
    tap(KEY_E);
    tap(KEY_E);
    ASSERT_EQ(removed_objects.count, 2);
    EXPECT_EQ(removed_objects.indices[0], first);
    EXPECT_EQ(removed_objects.indices[1], second);
    EXPECT_EQ(inventory.slots[0].count, 2);
}

// ---- The inventory bar ----

TEST_F(interaction_test, current_slot_is_minus_1_with_no_slots)
{
    inventory.target_selection = 3.0f;
    EXPECT_EQ(current_slot(), -1);
}

TEST_F(interaction_test, current_slot_rounds_the_selection_and_wraps_it_both_ways)
{
    fill_inventory(3);
    float selections[] = {0.0f, 0.4f, 0.6f, 2.0f, 3.0f, 4.0f, -1.0f, -2.0f, -3.0f, -4.0f, -0.6f, 7.0f};
    int32_t slots[] = {0, 0, 1, 2, 0, 1, 2, 1, 0, 2, 2, 1};
    for (size_t i = 0; i < sizeof selections / sizeof selections[0]; ++i) {
        inventory.target_selection = selections[i];
        EXPECT_EQ(current_slot(), slots[i]) << selections[i];
    }
}

TEST_F(interaction_test, select_slot_admits_slot_count_itself_and_refuses_beyond)
{
    fill_inventory(2);
    EXPECT_EQ(select_slot(-1), 0);
    EXPECT_EQ(select_slot(3), 0);
    EXPECT_FLOAT_EQ(inventory.target_selection, 1.0f) << "refusals leave the selection";
    EXPECT_EQ(select_slot(2), 1);
    EXPECT_FLOAT_EQ(inventory.target_selection, 2.0f);
    EXPECT_FLOAT_EQ(inventory.shown_selection, 2.0f);
    EXPECT_EQ(current_slot(), 0) << "read back, it wraps to the first";
}

TEST_F(interaction_test, scrolling_the_inventory_left_of_the_first_slot_wraps_to_the_last)
{
    fill_inventory(4);
    ASSERT_EQ(select_slot(0), 1);
    ticks(4);
    wheel(-1);
    EXPECT_EQ(current_slot(), 3);
    EXPECT_FLOAT_EQ(inventory.target_selection, -1.0f);
    ticks(2);
    tap(KEYCODE_LEFT_BRACKET);
    EXPECT_EQ(current_slot(), 2);
}

TEST_F(interaction_test, the_first_browse_input_only_opens_the_bar)
{
    fill_inventory(3);
    inventory.display_open = 0;
    ticks(200); // long after the pickups
    float before = inventory.target_selection;
    tap(KEYCODE_RIGHT_BRACKET);
    EXPECT_EQ(inventory.display_open, 1);
    EXPECT_FLOAT_EQ(inventory.target_selection, before);
    ticks(2);
    tap(KEYCODE_RIGHT_BRACKET);
    EXPECT_FLOAT_EQ(inventory.target_selection, before + 1.0f);
}

TEST_F(interaction_test, browsing_steps_at_most_once_every_0_05_s)
{
    fill_inventory(5);
    ASSERT_EQ(select_slot(0), 1);
    ticks(2); // 0.0625 s after the last pickup
    wheel(1);
    EXPECT_FLOAT_EQ(inventory.target_selection, 1.0f);
    wheel(1); // 0.03125 s later: too soon
    EXPECT_FLOAT_EQ(inventory.target_selection, 1.0f);
    wheel(1); // 0.0625 s after the step
    EXPECT_FLOAT_EQ(inventory.target_selection, 2.0f);
    EXPECT_FLOAT_EQ(inventory.last_input_time, game_time - DT);
}

TEST_F(interaction_test, the_wheel_and_the_bracket_keys_in_opposite_directions_cancel)
{
    fill_inventory(3);
    ASSERT_EQ(select_slot(1), 1);
    ticks(4);
    mouse_wheel = 1.0f;
    tap(KEYCODE_LEFT_BRACKET);
    EXPECT_FLOAT_EQ(inventory.target_selection, 1.0f);
    EXPECT_FLOAT_EQ(inventory.last_input_time, 8.0f) << "no input was taken";
}

TEST_F(interaction_test, browsing_puts_the_armed_key_away_and_shows_the_health_line_for_3_2_s)
{
    take_and_arm(iron_key);
    ticks(2);
    float now = game_time;
    wheel(1);
    EXPECT_EQ(inventory.armed_slot, -1);
    EXPECT_FLOAT_EQ(health_visible_until, now + 3.2f);
}

TEST_F(interaction_test, the_bar_closes_after_3_s_without_input)
{
    take_pickup(add_pickup({0, -50, 0}, coin));
    ticks(97); // the last of them 3.0 s after the pickup: still shown
    EXPECT_EQ(inventory.display_open, 1);
    tick();
    EXPECT_EQ(inventory.display_open, 0);
}

TEST_F(interaction_test, a_left_click_on_a_slot_that_is_no_key_closes_the_bar_without_arming)
{
    take_pickup(add_pickup({0, -50, 0}, coin));
    tap(KEYCODE_LBUTTON);
    EXPECT_EQ(inventory.display_open, 0);
    EXPECT_EQ(inventory.armed_slot, -1);
}

TEST_F(interaction_test, a_left_click_arms_the_key_in_the_current_slot_and_remembers_when)
{
    take_pickup(add_pickup({0, -50, 0}, coin));
    take_pickup(add_pickup({0, -50, 0}, iron_key));
    ticks(4);
    float now = game_time;
    tap(KEYCODE_LBUTTON);
    EXPECT_EQ(inventory.armed_slot, 1);
    EXPECT_FLOAT_EQ(inventory.armed_time, now);
    EXPECT_EQ(inventory.display_open, 0);
}

TEST_F(interaction_test, the_shown_selection_eases_toward_the_selected_slot)
{
    fill_inventory(4);
    ASSERT_EQ(select_slot(0), 1);
    ticks(2);
    wheel(1);
    float step = 1.0f - expf(-12.0f * DT);
    EXPECT_NEAR(inventory.shown_selection, step, 1e-5f);
    tick();
    EXPECT_NEAR(inventory.shown_selection, step + step * (1.0f - step), 1e-5f);
    ticks(40);
    EXPECT_NEAR(inventory.shown_selection, 1.0f, 1e-4f);
}

// ---- The message line ----

TEST_F(interaction_test, a_message_shows_for_3_s)
{
    show_message("Hello.");
    EXPECT_EQ(message(), "Hello.");
    EXPECT_FLOAT_EQ(message_visible_until, 11.0f);
}

TEST_F(interaction_test, a_message_longer_than_99_characters_is_cut_at_99)
{
    std::string long_text(150, 'x');
    long_text[98] = 'y';
    show_message(long_text.c_str());
    EXPECT_EQ(strlen(message_text), 99u);
    EXPECT_EQ(message_text[98], 'y');
    std::string exactly(99, 'z');
    show_message(exactly.c_str());
    EXPECT_EQ(message(), exactly);
}

// ---- Through the tick driver ----

class interaction_update_test : public interaction_test {
protected:
    void SetUp() override
    {
        interaction_test::SetUp();
        collision_mesh mesh;
        mesh_collider(&mesh, MATERIAL_STONE);
        mesh_floor(&mesh, -20, -20, 20, 20, 0);
        place_object(register_collision_model(mesh), {0, 0, 0});
        mouse_captured = 1;
    }
    void TearDown() override
    {
        mouse_captured = 0;
        interaction_test::TearDown();
    }
    static void update()
    {
        tick_dt = DT;
        game_update();
        game_time += tick_dt;
        promote_pressed_keys();
    }
};

TEST_F(interaction_update_test, a_taken_pickup_is_released_by_the_same_update_and_no_query_sees_it_again)
{
    int32_t coin_object = add_pickup({0, -1.75f, 2}, coin);
    update();
    ASSERT_EQ(focus_object, coin_object);
    press(KEY_E);
    update();
    EXPECT_FALSE(registry_in_use(&objects, coin_object)) << "its slot is given back";
    EXPECT_EQ(cast_ray({0, -1.75f, 0}, {0, 0, 1}, 10.0f).hit, 0);
    capsule through = {{0, -1.6f, 2}, {0, -1.9f, 2}, 0.3f};
    EXPECT_EQ(overlap_capsule(&through).hit, 0);
    update();
    EXPECT_EQ(focus_object, -1);
    EXPECT_EQ(inventory.slots[0].count, 1);
}

TEST_F(interaction_update_test, a_dead_player_uses_nothing_but_doors_still_swing)
{
    int32_t d = add_door({-0.7f, 0, 2}, 0.0f);
    int32_t other = add_door({5, 0, 2}, 0.0f);
    open_door(other);
    player()->health = 0;
    press(KEY_E);
    for (int i = 0; i < 12; ++i)
        update();
    EXPECT_EQ(door_record(d)->open, 0);
    EXPECT_FLOAT_EQ(at(door_record(other)->object)->yaw, door_record(other)->to_yaw);
}

TEST_F(interaction_update_test, the_update_looks_along_the_players_view_and_e_opens_the_door)
{
    int32_t d = add_door({-0.7f, 0, 2}, 0.0f);
    player()->yaw = PI; // facing away
    press(KEY_E);
    update();
    EXPECT_EQ(door_record(d)->open, 0);
    player()->yaw = 0.0f;
    press(KEY_E);
    update();
    EXPECT_EQ(door_record(d)->open, 1);
}

TEST_F(interaction_update_test, the_texture_reload_report_shows_on_the_message_line)
{
    int32_t dithering = TEXTURE_DITHERING;
    press(KEYCODE_F11);
    update();
    TEXTURE_DITHERING = dithering;
    EXPECT_EQ(message(), "Texture reload complete: 0 successful, 0 failed\n");
    EXPECT_FLOAT_EQ(message_visible_until, 8.0f + 3.0f);
}

// ---- Drawing ----

class taken_pickup_drawing : public render_world_test {};

TEST_F(taken_pickup_drawing, a_pickup_once_taken_is_never_drawn)
{
    ASSERT_EQ(registry_claim(&items), 0);
    int32_t model_index = add_square_model(-0.5f, -0.5f, 0.5f, 0.5f, 3.0f, add_texture(0xFFFF));
    int32_t pickup = add_object(-1, model_index, {0, 0, 0});
    registry_at<object>(&objects, pickup)->type = OBJECT_PICKUP;
    build_draw_list();
    ASSERT_EQ(draw_list_count, 1);
    ASSERT_EQ(take_pickup(pickup), 1);
    build_draw_list();
    EXPECT_EQ(draw_list_count, 0);
    clear_interaction();
}
