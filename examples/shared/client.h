// The sending host: packs a snapshot of its world per tick, sends it, and waits for the answer.
#pragma once

#include "message.h"
#include "road.h"

#include <morvantis/core/xylrandom_generator.h>

class Client {
public:
	// Both are used as long as the client lives.
	Client(const Options& options, Sent_world& world);

	// Steps and sends the world for all ticks of the options, prints the tables, and returns the
	// process's exit code.
	int run();

	// The same in single steps. Each is false when it failed, and then the next ones make no sense.
	bool open() { return open_socket(&socket_, 0); }
	bool send_tick();   // the world as it stands; damaged where the options say so
	bool say_goodbye(); // takes the world one tick further

	const Tally& tally() const { return tally_; }
	const Meter& meter() const { return meter_; }
	unsigned int fingerprint() const { return fingerprint_; }
	double microseconds_per_packing() const { return packing_.mean_microseconds(); }
	double microseconds_per_answer() const { return round_trip_.mean_microseconds(); }

private:
	bool send(Dynamic_bit_buffer& packet);
	bool is_acknowledged(unsigned int tick);
	bool deliver(Dynamic_bit_buffer& packet, unsigned int tick);
	void send_damaged(const Dynamic_bit_buffer& packet);
	void send_noise();
	void print(bool is_well) const;

	const Options& options_;
	Sent_world& world_;
	xylRandom_generator vandal_;
	QoNetAddress server_;
	QoNet_udp_socket socket_;
	Tally tally_;
	Meter meter_;
	int sent_again_ = 0;
	unsigned int fingerprint_ = 0; // of all packets before they are damaged
	Stopwatch packing_, sending_, round_trip_;
};
