// Runs the program itself over texts with frames of known images.
#include <known_image.h> // tests/platform/linux
#include <pdb_bytes.h>   // tests/diagnostics
#include <temporary_folder.h>
#include <test_data.h>

#include <frame_text.h>

#include <morvantis/platform/system/linux/elf_symbols.h>

#include <array>
#include <cstdio>
#include <fstream>
#include <regex>

#include <sys/wait.h>

namespace {

// What the program wrote, and its exit code.
struct Outcome_of_run {
	std::string output;
	int code;
};

Outcome_of_run run(const std::string& arguments, const std::string& variables = "") {
	const std::string command = variables + " " MORVANTIS_STACK_RESOLVE " " + arguments + " 2>&1";
	std::FILE* const pipe = popen(command.c_str(), "r");
	Outcome_of_run result{};
	for (int c; (c = std::getc(pipe)) != EOF;) result.output += static_cast<char>(c);
	result.code = WEXITSTATUS(pclose(pipe));
	return result;
}

std::string guid_of(const std::string& image) {
	os::Elf_symbols symbols;
	EXPECT_TRUE(symbols.open(known_file(image, "").c_str()));
	std::array<unsigned char, 16> guid;
	std::memcpy(guid.data(), symbols.build_id(), guid.size());
	return guid_text(guid);
}

std::string raw_frame(xylUInt32 offset, const std::string& guid, const std::string& name) {
	char numbers[64];
	std::snprintf(numbers, sizeof(numbers), "0x%016X 0x%016X ", 0x12340000u, offset);
	return numbers + guid + " 0 " + name + "\n";
}

std::string deferred_frame(xylUInt32 offset, const std::string& guid, const std::string& name) {
	return "#" + name + "@" + guid + " (0): 0:" + std::to_string(offset) + "\n";
}

// A log with every kind of line.
std::string make_log() {
	static constexpr char unheard_guid[] = "{11111111111111112222222222222222}";
	const Known_image release("known_release");
	const Known_image debug("known_debug");
	std::string log = "12:00:01 The game stopped.\r\n";
	for (const Known_offset& place : release.places())
		log += "12:00:01 " + raw_frame(place.offset, guid_of("known_release"), "known_release.so");
	for (const Known_offset& place : debug.places())
		log += deferred_frame(place.offset, guid_of("known_debug"), "known_debug.so");
	log += deferred_frame(0x00FFFFFF, guid_of("known_debug"), "known_debug.so");
	log += "[unresolvable frame] \n0x0000000000000000 0x0000000000000000 "
		   "{00000000000000000000000000000000} 0 \n";
	log += raw_frame(0x1234, unheard_guid, "unheard_of.dll");
	log += deferred_frame(77, unheard_guid, "known_other.so");
	log += deferred_frame(78, unheard_guid, "known_other.so");
	return log + "12:00:02 The end, without a line end";
}

TEST(Stack_resolve, WritesTheGoldenTranscript) {
	const Temporary_folder folder;
	const std::string log = folder.make_file("log.txt", make_log());
	const Outcome_of_run result =
		run("-s " MORVANTIS_TEST_IMAGES "/separate --symbols " MORVANTIS_TEST_IMAGES " " + log);
	EXPECT_EQ(result.code, 3);
	const std::string shown =
		std::regex_replace(result.output, std::regex(MORVANTIS_TEST_IMAGES), "FOLDER");
	std::ifstream golden(test_data("golden/stack_resolve.txt"), std::ios::binary);
	EXPECT_EQ(shown, std::string(std::istreambuf_iterator<char>(golden), {}));
}

TEST(Stack_resolve, EndsWithACodeForEachOutcome) {
	const Temporary_folder folder;
	const Known_image image("known_release");
	const std::string known =
		raw_frame(image.entry(), guid_of("known_release"), "known_release.so");
	const std::string other = raw_frame(image.entry(), guid_of("known_debug"), "known_release.so");
	const std::string unheard = raw_frame(1, guid_of("known_debug"), "unheard_of.so");
	struct Case {
		const char* name;
		std::string text;
		int code;
	};
	const Case cases[] = {
		{"nothing to do", "", 0},
		{"text without frames", "text\n", 0},
		{"all resolved", known, 0},
		{"one without a file", known + unheard, 1},
		{"one of another build", other + known + unheard, 3},
	};
	for (const Case& c : cases) {
		SCOPED_TRACE(c.name);
		const std::string file = folder.make_file("text", c.text);
		EXPECT_EQ(run("-s " MORVANTIS_TEST_IMAGES " " + file).code, c.code);
		EXPECT_EQ(run("-s " MORVANTIS_TEST_IMAGES " < " + file).code, c.code) << "standard input";
	}
	EXPECT_EQ(run("--help").code, 0);
	EXPECT_EQ(run("--unheard-of").code, 2);
	EXPECT_EQ(run("/nowhere/at/all").code, 4);
	EXPECT_EQ(run(folder.path().string()).code, 4);
}

TEST(Stack_resolve, TellsWhyItDoesNotReadAPdbFile) {
	const Temporary_folder folder;
	const Pdb_file file(Windows_image::guid, 0, 0);
	const std::string pdb =
		folder.make_file("game.pdb", std::string(file.bytes.begin(), file.bytes.end()));
	std::array<unsigned char, 16> guid;
	std::memcpy(guid.data(), &Windows_image::guid, guid.size());
	const std::string frame = deferred_frame(77, guid_text(guid), "game.dll");
	const std::string log = folder.make_file("log.txt", frame + frame);
	const std::string options = "-s " + folder.path().string() + " --symbolizer /nowhere/at/all ";
	const auto expected = [&](const std::string& reason) { // told once
		return "stack_resolve: game.dll " + guid_text(guid) + " 0: " + reason + "\n" + frame +
		       frame;
	};

	const Outcome_of_run no_program = run(options + log);
	EXPECT_EQ(no_program.code, 1);
	EXPECT_EQ(no_program.output, expected("nothing here reads " + pdb));

	const Outcome_of_run no_folder = run(options + log, "TMPDIR=" + (folder / "missing"));
	EXPECT_EQ(no_folder.code, 1);
	EXPECT_EQ(no_folder.output,
	          expected("can't make the temporary files that reading " + pdb + " takes"));
}

TEST(Stack_resolve, CopiesWhatItDoesNotResolve) {
	const Temporary_folder folder;
	const std::string text = std::string("a\r\n\n\0b\xFF#\n", 10) + "#x@{1 no end";
	EXPECT_EQ(run(folder.make_file("text", text)).output, text);
}

TEST(Stack_resolve, ToldItsPurposeAndCodes) {
	const std::string help = run("--help").output;
	for (const char* part :
	     {"0x<base> 0x<offset> {GUID} age name", "#name@{GUID} (age): 0:offset",
	      "@name@source (line): function", "Ends with 0", "--symbols", "--symbolizer"})
		EXPECT_NE(help.find(part), std::string::npos) << part;
}

} // namespace
