// Crash dumps on every system, read back.
#include "minidump_reader.h"
#include "temporary_folder.h"

#include <morvantis/diagnostics/zubdebughelp_interface.h>
#include <morvantis/platform/zubplatform.h>
#include <morvantis/strings/xylvarstring.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <string>

namespace {

using testing::HasSubstr;

constexpr uint32_t system_info = 7, misc_info = 15;

// In one test, since a dump takes seconds where the system reads all symbols for it.
TEST(zubPlatform_minidump, DumpInPassingShowsTheCallingThreadAndASecondOneReplacesIt) {
	zubDebughelp_interface engine;
	zub_debughelp_interface = &engine;
	const Temporary_folder folder;
	const xylVarString folder_text(folder.path().string().c_str());
	// Not a variable: sanitizers put those elsewhere.
	static constexpr char pattern[] = "first pattern on the stack";
	char* const local = static_cast<char*>(__builtin_alloca(sizeof(pattern)));
	std::memcpy(local, pattern, sizeof(pattern));
	EXPECT_FALSE(zubPlatform::write_minidump(folder_text, nullptr));
	const Minidump first(folder / "dump.dmp");
	EXPECT_EQ(first.memory(local, sizeof(pattern)), std::string(local, sizeof(pattern)));
	local[0] = 'F';
	EXPECT_FALSE(zubPlatform::write_minidump(folder_text, nullptr));
	zub_debughelp_interface = nullptr;
	EXPECT_TRUE(engine.lock.try_lock()) << "the lock is given back";
	engine.lock.unlock();

	const Minidump dump(folder / "dump.dmp");
	EXPECT_EQ(dump.memory(local, sizeof(pattern)), std::string(local, sizeof(pattern)));
	EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder.path()), {}), 1);

	const auto id = static_cast<uint32_t>(
		zubPlatform::get_native_thread_id(zubPlatform::get_current_native_thread_handle()));
	EXPECT_EQ(dump.exception.thread, id);
	ASSERT_EQ(dump.threads.count(id), 1u);
	EXPECT_EQ(dump.exception.context.size(), 1232u);
	const auto address = reinterpret_cast<uint64_t>(local);
	EXPECT_LT(Minidump::stack_pointer(dump.exception.context), address);
	EXPECT_LT(address - Minidump::stack_pointer(dump.exception.context), 65536u);
	EXPECT_EQ(dump.stream(system_info).substr(0, 2), std::string("\x09\0", 2)); // AMD64
	uint32_t process_id = 0;
	std::memcpy(&process_id, dump.stream(misc_info).data() + 8, sizeof(process_id));
	EXPECT_EQ(process_id, zubPlatform::get_current_process_id());
	for (const char* name : {"diagnostics_tests", "Morvantis.Library"}) {
		EXPECT_TRUE(std::any_of(dump.modules.begin(), dump.modules.end(),
		                        [&](const Minidump::Module& module) {
									return module.name.find(name) != std::string::npos;
								}))
			<< name;
	}
}

TEST(zubPlatform_minidump, MissingFolderIsSilent) {
	const Temporary_folder folder;
	const xylVarString missing((folder / "missing").c_str());
	EXPECT_FALSE(zubPlatform::write_minidump(missing, nullptr));
	EXPECT_TRUE(std::filesystem::is_empty(folder.path()));
}

} // namespace
