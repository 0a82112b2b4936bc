// The steps of a crash dump, over a system layer that notes them.
#include "scripted_symbols.h"

#include <morvantis/platform/system/dump.h>
#include <morvantis/platform/zubplatform.h>
#include <morvantis/strings/xylvarstring.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

bool file_opens = true;

void note(const std::string& text) { scripted_system.calls.push_back(text); }

std::string engine_lock() {
	if (!zub_debughelp_interface) return "no lock";
	return is_free(zub_debughelp_interface->lock) ? "lock free" : "lock held";
}

} // namespace

void os::catch_exception(unsigned int code, void (*raise)(unsigned int),
                         void (*filter)(void*, void*), void* argument) {
	char text[32];
	std::snprintf(text, sizeof(text), "catch 0x%X", code);
	note(text);
	EXPECT_EQ(raise, &zubPlatform::raise_exception);
	int raised = 0;
	filter(&raised, argument);
	note("behind the guard");
}

bool os::open_dump(const char* path, Dump* dump) {
	note("open " + std::string(path) + ", " + engine_lock());
	dump->file = dump;
	return file_opens;
}

void os::write_dump(const Dump& dump, void* exception_pointers) {
	EXPECT_EQ(dump.file, &dump);
	EXPECT_NE(exception_pointers, nullptr);
	note("write, " + engine_lock());
}

void os::close_dump(const Dump& dump) {
	EXPECT_EQ(dump.file, &dump);
	note("close, " + engine_lock());
}

namespace {

class Scripted_minidump_test : public testing::Test {
protected:
	void SetUp() override {
		scripted_system = {};
		file_opens = true;
		zub_debughelp_interface = &engine_;
	}
	void TearDown() override { zub_debughelp_interface = nullptr; }
	static std::vector<std::string> calls() { return std::exchange(scripted_system.calls, {}); }

	zubException_pointers exception_{};

private:
	zubDebughelp_interface engine_;
};

TEST_F(Scripted_minidump_test, GivenExceptionIsWrittenUnderTheEnginesLock) {
	EXPECT_FALSE(zubPlatform::write_minidump("/dumps", &exception_));
	EXPECT_THAT(calls(), ElementsAre("open /dumps/dump.dmp, lock free", "write, lock held",
	                                 "close, lock free"));
}

TEST_F(Scripted_minidump_test, WithoutAnExceptionOneIsRaisedForIt) {
	EXPECT_FALSE(zubPlatform::write_minidump("/dumps", nullptr));
	EXPECT_THAT(calls(), ElementsAre("catch 0xDEADFACE", "open /dumps/dump.dmp, lock free",
	                                 "write, lock held", "close, lock free", "behind the guard"));
}

TEST_F(Scripted_minidump_test, FileThatDoesNotOpenEndsTheAttemptSilently) {
	file_opens = false;
	EXPECT_FALSE(zubPlatform::write_minidump("/missing", &exception_));
	EXPECT_THAT(calls(), ElementsAre("open /missing/dump.dmp, lock free"));
	EXPECT_FALSE(zubPlatform::write_minidump("/missing", nullptr));
	EXPECT_THAT(calls(), ElementsAre("catch 0xDEADFACE", "open /missing/dump.dmp, lock free",
	                                 "behind the guard"));
	EXPECT_THAT(scripted_system.reports, IsEmpty());
}

TEST_F(Scripted_minidump_test, HostWithoutAnEngineGetsItsDumpWithoutALock) {
	zub_debughelp_interface = nullptr;
	EXPECT_FALSE(zubPlatform::write_minidump("/dumps", &exception_));
	EXPECT_THAT(calls(),
	            ElementsAre("open /dumps/dump.dmp, no lock", "write, no lock", "close, no lock"));
}

TEST_F(Scripted_minidump_test, FolderIsTakenAsItStands) {
	zubPlatform::write_minidump("$BASE/dumps/", &exception_);
	EXPECT_EQ(calls().front(), "open $BASE/dumps//dump.dmp, lock free");
	zubPlatform::write_minidump(xylVarString(), &exception_);
	EXPECT_EQ(calls().front(), "open /dump.dmp, lock free");
}

TEST_F(Scripted_minidump_test, FolderOfTheLargestSizeFitsAndALongerOneEndsTheAttempt) {
	const std::string longest(1014, 'x');
	zubPlatform::write_minidump(longest.c_str(), &exception_);
	EXPECT_EQ(calls().front(), "open " + longest + "/dump.dmp, lock free");
	zubPlatform::write_minidump((longest + "x").c_str(), &exception_);
	EXPECT_THAT(calls(), IsEmpty());
}

TEST_F(Scripted_minidump_test, WritingAllocatesNothing) {
	const xylVarString folder("/dumps");
	const int before = scripted_system.allocations;
	zubPlatform::write_minidump(folder, &exception_);
	zubPlatform::write_minidump(folder, nullptr);
	EXPECT_EQ(scripted_system.allocations, before);
}

} // namespace
