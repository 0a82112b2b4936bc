// A small engine on top of the library: the host that a newcomer runs first.

#include "../shared/host.h"
#include "../shared/table.h"
#include "agents.h"
#include "options.h"
#include "system_round.h"

#include <morvantis/core/xyltimer.h>
#include <morvantis/core/zublibrary.h>

#include <CLI/CLI.hpp>

namespace {

// Reads the command line into `options`; false to end with `code`.
bool parse(int argc, char** argv, Run_options* options, int* code) {
	CLI::App app("A small engine: agents wander, are culled, picked, sent to a second host, and\n"
	             "drawn from the records of the debug drawing.");
	app.option_defaults()->always_capture_default();
	app.add_option("--frames", options->frames, "frames to run")->check(CLI::Range(1, 10000));
	app.add_option("--agents", options->agents, "agents in the world")
		->check(CLI::Range(1, largest_agent_count));
	app.add_option("--seed", options->seed, "of the world");
	app.add_option("--out", options->out, "folder for pictures, page and records");
	try {
		app.parse(argc, argv);
	} catch (const CLI::ParseError& end) {
		*code = app.exit(end);
		return false;
	}
	return true;
}

void print_summary(const Run_options& options, const World& world) {
	Table table({"summary", "count"});
	table.add({"frames", std::to_string(options.frames)});
	table.add({"agents", std::to_string(world.agents().size())});
	table.print();
}

void run(const Run_options& options) {
	const System_round system = run_system_round(options.out);
	system.machine.print();
	system.work.print();
	World world(options.agents, options.seed);
	for (int frame = 0; frame < options.frames; ++frame) {
		xylTimer::tick(xylTimer::real_timer_no__, World::tick_seconds);
		xylTimer::tick(xylTimer::tactical_timer_no__, World::tick_seconds);
		world.step();
	}
	print_summary(options, world);
}

} // namespace

int main(int argc, char** argv) {
	Run_options options;
	int code = 0;
	if (!parse(argc, argv, &options, &code)) return code;
	Host host;
	zubLibrary::initialize(&host, &host);
	run(options);
	host.print_texts();
	zub_library->~zubLibrary();
	return 0;
}
