#include <gtest/gtest.h>

#include <string>

#include "assets/collision_tree.h"
#include "support/asset_state.h"
#include "support/temp_files.h"

namespace {

class collision_tree_test : public data_folder_test {
protected:
    void TearDown() override
    {
        collision_tree_free(&tree);
        data_folder_test::TearDown();
    }

    int load(const std::string& text)
    {
        write_file("tree.bsp", text);
        return collision_tree_load(&tree, "tree.bsp");
    }

    // The walk that rooms rely on, from node 0: 1 inside, 0 outside.
    int inside(float x, float y, float z) const { return find_point_area(&tree, 0, {x, y, z}) > 0 ? 1 : 0; }

    collision_tree tree = {};
};

} // namespace

TEST_F(collision_tree_test, node_takes_a_copy_of_the_plane_it_names)
{
    ASSERT_EQ(load("PLANES 2\nNODES 1\n1 0 0 5\n0 1 0 2\n1 0 0\n"), 1);
    ASSERT_EQ(tree.node_count, 1);
    EXPECT_EQ(tree.nodes[0].plane.b, 1.0f);
    EXPECT_EQ(tree.nodes[0].plane.d, 2.0f);
    EXPECT_EQ(inside(0.0f, 3.0f, 0.0f), 1);  // in front of the second plane
    EXPECT_EQ(inside(100.0f, 1.0f, 0.0f), 0); // behind it
}

TEST_F(collision_tree_test, point_exactly_on_a_plane_counts_as_in_front)
{
    ASSERT_EQ(load("PLANES 2\nNODES 1\n1 0 0 5\n0 1 0 2\n1 0 0\n"), 1);
    EXPECT_EQ(inside(0.0f, 2.0f, 0.0f), 1);
}

TEST_F(collision_tree_test, nested_nodes_bound_a_slab)
{
    // Node 0: x >= 0 goes on to node 1, x < 0 is solid; node 1: x <= 4 is open, beyond is solid.
    ASSERT_EQ(load("# a slab 0 <= x <= 4\nPLANES 2\nNODES 2\n1 0 0 0\n-1 0 0 -4\n0 1 0\n1 0 0\n"), 1);
    EXPECT_EQ(inside(2.0f, 0.0f, 0.0f), 1);
    EXPECT_EQ(inside(-1.0f, 0.0f, 0.0f), 0);
    EXPECT_EQ(inside(5.0f, 0.0f, 0.0f), 0);
}

TEST_F(collision_tree_test, node_line_with_two_numbers_fails_and_leaves_the_tree_empty)
{
    EXPECT_EQ(load("PLANES 1\nNODES 1\n1 0 0 0\n0 0\n"), 0);
    EXPECT_EQ(tree.node_count, 0);
    EXPECT_EQ(tree.nodes, nullptr);
}

TEST_F(collision_tree_test, no_nodes_loads_after_the_planes)
{
    EXPECT_EQ(load("PLANES 1\nNODES 0\n1 0 0 0\n"), 1);
    EXPECT_EQ(tree.node_count, 0);
}

TEST_F(collision_tree_test, too_few_planes_fail)
{
    EXPECT_EQ(load("PLANES 2\nNODES 0\n1 0 0 0\n"), 0);
}

TEST_F(collision_tree_test, plane_with_three_numbers_fails)
{
    EXPECT_EQ(load("PLANES 1\nNODES 0\n1 0 0\n"), 0);
}

TEST_F(collision_tree_test, headers_must_come_planes_first)
{
    EXPECT_EQ(load("NODES 0\nPLANES 0\n"), 0);
    EXPECT_EQ(load("PLANES x\nNODES 0\n"), 0);
}

TEST_F(collision_tree_test, plane_index_outside_the_table_fails)
{
    EXPECT_EQ(load("PLANES 1\nNODES 1\n1 0 0 0\n1 0 0\n"), 0);
    EXPECT_EQ(load("PLANES 1\nNODES 1\n1 0 0 0\n-1 0 0\n"), 0);
}

TEST_F(collision_tree_test, child_outside_the_tree_fails)
{
    EXPECT_EQ(load("PLANES 1\nNODES 1\n1 0 0 0\n0 1 0\n"), 0);
    EXPECT_EQ(load("PLANES 1\nNODES 1\n1 0 0 0\n0 0 -2\n"), 0);
    EXPECT_EQ(tree.nodes, nullptr);
}

TEST_F(collision_tree_test, missing_file_fails)
{
    EXPECT_EQ(collision_tree_load(&tree, "nowhere.bsp"), 0);
}

TEST_F(collision_tree_test, point_area_counts_the_nodes_visited)
{
    // Node 0 (x >= 0) leads to node 1 (x <= 4), whose front is open space.
    ASSERT_EQ(load("PLANES 2\nNODES 2\n1 0 0 0\n-1 0 0 -4\n0 1 0\n1 0 0\n"), 1);
    EXPECT_EQ(find_point_area(&tree, 0, {2.0f, 0.0f, 0.0f}), 2);
    EXPECT_EQ(find_point_area(&tree, 1, {2.0f, 0.0f, 0.0f}), 1); // a room may start lower in the tree
    EXPECT_EQ(find_point_area(&tree, 1, {-9.0f, 0.0f, 0.0f}), 1);
    EXPECT_EQ(find_point_area(&tree, 0, {5.0f, 0.0f, 0.0f}), 0);
}

TEST_F(collision_tree_test, point_area_gives_up_at_the_255th_step)
{
    // A chain of n nodes whose last one has an open front: every point in front of them all is
    // inside after n steps; a chain that loops back on itself never ends and counts as outside.
    auto chain = [](int nodes, int last_front) {
        std::string text = "PLANES 1\nNODES " + std::to_string(nodes) + "\n1 0 0 0\n";
        for (int i = 0; i < nodes; ++i)
            text += "0 " + std::to_string(i + 1 < nodes ? i + 1 : last_front) + " 0\n";
        return text;
    };
    ASSERT_EQ(load(chain(254, 0)), 1);
    EXPECT_EQ(find_point_area(&tree, 0, {1.0f, 0.0f, 0.0f}), 254);
    ASSERT_EQ(load(chain(255, 0)), 1);
    EXPECT_EQ(find_point_area(&tree, 0, {1.0f, 0.0f, 0.0f}), 0);
    ASSERT_EQ(load(chain(3, 1)), 1);
    EXPECT_EQ(find_point_area(&tree, 0, {1.0f, 0.0f, 0.0f}), 0);
}

TEST_F(collision_tree_test, point_area_of_a_root_outside_the_tree_is_outside)
{
    ASSERT_EQ(load("PLANES 1\nNODES 1\n1 0 0 0\n0 0 0\n"), 1);
    EXPECT_EQ(find_point_area(&tree, 1, {1.0f, 0.0f, 0.0f}), 0);
    EXPECT_EQ(find_point_area(&tree, -1, {1.0f, 0.0f, 0.0f}), 0);
}
