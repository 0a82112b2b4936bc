#include "system_round.h"

#include "../shared/road.h"

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

// One line of the work: what `work` answers, and how long it takes.
template <typename Work>
void try_out(System_round& round, const char* what, const std::string& amount, Work work) {
	Stopwatch watch;
	const bool is_right = watch.time(work);
	round.add(what, amount, watch.mean_microseconds() / 1000, is_right);
}

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
bool give_and_take_memory() {
	using Allocator = xylHeap_allocator_link_list;
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
	return is_right && allocator->free_list_ && !allocator->free_list_->next &&
	       allocator->free_list_->size == allocator->get_total_allocation_size();
}

void write_and_read_file(System_round& round, const std::string& path) {
	std::vector<unsigned int> words(1 << 20), read(words.size());
	xylRandom_generator random;
	for (unsigned int& word : words) word = random.random_int();
	const xylUInt64 size = words.size() * sizeof(words[0]);
	constexpr int writing = xylFile_access_read | xylFile_access_write;

	xylNative_file file;
	try_out(round, "file written", "4 MiB", [&] {
		return file.open(path.c_str(), writing, xylFile_flag_create_always) &&
		       file.write(words.data(), size) == size;
	});
	try_out(round, "file read", "4 MiB", [&] {
		file.set_pointer(0, xylFile_from_start);
		return file.read(read.data(), size) == size && read == words && file.close();
	});
	read.assign(read.size(), 0);
	try_out(round, "file read, overlapped", "4 MiB", [&] {
		xylNative_file_async async(path.c_str(), xylFile_access_read, xylFile_flag_open_existing);
		async.read(read.data(), size);
		xylUInt64 count = 0;
		return async.get_async_status(&count, true) == xylAsync_io_completed && count == size &&
		       read == words && async.close();
	});
}

void make_and_delete_folders(System_round& round, const std::string& out) {
	const xylVarString top((out + "/system_round").c_str());
	zubPlatform::remove_directory(top); // of an earlier run that was broken off
	const xylVarString inner((out + "/system_round/inner").c_str());
	const bool is_made = zubPlatform::create_directory(top) && zubPlatform::create_directory(inner);
	write_and_read_file(round, (out + "/system_round/inner/words").c_str());
	try_out(round, "tree deleted", "2 folders", [&] {
		return zubPlatform::remove_directory(top) && !zubPlatform::is_directory_exists(top) &&
		       is_made;
	});
}

void read_words(System_round& round) {
	std::string text;
	long long expected = 0;
	for (int i = 0; i < 10000; ++i) {
		text += "agent " + std::to_string(i * 7) + " \"left behind\"\n";
		expected += i * 7;
	}
	try_out(round, "script read by words", "30,000 words", [&] {
		xylVarString script(text.c_str()), word;
		long long sum = 0;
		for (int i = 0; i < 10000; ++i) {
			script.next_token_str(word);
			sum += script.next_token_int();
			script.next_token_str(word);
		}
		return sum == expected;
	});
}

bool make_guids() {
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
	return is_right;
}

} // namespace

void System_round::add(const char* what, const std::string& amount, double ms, bool is_right) {
	work.add({what, amount, in_digits(ms, 2), is_right ? "yes" : "NO"});
	is_sound &= is_right;
}

System_round run_system_round(const std::string& out) {
	System_round round;
	describe_machine(round.machine);
	try_out(round, "memory given and taken", "20,000 blocks", give_and_take_memory);
	make_and_delete_folders(round, out);
	read_words(round);
	try_out(round, "GUIDs made, written, read", "1,000", make_guids);
	return round;
}
