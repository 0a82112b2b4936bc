// Here debug output is standard error, which becomes a file for the time.

#include "../debug_output.h"

#include <cstdio>

#include <unistd.h>

namespace {

struct Redirection {
	std::FILE* file;
	int standard_error;
};

} // namespace

Debug_output_catcher::Debug_output_catcher()
	: state_(new Redirection{std::tmpfile(), dup(STDERR_FILENO)}) {
	dup2(fileno(static_cast<Redirection*>(state_)->file), STDERR_FILENO);
}

Debug_output_catcher::~Debug_output_catcher() {
	auto* redirection = static_cast<Redirection*>(state_);
	dup2(redirection->standard_error, STDERR_FILENO);
	close(redirection->standard_error);
	std::fclose(redirection->file);
	delete redirection;
}

std::string Debug_output_catcher::take() {
	std::FILE* file = static_cast<Redirection*>(state_)->file;
	std::rewind(file); // the position is shared with standard error
	std::string text;
	char part[1024];
	while (const size_t count = std::fread(part, 1, sizeof(part), file)) text.append(part, count);
	std::rewind(file);
	if (ftruncate(fileno(file), 0) != 0) text += " (can't be emptied)";
	return text;
}
