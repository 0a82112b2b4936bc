// What a host tells another of its world, whatever the world is.
#pragma once

#include <vector>

inline constexpr int largest_agent_count = 1000;
inline constexpr int largest_name_size = 8;
inline constexpr int event_capacity = 64;                               // bytes
inline constexpr float world_half_width = 512.0f, world_height = 64.0f; // metres

// Tick numbers travel modulo 65,500, and a rebuilt number never lies in the first half of the first
// cycle; so a world that is sent begins in the second one.
inline constexpr unsigned int first_tick = 65501;

struct Sent_agent {
	float position[3];    // metres; x and y in +-512, z in 0..64
	float orientation[4]; // a unit quaternion
	int health;           // 0..100
	char name[16];        // zero-terminated, at most largest_name_size long
};

// What one packet tells of the world.
struct Snapshot {
	std::vector<Sent_agent> agents;
	unsigned char event[event_capacity]; // whatever the game wants to say
	int event_size = 0;
};

// A world that can be sent. The same seed makes the same one at both ends.
class Sent_world {
public:
	virtual ~Sent_world() = default;
	virtual void step() = 0;
	virtual const Snapshot& snapshot() const = 0;

	unsigned int tick() const { return tick_; }
	// In units of 1/100,000 s. A tick is 1/50 s, and so a multiple of 100 units, which is all that
	// a coarse time keeps.
	long long time() const { return 2000ll * (tick_ - first_tick); }

protected:
	unsigned int tick_ = first_tick - 1;
};

// Whether `arrived` is `sent` as the packing allows: numbers and bytes exactly, positions and
// orientations to half a step.
bool are_equal(const Snapshot& arrived, const Snapshot& sent);
