// A program that says how it was started: its arguments, current folder and one variable of its
// environment, a line each.
//
// usage: process_child [<report> [<word>]...]     without words, the report is <program>.report
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

int main(int count, char** arguments) {
	const std::filesystem::path report =
		count > 1 ? arguments[1] : std::string(arguments[0]) + ".report";
	std::filesystem::path draft = report;
	draft += ".draft";
	{
		std::ofstream file(draft, std::ios::binary);
		for (int i = 2; i < count; ++i) file << "argument " << arguments[i] << '\n';
		file << "folder " << std::filesystem::current_path().string() << '\n';
		const char* value = std::getenv("MORVANTIS_CHILD");
		file << "variable " << (value ? value : "(none)") << '\n';
	}
	std::filesystem::rename(draft, report); // all of it or nothing
}
