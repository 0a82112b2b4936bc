// PDB files, by llvm-symbolizer as a process of its own.
#include "../pdb_files.h"

#include <morvantis/platform/system/linux/function_name.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <utility>

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

// One llvm-symbolizer, which answers questions about one file for as long as the object lives.
class Symbolizer {
public:
	Symbolizer(const std::string& program, const std::string& image) {
		int to_child[2], from_child[2];
		if (pipe2(to_child, O_CLOEXEC) != 0) return;
		if (pipe2(from_child, O_CLOEXEC) != 0) {
			close(to_child[0]);
			close(to_child[1]);
			return;
		}
		questions_ = fdopen(to_child[1], "w");
		answers_ = fdopen(from_child[0], "r");
		start(program, image, to_child[0], from_child[1]);
		close(to_child[0]);
		close(from_child[1]);
	}
	~Symbolizer() {
		if (questions_) std::fclose(questions_); // the end of its work
		if (answers_) std::fclose(answers_);
		if (process_ > 0) waitpid(process_, nullptr, 0);
	}
	Symbolizer(const Symbolizer&) = delete;
	Symbolizer& operator=(const Symbolizer&) = delete;

	// False when there is no such program, or it ended.
	bool ask(std::uint32_t offset, Place& place) {
		if (process_ <= 0) return false;
		std::fprintf(questions_, "0x%x\n", offset);
		std::fflush(questions_);
		// A function, its place, and an empty line.
		std::string function, source;
		if (!read_line(function) || !read_line(source)) return false;
		for (std::string rest; read_line(rest) && !rest.empty(););
		if (function != "??") place.function = os::qualified_name(function);
		// file:line:column
		const size_t column = source.rfind(':');
		const size_t line =
			column == std::string::npos || column == 0 ? column : source.rfind(':', column - 1);
		if (line == std::string::npos || source.starts_with("??")) return true;
		place.line =
			static_cast<unsigned int>(std::strtoul(source.c_str() + line + 1, nullptr, 10));
		const std::string path = source.substr(0, line);
		if (place.line != 0) place.source = path.substr(path.find_last_of("/\\") + 1);
		return true;
	}

private:
	void start(const std::string& program, const std::string& image, int input, int output) {
		const std::string object = "--obj=" + image;
		const char* const arguments[] = {program.c_str(),       object.c_str(),
		                                 "--relative-address",  "--inlining=false",
		                                 "--output-style=LLVM", nullptr};
		posix_spawn_file_actions_t actions;
		posix_spawn_file_actions_init(&actions);
		posix_spawn_file_actions_adddup2(&actions, input, STDIN_FILENO);
		posix_spawn_file_actions_adddup2(&actions, output, STDOUT_FILENO);
		if (posix_spawnp(&process_, program.c_str(), &actions, nullptr,
		                 const_cast<char**>(arguments), environ) != 0)
			process_ = 0;
		posix_spawn_file_actions_destroy(&actions);
	}
	bool read_line(std::string& line) {
		line.clear();
		int c;
		while ((c = std::getc(answers_)) != EOF && c != '\n') line += static_cast<char>(c);
		return c != EOF;
	}

	std::FILE* questions_ = nullptr;
	std::FILE* answers_ = nullptr;
	pid_t process_ = 0;
};

// A new folder among the system's temporary files; empty if none can be made.
std::string make_folder() {
	std::error_code failure;
	const fs::path top = fs::temp_directory_path(failure);
	if (failure) return {};
	std::string folder = (top / "stack_resolve_XXXXXX").string();
	return mkdtemp(folder.data()) ? folder : std::string();
}

class Pdb_reader : public Symbol_reader {
public:
	explicit Pdb_reader(const Reader_options& options)
		: files_(options.folders), program_(options.symbolizer), folder_(make_folder()) {}
	~Pdb_reader() override {
		symbolizers_.clear();
		std::error_code failure;
		if (!folder_.empty()) fs::remove_all(folder_, failure);
	}

	Resolution resolve(const Frame& frame) override {
		Resolution result = files_.find(frame);
		if (result.outcome != Outcome::resolved) return result;
		std::unique_ptr<Symbolizer>& symbolizer = symbolizers_[result.file];
		if (!symbolizer) {
			const std::string image =
				(fs::path(folder_) / std::to_string(symbolizers_.size())).string() + ".dll";
			if (folder_.empty() ||
			    !write_image_for(fs::absolute(result.file).string(), frame, image)) {
				result.outcome = Outcome::no_temporary_files;
				return result;
			}
			symbolizer = std::make_unique<Symbolizer>(program_, image);
		}
		if (!symbolizer->ask(frame.offset, result.place)) result.outcome = Outcome::no_reader;
		return result;
	}

private:
	Pdb_files files_;
	std::string program_;
	std::string folder_; // of the images that lead to PDB files; empty if it could not be made
	std::map<std::string, std::unique_ptr<Symbolizer>> symbolizers_; // by PDB file
};

} // namespace

std::unique_ptr<Symbol_reader> make_pdb_reader(const Reader_options& options) {
	return std::make_unique<Pdb_reader>(options);
}
