#include "engine.h"

#include "../shared/table.h"
#include "page.h"

#include <morvantis/core/xylreport.h>
#include <morvantis/core/xyltimer.h>
#include <morvantis/platform/zubplatform.h>

#include <cstdio>

std::string file_beside_program(const char* name) {
	return zubPlatform::get_executable_path().char_p() + std::string("engine_host_files/") + name;
}

Engine::Engine(const Run_options& options, unsigned short port)
	: options_(options), road_(road_options(options, port)), world_(options.agents, options.seed),
	  client_(road_, world_) {
	if (!painter_.load_font(file_beside_program("font.ttf")))
		xyl_warning("%s", "no font: pictures are drawn without texts");
}

bool Engine::run() {
	if (!client_.open()) {
		xyl_error("%s", "no port to send from");
		return false;
	}
	xyl_log("%d frames of %d agents, seen by a second host on port %d", options_.frames,
	        options_.agents, road_.port);
	for (int number = 0; number < options_.frames; ++number) {
		for (int i = 0; i < ticks_per_frame; ++i) {
			if (!step()) return false;
		}
		record_frame(number);
		std::fprintf(stderr, "\r  frame %d of %d", number + 1, options_.frames);
	}
	std::fprintf(stderr, "\r                              \r");
	return leave_files() && client_.say_goodbye();
}

// A tick: the clocks, the world, the trails behind it, and the packet that tells the second host.
bool Engine::step() {
	xylTimer::tick(xylTimer::real_timer_no__, World::tick_seconds);
	xylTimer::tick(xylTimer::tactical_timer_no__, World::tick_seconds);
	simulating_.time([&] {
		world_.step();
		watcher_.step();
	});
	draw_trails(world_, *xyl_cur_frame_debug_render_objects_ptr);
	if (client_.send_tick()) return true;
	xyl_error("the second host does not answer to tick %u", world_.tick());
	return false;
}

// What the engine's modules have added is read, kept and drawn by the host, which then clears it.
void Engine::record_frame(int number) {
	xylDebug_render_records& exact = *xyl_cur_frame_debug_render_objects_ptr;
	const Sight sight = looking_.time([&] { return watcher_.look(world_); });
	for (size_t i = 0; i < 3; ++i) counts_[i] += sight.counts[i];
	hits_ += sight.picked >= 0;
	Frame frame;
	recording_time_.time([&] {
		draw_scene(world_, watcher_, sight, exact, frame.records);
		draw_screen(world_, sight, client_.tally().undamaged + client_.tally().damaged, exact);
	});
	hash_records(exact, frame.records);
	frame.records.add_other_records_and_clear(exact);
	exact.clear();
	frame.tick = world_.tick();
	frame.time = xylTimer::get_global_time(xylTimer::real_timer_no__);
	recording_.add(frame.tick, frame.time, frame.records);
	lines_ += frame.records.lines.size() + frame.records.lines_alternate.size();
	faces_ += frame.records.quads.size() + frame.records.quads_dithered.size() +
	          frame.records.quads_alternate.size();
	texts_ += frame.records.texts.size();
	is_well_ &= painting_.time(
		[&] { return painter_.paint(frame).save_png(picture_path(options_.out, number)); });
}

// The bytes of the exact records, and how many rounded ones there are.
void Engine::hash_records(const xylDebug_render_records& exact,
                          const xylDebug_render_records& rounded) {
	xylBuffer bytes;
	write_records(bytes, exact);
	bytes.write_uint64(rounded.lines.size());
	bytes.write_uint64(rounded.quads.size());
	hash_ = hash_of(bytes.get_buffer_from_start(), static_cast<int>(bytes.get_length()), hash_);
}

bool Engine::leave_files() {
	const unsigned int packets = client_.fingerprint();
	hash_ = hash_of(reinterpret_cast<const unsigned char*>(&packets), sizeof(packets), hash_);
	is_well_ &= recording_.save(options_.out + "/frames.records") &&
	            write_page(file_beside_program("page.html"), recording_.data(), recording_.size(),
	                       options_.out + "/frames.html", &page_size_);
	if (!is_well_) xyl_error("files are missing in %s", options_.out.c_str());
	return is_well_;
}

void Engine::print_summary() const {
	Table counts({"what", "count", "us each"});
	const auto add = [&](const char* what, size_t count, double microseconds) {
		counts.add({what, std::to_string(count),
		            microseconds > 0 ? in_digits(microseconds, 1) : std::string("-")});
	};
	const size_t frames = static_cast<size_t>(options_.frames);
	const Tally& tally = client_.tally();
	add("ticks simulated", frames * ticks_per_frame, simulating_.mean_microseconds());
	add("packets sent and answered", static_cast<size_t>(tally.undamaged),
	    client_.microseconds_per_answer());
	add("packets damaged on purpose", static_cast<size_t>(tally.damaged), 0);
	add("frames culled and picked", frames, looking_.mean_microseconds());
	add("  agents inside", static_cast<size_t>(counts_[frustum_inside]), 0);
	add("  agents partly inside", static_cast<size_t>(counts_[frustum_intersects]), 0);
	add("  agents outside", static_cast<size_t>(counts_[frustum_outside]), 0);
	add("  looks that met an agent", static_cast<size_t>(hits_), 0);
	add("frames recorded", frames, recording_time_.mean_microseconds());
	add("  lines", lines_, 0);
	add("  faces", faces_, 0);
	add("  texts", texts_, 0);
	add("pictures drawn and saved", frames, painting_.mean_microseconds());
	counts.print();
	std::printf("\n  %s/frame_000.png and on: the pictures\n", options_.out.c_str());
	std::printf("  %s/frames.html: the same in any browser, to turn and to step through (%s MB)\n",
	            options_.out.c_str(), in_digits(static_cast<double>(page_size_) / 1e6, 1).c_str());
}
