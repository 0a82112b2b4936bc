#include <morvantis/core/xylsimple_game_object.h>

#include <morvantis/core/zubobject.h>

#include "virtual_order.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <type_traits>

static_assert(!std::is_base_of_v<zubObject, xylSimple_game_object>, "a root of its own");
static_assert(std::is_abstract_v<xylSimple_game_object>);
static_assert(std::has_virtual_destructor_v<xylSimple_game_object>);
static_assert(sizeof(xylSimple_game_object) == sizeof(void*) + 8);

namespace {

class Sample_game_object : public xylSimple_game_object {
public:
	void _xyl_construct_obj() override {
		xylSimple_game_object::_xyl_construct_obj();
		++constructed;
	}
	void _xyl_destruct_obj() override {
		xylSimple_game_object::_xyl_destruct_obj();
		++destructed;
	}
	int constructed = 0, destructed = 0;
};

TEST(xylSimple_game_object, OperationsStandInTheirOrder) {
	EXPECT_EQ(virtual_index(&xylSimple_game_object::_xyl_construct_obj), 2u);
	EXPECT_EQ(virtual_index(&xylSimple_game_object::_xyl_destruct_obj), 3u);
}

TEST(xylSimple_game_object, HooksHaveBodiesToCall) {
	Sample_game_object object;
	xylSimple_game_object& root = object;
	root._xyl_construct_obj();
	root._xyl_destruct_obj();
	EXPECT_EQ(object.constructed, 1);
	EXPECT_EQ(object.destructed, 1);
}

TEST(xylSimple_game_object, CopyAndAssignmentCarryTheWords) {
	Sample_game_object source;
	source.first_word_ = 0x12345678;
	source.second_word_ = 0xFEDCBA98;
	const Sample_game_object copy(source);
	EXPECT_EQ(copy.first_word_, 0x12345678u);
	EXPECT_EQ(copy.second_word_, 0xFEDCBA98u);
	Sample_game_object assigned;
	assigned = source;
	EXPECT_EQ(assigned.first_word_, 0x12345678u);
	EXPECT_EQ(assigned.second_word_, 0xFEDCBA98u);
	assigned = *&assigned;
	EXPECT_EQ(assigned.second_word_, 0xFEDCBA98u);
	// Words that were never set may be copied, too.
	Sample_game_object unset;
	const Sample_game_object copy_of_unset(unset);
	EXPECT_EQ(copy_of_unset.constructed, 0);
}

} // namespace
