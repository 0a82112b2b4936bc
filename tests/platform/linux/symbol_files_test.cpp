#include "known_image.h"

#include <temporary_folder.h>

#include <morvantis/platform/system/linux/symbol_files.h>

#include <array>
#include <cctype>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>

namespace {

namespace fs = std::filesystem;

constexpr char image_name[] = "known_release.so";

// The search for the symbol file of known_release, in places that a test fills.
class Symbol_files_test : public testing::Test {
protected:
	Symbol_files_test() {
		os::Elf_symbols image;
		EXPECT_TRUE(image.open(known_file("known_release", "").c_str()));
		std::memcpy(guid_.data(), image.build_id(), guid_.size());
		for (const unsigned char byte : guid_) {
			char digits[3];
			std::snprintf(digits, sizeof(digits), "%02x", byte);
			id_ += digits;
		}
	}
	~Symbol_files_test() override { files_.clear(); }

	// The place of a copy of `file` as `name` in the folder.
	std::string put(const std::string& file, const std::string& name) {
		const fs::path target = folder_.path() / name;
		fs::create_directories(target.parent_path());
		fs::copy_file(file, target, fs::copy_options::overwrite_existing);
		return target.string();
	}
	std::string put_separate(const std::string& name) {
		return put(known_file("known_release", "separate", ".debug"), name);
	}

	// The path found for known_release, or "".
	std::string find(const std::string& search_paths, const std::string& image_path = "",
	                 xylUInt32 age = 0) {
		const os::Wanted_build build{image_name, image_path.c_str(), guid_.data(), age};
		char found[1024] = "";
		const bool is_found = files_.find(search_paths.c_str(), build, found);
		EXPECT_EQ(is_found, found[0] != 0);
		return found;
	}
	os::Wanted_build build() const { return {image_name, "", guid_.data(), 0}; }

	Temporary_folder folder_;
	os::Symbol_files files_;
	std::array<unsigned char, 16> guid_;
	std::string id_; // the GUID's bytes in their order, as in folders by build id
};

TEST_F(Symbol_files_test, FindsEachFormOfName) {
	const std::string key = id_.substr(6, 2) + id_.substr(4, 2) + id_.substr(2, 2) +
	                        id_.substr(0, 2) + id_.substr(10, 2) + id_.substr(8, 2) +
	                        id_.substr(14, 2) + id_.substr(12, 2) + id_.substr(16);
	std::string upper = key + "0";
	for (char& c : upper) c = static_cast<char>(std::toupper(c));
	const std::string forms[] = {
		"known_release.so",
		"known_release.so.debug",
		".debug/known_release.so.debug",
		".build-id/" + id_.substr(0, 2) + "/" + id_.substr(2) + "01234567.debug",
		"known_release.so/" + upper + "/known_release.so",
		"known_release.so/" + upper + "/known_release.so.debug",
	};
	for (const std::string& form : forms) {
		SCOPED_TRACE(form);
		const std::string file = put_separate("symbols/" + form);
		EXPECT_EQ(find(";/nowhere;" + folder_ / "symbols" + ";"), file);
		fs::remove_all(folder_.path() / "symbols");
		EXPECT_EQ(find(folder_ / "symbols"), "");
	}
	upper.back() = 'A'; // the age, in hexadecimal too
	const std::string aged = put_separate("aged/known_release.so/" + upper + "B/known_release.so");
	EXPECT_EQ(find(folder_ / "aged"), "");
	EXPECT_EQ(find(folder_ / "aged", "", 0xAB), aged);
	// Of a server element only the store's layout, in any part that is a folder.
	const std::string stored = put_separate("cache/" + forms[4]);
	put_separate("cache/" + forms[1]);
	EXPECT_EQ(find("SRV*" + folder_ / "cache" + "*\\\\server\\Symbols"), stored);
	EXPECT_EQ(find("SRV**\\\\server\\Symbols*" + folder_ / "cache"), stored);
	EXPECT_EQ(find("SRV*\\\\server\\Symbols"), "");
	EXPECT_EQ(find("SRV;SRV*"), "");
	// Backslashes, as the search path has them on every system.
	const std::string folder = folder_.path().string();
	EXPECT_EQ(find("SRV*" + folder + "\\cache"), stored);
	EXPECT_EQ(find(folder + "\\cache\\"), folder + "/cache//" + forms[1]);
}

TEST_F(Symbol_files_test, PassesOverOtherBuilds) {
	const std::string right = put_separate("last/known_release.so.debug");
	put(known_file("known_other", ""), "first/known_release.so");
	put(known_file("known_debug", "separate", ".debug"), "first/known_release.so.debug");
	folder_.make_file("first/.debug/known_release.so.debug", "no ELF file");
	put(known_file("known_other", ""),
	    "first/.build-id/" + id_.substr(0, 2) + "/" + id_.substr(2) + ".debug");
	EXPECT_EQ(find(folder_ / "first"), "");
	EXPECT_EQ(find(folder_ / "first" + ";" + folder_ / "last"), right);
	for (const char* wrong :
	     {"first/known_release.so", "first/.debug/known_release.so.debug", "first"})
		EXPECT_EQ(files_.open((folder_ / wrong).c_str(), build()), nullptr) << wrong;
	EXPECT_NE(files_.open(right.c_str(), build()), nullptr);
}

TEST_F(Symbol_files_test, PrefersDebugInformationToNames) {
	const std::string names = put(known_file("known_release", "names"), "a/known_release.so");
	const std::string stripped = put(known_file("known_release", "stripped"), "b/known_release.so");
	const std::string full = put_separate("c/known_release.so.debug");
	const std::string all = folder_ / "b" + ";" + folder_ / "a" + ";" + folder_ / "c";
	EXPECT_EQ(find(all), full);
	fs::remove(full);
	EXPECT_EQ(find(all), names);
	fs::remove(names);
	EXPECT_EQ(find(all), "") << "a stripped image has nothing to tell";
}

TEST_F(Symbol_files_test, LooksBesideTheImageLast) {
	const std::string image = put(known_file("known_release", "stripped"), "bin/known_release.so");
	EXPECT_EQ(find("", image), "");
	const std::string hidden = put_separate("bin/.debug/known_release.so.debug");
	EXPECT_EQ(find("", image), hidden);
	const std::string beside = put_separate("bin/known_release.so.debug");
	EXPECT_EQ(find("", image), beside);
	EXPECT_EQ(find(folder_ / "bin/.debug", image), hidden);
	fs::remove(beside);
	fs::remove(hidden);
	const std::string full = put(known_file("known_release", ""), "bin/known_release.so");
	EXPECT_EQ(find("", image), full);
	EXPECT_EQ(find("", known_file("known_other", "")), "");
}

TEST_F(Symbol_files_test, WantsAnIdentityAndAName) {
	put_separate("known_release.so");
	char found[1024] = "untouched";
	const unsigned char none[16] = {};
	const os::Wanted_build without_id{image_name, "", none, 0};
	EXPECT_FALSE(files_.find(folder_.path().c_str(), without_id, found));
	EXPECT_EQ(files_.open((folder_ / image_name).c_str(), without_id), nullptr);
	const os::Wanted_build without_name{"", "", guid_.data(), 0};
	EXPECT_FALSE(files_.find(folder_.path().c_str(), without_name, found));
	EXPECT_STREQ(found, "untouched");
	const os::Wanted_build with_folder{"/some/where/known_release.so", "", guid_.data(), 0};
	EXPECT_TRUE(files_.find(folder_.path().c_str(), with_folder, found));
	const os::Wanted_build by_image{"", "/some/where/known_release.so", guid_.data(), 0};
	EXPECT_TRUE(files_.find(folder_.path().c_str(), by_image, found));
}

TEST_F(Symbol_files_test, PassesOverPathsThatAreTooLong) {
	const std::string right = put_separate("known_release.so");
	const std::string longest(2000, 'x');
	EXPECT_EQ(find("/" + longest + ";" + folder_.path().string()), right);
	EXPECT_EQ(find("SRV*/" + longest, "/" + longest + "/known_release.so"), "");
}

TEST_F(Symbol_files_test, KeepsFilesOpenUntilTheyChange) {
	const std::string file = put_separate("known_release.so.debug");
	os::Elf_symbols* const first = files_.open(file.c_str(), build());
	ASSERT_NE(first, nullptr);
	EXPECT_EQ(files_.open(file.c_str(), build()), first);
	// Another build takes its place: a file of its own, as linkers write it, and then the same one.
	fs::remove(file);
	put(known_file("known_other", ""), "known_release.so.debug");
	EXPECT_EQ(files_.open(file.c_str(), build()), nullptr);
	fs::remove(file);
	put_separate("known_release.so.debug");
	EXPECT_NE(files_.open(file.c_str(), build()), nullptr);
	fs::resize_file(file, 100);
	EXPECT_EQ(files_.open(file.c_str(), build()), nullptr);
	fs::remove(file);
	EXPECT_EQ(files_.open(file.c_str(), build()), nullptr);
}

TEST_F(Symbol_files_test, ReadsAFileAnewThatWasWrittenToInPlace) {
	const std::string file = put_separate("known_release.so.debug");
	EXPECT_NE(files_.open(file.c_str(), build()), nullptr);
	{ // Another build id, in the same file of the same size.
		std::fstream stream(file, std::ios::in | std::ios::out | std::ios::binary);
		const std::string bytes(std::istreambuf_iterator<char>(stream), {});
		const std::string id(guid_.begin(), guid_.end());
		ASSERT_NE(bytes.find(id), std::string::npos);
		stream.seekp(static_cast<std::streamoff>(bytes.find(id)));
		stream.put(static_cast<char>(~id[0]));
	}
	fs::last_write_time(file, fs::file_time_type::clock::now() + std::chrono::seconds(2));
	EXPECT_EQ(files_.open(file.c_str(), build()), nullptr);
	EXPECT_EQ(find(folder_.path().string()), "");
}

TEST_F(Symbol_files_test, FindsAShortBuildIdByItsOwnDigits) {
	constexpr unsigned char id[16] = {0xA1, 0xB2, 0xC3, 0xD4, 0xE5, 0xF6, 0x07, 0x18};
	const std::string separate = known_file("known_placed", "separate", ".debug");
	put(separate,
	    "other/.build-id/a1/b2c3d4e5f607.debug"); // a part of the id, of which nothing is 0
	put(separate, "right/.build-id/a1/b2c3d4e5f60718.debug");
	const os::Wanted_build build{"known_placed.so", "", id, 0};
	char found[1024] = "";
	EXPECT_FALSE(files_.find((folder_ / "other").c_str(), build, found));
	EXPECT_TRUE(files_.find((folder_ / "right").c_str(), build, found));
	EXPECT_EQ(found, folder_ / "right/.build-id/a1/b2c3d4e5f60718.debug");
}

TEST_F(Symbol_files_test, KeepsAChangedFileOpenThatIsInUse) {
	const std::string file = put_separate("known_release.so.debug");
	os::Elf_symbols* const kept = files_.open(file.c_str(), build());
	ASSERT_NE(kept, nullptr);
	fs::remove(file);
	put(known_file("known_release", ""), "known_release.so.debug");
	EXPECT_EQ(files_.open_beside(kept, file.c_str(), build()), kept);
	EXPECT_FALSE(kept->has_code()) << "still the old file";
	os::Elf_symbols* const anew = files_.open(file.c_str(), build());
	ASSERT_NE(anew, nullptr);
	EXPECT_TRUE(anew->has_code());
}

size_t open_descriptors() {
	return static_cast<size_t>(std::distance(fs::directory_iterator("/proc/self/fd"), {}));
}

TEST_F(Symbol_files_test, HoldsABoundedNumberOfFiles) {
	const size_t before = open_descriptors();
	std::vector<std::string> copies;
	for (int i = 0; i < 80; ++i)
		copies.push_back(put_separate(std::to_string(i) + "/known_release.so.debug"));
	const Known_image image("known_release");
	for (const std::string& copy : copies) {
		os::Elf_symbols* const symbols = files_.open(copy.c_str(), build());
		ASSERT_NE(symbols, nullptr);
		EXPECT_EQ(symbols->look_up(image.places()[0].offset, nullptr).line, image.places()[0].line);
		EXPECT_LE(open_descriptors(), before + 16);
	}
	EXPECT_EQ(open_descriptors(), before + 16);
	// An image is opened for its code without closing the file that it goes with.
	os::Elf_symbols* const kept = files_.open(copies[79].c_str(), build());
	for (int i = 0; i < 40; ++i)
		EXPECT_NE(files_.open_beside(kept, copies[static_cast<size_t>(i)].c_str(), build()), kept);
	EXPECT_EQ(files_.open(copies[79].c_str(), build()), kept);
	files_.clear();
	EXPECT_EQ(open_descriptors(), before);
}

} // namespace
