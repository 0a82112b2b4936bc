#include <morvantis/core/zublibrary_interface.h>

#include <morvantis/core/zubmessage_interface.h>

#include "debug_output.h"
#include "recording_host.h"
#include "silent_host.h"
#include "virtual_order.h"

#include <gtest/gtest.h>

#include <type_traits>
#include <utility>

static_assert(!std::has_virtual_destructor_v<zubLibrary_interface>);
static_assert(!std::has_virtual_destructor_v<zubMessage_interface>);
static_assert(std::is_abstract_v<zubLibrary_interface> && std::is_abstract_v<zubMessage_interface>);
static_assert(sizeof(zubLibrary_interface) == sizeof(void*), "no data");
static_assert(sizeof(zubMessage_interface) == sizeof(void*), "no data");

TEST(zubLibrary_interface, OperationsStandInTheirOrder) {
	using Interface = zubLibrary_interface;
	EXPECT_EQ(virtual_index(&Interface::error), 0u);
	EXPECT_EQ(virtual_index(&Interface::warning), 1u);
	EXPECT_EQ(virtual_index(&Interface::content_warning), 2u);
	EXPECT_EQ(virtual_index(&Interface::failed_assert), 3u);
	EXPECT_EQ(virtual_index(&Interface::simple_assert), 4u);
	EXPECT_EQ(virtual_index(&Interface::log), 5u);
	EXPECT_EQ(virtual_index(&Interface::get_assert_on_exceptions), 6u);
	EXPECT_EQ(virtual_index(&Interface::get_enable_deterministic_mode), 7u);
	EXPECT_EQ(virtual_index(&Interface::get_disable_gui_messages), 8u);
	EXPECT_EQ(virtual_index(&Interface::delete_later_queue_has_element), 9u);
	EXPECT_EQ(virtual_index(&Interface::add_delete_later_queue), 10u);
	EXPECT_EQ(virtual_index(&Interface::unhandled_exception_handler), 11u);
}

TEST(zubMessage_interface, OperationsStandInTheirOrder) {
	using Interface = zubMessage_interface;
	EXPECT_EQ(virtual_index(&Interface::post_warning_line), 0u);
	EXPECT_EQ(virtual_index(&Interface::post_success_line), 1u);
	EXPECT_EQ(virtual_index(&Interface::post_message_line_formatted), 2u);
	EXPECT_EQ(virtual_index(&Interface::post_message_line), 3u);
}

// The flag is one for the process, so no other test may call the default handler.
TEST(zubLibrary_interface, DefaultHandlerSaysOnceThatItIsNotImplemented) {
	static bool is_first_run = true;
	Debug_output_catcher output;
	int exception = 0;
	EXPECT_EQ(Recording_host::get().unhandled_exception_handler(&exception), 0);
	EXPECT_EQ(output.take(),
	          is_first_run ? "Not implemented: zubLibrary_interface::unhandled_exception_handler "
	                         "(morvantis/core/zublibrary_interface.cpp:8)\n"
	                       : "");
	is_first_run = false;
	EXPECT_EQ(Recording_host::get().unhandled_exception_handler(nullptr), 0);
	EXPECT_EQ(output.take(), "");
}

TEST(zubLibrary_interface, CopyAndMoveCarryNothing) {
	struct Plain : Silent_host {
		bool get_assert_on_exceptions() override { return number == 1; }
		int number = 0;
	};
	Plain first;
	first.number = 1;
	Plain copy(first);
	Plain moved(std::move(copy));
	EXPECT_TRUE(moved.get_assert_on_exceptions());
	Plain assigned;
	assigned = first;
	EXPECT_TRUE(assigned.get_assert_on_exceptions());
	assigned.number = 2;
	zubLibrary_interface& base = assigned;
	base = first; // the interface alone: nothing of the host's is in it
	EXPECT_EQ(assigned.number, 2);
	base = std::move(moved);
	EXPECT_EQ(assigned.number, 2);
	EXPECT_FALSE(base.get_assert_on_exceptions());
}
