// What the binary and the text file streams do alike, for the suites of both.
#pragma once

#include <morvantis/io/xylfile.h>
#include <morvantis/io/xylio_stream.h>
#include <morvantis/memory/xylheap.h>

#include "recording_host.h"
#include "temporary_folder.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <new>
#include <string>
#include <vector>

inline std::string content_of(const std::string& path) {
	std::ifstream file(path, std::ios::binary);
	EXPECT_TRUE(file.is_open()) << path;
	return std::string(std::istreambuf_iterator<char>(file), {});
}

inline std::string data_of(const xylIO_Stream& stream) {
	return std::string(stream.buffer.char_p(), static_cast<size_t>(stream.buffer.length()));
}

// Opens any output stream anew.
template <typename Output> int open_anew(Output& stream, const std::string& path) {
	if constexpr (requires { stream.open(path.c_str()); }) {
		return stream.open(path.c_str());
	} else {
		return stream.open(path.c_str(), false);
	}
}

template <typename Output> void flush_writes_what_came_since() {
	const Temporary_folder folder;
	const std::string path = folder / "out";
	Output stream;
	EXPECT_EQ(stream.flush(), 0) << "nothing is open";
	ASSERT_EQ(open_anew(stream, path), 0);
	EXPECT_TRUE(stream.get_name() == path.c_str());
	EXPECT_EQ(stream.flush(), 0) << "nothing is there";
	stream.buffer.append("abc");
	EXPECT_EQ(stream.flush(), 0);
	EXPECT_EQ(content_of(path), "abc");
	EXPECT_EQ(stream.flushed_length, 3u);
	EXPECT_EQ(stream.flush(), 0);
	EXPECT_EQ(content_of(path), "abc");
	stream.buffer.append("de");
	EXPECT_EQ(stream.flush(), 0);
	EXPECT_EQ(content_of(path), "abcde");
	EXPECT_EQ(stream.close(), 1);
	EXPECT_EQ(content_of(path), "abcde");
}

template <typename Output> void destructor_closes() {
	const Temporary_folder folder;
	const std::string path = folder / "out";
	const int open_files = xylFile::open_files_count_;
	{
		Output stream;
		ASSERT_EQ(open_anew(stream, path), 0);
		EXPECT_EQ(xylFile::open_files_count_, open_files + 1);
		stream.buffer.append("abc");
	}
	EXPECT_EQ(content_of(path), "abc");
	EXPECT_EQ(xylFile::open_files_count_, open_files);
}

template <typename Output> void answers_when_it_cannot_open() {
	const Temporary_folder folder;
	Output stream;
	EXPECT_EQ(open_anew(stream, folder / "missing/out"), -1);
	EXPECT_TRUE(stream.failed);
	EXPECT_FALSE(stream.is_opened);
	EXPECT_NE(stream.file_object, nullptr);
	stream.buffer.append("abc");
	EXPECT_EQ(stream.flush(), 0);
	EXPECT_EQ(stream.close(), 1);
	const std::string path = folder / "out";
	EXPECT_EQ(open_anew(stream, path), 0) << "another attempt";
	EXPECT_EQ(stream.close(), 1);
	EXPECT_EQ(content_of(path), "abc");
}

// A file that is open for reading stands for one that takes nothing.
template <typename Output> void keeps_the_file_when_it_takes_no_data() {
	const Temporary_folder folder;
	const int open_files = xylFile::open_files_count_;
	{
		Output stream;
		ASSERT_EQ(open_anew(stream, folder / "out"), 0);
		ASSERT_EQ(stream.file_object->reopen(folder.make_file("in", "old").c_str(), "r"), 0);
		stream.buffer.append("abc");
		EXPECT_EQ(stream.flush(), 1);
		EXPECT_EQ(stream.flushed_length, 3u) << "kept: moved all the same";
		EXPECT_EQ(stream.flush(), 0) << "kept: nothing is left to write";
		stream.buffer.append("d");
		xylFile* const file = stream.file_object;
		EXPECT_EQ(stream.close(), 1) << "the flush's";
		EXPECT_EQ(stream.file_object, file);
		EXPECT_TRUE(file->is_valid());
		EXPECT_TRUE(stream.failed);
		EXPECT_FALSE(stream.is_opened);
		EXPECT_EQ(stream.close(), 1) << "nothing is open";
		EXPECT_EQ(stream.file_object, file);
	}
	EXPECT_EQ(xylFile::open_files_count_, open_files) << "the file goes with the stream";
}

// The operators as the host reaches them, whether the class hides them or not.
template <typename Value> int output_bytes(xylIO_Stream& stream, Value value) {
	const int before = stream.buffer.length();
	EXPECT_EQ(&(stream << value), &stream);
	return stream.buffer.length() - before;
}

template <typename... Values> void expect_hidden_outputs(xylIO_Stream& stream) {
	xylVarString text("text");
	const auto one = [&]<typename Value>() {
		if constexpr (std::is_same_v<Value, const xylString_base&>) {
			EXPECT_EQ(&(stream << static_cast<const xylString_base&>(text)), &stream);
		} else if constexpr (std::is_same_v<Value, const xylStream_manip&>) {
			EXPECT_EQ(&(stream << xylStream_manip_none), &stream);
		} else {
			EXPECT_EQ(&(stream << Value(1)), &stream);
		}
		EXPECT_EQ(stream.buffer.length(), 0);
	};
	(one.template operator()<Values>(), ...);
}

template <typename Value> void expect_hidden_input(xylIO_Stream& stream, const Value& before) {
	stream.buffer = "1 2 ";
	Value value(before);
	EXPECT_EQ(&(stream >> value), &stream);
	EXPECT_TRUE(value == before);
	EXPECT_EQ(stream.buffer.get_cursor_position(), 0);
	EXPECT_EQ(&(stream >> xylStream_manip_none), &stream);
	stream.clear();
}
