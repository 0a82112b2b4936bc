#include <morvantis/memory/xylmemory_allocator_base.h>

#include "virtual_order.h"

#include <gtest/gtest.h>

#include <iterator>
#include <limits>
#include <string>
#include <type_traits>
#include <vector>

namespace {

using Group = xylMemory_allocator_base::Allocation_group;

// Writes down what reaches the pure operations.
class Recording_allocator : public xylMemory_allocator_base {
public:
	explicit Recording_allocator(size_t page = 65536) : page_(page) { default_alignment_ = 16; }

	void* allocate_aligned_mem(size_t size, size_t alignment, Allocation_group group) override {
		calls.push_back({"allocate", nullptr, size, alignment, group});
		return this;
	}
	void* reallocate_aligned_mem(void* memory, size_t size, size_t alignment,
	                             Allocation_group group) override {
		calls.push_back({"reallocate", memory, size, alignment, group});
		return this;
	}
	bool deallocate_mem(void*, size_t) override { return true; }
	size_t get_total_allocation_size() const override { return 0; }
	size_t page_size() const override {
		++page_size_calls;
		return page_;
	}

	struct Call {
		std::string operation;
		void* memory;
		size_t size;
		size_t alignment;
		Group group;
	};
	std::vector<Call> calls;
	mutable int page_size_calls = 0;

private:
	size_t page_;
};

// A callable that counts the copies alive, in place or too large for it.
template <size_t Slack> struct Counting_callback {
	Counting_callback(int* living, int* last) : alive(living), size(last) { ++*alive; }
	Counting_callback(const Counting_callback& other) : alive(other.alive), size(other.size) {
		++*alive;
	}
	~Counting_callback() { --*alive; }
	void operator()(int value) const { *size = value; }
	int* alive;
	int* size;
	unsigned char slack[Slack] = {};
};

template <typename Callback> class Allocator_callback_test : public testing::Test {
protected:
	void TearDown() override { EXPECT_EQ(alive_, 0) << "callbacks are destroyed"; }
	Callback make(int* size) { return Callback(&alive_, size); }
	int alive_ = 0;
	int size_ = 0, other_size_ = 0;
};
using Callbacks = testing::Types<Counting_callback<1>, Counting_callback<64>>;
TYPED_TEST_SUITE(Allocator_callback_test, Callbacks);

} // namespace

TEST(xylMemory_allocator_base, GroupsHaveTheirNames) {
	struct Case {
		Group group;
		const char* name;
	};
	using Base = xylMemory_allocator_base;
	const Case cases[] = {
		{Base::default_group, "default_group"},
		{Base::animation, "animation"},
		{Base::render, "render"},
		{Base::physics, "physics"},
		{Base::sound, "sound"},
		{Base::mission, "mission"},
		{Base::mesh_instance, "mesh_instance"},
		{Base::loading, "loading"},
		{Base::granite, "granite"},
		{Base::point_light_system, "point_light_system"},
		{Base::entity_instance, "entity_instance"},
		{Base::flora, "flora"},
		{Base::mesh_edit_data, "mesh_edit_data"},
		{Base::nav_mesh, "nav_mesh"},
		{Base::mesh_record_buffers, "mesh_record_buffers"},
		{Base::shader, "shader"},
		{Base::face_gen, "face_gen"},
		{Base::string, "string"},
		{Base::profiler, "profiler"},
		{Base::material, "material"},
		{Base::meta_mesh, "meta_mesh"},
		{Base::agent_renderer, "agent_renderer"},
		{Base::Allocation_group::count, "count"},
	};
	ASSERT_EQ(std::size(cases), 23u);
	ASSERT_EQ(std::size(Base::allocation_group_names), 23u);
	for (size_t i = 0; i < 23; ++i) {
		SCOPED_TRACE(cases[i].name);
		EXPECT_EQ(static_cast<size_t>(cases[i].group), i);
		EXPECT_STREQ(Base::allocation_group_names[i], cases[i].name);
	}
	EXPECT_STREQ(Base::allocation_group_names[22], "count");
}

TEST(xylMemory_allocator_base, GroupIsOneUnsignedByte) {
	EXPECT_EQ(sizeof(Group), 1u);
	EXPECT_TRUE((std::is_same_v<std::underlying_type_t<Group>, unsigned char>));
}

TEST(xylMemory_allocator_base, FieldsStandInTheirOrder) {
	Recording_allocator allocator;
	xylMemory_allocator_base& base = allocator;
	const char* object = reinterpret_cast<const char*>(&base);
	// Behind the pointer to the virtual operations.
	EXPECT_EQ(reinterpret_cast<const char*>(&base.default_alignment_) - object, 8);
	EXPECT_EQ(reinterpret_cast<const char*>(&base.allocation_callback_) - object, 16);
	EXPECT_TRUE((std::is_same_v<decltype(base.default_alignment_), xylInt32>));
	EXPECT_TRUE((std::is_same_v<decltype(base.allocation_callback_), eastl::function<void(int)>>));
}

TEST(xylMemory_allocator_base, VirtualOperationsStandInTheirOrder) {
	using Base = xylMemory_allocator_base;
	EXPECT_EQ(virtual_index(&Base::allocate_aligned_mem), 0u);
	EXPECT_EQ(virtual_index(&Base::reallocate_aligned_mem), 1u);
	EXPECT_EQ(virtual_index(&Base::deallocate_mem), 2u);
	EXPECT_EQ(virtual_index(&Base::get_total_allocation_size), 3u);
	EXPECT_EQ(virtual_index(&Base::page_size), 4u);
	EXPECT_EQ(virtual_index(&Base::allocate_mem), 5u);
	EXPECT_EQ(virtual_index(&Base::reallocate_mem), 6u);
	EXPECT_FALSE(std::has_virtual_destructor_v<Base>);
}

TEST(xylMemory_allocator_base, PlainFormsPassTheDefaultAlignmentOn) {
	struct Case {
		xylInt32 default_alignment;
		size_t alignment;
	};
	const Case cases[] = {
		{16, 16},
		{4096, 4096},
		{0, 0},
		{-16, 0xfffffffffffffff0u},
		{std::numeric_limits<xylInt32>::min(), 0xffffffff80000000u},
	};
	for (const Case& c : cases) {
		SCOPED_TRACE(c.default_alignment);
		Recording_allocator allocator;
		allocator.default_alignment_ = c.default_alignment;
		int block = 0;
		EXPECT_EQ(allocator.allocate_mem(100, Group::render), &allocator);
		EXPECT_EQ(allocator.reallocate_mem(&block, 200, Group::string), &allocator);
		ASSERT_EQ(allocator.calls.size(), 2u);
		EXPECT_EQ(allocator.calls[0].operation, "allocate");
		EXPECT_EQ(allocator.calls[0].size, 100u);
		EXPECT_EQ(allocator.calls[0].alignment, c.alignment);
		EXPECT_EQ(allocator.calls[0].group, Group::render);
		EXPECT_EQ(allocator.calls[1].operation, "reallocate");
		EXPECT_EQ(allocator.calls[1].memory, &block);
		EXPECT_EQ(allocator.calls[1].size, 200u);
		EXPECT_EQ(allocator.calls[1].alignment, c.alignment);
		EXPECT_EQ(allocator.calls[1].group, Group::string);
	}
}

TEST(xylMemory_allocator_base, RoundsUpToPageSize) {
	struct Case {
		size_t page;
		size_t size;
		size_t rounded;
	};
	const size_t largest = std::numeric_limits<size_t>::max();
	const Case cases[] = {
		{65536, 1, 65536},
		{65536, 65535, 65536},
		{65536, 65536, 65536},
		{65536, 65537, 131072},
		// Zero wraps around.
		{65536, 0, 0},
		{1, 0, 0},
		// Pages that are no power of two.
		{1000, 1, 1000},
		{1000, 1001, 2000},
		{1000, 0, largest / 1000 * 1000 + 1000},
		// The last page of all wraps around too.
		{4096, largest, 0},
	};
	for (const Case& c : cases) {
		SCOPED_TRACE(testing::Message() << c.size << " in pages of " << c.page);
		EXPECT_EQ(Recording_allocator(c.page).round_up_to_page_size(c.size), c.rounded);
	}
}

TEST(xylMemory_allocator_base, RoundingAsksForThePageSizeTwice) {
	const Recording_allocator allocator;
	allocator.round_up_to_page_size(5);
	EXPECT_EQ(allocator.page_size_calls, 2);
}

TEST(xylMemory_allocator_base, CallbackStartsOutEmpty) {
	const Recording_allocator allocator;
	EXPECT_FALSE(allocator.allocation_callback_);
}

TYPED_TEST(Allocator_callback_test, DestructorDestroysTheCallback) {
	{
		Recording_allocator allocator;
		allocator.allocation_callback_ = this->make(&this->size_);
		EXPECT_EQ(this->alive_, 1);
		allocator.allocation_callback_(-1);
		EXPECT_EQ(this->size_, -1);
	}
	EXPECT_EQ(this->alive_, 0);
}

TYPED_TEST(Allocator_callback_test, CopyConstructionCopiesCallbackAndAlignment) {
	Recording_allocator source;
	source.default_alignment_ = 64;
	source.allocation_callback_ = this->make(&this->size_);
	const Recording_allocator copy(source);
	EXPECT_EQ(this->alive_, 2);
	EXPECT_EQ(copy.default_alignment_, 64);
	copy.allocation_callback_(5);
	EXPECT_EQ(this->size_, 5);
	source.allocation_callback_(6);
	EXPECT_EQ(this->size_, 6);
}

TYPED_TEST(Allocator_callback_test, CopyAssignmentDestroysTheFormerCallback) {
	Recording_allocator source, target;
	source.default_alignment_ = 64;
	source.allocation_callback_ = this->make(&this->size_);
	int former = 0;
	target.allocation_callback_ = TypeParam(&former, &this->other_size_);
	EXPECT_EQ(former, 1);
	target = source;
	EXPECT_EQ(former, 0);
	EXPECT_EQ(this->alive_, 2);
	EXPECT_EQ(target.default_alignment_, 64);
	target.allocation_callback_(5);
	EXPECT_EQ(this->size_, 5);
	EXPECT_EQ(this->other_size_, 0);
}

TYPED_TEST(Allocator_callback_test, CopyAssignmentOfAnEmptyCallbackEmptiesTheTarget) {
	Recording_allocator source, target;
	target.allocation_callback_ = this->make(&this->size_);
	target = source;
	EXPECT_EQ(this->alive_, 0);
	EXPECT_FALSE(target.allocation_callback_);
}

TYPED_TEST(Allocator_callback_test, MoveConstructionEmptiesTheSource) {
	Recording_allocator source;
	source.default_alignment_ = 64;
	source.allocation_callback_ = this->make(&this->size_);
	const Recording_allocator target(std::move(source));
	EXPECT_EQ(this->alive_, 1);
	EXPECT_FALSE(source.allocation_callback_);
	EXPECT_EQ(source.default_alignment_, 64);
	EXPECT_EQ(target.default_alignment_, 64);
	target.allocation_callback_(5);
	EXPECT_EQ(this->size_, 5);
}

TYPED_TEST(Allocator_callback_test, MoveAssignmentDestroysTheFormerCallback) {
	Recording_allocator source, target;
	source.default_alignment_ = 64;
	source.allocation_callback_ = this->make(&this->size_);
	int former = 0;
	target.allocation_callback_ = TypeParam(&former, &this->other_size_);
	target = std::move(source);
	EXPECT_EQ(former, 0);
	EXPECT_EQ(this->alive_, 1);
	EXPECT_FALSE(source.allocation_callback_);
	EXPECT_EQ(target.default_alignment_, 64);
	target.allocation_callback_(5);
	EXPECT_EQ(this->size_, 5);
}

TYPED_TEST(Allocator_callback_test, SelfAssignmentLeavesTheCallback) {
	Recording_allocator allocator;
	allocator.allocation_callback_ = this->make(&this->size_);
	Recording_allocator& same = allocator;
	allocator = same;
	EXPECT_EQ(this->alive_, 1);
	allocator = std::move(same);
	EXPECT_EQ(this->alive_, 1);
	allocator.allocation_callback_(7);
	EXPECT_EQ(this->size_, 7);
}
