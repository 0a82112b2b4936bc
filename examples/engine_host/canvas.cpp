#include "canvas.h"

#include <stb/stb_image_write.h>

#include <algorithm>
#include <cmath>
#include <utility>

namespace {

// How often each pixel may be painted on the average.
constexpr long long paints_per_pixel = 30;

unsigned char mixed(unsigned char below, float above, float share) {
	const float value = static_cast<float>(below);
	return static_cast<unsigned char>(value + (above - value) * share + 0.5f);
}

} // namespace

Canvas::Canvas(int width, int height)
	: width_(width), height_(height),
	  pixels_(static_cast<size_t>(width) * static_cast<size_t>(height)), nearness_(pixels_.size()) {
}

void Canvas::clear(Rgb top, Rgb bottom) {
	budget_ = paints_per_pixel * width_ * height_;
	std::fill(nearness_.begin(), nearness_.end(), 0.0f);
	for (int y = 0; y < height_; ++y) {
		const float share = static_cast<float>(y) / static_cast<float>(height_);
		Rgb row;
		for (size_t i = 0; i < row.size(); ++i)
			row[i] = mixed(top[i], static_cast<float>(bottom[i]), share);
		std::fill_n(pixels_.begin() + static_cast<std::ptrdiff_t>(index(0, y)), width_, row);
	}
}

void Canvas::mix(size_t at, const Ink& ink, float share) {
	Rgb& pixel = pixels_[at];
	pixel = {mixed(pixel[0], ink.red, share), mixed(pixel[1], ink.green, share),
	         mixed(pixel[2], ink.blue, share)};
}

void Canvas::blend(int x, int y, const Ink& ink, float coverage) {
	if (x < 0 || y < 0 || x >= width_ || y >= height_) return;
	mix(index(x, y), ink, ink.alpha * coverage);
}

// Goes along the longer side of the line a pixel at a time, and across it over as many pixels as
// the line is wide; the share of each is by its distance from the line's middle.
void Canvas::line(Canvas_point from, Canvas_point to, double line_width, const Ink& ink_from,
                  const Ink& ink_to, bool tests_depth) {
	const bool is_steep = std::fabs(to.y - from.y) > std::fabs(to.x - from.x);
	if (is_steep) {
		std::swap(from.x, from.y);
		std::swap(to.x, to.y);
	}
	const double run = to.x - from.x, length = std::hypot(run, to.y - from.y);
	const double slope = run != 0 ? (to.y - from.y) / run : 0;
	// Across, the line is wider than square to itself.
	const double across = length > 0 ? std::fabs(run) / length : 1, reach = line_width / 2 + 0.5;
	const int first = static_cast<int>(std::floor(std::min(from.x, to.x) + 0.5));
	const int last = std::max(first, static_cast<int>(std::floor(std::max(from.x, to.x) - 0.5)));
	for (int major = first; major <= last; ++major) {
		const double along = std::clamp(run != 0 ? (major + 0.5 - from.x) / run : 0.5, 0.0, 1.0);
		const double middle = from.y + along * run * slope;
		const float nearness =
			static_cast<float>(from.nearness + along * (to.nearness - from.nearness));
		const float share = static_cast<float>(along);
		Ink ink = ink_from;
		ink.red += share * (ink_to.red - ink.red);
		ink.green += share * (ink_to.green - ink.green);
		ink.blue += share * (ink_to.blue - ink.blue);
		ink.alpha += share * (ink_to.alpha - ink.alpha);
		const int low = static_cast<int>(std::floor(middle - reach / across));
		const int high = static_cast<int>(std::floor(middle + reach / across));
		budget_ -= high - low + 1;
		if (budget_ <= 0) return;
		for (int minor = low; minor <= high; ++minor) {
			const int x = is_steep ? minor : major, y = is_steep ? major : minor;
			if (x < 0 || y < 0 || x >= width_ || y >= height_) continue;
			const double coverage = reach - std::fabs(minor + 0.5 - middle) * across;
			if (coverage <= 0) continue;
			const size_t at = index(x, y);
			if (tests_depth && nearness < nearness_[at]) continue;
			mix(at, ink, ink.alpha * static_cast<float>(std::min(coverage, 1.0)));
		}
	}
}

// Row by row between the two sides; inside are the pixels whose middle is.
void Canvas::triangle(const Canvas_point& a, const Canvas_point& b, const Canvas_point& c,
                      const Ink& ink, Paint_mode mode) {
	const double area = (b.x - a.x) * (c.y - a.y) - (b.y - a.y) * (c.x - a.x);
	if (!(area != 0)) return;
	// nearness = at_a + per_x·(x - a.x) + per_y·(y - a.y)
	const double ab = b.nearness - a.nearness, ac = c.nearness - a.nearness;
	const double per_x = (ab * (c.y - a.y) - ac * (b.y - a.y)) / area;
	const double per_y = (ac * (b.x - a.x) - ab * (c.x - a.x)) / area;
	const Canvas_point* corners[] = {&a, &b, &c, &a};
	const auto [low, high] = std::minmax({a.y, b.y, c.y});
	const int first_row = std::max(0, static_cast<int>(std::ceil(low - 0.5)));
	const int end_row = std::min(height_, static_cast<int>(std::ceil(high - 0.5)));
	for (int y = first_row; y < end_row; ++y) {
		const double middle = y + 0.5;
		double left = width_, right = 0;
		for (int i = 0; i < 3; ++i) {
			const Canvas_point &p = *corners[i], &q = *corners[i + 1];
			if ((p.y <= middle) == (q.y <= middle)) continue;
			const double x = p.x + (middle - p.y) / (q.y - p.y) * (q.x - p.x);
			left = std::min(left, x);
			right = std::max(right, x);
		}
		const int first = std::max(0, static_cast<int>(std::ceil(left - 0.5)));
		const int end = std::min(width_, static_cast<int>(std::ceil(right - 0.5)));
		budget_ -= std::max(0, end - first);
		if (budget_ <= 0) return;
		const double at_row = a.nearness + per_y * (middle - a.y) + per_x * (0.5 - a.x);
		for (int x = first; x < end; ++x) {
			if (mode.dithered && (x + y) % 2 != 0) continue;
			const float nearness = static_cast<float>(at_row + per_x * x);
			const size_t at = index(x, y);
			if (mode.tests_depth && nearness < nearness_[at]) continue;
			if (mode.writes_depth) nearness_[at] = nearness;
			mix(at, ink, ink.alpha);
		}
	}
}

void Canvas::rectangle(double left, double top, double right, double bottom, const Ink& ink) {
	if (std::isnan(left + top) || std::isnan(right + bottom)) return;
	const auto pixel_at = [](double at, int size) {
		return static_cast<int>(std::clamp(std::floor(at + 0.5), 0.0, static_cast<double>(size)));
	};
	const int end_x = pixel_at(right, width_), end_y = pixel_at(bottom, height_);
	for (int y = pixel_at(top, height_); y < end_y; ++y) {
		const int first_x = pixel_at(left, width_);
		budget_ -= std::max(0, end_x - first_x);
		if (budget_ <= 0) return;
		for (int x = first_x; x < end_x; ++x) mix(index(x, y), ink, ink.alpha);
	}
}

Canvas Canvas::shrunk(int factor) const {
	Canvas small(width_ / factor, height_ / factor);
	small.budget_ = paints_per_pixel * small.width_ * small.height_;
	const int count = factor * factor;
	for (int y = 0; y < small.height_; ++y) {
		for (int x = 0; x < small.width_; ++x) {
			std::array<int, 3> sum{};
			for (int i = 0; i < count; ++i) {
				const Rgb& from = pixels_[index(x * factor + i % factor, y * factor + i / factor)];
				for (size_t channel = 0; channel < 3; ++channel) sum[channel] += from[channel];
			}
			for (size_t channel = 0; channel < 3; ++channel) {
				small.pixels_[small.index(x, y)][channel] =
					static_cast<unsigned char>((sum[channel] + count / 2) / count);
			}
		}
	}
	return small;
}

bool Canvas::save_png(const std::string& path) const {
	stbi_write_force_png_filter = 0; // rows are much alike: smaller and sooner than with a filter
	return stbi_write_png(path.c_str(), width_, height_, 3, pixels_.data(), 3 * width_) != 0;
}
