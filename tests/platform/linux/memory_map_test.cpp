// Lines of the kernel's list of mappings.
#include <morvantis/platform/system/linux/memory_map.h>

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include <sys/mman.h>
#include <unistd.h>

namespace {

TEST(Mapping, LinesOfTheKernelAreUnderstood) {
	struct Case {
		const char* line;
		os::Mapping mapping;
	};
	const Case cases[] = {
		{"7f00a000-7f00c000 r-xp 00002000 08:01 1234                       /usr/lib/x.so",
	     {0x7f00a000, 0x7f00c000, 0x2000, true, true, "/usr/lib/x.so"}},
		{"7ffd76864000-7ffd76885000 rw-p 00000000 00:00 0                          [stack]",
	     {0x7ffd76864000, 0x7ffd76885000, 0, true, false, "[stack]"}},
		{"10000-20000 ---p 00000000 00:00 0 ", {0x10000, 0x20000, 0, false, false, ""}},
		{"ffffffffff600000-ffffffffff601000 --xp 00000000 00:00 0                  [vsyscall]",
	     {0xffffffffff600000, 0xffffffffff601000, 0, false, true, "[vsyscall]"}},
		{"1000-2000 r--s 0000a000 fe:00 77    /with blank (deleted)",
	     {0x1000, 0x2000, 0xa000, true, false, "/with blank (deleted)"}},
	};
	for (const Case& c : cases) {
		SCOPED_TRACE(c.line);
		os::Mapping found{};
		ASSERT_TRUE(os::parse_mapping(c.line, &found));
		EXPECT_EQ(found.start, c.mapping.start);
		EXPECT_EQ(found.end, c.mapping.end);
		EXPECT_EQ(found.offset, c.mapping.offset);
		EXPECT_EQ(found.readable, c.mapping.readable);
		EXPECT_EQ(found.executable, c.mapping.executable);
		EXPECT_STREQ(found.path, c.mapping.path);
	}
}

TEST(Mapping, OtherLinesAreRefused) {
	for (const char* line :
	     {"", "-", "1000", "1000-", "1000-2000", "1000-2000 r-", "x-y rwxp 0 0:0 0",
	      "1000-2000 r-xp", "1000-2000 r-xp zz 0:0 0", "1000+2000 r-xp 0 0:0 0"}) {
		SCOPED_TRACE(line);
		os::Mapping found{};
		EXPECT_FALSE(os::parse_mapping(line, &found));
	}
}

// A file in memory that vanishes with its number.
class Memory_file {
public:
	explicit Memory_file(const std::string& text) : file_(memfd_create("lines", MFD_CLOEXEC)) {
		EXPECT_EQ(write(file_, text.data(), text.size()), static_cast<ssize_t>(text.size()));
	}
	~Memory_file() { close(file_); }
	Memory_file(const Memory_file&) = delete;
	Memory_file& operator=(const Memory_file&) = delete;
	int number() const { return file_; }

private:
	int file_;
};

TEST(Line_reader, GivesEveryLineAcrossItsBuffersEnds) {
	std::string text = "in front\n";
	const size_t start = text.size();
	for (size_t i = 0; i < 400; ++i) {
		text += std::string(i % 97, static_cast<char>('a' + i % 26)) + '\n';
	}
	text += "without an end";
	const size_t size = text.size() - start;
	text += "behind";
	const Memory_file file(text);
	const auto reader = std::make_unique<os::Line_reader>();
	reader->start(file.number(), start, size);
	std::string found;
	while (const char* line = reader->next()) found += std::string(line) + '\n';
	EXPECT_EQ(found, text.substr(start, size) + '\n');
	EXPECT_EQ(reader->next(), nullptr);
}

TEST(Line_reader, CutsALineThatIsTooLong) {
	const std::string line(20000, 'x');
	const Memory_file file(line + "\nnext\n");
	const auto reader = std::make_unique<os::Line_reader>();
	reader->start(file.number(), 0, line.size() + 6);
	std::string found, last;
	while (const char* part = reader->next()) {
		last = part;
		found += last;
	}
	EXPECT_EQ(found, line + "next");
	EXPECT_EQ(last, "next");
}

TEST(Line_reader, HasNoLineInAnEmptyPart) {
	const Memory_file file("text\n");
	const auto reader = std::make_unique<os::Line_reader>();
	reader->start(file.number(), 2, 0);
	EXPECT_EQ(reader->next(), nullptr);
	reader->start(-1, 0, 10);
	EXPECT_EQ(reader->next(), nullptr);
}

} // namespace
