#include "pdb_files.h"

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <fstream>

namespace fs = std::filesystem;

namespace {

// The multi-stream file that a PDB is: blocks of one size, of which a directory tells which belong
// to which stream. Layout after LLVM's documentation, "The MSF File Format" and "The PDB File
// Format".
class Stream_file {
public:
	explicit Stream_file(const std::string& path) : file_(path, std::ios::binary) {
		static constexpr char magic[] = "Microsoft C/C++ MSF 7.00\r\n\x1A"
										"DS\0\0";
		char start[sizeof(magic)] = {};
		if (!read(0, start, sizeof(start)) || std::memcmp(start, magic, sizeof(magic)) != 0) return;
		std::uint32_t directory_map = 0;
		if (!number(32, block_size_) || !number(44, directory_size_) || !number(52, directory_map))
			return;
		if (block_size_ < 512 || block_size_ > 65536 || directory_size_ > largest_directory) return;
		for (std::uint32_t i = 0; i * std::uint64_t{block_size_} < directory_size_; ++i) {
			std::uint32_t block = 0;
			if (!number(directory_map * std::uint64_t{block_size_} + i * std::uint64_t{4}, block))
				return;
			directory_.resize(directory_.size() + block_size_);
			if (!read(block * std::uint64_t{block_size_},
			          directory_.data() + directory_.size() - block_size_, block_size_))
				return;
		}
		directory_.resize(directory_size_);
		is_good_ = true;
	}

	// Reads the first `size` bytes of stream `no`, at most a block. False when there are less.
	bool read_stream(std::uint32_t no, void* target, std::uint32_t size) {
		std::uint32_t count = 0;
		if (!is_good_ || !directory_number(0, count) || no >= count) return false;
		std::uint64_t blocks_before = 0;
		std::uint32_t stream_size = 0;
		for (std::uint32_t i = 0; i <= no; ++i) {
			blocks_before += (stream_size + std::uint64_t{block_size_} - 1) / block_size_;
			if (!directory_number(1 + std::uint64_t{i}, stream_size)) return false;
			if (stream_size == 0xFFFFFFFF) stream_size = 0; // there is none
		}
		std::uint32_t block = 0;
		if (stream_size < size || size > block_size_) return false;
		return directory_number(1 + std::uint64_t{count} + blocks_before, block) &&
		       read(block * std::uint64_t{block_size_}, target, size);
	}

private:
	static constexpr std::uint32_t largest_directory = 1u << 26;

	bool read(std::uint64_t offset, void* target, std::uint32_t size) {
		file_.clear();
		file_.seekg(static_cast<std::streamoff>(offset));
		file_.read(static_cast<char*>(target), size);
		return file_.gcount() == static_cast<std::streamsize>(size);
	}
	bool number(std::uint64_t offset, std::uint32_t& value) {
		return read(offset, &value, sizeof(value));
	}
	bool directory_number(std::uint64_t index, std::uint32_t& value) const {
		if (index >= directory_.size() / sizeof(value)) return false;
		std::memcpy(&value, directory_.data() + index * sizeof(value), sizeof(value));
		return true;
	}

	std::ifstream file_;
	std::uint32_t block_size_ = 0;
	std::uint32_t directory_size_ = 0;
	std::vector<char> directory_;
	bool is_good_ = false;
};

// "game.pdb" for "game.dll", "game" and "game.pdb".
std::string pdb_name(const std::string& name) {
	return fs::path(name).replace_extension(".pdb").string();
}

std::string store_key(const Pdb_identity& identity) {
	const std::string guid = guid_text(identity.guid);
	char age[16];
	std::snprintf(age, sizeof(age), "%X", identity.age);
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

std::optional<Pdb_identity> read_pdb_identity(const std::string& path) {
	struct Information {
		std::uint32_t version, signature, age;
		unsigned char guid[16];
	} information;
	struct Debug_header {
		std::uint32_t signature, version, age;
	} debug;
	static_assert(sizeof(Information) == 28);
	Stream_file file(path);
	if (!file.read_stream(1, &information, sizeof(information))) return std::nullopt;
	Pdb_identity identity;
	std::copy_n(information.guid, identity.guid.size(), identity.guid.begin());
	identity.age = file.read_stream(3, &debug, sizeof(debug)) ? debug.age : information.age;
	return identity;
}

Resolution Pdb_files::find(const Frame& frame) {
	const std::string name = pdb_name(frame.name);
	const Pdb_identity wanted{frame.guid, frame.age};
	Resolution result;
	for (const std::string& folder : folders_) {
		const std::string named = (fs::path(folder) / name).string();
		const std::string stored = (fs::path(folder) / name / store_key(wanted) / name).string();
		for (const std::string& path : {named, stored}) {
			const std::optional<Pdb_identity>& identity = identity_of(path);
			if (identity == wanted) return {Outcome::resolved, {}, path};
			if (identity && result.outcome == Outcome::no_file)
				result = {Outcome::other_build, {}, path};
		}
		const std::string other_name = find_by_identity(folder, wanted);
		if (!other_name.empty()) return {Outcome::resolved, {}, other_name};
	}
	return result;
}

const std::optional<Pdb_identity>& Pdb_files::identity_of(const std::string& path) {
	const auto known = known_.find(path);
	if (known != known_.end()) return known->second;
	std::error_code failure;
	const bool is_file = fs::is_regular_file(path, failure);
	return known_[path] = is_file ? read_pdb_identity(path) : std::nullopt;
}

std::string Pdb_files::find_by_identity(const std::string& folder, const Pdb_identity& identity) {
	std::error_code failure;
	for (const auto& entry : fs::directory_iterator(folder, failure)) {
		const std::string path = entry.path().string();
		if (entry.path().extension() == ".pdb" && identity_of(path) == identity) return path;
	}
	return {};
}

// A 64-bit DLL of headers alone, and one section with a debug directory and its CodeView record, at
// equal places in file and memory.
bool write_image_for(const std::string& pdb_path, const Pdb_identity& identity,
                     const std::string& path) {
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
	image.put_bytes(record + 4, identity.guid.data(), identity.guid.size());
	image.put(record + 20, identity.age);
	image.put_bytes(record + 24, pdb_path.c_str(), pdb_path.size() + 1);

	std::ofstream file(path, std::ios::binary);
	file.write(image.bytes().data(), static_cast<std::streamsize>(image.bytes().size()));
	return static_cast<bool>(file.flush());
}
