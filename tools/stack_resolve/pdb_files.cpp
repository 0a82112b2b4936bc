#include "pdb_files.h"

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <fstream>

namespace fs = std::filesystem;

namespace {

std::optional<os::Pdb_identity> read_identity(const std::string& path) {
	std::error_code failure;
	if (!fs::is_regular_file(path, failure)) return std::nullopt;
	std::ifstream file(path, std::ios::binary);
	const auto read = [](void* source, xylUInt64 place, void* bytes, size_t size) {
		auto& stream = *static_cast<std::ifstream*>(source);
		stream.clear();
		stream.seekg(static_cast<std::streamoff>(place));
		stream.read(static_cast<char*>(bytes), static_cast<std::streamsize>(size));
		return stream.gcount() == static_cast<std::streamsize>(size);
	};
	os::Pdb_identity identity;
	if (!os::read_pdb_identity({read, &file}, identity)) return std::nullopt;
	return identity;
}

// "game.pdb" for "game.dll", "game" and "game.pdb".
std::string pdb_name(const std::string& name) {
	return fs::path(name).replace_extension(".pdb").string();
}

std::string store_key(const Frame& frame) {
	const std::string guid = guid_text(frame.guid);
	char age[16];
	std::snprintf(age, sizeof(age), "%X", frame.age);
	return guid.substr(1, guid.size() - 2) + age;
}

// A file in the making: numbers of any width at places.
class Image_bytes {
public:
	explicit Image_bytes(size_t size) : bytes_(size) {}
	template <typename T> void put(size_t at, T value) {
		std::memcpy(bytes_.data() + at, &value, sizeof(value));
	}
	void put_bytes(size_t at, const void* bytes, size_t size) {
		std::memcpy(bytes_.data() + at, bytes, size);
	}
	const std::vector<char>& bytes() const { return bytes_; }

private:
	std::vector<char> bytes_;
};

} // namespace

Resolution Pdb_files::find(const Frame& frame) {
	const std::string name = pdb_name(frame.name);
	Resolution result;
	for (const std::string& folder : folders_) {
		const std::string named = (fs::path(folder) / name).string();
		const std::string stored = (fs::path(folder) / name / store_key(frame) / name).string();
		for (const std::string& path : {named, stored}) {
			const Match found = match(path, frame);
			if (found.is_same_build) return {Outcome::resolved, {}, path};
			if (found.is_pdb && result.outcome == Outcome::no_file) {
				result = {Outcome::other_build, {}, path};
			}
		}
		const std::string other_name = find_by_identity(folder, frame);
		if (!other_name.empty()) return {Outcome::resolved, {}, other_name};
	}
	return result;
}

Pdb_files::Match Pdb_files::match(const std::string& path, const Frame& frame) {
	auto known = known_.find(path);
	if (known == known_.end()) known = known_.emplace(path, read_identity(path)).first;
	if (!known->second) return {false, false};
	const os::Pdb_identity& identity = *known->second;
	return {true, std::equal(frame.guid.begin(), frame.guid.end(), identity.guid) &&
	                  (frame.age == identity.age || frame.age == identity.build_age)};
}

std::string Pdb_files::find_by_identity(const std::string& folder, const Frame& frame) {
	std::error_code failure;
	for (const auto& entry : fs::directory_iterator(folder, failure)) {
		const std::string path = entry.path().string();
		if (entry.path().extension() == ".pdb" && match(path, frame).is_same_build) return path;
	}
	return {};
}

// A 64-bit DLL of headers alone, and one section with a debug directory and its CodeView record, at
// equal places in file and memory.
bool write_image_for(const std::string& pdb_path, const Frame& frame, const std::string& path) {
	constexpr size_t headers = 64;
	constexpr size_t optional_header = headers + 24;
	constexpr size_t directories = optional_header + 112;
	constexpr size_t section = optional_header + 240;
	constexpr std::uint32_t page = 4096;
	constexpr std::uint32_t record = page + 28; // behind the directory's one entry
	const auto record_size = static_cast<std::uint32_t>(24 + pdb_path.size() + 1);
	const std::uint32_t end = page + (28 + record_size + page - 1) / page * page;

	Image_bytes image(end);
	image.put_bytes(0, "MZ", 2);
	image.put(60, std::uint32_t{headers});
	image.put_bytes(headers, "PE\0\0", 4);
	image.put(headers + 4, std::uint16_t{0x8664});  // processor
	image.put(headers + 6, std::uint16_t{1});       // sections
	image.put(headers + 20, std::uint16_t{240});    // size of the optional header
	image.put(headers + 22, std::uint16_t{0x2022}); // DLL, executable, large addresses
	image.put(optional_header, std::uint16_t{0x20B});
	image.put(optional_header + 24, std::uint64_t{image_base});
	image.put(optional_header + 32, page); // alignment in memory
	image.put(optional_header + 36, page); // in the file
	image.put(optional_header + 40, std::uint16_t{6});
	image.put(optional_header + 48, std::uint16_t{6});
	image.put(optional_header + 56, largest_image); // so that each offset lies in it
	image.put(optional_header + 60, page);
	image.put(optional_header + 68, std::uint16_t{3});
	image.put(optional_header + 108, std::uint32_t{16});
	image.put(directories + 6 * 8, page);
	image.put(directories + 6 * 8 + 4, std::uint32_t{28});
	image.put_bytes(section, ".rdata", 6);
	image.put(section + 8, end - page);
	image.put(section + 12, page);
	image.put(section + 16, end - page);
	image.put(section + 20, page);
	image.put(section + 36, std::uint32_t{0x40000040}); // data, readable
	image.put(page + 12, std::uint32_t{2});             // CodeView
	image.put(page + 16, record_size);
	image.put(page + 20, record);
	image.put(page + 24, record);
	image.put_bytes(record, "RSDS", 4);
	image.put_bytes(record + 4, frame.guid.data(), frame.guid.size());
	image.put(record + 20, frame.age);
	image.put_bytes(record + 24, pdb_path.c_str(), pdb_path.size() + 1);

	std::ofstream file(path, std::ios::binary);
	file.write(image.bytes().data(), static_cast<std::streamsize>(image.bytes().size()));
	return static_cast<bool>(file.flush());
}
