#include "samples.h"

namespace {

xylBounding_box box_of(const xylVec3& min, const xylVec3& max) {
	xylBounding_box box;
	box.min = min;
	box.max = max;
	return box;
}

xylBounding_box empty_box() {
	xylBounding_box box;
	box.begin_relaxation();
	return box;
}

xylMatrix_frame moved_by(const xylVec3& offset) {
	xylMatrix_frame frame = xylMatrix_frame::identity();
	frame.origin = {offset.x, offset.y, offset.z, 1};
	return frame;
}

} // namespace

TEST(xylBounding_box, StartsAsAllZeros) {
	const xylBounding_box made;
	xylBounding_box cleared = box_of({1, 2, 3}, {4, 5, 6});
	cleared.center = {7, 8, 9};
	cleared.radius = 10;
	cleared.init_zero();
	for (const xylBounding_box* box : {&made, static_cast<const xylBounding_box*>(&cleared)}) {
		EXPECT_TRUE(is_vector(box->min, 0, 0, 0, 0));
		EXPECT_TRUE(is_vector(box->max, 0, 0, 0, 0));
		EXPECT_TRUE(is_vector(box->center, 0, 0, 0, 0));
		EXPECT_EQ(box->radius, 0.0f);
	}
}

TEST(xylBounding_box, BeginsInsideOut) {
	xylBounding_box box;
	box.radius = 5;
	box.begin_relaxation();
	EXPECT_TRUE(is_vector(box.min, 1e8f, 1e8f, 1e8f, marker));
	EXPECT_TRUE(is_vector(box.max, -1e8f, -1e8f, -1e8f, marker));
	EXPECT_TRUE(is_vector(box.center, 0, 0, 0, marker));
	EXPECT_EQ(box.radius, 0.0f);
}

TEST(xylBounding_box, RelaxingWithEmptyAddsNothing) {
	xylBounding_box box = empty_box();
	box.relax_with_bounding_box(empty_box());
	EXPECT_TRUE(is_vector(box.min, 1e8f, 1e8f, 1e8f, marker));
	EXPECT_TRUE(is_vector(box.max, -1e8f, -1e8f, -1e8f, marker));
	box.relax_with_transformed_bounding_box(empty_box(), moved_by({1, 1, 1}));
	EXPECT_TRUE(is_vector(box.min, 1e8f, 1e8f, 1e8f, marker));
	box.relax_with_bounding_box(box_of({1, 2, 3}, {4, 5, 6}));
	EXPECT_EQ(box.min, xylVec3(1, 2, 3));
	EXPECT_EQ(box.max, xylVec3(4, 5, 6));
	box.relax_with_bounding_box(empty_box());
	EXPECT_EQ(box.min, xylVec3(1, 2, 3));
	EXPECT_EQ(box.max, xylVec3(4, 5, 6));
}

TEST(xylBounding_box, EmptinessIsJudgedByXAlone) {
	xylBounding_box box = box_of({0, 0, 0}, {1, 1, 1});
	box.relax_with_bounding_box(box_of({2, 9, 9}, {3, -9, -9}));
	EXPECT_EQ(box.min, xylVec3(0, 0, 0));
	EXPECT_EQ(box.max, xylVec3(3, 1, 1));
	box.relax_with_bounding_box(box_of({-5, -5, -5}, {-6, 5, 5}));
	EXPECT_EQ(box.max, xylVec3(3, 1, 1));
	// NaN: only one of the two forms lets it through, and it widens nothing there.
	box.relax_with_bounding_box(box_of({not_a_number, -7, 0}, {0, 7, 0}));
	EXPECT_EQ(box.min, xylVec3(0, -7, 0));
	EXPECT_EQ(box.max, xylVec3(3, 7, 1));
	box.relax_with_transformed_bounding_box(box_of({not_a_number, -99, 0}, {0, 99, 0}),
	                                        xylMatrix_frame::identity());
	EXPECT_EQ(box.min, xylVec3(0, -7, 0));
}

TEST(xylBounding_box, ZeroSizedBoxIsNotEmpty) {
	xylBounding_box box = box_of({1, 2, 3}, {4, 5, 6});
	box.relax_with_bounding_box(xylBounding_box());
	EXPECT_EQ(box.min, xylVec3(0, 0, 0));
	EXPECT_EQ(box.max, xylVec3(4, 5, 6));
	box.relax_with_transformed_bounding_box(xylBounding_box(), moved_by({9, 9, 9}));
	EXPECT_EQ(box.max, xylVec3(9, 9, 9));
}

TEST(xylBounding_box, RelaxingTouchesNothingButTheCorners) {
	xylBounding_box box = box_of({1, 2, 3, 11}, {4, 5, 6, 12});
	box.center = {7, 8, 9, 13};
	box.radius = 10;
	box.relax_with_bounding_box(box_of({0, 0, 0, -99}, {9, 9, 9, 99}));
	box.relax_with_transformed_bounding_box(box_of({0, 0, 0, -99}, {9, 9, 9, 99}),
	                                        moved_by({1, 2, 3}));
	EXPECT_TRUE(is_vector(box.min, 0, 0, 0, 11));
	EXPECT_TRUE(is_vector(box.max, 10, 11, 12, 12));
	EXPECT_TRUE(is_vector(box.center, 7, 8, 9, 13));
	EXPECT_EQ(box.radius, 10.0f);
}

TEST(xylBounding_box, EnclosesItsFaces) {
	const xylBounding_box box = box_of({1, 2, 3}, {4, 5, 6});
	EXPECT_TRUE(box.encloses_point({2, 3, 4}));
	EXPECT_TRUE(box.encloses_point({1, 2, 3}));
	EXPECT_TRUE(box.encloses_point({4, 5, 6}));
	const float below = std::nextafter(1.0f, 0.0f);
	EXPECT_FALSE(box.encloses_point({below, 3, 4}));
	EXPECT_FALSE(box.encloses_point({2, 1.99f, 4}));
	EXPECT_FALSE(box.encloses_point({2, 3, 2.99f}));
	EXPECT_FALSE(box.encloses_point({4.01f, 3, 4}));
	EXPECT_FALSE(box.encloses_point({2, 5.01f, 4}));
	EXPECT_FALSE(box.encloses_point({2, 3, 6.01f}));
	EXPECT_FALSE(box.encloses_point({2, not_a_number, 4}));
	EXPECT_TRUE(xylBounding_box::point_inside_box({4, 2, 6}, box.min, box.max));
	EXPECT_FALSE(xylBounding_box::point_inside_box({4, 2, 6.01f}, box.min, box.max));
}

TEST(xylBounding_box, TipPointsStandInTheirOrder) {
	const xylBounding_box box = box_of({1, 2, 3, 7}, {4, 5, 6, 8});
	const xylVec3 order[8] = {{1, 2, 3}, {4, 5, 6}, {1, 5, 3}, {4, 5, 3},
	                          {1, 2, 6}, {4, 2, 6}, {1, 5, 6}, {4, 2, 3}};
	xylVec3 tips[8];
	for (int i = 0; i < 8; ++i) tips[i].w = static_cast<float>(i);
	box.get_tip_points(tips);
	xylVec3 moved[8];
	box.get_transformed_tip_points(moved, moved_by({10, 20, 30}));
	xylVec3 always[8];
	xylBounding_box::get_transformed_tip_points(always, box.min, box.max,
	                                            xylMatrix_frame::identity());
	for (int i = 0; i < 8; ++i) {
		SCOPED_TRACE(i);
		const xylVec3& p = order[i];
		EXPECT_TRUE(is_vector(tips[i], p.x, p.y, p.z, static_cast<float>(i)));
		EXPECT_TRUE(is_vector(moved[i], p.x + 10, p.y + 20, p.z + 30, 1));
		EXPECT_TRUE(is_vector(always[i], p.x, p.y, p.z, marker));
	}
}

TEST(xylBounding_box, NearIdentityLeavesCornersAsTheyAre) {
	const xylBounding_box box = box_of({1, 2, 3}, {4, 5, 6});
	for (int i = 0; i < 12; ++i) {
		SCOPED_TRACE(i);
		xylMatrix_frame frame = xylMatrix_frame::identity();
		xylVec3& row = i < 3 ? frame.s : i < 6 ? frame.f : i < 9 ? frame.u : frame.origin;
		float& number = i % 3 == 0 ? row.x : i % 3 == 1 ? row.y : row.z;
		const float kept = number;
		xylVec3 tips[8];
		for (const float off : {0.00009f, -0.00009f}) {
			number = kept + off;
			box.get_transformed_tip_points(tips, frame);
			EXPECT_TRUE(is_vector(tips[0], 1, 2, 3, 1));
			EXPECT_TRUE(is_vector(tips[1], 4, 5, 6, 1));
		}
		for (const float off : {0.0002f, -0.0002f, not_a_number}) {
			number = kept + off;
			box.get_transformed_tip_points(tips, frame);
			EXPECT_NE(tips[1], xylVec3(4, 5, 6));
			EXPECT_EQ(tips[1].w, 1.0f);
		}
	}
	xylMatrix_frame frame = xylMatrix_frame::identity();
	frame.s.w = frame.origin.w = not_a_number; // not looked at
	xylVec3 tips[8];
	box.get_transformed_tip_points(tips, frame);
	EXPECT_TRUE(is_vector(tips[1], 4, 5, 6, 1));
}

TEST(xylBounding_box, ShortcutReachesGlobalBoundsButNotTheTransformedBox) {
	const xylBounding_box box = box_of({0, 0, 0}, {1024, 1024, 1024});
	const xylMatrix_frame frame = moved_by({0.00009f, 0, 0});
	xylVec3 min, max;
	box.get_global_bounds(frame, min, max);
	EXPECT_EQ(min.x, 0.0f);
	EXPECT_NE(box.get_transformed_bounding_box(frame).min.x, 0.0f);
}

TEST(xylBounding_box, GlobalBoundsKeepTheirSentinels) {
	xylVec3 min, max;
	box_of({1, 2, 3}, {4, 5, 6}).get_global_bounds(moved_by({1, 1, 1}), min, max);
	EXPECT_TRUE(is_vector(min, 2, 3, 4, marker));
	EXPECT_TRUE(is_vector(max, 5, 6, 7, marker));
	box_of({2e8f, 0, 0}, {3e8f, 1, 1}).get_global_bounds(xylMatrix_frame::identity(), min, max);
	EXPECT_TRUE(is_vector(min, 1e8f, 0, 0, marker));
	EXPECT_TRUE(is_vector(max, 3e8f, 1, 1, marker));
	box_of({-3e8f, 0, 0}, {-2e8f, 1, 1}).get_global_bounds(xylMatrix_frame::identity(), min, max);
	EXPECT_TRUE(is_vector(min, -3e8f, 0, 0, marker));
	EXPECT_TRUE(is_vector(max, -1e8f, 1, 1, marker));
	box_of({not_a_number, 0, 0}, {not_a_number, 1, 1})
		.get_global_bounds(xylMatrix_frame::identity(), min, max);
	EXPECT_TRUE(is_vector(min, 1e8f, 0, 0, marker));
	EXPECT_TRUE(is_vector(max, -1e8f, 1, 1, marker));
}

TEST(xylBounding_box, TransformedBoxHasNoSphere) {
	xylBounding_box box = box_of({1, 2, 3}, {4, 5, 6});
	box.center = {9, 9, 9};
	box.radius = 9;
	xylMatrix_frame frame = moved_by({10, 0, 0});
	frame.s = {0, 2, 0, 0};
	frame.f = {-1, 0, 0, 0};
	const xylBounding_box moved = box.get_transformed_bounding_box(frame);
	EXPECT_TRUE(is_vector(moved.min, 5, 2, 3, marker));
	EXPECT_TRUE(is_vector(moved.max, 8, 8, 6, marker));
	EXPECT_TRUE(is_vector(moved.center, 0, 0, 0, 0));
	EXPECT_EQ(moved.radius, 0.0f);
}

TEST(xylBounding_box, OverlapIsInclusive) {
	const xylVec3 min(0, 0, 0);
	const xylVec3 max(2, 2, 2);
	for (int axis = 0; axis < 3; ++axis) {
		for (const float sign : {1.0f, -1.0f}) {
			SCOPED_TRACE(testing::Message() << axis << ' ' << sign);
			xylVec3 way(axis == 0, axis == 1, axis == 2);
			const xylVec3 touching = way * (2 * sign);
			const xylVec3 apart = way * (2.001f * sign);
			const xylBounding_box a = box_of(min, max);
			EXPECT_TRUE(xylBounding_box::bounding_boxes_intersect(
				a, box_of(min + touching, max + touching)));
			EXPECT_FALSE(
				xylBounding_box::bounding_boxes_intersect(a, box_of(min + apart, max + apart)));
			// kept: the maximum of each box comes first.
			EXPECT_TRUE(xylBounding_box::box_overlap_box(max, min, max + touching, min + touching));
			EXPECT_FALSE(xylBounding_box::box_overlap_box(max, min, max + apart, min + apart));
		}
	}
	EXPECT_FALSE(xylBounding_box::box_overlap_box(min, {3, 3, 3}, max, min));
}

TEST(xylBounding_box, BoxInsideBoxIsInclusive) {
	const xylVec3 min(0, 0, 0);
	const xylVec3 max(2, 2, 2);
	EXPECT_TRUE(xylBounding_box::box_inside_box(min, max, min, max));
	EXPECT_TRUE(xylBounding_box::box_inside_box({1, 1, 1}, {2, 2, 2}, min, max));
	EXPECT_FALSE(xylBounding_box::box_inside_box(min, max, {1, 1, 1}, {2, 2, 2}));
	for (int axis = 0; axis < 3; ++axis) {
		const xylVec3 way(axis == 0, axis == 1, axis == 2);
		EXPECT_FALSE(xylBounding_box::box_inside_box(min - way, max, min, max));
		EXPECT_FALSE(xylBounding_box::box_inside_box(min, max + way, min, max));
	}
}

TEST(xylBounding_box, AgreesWithThePlainStepsAndDoubles) {
	Samples samples(41);
	for (int i = 0; i < sample_count; ++i) {
		const xylMatrix_frame frame = samples.frame(100);
		const xylBounding_box box = samples.box(50, 10);
		const auto pf = to_plain<float>(frame);
		const auto pb = to_plain<float>(box);
		const auto df = to_plain<double>(frame);
		const auto db = to_plain<double>(box);
		xylVec3 tips[8];
		plain::Vec<float> ptips[8];
		plain::Vec<double> dtips[8];
		box.get_transformed_tip_points(tips, frame);
		plain::transformed_tips(pb, pf, ptips);
		plain::transformed_tips(db, df, dtips);
		for (int k = 0; k < 8; ++k) {
			ASSERT_TRUE(same_bits(tips[k], ptips[k]));
			ASSERT_TRUE(near(tips[k], dtips[k], 2e-4));
			ASSERT_EQ(tips[k].w, 1.0f);
		}
		xylVec3 min, max;
		plain::Vec<float> pmin, pmax;
		plain::Vec<double> dmin, dmax;
		box.get_global_bounds(frame, min, max);
		plain::global_bounds(pb, pf, pmin, pmax);
		plain::global_bounds(db, df, dmin, dmax);
		ASSERT_TRUE(same_bits(min, pmin) && same_bits(max, pmax));
		ASSERT_TRUE(near(min, dmin, 2e-4) && near(max, dmax, 2e-4));
		// The bounds by centre and extent are those over the corners.
		const xylBounding_box moved = box.get_transformed_bounding_box(frame);
		const auto pmoved = plain::transformed_box(pb, pf);
		ASSERT_TRUE(same_bits(moved.min, pmoved.min) && same_bits(moved.max, pmoved.max));
		ASSERT_TRUE(near(moved.min, dmin, 3e-4) && near(moved.max, dmax, 3e-4));
	}
}

TEST(xylBounding_box, RelaxationIsTheUnionOfAllPoints) {
	Samples samples(42);
	for (int round = 0; round < sample_count / 10; ++round) {
		xylBounding_box sum = empty_box();
		plain::Vec<float> min = {1e8f, 1e8f, 1e8f}, max = {-1e8f, -1e8f, -1e8f};
		plain::Vec<double> exact_min = {1e8, 1e8, 1e8}, exact_max = {-1e8, -1e8, -1e8};
		for (int i = 0; i < 10; ++i) {
			xylBounding_box box = samples.box(50, 10);
			if (samples.one_in(8)) std::swap(box.min.x, box.max.x); // empty, unless flat in x
			if (samples.one_in(8)) std::swap(box.min.y, box.max.y); // which is not looked at
			const bool is_empty = box.min.x > box.max.x;
			if (samples.one_in(2)) {
				sum.relax_with_bounding_box(box);
				// The corners as they stand: an inverted axis widens by its own two ends.
				if (is_empty) continue;
				min = plain::least(to_plain<float>(box.min), min);
				max = plain::greatest(to_plain<float>(box.max), max);
				exact_min = plain::least(to_plain<double>(box.min), exact_min);
				exact_max = plain::greatest(to_plain<double>(box.max), exact_max);
				continue;
			}
			const xylMatrix_frame frame = samples.frame(100);
			sum.relax_with_transformed_bounding_box(box, frame);
			if (is_empty) continue;
			plain::Vec<float> tips[8];
			plain::Vec<double> exact_tips[8];
			plain::transformed_tips(to_plain<float>(box), to_plain<float>(frame), tips);
			plain::transformed_tips(to_plain<double>(box), to_plain<double>(frame), exact_tips);
			for (int k = 0; k < 8; ++k) {
				min = plain::least(tips[k], min);
				max = plain::greatest(tips[k], max);
				exact_min = plain::least(exact_tips[k], exact_min);
				exact_max = plain::greatest(exact_tips[k], exact_max);
			}
		}
		ASSERT_TRUE(same_bits(sum.min, min));
		ASSERT_TRUE(same_bits(sum.max, max));
		ASSERT_TRUE(near(sum.min, exact_min, 2e-4) && near(sum.max, exact_max, 2e-4));
	}
}
