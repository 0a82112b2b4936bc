// What tests of files ask of the system itself.
#pragma once

#include <cstdio>
#include <string>

// Handles that the process has open, of any kind.
int open_handle_count();

// Has a file store only what is written to it, where the system doesn't do so by itself.
void make_sparse(void* handle);

// A stream of the run-time to read `text` from a pipe that ends behind it. The caller closes it.
std::FILE* open_pipe(const std::string& text);

// Both ends of a pipe whose reading end takes overlapped reads.
class Overlapped_pipe {
public:
	Overlapped_pipe();
	~Overlapped_pipe();
	Overlapped_pipe(const Overlapped_pipe&) = delete;
	Overlapped_pipe& operator=(const Overlapped_pipe&) = delete;

	// The end to read from. The caller closes it.
	void* reading_end() const { return reading_end_; }
	void write(const std::string& text);

private:
	void* reading_end_;
	void* writing_end_;
};

// Expects as many open handles at its end as at its beginning.
class Handle_check {
public:
	Handle_check() : before_(open_handle_count()) {}
	~Handle_check();
	Handle_check(const Handle_check&) = delete;
	Handle_check& operator=(const Handle_check&) = delete;

private:
	int before_;
};

// Runs what follows as a user whom the attributes of files bind, where there is one.
class Without_privileges {
public:
	Without_privileges();
	~Without_privileges();
	Without_privileges(const Without_privileges&) = delete;
	Without_privileges& operator=(const Without_privileges&) = delete;

	// Whether the system keeps this process from writing to a read-only file. It doesn't where one
	// system is played by another and the user is that one's administrator.
	bool is_bound() const { return is_bound_; }

private:
	bool has_changed_ = false;
	bool is_bound_ = true;
};
