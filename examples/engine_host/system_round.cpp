#include "system_round.h"

#include <morvantis/core/xylguid_generator.h>
#include <morvantis/core/xylrandom_generator.h>
#include <morvantis/io/xylnative_file.h>
#include <morvantis/io/xylnative_file_async.h>
#include <morvantis/memory/xylheap.h>
#include <morvantis/memory/xylheap_allocator_link_list.h>
#include <morvantis/memory/xylmemory_allocator_globals.h>
#include <morvantis/memory/xylpage_allocator.h>
#include <morvantis/platform/zubplatform.h>
#include <morvantis/strings/xylvarstring.h>

#include <cstring>
#include <new>
#include <vector>

xylHeap_allocator_link_list* engine_allocator = nullptr;

namespace {

constexpr double mib = 1024 * 1024;

// Milliseconds since it was made.
class Stopwatch {
public:
	double ms() const {
		return static_cast<double>(zubPlatform::get_timestamp_counter() - start_) * 1000.0 /
		       static_cast<double>(zubPlatform::get_timestamp_counter_frequency());
	}

private:
	xylInt64 start_ = zubPlatform::get_timestamp_counter();
};

void describe_machine(Table& table) {
	const xylCPU_description cpu = zubPlatform::get_cpu_description();
	table.add({"processor", cpu.brand_name.char_p()});
	table.add({"logical processors", std::to_string(cpu.processor_count)});
	std::string extensions;
	for (const auto& [has, name] :
	     {std::pair(cpu.has_sse4_2, "SSE4.2 "), {cpu.has_avx, "AVX "}, {cpu.has_avx2, "AVX2 "}}) {
		if (has) extensions += name;
	}
	table.add({"extensions", extensions});
	table.add({"page size", std::to_string(zubPlatform::page_size()) + " bytes"});
	const auto in_mib = [](xylUInt64 bytes) {
		return in_digits(static_cast<double>(bytes) / mib, 1) + " MiB";
	};
	table.add({"this process", in_mib(zubPlatform::get_application_memory())});
	table.add({"memory free", in_digits(zubPlatform::get_available_memory_percentage(), 1) + " %"});
	table.add({"this program", zubPlatform::get_executable_path().char_p()});
	table.add({"temporary files", zubPlatform::get_temp_path().char_p()});
}

// Blocks of all sizes from one allocator, given back in another order, twice.
void give_and_take_memory(System_round& round) {
	using Allocator = xylHeap_allocator_link_list;
	const Stopwatch watch;
	Allocator* const allocator = new (xyl_heap_allocate(sizeof(Allocator)))
		Allocator(xylMemory_allocator_globals::page_allocator_);
	engine_allocator = allocator;
	xylRandom_generator random;
	std::vector<unsigned char*> blocks;
	bool is_right = true;
	for (int pass = 0; pass < 2; ++pass) {
		for (int i = 0; i < 10000; ++i) {
			const size_t size = 16 + random.random_int(1024);
			void* block =
				allocator->allocate_aligned_mem(size, 16, xylMemory_allocator_base::default_group);
			std::memset(block, i & 255, size);
			blocks.push_back(static_cast<unsigned char*>(block));
		}
		for (size_t i = 0; i < blocks.size(); ++i) is_right &= blocks[i][15] == (i & 255);
		for (unsigned char* block : blocks) allocator->deallocate_mem(block, 0);
		blocks.clear();
		allocator->clear_ptrs();
	}
	// All blocks are back: one free range holds all that was taken from the pages.
	is_right &= allocator->free_list_ && !allocator->free_list_->next &&
	            allocator->free_list_->size == allocator->get_total_allocation_size();
	round.add("memory given and taken", "20,000 blocks", watch.ms(), is_right);
}

void write_and_read_file(System_round& round, const std::string& path) {
	std::vector<unsigned int> words(1 << 20), read(words.size());
	xylRandom_generator random;
	for (unsigned int& word : words) word = random.random_int();
	const xylUInt64 size = words.size() * sizeof(words[0]);
	constexpr int writing = xylFile_access_read | xylFile_access_write;

	const Stopwatch write_watch;
	xylNative_file file(path.c_str(), writing, xylFile_flag_create_always);
	const bool is_written = file.is_valid() && file.write(words.data(), size) == size;
	round.add("file written", "4 MiB", write_watch.ms(), is_written);

	const Stopwatch read_watch;
	file.set_pointer(0, xylFile_from_start);
	const bool is_read = file.read(read.data(), size) == size && read == words && file.close();
	round.add("file read", "4 MiB", read_watch.ms(), is_read);

	read.assign(read.size(), 0);
	const Stopwatch async_watch;
	xylNative_file_async async(path.c_str(), xylFile_access_read, xylFile_flag_open_existing);
	async.read(read.data(), size);
	xylUInt64 count = 0;
	const bool is_complete = async.get_async_status(&count, true) == xylAsync_io_completed;
	round.add("file read, overlapped", "4 MiB", async_watch.ms(),
	          is_complete && count == size && read == words && async.close());
}

void make_and_delete_folders(System_round& round, const std::string& out) {
	const xylVarString top((out + "/system_round").c_str());
	zubPlatform::remove_directory(top); // of an earlier run that was broken off
	bool is_right = zubPlatform::create_directory(top);
	const xylVarString inner((out + "/system_round/inner").c_str());
	is_right &= zubPlatform::create_directory(inner);
	write_and_read_file(round, (out + "/system_round/inner/words").c_str());
	const Stopwatch watch;
	is_right &= zubPlatform::remove_directory(top) && !zubPlatform::is_directory_exists(top);
	round.add("tree deleted", "2 folders", watch.ms(), is_right);
}

void read_words(System_round& round) {
	std::string text;
	long long expected = 0;
	for (int i = 0; i < 10000; ++i) {
		text += "agent " + std::to_string(i * 7) + " \"left behind\"\n";
		expected += i * 7;
	}
	const Stopwatch watch;
	xylVarString script(text.c_str()), word;
	long long sum = 0;
	for (int i = 0; i < 10000; ++i) {
		script.next_token_str(word);
		sum += script.next_token_int();
		script.next_token_str(word);
	}
	round.add("script read by words", "30,000 words", watch.ms(), sum == expected);
}

void make_guids(System_round& round) {
	const Stopwatch watch;
	xylGuid_generator generator;
	bool is_right = true;
	for (int i = 0; i < 1000; ++i) {
		xylGuid_type guid{};
		zubPlatform::create_guid(&guid);
		xylConstString<64> text;
		xylGuid_generator::guid_to_string(guid, text, true, true);
		const xylGuid_type read = xylGuid_generator::string_to_guid(text.char_p());
		is_right &= generator.is_valid_guid(text) && std::memcmp(&read, &guid, sizeof(guid)) == 0;
	}
	round.add("GUIDs made, written, read", "1,000", watch.ms(), is_right);
}

} // namespace

void System_round::add(const char* what, const std::string& amount, double ms, bool is_right) {
	work.add({what, amount, in_digits(ms, 2), is_right ? "yes" : "NO"});
	is_sound &= is_right;
}

System_round run_system_round(const std::string& out) {
	System_round round;
	describe_machine(round.machine);
	give_and_take_memory(round);
	make_and_delete_folders(round, out);
	read_words(round);
	make_guids(round);
	return round;
}
