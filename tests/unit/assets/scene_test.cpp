#include <gtest/gtest.h>

#include <math.h>

#include <string>

#include "assets/animation.h"
#include "assets/dialogue.h"
#include "assets/item.h"
#include "assets/model.h"
#include "assets/scene.h"
#include "assets/start_up.h"
#include "assets/world.h"
#include "support/asset_state.h"

namespace {

// One side of an opening in the plane x = 0 and the other side: the same corners in reverse order.
const char* const EAST_SIDE = "0,0,0 0,0,1 0,1,1 0,1,0";
const char* const WEST_SIDE = "0,1,0 0,1,1 0,0,1 0,0,0";

std::string portal_element(const char* points, const std::string& extra = "")
{
    return std::string("<portal points=\"") + points + "\"" + extra + "/>\n";
}

class scene_test : public data_folder_test {
protected:
    void SetUp() override
    {
        data_folder_test::SetUp();
        // The start-up order before the scene: the player, the empty model, animation and item.
        ASSERT_EQ(create_player(), 1);
        ASSERT_EQ(reserve_empty_model_and_animation(), 1);
        ASSERT_EQ(reserve_empty_item(), 1);
        write_data("world.bsp", "PLANES 1\nNODES 3\n0 1 0 0\n0 0 0\n0 0 0\n0 0 0\n");
        // A door leaf 0.2 thick, 1 wide and 1 high, around its own origin.
        write_data("models/door.mdl", "POINTS 2\nTRIANGLES 0\nTEXCOORDS 0\nWEIGHTS 0\nSUBSETS 0\nCOLLIDERS 0\n"
                                      "OCCLUDERS 0\n-0.1 0 0\n0.1 1 1\n");
    }

    static int load(const std::string& rooms_inside, const std::string& scene_attributes = "bsp=\"world.bsp\"")
    {
        write_data("scene.xml", "<scene " + scene_attributes + ">\n" + rooms_inside + "</scene>\n");
        return load_scene(SCENE_FILE);
    }

    // The scene with one nested room joined to it by the opening at x = 0.
    static int load_two_rooms(const std::string& in_scene, const std::string& in_room = "")
    {
        return load(portal_element(EAST_SIDE) + in_scene + "<room bsp_node=\"1\">\n" + portal_element(WEST_SIDE) + in_room +
                    "</room>\n");
    }

    static const object* object_at(int32_t index) { return registry_at<object>(&objects, index); }
    static const room* room_at(int32_t index) { return registry_at<room>(&rooms, index); }
    static const portal* portal_at(int32_t index) { return registry_at<portal>(&portals, index); }
};

} // namespace

TEST_F(scene_test, player_is_object_0_with_full_health)
{
    const object* player = object_at(PLAYER_OBJECT);
    EXPECT_EQ(player->body, BODY_CHARACTER);
    EXPECT_EQ(player->health, 100);
    EXPECT_EQ(player->health_max, 100);
    EXPECT_EQ(player->position.x, 0.0f);
    EXPECT_EQ(player->type, OBJECT_STATIC);
}

TEST_F(scene_test, portals_facing_each_other_link_to_each_others_rooms)
{
    ASSERT_EQ(load_two_rooms(""), 1);
    ASSERT_EQ(rooms.count, 2);
    EXPECT_EQ(portal_at(0)->target_room, 1);
    EXPECT_EQ(portal_at(1)->target_room, 0);
    EXPECT_EQ(portal_at(0)->door, -1);
    EXPECT_EQ(room_at(0)->first_portal, 0);
    EXPECT_EQ(room_at(0)->portal_count, 1);
    EXPECT_EQ(room_at(1)->first_portal, 1);
    EXPECT_EQ(room_at(1)->portal_count, 1);
}

TEST_F(scene_test, portal_geometry_is_derived_from_its_corners)
{
    ASSERT_EQ(load_two_rooms(""), 1);
    const portal* p = portal_at(0);
    EXPECT_EQ(p->corners[2].y, 1.0f);
    EXPECT_EQ(p->centre.x, 0.0f);
    EXPECT_EQ(p->centre.y, 0.5f);
    EXPECT_EQ(p->centre.z, 0.5f);
    EXPECT_EQ(p->normal.x, -1.0f);
    EXPECT_EQ(p->normal.y, 0.0f);
    EXPECT_EQ(p->plane_d, 0.0f);
    EXPECT_EQ(portal_at(1)->normal.x, 1.0f);
}

TEST_F(scene_test, portal_with_eleven_numbers_fails)
{
    EXPECT_EQ(load_two_rooms(portal_element("0,0,0 0,0,1 0,1,1 0,1")), 0);
}

TEST_F(scene_test, portal_with_thirteen_numbers_fails)
{
    EXPECT_EQ(load(portal_element("0,0,0 0,0,1 0,1,1 0,1,0 5")), 0);
}

TEST_F(scene_test, portal_without_a_partner_fails)
{
    EXPECT_EQ(load(portal_element(EAST_SIDE)), 0);
    EXPECT_EQ(portal_at(0)->target_room, -1);
}

TEST_F(scene_test, every_portal_without_a_partner_is_left_unlinked)
{
    EXPECT_EQ(load(portal_element(EAST_SIDE) + portal_element("5,0,0 5,0,1 5,1,1 5,1,0") + "<room bsp_node=\"1\">\n" +
                   portal_element(WEST_SIDE) + "</room>\n"),
              0);
    EXPECT_EQ(portal_at(0)->target_room, 1);
    EXPECT_EQ(portal_at(1)->target_room, -1);
    EXPECT_EQ(portal_at(2)->target_room, 0);
}

TEST_F(scene_test, partner_with_a_corner_more_than_0_01_away_fails)
{
    EXPECT_EQ(load(portal_element(EAST_SIDE) + "<room bsp_node=\"1\">\n" + portal_element("0,1.02,0 0,1,1 0,0,1 0,0,0") +
                   "</room>\n"),
              0);
}

TEST_F(scene_test, partner_with_corners_just_within_0_01_links)
{
    EXPECT_EQ(load(portal_element(EAST_SIDE) + "<room bsp_node=\"1\">\n" + portal_element("0,1.005,0 0,1,1.005 0,0,1 0,0,0") +
                   "</room>\n"),
              1);
}

TEST_F(scene_test, portals_facing_the_same_way_do_not_match)
{
    EXPECT_EQ(load(portal_element(EAST_SIDE) + "<room bsp_node=\"1\">\n" + portal_element(EAST_SIDE) + "</room>\n"), 0);
}

TEST_F(scene_test, closed_attribute_closes_the_portal_whatever_its_value)
{
    ASSERT_EQ(load(portal_element(EAST_SIDE, " closed=\"0\"") + "<room bsp_node=\"1\">\n" + portal_element(WEST_SIDE) + "</room>\n"),
              1);
    EXPECT_EQ(portal_at(0)->closed, 1);
    EXPECT_EQ(portal_at(1)->closed, 0);
}

TEST_F(scene_test, static_listed_after_a_portal_comes_before_the_rooms_actors_and_doors)
{
    ASSERT_EQ(load_two_rooms("<actor x=\"1\"/>\n<door model=\"door.mdl\" x=\"5\"/>\n<static x=\"2\"/>\n"
                             "<object x=\"3\"/>\n"),
              1);
    const room* scene_room = room_at(0);
    EXPECT_EQ(scene_room->first_object, 1);
    EXPECT_EQ(scene_room->object_count, 2);
    EXPECT_EQ(object_at(1)->position.x, 2.0f);
    EXPECT_EQ(object_at(2)->position.x, 3.0f);
    EXPECT_EQ(object_at(3)->type, OBJECT_ACTOR);
    EXPECT_EQ(object_at(4)->type, OBJECT_DOOR);
}

TEST_F(scene_test, rooms_are_numbered_depth_first_after_all_of_their_parents_records)
{
    // The scene (node 0) holds room A (node 1) with its own room A1 (node 2), then room B (node 0 again).
    std::string text = "<room bsp_node=\"1\">\n<static x=\"11\"/>\n<room bsp_node=\"2\">\n<static x=\"21\"/>\n"
                       "</room>\n</room>\n<room bsp_node=\"0\" box=\"7,7,7 8,8,8\">\n<static x=\"31\"/>\n</room>\n"
                       "<static x=\"1\"/>\n";
    ASSERT_EQ(load(text), 1);
    ASSERT_EQ(rooms.count, 4);
    EXPECT_EQ(room_at(1)->bsp_node, 1);
    EXPECT_EQ(room_at(2)->bsp_node, 2);
    EXPECT_EQ(room_at(3)->box_min.x, 7.0f);
    // The scene's own static, written last, is made before any nested room is read.
    EXPECT_EQ(object_at(room_at(0)->first_object)->position.x, 1.0f);
    EXPECT_EQ(object_at(room_at(1)->first_object)->position.x, 11.0f);
    EXPECT_EQ(object_at(room_at(2)->first_object)->position.x, 21.0f);
    EXPECT_EQ(object_at(room_at(3)->first_object)->position.x, 31.0f);
    EXPECT_LT(room_at(1)->first_object, room_at(2)->first_object);
    EXPECT_LT(room_at(2)->first_object, room_at(3)->first_object);
}

TEST_F(scene_test, a_rooms_portals_and_lights_are_made_before_its_nested_rooms_are_read)
{
    // The scene writes its portal and light after its nested room; they still come first.
    std::string text = "<room bsp_node=\"1\">\n" + portal_element(WEST_SIDE) +
                       "<light radius=\"2\"/>\n<static x=\"11\"/>\n</room>\n" + portal_element(EAST_SIDE) +
                       "<light radius=\"1\"/>\n";
    ASSERT_EQ(load(text), 1);
    EXPECT_EQ(room_at(0)->first_portal, 0);
    EXPECT_EQ(room_at(0)->portal_count, 1);
    EXPECT_EQ(room_at(1)->first_portal, 1);
    EXPECT_EQ(portal_at(0)->normal.x, -1.0f) << "portal 0 is the scene's own side of the opening";
    EXPECT_EQ(portal_at(0)->target_room, 1);
    ASSERT_EQ(steady_lights.count, 2);
    EXPECT_EQ(steady_lights.lights[0].room, 0);
    EXPECT_EQ(steady_lights.lights[0].radius, 1.0f);
    EXPECT_EQ(steady_lights.lights[1].room, 1);
    // The scene's light took object 1 before the nested room's static (2) and light (3).
    EXPECT_EQ(room_at(1)->first_object, 2);
    EXPECT_EQ(object_at(2)->position.x, 11.0f);
    EXPECT_EQ(objects.count, 4);
}

TEST_F(scene_test, room_box_and_node_are_read)
{
    ASSERT_EQ(load("", "bsp=\"world.bsp\" box=\"-1,-2,-3 4,5,6.5\" bsp_node=\"2\""), 1);
    EXPECT_EQ(room_at(0)->box_min.y, -2.0f);
    EXPECT_EQ(room_at(0)->box_max.z, 6.5f);
    EXPECT_EQ(room_at(0)->bsp_node, 2);
    EXPECT_EQ(scene_tree.node_count, 3);
}

TEST_F(scene_test, box_with_five_numbers_fails)
{
    EXPECT_EQ(load("", "bsp=\"world.bsp\" box=\"0,0,0 1,1\""), 0);
}

TEST_F(scene_test, room_naming_a_node_outside_the_tree_fails)
{
    EXPECT_EQ(load("", "bsp=\"world.bsp\" bsp_node=\"3\""), 0);
    EXPECT_EQ(load("", "bsp=\"world.bsp\" bsp_node=\"-1\""), 0);
}

TEST_F(scene_test, scene_without_bsp_or_with_a_missing_tree_fails)
{
    EXPECT_EQ(load("", "name=\"no tree\""), 0);
    EXPECT_EQ(load("", "bsp=\"missing.bsp\""), 0);
}

TEST_F(scene_test, file_without_a_scene_element_fails)
{
    write_data("scene.xml", "<level bsp=\"world.bsp\"/>\n");
    EXPECT_EQ(load_scene(SCENE_FILE), 0);
    EXPECT_EQ(load_scene("gloamhold_data/missing.xml"), 0);
}

TEST_F(scene_test, object_without_model_has_the_empty_model_0)
{
    ASSERT_EQ(load("<static x=\"1\" y=\"2\" z=\"3\"/>\n"), 1);
    EXPECT_EQ(object_at(1)->model, 0);
    EXPECT_EQ(object_at(1)->animation, 0);
    EXPECT_EQ(object_at(1)->position.z, 3.0f);
}

TEST_F(scene_test, object_angles_are_converted_from_degrees)
{
    ASSERT_EQ(load("<static yaw=\"90\" pitch=\"-45\" model=\"door.mdl\"/>\n"), 1);
    EXPECT_EQ(object_at(1)->yaw, 90.0f * 0.017453292f);
    EXPECT_EQ(object_at(1)->pitch, -45.0f * 0.017453292f);
    EXPECT_EQ(object_at(1)->model, asset_name_find(ASSET_MODEL, "door.mdl"));
}

TEST_F(scene_test, attribute_that_is_not_a_number_fails)
{
    EXPECT_EQ(load("<static x=\"1e3\"/>\n"), 0);
}

TEST_F(scene_test, object_whose_model_cannot_load_fails)
{
    EXPECT_EQ(load("<static model=\"missing.mdl\"/>\n"), 0);
}

TEST_F(scene_test, object_whose_animation_cannot_load_fails)
{
    EXPECT_EQ(load("<static animation=\"missing.anim\"/>\n"), 0);
}

TEST_F(scene_test, animation_with_fewer_bones_than_the_model_weights_fails)
{
    write_data("models/body.mdl", "POINTS 1\nTRIANGLES 0\nTEXCOORDS 0\nWEIGHTS 1\nSUBSETS 0\nCOLLIDERS 0\n"
                                  "OCCLUDERS 0\n0 0 0\n2 0 0 0 1\n0 1\n");
    write_data("animations/two.anim", "BONES 2\nFRAMES 0\nHIERARCHY -1 0\n");
    write_data("animations/three.anim", "BONES 3\nFRAMES 0\nHIERARCHY -1 0 1\n");
    EXPECT_EQ(load("<actor model=\"body.mdl\" animation=\"two.anim\"/>\n"), 0);
}

TEST_F(scene_test, animated_object_whose_model_fits_its_skeleton_loads)
{
    write_data("models/body.mdl", "POINTS 1\nTRIANGLES 0\nTEXCOORDS 0\nWEIGHTS 1\nSUBSETS 0\nCOLLIDERS 0\n"
                                  "OCCLUDERS 0\n0 0 0\n2 0 0 0 1\n0 1\n");
    write_data("animations/three.anim", "BONES 3\nFRAMES 0\nHIERARCHY -1 0 1\n");
    ASSERT_EQ(load("<actor model=\"body.mdl\" animation=\"three.anim\"/>\n"), 1);
    EXPECT_EQ(object_at(1)->animation, asset_name_find(ASSET_ANIMATION, "three.anim"));
}

TEST_F(scene_test, actor_is_a_character_object_with_its_dialogue)
{
    write_data("dialogues/guard.txt", "Guard:\n  Halt!\n");
    ASSERT_EQ(load("<actor x=\"4\" dialogue=\"guard.txt\"/>\n<actor/>\n"), 1);
    const object* o = object_at(1);
    EXPECT_EQ(o->type, OBJECT_ACTOR);
    EXPECT_EQ(o->body, BODY_CHARACTER);
    EXPECT_EQ(o->ref, 0);
    const actor* a = registry_at<actor>(&actors, 0);
    EXPECT_EQ(a->object, 1);
    EXPECT_EQ(a->dialogue, asset_name_find(ASSET_DIALOGUE, "guard.txt"));
    EXPECT_EQ(registry_at<actor>(&actors, 1)->dialogue, 0);
    EXPECT_EQ(o->health, 0);
}

TEST_F(scene_test, actor_whose_dialogue_cannot_load_fails)
{
    EXPECT_EQ(load("<actor dialogue=\"missing.txt\"/>\n"), 0);
}

TEST_F(scene_test, door_record_starts_shut_at_its_yaw_and_locked_by_a_positive_lock)
{
    ASSERT_EQ(load("<door yaw=\"30\" lock=\"2\"/>\n<door lock=\"0\"/>\n<door/>\n"), 1);
    const object* leaf = object_at(1);
    EXPECT_EQ(leaf->type, OBJECT_DOOR);
    EXPECT_EQ(leaf->body, BODY_DOOR);
    EXPECT_EQ(leaf->ref, 0);
    const door* d = registry_at<door>(&doors, 0);
    EXPECT_EQ(d->object, 1);
    EXPECT_EQ(d->locked, 1);
    EXPECT_EQ(d->lock, 2);
    EXPECT_EQ(d->open, 0);
    EXPECT_EQ(d->closed_yaw, leaf->yaw);
    EXPECT_EQ(d->from_yaw, leaf->yaw);
    EXPECT_EQ(d->to_yaw, leaf->yaw);
    EXPECT_EQ(d->swing_start, 0.0f);
    EXPECT_EQ(registry_at<door>(&doors, 1)->locked, 0);
    EXPECT_EQ(registry_at<door>(&doors, 2)->lock, 0);
}

TEST_F(scene_test, door_with_a_lock_that_is_not_an_integer_fails)
{
    EXPECT_EQ(load("<door lock=\"two\"/>\n"), 0);
}

TEST_F(scene_test, door_over_a_portal_is_linked_to_it)
{
    ASSERT_EQ(load_two_rooms("<door model=\"door.mdl\" z=\"0\"/>\n"), 1);
    EXPECT_EQ(portal_at(0)->door, 0);
    EXPECT_EQ(portal_at(1)->door, 0);
}

TEST_F(scene_test, door_placed_away_from_the_portal_is_not_linked)
{
    ASSERT_EQ(load_two_rooms("<door model=\"door.mdl\" x=\"3\"/>\n"), 1);
    EXPECT_EQ(portal_at(0)->door, -1);
}

TEST_F(scene_test, turned_door_is_linked_through_its_turned_box)
{
    // Unturned at x = 0.5 the leaf would miss the opening; turned a quarter about Y it spans it.
    ASSERT_EQ(load_two_rooms("<door model=\"door.mdl\" x=\"0.5\" z=\"0.5\" yaw=\"90\"/>\n"), 1);
    EXPECT_EQ(portal_at(0)->door, 0);
}

TEST_F(scene_test, two_doors_over_one_portal_leave_it_with_the_later_door)
{
    ASSERT_EQ(load_two_rooms("<door model=\"door.mdl\"/>\n", "<door model=\"door.mdl\" y=\"0.1\"/>\n"), 1);
    EXPECT_EQ(doors.count, 2);
    EXPECT_EQ(portal_at(0)->door, 1);
    EXPECT_EQ(portal_at(1)->door, 1);
}

TEST_F(scene_test, pickup_refers_to_its_item_by_key)
{
    ASSERT_EQ(registry_claim(&items), 1);
    ASSERT_EQ(asset_name_add(ASSET_ITEM, "iron_key", 1), 1);
    ASSERT_EQ(load("<pickup item=\"iron_key\" x=\"2\"/>\n<pickup/>\n"), 1);
    EXPECT_EQ(object_at(1)->type, OBJECT_PICKUP);
    EXPECT_EQ(object_at(1)->item, 1);
    EXPECT_EQ(object_at(1)->body, BODY_NONE);
    EXPECT_EQ(object_at(2)->item, 0);
}

TEST_F(scene_test, pickup_naming_an_unknown_item_fails)
{
    EXPECT_EQ(load("<pickup item=\"nothing\"/>\n"), 0);
}

TEST_F(scene_test, pickup_naming_a_key_shared_by_two_items_takes_the_first)
{
    write_data("items.xml", "<items>\n<item key=\"twin\" name=\"A\"/>\n<item key=\"twin\" name=\"B\"/>\n</items>\n");
    ASSERT_EQ(load_items(ITEMS_FILE), 1);
    ASSERT_EQ(load("<pickup item=\"twin\"/>\n"), 1);
    EXPECT_STREQ(registry_at<item>(&items, object_at(1)->item)->name, "A");
}

TEST_F(scene_test, dynamic_list_holds_actors_doors_and_pickups_in_load_order)
{
    ASSERT_EQ(load("<pickup/>\n<static/>\n<door/>\n<light/>\n<actor/>\n"), 1);
    // Object 1 is the static, 2 the pickup, 3 the door, 4 the light's empty slot, 5 the actor.
    ASSERT_EQ(dynamic_objects.count, 3);
    EXPECT_EQ(dynamic_objects.indices[0], 2);
    EXPECT_EQ(dynamic_objects.indices[1], 3);
    EXPECT_EQ(dynamic_objects.indices[2], 5);
    EXPECT_EQ(dynamic_objects.capacity, 64);
}

TEST_F(scene_test, lights_go_to_the_steady_or_flickering_list_and_each_uses_up_an_object)
{
    ASSERT_EQ(load_two_rooms("<light x=\"1\" y=\"2\" z=\"3\" radius=\"4\" brightness=\"0.5\" shadow=\"2\"/>\n",
                             "<light radius=\"6\" flickering=\"9\"/>\n"),
              1);
    ASSERT_EQ(steady_lights.count, 1);
    ASSERT_EQ(flickering_lights.count, 1);
    EXPECT_EQ(steady_lights.capacity, 64);
    EXPECT_EQ(flickering_lights.capacity, 16);
    const light& steady = steady_lights.lights[0];
    EXPECT_EQ(steady.room, 0);
    EXPECT_EQ(steady.position.y, 2.0f);
    EXPECT_EQ(steady.radius, 4.0f);
    EXPECT_EQ(steady.brightness, 0.5f);
    EXPECT_EQ(steady.shadow, 1);
    EXPECT_EQ(steady.flicker_style, 0);
    const light& flicker = flickering_lights.lights[0];
    EXPECT_EQ(flicker.room, 1);
    EXPECT_EQ(flicker.flicker_style, 9);
    EXPECT_EQ(flicker.shadow, 0);
    EXPECT_EQ(objects.count, 3); // the player and one empty object per light
    EXPECT_EQ(object_at(1)->model, 0);
}

TEST_F(scene_test, unknown_elements_and_attributes_are_ignored)
{
    ASSERT_EQ(load("<fog colour=\"grey\"/>\n<static shiny=\"yes\" x=\"1\"/>\n"), 1);
    EXPECT_EQ(objects.count, 2);
}

TEST_F(scene_test, element_and_attribute_names_ignore_case)
{
    ASSERT_EQ(load("<STATIC X=\"1\"/>\n<Room BSP_NODE=\"1\">\n</Room>\n"), 1);
    EXPECT_EQ(object_at(1)->position.x, 1.0f);
    EXPECT_EQ(room_at(1)->bsp_node, 1);
}
