#include "known_image.h"

#include <morvantis/platform/system/linux/elf_symbols.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <random>

#include <sys/mman.h>
#include <unistd.h>

namespace {

// A file in memory, by a path.
class Memory_file {
public:
	Memory_file() : descriptor_(memfd_create("symbols", MFD_CLOEXEC)) {}
	~Memory_file() { close(descriptor_); }
	Memory_file(const Memory_file&) = delete;
	Memory_file& operator=(const Memory_file&) = delete;

	void write(const std::string& bytes) {
		ASSERT_EQ(ftruncate(descriptor_, 0), 0);
		ASSERT_EQ(pwrite(descriptor_, bytes.data(), bytes.size(), 0),
		          static_cast<ssize_t>(bytes.size()));
	}
	std::string path() const { return "/proc/self/fd/" + std::to_string(descriptor_); }

private:
	int descriptor_;
};

std::string bytes_of(const std::string& path) {
	std::ifstream file(path, std::ios::binary);
	return {std::istreambuf_iterator<char>(file), {}};
}

// Asks a file for all that can be asked. What it answers may be nonsense, but it has to be whole:
// the texts are read to their ends.
size_t ask_everything(const std::string& path, const Known_image& image) {
	os::Elf_symbols symbols;
	if (!symbols.open(path.c_str())) return 0;
	size_t answers = 0;
	const auto ask = [&](xylUInt32 offset) {
		const os::Elf_symbols::Place place = symbols.look_up(offset, nullptr);
		if (place.function) answers += std::strlen(place.function) < 100000;
		if (place.source) answers += std::strlen(place.source) < 100000;
	};
	for (const Known_offset& known : image.places()) ask(known.offset);
	for (xylUInt32 offset = 0; offset < 0x6000; offset += 29) ask(offset);
	return answers;
}

class Damaged_symbols_test : public testing::TestWithParam<const char*> {
protected:
	Memory_file file_;
};

TEST_P(Damaged_symbols_test, SurvivesFlippedBytes) {
	const std::string whole = bytes_of(known_file("known_release", GetParam()));
	const Known_image image("known_release");
	size_t answers = 0;
	for (unsigned int seed = 0; seed < 800; ++seed) {
		SCOPED_TRACE(seed);
		std::mt19937 random(seed);
		std::string damaged = whole;
		// From one byte to many: a few change what headers say, many make tables senseless. Every
		// other time in the second half, where the debug information is.
		const size_t first = seed % 2 * (whole.size() / 2);
		for (size_t i = 0; i < 1u << seed % 9; ++i)
			damaged[first + random() % (whole.size() - first)] = static_cast<char>(random());
		file_.write(damaged);
		answers += ask_everything(file_.path(), image);
	}
	EXPECT_GT(answers, 0u) << "nothing was reached";
}

TEST_P(Damaged_symbols_test, SurvivesMissingEnds) {
	const std::string whole = bytes_of(known_file("known_release", GetParam()));
	const Known_image image("known_release");
	std::mt19937 random(1);
	for (int i = 0; i < 200; ++i) {
		const size_t length = i < 100 ? static_cast<size_t>(i) : random() % whole.size();
		SCOPED_TRACE(length);
		file_.write(whole.substr(0, length));
		ask_everything(file_.path(), image);
	}
}

INSTANTIATE_TEST_SUITE_P(Forms, Damaged_symbols_test,
                         testing::Values("", "names", "compressed", "no_aranges"),
                         [](const auto& test) {
							 return std::string(*test.param ? test.param : "image");
						 });

} // namespace
