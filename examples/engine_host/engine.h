// A run of the engine: its loop of ticks and frames, and what comes of it.
#pragma once

#include "../shared/client.h"
#include "options.h"
#include "picture.h"
#include "scene.h"
#include "second_host.h"

class Engine {
public:
	// `port` of the second host.
	Engine(const Run_options& options, unsigned short port);

	// The whole run, down to the files in the out folder. False when something went wrong; the host
	// was told.
	bool run();
	void print_summary() const;
	const World& world() const { return world_; }
	// Over all packets and records, the same on every machine for the same options.
	unsigned int hash() const { return hash_; }

private:
	bool step();
	void record_frame(int number);
	bool leave_files();
	void hash_records(const xylDebug_render_records& exact, const xylDebug_render_records& rounded);

	const Run_options& options_;
	const Options road_;
	World world_;
	Watcher watcher_;
	Client client_;
	Painter painter_;
	Recording recording_;

	unsigned int hash_ = 0;
	int counts_[3] = {}; // of agents by culling result, over all frames
	int hits_ = 0;       // looks that met an agent
	size_t lines_ = 0, faces_ = 0, texts_ = 0;
	size_t page_size_ = 0;
	bool is_well_ = true;
	Stopwatch simulating_, looking_, recording_time_, painting_;
};

// The file `name` among those that lie beside the program.
std::string file_beside_program(const char* name);
