#include "mishaps.h"

#include "../shared/table.h"
#include "recording.h" // load_file

#include <morvantis/core/xylreport.h>
#include <morvantis/diagnostics/zubcallstack.h>
#include <morvantis/platform/zubplatform.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>

void Tracing_host::warning(const char* text, int reserved) {
	Host::warning(text, reserved);
	zubCallstack stack;
	stack.capture(nullptr, 2); // without the two captures themselves
	stack_ = stack.get_stack_str();
}

void Tracing_host::print_stack() const {
	if (stack_.is_empty()) return;
	std::printf("\n  where the last warning came from\n");
	std::printf("  --------------------------------\n");
	std::string line;
	for (const char* letter = stack_.char_p(); *letter; ++letter) {
		line += *letter;
		if (*letter != '\n') continue;
		std::printf("  %s", line.c_str());
		line.clear();
	}
}

namespace {

// Calls through these pointers stay calls, whatever the optimiser thinks.
using Step = void (*)(const World& world, int& complaints);

void complain(const World& world, int& complaints) {
	const Agent* weakest = &world.agents()[0];
	for (const Agent& agent : world.agents()) {
		if (agent.health < weakest->health) weakest = &agent;
	}
	xyl_warning("%s has %d %% of its health left", weakest->name, weakest->health);
	++complaints;
}

void inspect_health(const World& world, int& complaints) {
	const volatile Step next = complain;
	next(world, complaints);
	++complaints;
}

void inspect_agents(const World& world, int& complaints) {
	const volatile Step next = inspect_health;
	next(world, complaints);
	++complaints;
}

} // namespace

void inspect(const World& world) {
	int complaints = 0;
	const volatile Step next = inspect_agents;
	next(world, complaints);
}

namespace {

const xylVarString* dump_folder = nullptr; // made before the crash, when memory was still sound

std::string dump_path(const Run_options& options) { return options.out + "/dump.dmp"; }

// A host that knows its system hands the exception on as well; docs/crash_dumps.md has the
// handlers.
void leave_dump(int) {
	zubPlatform::write_minidump(*dump_folder, nullptr);
	std::_Exit(EXIT_FAILURE);
}

// Numbers of the dump's streams, by Microsoft's description of the format.
enum Stream : unsigned int { thread_list = 3, module_list = 4, exception = 6 };

struct Dump_facts {
	unsigned int streams = 0, threads = 0, modules = 0, code = 0;
};

// False where the bytes are no dump.
bool read_dump(const xylBuffer& dump, Dump_facts* facts) {
	const auto word = [&](size_t at) {
		unsigned int value = 0;
		if (at + sizeof(value) <= dump.get_length())
			std::memcpy(&value, dump.get_buffer_from_start() + at, sizeof(value));
		return value;
	};
	constexpr unsigned int signature = 0x504D444D; // "MDMP"
	constexpr size_t entry_size = 12, exception_code_at = 8;
	if (word(0) != signature) return false;
	facts->streams = word(8);
	for (size_t i = 0; i < facts->streams && i * entry_size < dump.get_length(); ++i) {
		const size_t entry = word(12) + i * entry_size, place = word(entry + 8);
		switch (word(entry)) {
		case thread_list:
			facts->threads = word(place);
			break;
		case module_list:
			facts->modules = word(place);
			break;
		case exception:
			facts->code = word(place + exception_code_at);
		}
	}
	return true;
}

} // namespace

void crash(const Run_options& options) {
	const xylVarString folder(options.out.c_str());
	dump_folder = &folder;
	std::signal(SIGSEGV, leave_dump);
	// An address that the optimiser knows nothing of, and nobody has memory at.
	const volatile unsigned long long nowhere = 64;
	*reinterpret_cast<volatile int*>(nowhere) = 1; // NOLINT(performance-no-int-to-ptr)
	std::_Exit(EXIT_SUCCESS);
}

bool let_child_crash(const Run_options& options) {
	std::remove(dump_path(options).c_str());
	std::string words[] = {'"' + options.program + '"', "--crash", "--out \"" + options.out + '"'};
	char* arguments[] = {words[0].data(), words[1].data(), words[2].data(), nullptr};
	unsigned int process = 0;
	if (zubPlatform::create_process(process, nullptr, arguments, nullptr, 0, true) != 1) {
		xyl_error("%s", "the process that is to crash can't be started");
		return false;
	}
	xylBuffer dump;
	Dump_facts facts;
	if (!load_file(dump_path(options), &dump) || !read_dump(dump, &facts)) {
		xyl_error("no dump in %s", dump_path(options).c_str());
		return false;
	}
	char code[16];
	xyl_snprintf(code, sizeof(code), "%08X", facts.code);
	Table table({"the dump of a child that crashed", ""});
	table.add({"file", dump_path(options)});
	table.add({"size", in_digits(static_cast<double>(dump.get_length()) / 1024, 0) + " KB"});
	table.add({"streams", std::to_string(facts.streams)});
	table.add({"threads", std::to_string(facts.threads)});
	table.add({"images", std::to_string(facts.modules)});
	table.add({"exception", code});
	table.print();
	return true;
}
