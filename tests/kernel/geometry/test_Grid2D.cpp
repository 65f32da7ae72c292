#include "kernel/geometry/Grid2D.h"
#include "kernel/geometry/Grid2DIterator.h"

#include "TestSupport.h"

#include <string>
#include <type_traits>
#include <vector>

using testing_support::assertion_text;
using testing_support::is_assertion_of;

namespace
{

// A node content that is not trivially copyable, like a deposit stack.
struct Stack
{
    std::vector<int> units;
    std::string name = "empty";
};

static_assert(!std::is_copy_constructible_v<Grid2D<Stack>>, "grids are copied only on purpose");
static_assert(!std::is_copy_assignable_v<Grid2D<Stack>>, "grids are copied only on purpose");

} // namespace

TEST(Grid2D, NodeOrderAndAllocation)
{
    Grid2D<int> g(10., 10., 4, 3);
    EXPECT_TRUE(g.isOwner());
    ASSERT_EQ(g.node_count(), 12u);
    const int* first = g.pointer(0, 0);
    for (int j = 0; j < 3; ++j)
        for (int i = 0; i < 4; ++i)
        {
            EXPECT_EQ(g.pointer(i, j) - first, j * 4 + i);
            EXPECT_EQ(g.getObject(i, j), 0);
            g.getObject(i, j) = 100 * j + i;
        }
    EXPECT_EQ(first[5], 101);

    // Refined geometry: the array follows the refined counts.
    Grid2D<bool> fine(10., 10., 2, 3, 0., 0., 2);
    EXPECT_EQ(fine.node_count(), 24u);
    fine.initialize(true);
    EXPECT_TRUE(fine.getObject(3, 5));
}

TEST(Grid2D, AssertionTexts)
{
    Grid2D<int> g(1., 1., 4, 3);
    EXPECT_TRUE(is_assertion_of(assertion_text([&] { g.getObject(-1, 0); }), "i >= 0"));
    EXPECT_TRUE(is_assertion_of(assertion_text([&] { g.getObject(4, 0); }), "i < _nx"));
    EXPECT_TRUE(is_assertion_of(assertion_text([&] { g.pointer(0, -1); }), "j >= 0"));
    EXPECT_TRUE(is_assertion_of(assertion_text([&] { g.pointer(0, 3); }), "j < _ny"));
    EXPECT_EQ(assertion_text([&] { g.getObject(3, 2); }), "");

    g.clear();
    EXPECT_FALSE(g.isAllocated());
    EXPECT_EQ(g.getNx(), 4);
    EXPECT_TRUE(is_assertion_of(assertion_text([&] { g.getObject(0, 0); }), "_first_element != NULL"));
    const Grid2D<int> empty;
    EXPECT_TRUE(is_assertion_of(assertion_text([&] { empty.pointer(0, 0); }), "_first_element != NULL"));
}

TEST(Grid2D, NonTrivialContentResetCopyMove)
{
    Grid2D<Stack> g(GridParams(2., 3., 3, 2));
    EXPECT_EQ(g.getObject(2, 1).name, "empty");
    g.initialize(Stack{{1, 2, 3}, "filled"});
    EXPECT_EQ(g.getObject(1, 1).units.size(), 3u);

    Grid2D<Stack> copy;
    copy.copyFrom(g);
    EXPECT_TRUE(copy.isCompatibleWith(g, true, true));
    EXPECT_TRUE(copy.isOwner());
    copy.getObject(0, 0).units.push_back(4);
    EXPECT_EQ(copy.getObject(0, 0).units.size(), 4u);
    EXPECT_EQ(g.getObject(0, 0).units.size(), 3u);

    Grid2D<Stack> moved(std::move(copy));
    EXPECT_FALSE(copy.isAllocated());
    EXPECT_EQ(moved.getObject(0, 0).units.size(), 4u);

    GridParams bigger(1., 1., 5, 4);
    bigger.setRotation(15.);
    moved.reset(bigger);
    EXPECT_EQ(moved.node_count(), 20u);
    EXPECT_EQ(moved.getRotation(), 15.);
    EXPECT_TRUE(moved.getObject(4, 3).units.empty());
    EXPECT_EQ(moved.getObject(0, 0).name, "empty");
}

TEST(Grid2DIterator, WalkVisitsEveryNodeOnceRowByRow)
{
    Grid2D<int> g(1., 1., 5, 4);
    Grid2DIterator<int> it(g);
    EXPECT_FALSE(it.isOwner());
    std::vector<int> order;
    do
    {
        do
        {
            order.push_back(static_cast<int>(it.current_position() - g.pointer(0, 0)));
            EXPECT_EQ(it.current_position(), g.pointer(it.get_i(), it.get_j()));
            *it.current_position() += 1;
        } while (it.move_right());
        it.move_left_most();
        EXPECT_EQ(it.get_i(), 0);
    } while (it.move_top());
    ASSERT_EQ(order.size(), 20u);
    for (int k = 0; k < 20; ++k)
        EXPECT_EQ(order[k], k);
    for (int j = 0; j < 4; ++j)
        for (int i = 0; i < 5; ++i)
            EXPECT_EQ(g.getObject(i, j), 1);
}

TEST(Grid2DIterator, MovesStopAtTheEdgesAndLocate)
{
    Grid2D<int> g(1., 1., 3, 2);
    for (int j = 0; j < 2; ++j)
        for (int i = 0; i < 3; ++i)
            g.getObject(i, j) = 10 * j + i;
    Grid2DIterator<int> it(g);
    EXPECT_FALSE(it.move_left());
    EXPECT_FALSE(it.move_bottom());
    EXPECT_EQ(*it.current_position(), 0);

    EXPECT_EQ(*it.locate(2, 1), 12);
    EXPECT_FALSE(it.move_right());
    EXPECT_FALSE(it.move_top());
    EXPECT_EQ(*it.current_position(), 12);
    EXPECT_TRUE(it.move_bottom());
    EXPECT_EQ(*it.current_position(), 2);
    EXPECT_TRUE(it.move_left());
    EXPECT_EQ(*it.current_position(), 1);
    EXPECT_TRUE(it.move_top());
    it.move_left_most();
    EXPECT_EQ(*it.current_position(), 10);
    EXPECT_EQ(it.get_j(), 1);

    Grid2DIterator<int> other(it);
    EXPECT_TRUE(other.move_right());
    EXPECT_EQ(*other.current_position(), 11);
    EXPECT_EQ(*it.current_position(), 10);

    it.reset();
    EXPECT_EQ(*it.current_position(), 0);
    EXPECT_TRUE(is_assertion_of(assertion_text([&] { it.locate(3, 0); }), "i < _nx"));
    EXPECT_TRUE(is_assertion_of(assertion_text([&] { it.locate(-1, 0); }), "i >= 0"));
    EXPECT_TRUE(is_assertion_of(assertion_text([&] { it.locate(0, 2); }), "j < _ny"));
    EXPECT_TRUE(is_assertion_of(assertion_text([&] { it.locate(0, -1); }), "j >= 0"));

    // Clearing the view leaves the grid alone.
    it.clear();
    EXPECT_EQ(it.current_position(), nullptr);
    EXPECT_FALSE(it.move_right());
    EXPECT_TRUE(is_assertion_of(assertion_text([&] { it.locate(0, 0); }), "_first_element != NULL"));
    EXPECT_EQ(g.getObject(2, 1), 12);

    Grid2D<int> empty;
    Grid2DIterator<int> none(empty);
    EXPECT_EQ(none.current_position(), nullptr);
    EXPECT_FALSE(none.move_right());
    EXPECT_FALSE(none.move_top());
}
