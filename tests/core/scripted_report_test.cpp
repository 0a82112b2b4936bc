// The reporting functions with system messages that no system has.

#include <morvantis/core/xylreport.h>

#include "recording_host.h"
#include "scripted_system_error.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

using testing::ElementsAre;

namespace {

class Scripted_report_test : public testing::Test {
protected:
	Scripted_report_test() { system_ = {}; }

	// The text of the one warning.
	static std::string take_warning() {
		const std::vector<Host_call> calls = Recording_host::get().take();
		if (calls.size() != 1 || calls[0].operation != "warning") {
			return testing::PrintToString(calls);
		}
		return calls[0].text;
	}

	// A directive of `length` characters that stands for one.
	static std::string percent_sign_of(size_t length) {
		return "%" + std::string(length - 2, '0') + "%";
	}

	Scripted_system_error& system_ = Scripted_system_error::get();
};

} // namespace

TEST_F(Scripted_report_test, SystemErrorAsksForEightKibAtMost) {
	system_.message = "text";
	std::vector<char> buffer(100000);
	struct Case {
		int size;
		xylUInt32 asked;
	};
	for (const Case& c : {Case{100, 100}, Case{8191, 8191}, Case{8192, 8192}, Case{8193, 8192},
	                      Case{100000, 8192}}) {
		SCOPED_TRACE(c.size);
		system_.asked_sizes.clear();
		EXPECT_EQ(xyl_get_system_error(3u, buffer.data(), c.size), buffer.data());
		EXPECT_STREQ(buffer.data(), "text");
		EXPECT_THAT(system_.asked_sizes, ElementsAre(c.asked));
	}
}

TEST_F(Scripted_report_test, SystemErrorTakesItsCodeFromTheLastErrorOrTheCaller) {
	system_.message = "text";
	system_.last_error = 77;
	char buffer[16];
	xyl_get_system_error(buffer, sizeof(buffer));
	xyl_get_system_error(0xffffffffu, buffer, sizeof(buffer));
	EXPECT_THAT(system_.asked_codes, ElementsAre(77u, 0xffffffffu));
}

TEST_F(Scripted_report_test, SystemErrorWithoutMessageWarnsOfTheLastError) {
	system_.reason = 317;
	char buffer[16] = "former";
	EXPECT_EQ(xyl_get_system_error(5u, buffer, sizeof(buffer)), buffer);
	EXPECT_EQ(take_warning(), "Formatting system error message failed with 317!");
	system_.reason = 0xfffffffe; // shown with a sign
	EXPECT_EQ(xyl_get_system_error(5u, buffer, 0), buffer);
	EXPECT_EQ(take_warning(), "Formatting system error message failed with -2!");
}

TEST_F(Scripted_report_test, PlatformResultLosesOneLineEnd) {
	struct Case {
		const char* message;
		const char* reported;
	};
	const Case cases[] = {
		{"Lost.\r\n", "Lost."},
		{"Lost.\n", "Lost."},
		{"Lost.", "Lost."},
		{"Lost.\r", "Lost.\r"},
		{"Lost.\n\n", "Lost.\n"},
		{"Lost.\r\n\r\n", "Lost.\r\n"},
		{"a\n", "a"},
		{"\n", "\n"},
		{"\r\n", ""},
		{"\n\n", "\n"},
		{"Lost.\n\r", "Lost.\n\r"},
		{"", ""},
	};
	for (const Case& c : cases) {
		SCOPED_TRACE(testing::PrintToString(c.message));
		system_.message = c.message;
		xyl_warning_with_platform_result(-1, "%s:", "text");
		EXPECT_EQ(take_warning(), std::string("text:\n") + c.reported);
		EXPECT_EQ(system_.allocated_messages, 0);
	}
	EXPECT_EQ(system_.asked_codes.front(), 0xffffffffu);
}

TEST_F(Scripted_report_test, PlatformResultWithoutMessageHasAFallback) {
	struct Case {
		xylUInt32 code;
		const char* text;
	};
	const Case cases[] = {
		{0, "Unknown error 0x0"},
		{0x80004005, "Unknown error 0x80004005"},
		{0x800401ff, "Unknown error 0x800401FF"},
		{0x80040200, "Unknown error 0x80040200"},
		{0x80040201, "IDispatch error #1"},
		{0x80040300, "IDispatch error #256"},
		{0x8004ffff, "IDispatch error #65023"},
		{0x80050000, "Unknown error 0x80050000"},
		{0x80050201, "Unknown error 0x80050201"},
		{0x00040201, "Unknown error 0x40201"},
		{0xffffffff, "Unknown error 0xFFFFFFFF"},
	};
	for (const Case& c : cases) {
		SCOPED_TRACE(c.text);
		xyl_warning_with_platform_result(static_cast<xylInt32>(c.code), "%d", 4);
		EXPECT_EQ(take_warning(), std::string("4\n") + c.text);
	}
}

TEST_F(Scripted_report_test, LongMessagesStayInTheirBuffers) {
	const std::string text(20000, 't');
	for (const size_t length : {16383u, 16384u, 16385u, 60000u}) {
		system_.message = std::string(length, 'm');
		xyl_warning_with_platform_result(1, "%s", "");
		EXPECT_EQ(take_warning(), "\n" + std::string(4095, 'm'));
		xyl_warning_with_platform_result(1, "%s", text.c_str());
		EXPECT_EQ(take_warning(), text.substr(0, 4096));
	}
}

// A directive of many flags shortens to one percent sign in the warning, so that what stands behind
// it is seen.
TEST_F(Scripted_report_test, PartsOfAPlatformResultAreCutAtTheirBuffers) {
	struct Case {
		const char* name;
		std::string text;
		std::string message;
		const char* reported;
	};
	const Case cases[] = {
		{"text of 16,384", percent_sign_of(16382) + "ab", "m", "%ab\nm"},
		{"text of 16,385", percent_sign_of(16382) + "abc", "m", "%ab\nm"},
		{"text much longer", percent_sign_of(16382) + "ab" + std::string(9000, 'c'), "m", "%ab\nm"},
		{"message of 16,383", "t", percent_sign_of(16381) + "ab", "t\n%ab"},
		{"message of 16,384", "t", percent_sign_of(16381) + "abc", "t\n%ab"},
		{"message of 16,384 with a line end", "t", percent_sign_of(16381) + "abc\r\n", "t\n%ab"},
		{"together 32,767", percent_sign_of(16383), percent_sign_of(16381) + "ab", "%\n%ab"},
		{"together 32,768", percent_sign_of(16384), percent_sign_of(16381) + "ab", "%\n%a"},
	};
	for (const Case& c : cases) {
		SCOPED_TRACE(c.name);
		system_.message = c.message;
		xyl_warning_with_platform_result(1, "%s", c.text.c_str());
		EXPECT_EQ(take_warning(), c.reported);
	}
}

TEST_F(Scripted_report_test, TextAroundTheMarkerIsCutAtItsBuffer) {
	system_.message = std::string(8190, 'm');
	char format[] = "%s#E";
	struct Case {
		size_t length; // of the text before the marker
		std::string reported;
	};
	const Case cases[] = {{65533, "%" + *system_.message},
	                      {65534, "%" + *system_.message},
	                      {65535, "%#"},
	                      {65536, "%"}};
	for (const Case& c : cases) {
		SCOPED_TRACE(c.length);
		xyl_warning_with_system_error(format, percent_sign_of(c.length).c_str());
		EXPECT_EQ(take_warning(), c.reported.substr(0, 4096));
	}
}

// The warning shows the beginning alone; that the rest stays in the buffers, the address sanitizer
// sees.
TEST_F(Scripted_report_test, MarkerAtTheEndOfTheLongestTextHasRoom) {
	system_.message = std::string(8191, 'm');
	const std::string text(65536, 't');
	char format[] = "%.*s#E beyond the buffer";
	for (const int length : {65533, 65534, 65535, 65536}) {
		xyl_warning_with_system_error(format, length, text.c_str());
		EXPECT_EQ(take_warning(), text.substr(0, 4096));
	}
}

TEST_F(Scripted_report_test, MarkerTakesMessagesShorterAndLongerThanTheRest) {
	for (const char* message : {"", "m", "a much longer message than what follows the marker"}) {
		system_.message = message;
		char format[] = "before #E behind it";
		xyl_warning_with_system_error(format);
		EXPECT_EQ(take_warning(), std::string("before ") + message);
	}
	EXPECT_EQ(system_.asked_sizes.front(), 8192u);
}

TEST_F(Scripted_report_test, MarkerWithoutMessageBecomesNothing) {
	system_.reason = 317;
	system_.last_error = 5;
	char format[] = "before #E behind";
	xyl_warning_with_system_error(format);
	EXPECT_THAT(Recording_host::get().take_texts(),
	            ElementsAre("Formatting system error message failed with 317!", "before "));
	EXPECT_THAT(system_.asked_codes, ElementsAre(5u));
}

TEST_F(Scripted_report_test, PercentSignsOfTheMessageAreDirectives) {
	system_.message = "50%% of %5%.";
	xyl_warning_with_platform_result(1, "%s", "a");
	EXPECT_EQ(take_warning(), "a\n50% of %.");
	char format[] = "#E";
	xyl_warning_with_system_error(format);
	EXPECT_EQ(take_warning(), "50% of %.");
}
