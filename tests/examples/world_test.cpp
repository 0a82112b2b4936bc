#include <engine_host/watcher.h>

#include <gtest/gtest.h>

#include <cmath>

namespace {

// Of the world after `ticks`, by positions and headings.
std::vector<float> numbers_after(int ticks, unsigned int seed) {
	World world(30, seed);
	for (int i = 0; i < ticks; ++i) world.step();
	std::vector<float> numbers;
	for (const Agent& agent : world.agents()) {
		numbers.insert(numbers.end(),
		               {agent.position.x, agent.position.y, agent.heading.x, agent.heading.y});
	}
	return numbers;
}

} // namespace

TEST(World, IsTheSameForTheSameSeed) {
	EXPECT_EQ(numbers_after(200, 5), numbers_after(200, 5));
	EXPECT_NE(numbers_after(200, 5), numbers_after(200, 6));
	EXPECT_NE(numbers_after(200, 5), numbers_after(201, 5));
}

TEST(World, KeepsItsAgentsOnTheSquareAndUpright) {
	World world(100, 1);
	for (int i = 0; i < 2000; ++i) world.step();
	for (const Agent& agent : world.agents()) {
		EXPECT_LT(std::fabs(agent.position.x), World::half_width + 1) << agent.name;
		EXPECT_LT(std::fabs(agent.position.y), World::half_width + 1) << agent.name;
		EXPECT_NEAR(agent.heading.length(), 1, 1e-6) << agent.name;
		EXPECT_GE(agent.health, 1);
		EXPECT_LE(agent.health, 100);
	}
}

// The orientation that is sent turns +Y to the heading.
TEST(World, TellsTheHeadingAsAQuaternion) {
	World world(50, 3);
	for (int i = 0; i < 100; ++i) world.step();
	for (const Agent& agent : world.agents()) {
		const Sent_agent& sent = world.snapshot().agents[static_cast<size_t>(agent.id)];
		const float w = sent.orientation[0], z = sent.orientation[3];
		EXPECT_NEAR(w * w + z * z, 1, 1e-5);
		EXPECT_NEAR(-2 * w * z, agent.heading.x, 1e-3) << agent.name;
		EXPECT_NEAR(w * w - z * z, agent.heading.y, 1e-3) << agent.name;
	}
}

// Against all eight corners and six planes by themselves.
TEST(Watcher, CullsAsThePlanesSay) {
	World world(200, 9);
	Watcher watcher;
	int seen[3] = {};
	for (int tick = 0; tick < 60; ++tick) {
		world.step();
		watcher.step();
		const Sight sight = watcher.look(world);
		for (const Agent& agent : world.agents()) {
			xylVec3 corners[8];
			agent.box().get_transformed_tip_points(corners, agent.frame());
			bool is_inside = true, is_outside = false;
			for (const xylPlane& plane : watcher.frustum().planes_) {
				int in = 0;
				for (const xylVec3& corner : corners)
					in += (corner - plane.point).dot(plane.normal) > 1e-4f;
				is_inside &= in == 8;
				is_outside |= in == 0;
			}
			const int check = sight.checks[static_cast<size_t>(agent.id)];
			++seen[check];
			EXPECT_TRUE(!is_inside || check == frustum_inside) << agent.name;
			EXPECT_TRUE(!is_outside || check != frustum_inside) << agent.name;
			EXPECT_TRUE(is_inside || is_outside || check != frustum_outside) << agent.name;
		}
	}
	for (const int count : seen) EXPECT_GT(count, 100);
}

// What is picked lies on the way of the look, within reach of the agent, and nothing lies before
// it.
TEST(Watcher, PicksTheFirstAgentOnTheWay) {
	World world(150, 4);
	Watcher watcher;
	int picks = 0;
	for (int tick = 0; tick < 300; ++tick) {
		world.step();
		watcher.step();
		const Sight sight = watcher.look(world);
		if (sight.picked < 0) continue;
		++picks;
		const Agent& agent = world.agents()[static_cast<size_t>(sight.picked)];
		const xylBounding_box box = agent.box();
		const xylVec3 middle = agent.position + box.center;
		EXPECT_LE((sight.hit - middle).length(), box.radius * 1.01f);
		for (const Agent& other : world.agents()) {
			// One whose middle the look passes closely, well before the hit, would have been met.
			const xylVec3 way = other.position + other.box().center - sight.ray.origin;
			const float along = way.dot(sight.ray.direction);
			const float beside = (way - sight.ray.direction * along).length();
			EXPECT_FALSE(along > 0 && along < sight.distance - 3 && beside < 0.3f)
				<< other.name << " stands before " << agent.name;
		}
	}
	EXPECT_GT(picks, 200);
}
