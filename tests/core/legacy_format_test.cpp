#include <morvantis/core/legacy_format.h>

#include "format_trials.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstdarg>
#include <cstdint>
#include <cstring>
#include <limits>
#include <string>
#include <vector>

namespace {

constexpr char untouched = '~';

struct Formatted {
	int result;
	std::string buffer; // all `size` bytes of it
};

// Formats into a buffer of `size` bytes and fails if a byte behind it is touched.
Formatted format_into(size_t size, const char* format, ...) {
	std::string buffer(size + 64, untouched);
	va_list arguments;
	va_start(arguments, format);
	const int result = format_bounded(buffer.data(), size, format, arguments);
	va_end(arguments);
	EXPECT_EQ(buffer.substr(size), std::string(64, untouched)) << format;
	buffer.resize(size);
	return {result, buffer};
}

// The text that comes out where there is room enough.
template <typename... Values> std::string text_of(const char* format, Values... values) {
	const Formatted out = format_into(8192, format, values...);
	if (out.result < 0) return "too long";
	const auto length = static_cast<size_t>(out.result);
	EXPECT_EQ(out.buffer[length], 0) << format;
	return out.buffer.substr(0, length);
}

} // namespace

TEST(legacy_format, TerminatorComesOnlyWhereThereIsRoom) {
	struct Case {
		const char* name;
		size_t size;
		int result;
		std::string buffer;
	};
	const Case cases[] = {
		{"two more", 6, 4, std::string("abcd\0~", 6)},
		{"one more", 5, 4, std::string("abcd\0", 5)},
		{"exact", 4, 4, "abcd"},
		{"one less", 3, -1, "abc"},
		{"one byte", 1, -1, "a"},
		{"no byte", 0, -1, ""},
	};
	for (const Case& c : cases) {
		SCOPED_TRACE(c.name);
		for (const char* format : {"%s", "%.4s", "ab%.2s"}) {
			const char* argument = format[0] == 'a' ? "cde" : "abcd";
			const Formatted out = format_into(c.size, format, argument);
			EXPECT_EQ(out.result, c.result);
			EXPECT_EQ(out.buffer, c.buffer);
		}
		const Formatted plain = format_into(c.size, "abcd");
		EXPECT_EQ(plain.result, c.result);
		EXPECT_EQ(plain.buffer, c.buffer);
	}
}

TEST(legacy_format, EveryDirectiveIsCutAtTheSize) {
	struct Case {
		const char* format;
		long long value;
		const char* whole;
	};
	const Case cases[] = {
		{"%8lld", -12345, "  -12345"},   {"%-8lld", -12345, "-12345  "},
		{"%08lld", -12345, "-0012345"},  {"%.7lld", -12345, "-0012345"},
		{"%#llx", 0x123456, "0x123456"},
	};
	for (const Case& c : cases) {
		SCOPED_TRACE(c.format);
		for (size_t size = 0; size <= 10; ++size) {
			const Formatted out = format_into(size, c.format, c.value);
			const std::string whole = std::string(c.whole) + '\0' + untouched;
			EXPECT_EQ(out.buffer, whole.substr(0, size));
			EXPECT_EQ(out.result, size < 8 ? -1 : 8);
		}
	}
}

TEST(legacy_format, EmptyTextFitsNowhereAndEverywhere) {
	EXPECT_EQ(format_into(0, "").result, 0);
	const Formatted out = format_into(1, "");
	EXPECT_EQ(out.result, 0);
	EXPECT_EQ(out.buffer, std::string(1, '\0'));
}

TEST(legacy_format, NullBufferOfNoSizeIsAllowed) {
	const auto measure = [](const char* format, ...) {
		va_list arguments;
		va_start(arguments, format);
		const int result = format_bounded(nullptr, 0, format, arguments);
		va_end(arguments);
		return result;
	};
	EXPECT_EQ(measure("%d%5s", 1, "a"), -1);
}

TEST(legacy_format, TextsAndBytes) {
	EXPECT_EQ(text_of("%s", "text"), "text");
	EXPECT_EQ(text_of("[%s]", ""), "[]");
	EXPECT_EQ(text_of("[%6s|%-6s]", "abc", "abc"), "[   abc|abc   ]");
	EXPECT_EQ(text_of("[%.2s|%.0s|%.s]", "abc", "abc", "abc"), "[ab||]");
	EXPECT_EQ(text_of("[%5.2s]", "abc"), "[   ab]");
	EXPECT_EQ(text_of("%s", static_cast<const char*>(nullptr)), "(null)");
	EXPECT_EQ(text_of("%.3s", static_cast<const char*>(nullptr)), "(nu");
	EXPECT_EQ(text_of("%c%c", 'o', 'k'), "ok");
	EXPECT_EQ(text_of("[%3c|%-3c]", 'a', 'b'), "[  a|b  ]");
	EXPECT_EQ(text_of("100%%"), "100%");
	EXPECT_EQ(text_of("%hs %hc", "narrow", 'c'), "narrow c");
	const Formatted zero = format_into(4, "a%cb", 0);
	EXPECT_EQ(zero.result, 3);
	EXPECT_EQ(zero.buffer, std::string("a\0b\0", 4));
}

TEST(legacy_format, TextWithoutTerminatorIsReadUpToThePrecision) {
	const std::vector<char> letters = {'a', 'b', 'c'};
	EXPECT_EQ(text_of("%.3s", letters.data()), "abc");
	EXPECT_EQ(text_of("%.*s", 2, letters.data()), "ab");
}

TEST(legacy_format, IntegersAreFetchedByTheirLength) {
	EXPECT_EQ(text_of("%d %i %u", -5, 7, 4294967295u), "-5 7 4294967295");
	EXPECT_EQ(text_of("%hhd %hhu %hd %hu", 0x1ff, 0x1ff, 0x18000, 0x18000), "-1 255 -32768 32768");
	EXPECT_EQ(text_of("%02hhX", -2), "FE");
	EXPECT_EQ(text_of("%ld %lu", LONG_MIN, ULONG_MAX),
	          std::to_string(LONG_MIN) + " " + std::to_string(ULONG_MAX));
	for (const char* length : {"ll", "I64", "j", "t", "z", "I", "L"}) {
		SCOPED_TRACE(length);
		const std::string format = "%" + std::string(length);
		EXPECT_EQ(text_of((format + "d").c_str(), LLONG_MIN), "-9223372036854775808");
		EXPECT_EQ(text_of((format + "u").c_str(), ULLONG_MAX), "18446744073709551615");
	}
	EXPECT_EQ(text_of("%I32d %I32u", -1, 4294967295u), "-1 4294967295");
	EXPECT_EQ(text_of("%zu", static_cast<size_t>(40)), "40");
	EXPECT_EQ(text_of("%d", INT_MIN), "-2147483648");
}

TEST(legacy_format, OtherBases) {
	EXPECT_EQ(text_of("%x %X %o", 0xabcu, 0xabcu, 8u), "abc ABC 10");
	EXPECT_EQ(text_of("%llX", 0xfedcba9876543210ull), "FEDCBA9876543210");
	EXPECT_EQ(text_of("%llo", ULLONG_MAX), "1777777777777777777777");
	EXPECT_EQ(text_of("%#x %#X %#o", 10u, 10u, 8u), "0xa 0XA 010");
	EXPECT_EQ(text_of("%#x %#o [%#.0o] [%#.0x]", 0u, 0u, 0u, 0u), "0 0 [0] []");
	EXPECT_EQ(text_of("%#.5o %#.2o %#05o", 8u, 8u, 8u), "00010 010 00010");
	EXPECT_EQ(text_of("%#010x %-#8xz", 255u, 255u), "0x000000ff 0xff    z");
	EXPECT_EQ(text_of("0x%0lX", 0x80041234ul), "0x80041234");
}

TEST(legacy_format, WidthAndPrecisionOfIntegers) {
	EXPECT_EQ(text_of("[%5d|%-5d|%05d]", -12, -12, -12), "[  -12|-12  |-0012]");
	EXPECT_EQ(text_of("[%+d|% d|%+d|% d]", 3, 3, -3, -3), "[+3| 3|-3|-3]");
	EXPECT_EQ(text_of("[%+ d]", 3), "[+3]");
	EXPECT_EQ(text_of("[%.4d|%8.4d|%-8.4d|%08.4d]", -7, -7, -7, -7),
	          "[-0007|   -0007|-0007   |   -0007]");
	EXPECT_EQ(text_of("[%.0d|%.d|%+.0d|%4.0d]", 0, 0, 0, 0), "[||+|    ]");
	EXPECT_EQ(text_of("[%-05d]", 12), "[12   ]");
	EXPECT_EQ(text_of("[%1d]", 123), "[123]");
}

TEST(legacy_format, StarsTakeIntArguments) {
	EXPECT_EQ(text_of("[%*d]", 5, 12), "[   12]");
	EXPECT_EQ(text_of("[%*d]", -5, 12), "[12   ]");
	EXPECT_EQ(text_of("[%.*d]", 3, 7), "[007]");
	EXPECT_EQ(text_of("[%.*d]", -1, 0), "[0]"); // as if there were no precision
	EXPECT_EQ(text_of("[%*.*s]", 6, 2, "abc"), "[    ab]");
	EXPECT_EQ(text_of("[%*.*f]", 8, 2, 3.14159), "[    3.14]");
}

TEST(legacy_format, HugeWidthsAndPrecisionsStayInTheBuffer) {
	for (const char* format :
	     {"%2147483647d", "%.2147483647d", "%99999999999999999999d", "%-2147483647d"}) {
		SCOPED_TRACE(format);
		EXPECT_EQ(format_into(16, format, 1).result, -1);
	}
	EXPECT_EQ(format_into(4, "%2147483647d", 1).buffer, "    ");
	EXPECT_EQ(format_into(4, "%.2147483647d", 1).buffer, "0000");
	EXPECT_EQ(format_into(4, "%*d", INT_MIN, 1).buffer, "1   ");
	for (const char* format :
	     {"%.2147483647f", "%.2147483647e", "%#.2147483647g", "%.2147483647a", "%2147483647f"}) {
		SCOPED_TRACE(format);
		EXPECT_EQ(format_into(16, format, 1.5).result, -1);
	}
	EXPECT_EQ(format_into(16, "%.2147483647g", 1.5).buffer.substr(0, 4), std::string("1.5\0", 4));
}

TEST(legacy_format, PointersAreSixteenUpperCaseDigits) {
	EXPECT_EQ(text_of("%p", static_cast<void*>(nullptr)), "0000000000000000");
	EXPECT_EQ(text_of("%p", reinterpret_cast<void*>(0x7ffedeadbeefull)), "00007FFEDEADBEEF");
	EXPECT_EQ(text_of("[%18p|%-18p]", static_cast<void*>(nullptr), reinterpret_cast<void*>(1ull)),
	          "[  0000000000000000|0000000000000001  ]");
}

TEST(legacy_format, Doubles) {
	EXPECT_EQ(text_of("%f", 1e30), "1000000000000000019884624838656.000000");
	EXPECT_EQ(text_of("%f", 377.9140625), "377.914062");
	EXPECT_EQ(text_of("%f %F", -0.0, 1.5), "-0.000000 1.500000");
	EXPECT_EQ(text_of("%.2f %.0f %.f %#.0f", 2.675, 2.5, 3.5, 2.5), "2.67 2 4 2.");
	EXPECT_EQ(text_of("[%12f|%-12f|%012f|%+f|% f]", -1.5, -1.5, -1.5, 1.5, 1.5),
	          "[   -1.500000|-1.500000   |-0001.500000|+1.500000| 1.500000]");
	EXPECT_EQ(text_of("%e %E %.0e %#.0e", 1e5, 1.5, 2.5, 2.5),
	          "1.000000e+05 1.500000E+00 2e+00 2.e+00");
	EXPECT_EQ(text_of("%e", 1e-300), "1.000000e-300");
	EXPECT_EQ(text_of("%g %g %g %G", 100000.0, 1e6, 0.0001, 1e-5), "100000 1e+06 0.0001 1E-05");
	EXPECT_EQ(text_of("%#g %#g %#.3g %#.0g", 1.0, 1e6, 1e-5, 3.0),
	          "1.00000 1.00000e+06 1.00e-05 3.");
	EXPECT_EQ(text_of("%.3g %.10g %.0g", 1234.5, 0.1, 15.0), "1.23e+03 0.1 2e+01");
	EXPECT_EQ(text_of("%a %A %.1a %#.0a", 1.0, 0.5, 1.96875, 1.0),
	          "0x1p+0 0X1P-1 0x2.0p+0 0x1.p+0");
	EXPECT_EQ(text_of("%010a", -1.0), "-0x0001p+0");
	EXPECT_EQ(text_of("%Lf", 2.5l), "2.500000");
}

TEST(legacy_format, DoublesAreExactAtAnyPrecision) {
	const double least = std::numeric_limits<double>::denorm_min();
	const std::string text = text_of("%.1100f", least);
	EXPECT_EQ(text.size(), 1102u);
	// The last decimals of 2^-1074, then nothing but zeros.
	EXPECT_EQ(text.substr(1060), "8265533447265625" + std::string(26, '0'));
	EXPECT_EQ(text_of("%.1100e", 1.5), "1.5" + std::string(1099, '0') + "e+00");
	EXPECT_EQ(text_of("%#.1100g", 1.5), "1.5" + std::string(1098, '0'));
	EXPECT_EQ(text_of("%.1100a", 1.5), "0x1.8" + std::string(1099, '0') + "p+0");
	EXPECT_EQ(text_of("%.1100f", -std::numeric_limits<double>::max()).size(), 1u + 309 + 1 + 1100);
}

TEST(legacy_format, InfinitiesAndNans) {
	const double infinity = std::numeric_limits<double>::infinity();
	const double negative_nan = std::bit_cast<double>(0xfff8000000000000ull);
	EXPECT_EQ(text_of("%f %f", infinity, -infinity), "inf -inf");
	EXPECT_EQ(text_of("%e %g %a", infinity, infinity, -infinity), "inf inf -inf");
	EXPECT_EQ(text_of("%F %E", infinity, -infinity), "INF -INF");
	EXPECT_EQ(text_of("%f", std::bit_cast<double>(0x7ff8000000000000ull)), "nan");
	EXPECT_EQ(text_of("%f", negative_nan), "-nan(ind)");
	EXPECT_EQ(text_of("%G", negative_nan), "-NAN(IND)");
	EXPECT_EQ(text_of("%f", std::bit_cast<double>(0xfff8000000000001ull)), "-nan");
	EXPECT_EQ(text_of("%f", std::bit_cast<double>(0x7ff0000000000001ull)), "nan(snan)");
	EXPECT_EQ(text_of("[%+f|% f|%08f|%-6f|%.1f]", infinity, infinity, infinity, infinity, infinity),
	          "[+inf| inf|     inf|inf   |inf]");
}

TEST(legacy_format, CountIsNeverStored) {
	int stored = 77;
	EXPECT_EQ(text_of("ab%n%d", &stored, 5), "ab5");
	EXPECT_EQ(stored, 77);
}

TEST(legacy_format, UnknownDirectivesAreCopied) {
	EXPECT_EQ(text_of("100%"), "100%");
	EXPECT_EQ(text_of("%5"), "%5");
	EXPECT_EQ(text_of("%-08.3ll"), "%-08.3ll");
	EXPECT_EQ(text_of("%y%d", 5), "%y5");
	EXPECT_EQ(text_of("%'d %1$d"), "%'d %1$d");
	EXPECT_EQ(text_of("%S %C %ls %lc"), "%S %C %ls %lc");
	EXPECT_EQ(text_of("%5%|%-3y|"), "%|%-3y|");
}

// Stands in for a comparison with the other system: both must print the same.
TEST(legacy_format, RandomTextsHashTheSameOnEverySystem) {
	Format_trials trials(5);
	xylUInt64 hash = 0xcbf29ce484222325; // FNV-1a
	for (int i = 0; i < 100000; ++i) {
		const std::string text = trials.next().apply(
			[](const char* format, auto value) { return text_of(format, value); });
		for (const char c : text) hash = (hash ^ static_cast<unsigned char>(c)) * 0x100000001b3;
	}
	EXPECT_EQ(hash, 9688306375130826914ull);
}
