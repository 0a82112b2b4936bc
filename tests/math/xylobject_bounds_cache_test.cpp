#include "samples.h"

TEST(xylObject_bounds_cache, UpdatesEverythingButTheChildRadius) {
	xylBounding_box box;
	box.min = {-1, -2, -3};
	box.max = {1, 2, 5};
	box.center = {50, 50, 50}; // not what the cache's centre comes from
	box.radius = 4;
	xylMatrix_frame frame = xylMatrix_frame::identity();
	frame.origin = {10, 20, 30, 77};
	xylObject_bounds_cache cache{};
	cache.radius_of_biggest_child_mesh = 12;
	cache.update(box, frame);
	EXPECT_TRUE(is_vector(cache.min, 9, 18, 27, 1));
	EXPECT_TRUE(is_vector(cache.max, 11, 22, 35, 1));
	EXPECT_TRUE(is_vector(cache.center, 10, 20, 31, marker));
	EXPECT_EQ(cache.radius, 4.0f);
	EXPECT_EQ(cache.radius_of_biggest_child_mesh, 12.0f);
	const xylVec3 order[8] = {{11, 22, 27}, {9, 22, 27}, {11, 22, 35}, {9, 18, 27},
	                          {11, 18, 27}, {9, 22, 35}, {11, 18, 35}, {9, 18, 35}};
	for (int i = 0; i < 8; ++i) {
		SCOPED_TRACE(i);
		EXPECT_TRUE(is_vector(cache.tips[i], order[i].x, order[i].y, order[i].z, 1));
	}
}

TEST(xylObject_bounds_cache, HasNoShortcutForTheIdentity) {
	xylBounding_box box;
	box.max = {1, 1, 1};
	xylMatrix_frame frame = xylMatrix_frame::identity();
	frame.origin.x = 0.00009f;
	xylObject_bounds_cache cache;
	cache.update(box, frame);
	EXPECT_EQ(cache.min.x, 0.00009f);
}

TEST(xylObject_bounds_cache, InfiniteBoxesKeepTheirFourthFloats) {
	xylBounding_box box;
	box.min = {-infinity, -1, -1};
	box.max = {infinity, 1, 1};
	xylObject_bounds_cache cache;
	cache.update(box, xylMatrix_frame::identity());
	for (const xylVec3& tip : cache.tips) EXPECT_EQ(tip.w, 1.0f);
	EXPECT_EQ(cache.min.w, 1.0f);
	EXPECT_EQ(cache.max.w, 1.0f);
	EXPECT_EQ(cache.center.w, marker);
}

TEST(xylObject_bounds_cache, RadiusScalesWithTheLongestAxis) {
	xylBounding_box box;
	box.radius = 8;
	xylObject_bounds_cache cache;
	for (int axis = 0; axis < 3; ++axis) {
		SCOPED_TRACE(axis);
		xylMatrix_frame frame = xylMatrix_frame::identity();
		frame.s *= 0.5f;
		frame.f *= 0.5f;
		frame.u *= 0.5f;
		xylVec3& row = axis == 0 ? frame.s : axis == 1 ? frame.f : frame.u;
		row *= 6;
		cache.update(box, frame);
		EXPECT_EQ(cache.radius, 24.0f);
		// A squared length of 1.0000005 is no scale at all, 1.000003 is one.
		row = row * (std::sqrt(1.0000005f) / 3);
		ASSERT_NE(row.length_squared(), 1.0f);
		cache.update(box, frame);
		EXPECT_EQ(cache.radius, 8.0f);
		row *= 1.000001f;
		cache.update(box, frame);
		EXPECT_GT(cache.radius, 8.0f);
	}
}

TEST(xylObject_bounds_cache, ChildRadiusIsValidAboveZero) {
	xylObject_bounds_cache cache{};
	cache.radius = 7;
	for (const float unset : {0.0f, -0.0f, -3.0f, not_a_number}) {
		cache.radius_of_biggest_child_mesh = unset;
		EXPECT_EQ(cache.get_valid_radius_of_biggest_child_mesh(), 7.0f);
	}
	cache.radius_of_biggest_child_mesh = 1e-30f;
	EXPECT_EQ(cache.get_valid_radius_of_biggest_child_mesh(), 1e-30f);
}

TEST(xylObject_bounds_cache, AgreesWithThePlainStepsAndDoubles) {
	Samples samples(51);
	for (int i = 0; i < sample_count; ++i) {
		const xylMatrix_frame frame = samples.frame(100);
		const xylBounding_box box = samples.box(50, 10);
		xylObject_bounds_cache cache;
		cache.update(box, frame);
		const auto p = plain::cache_of(to_plain<float>(box), to_plain<float>(frame));
		const auto d = plain::cache_of(to_plain<double>(box), to_plain<double>(frame));
		ASSERT_TRUE(same_bits(cache.min, p.min) && same_bits(cache.max, p.max));
		ASSERT_TRUE(same_bits(cache.center, p.center) && same_bits(cache.radius, p.radius));
		ASSERT_TRUE(near(cache.min, d.min, 2e-4) && near(cache.max, d.max, 2e-4));
		ASSERT_TRUE(near(cache.center, d.center, 2e-4));
		ASSERT_NEAR(cache.radius, d.radius, 3e-5);
		for (int k = 0; k < 8; ++k) {
			ASSERT_TRUE(same_bits(cache.tips[k], p.tips[k]));
			ASSERT_TRUE(near(cache.tips[k], d.tips[k], 2e-4));
			ASSERT_EQ(cache.tips[k].w, 1.0f);
		}
	}
}
