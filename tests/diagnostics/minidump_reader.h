// A strict reader of minidump files, for tests: whatever leads out of the file is a failure.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <fstream>
#include <iterator>
#include <map>
#include <stdexcept>
#include <string>
#include <vector>

class Minidump {
public:
	struct Range {
		uint64_t start;
		std::string bytes;
	};
	struct Thread {
		Range stack;
		std::string context;
	};
	struct Module {
		uint64_t base;
		uint32_t size;
		std::string name;     // UTF-16 with its upper bytes left out
		std::string identity; // the CodeView record
	};
	struct Exception {
		uint32_t thread, code, flags;
		uint64_t address;
		std::string context;
	};

	// Throws what is wrong with the file.
	explicit Minidump(const std::string& path) {
		std::ifstream file(path, std::ios::binary);
		bytes_.assign(std::istreambuf_iterator<char>(file), {});
		require(number<uint32_t>(0) == 0x504D444D, "signature");
		require(number<uint16_t>(4) == 0xA793, "version");
		const uint32_t count = number<uint32_t>(8), directory = number<uint32_t>(12);
		for (uint32_t i = 0; i < count; ++i) {
			const uint32_t entry = directory + i * 12;
			const uint32_t type = number<uint32_t>(entry);
			if (type == 0) continue;
			require(streams_.count(type) == 0, "stream twice");
			streams_[type] = located(entry + 4);
		}
		read_threads();
		read_modules();
		read_ranges();
		read_exception();
	}

	size_t size() const { return bytes_.size(); }
	bool has(uint32_t type) const { return streams_.count(type) > 0; }
	const std::string& stream(uint32_t type) const { return streams_.at(type); }
	// The registers of a context by their place in it.
	static uint64_t stack_pointer(const std::string& context) { return at(context, 0x98); }
	static uint64_t instruction(const std::string& context) { return at(context, 0xF8); }
	// Memory of the process; empty where the dump has not all of it.
	std::string memory(const volatile void* address, size_t count) const {
		const auto start = reinterpret_cast<uint64_t>(address);
		for (const Range& range : ranges) {
			if (start < range.start || start - range.start > range.bytes.size()) continue;
			const std::string found = range.bytes.substr(start - range.start, count);
			if (found.size() == count) return found;
		}
		return {};
	}

	// A text at its place in the file, with the upper bytes left out.
	std::string text(uint32_t rva) const {
		const auto size = number<uint32_t>(rva);
		require(size % 2 == 0 && number<uint16_t>(rva + 4 + size) == 0, "text");
		std::string result;
		for (uint32_t i = 0; i < size; i += 2) result += number<char>(rva + 4 + i);
		return result;
	}

	std::map<uint32_t, Thread> threads;
	std::vector<Module> modules;
	std::vector<Range> ranges; // of the list of memory
	Exception exception{};

private:
	static void require(bool condition, const char* what) {
		if (!condition) throw std::runtime_error(what);
	}
	template <typename Number> Number number(uint64_t position) const {
		Number value;
		require(position <= bytes_.size() && bytes_.size() - position >= sizeof(value), "position");
		std::memcpy(&value, bytes_.data() + position, sizeof(value));
		return value;
	}
	static uint64_t at(const std::string& context, size_t position) {
		uint64_t value;
		std::memcpy(&value, context.data() + position, sizeof(value));
		return value;
	}
	// The bytes that a size and a position at `position` lead to.
	std::string located(uint64_t position) const {
		const auto size = number<uint32_t>(position), rva = number<uint32_t>(position + 4);
		require(rva <= bytes_.size() && bytes_.size() - rva >= size, "location");
		return bytes_.substr(rva, size);
	}
	// Where the records of a list begin; checks that it holds just them.
	std::vector<uint64_t> records(uint32_t type, size_t size) const {
		std::vector<uint64_t> positions;
		const uint32_t directory = number<uint32_t>(12);
		for (uint32_t entry = directory;; entry += 12) {
			if (number<uint32_t>(entry) != type) continue;
			const auto list_size = number<uint32_t>(entry + 4), rva = number<uint32_t>(entry + 8);
			const auto count = number<uint32_t>(rva);
			require(list_size == 4 + count * size, "size of a list");
			for (uint32_t i = 0; i < count; ++i) positions.push_back(rva + 4 + i * size);
			return positions;
		}
	}
	void read_threads() {
		for (const uint64_t record : records(3, 48)) {
			const auto id = number<uint32_t>(record);
			require(threads.count(id) == 0, "thread twice");
			threads[id] = {{number<uint64_t>(record + 24), located(record + 32)},
			               located(record + 40)};
			require(threads[id].context.size() == 1232, "size of a context");
		}
	}
	void read_modules() {
		for (const uint64_t record : records(4, 108)) {
			modules.push_back({number<uint64_t>(record), number<uint32_t>(record + 8),
			                   text(number<uint32_t>(record + 20)), located(record + 76)});
		}
	}
	void read_ranges() {
		for (const uint64_t record : records(5, 16)) {
			ranges.push_back({number<uint64_t>(record), located(record + 8)});
		}
	}
	void read_exception() {
		const std::string& record = stream(6);
		require(record.size() == 168, "size of the exception");
		const uint32_t directory = number<uint32_t>(12);
		for (uint32_t entry = directory;; entry += 12) {
			if (number<uint32_t>(entry) != 6) continue;
			const auto rva = number<uint32_t>(entry + 8);
			exception = {number<uint32_t>(rva), number<uint32_t>(rva + 8),
			             number<uint32_t>(rva + 12), number<uint64_t>(rva + 24),
			             located(rva + 160)};
			return;
		}
	}

	std::string bytes_;
	std::map<uint32_t, std::string> streams_;
};
