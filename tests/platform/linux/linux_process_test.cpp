// Children and the desktop's opener on Linux.
#include "../started_child.h"

#include <morvantis/strings/xylvarstring.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <sstream>
#include <string>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

using testing::HasSubstr;

// Sets a variable and puts the old value back.
class Variable {
public:
	Variable(const char* name, const std::string& value) : name_(name), before_(std::getenv(name)) {
		setenv(name, value.c_str(), 1);
	}
	~Variable() { setenv(name_, before_.c_str(), 1); }
	Variable(const Variable&) = delete;
	Variable& operator=(const Variable&) = delete;

private:
	const char* name_;
	std::string before_;
};

// Writes the arguments of a script, one a line.
constexpr char write_arguments[] = "printf '%s\\n' \"$#\" \"$@\"";

// An xdg-open that writes into a pipe with a name.
class Fake_opener {
public:
	explicit Fake_opener(const std::string& what = write_arguments)
		: path_("PATH", folder_.path().string() + ":" + std::getenv("PATH")),
		  pipe_(folder_ / "pipe") {
		mkfifo(pipe_.c_str(), 0600);
		const std::string script =
			folder_.make_file("xdg-open", "#!/bin/sh\n{ " + what + "; } >'" + pipe_ + "'\n");
		chmod(script.c_str(), 0700);
	}
	// Waits for the opener; what it writes.
	std::string words() const {
		std::ifstream pipe(pipe_);
		return {std::istreambuf_iterator<char>(pipe), {}};
	}
	const Temporary_folder& folder() const { return folder_; }

private:
	Temporary_folder folder_;
	Variable path_;
	std::string pipe_;
};

TEST(zubPlatform_process_linux, ProgramIsLookedForOnThePath) {
	const std::string path = zubPlatform::get_executable_path().char_p();
	const Variable variable("PATH", path + ":" + std::getenv("PATH"));
	const Temporary_folder folder;
	std::string program = "process_child";
	std::string report = folder / "report";
	char* const arguments[] = {program.data(), report.data(), nullptr};
	unsigned int id = 0;
	EXPECT_EQ(zubPlatform::create_process(id, nullptr, arguments, nullptr, 0, true), 1);
	EXPECT_TRUE(std::filesystem::exists(report));
}

TEST(zubPlatform_process_linux, ChildThatIsWaitedForIsCollected) {
	Started_child child;
	ASSERT_EQ(child.start({}, true), 1);
	EXPECT_EQ(waitpid(static_cast<pid_t>(child.id), nullptr, 0), -1);
	EXPECT_EQ(errno, ECHILD);
}

TEST(zubPlatform_process_linux, ChildThatIsNotWaitedForIsTheHostsToCollect) {
	Started_child child;
	ASSERT_EQ(child.start({}, false), 1);
	int status = -1;
	ASSERT_EQ(waitpid(static_cast<pid_t>(child.id), &status, 0), static_cast<pid_t>(child.id));
	EXPECT_EQ(status, 0);
	EXPECT_THAT(child.report(), HasSubstr("variable "));
}

TEST(zubPlatform_process_linux, OpenFilesAreNotHandedOn) {
	const Temporary_folder folder;
	const std::string list = folder / "list";
	const int file = open("/dev/null", O_RDONLY);
	ASSERT_GT(file, 2);
	std::string shell = "/bin/sh", option = "-c";
	std::string script = "\"ls /proc/self/fd > " + list + "\"";
	char* const arguments[] = {shell.data(), option.data(), script.data(), nullptr};
	unsigned int id = 0;
	EXPECT_EQ(zubPlatform::create_process(id, nullptr, arguments, nullptr, 0, true), 1);
	close(file);
	std::ifstream lines(list);
	const std::string numbers{std::istreambuf_iterator<char>(lines), {}};
	EXPECT_EQ(numbers, "0\n1\n2\n3\n") << "3 is the folder that is being listed";
}

TEST(zubPlatform_process_linux, ShellCallsOpenWithTheDesktopsOpener) {
	const Fake_opener opener;
	zubPlatform::shell_execute("print", "a b; $(c) \"d\"");
	EXPECT_EQ(opener.words(), "1\na b; $(c) \"d\"\n");
	const std::string file = opener.folder().make_file("some file.txt");
	zubPlatform::open_with_default_app(xylVarString(file.c_str()));
	EXPECT_EQ(opener.words(), "1\n" + file + "\n");
	const std::string folder = opener.folder().path().string();
	zubPlatform::open_folder_and_select_items(xylVarString(folder.c_str()),
	                                          xylVarString(file.c_str()));
	EXPECT_EQ(opener.words(), "1\n" + folder + "\n");
	EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1) << "the opener is nobody's child";
}

TEST(zubPlatform_process_linux, OpenerHasNoFilesOfOursAndItsOwnSession) {
	const int file = open("/dev/null", O_RDONLY); // not closed by itself
	ASSERT_GT(file, 2);
	const Fake_opener opener(
		"cut -d' ' -f6 /proc/self/stat; readlink /proc/self/fd/2; ls /proc/self/fd");
	zubPlatform::shell_execute("open", "file");
	std::istringstream words(opener.words());
	close(file);
	int session = 0;
	std::string errors, numbers;
	words >> session >> errors;
	for (std::string number; words >> number;) numbers += number + " ";
	EXPECT_GT(session, 0);
	EXPECT_NE(session, getsid(0)) << "or it would end with our terminal";
	EXPECT_EQ(errors, "/dev/null");
	EXPECT_EQ(numbers, "0 1 2 3 ") << "3 is the folder that is being listed";
}

TEST(zubPlatform_process_linux, MissingOpenerIsSilent) {
	const Temporary_folder empty;
	const Variable path("PATH", empty.path().string());
	testing::internal::CaptureStdout();
	testing::internal::CaptureStderr();
	zubPlatform::shell_execute("open", "/tmp");
	EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
	EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
}

TEST(zubPlatform_process_linux, ShellCallWithoutAFileDoesNothing) {
	const Fake_opener opener;
	zubPlatform::shell_execute("open", nullptr);
	zubPlatform::shell_execute("open", "next");
	EXPECT_EQ(opener.words(), "1\nnext\n");
}

} // namespace
