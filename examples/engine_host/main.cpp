// A small engine on top of the library: the host that a newcomer runs first.
//
// Read on in engine.cpp (the loop of ticks and frames), agents.cpp and watcher.cpp (what is
// simulated, culled and picked), scene.cpp (what is drawn through the debug records),
// recording.cpp, picture.cpp and page.html (what the host makes of the records), second_host.cpp
// (the other end of the road), mishaps.cpp (warnings with their stacks, and a crash). The rounds
// try out one family each: system_round.cpp, culling.cpp, state_files.cpp.

#include "../shared/table.h"
#include "culling.h"
#include "engine.h"
#include "mishaps.h"
#include "page.h"
#include "second_host.h"
#include "state_files.h"
#include "system_round.h"

#include <morvantis/core/xylreport.h>
#include <morvantis/core/zublibrary.h>
#include <morvantis/diagnostics/zubdebughelp_interface.h>
#include <morvantis/net/qonet.h>
#include <morvantis/platform/zubplatform.h>

#include <CLI/CLI.hpp>

namespace {

constexpr int exit_no_file = 4; // beside those of the road

// Reads the command line into `options`; false to end with `code`.
bool parse(int argc, char** argv, Run_options* options, int* code) {
	CLI::App app("A small engine: agents wander, are culled, picked, sent to a second host, and\n"
	             "drawn from the records of the debug drawing.");
	app.option_defaults()->always_capture_default();
	app.option_defaults()->multi_option_policy(CLI::MultiOptionPolicy::TakeLast);
	app.add_option("--frames", options->frames, "frames to run")->check(CLI::Range(1, 1000));
	app.add_option("--agents", options->agents, "agents in the world")
		->check(CLI::Range(1, largest_agent_count));
	app.add_option("--seed", options->seed, "of the world");
	app.add_option("--out", options->out, "folder for pictures, page and records");
	app.add_option("--draw", options->draw, "draw the records of this file, and run nothing");
	app.add_option("--second-host", options->second_port, "what the program starts itself with")
		->group("");
	app.add_flag("--crash", options->crash, "what the program starts itself with")->group("");
	options->program = argv[0];
	try {
		app.parse(argc, argv);
	} catch (const CLI::ParseError& end) {
		*code = app.exit(end);
		return false;
	}
	return true;
}

// Goes through a file of records that another run has left.
int draw_file(const Run_options& options) {
	xylBuffer bytes;
	if (!load_file(options.draw, &bytes)) {
		xyl_error("%s can't be read", options.draw.c_str());
		return exit_no_file;
	}
	Recording_reader reader(bytes.get_buffer_from_start(), static_cast<size_t>(bytes.get_length()));
	Painter painter;
	painter.load_font(file_beside_program("font.ttf"));
	Frame frame;
	bool is_well = true;
	for (int number = 0; reader.next(&frame); ++number)
		is_well &= painter.paint(frame).save_png(picture_path(options.out, number));
	size_t page_size = 0;
	is_well &= write_page(file_beside_program("page.html"), bytes.get_buffer_from_start(),
	                      static_cast<size_t>(bytes.get_length()), options.out + "/frames.html",
	                      &page_size);
	if (painter.was_cut_short()) xyl_warning("%s", "some pictures were too much to draw whole");
	if (reader.is_damaged()) xyl_warning("%s is damaged", options.draw.c_str());
	return is_well && !reader.is_damaged() ? exit_well : exit_no_file;
}

int run_engine(const Run_options& options) {
	const System_round system = run_system_round(options.out);
	const Culling_round culling = run_culling_round();
	Second_host second;
	if (!second.start(options)) {
		xyl_error("%s", "the second host can't be started");
		return exit_no_port;
	}
	Engine engine(options, second.port());
	const bool is_run = engine.run();
	const State_files states = run_state_files(engine.world().agents(), options.out);
	const bool is_content = second.wait_until_content();
	inspect(engine.world());
	system.machine.print();
	system.work.print();
	culling.work.print();
	states.print();
	engine.print_summary();
	const bool is_dumped = let_child_crash(options);
	std::printf("\n  the second host %s\n",
	            is_content ? "saw every undamaged packet arrive equal, and dropped every other"
	                       : "IS NOT CONTENT");
	std::printf("  packets and records have the hash %08x, the same on every system\n",
	            engine.hash());
	const bool is_sound = system.is_sound && culling.is_sound && states.is_sound();
	return is_run && is_content && is_sound && is_dumped ? exit_well : exit_not_equal;
}

int play_role(const Run_options& options) {
	const xylVarString out(options.out.c_str());
	if (!zubPlatform::is_directory_exists(out) && !zubPlatform::create_directory(out)) {
		xyl_error("the folder %s can't be made", options.out.c_str());
		return exit_no_file;
	}
	if (options.crash) crash(options);
	if (!options.draw.empty()) return draw_file(options);
	if (!zub_library->get_qonet()->initialize()) return exit_no_network;
	const int code = options.second_port != 0 ? run_second_host(options) : run_engine(options);
	zub_library->get_qonet()->terminate();
	return code;
}

} // namespace

int main(int argc, char** argv) {
	Run_options options;
	int code = 0;
	if (!parse(argc, argv, &options, &code)) return code;
	Tracing_host host;
	zubLibrary::initialize(&host, &host);
	zubDebughelp_interface symbols; // for the stacks of warnings
	zub_debughelp_interface = &symbols;
	symbols.initialize();
	code = play_role(options);
	host.print_stack();
	host.print_texts();
	zub_library->~zubLibrary();
	return code;
}
