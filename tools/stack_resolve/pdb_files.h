// PDB files by the identity of the image that they belong to.
#pragma once

#include "symbol_readers.h"

#include <morvantis/platform/system/pdb_identity.h>

#include <map>
#include <optional>

// Searches folders for the PDB file of a frame: by the image's name with the extension "pdb", in
// the layout of a symbol store (name/GUID and age/name), and any PDB file that lies there by
// whatever name. Identities once read are kept.
class Pdb_files {
public:
	explicit Pdb_files(std::vector<std::string> folders) : folders_(std::move(folders)) {}

	// `file` and the outcome: resolved means found.
	Resolution find(const Frame& frame);

private:
	// Whether `path` is a PDB file, and whether it is of the frame's build.
	struct Match {
		bool is_pdb, is_same_build;
	};
	Match match(const std::string& path, const Frame& frame);
	std::string find_by_identity(const std::string& folder, const Frame& frame);

	std::vector<std::string> folders_;
	std::map<std::string, std::optional<os::Pdb_identity>> known_;
};

constexpr std::uint64_t image_base = 0x180000000;
constexpr std::uint32_t largest_image = 0x7FFFF000;

// Writes the smallest image that names a PDB file as its symbol file, of the frame's build, for
// readers that want an image to begin with: a DLL at image_base that is largest_image long. False
// when the file can't be written.
bool write_image_for(const std::string& pdb_path, const Frame& frame, const std::string& path);
