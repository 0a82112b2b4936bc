#include <known_dll.h> // of the build
#include <pdb_files.h>
#include <temporary_folder.h>

#include <morvantis/platform/zubplatform.h>
#include <morvantis/strings/xylvarstring.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

namespace {

namespace fs = std::filesystem;

const std::string known_pdb = MORVANTIS_KNOWN_DLL_FOLDER "/known.pdb";

// The frame at `distance` behind the beginning of the known function.
Frame known_frame(std::uint32_t distance) {
	Found_frame found;
	const std::string text = "#known.pdb@" + std::string(known_dll_guid) + " (" +
	                         std::to_string(known_dll_age) +
	                         "): 0:" + std::to_string(known_entry_offset + distance);
	EXPECT_TRUE(find_frame(text, 0, found));
	return found.frame;
}

std::string bytes_of(const std::string& path) {
	std::ifstream file(path, std::ios::binary);
	return {std::istreambuf_iterator<char>(file), {}};
}

TEST(Pdb_files, FindsFilesByNameStoreAndIdentity) {
	const Frame frame = known_frame(0);
	std::string key = known_dll_guid;
	key = key.substr(1, 32) + std::to_string(known_dll_age);
	for (const std::string& name :
	     {std::string("known.pdb"), "known.pdb/" + key + "/known.pdb", std::string("other.pdb")}) {
		SCOPED_TRACE(name);
		const Temporary_folder folder;
		folder.make_file(name, bytes_of(known_pdb));
		Pdb_files files({"/nowhere", folder.path().string()});
		Frame of_image = frame;
		for (const char* image : {"known.dll", "known.exe", "known", "known.pdb"}) {
			of_image.name = image;
			const Resolution found = files.find(of_image);
			EXPECT_EQ(found.outcome, Outcome::resolved);
			EXPECT_TRUE(fs::equivalent(found.file, folder / name));
		}
	}
}

TEST(Pdb_files, RefusesOtherBuilds) {
	Pdb_files files({MORVANTIS_KNOWN_DLL_FOLDER});
	Frame frame = known_frame(0);
	++frame.age;
	EXPECT_EQ(files.find(frame).outcome, Outcome::other_build);
	frame = known_frame(0);
	frame.guid[15] ^= 1;
	EXPECT_EQ(files.find(frame).outcome, Outcome::other_build);
	EXPECT_TRUE(fs::equivalent(files.find(frame).file, known_pdb));
	for (const char* name : {"unheard_of.dll", "known.pdb.dll", ""}) {
		frame.name = name;
		EXPECT_EQ(files.find(frame).outcome, Outcome::no_file) << name;
	}
}

TEST(Pdb_reader, AnswersFunctionAndLine) {
	const auto reader = make_pdb_reader({{MORVANTIS_KNOWN_DLL_FOLDER}, "llvm-symbolizer"});
	const Resolution first = reader->resolve(known_frame(0));
	EXPECT_EQ(first.outcome, Outcome::resolved);
	EXPECT_EQ(first.place.function, "known_entry");
	EXPECT_EQ(first.place.source, "known_dll.cpp");
	EXPECT_EQ(first.place.line, 17u);
	// The function before it, whose code ends a few bytes of padding ahead.
	const Resolution second = reader->resolve(known_frame(static_cast<std::uint32_t>(-16)));
	EXPECT_EQ(second.place.function, "known::Walker::step");
	EXPECT_EQ(second.place.line, 13u);
}

// Has both systems make temporary files elsewhere as long as the object lives.
class Temporary_files_in {
public:
	explicit Temporary_files_in(const std::string& folder)
		: before_(fs::temp_directory_path().string()) {
		make_them_in(folder);
	}
	~Temporary_files_in() { make_them_in(before_); }
	Temporary_files_in(const Temporary_files_in&) = delete;
	Temporary_files_in& operator=(const Temporary_files_in&) = delete;

private:
	static void make_them_in(const std::string& folder) {
		for (const char* variable : {"TMPDIR", "TMP"})
			EXPECT_TRUE(zubPlatform::set_environment_variable(xylVarString(variable),
			                                                  xylVarString(folder.c_str())));
	}

	const std::string before_;
};

TEST(Pdb_reader, WorksAmongTheSystemsTemporaryFiles) {
	const Temporary_folder folder;
	const Temporary_files_in temporary(folder.path().string());
	auto reader = make_pdb_reader({{MORVANTIS_KNOWN_DLL_FOLDER}, "llvm-symbolizer"});
	EXPECT_EQ(reader->resolve(known_frame(0)).outcome, Outcome::resolved);
	EXPECT_FALSE(fs::is_empty(folder.path()));
	reader.reset();
	EXPECT_TRUE(fs::is_empty(folder.path())) << "left something behind";
}

TEST(Pdb_reader, TellsThatItCannotMakeTemporaryFiles) {
	const Temporary_folder folder;
	const Temporary_files_in temporary(folder / "missing");
	const auto reader = make_pdb_reader({{MORVANTIS_KNOWN_DLL_FOLDER}, "llvm-symbolizer"});
	for (int i = 0; i < 2; ++i) {
		const Resolution answer = reader->resolve(known_frame(0));
		EXPECT_EQ(answer.outcome, Outcome::no_temporary_files);
		EXPECT_TRUE(fs::equivalent(answer.file, known_pdb));
	}
	EXPECT_TRUE(fs::is_empty(folder.path()));
}

TEST(Pdb_reader, LeavesOtherFramesAlone) {
	const auto reader = make_pdb_reader({{MORVANTIS_KNOWN_DLL_FOLDER}, "llvm-symbolizer"});
	Frame frame = known_frame(0);
	frame.guid[0] ^= 1;
	EXPECT_EQ(reader->resolve(frame).outcome, Outcome::other_build);
	// Outside all functions.
	const Resolution outside = reader->resolve(known_frame(0x7000000));
	EXPECT_EQ(outside.outcome, Outcome::resolved);
	EXPECT_EQ(outside.place.source, "");
	EXPECT_EQ(outside.place.line, 0u);
}

} // namespace
