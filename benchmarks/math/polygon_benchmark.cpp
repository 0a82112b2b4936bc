// Convex polygons: hulls of scattered points, and separating axes. Each pass goes over so many
// points or pairs that a branch predictor doesn't learn them by heart.

#include "inputs.h"
#include "plain_polygon.h"

#include <morvantis/math/xylconvex_polygon.h>

#include <CGAL/Exact_predicates_inexact_constructions_kernel.h>
#include <CGAL/Simple_cartesian.h>
#include <CGAL/convex_hull_2.h>
#include <benchmark/benchmark.h>
#include <boost/geometry.hpp>
#include <boost/geometry/geometries/multi_point.hpp>
#include <boost/geometry/geometries/point_xy.hpp>
#include <boost/geometry/geometries/ring.hpp>

#include <iterator>
#include <vector>

namespace {

namespace bg = boost::geometry;
using Boost_point = bg::model::d2::point_xy<float>;
using Boost_ring = bg::model::ring<Boost_point, false>;

// --- Hulls. The sort dominates: ours and the plain one leave the input sorted, so they copy it
// first; the others sort a copy of their own.

template <typename Point> std::vector<std::vector<Point>> point_sets(benchmark::State& state) {
	Inputs inputs;
	const auto size = static_cast<std::size_t>(state.range(0));
	std::vector<std::vector<Point>> sets((input_count + size - 1) / size);
	for (auto& set : sets) {
		for (std::size_t i = 0; i < size; ++i) {
			const xylVec3 p = inputs.point(10);
			set.push_back(Point{p.x, p.y});
		}
	}
	return sets;
}

template <typename Sets, typename Call>
void each_set(benchmark::State& state, const Sets& sets, Call call) {
	for (auto _ : state) {
		for (const auto& set : sets) call(set);
		benchmark::ClobberMemory();
	}
	state.SetItemsProcessed(state.iterations() * static_cast<long>(sets.size()));
}

void hull_ours(benchmark::State& state) {
	std::vector<xylVec2> input;
	xylConvex_polygon hull;
	each_set(state, point_sets<xylVec2>(state), [&](const std::vector<xylVec2>& set) {
		input = set;
		hull.initialize(input.data(), static_cast<int>(input.size()));
		benchmark::DoNotOptimize(hull.points.data());
	});
}
void hull_plain(benchmark::State& state) {
	using Point = plain::Vec2<float>;
	plain::Polygon<float> hull;
	each_set(state, point_sets<Point>(state), [&](const std::vector<Point>& set) {
		hull = plain::hull(set);
		benchmark::DoNotOptimize(hull.data());
	});
}
void hull_boost(benchmark::State& state) {
	const auto sets = point_sets<Boost_point>(state);
	std::vector<bg::model::multi_point<Boost_point>> multi_points;
	for (const auto& set : sets) multi_points.emplace_back(set.begin(), set.end());
	Boost_ring hull;
	each_set(state, multi_points, [&](const bg::model::multi_point<Boost_point>& set) {
		hull.clear();
		bg::convex_hull(set, hull);
		benchmark::DoNotOptimize(hull.data());
	});
}
// With the signs of turns decided exactly, as CGAL is used, or in float alone, as ours.
template <typename Kernel> void hull_cgal(benchmark::State& state) {
	using Point = typename Kernel::Point_2;
	std::vector<Point> hull;
	each_set(state, point_sets<Point>(state), [&](const std::vector<Point>& set) {
		hull.clear();
		CGAL::convex_hull_2(set.begin(), set.end(), std::back_inserter(hull), Kernel());
		benchmark::DoNotOptimize(hull.data());
	});
}
using Exact_kernel = CGAL::Exact_predicates_inexact_constructions_kernel;
using Float_kernel = CGAL::Simple_cartesian<float>;
void sizes(benchmark::internal::Benchmark* b) {
	for (const int size : {8, 32, 100, 1000, 10000}) b->Arg(size);
}
BENCHMARK(hull_ours)->Name("convex_hull/ours")->Apply(sizes);
BENCHMARK(hull_plain)->Name("convex_hull/plain")->Apply(sizes);
BENCHMARK(hull_boost)->Name("convex_hull/boost")->Apply(sizes);
BENCHMARK(hull_cgal<Exact_kernel>)->Name("convex_hull/cgal")->Apply(sizes);
BENCHMARK(hull_cgal<Float_kernel>)->Name("convex_hull/cgal_float")->Apply(sizes);

// --- Collisions of regular polygons, turned anywhere and `distance` apart: overlapping, where
// every axis is tried, or apart, where the first that separates ends it.

template <typename Polygon> struct Pair {
	Polygon a, b;
};

std::vector<xylVec2> regular_corners(Inputs& inputs, int count, xylVec2 center) {
	std::vector<xylVec2> corners;
	const float turn = inputs.between(0, 6);
	for (int i = 0; i < count; ++i) {
		const float angle = turn + 6.2831853f * static_cast<float>(i) / static_cast<float>(count);
		corners.push_back(center + xylVec2(std::cos(angle), std::sin(angle)));
	}
	return corners;
}

template <typename Polygon, typename Make>
std::vector<Pair<Polygon>> pairs(benchmark::State& state, float distance, Make make) {
	Inputs inputs;
	const auto corners = static_cast<int>(state.range(0));
	return inputs.array(256, [&] {
		const float angle = inputs.between(0, 6.2831853f);
		const xylVec2 way(std::cos(angle) * distance, std::sin(angle) * distance);
		Polygon a = make(regular_corners(inputs, corners, {0, 0}));
		return Pair<Polygon>{std::move(a), make(regular_corners(inputs, corners, way))};
	});
}

template <typename Polygon, typename Make, typename Collide>
void collisions(benchmark::State& state, float distance, Make make, Collide collide) {
	const auto all = pairs<Polygon>(state, distance, make);
	for (auto _ : state) {
		int count = 0;
		for (const Pair<Polygon>& pair : all) count += collide(pair.a, pair.b);
		benchmark::DoNotOptimize(count);
	}
	state.SetItemsProcessed(state.iterations() * static_cast<long>(all.size()));
}

void collide_ours(benchmark::State& state, float distance) {
	collisions<xylConvex_polygon>(
		state, distance,
		[](std::vector<xylVec2> corners) {
			xylConvex_polygon polygon;
			polygon.initialize(corners.data(), static_cast<int>(corners.size()));
			return polygon;
		},
		[](const xylConvex_polygon& a, const xylConvex_polygon& b) {
			return a.check_collision_with_convex_poligon(b);
		});
}
void collide_plain(benchmark::State& state, float distance) {
	collisions<plain::Polygon<float>>(
		state, distance,
		[](const std::vector<xylVec2>& corners) {
			plain::Polygon<float> points;
			for (const xylVec2& p : corners) points.push_back({p.x, p.y});
			return plain::hull(points);
		},
		[](const plain::Polygon<float>& a, const plain::Polygon<float>& b) {
			return plain::collide(a, b);
		});
}
void collide_boost(benchmark::State& state, float distance) {
	collisions<Boost_ring>(
		state, distance,
		[](const std::vector<xylVec2>& corners) {
			Boost_ring ring;
			for (const xylVec2& p : corners) ring.emplace_back(p.x, p.y);
			bg::correct(ring);
			return ring;
		},
		[](const Boost_ring& a, const Boost_ring& b) { return bg::intersects(a, b); });
}

constexpr float overlapping = 0.5f; // of unit circles
constexpr float apart = 2.5f;
void corners(benchmark::internal::Benchmark* b) {
	for (const int count : {4, 8, 16, 32, 64}) b->Arg(count);
}
#define COLLISION(name, call, distance)                                                            \
	BENCHMARK_CAPTURE(call, distance, distance)->Name(name)->Apply(corners)
COLLISION("separating_axes/ours", collide_ours, overlapping);
COLLISION("separating_axes/plain", collide_plain, overlapping);
COLLISION("separating_axes/boost", collide_boost, overlapping);
COLLISION("separating_axes_apart/ours", collide_ours, apart);
COLLISION("separating_axes_apart/plain", collide_plain, apart);
COLLISION("separating_axes_apart/boost", collide_boost, apart);

} // namespace
