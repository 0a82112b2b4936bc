// A symbol engine and a list of loaded images that answer as a test tells them, over
// tests/platform/scripted_system.h, whose list of calls they write to.
#pragma once

#include "scripted_system.h"

#include <morvantis/diagnostics/zubdebughelp_interface.h>
#include <morvantis/platform/system/module.h>
#include <morvantis/platform/system/symbols.h>
#include <morvantis/platform/system/unwind.h>

#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <string>
#include <vector>

struct Scripted_image {
	xylUInt64 key;
	std::vector<unsigned char> bytes; // of the image in memory; empty: nothing readable
	std::string name, path;
};

struct Scripted_symbols {
	std::map<std::string, std::string> environment;
	const char* reader = nullptr; // the engine's library
	bool engine_starts = true;

	// One after the other, then the last again: what the list of images says.
	std::vector<os::Module_list> lists = {os::Module_list::complete};
	std::vector<Scripted_image> images;

	// What the search finds for a symbol file's name; nothing for others.
	std::map<std::string, std::string> files;
	// The reader's answer for an offset; none: the file can't be opened.
	std::map<xylUInt32, os::Symbol_answer> answers;
	std::function<void()> on_search; // called in each search
	// Called with each call of the engine and of the list of images.
	std::function<void(const std::string&)> on_call;

	// The engine's answers for an address; it fails for the others.
	std::map<xylUInt64, os::Engine_module> modules;
	std::map<xylUInt64, os::Engine_name> names;
	std::map<xylUInt64, os::Engine_line> lines;
	xylUInt32 last_error = 126;
	std::vector<void*> records; // handed out; freed at the end of the test
	bool has_memory = true;

	// The stack, as frames and as bare addresses.
	std::vector<os::Unwind_step> frames;
	std::vector<xylUInt64> stack;
	xylUInt64 hash = 0;
};
extern Scripted_symbols scripted_symbols;

// Asked by another thread, as a plain lock demands.
bool is_free(xylMutex& lock);

// Sets all answers back, clears the module cache and stands in for the host.
class Scripted_symbols_test : public testing::Test {
protected:
	Scripted_symbols_test();
	~Scripted_symbols_test() override;
	std::vector<std::string> take_calls();

	zubDebughelp_interface engine_;
};
