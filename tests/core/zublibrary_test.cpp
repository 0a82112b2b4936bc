#include <morvantis/core/zublibrary.h>

#include <morvantis/core/xylreport.h>
#include <morvantis/diagnostics/xyldebug_render_records.h>
#include <morvantis/io/xylio_text_stream.h>
#include <morvantis/memory/xylheap.h>
#include <morvantis/net/qonet.h>

#include "recording_host.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <new>

using testing::ElementsAre;

static_assert(offsetof(zubLibrary, interface_) == 0);
static_assert(offsetof(zubLibrary, message_interface_) == 8);
static_assert(offsetof(zubLibrary, qonet_) == 16);
static_assert(sizeof(zubLibrary) == 24, "no virtual operations");

namespace {

// Counts how often its destructor runs, which the library must not.
class Counting_messages : public zubMessage_interface {
public:
	~Counting_messages() { ++destroyed; }
	void post_warning_line(const char*) override {}
	void post_success_line(const char*) override {}
	void post_message_line_formatted(unsigned int, const char*) override {}
	void post_message_line(const xylVarString&, const int&) override {}

	static inline int destroyed = 0;
};

struct Other_base {
	virtual int other() { return 1; }
	long long data = 2;
};

// Its interface doesn't stand at the start of its block.
class Second_base_messages : public Other_base, public Counting_messages {};

template <typename T> T* make_on_heap() { return new (xyl_heap_allocate(sizeof(T))) T; }

// The test program's library object, put back when a test ends.
class Library_test : public testing::Test {
protected:
	// A test begins without global objects, and the program's own come back at its end.
	void SetUp() override {
		xyl_cur_frame_debug_render_objects_ptr = nullptr;
		xyl_debug_ptr = nullptr;
	}
	void TearDown() override {
		library_->deinit_globals();
		xyl_cur_frame_debug_render_objects_ptr = debug_records_;
		xyl_debug_ptr = debug_stream_;
		zub_library = library_;
		Recording_host& host = Recording_host::get();
		library_->interface_ = &host;
		library_->set_message_interface(host.make_message_interface());
	}

	static void end(zubLibrary* library) {
		library->~zubLibrary();
		xyl_heap_free(library);
	}

	zubLibrary* const library_ = zub_library;
	xylDebug_render_records* const debug_records_ = xyl_cur_frame_debug_render_objects_ptr;
	xylIO_text_stream* const debug_stream_ = xyl_debug_ptr;
};

} // namespace

TEST_F(Library_test, InitializeStoresTheInterfacesAndMakesTheNetworkLayer) {
	Recording_host& host = Recording_host::get();
	Counting_messages messages;
	zubLibrary::initialize(&host, &messages);
	zubLibrary* const second = zub_library;
	// kept: a second call makes a new object, and the first stays as it was.
	EXPECT_NE(second, library_);
	EXPECT_NE(library_->get_qonet(), nullptr);
	EXPECT_EQ(second->get_interface(), &host);
	EXPECT_EQ(second->get_message_interface(), &messages);
	ASSERT_NE(second->get_qonet(), nullptr);
	EXPECT_NE(second->get_qonet(), library_->get_qonet());
	EXPECT_FALSE(second->get_qonet()->is_initialized);
	EXPECT_NE(xyl_cur_frame_debug_render_objects_ptr, nullptr);
	EXPECT_NE(xyl_debug_ptr, nullptr);
	end(second);
	EXPECT_EQ(xyl_cur_frame_debug_render_objects_ptr, nullptr);
	EXPECT_EQ(xyl_debug_ptr, nullptr);
	EXPECT_EQ(zub_library, second) << "the value stays when the object has ended";
}

TEST_F(Library_test, InitializeTakesNoMessageInterface) {
	zubLibrary::initialize(&Recording_host::get(), nullptr);
	zubLibrary* const second = zub_library;
	EXPECT_EQ(second->get_message_interface(), nullptr);
	xyl_warning("no lines needed");
	EXPECT_THAT(Recording_host::get().take_texts(), ElementsAre("no lines needed"));
	end(second);
}

// That they are freed, the address sanitizer's leak check sees.
TEST_F(Library_test, GlobalsLiveFromInitToDeinit) {
	library_->init_globals();
	ASSERT_NE(xyl_cur_frame_debug_render_objects_ptr, nullptr);
	EXPECT_TRUE(xyl_cur_frame_debug_render_objects_ptr->enabled);
	EXPECT_TRUE(xyl_cur_frame_debug_render_objects_ptr->is_empty());
	xyl_cur_frame_debug_render_objects_ptr->add_debug_text({0, 0, 0}, "freed too", 0, nullptr, 0);
	ASSERT_NE(xyl_debug_ptr, nullptr);
	*xyl_debug_ptr << "freed too, as it is longer than nothing";
	EXPECT_TRUE(xyl_debug_ptr->get_name().is_empty());
	library_->deinit_globals();
	EXPECT_EQ(xyl_cur_frame_debug_render_objects_ptr, nullptr);
	EXPECT_EQ(xyl_debug_ptr, nullptr);
}

TEST_F(Library_test, GlobalsMayEndTwice) {
	library_->init_globals();
	library_->deinit_globals();
	library_->deinit_globals();
	EXPECT_EQ(xyl_cur_frame_debug_render_objects_ptr, nullptr);
	EXPECT_EQ(xyl_debug_ptr, nullptr);
}

TEST_F(Library_test, StreamOfTheHostsOwnEndsAtItsWholeObject) {
	struct Front {
		virtual ~Front() = default;
	};
	struct Host_stream : Front, xylIO_text_stream {
		~Host_stream() override { ++ended; }
		static int& counter() {
			static int count = 0;
			return count;
		}
		int& ended = counter();
	};
	xyl_debug_ptr = make_on_heap<Host_stream>();
	library_->deinit_globals();
	EXPECT_EQ(Host_stream::counter(), 1);
	EXPECT_EQ(xyl_debug_ptr, nullptr);
}

// That the memory is freed, the address sanitizer's leak check sees.
TEST_F(Library_test, ReplacedMessageInterfaceIsFreedWithoutItsDestructor) {
	Counting_messages::destroyed = 0;
	auto* first = make_on_heap<Counting_messages>();
	auto* second = make_on_heap<Second_base_messages>();
	library_->set_message_interface(first);
	EXPECT_EQ(library_->get_message_interface(), first);
	library_->set_message_interface(second);
	EXPECT_EQ(library_->get_message_interface(), second);
	library_->set_message_interface(nullptr);
	EXPECT_EQ(library_->get_message_interface(), nullptr);
	library_->set_message_interface(nullptr);
	EXPECT_EQ(library_->get_message_interface(), nullptr);
	EXPECT_EQ(Counting_messages::destroyed, 0);
}

TEST_F(Library_test, ReplacementGetsTheLines) {
	library_->set_message_interface(Recording_host::get().make_message_interface());
	xyl_post_success_line("line");
	EXPECT_THAT(Recording_host::get().take_texts(), ElementsAre("line"));
}

TEST_F(Library_test, AnswersAreTheHosts) {
	Recording_host& host = Recording_host::get();
	struct Case {
		bool Recording_host::* answer;
		bool (zubLibrary::*operation)() const;
	};
	const Case cases[] = {
		{&Recording_host::assert_on_exceptions, &zubLibrary::get_assert_on_exceptions},
		{&Recording_host::deterministic_mode, &zubLibrary::get_enable_deterministic_mode},
		{&Recording_host::gui_messages_disabled, &zubLibrary::get_disable_gui_messages},
	};
	for (const Case& asked : cases) {
		host.*asked.answer = true;
		for (const Case& c : cases) EXPECT_EQ((library_->*c.operation)(), &c == &asked);
		host.*asked.answer = false;
	}
}

TEST_F(Library_test, DeleteLaterQueueIsTheHosts) {
	alignas(16) char places[2][16] = {};
	auto* object = reinterpret_cast<xylReference_counted_object*>(places[0]); // never looked into
	auto* other = reinterpret_cast<xylReference_counted_object*>(places[1]);
	library_->add_delete_later_queue(object);
	EXPECT_THAT(Recording_host::get().delete_later_queue, ElementsAre(object));
	EXPECT_TRUE(library_->delete_later_queue_has_element(object));
	EXPECT_FALSE(library_->delete_later_queue_has_element(other));
}

TEST_F(Library_test, AssignmentCopiesTheThreeFields) {
	Counting_messages messages;
	zubLibrary other;
	QoNet* const own = other.qonet_;
	EXPECT_EQ(other.interface_, nullptr);
	EXPECT_EQ(other.message_interface_, nullptr);
	other = *library_;
	EXPECT_EQ(other.interface_, library_->interface_);
	EXPECT_EQ(other.message_interface_, library_->message_interface_);
	EXPECT_EQ(other.qonet_, library_->qonet_);
	other.qonet_ = own; // its destructor frees it
}

TEST_F(Library_test, FinalCleanupFlagIsClear) { EXPECT_FALSE(is_final_cleanup_active_); }
