// The road of a packet, from one host to another.
//
// This is a whole host of the library, and the place to start reading. It runs as two processes:
//
//     packet_road server          reads what arrives, tests every field, drops what is damaged
//     packet_road client          packs one snapshot of a small world per tick and sends it
//
// Read on in ../shared: host.cpp (what the library calls), message.cpp (how a snapshot is packed),
// client.cpp and server.cpp; world.cpp is what is sent. run.sh runs both.

#include "../shared/client.h"
#include "../shared/host.h"
#include "../shared/server.h"
#include "world.h"

#include <morvantis/core/zublibrary.h>
#include <morvantis/net/qonet.h>

#include <cstdio>

#include <CLI/CLI.hpp>

namespace {

// Reads the command line into `options` and says which role to play; false to end with `code`.
bool parse(int argc, char** argv, Options* options, bool* is_server, int* code) {
	CLI::App app("One host packs the snapshots of a moving world, another reads them.\n"
	             "Ends by itself, with 0 only if every undamaged packet arrived equal.");
	app.option_defaults()->always_capture_default();
	const auto* server = app.add_subcommand("server", "read, test and answer")->fallthrough();
	app.add_subcommand("client", "simulate, pack and send")->fallthrough();
	app.require_subcommand(1);
	app.add_option("--ticks", options->ticks, "snapshots to send")->check(CLI::Range(1, 1000000));
	app.add_option("--agents", options->agents, "agents in the world")
		->check(CLI::Range(1, largest_agent_count));
	app.add_option("--damage", options->damage, "damage one packet in so many, 0 for none")
		->check(CLI::Range(0, 1000000));
	app.add_option("--port", options->port, "port of the server on 127.0.0.1");
	app.add_option("--seed", options->seed, "of the world; the same for both roles");
	try {
		app.parse(argc, argv);
	} catch (const CLI::ParseError& end) {
		*code = app.exit(end);
		return false;
	}
	*is_server = server->parsed();
	return true;
}

} // namespace

int main(int argc, char** argv) {
	Options options;
	bool is_server = false;
	int code = 0;
	if (!parse(argc, argv, &options, &is_server, &code)) return code;

	// Two steps bring the library up: it gets the host's interfaces, and then the host starts what
	// it needs. Until the first of them nothing of the library may be called.
	Host host;
	zubLibrary::initialize(&host, &host);
	QoNet* network = zub_library->get_qonet();
	code = exit_no_network;
	World world(options.agents, options.seed);
	if (network->initialize())
		code = is_server ? run_server(options, world) : Client(options, world).run();

	// In reverse: sockets were closed by their owners, so the network may stop. There is no stop
	// function for the library; a host that wants its objects back runs the destructor.
	network->terminate();
	host.print_texts();
	zub_library->~zubLibrary();
	return code;
}
