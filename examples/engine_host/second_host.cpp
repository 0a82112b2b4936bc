#include "second_host.h"

#include "../shared/server.h"
#include "agents.h"

#include <morvantis/core/xylreport.h>
#include <morvantis/platform/zubplatform.h>

#include <cstdio>
#include <fstream>
#include <iterator>
#include <thread>
#include <vector>

namespace {

constexpr std::chrono::seconds patience_for_words(20);

std::string tables_path(const Run_options& options) { return options.out + "/second_host.txt"; }

std::string contents_of(const std::string& path) {
	std::ifstream file(path);
	return {std::istreambuf_iterator<char>(file), {}};
}

// One in the range that systems leave to programs, which nobody listens on now.
unsigned short free_port() {
	const unsigned int first = zubPlatform::get_current_process_id();
	for (unsigned int i = 0; i < 20; ++i) {
		const auto port = static_cast<unsigned short>(20000 + (first + 97 * i) % 8000);
		QoNet_udp_socket socket;
		const bool is_free = open_socket(&socket, port);
		socket.close_socket();
		if (is_free) return port;
	}
	return 0;
}

} // namespace

Options road_options(const Run_options& options, unsigned short port) {
	Options road;
	road.ticks = options.frames * ticks_per_frame;
	road.agents = options.agents;
	road.seed = options.seed;
	road.port = port;
	return road;
}

int run_second_host(const Run_options& options) {
	if (!std::freopen(tables_path(options).c_str(), "w", stdout)) return exit_no_port;
	World world(options.agents, options.seed);
	return run_server(road_options(options, options.second_port), world);
}

bool Second_host::start(const Run_options& options) {
	tables_ = tables_path(options);
	std::remove(tables_.c_str());
	port_ = free_port();
	if (port_ == 0) return false;
	std::string words[] = {'"' + options.program + '"',
	                       "--second-host " + std::to_string(port_),
	                       "--frames " + std::to_string(options.frames),
	                       "--agents " + std::to_string(options.agents),
	                       "--seed " + std::to_string(options.seed),
	                       "--out \"" + options.out + '"'};
	std::vector<char*> arguments;
	for (std::string& word : words) arguments.push_back(word.data());
	arguments.push_back(nullptr);
	unsigned int process = 0;
	if (zubPlatform::create_process(process, nullptr, arguments.data(), nullptr, 0, false) != 1)
		return false;
	return !wait_for("listens").empty();
}

std::string Second_host::wait_for(const char* word) const {
	const auto end = std::chrono::steady_clock::now() + patience_for_words;
	while (std::chrono::steady_clock::now() < end) {
		std::string text = contents_of(tables_);
		if (text.find(word) != std::string::npos) return text;
		std::this_thread::sleep_for(std::chrono::milliseconds(10));
	}
	return {};
}

bool Second_host::wait_until_content() const {
	return wait_for("  server: ").find("every undamaged packet arrived equal") != std::string::npos;
}
