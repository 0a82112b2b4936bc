#include "snapshot.h"

#include "message.h"

#include <cmath>
#include <cstring>

namespace {

bool are_equal(const Sent_agent& arrived, const Sent_agent& sent) {
	for (int i = 0; i < 3; ++i) {
		// Half a step, and a hundredth for the last digits of a float of this size.
		if (std::fabs(arrived.position[i] - sent.position[i]) > 0.51f * position_step) return false;
	}
	// Opposite quaternions turn alike. The cosine of half the angle between the two is 1 when they
	// are equal; three components off by half a step each leave it this near.
	float cosine = 0;
	for (int i = 0; i < 4; ++i) cosine += arrived.orientation[i] * sent.orientation[i];
	return std::fabs(cosine) > 1 - 2 * orientation_step * orientation_step &&
	       arrived.health == sent.health && std::strcmp(arrived.name, sent.name) == 0;
}

} // namespace

bool are_equal(const Snapshot& arrived, const Snapshot& sent) {
	if (arrived.agents.size() != sent.agents.size() || arrived.event_size != sent.event_size ||
	    std::memcmp(arrived.event, sent.event, static_cast<size_t>(sent.event_size)) != 0)
		return false;
	for (size_t i = 0; i < sent.agents.size(); ++i) {
		if (!are_equal(arrived.agents[i], sent.agents[i])) return false;
	}
	return true;
}
