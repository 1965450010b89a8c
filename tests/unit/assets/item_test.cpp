#include <gtest/gtest.h>

#include <math.h>

#include <string>

#include "assets/item.h"
#include "assets/model.h"
#include "assets/sound.h"
#include "assets/start_up.h"
#include "support/asset_state.h"
#include "support/media_files.h"

namespace {

class item_test : public data_folder_test {
protected:
    void SetUp() override
    {
        data_folder_test::SetUp();
        // As the game's start-up does: the empty model, animation and item placeholders in slot 0.
        ASSERT_EQ(reserve_empty_model_and_animation(), 1);
        ASSERT_EQ(reserve_empty_item(), 1);
        wav_description chime;
        chime.data = std::string(64, '\x10');
        write_data("sounds/chime.wav", encode_wav(chime));
        write_data("models/key.mdl", "POINTS 3\nTRIANGLES 1\nTEXCOORDS 0\nWEIGHTS 0\nSUBSETS 0\nCOLLIDERS 0\n"
                                     "OCCLUDERS 0\n0 0 0\n2 0 0\n0 4 4\n0 1 2\n");
    }

    static int load(const std::string& body)
    {
        write_data("items.xml", "<items>\n" + body + "</items>\n");
        return load_items(ITEMS_FILE);
    }

    static const item* at(int32_t index) { return registry_at<item>(&items, index); }
};

} // namespace

TEST_F(item_test, items_start_after_the_placeholder_with_their_attributes)
{
    ASSERT_EQ(load("<item key=\"iron_key\" name=\"Iron key\" model=\"key.mdl\" pickup_sound=\"chime.wav\" "
                   "type=\"key\" lock=\"3\"/>\n"),
              1);
    ASSERT_EQ(items.count, 2);
    EXPECT_EQ(asset_name_find(ASSET_ITEM, "iron_key"), 1);
    EXPECT_STREQ(at(1)->name, "Iron key");
    EXPECT_EQ(at(1)->type, ITEM_TYPE_KEY);
    EXPECT_EQ(at(1)->lock, 3);
    EXPECT_TRUE(registry_in_use(&sounds, at(1)->pickup_sound));
    EXPECT_GT(at(1)->model, 0);
    EXPECT_NE(at(1)->model, asset_name_find(ASSET_MODEL, "key.mdl")); // the inventory copy
}

TEST_F(item_test, type_key_in_capitals_is_a_key)
{
    ASSERT_EQ(load("<item key=\"k\" type=\"KEY\" lock=\"2\"/>\n"), 1);
    EXPECT_EQ(at(1)->type, ITEM_TYPE_KEY);
    EXPECT_EQ(at(1)->lock, 2);
}

TEST_F(item_test, item_without_type_has_type_0_and_its_lock_is_ignored)
{
    ASSERT_EQ(load("<item key=\"coin\" lock=\"7\"/>\n<item key=\"gem\" lock=\"not a number\"/>\n"), 1);
    EXPECT_EQ(at(1)->type, 0);
    EXPECT_EQ(at(1)->lock, 0);
    EXPECT_EQ(at(2)->lock, 0);
}

TEST_F(item_test, lock_written_before_type_is_still_read)
{
    ASSERT_EQ(load("<item lock=\"9\" type=\"key\" key=\"k\"/>\n"), 1);
    EXPECT_EQ(at(1)->lock, 9);
}

TEST_F(item_test, name_of_63_characters_is_accepted)
{
    std::string name(63, 'n');
    ASSERT_EQ(load("<item key=\"k\" name=\"" + name + "\"/>\n"), 1);
    EXPECT_EQ(std::string(at(1)->name), name);
}

TEST_F(item_test, name_of_64_characters_fails_while_the_items_before_it_stay)
{
    std::string name(64, 'n');
    EXPECT_EQ(load("<item key=\"first\" name=\"ok\"/>\n<item key=\"second\" name=\"" + name + "\"/>\n"), 0);
    EXPECT_TRUE(registry_in_use(&items, 1));
    EXPECT_STREQ(at(1)->name, "ok");
    EXPECT_FALSE(registry_in_use(&items, 2)); // the failing item's slot is given back
}

TEST_F(item_test, two_items_with_the_same_key_resolve_to_the_first)
{
    ASSERT_EQ(load("<item key=\"twin\" name=\"A\"/>\n<item key=\"twin\" name=\"B\"/>\n"), 1);
    int32_t found = asset_name_find(ASSET_ITEM, "twin");
    ASSERT_EQ(found, 1);
    EXPECT_STREQ(at(found)->name, "A");
}

TEST_F(item_test, type_other_than_key_fails)
{
    EXPECT_EQ(load("<item key=\"k\" type=\"door\"/>\n"), 0);
}

TEST_F(item_test, lock_that_is_not_an_integer_fails_for_a_key)
{
    EXPECT_EQ(load("<item key=\"k\" type=\"key\" lock=\"3a\"/>\n"), 0);
}

TEST_F(item_test, pickup_sound_that_cannot_load_fails)
{
    EXPECT_EQ(load("<item key=\"k\" pickup_sound=\"missing.wav\"/>\n"), 0);
    EXPECT_FALSE(registry_in_use(&items, 1));
}

TEST_F(item_test, model_that_cannot_load_gives_a_copy_of_the_empty_model)
{
    ASSERT_EQ(load("<item key=\"k\" model=\"missing.mdl\"/>\n"), 1);
    int32_t copy = at(1)->model;
    ASSERT_GT(copy, 0);
    EXPECT_EQ(registry_at<model>(&models, copy)->point_count, 0);
}

TEST_F(item_test, unknown_attributes_and_elements_are_ignored_and_every_items_element_is_read)
{
    write_data("items.xml", "<items>\n<item key=\"a\" colour=\"red\"/>\n<note text=\"x\"/>\n</items>\n"
                            "<other>\n<item key=\"hidden\"/>\n</other>\n<ITEMS>\n<Item KEY=\"b\"/>\n</ITEMS>\n");
    ASSERT_EQ(load_items(ITEMS_FILE), 1);
    EXPECT_EQ(asset_name_find(ASSET_ITEM, "a"), 1);
    EXPECT_EQ(asset_name_find(ASSET_ITEM, "b"), 2);
    EXPECT_EQ(asset_name_find(ASSET_ITEM, "hidden"), -1);
}

TEST_F(item_test, missing_file_fails)
{
    EXPECT_EQ(load_items(ITEMS_FILE), 0);
}

TEST_F(item_test, inventory_model_is_turned_about_x_and_scaled_to_a_unit_diagonal)
{
    int32_t source = load_model("key.mdl");
    ASSERT_GT(source, 0);
    int32_t copy = make_inventory_model(source);
    ASSERT_GT(copy, source);
    const model* m = registry_at<model>(&models, source);
    const model* c = registry_at<model>(&models, copy);
    ASSERT_EQ(c->point_count, 3);
    // Box (0,0,0)-(2,4,4): diagonal 6, middles 1, 2, 2.
    float s = (1.0f / 6.0f) * (tanf(0.3926991f) * 4.0f * 0.6f);
    for (int i = 0; i < 3; ++i) {
        vec3 p = m->points[i];
        EXPECT_FLOAT_EQ(c->points[i].x, (p.x - 1.0f) * s);
        EXPECT_FLOAT_EQ(c->points[i].y, (-p.z - 2.0f) * s); // the middle of y taken from the turned z
        EXPECT_FLOAT_EQ(c->points[i].z, (p.y - 2.0f) * s);  // and the middle of z from the turned y
    }
    EXPECT_EQ(c->triangles[0].points[2], 2);
    EXPECT_FLOAT_EQ(c->bounds_max.z, (4.0f - 2.0f) * s);
    // The normals are recomputed for the turned copy.
    EXPECT_NEAR(vec3_length(c->normals[0]), 1.0f, 1e-6f);
    EXPECT_EQ(c->weight_count, 0);
    EXPECT_EQ(c->collider_count, 0);
}

TEST_F(item_test, inventory_model_of_a_model_that_does_not_exist_fails)
{
    EXPECT_EQ(make_inventory_model(42), -1);
    EXPECT_EQ(make_inventory_model(-1), -1);
}
