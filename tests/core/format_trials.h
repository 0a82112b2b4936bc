// Random directives with their arguments, for tests that compare a formatter with something else.
#pragma once

#include <morvantis/core/xyltypes.h>

#include <bit>
#include <random>
#include <string>

// One directive between two words, with an argument of one of the types that variadic functions
// see.
struct Format_trial {
	enum Kind { integer, long_integer, floating, text, byte };
	Kind kind;
	std::string format;
	xylInt64 integer_value = 0;
	double float_value = 0;
	std::string text_value;

	// Calls `formatter(format, argument)`.
	template <typename Formatter> auto apply(Formatter formatter) const {
		switch (kind) {
		case long_integer:
			return formatter(format.c_str(), integer_value);
		case floating:
			return formatter(format.c_str(), float_value);
		case text:
			return formatter(format.c_str(), text_value.c_str());
		default:
			return formatter(format.c_str(), static_cast<int>(integer_value));
		}
	}
};

class Format_trials {
public:
	explicit Format_trials(xylUInt64 seed) : random_(seed) {}

	Format_trial next() {
		Format_trial trial;
		trial.kind = static_cast<Format_trial::Kind>(below(5));
		trial.format = "a%";
		for (const char flag : {'-', '+', ' ', '#', '0'}) {
			if (below(4) == 0) trial.format += flag;
		}
		if (below(2)) trial.format += std::to_string(1 + below(30));
		if (below(2)) trial.format += "." + (below(8) ? std::to_string(below(25)) : "");
		trial.format += length(trial.kind);
		trial.format += conversion(trial.kind);
		trial.format += "z";
		trial.integer_value = static_cast<xylInt64>(random_() >> below(64));
		if (below(2)) trial.integer_value = -trial.integer_value;
		trial.float_value = number();
		trial.text_value = std::string(below(20), 'q');
		return trial;
	}

private:
	size_t below(size_t end) { return random_() % end; }

	const char* length(Format_trial::Kind kind) {
		static constexpr const char* shorts[] = {"", "", "h", "hh"};
		static constexpr const char* longs[] = {"ll", "ll", "z", "j", "t"};
		if (kind == Format_trial::integer) return shorts[below(4)];
		return kind == Format_trial::long_integer ? longs[below(5)] : "";
	}

	char conversion(Format_trial::Kind kind) {
		switch (kind) {
		case Format_trial::floating:
			return "fFeEgGaA"[below(8)];
		case Format_trial::text:
			return 's';
		case Format_trial::byte:
			return 'c';
		default:
			return "diuoxX"[below(6)];
		}
	}

	// Normal numbers and zeros: of all sizes, of few digits, and around 1.
	double number() {
		const xylUInt64 bits = random_();
		switch (below(4)) {
		case 0:
			return static_cast<double>(static_cast<xylInt64>(bits) >> below(64)) / 1000;
		case 1:
			return static_cast<double>(bits % 2001) / 1000 - 1;
		case 2:
			return std::bit_cast<double>((bits & ~(0x7ffull << 52)) | (960 + below(130)) << 52);
		default:
			return std::bit_cast<double>((bits & ~(0x7ffull << 52)) | (1 + below(2046)) << 52);
		}
	}

	std::mt19937_64 random_;
};
