// A folder of its own for a test that needs real files.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <random>
#include <string>

// A new, empty folder among the system's temporary files, deleted with all it holds when the object
// ends, read-only files included.
class Temporary_folder {
public:
	Temporary_folder() {
		std::random_device random;
		do {
			path_ = std::filesystem::temp_directory_path() /
			        ("morvantis_" + std::to_string(random()) + std::to_string(random()));
		} while (!std::filesystem::create_directory(path_));
	}
	~Temporary_folder() {
		std::error_code failure;
		for (const auto& entry : std::filesystem::recursive_directory_iterator(path_, failure)) {
			if (entry.is_symlink()) continue; // what it leads to isn't ours
			std::filesystem::permissions(entry, std::filesystem::perms::owner_all,
			                             std::filesystem::perm_options::add, failure);
		}
		std::filesystem::remove_all(path_, failure);
		EXPECT_FALSE(failure) << path_ << ": " << failure.message();
	}
	Temporary_folder(const Temporary_folder&) = delete;
	Temporary_folder& operator=(const Temporary_folder&) = delete;

	const std::filesystem::path& path() const { return path_; }
	// The path of `name` in the folder, in the system's form.
	std::string operator/(const std::string& name) const { return (path_ / name).string(); }
	// Makes a file with the text, and the folders above it.
	std::string make_file(const std::string& name, const std::string& text = "text") const {
		std::filesystem::create_directories((path_ / name).parent_path());
		std::ofstream(path_ / name, std::ios::binary) << text;
		return *this / name;
	}

private:
	std::filesystem::path path_;
};

// Makes another folder the current one of the process, and puts the old one back at its end.
class Current_folder {
public:
	explicit Current_folder(const std::filesystem::path& path)
		: before_(std::filesystem::current_path()) {
		std::filesystem::current_path(path);
	}
	~Current_folder() { std::filesystem::current_path(before_); }
	Current_folder(const Current_folder&) = delete;
	Current_folder& operator=(const Current_folder&) = delete;

private:
	std::filesystem::path before_;
};
