#include "eastl_test_objects.h"

#include <EASTL/functional.h>
#include <EASTL/sort.h>
#include <morvantis/memory/xylarray.h>
#include <morvantis/memory/xylheap.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <memory>
#include <random>
#include <string>
#include <type_traits>
#include <vector>

namespace {

int twice(int number) { return 2 * number; }

// Counts itself, and tells where it stands when it is called.
template <size_t Slack> struct Placed {
	const void* operator()() const { return this; }
	Counted counted{5};
	unsigned char slack[Slack] = {};
};
using Small = Placed<8>;
using Large = Placed<64>;

bool stands_inside(const eastl::function<const void*()>& f) {
	const auto place = reinterpret_cast<std::uintptr_t>(f());
	const auto object = reinterpret_cast<std::uintptr_t>(&f);
	return place >= object && place < object + sizeof(f);
}

template <typename Callable> class Function_test : public testing::Test {
protected:
	void SetUp() override { Counted::alive = Counted::copies = 0; }
	void TearDown() override { EXPECT_EQ(Counted::alive, 0) << "callables are ended"; }
};
using Callables = testing::Types<Small, Large>;
TYPED_TEST_SUITE(Function_test, Callables);

} // namespace

TEST(eastl_function, EmptyIsFalseAndThrowsWhenCalled) {
	eastl::function<int(int)> from_nothing, from_null(nullptr);
	int (*no_function)(int) = nullptr;
	eastl::function<int(int)> from_null_pointer(no_function);
	for (const auto* f : {&from_nothing, &from_null, &from_null_pointer}) {
		EXPECT_FALSE(*f);
		EXPECT_TRUE(*f == nullptr);
		EXPECT_THROW((*f)(1), eastl::bad_function_call);
	}
	EXPECT_STREQ(eastl::bad_function_call().what(), "bad function_call");
}

TEST(eastl_function, CallsWhatItHolds) {
	eastl::function<int(int)> f = twice;
	EXPECT_TRUE(f);
	EXPECT_EQ(f(21), 42);
	int base = 100;
	f = [&base](int number) { return base + number; };
	EXPECT_EQ(f(1), 101);
	f = nullptr;
	EXPECT_FALSE(f);
	eastl::function<size_t(const std::string&)> member = &std::string::size;
	EXPECT_EQ(member("four"), 4u);
	eastl::function<void(int)> ignores_the_result = twice;
	ignores_the_result(1);
}

TEST(eastl_function, PassesReferencesAndMoveOnlyArguments) {
	eastl::function<void(int&)> raise = [](int& number) { ++number; };
	int number = 1;
	raise(number);
	EXPECT_EQ(number, 2);
	eastl::function<int(std::unique_ptr<int>)> take = [](std::unique_ptr<int> p) { return *p; };
	EXPECT_EQ(take(std::make_unique<int>(7)), 7);
}

TEST(eastl_function, KeepsStateBetweenCalls) {
	eastl::function<int()> count = [n = 0]() mutable { return ++n; };
	count();
	EXPECT_EQ(count(), 2);
}

TEST(eastl_function, SmallCallablesStandInside) {
	EXPECT_TRUE(stands_inside(Placed<8>{})) << "12 bytes";
	EXPECT_TRUE(stands_inside(Placed<12>{})) << "16 bytes, two pointers";
	EXPECT_FALSE(stands_inside(Placed<13>{})) << "20 bytes";
	struct alignas(64) Wide {
		const void* operator()() const { return this; }
	};
	const eastl::function<const void*()> wide = Wide{};
	EXPECT_FALSE(stands_inside(wide));
	EXPECT_EQ(reinterpret_cast<std::uintptr_t>(wide()) % 64, 0u);
}

TEST(eastl_function, LargeCallablesStandOnTheHeap) {
	const eastl::function<const void*()> f = Large{};
	EXPECT_GE(xyl_heap_usable_size(f()), sizeof(Large));
}

TYPED_TEST(Function_test, CopiesHaveACallableOfTheirOwn) {
	const eastl::function<const void*()> source = TypeParam{};
	const eastl::function<const void*()> copy(source);
	EXPECT_EQ(Counted::alive, 2);
	EXPECT_NE(copy(), source());
	EXPECT_EQ(static_cast<const TypeParam*>(copy())->counted.value, 5);
}

TYPED_TEST(Function_test, MovesEmptyTheSourceAndNeverCopy) {
	eastl::function<const void*()> source = TypeParam{};
	Counted::copies = 0;
	eastl::function<const void*()> target(std::move(source));
	EXPECT_FALSE(source);
	EXPECT_TRUE(target);
	EXPECT_EQ(Counted::alive, 1);
	source = std::move(target);
	EXPECT_FALSE(target);
	EXPECT_EQ(Counted::alive, 1);
	EXPECT_EQ(Counted::copies, 0);
	eastl::function<const void*()> taken_from_nothing(std::move(target));
	EXPECT_FALSE(taken_from_nothing);
}

TYPED_TEST(Function_test, AssignmentEndsTheFormerCallable) {
	eastl::function<const void*()> f = TypeParam{};
	const eastl::function<const void*()> other = TypeParam{};
	f = other;
	EXPECT_EQ(Counted::alive, 2);
	f = TypeParam{};
	EXPECT_EQ(Counted::alive, 2);
	f = nullptr;
	EXPECT_EQ(Counted::alive, 1);
	f = other;
	f = eastl::function<const void*()>();
	EXPECT_EQ(Counted::alive, 1);
}

TYPED_TEST(Function_test, SelfAssignmentDoesNothing) {
	eastl::function<const void*()> f = TypeParam{};
	const void* const place = f();
	eastl::function<const void*()>& same = f;
	f = same;
	f = std::move(same);
	EXPECT_EQ(f(), place);
	EXPECT_EQ(Counted::alive, 1);
}

TYPED_TEST(Function_test, SwapsWithAnyOther) {
	eastl::function<const void*()> f = TypeParam{}, empty;
	swap(f, empty);
	EXPECT_FALSE(f);
	EXPECT_TRUE(empty);
	empty.swap(f);
	EXPECT_TRUE(f);
	EXPECT_EQ(Counted::alive, 1);
}

TEST(eastl_allocator, DefaultIsOneEmptyObjectOnTheHeap) {
	EXPECT_TRUE(std::is_empty_v<eastl::allocator>);
	ASSERT_NE(eastl::gpDefaultAllocator, nullptr);
	EXPECT_EQ(eastl::GetDefaultAllocator(), eastl::gpDefaultAllocator);
	void* const block = eastl::gpDefaultAllocator->allocate(40);
	EXPECT_EQ(reinterpret_cast<std::uintptr_t>(block) % 16, 0u);
	EXPECT_GE(xyl_heap_usable_size(block), 40u);
	xyl_heap_free(block);
	eastl::gpDefaultAllocator->deallocate(xyl_heap_allocate(40), 40);
	eastl::gpDefaultAllocator->deallocate(nullptr, 0);
	EXPECT_EQ(eastl::gpDefaultAllocator->allocate(0), nullptr);
}

TEST(eastl_allocator, AlignsAsAsked) {
	eastl::allocator allocator("name");
	for (size_t alignment = 1; alignment <= 4096; alignment *= 2) {
		SCOPED_TRACE(alignment);
		void* blocks[8];
		for (void*& block : blocks) {
			block = allocator.allocate(100, alignment, 0);
			EXPECT_EQ(reinterpret_cast<std::uintptr_t>(block) % std::max<size_t>(alignment, 16),
			          0u);
		}
		for (void* block : blocks) allocator.deallocate(block, 100);
	}
}

TEST(eastl_allocator, AllAreEqualAndNamesAreNotKept) {
	eastl::allocator a, b("other"), c(b), d(b, "third");
	a.set_name("renamed");
	a = b;
	EXPECT_TRUE(a == b && c == d);
	EXPECT_FALSE(a != b);
	EXPECT_STREQ(a.get_name(), "EASTL");
}

TEST(eastl_allocator, DefaultCanBeReplaced) {
	eastl::allocator mine;
	eastl::allocator* const former = eastl::SetDefaultAllocator(&mine);
	EXPECT_EQ(eastl::gpDefaultAllocator, &mine);
	EXPECT_EQ(eastl::SetDefaultAllocator(former), &mine);
	EXPECT_EQ(eastl::GetDefaultAllocator(), former);
}

TEST(eastl_less, ComparesByLessThan) {
	EXPECT_TRUE(eastl::less<int>()(1, 2));
	EXPECT_FALSE(eastl::less<int>()(2, 2));
	EXPECT_TRUE(eastl::less<>()(1, 1.5));
}

TEST(eastl_quick_sort, SortsLikeStdSort) {
	std::mt19937 random(2026);
	for (const size_t size : {0u, 1u, 2u, 3u, 16u, 17u, 100u, 1000u, 20000u}) {
		for (const unsigned range : {2u, 50u, 0xffffffffu}) {
			SCOPED_TRACE(testing::Message() << size << " numbers below " << range);
			xylArray<unsigned> array;
			for (size_t i = 0; i < size; ++i)
				array.push_back(static_cast<unsigned>(random() % range));
			std::vector<unsigned> model(array.begin(), array.end());
			eastl::quick_sort(array.begin(), array.end());
			std::sort(model.begin(), model.end());
			EXPECT_TRUE(std::equal(array.begin(), array.end(), model.begin(), model.end()));
			eastl::quick_sort(array.data(), array.data() + size,
			                  [](unsigned a, unsigned b) { return a > b; });
			EXPECT_TRUE(std::equal(array.begin(), array.end(), model.rbegin(), model.rend()));
		}
	}
}
