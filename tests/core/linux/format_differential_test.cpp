// The formatter and the number module against this system's C library, which is exact. (That of
// the other system is not, so this comparison has no twin there.)

#include <morvantis/core/legacy_format.h>
#include <morvantis/core/number_text.h>

#include "../format_trials.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdarg>
#include <cstdio>

namespace {

using Formatter = int (*)(char*, size_t, const char*, va_list);

std::string run(Formatter formatter, const char* format, ...) {
	char buffer[1024];
	va_list arguments;
	va_start(arguments, format);
	const int length = formatter(buffer, sizeof(buffer), format, arguments);
	va_end(arguments);
	return std::string(buffer, static_cast<size_t>(length));
}

std::string fixed6(double value) {
	char buffer[number_text::fixed_max];
	return std::string(buffer, static_cast<size_t>(number_text::write_fixed6(buffer, value)));
}

} // namespace

TEST(legacy_format_differential, RandomDirectivesPrintAsTheCLibraryPrintsThem) {
	Format_trials trials(6);
	for (int i = 0; i < 300000; ++i) {
		const Format_trial trial = trials.next();
		trial.apply([&](const char* format, auto value) {
			ASSERT_EQ(run(format_bounded, format, value), run(std::vsnprintf, format, value))
				<< format << " of " << value;
		});
		if (HasFatalFailure()) return;
	}
}

TEST(number_text_differential, RandomNumbersPrintAsTheCLibraryPrintsThem) {
	std::mt19937_64 random(7);
	for (int i = 0; i < 100000; ++i) {
		const xylUInt64 bits = random();
		const double wide = std::bit_cast<double>(bits);
		const double narrow = std::bit_cast<float>(static_cast<xylUInt32>(bits));
		for (const double value : {wide, narrow}) {
			if (!std::isfinite(value)) continue;
			ASSERT_EQ(fixed6(value), run(std::vsnprintf, "%f", value));
		}
	}
}
