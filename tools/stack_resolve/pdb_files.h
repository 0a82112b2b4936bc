// PDB files by the identity of the image that they belong to.
#pragma once

#include "symbol_readers.h"

#include <map>
#include <optional>

struct Pdb_identity {
	std::array<unsigned char, 16> guid{};
	std::uint32_t age = 0;
	bool operator==(const Pdb_identity&) const = default;
};

// The identity in a PDB file: the GUID of its information stream and the age of its debug stream,
// which the linker writes into the image too. None for what is no such file, or a damaged one.
std::optional<Pdb_identity> read_pdb_identity(const std::string& path);

// Searches folders for the PDB file of a frame: by the image's name with the extension "pdb", in
// the layout of a symbol store (name/GUID and age/name), and any PDB file that lies there by
// whatever name. Identities once read are kept.
class Pdb_files {
public:
	explicit Pdb_files(std::vector<std::string> folders) : folders_(std::move(folders)) {}

	// `file` and the outcome: resolved means found.
	Resolution find(const Frame& frame);

private:
	const std::optional<Pdb_identity>& identity_of(const std::string& path);
	std::string find_by_identity(const std::string& folder, const Pdb_identity& identity);

	std::vector<std::string> folders_;
	std::map<std::string, std::optional<Pdb_identity>> known_;
};

constexpr std::uint64_t image_base = 0x180000000;
constexpr std::uint32_t largest_image = 0x7FFFF000;

// Writes the smallest image that names a PDB file as its symbol file, for readers that want an
// image to begin with: a DLL at image_base that is largest_image long. False when the file can't be
// written.
bool write_image_for(const std::string& pdb_path, const Pdb_identity& identity,
                     const std::string& path);
