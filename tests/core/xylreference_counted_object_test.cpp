#include <morvantis/core/xylreference_counted_object.h>

#include <morvantis/memory/xylheap.h>

#include "recording_host.h"
#include "virtual_order.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
#include <new>
#include <thread>
#include <type_traits>
#include <utility>
#include <vector>

static_assert(std::is_same_v<decltype(xylReference_counted_object::reference_count_),
                             std::atomic<unsigned int>>);
static_assert(sizeof(xylReference_counted_object) == 16, "table, count, flag");

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

// Counts its ends.
class Counted_object : public xylReference_counted_object {
public:
	explicit Counted_object(std::atomic<int>& ends) : ends_(ends) {}
	~Counted_object() override { ++ends_; }

private:
	std::atomic<int>& ends_;
};

class Deferred_object : public Counted_object {
public:
	using Counted_object::Counted_object;
	bool is_asked = false;

protected:
	bool should_delete_instantly() override {
		is_asked = true;
		return false;
	}
};

// Whose root stands behind another base, so that its address isn't the block's.
struct Other_base {
	virtual ~Other_base() = default;
	char bytes[100]{};
};
class Shifted_object : public Other_base, public Counted_object {
public:
	using Counted_object::Counted_object;
};

template <typename Object> Object* make(std::atomic<int>& ends) {
	return new (xyl_heap_allocate(sizeof(Object))) Object(ends);
}

// Ends an object that deferred its end, as a host does.
void end(Counted_object* object) {
	object->~Counted_object();
	xyl_heap_free(object);
}

TEST(xylReference_counted_object, OperationsStandInTheirOrder) {
	using Object = xylReference_counted_object;
	EXPECT_EQ(virtual_index(&Object::get_type_id), 2u);
	EXPECT_EQ(virtual_index(&Object::get_type_name), 3u);
	EXPECT_EQ(virtual_index(&Object::to_string), 4u);
	EXPECT_EQ(virtual_index(static_cast<void (Object::*)() const>(&Object::add_reference)), 5u);
	EXPECT_EQ(virtual_index(static_cast<void (Object::*)()>(&Object::add_reference)), 6u);
	EXPECT_EQ(virtual_index(static_cast<int (Object::*)() const>(&Object::release_reference)), 7u);
	EXPECT_EQ(virtual_index(static_cast<int (Object::*)()>(&Object::release_reference)), 8u);
	EXPECT_EQ(virtual_index(&Object::should_be_deleted_this_frame_at_delete_later), 9u);
	EXPECT_EQ(virtual_index(&Object::is_agent_visuals), 10u);
	EXPECT_EQ(virtual_index(&Object::is_scene_view), 11u);
	struct Opened : Object {
		using Object::should_delete_instantly;
	};
	EXPECT_EQ(virtual_index(&Opened::should_delete_instantly), 12u);
}

TEST(xylReference_counted_object, IsTheFirstType) {
	xylReference_counted_object object;
	EXPECT_EQ(xylReference_counted_object::get_class_xylReference_counted_object_type_id(), 0);
	EXPECT_EQ(xylReference_counted_object::class_xylReference_counted_object_type_id_, 0);
	EXPECT_EQ(object.get_type_id(), 0);
	EXPECT_STREQ(object.get_type_name().char_p(), "xylReference_counted_object");
	EXPECT_STREQ(object.to_string().char_p(), "zubObject");
}

TEST(xylReference_counted_object, AnswersOfTheBase) {
	struct Opened : xylReference_counted_object {
		using xylReference_counted_object::should_delete_instantly;
	} object;
	EXPECT_TRUE(object.should_be_deleted_this_frame_at_delete_later());
	EXPECT_FALSE(object.is_agent_visuals());
	EXPECT_FALSE(object.is_scene_view());
	EXPECT_TRUE(object.should_delete_instantly());
}

TEST(xylReference_counted_object, LastReleaseEndsTheObject) {
	std::atomic<int> ends = 0;
	Counted_object* object = make<Counted_object>(ends);
	EXPECT_EQ(object->get_intrusive_reference_count(), 0u) << "the creator takes the first";
	object->add_reference();
	object->add_reference();
	EXPECT_EQ(object->get_intrusive_reference_count(), 2u);
	EXPECT_EQ(object->release_reference(), 1);
	EXPECT_EQ(ends, 0);
	EXPECT_EQ(object->release_reference(), 0);
	EXPECT_EQ(ends, 1);
	EXPECT_THAT(Recording_host::get().delete_later_queue, IsEmpty());
}

TEST(xylReference_counted_object, MostDerivedAddressIsFreed) {
	std::atomic<int> ends = 0;
	Shifted_object* object = make<Shifted_object>(ends);
	xylReference_counted_object* counted = object;
	ASSERT_NE(static_cast<void*>(counted), static_cast<void*>(object));
	counted->add_reference();
	EXPECT_EQ(counted->release_reference(), 0);
	EXPECT_EQ(ends, 1);
}

TEST(xylReference_counted_object, DeferredObjectGoesToTheHostOnce) {
	std::atomic<int> ends = 0;
	Deferred_object* object = make<Deferred_object>(ends);
	object->add_reference();
	object->add_reference();
	EXPECT_EQ(object->release_reference(), 1);
	EXPECT_FALSE(object->is_asked) << "only the last release asks";
	EXPECT_THAT(Recording_host::get().delete_later_queue, IsEmpty());
	EXPECT_EQ(object->release_reference(), 0);
	EXPECT_TRUE(object->is_asked);
	EXPECT_EQ(ends, 0);
	EXPECT_THAT(Recording_host::get().delete_later_queue, ElementsAre(object));
	EXPECT_EQ(object->get_intrusive_reference_count(), 0u);
	end(object);
	EXPECT_EQ(ends, 1);
}

// What a class does to the plain forms, it does to the const ones.
TEST(xylReference_counted_object, ConstFormsCallTheOthers) {
	class Noting_object : public xylReference_counted_object {
	public:
		using xylReference_counted_object::add_reference;
		using xylReference_counted_object::release_reference;
		void add_reference() override { ++added; }
		int release_reference() override { return 41 + added; }
		int added = 0;
	};
	Noting_object object;
	const xylReference_counted_object& constant = object;
	constant.add_reference();
	EXPECT_EQ(object.added, 1);
	EXPECT_EQ(constant.release_reference(), 42);

	const xylReference_counted_object plain{};
	plain.add_reference();
	plain.add_reference();
	EXPECT_EQ(plain.release_reference(), 1);
	EXPECT_EQ(plain.get_intrusive_reference_count(), 1u);
}

TEST(xylReference_counted_object, CopyHasItsSourcesCountAndFlag) {
	for (const bool flag : {false, true}) {
		xylReference_counted_object source;
		source.reserved_flag_ = flag;
		for (int i = 0; i < 3; ++i) source.add_reference();
		const xylReference_counted_object copy(source);
		EXPECT_EQ(copy.get_intrusive_reference_count(), 3u);
		EXPECT_EQ(copy.reserved_flag_, flag);
		source.add_reference();
		EXPECT_EQ(copy.get_intrusive_reference_count(), 3u);
	}
}

TEST(xylReference_counted_object, ReleaseTooManyWraps) {
	xylReference_counted_object object;
	EXPECT_EQ(object.release_reference(), -1);
	EXPECT_EQ(object.get_intrusive_reference_count(), 0xFFFFFFFFu);
	EXPECT_EQ(object.release_reference(), -2);
}

TEST(xylReference_counted_object, ThreadsShareTheCount) {
	std::atomic<int> ends = 0;
	Counted_object* object = make<Counted_object>(ends);
	constexpr int thread_count = 4;
	for (int i = 0; i < thread_count; ++i) object->add_reference();
	std::atomic<int> last_releases = 0;
	std::vector<std::thread> threads;
	for (int i = 0; i < thread_count; ++i) {
		threads.emplace_back([&] {
			for (int step = 0; step < 20'000; ++step) {
				object->add_reference();
				if (object->release_reference() == 0) ++last_releases;
			}
			if (object->release_reference() == 0) ++last_releases;
		});
	}
	for (std::thread& thread : threads) thread.join();
	EXPECT_EQ(last_releases, 1);
	EXPECT_EQ(ends, 1);
}

} // namespace
