// The guard around a raised exception and the file of a dump, alike on every system.
#include "start_line.h"
#include "temporary_folder.h"

#include <morvantis/platform/system/dump.h>
#include <morvantis/platform/zubplatform.h>

#include <gtest/gtest.h>

#include <thread>
#include <vector>

namespace {

constexpr unsigned int code = 0xDEADFACE;

bool came_back = false;

void raise_and_note(unsigned int number) {
	zubPlatform::raise_exception(number);
	came_back = true;
}

// What a filter was called with.
struct Filtered {
	int calls = 0;
	std::thread::id thread;
};

void note(void* pointers, void* argument) {
	auto& filtered = *static_cast<Filtered*>(argument);
	++filtered.calls;
	filtered.thread = std::this_thread::get_id();
	const auto& exception = *static_cast<const os::Exception_pointers*>(pointers);
	EXPECT_NE(exception.record, nullptr);
	EXPECT_NE(exception.context, nullptr);
}

TEST(Dump_guard, GoesOnBehindItAndNotBehindTheRaise) {
	came_back = false;
	Filtered filtered;
	for (int times = 1; times <= 3; ++times) {
		os::catch_exception(code, raise_and_note, note, &filtered);
		EXPECT_EQ(filtered.calls, times);
	}
	EXPECT_EQ(filtered.thread, std::this_thread::get_id());
	EXPECT_FALSE(came_back) << "or each dump in passing would take the pause behind the raise";
}

TEST(Dump_guard, WithoutAnExceptionNothingIsFiltered) {
	Filtered filtered;
	os::catch_exception(code, [](unsigned int) {}, note, &filtered);
	EXPECT_EQ(filtered.calls, 0);
}

TEST(Dump_guard, ThreadsEachGetTheirOwn) {
	constexpr int thread_count = 6, times = 20;
	Filtered filtered[thread_count];
	Start_line start(thread_count);
	std::vector<std::thread> threads;
	for (Filtered& own : filtered) {
		threads.emplace_back([&] {
			start.arrive_and_wait();
			for (int i = 1; i <= times; ++i) {
				os::catch_exception(code, zubPlatform::raise_exception, note, &own);
				EXPECT_EQ(own.calls, i);
				EXPECT_EQ(own.thread, std::this_thread::get_id());
			}
		});
	}
	for (std::thread& thread : threads) thread.join();
}

TEST(Dump_file, IsMadeAnewAndNobodyElsesMeanwhile) {
	const Temporary_folder folder;
	const std::string path = folder.make_file("dump.dmp", std::string(100'000, 'x'));
	os::Dump dump;
	ASSERT_TRUE(os::open_dump(path.c_str(), &dump));
	EXPECT_EQ(std::filesystem::file_size(path), 0u);
	EXPECT_EQ(dump.process_id, zubPlatform::get_current_process_id());
	EXPECT_EQ(dump.thread_id,
	          zubPlatform::get_native_thread_id(zubPlatform::get_current_native_thread_handle()));
	os::Dump other;
	EXPECT_FALSE(os::open_dump(path.c_str(), &other)) << "it is being written";
	os::close_dump(dump);
	ASSERT_TRUE(os::open_dump(path.c_str(), &dump));
	os::close_dump(dump);
}

TEST(Dump_file, MissingFolderGivesNone) {
	const Temporary_folder folder;
	os::Dump dump;
	EXPECT_FALSE(os::open_dump((folder / "missing/dump.dmp").c_str(), &dump));
}

} // namespace
