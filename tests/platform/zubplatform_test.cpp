// The running system's answers, as far as they are the same everywhere. What is handed on and what
// failures do is tested in scripted_platform_test.cpp.
#include <morvantis/platform/zubplatform.h>

#include <morvantis/core/xylguid.h>
#include <morvantis/strings/xylvarstring.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <functional>
#include <iterator>
#include <set>
#include <string>
#include <thread>
#include <type_traits>
#include <vector>

namespace {

// --- Shapes
// ---------------------------------------------------------------------------------------

template <typename Expected, typename Actual> constexpr bool is = std::is_same_v<Expected, Actual>;
using P = zubPlatform;

static_assert(is<void(unsigned long), decltype(P::sleep)>);
static_assert(is<xylInt64(), decltype(P::get_timestamp_counter)>);
static_assert(is<xylInt64(), decltype(P::get_timestamp_counter_frequency)>);
static_assert(is<xylInt64(), decltype(P::get_system_time)>);
static_assert(is<bool(), decltype(P::is_debugger_present)>);
static_assert(is<xylUInt32(), decltype(P::get_current_process_id)>);
static_assert(is<void*(), decltype(P::get_current_native_thread_handle)>);
static_assert(is<unsigned long(void*), decltype(P::get_native_thread_id)>);
static_assert(is<void(void*, const xylVarString&), decltype(P::set_thread_name)>);
static_assert(is<void(void*, xylThread_priority), decltype(P::set_thread_priority)>);
static_assert(is<void(void*, xylUInt64), decltype(P::set_thread_affinity)>);
static_assert(is<void(unsigned int), decltype(P::raise_exception)>);
static_assert(is<xylUInt64(), decltype(P::get_application_memory)>);
static_assert(is<xylUInt64(), decltype(P::get_application_commit_memory)>);
static_assert(is<float(), decltype(P::get_available_memory_percentage)>);
static_assert(is<xylCPU_description(), decltype(P::get_cpu_description)>);
static_assert(is<xylUInt64(), decltype(P::page_size_internal)>);
static_assert(is<xylUInt64(), decltype(P::page_size)>);
static_assert(is<void*(xylUInt64, xylUInt64, bool, bool), decltype(P::allocate_memory)>);
static_assert(is<xylUInt64(void*), decltype(P::allocation_size)>);
static_assert(is<bool(void*, xylUInt64), decltype(P::deallocate_memory)>);
static_assert(is<bool(void*, xylUInt64, xylUInt64), decltype(P::decommit_memory)>);
static_assert(is<void*(xylUInt64, xylUInt64, bool, bool), decltype(P::allocate_direct_memory)>);
static_assert(is<bool(void*), decltype(P::deallocate_direct_memory)>);
static_assert(is<void(xylGuid_type*), decltype(P::create_guid)>);
static_assert(is<void*(const xylVarString&), decltype(P::load_library)>);
static_assert(is<bool(void*), decltype(P::free_library)>);
static_assert(is<void*(void*, xylVarString&), decltype(P::get_process_address)>);
static_assert(
	is<bool(const xylVarString&, const xylVarString&), decltype(P::set_environment_variable)>);
static_assert(is<bool(xylVarString&), decltype(P::get_computer_name)>);
static_assert(is<bool(xylVarString&), decltype(P::get_os_user_name)>);

static_assert(is<xylConstString<16>(), decltype(P::get_base_path_prefix)>);
static_assert(is<const char*(), decltype(P::get_platform_base)>);
static_assert(is<xylConstString<256>(), decltype(P::get_temp_path)>);
static_assert(is<xylConstString<256>(), decltype(P::get_executable_path)>);
static_assert(
	is<xylConstString<512>(const xylString_base&), decltype(P::convert_base_path_to_final)>);
static_assert(is<xylConstString<256>(const xylString_base&),
                 decltype(P::convert_base_path_to_absolute_path)>);
static_assert(
	is<xylConstString<256>(const xylString_base&), decltype(P::convert_final_to_base_path)>);
static_assert(is<bool(const xylVarString&), decltype(P::is_base_relative)>);
static_assert(is<xylVarString(const xylVarString&), decltype(P::get_base_relative_path)>);
static_assert(is<bool(const xylString_base&), decltype(P::create_directory)>);
static_assert(is<bool(const xylString_base&), decltype(P::remove_directory)>);
static_assert(is<bool(const xylString_base&), decltype(P::is_directory_exists)>);
static_assert(is<bool(const xylString_base&), decltype(P::file_exists)>);
static_assert(is<xylInt64(const xylString_base&), decltype(P::get_file_last_modification_date)>);

static_assert(is<xylConstString<128>, decltype(xylCPU_description::brand_name)>);
static_assert(is<xylUInt32, decltype(xylCPU_description::processor_count)>);

TEST(xylCPU_description, FieldsStandInTheirOrder) {
	const xylCPU_description d;
	const void* const fields[] = {&d.brand_name, &d.processor_count, &d.has_sse3, &d.has_ssse3,
	                              &d.has_sse4_1, &d.has_sse4_2,      &d.has_avx,  &d.has_avx2};
	EXPECT_TRUE(std::is_sorted(std::begin(fields), std::end(fields), std::less<>()));
}

// --- Time
// -----------------------------------------------------------------------------------------

TEST(zubPlatform, CounterRunsForwardInUnitsOfItsFrequency) {
	const xylInt64 frequency = zubPlatform::get_timestamp_counter_frequency();
	EXPECT_GE(frequency, 1'000'000) << "a microsecond at least";
	const xylInt64 before = zubPlatform::get_timestamp_counter();
	zubPlatform::sleep(20);
	const xylInt64 passed = zubPlatform::get_timestamp_counter() - before;
	// A lower bound only, a little less than asked: clocks of different kinds measure the two.
	EXPECT_GE(passed, frequency * 18 / 1000);
}

TEST(zubPlatform, SystemTimeCountsMilliseconds) {
	const xylInt64 before = zubPlatform::get_system_time();
	EXPECT_GE(before, 0);
	zubPlatform::sleep(20);
	const xylInt64 after = zubPlatform::get_system_time();
	EXPECT_LE(after, 0xFFFFFFFF);
	if (after >= before) { // else it has just wrapped around
		EXPECT_GE(after - before, 18);
	}
}

TEST(zubPlatform, SleepOfZeroComesBack) { zubPlatform::sleep(0); }

// --- Process and threads
// --------------------------------------------------------------------------

TEST(zubPlatform, NobodyDebugsTheTests) { EXPECT_FALSE(zubPlatform::is_debugger_present()); }

TEST(zubPlatform, ThreadsHaveNumbersOfTheirOwn) {
	const auto own_number = [] {
		return zubPlatform::get_native_thread_id(zubPlatform::get_current_native_thread_handle());
	};
	const unsigned long here = own_number();
	EXPECT_NE(here, 0u);
	EXPECT_EQ(own_number(), here);
	unsigned long there = 0;
	std::thread([&] { there = own_number(); }).join();
	EXPECT_NE(there, 0u);
	EXPECT_NE(there, here);
}

TEST(zubPlatform, NamingAThreadReturns) {
	std::thread([] {
		void* self = zubPlatform::get_current_native_thread_handle();
		zubPlatform::set_thread_name(self, xylVarString("a name that is longer than any limit"));
		zubPlatform::set_thread_name(self, xylVarString());
		// Many threads at once, since the guard is one for the process.
		std::vector<std::thread> threads;
		for (int i = 0; i < 8; ++i) {
			threads.emplace_back([] {
				for (int round = 0; round < 50; ++round) {
					zubPlatform::set_thread_name(zubPlatform::get_current_native_thread_handle(),
					                             xylVarString("worker"));
				}
			});
		}
		for (std::thread& thread : threads) thread.join();
	}).join();
}

// --- Memory figures
// -------------------------------------------------------------------------------

TEST(zubPlatform, MemoryFiguresFollowWhatTheProcessTakes) {
	constexpr size_t size = size_t{64} << 20;
	const xylUInt64 committed = zubPlatform::get_application_commit_memory();
	EXPECT_GT(committed, 0u);
	EXPECT_GT(zubPlatform::get_application_memory(), 0u);
	void* block = zubPlatform::allocate_memory(size, 0, false, false);
	ASSERT_NE(block, nullptr);
	std::memset(block, 1, size);
	EXPECT_GE(zubPlatform::get_application_commit_memory(), committed + size / 2);
	EXPECT_GE(zubPlatform::get_application_memory(), size / 2);
	EXPECT_TRUE(zubPlatform::deallocate_memory(block, 0));
}

TEST(zubPlatform, AvailableMemoryIsAPercentage) {
	const float percentage = zubPlatform::get_available_memory_percentage();
	EXPECT_GT(percentage, 0.0f);
	EXPECT_LE(percentage, 100.0f);
}

TEST(zubPlatform, ProcessorTellsOfItself) {
	const xylCPU_description description = zubPlatform::get_cpu_description();
	EXPECT_GE(description.processor_count, 1u);
	EXPECT_EQ(description.processor_count, std::thread::hardware_concurrency());
	EXPECT_FALSE(description.brand_name.is_empty());
	EXPECT_LE(description.brand_name.length(), 48);
#if defined(__GNUC__)
	EXPECT_EQ(description.has_sse3, __builtin_cpu_supports("sse3") != 0);
	EXPECT_EQ(description.has_ssse3, __builtin_cpu_supports("ssse3") != 0);
	EXPECT_EQ(description.has_sse4_1, __builtin_cpu_supports("sse4.1") != 0);
	EXPECT_EQ(description.has_sse4_2, __builtin_cpu_supports("sse4.2") != 0);
	// The compiler's answer also asks whether the system saves the registers.
	EXPECT_TRUE(description.has_avx || !__builtin_cpu_supports("avx"));
	EXPECT_TRUE(description.has_avx2 || !__builtin_cpu_supports("avx2"));
#endif
}

// --- Page memory
// ----------------------------------------------------------------------------------

TEST(zubPlatform, PageSizeIsAPowerOfTwo) {
	const xylUInt64 size = zubPlatform::page_size();
	EXPECT_EQ(size, zubPlatform::page_size_internal());
	EXPECT_GE(size, 4096u);
	EXPECT_EQ(size & (size - 1), 0u);
}

TEST(zubPlatform, PagesAreZeroedAlignedAndWritable) {
	const xylUInt64 size = 3 * zubPlatform::page_size();
	auto* block = static_cast<unsigned char*>(zubPlatform::allocate_memory(size, 7, true, true));
	ASSERT_NE(block, nullptr);
	EXPECT_EQ(reinterpret_cast<xylUInt64>(block) % zubPlatform::page_size(), 0u);
	for (xylUInt64 i = 0; i < size; ++i) ASSERT_EQ(block[i], 0);
	std::memset(block, 0xAB, size);
	EXPECT_TRUE(zubPlatform::deallocate_memory(block, 1)) << "whatever the size says";
	EXPECT_FALSE(zubPlatform::deallocate_memory(block, 1)) << "once only";
}

TEST(zubPlatform, SizesThatTheSystemRefusesGiveNull) {
	EXPECT_EQ(zubPlatform::allocate_memory(0, 0, false, false), nullptr);
	EXPECT_EQ(zubPlatform::allocate_memory(xylUInt64{1} << 62, 0, false, false), nullptr);
	EXPECT_EQ(zubPlatform::allocate_memory(~xylUInt64{0}, 0, false, false), nullptr);
}

TEST(zubPlatform, RegionCountsFromThePageOfTheAddress) {
	constexpr xylUInt64 page = 4096; // of the processor, on both systems
	auto* block = static_cast<char*>(zubPlatform::allocate_memory(8 * page - 100, 0, false, false));
	ASSERT_NE(block, nullptr);
	EXPECT_EQ(zubPlatform::allocation_size(block), 8 * page) << "whole pages";
	EXPECT_EQ(zubPlatform::allocation_size(block + 1), 8 * page);
	EXPECT_EQ(zubPlatform::allocation_size(block + 3 * page), 5 * page);
	EXPECT_EQ(zubPlatform::allocation_size(block + 3 * page + 17), 5 * page);
	EXPECT_EQ(zubPlatform::allocation_size(block + 8 * page - 1), page);

	EXPECT_TRUE(zubPlatform::decommit_memory(block + 2 * page, page, 0));
	EXPECT_EQ(zubPlatform::allocation_size(block), 2 * page) << "ends at what was decommitted";
	EXPECT_EQ(zubPlatform::allocation_size(block + 2 * page), page);
	EXPECT_EQ(zubPlatform::allocation_size(block + 3 * page), 5 * page);
	block[2 * page - 1] = block[3 * page] = 1;
	EXPECT_TRUE(zubPlatform::decommit_memory(block + 3 * page + 5, 1, 0)) << "every page touched";
	EXPECT_EQ(zubPlatform::allocation_size(block + 2 * page), 2 * page);
	EXPECT_TRUE(zubPlatform::decommit_memory(block + 2 * page, page, 0)) << "once more";
	EXPECT_FALSE(zubPlatform::deallocate_memory(block + page, 0)) << "not from the middle";
	EXPECT_TRUE(zubPlatform::deallocate_memory(block, 0)) << "the rest goes with it";
}

TEST(zubPlatform, WholeBlockIsDecommittedWithSizeZero) {
	constexpr xylUInt64 page = 4096;
	auto* block = static_cast<char*>(zubPlatform::allocate_memory(4 * page, 0, false, false));
	ASSERT_NE(block, nullptr);
	EXPECT_FALSE(zubPlatform::decommit_memory(block + page, 0, 0));
	EXPECT_TRUE(zubPlatform::decommit_memory(block, 0, 0));
	EXPECT_EQ(zubPlatform::allocation_size(block), 4 * page);
	EXPECT_TRUE(zubPlatform::deallocate_memory(block, 0));
}

TEST(zubPlatform, ForeignAddressesAreRefused) {
	int local = 0;
	EXPECT_FALSE(zubPlatform::deallocate_memory(&local, 0));
	EXPECT_FALSE(zubPlatform::deallocate_memory(nullptr, 0));
	EXPECT_FALSE(zubPlatform::decommit_memory(nullptr, 4096, 0));
}

TEST(zubPlatform_death_test, DecommittedPagesCannotBeTouched) {
	auto* block = static_cast<volatile char*>(zubPlatform::allocate_memory(8192, 0, false, false));
	ASSERT_NE(block, nullptr);
	block[4096] = 1;
	ASSERT_TRUE(zubPlatform::decommit_memory(const_cast<char*>(block) + 4096, 4096, 0));
	block[0] = 1;
	EXPECT_DEATH(block[4096] = 1, "");
	zubPlatform::deallocate_memory(const_cast<char*>(block), 0);
}

TEST(zubPlatform, PageMemoryIsForManyThreads) {
	std::vector<std::thread> threads;
	for (unsigned int i = 0; i < 4; ++i) {
		threads.emplace_back([i] {
			for (unsigned int round = 1; round < 100; ++round) {
				const xylUInt64 size = 4096 * (1 + (round + i) % 5);
				void* block = zubPlatform::allocate_memory(size, 0, false, false);
				std::memset(block, static_cast<int>(i), size);
				EXPECT_EQ(zubPlatform::allocation_size(block), size);
				EXPECT_TRUE(zubPlatform::deallocate_memory(block, size));
			}
		});
	}
	for (std::thread& thread : threads) thread.join();
}

// --- Identity
// -------------------------------------------------------------------------------------

TEST(zubPlatform, GuidsAreAllDifferent) {
	std::set<std::string> seen;
	for (int i = 0; i < 1000; ++i) {
		xylGuid_type guid{};
		zubPlatform::create_guid(&guid);
		char bytes[sizeof(guid)];
		std::memcpy(bytes, &guid, sizeof(guid));
		EXPECT_TRUE(seen.insert(std::string(bytes, sizeof(bytes))).second);
		EXPECT_EQ(guid.data3 >> 12, 4) << "version";
		EXPECT_EQ(guid.data4[0] >> 6, 2) << "variant";
	}
}

TEST(zubPlatform, MissingLibrariesAndSymbolsAreNull) {
	xylVarString symbol("no such symbol");
	EXPECT_EQ(zubPlatform::load_library(xylVarString("no such library")), nullptr);
	EXPECT_EQ(zubPlatform::load_library(xylVarString("")), nullptr);
	EXPECT_EQ(zubPlatform::load_library(xylVarString()), nullptr);
	EXPECT_FALSE(zubPlatform::free_library(nullptr));
	EXPECT_EQ(zubPlatform::get_process_address(nullptr, symbol), nullptr);
}

TEST(zubPlatform, EnvironmentRefusesTheEmptyName) {
	EXPECT_TRUE(zubPlatform::set_environment_variable("MORVANTIS_TEST", "value"));
	EXPECT_TRUE(zubPlatform::set_environment_variable("MORVANTIS_TEST", ""));
	EXPECT_FALSE(zubPlatform::set_environment_variable("", "value"));
	EXPECT_FALSE(zubPlatform::set_environment_variable(xylVarString(), xylVarString("value")));
}

TEST(zubPlatform, MachineAndUserHaveNames) {
	xylVarString name;
	EXPECT_TRUE(zubPlatform::get_computer_name(name));
	EXPECT_GT(name.length(), 0);
	EXPECT_LE(name.length(), 15);
	EXPECT_EQ(name.length(), static_cast<int>(std::strlen(name.char_p())));
	EXPECT_TRUE(zubPlatform::get_os_user_name(name));
	EXPECT_GT(name.length(), 0);
	EXPECT_EQ(name.length(), static_cast<int>(std::strlen(name.char_p())));
}

TEST(zubPlatform, ObjectIsReachedThroughTheGlobalPointer) {
	ASSERT_NE(zub_platform, nullptr);
	EXPECT_EQ(zub_platform->page_size(), zubPlatform::page_size());
	EXPECT_EQ(zub_platform->get_current_process_id(), zubPlatform::get_current_process_id());
}

} // namespace
