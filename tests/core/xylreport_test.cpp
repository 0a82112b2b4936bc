#include <morvantis/core/xylreport.h>

#include <morvantis/core/zublibrary.h>
#include <morvantis/platform/system/error.h>
#include <morvantis/strings/xylvarstring.h>

#include "debug_output.h"
#include "recording_host.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <climits>
#include <cstring>
#include <string>
#include <thread>
#include <vector>

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

constexpr xylUInt32 missing_file = 2;      // has a message on every system
constexpr xylUInt32 no_error = 0xE1234567; // has none

Recording_host& host() { return Recording_host::get(); }

// A report of `text` by each function that formats, with what the host is told beside the text.
struct Reporter {
	const char* operation;
	size_t size; // of its buffer
	std::vector<long long> numbers;
	void (*report)(const char* text);
};

const Reporter reporters[] = {
	{"error", 512, {0}, [](const char* text) { xyl_error("%s", text); }},
	{"warning", 4096, {0}, [](const char* text) { xyl_warning("%s", text); }},
	{"content_warning", 512, {0}, [](const char* text) { xyl_content_warning("%s", text); }},
	{"log", 65536, {}, [](const char* text) { xyl_log("%s", text); }},
	{"post_warning_line", 512, {}, [](const char* text) { xyl_post_warning_line("%s", text); }},
	{"post_success_line", 512, {}, [](const char* text) { xyl_post_success_line("%s", text); }},
	{"post_message_line_formatted",
     512,
     {0xf0000001},
     [](const char* text) { xyl_post_message_line_formatted(0xf0000001, "%s", text); }},
};

std::string letters(size_t count) {
	std::string text(count, ' ');
	for (size_t i = 0; i < count; ++i) text[i] = static_cast<char>('a' + i % 26);
	return text;
}

std::string system_text(xylUInt32 code) {
	char buffer[8192] = "";
	EXPECT_TRUE(os::system_message(code, buffer, sizeof(buffer)));
	return buffer;
}

std::string without_line_end(std::string text) {
	while (!text.empty() && (text.back() == '\n' || text.back() == '\r')) text.pop_back();
	return text;
}

std::string message_failed_text() {
	char buffer[8192];
	EXPECT_FALSE(os::system_message(no_error, buffer, sizeof(buffer)));
	return "Formatting system error message failed with " + std::to_string(os::last_error()) + "!";
}

// The text of the one warning that was reported.
std::string take_warning() {
	const std::vector<Host_call> calls = host().take();
	if (calls.size() != 1 || calls[0].operation != "warning") return testing::PrintToString(calls);
	return calls[0].text;
}

} // namespace

TEST(xylreport, ReportsReachTheirOperation) {
	for (const Reporter& reporter : reporters) {
		SCOPED_TRACE(reporter.operation);
		reporter.report("a text");
		const Host_call expected = {reporter.operation, "a text", reporter.numbers};
		EXPECT_THAT(host().take(), ElementsAre(expected));
	}
}

TEST(xylreport, ArgumentsAreFormatted) {
	xyl_error("%s %d", "e", 1);
	xyl_warning("%.2f%%", 2.5);
	xyl_content_warning("%5s|", "c");
	xyl_log("%lld", -9ll);
	xyl_post_warning_line("%X", 255u);
	xyl_post_success_line("%c", 's');
	xyl_post_message_line_formatted(7, "%p", static_cast<void*>(nullptr));
	EXPECT_THAT(host().take_texts(),
	            ElementsAre("e 1", "2.50%", "    c|", "-9", "FF", "s", "0000000000000000"));
}

// A text that fills its buffer has no terminator: the recording host reads the whole buffer, so a
// terminator in it would shorten the text.
TEST(xylreport, TextsAreCutAtTheirBuffer) {
	for (const Reporter& reporter : reporters) {
		SCOPED_TRACE(reporter.operation);
		for (const size_t length :
		     {reporter.size - 1, reporter.size, reporter.size + 1, reporter.size + 1000}) {
			SCOPED_TRACE(length);
			const std::string text = letters(length);
			reporter.report(text.c_str());
			EXPECT_THAT(host().take_texts(), ElementsAre(text.substr(0, reporter.size)));
		}
	}
}

TEST(xylreport, OnlyGeneralMessageLinesObeyTheHost) {
	host().gui_messages_disabled = true;
	const xylVarString text("line");
	xyl_post_message_line(text, 3);
	xyl_post_message_line_formatted(3, "%s", "line");
	EXPECT_THAT(host().take(), IsEmpty());
	xyl_post_warning_line("warning");
	xyl_post_success_line("success");
	EXPECT_THAT(host().take_texts(), ElementsAre("warning", "success"));
}

// The host changes the argument when it is asked: what it was before has been formatted, whatever
// the answer is going to be.
TEST(xylreport, MessageLinesAreFormattedBeforeTheHostIsAsked) {
	struct Changing : Recording_host {
		bool get_disable_gui_messages() override {
			argument[0] = '~';
			return Recording_host::get_disable_gui_messages();
		}
		char argument[8] = "line";
	};
	Changing changing;
	zub_library->interface_ = &changing;
	xyl_post_message_line_formatted(3, "%s", changing.argument);
	EXPECT_THAT(host().take_texts(), ElementsAre("line"));
	EXPECT_STREQ(changing.argument, "~ine");
	changing.gui_messages_disabled = true;
	xyl_post_message_line_formatted(3, "%s", changing.argument);
	EXPECT_THAT(host().take(), IsEmpty());
	zub_library->interface_ = &host();
}

TEST(xylreport, MessageLineHandsOnTheSameReferences) {
	struct Remembering : zubMessage_interface {
		void post_warning_line(const char*) override {}
		void post_success_line(const char*) override {}
		void post_message_line_formatted(unsigned int, const char*) override {}
		void post_message_line(const xylVarString& line, const int& number) override {
			text = &line;
			value = &number;
		}
		const xylVarString* text = nullptr;
		const int* value = nullptr;
	};
	Remembering messages;
	zubMessage_interface* const former = zub_library->message_interface_;
	zub_library->message_interface_ = &messages;
	const xylVarString text("line");
	const int value = 4;
	xyl_post_message_line(text, value);
	zub_library->message_interface_ = former;
	EXPECT_EQ(messages.text, &text);
	EXPECT_EQ(messages.value, &value);
}

TEST(xylreport, AssertsAreHandedOn) {
	failedAssert("a", INT_MIN, "b", true);
	failedAssert("c", 2, "d", false);
	simple_assert("e", -3, "f");
	EXPECT_THAT(host().take(), ElementsAre(Host_call{"failed_assert", "a|b", {INT_MIN, 1, 0}},
	                                       Host_call{"failed_assert", "c|d", {2, 0, 0}},
	                                       Host_call{"simple_assert", "e|f", {-3}}));
}

TEST(xylreport, SnprintfTerminatesWhatDoesNotFit) {
	struct Case {
		const char* text;
		int result;
		std::string buffer; // of 4 bytes, '~' before
	};
	const Case cases[] = {
		{"", 0, std::string("\0~~~", 4)},       {"ab", 2, std::string("ab\0~", 4)},
		{"abc", 3, std::string("abc\0", 4)},    {"abcd", 4, "abcd"}, // kept: no terminator
		{"abcde", -1, std::string("abc\0", 4)}, {"abcdefgh", -1, std::string("abc\0", 4)},
	};
	for (const Case& c : cases) {
		SCOPED_TRACE(c.text);
		char buffer[6];
		std::memset(buffer, '~', sizeof(buffer));
		EXPECT_EQ(xyl_snprintf(buffer, 4, "%s", c.text), c.result);
		EXPECT_EQ(std::string(buffer, 4), c.buffer);
		EXPECT_EQ(std::string(buffer + 4, 2), "~~");
	}
}

TEST(xylreport, SnprintfOfNoSizeWritesNothing) {
	char buffer[2] = {'~', '~'};
	EXPECT_EQ(xyl_snprintf(buffer + 1, 0, "%d", 12), -1);
	EXPECT_EQ(std::string(buffer, 2), "~~");
}

TEST(xylreport, LongToStr) {
	char buffer[32];
	xyl_long_to_str(LLONG_MIN, buffer, sizeof(buffer));
	EXPECT_STREQ(buffer, "-9223372036854775808");
	xyl_long_to_str(0, buffer, sizeof(buffer));
	EXPECT_STREQ(buffer, "0");
	xyl_long_to_str(123456, buffer, 4);
	EXPECT_STREQ(buffer, "123");
	buffer[6] = '~';
	xyl_long_to_str(654321, buffer, 6);
	EXPECT_EQ(std::string(buffer, 7), "654321~");
}

TEST(xylreport, StrlwrLowersAsciiLettersAlone) {
	char text[] = "@AZ[`az{\xc4\xd6 0-9";
	EXPECT_EQ(xyl_strlwr(text), text);
	EXPECT_STREQ(text, "@az[`az{\xc4\xd6 0-9");
	char empty[] = "";
	EXPECT_STREQ(xyl_strlwr(empty), "");
}

TEST(xylreport, DebugStringGoesToTheDebugger) {
	Debug_output_catcher output;
	xyl_output_debug_string("100% of a line\n");
	EXPECT_EQ(output.take(), "100% of a line\n");
	xyl_output_debug_string("");
	EXPECT_EQ(output.take(), "");
}

TEST(xylreport, SystemErrorIsTheSystemsText) {
	char buffer[512] = "";
	EXPECT_EQ(xyl_get_system_error(missing_file, buffer, sizeof(buffer)), buffer);
	EXPECT_EQ(buffer, system_text(missing_file));
	EXPECT_STRNE(buffer, "");
}

TEST(xylreport, SystemErrorOfTheLastError) {
	char buffer[512] = "";
	os::set_last_error(missing_file);
	EXPECT_EQ(xyl_get_system_error(buffer, sizeof(buffer)), buffer);
	EXPECT_EQ(buffer, system_text(missing_file));
}

TEST(xylreport, SystemErrorWithoutMessageWarns) {
	char buffer[512] = "former";
	EXPECT_EQ(xyl_get_system_error(no_error, buffer, sizeof(buffer)), buffer);
	EXPECT_EQ(take_warning(), message_failed_text());
}

TEST(xylreport, SystemErrorThatDoesNotFitWarns) {
	const std::string text = system_text(missing_file);
	std::vector<char> buffer(text.size() + 1, '~');
	const int size = static_cast<int>(buffer.size());
	xyl_get_system_error(missing_file, buffer.data(), size);
	EXPECT_EQ(buffer.data(), text);
	xyl_get_system_error(missing_file, buffer.data(), size - 1);
	const xylUInt32 reason = os::last_error();
	EXPECT_EQ(take_warning(),
	          "Formatting system error message failed with " + std::to_string(reason) + "!");
}

TEST(xylreport, PlatformResultFollowsTheText) {
	xyl_warning_with_platform_result(2, "Opening %s", "a.txt");
	EXPECT_EQ(take_warning(), "Opening a.txt\n" + without_line_end(system_text(missing_file)));
}

TEST(xylreport, PlatformResultCountsThirtyTwoBits) {
	constexpr int more_bits = sizeof(long) == 8 ? 40 : 0; // where a long has them
	const long result = more_bits ? (1l << more_bits) + 2 : 2;
	xyl_warning_with_platform_result(result, "x");
	EXPECT_EQ(take_warning(), "x\n" + without_line_end(system_text(missing_file)));
	xyl_warning_with_platform_result(static_cast<xylInt32>(no_error), "x"); // negative
	EXPECT_EQ(take_warning(), "x\nUnknown error 0xE1234567");
}

TEST(xylreport, SystemErrorReplacesTheMarkerAndWhatFollows) {
	const std::string text = system_text(missing_file);
	struct Case {
		const char* format;
		std::string expected;
	};
	const Case cases[] = {
		{"Reading %s failed: #E (ignored)", "Reading f failed: " + text},
		{"%s: #E", "f: " + text},
		{"#E", text},
		{"#E%s#E", text},
		{"%s without", "f without"},
		{"%s # E #e", "f # E #e"},
		{"", ""},
	};
	for (const Case& c : cases) {
		SCOPED_TRACE(c.format);
		std::string format = c.format; // a pointer to what may be written to
		os::set_last_error(missing_file);
		xyl_warning_with_system_error(format.data(), "f");
		EXPECT_EQ(take_warning(), c.expected);
		EXPECT_EQ(format, c.format);
	}
}

TEST(xylreport, MarkerMayComeFromAnArgument) {
	char format[] = "%s%s";
	os::set_last_error(missing_file);
	xyl_warning_with_system_error(format, "a #", "E b");
	EXPECT_EQ(take_warning(), "a " + system_text(missing_file));
}

TEST(xylreport, SystemErrorWithoutMessageLeavesTheMarkerEmpty) {
	const std::string failed = message_failed_text();
	char format[] = "before #E behind";
	os::set_last_error(no_error);
	xyl_warning_with_system_error(format);
	EXPECT_THAT(host().take_texts(), ElementsAre(failed, "before "));
}

TEST(xylreport, SystemTextsAreCutAtTheWarningsBuffer) {
	const std::string text = letters(70000);
	char format[] = "%s#E";
	os::set_last_error(missing_file);
	xyl_warning_with_system_error(format, text.c_str());
	EXPECT_EQ(take_warning(), text.substr(0, 4096));
	for (const size_t length : {16383u, 16384u, 16385u}) {
		xyl_warning_with_platform_result(2, "%.*s", static_cast<int>(length), text.c_str());
		EXPECT_EQ(take_warning(), text.substr(0, 4096));
	}
}

// kept: the composed text is a format once more.
TEST(xylreport, PercentSignsOfSystemTextsAreDirectives) {
	xyl_warning_with_platform_result(2, "%s", "100%%%% of %%");
	EXPECT_EQ(take_warning(), "100%% of %\n" + without_line_end(system_text(missing_file)));
	char format[] = "%s";
	os::set_last_error(missing_file);
	xyl_warning_with_system_error(format, "50%% and %5%");
	EXPECT_EQ(take_warning(), "50% and %");
	// An integer that nobody passed: some digits.
	os::set_last_error(missing_file);
	xyl_warning_with_system_error(format, "[%x]");
	EXPECT_THAT(take_warning(), testing::MatchesRegex("\\[\\w+\\]"));
	xyl_warning_with_platform_result(0, "%s", "[%.0s]"); // reads nothing of the text
	EXPECT_THAT(take_warning(), testing::StartsWith("[]\n"));
}

TEST(xylreport, ThreadsReportAtTheSameTime) {
	constexpr int thread_count = 4, rounds = 50;
	std::vector<std::thread> threads;
	for (int no = 0; no < thread_count; ++no) {
		threads.emplace_back([no] {
			const xylVarString line("line");
			for (int i = 0; i < rounds; ++i) {
				const std::string text = "thread " + std::to_string(no);
				for (const Reporter& reporter : reporters) reporter.report(text.c_str());
				xyl_post_message_line(line, i);
				xyl_warning_with_platform_result(2, "%s", text.c_str());
				char format[] = "%s #E";
				os::set_last_error(missing_file);
				xyl_warning_with_system_error(format, text.c_str());
			}
		});
	}
	for (std::thread& thread : threads) thread.join();
	const std::string message = system_text(missing_file);
	int counts[thread_count][3] = {};
	for (const Host_call& call : host().take()) {
		if (call.operation == "post_message_line") continue;
		ASSERT_EQ(call.text.substr(0, 7), "thread ");
		int* count = counts[call.text[7] - '0'];
		const std::string rest = call.text.substr(8);
		++count[rest.empty() ? 0 : rest[0] == '\n' ? 1 : 2];
		if (!rest.empty()) {
			EXPECT_EQ(without_line_end(rest.substr(1)), without_line_end(message));
		}
	}
	for (const auto& count : counts) {
		EXPECT_THAT(count,
		            ElementsAre(rounds * static_cast<int>(std::size(reporters)), rounds, rounds));
	}
}
