// Starting process_child and reading what it reports.
#pragma once

#include "temporary_folder.h"

#include <morvantis/platform/zubplatform.h>

#include <fstream>
#include <iterator>
#include <string>
#include <vector>

// The program beside the running one.
inline std::string child_program() {
	return std::string(zubPlatform::get_executable_path().char_p()) + "process_child";
}

// The report of one child in a folder of its own.
struct Started_child {
	unsigned int id = 99;

	std::string report_path() const { return folder / "report"; }
	// Starts it with further arguments; what create_process() answers.
	int start(const std::vector<std::string>& words, bool wait,
	          char* const* environment = nullptr) {
		std::vector<std::string> texts{child_program(), report_path()};
		texts.insert(texts.end(), words.begin(), words.end());
		std::vector<char*> arguments;
		for (std::string& text : texts) arguments.push_back(text.data());
		arguments.push_back(nullptr);
		return zubPlatform::create_process(id, "not looked at", arguments.data(), environment, 0,
		                                   wait);
	}
	// Empty as long as there is none.
	std::string report() const {
		std::ifstream file(report_path(), std::ios::binary);
		return {std::istreambuf_iterator<char>(file), {}};
	}

	Temporary_folder folder;
};
