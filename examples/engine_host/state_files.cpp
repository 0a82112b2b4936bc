#include "state_files.h"

#include "../shared/road.h"
#include "../shared/table.h"

#include <morvantis/core/xyltimer.h>
#include <morvantis/io/xylfile.h>
#include <morvantis/io/xylinput_binary_file_stream.h>
#include <morvantis/io/xylinput_text_file_stream.h>
#include <morvantis/io/xyloutput_binary_file_stream.h>
#include <morvantis/io/xyloutput_text_file_stream.h>

#include <cmath>
#include <cstdio>

namespace {

// One walk over the fields serves all four streams, since every stream has the operators of
// xylIO_Stream. What differs is left to a writer and a reader: integers stand glued together in a
// text unless someone puts a blank between them, and a name with a blank in it needs quotes.
class State_writer {
public:
	explicit State_writer(xylIO_Stream& stream) : stream_(stream) {}

	void value(float number) { stream_ << number; }
	void value(bool flag) { stream_ << flag; }
	void value(int number) {
		stream_ << number;
		separate(" ");
	}
	void value(const char* text) {
		separate("\"");
		stream_ << text;
		separate("\" ");
	}
	void value(const xylTimer& timer) {
		timer.save_state(stream_);
		separate(" ");
	}
	void end_of_line() { separate("\n"); }

private:
	void separate(const char* text) {
		if (!stream_.is_binary_file()) stream_ << text;
	}
	xylIO_Stream& stream_;
};

class State_reader {
public:
	explicit State_reader(xylIO_Stream& stream) : stream_(stream) {}

	void value(float& number) { stream_ >> number; }
	void value(bool& flag) { stream_ >> flag; }
	void value(int& number) { stream_ >> number; }
	template <size_t size> void value(char (&text)[size]) {
		xylVarString name;
		stream_ >> name;
		xyl_snprintf(text, size, "%s", name.char_p());
	}
	void value(xylTimer& timer) { timer.load_state(stream_); }
	void end_of_line() {}

private:
	xylIO_Stream& stream_;
};

// `Some_agent` is an agent to fill, or a constant one.
template <typename Exchange, typename Some_agent> void exchange(Exchange& to, Some_agent& agent) {
	to.value(agent.id);
	to.value(agent.name);
	for (auto* vector : {&agent.position, &agent.velocity, &agent.heading}) {
		to.value(vector->x);
		to.value(vector->y);
		to.value(vector->z);
	}
	to.value(agent.spin);
	to.value(agent.health);
	bool is_box = agent.shape == Agent_shape::box;
	to.value(is_box);
	if constexpr (!std::is_const_v<Some_agent>) {
		agent.shape = is_box ? Agent_shape::box : Agent_shape::capsule;
	}
	to.end_of_line();
}

void write_state(xylIO_Stream& stream, const std::vector<Agent>& agents) {
	State_writer to(stream);
	to.value(xylTimer(xylTimer::tactical_timer_no__)); // the moment that the state is of
	to.value(static_cast<int>(agents.size()));
	to.end_of_line();
	for (const Agent& agent : agents) exchange(to, agent);
}

// Reads don't test the end: a file that was cut short is found by the count.
std::vector<Agent> read_state(xylIO_Stream& stream) {
	State_reader from(stream);
	xylTimer saved_at(xylTimer::tactical_timer_no__);
	from.value(saved_at);
	int count = 0;
	from.value(count);
	std::vector<Agent> agents;
	for (; count > 0 && !stream.eof(); --count) exchange(from, agents.emplace_back());
	if (saved_at.elapsed_time_units() != 0) agents.clear(); // of another moment
	return agents;
}

// Whether the two states agree, each number within `tolerance`.
bool are_equal(const std::vector<Agent>& a, const std::vector<Agent>& b, float tolerance) {
	const auto is_near = [tolerance](const xylVec3& v, const xylVec3& w) {
		return std::fabs(v.x - w.x) <= tolerance && std::fabs(v.y - w.y) <= tolerance &&
		       std::fabs(v.z - w.z) <= tolerance;
	};
	return std::equal(a.begin(), a.end(), b.begin(), b.end(), [&](const Agent& l, const Agent& r) {
		return l.id == r.id && std::string(l.name) == r.name && l.shape == r.shape &&
		       l.health == r.health && is_near(l.position, r.position) &&
		       is_near(l.velocity, r.velocity) && is_near(l.heading, r.heading) &&
		       std::fabs(l.spin - r.spin) <= tolerance;
	});
}

int open_for_writing(xylOutput_binary_file_stream& stream, const char* path) {
	return stream.open(path);
}
int open_for_writing(xylOutput_text_file_stream& stream, const char* path) {
	return stream.open(path, false); // not to append
}

template <typename Output, typename Input>
State_file write_and_read(const std::vector<Agent>& agents, const std::string& path,
                          float tolerance) {
	State_file file;
	file.path = path;
	Stopwatch writing, reading;
	const bool is_written = writing.time([&] {
		Output stream;
		if (open_for_writing(stream, path.c_str()) != 0) return false;
		write_state(stream, agents); // into memory
		return stream.flush() == 0 && stream.close() == 1;
	});
	const std::vector<Agent> back = reading.time([&] {
		Input stream;
		return stream.open(path.c_str()) == 0 ? read_state(stream) : std::vector<Agent>();
	});
	xylFile on_disk(path.c_str(), "rb");
	if (on_disk.is_valid()) file.bytes = on_disk.get_file_size();
	file.write_us = writing.mean_microseconds();
	file.read_us = reading.mean_microseconds();
	file.is_equal = is_written && are_equal(agents, back, tolerance);
	return file;
}

} // namespace

State_files run_state_files(const std::vector<Agent>& agents, const std::string& out) {
	State_files files;
	files.binary = write_and_read<xylOutput_binary_file_stream, xylInput_binary_file_stream>(
		agents, out + "/agents.state", 0);
	files.text = write_and_read<xylOutput_text_file_stream, xylInput_text_file_stream>(
		agents, out + "/agents.txt", 1e-6f);
	return files;
}

void State_files::print() const {
	Table table({"saved state", "bytes", "us written", "us read", "comes back"});
	for (const State_file& file : {binary, text}) {
		table.add({file.path, std::to_string(file.bytes), in_digits(file.write_us, 1),
		           in_digits(file.read_us, 1), file.is_equal ? "equal" : "NOT EQUAL"});
	}
	table.print();
}
